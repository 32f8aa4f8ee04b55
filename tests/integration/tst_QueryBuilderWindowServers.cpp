// The query builder window against the real servers: two tables linked by a foreign key, added to
// the diagram with some columns ticked, give a join whose rows the "Data" page shows; and F7 in a
// workspace tab opens the builder on the tab's connection and puts its text back on OK.
#include "GuiFixture.h"
#include "MessageLog.h"
#include "QueryBuilderWindows.h"
#include "TestServers.h"
#include "WorkspaceDriver.h"

#include "core/querybuilder/QueryBuilderSource.h"
#include "gui/app/MUn.h"
#include "gui/components/QueryDiagram.h"
#include "gui/ui/fuAQBuilder.h"
#include "gui/workspace/ResultPanel.h"

#include <Qsci/qsciscintilla.h>

#include <QAction>
#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QSqlQuery>
#include <QTabWidget>
#include <QTimer>

namespace {

struct Server
{
    const char *name;
    TReaderConnection (*record)();
    bool upperCaseNames;  // Firebird keeps unquoted names upper-cased
};

const Server Servers[] = {{"postgres", &TestServers::postgres, false},
                          {"mariadb", &TestServers::mariadb, false},
                          {"firebird", &TestServers::firebird, true}};

QString name(const Server &server, const char *text)
{
    const QString n = QString::fromLatin1(text);
    return server.upperCaseNames ? n.toUpper() : n;
}

void createTables(const Server &server)
{
    const auto drop = qScopeGuard([] { QSqlDatabase::removeDatabase(QStringLiteral("qbw-setup")); });
    QSqlDatabase db = TestServers::openServer(QString::fromLatin1(server.name), QStringLiteral("qbw-setup"));
    QVERIFY(db.isOpen());
    const auto close = qScopeGuard([&db] { db.close(); });
    QSqlQuery q(db);
    q.exec(QStringLiteral("DROP TABLE issue21a_qb_orders"));     // absent on a first run
    q.exec(QStringLiteral("DROP TABLE issue21a_qb_customers"));
    for (const char *sql : {"CREATE TABLE issue21a_qb_customers (id INTEGER NOT NULL PRIMARY KEY, name VARCHAR(20))",
                            "CREATE TABLE issue21a_qb_orders (id INTEGER NOT NULL PRIMARY KEY, customer_id INTEGER "
                            "REFERENCES issue21a_qb_customers(id), amount INTEGER)",
                            "INSERT INTO issue21a_qb_customers VALUES (1, 'Ann')",
                            "INSERT INTO issue21a_qb_customers VALUES (2, 'Bob')",
                            "INSERT INTO issue21a_qb_orders VALUES (10, 1, 5)",
                            "INSERT INTO issue21a_qb_orders VALUES (11, 1, 7)",
                            "INSERT INTO issue21a_qb_orders VALUES (12, 2, 9)"})
        QVERIFY2(q.exec(QString::fromLatin1(sql)), qPrintable(q.lastError().text()));
    q.finish();
}


} // namespace

class tst_QueryBuilderWindowServers : public QObject
{
    Q_OBJECT

private slots:
    void init() { VANTRY_REQUIRE_TEST_SERVERS(); }

    void foreignKeyJoinRunsOnEveryServer_data()
    {
        QTest::addColumn<int>("server");
        QTest::newRow("PostgreSQL") << 0;
        QTest::newRow("MariaDB") << 1;
        QTest::newRow("Firebird") << 2;
    }

    void foreignKeyJoinRunsOnEveryServer()
    {
        QFETCH(int, server);
        const Server &s = Servers[server];
        createTables(s);
        MessageLog messages;

        const TReaderConnection record = s.record();
        TfmAQBuilder window(record, QueryBuilderSource::dialectCode(record), {});
        QVERIFY2(waitForMetadata(&window), qPrintable(messages.errors.join('\n')));
        QueryDiagram *diagram = window.diagram();
        const QString orders = diagram->addObject(name(s, "issue21a_qb_orders"));
        const QString customers = diagram->addObject(name(s, "issue21a_qb_customers"));
        diagram->setColumnSelected(customers, name(s, "name"), true);
        diagram->setColumnSelected(orders, name(s, "amount"), true);

        const QString sql = window.sqlText();
        QVERIFY2(sql.contains(QLatin1String("JOIN"), Qt::CaseInsensitive), qPrintable(sql));
        QVERIFY2(sql.contains(name(s, "customer_id"), Qt::CaseInsensitive), qPrintable(sql));

        window.findChild<QTabWidget *>(QStringLiteral("PC"))->setCurrentIndex(1);
        QTRY_VERIFY_WITH_TIMEOUT(window.isDataOpen() || !messages.errors.isEmpty(), 20000);
        QVERIFY2(messages.errors.isEmpty(), qPrintable(messages.errors.join('\n') + '\n' + sql));
        const ResultTable *rows = window.dataPanel()->query().table();
        QCOMPARE(rows->rowCount(), 3);
        QStringList seen;
        for (qint64 r = 0; r < rows->rowCount(); ++r) {
            QStringList values;
            for (int c = 0; c < rows->columnCount(); ++c)
                values << rows->value(r, c).toString();
            values.sort();
            seen << values.join(QLatin1Char(' '));
        }
        seen.sort();
        QCOMPARE(seen, (QStringList{QStringLiteral("5 Ann"), QStringLiteral("7 Ann"), QStringLiteral("9 Bob")}));
    }

    // The preview runs off the window's thread: a slow statement keeps the window responsive,
    // Cancel on the page's toolbar stops it, and the workspace's row limit caps what is shown.
    void previewIsCancelledAndLimited()
    {
        MessageLog messages;
        const TReaderConnection record = TestServers::postgres();
        TfmAQBuilder::Services services;
        services.runOptions.batchRows = 7;
        services.runOptions.capAtFirstBatch = true;
        TfmAQBuilder window(record, QueryBuilderSource::dialectCode(record), services);
        QVERIFY2(waitForMetadata(&window), qPrintable(messages.errors.join('\n')));
        auto *pages = window.findChild<QTabWidget *>(QStringLiteral("PC"));

        window.setSqlText(QStringLiteral("SELECT pg_sleep(60)"));
        QElapsedTimer clock;
        clock.start();
        pages->setCurrentIndex(1);
        QVERIFY(clock.elapsed() < 1000); // switching pages did not wait for the statement
        QTRY_VERIFY(window.previewService()->isBusy());
        auto *cancel = window.findChild<QAction *>(QStringLiteral("tbCancelPreview"));
        QTRY_VERIFY(cancel->isEnabled());
        cancel->trigger();
        QTRY_VERIFY_WITH_TIMEOUT(!window.previewService()->isBusy(), 10000);
        QVERIFY(clock.elapsed() < 20000);
        QVERIFY(!window.isDataOpen());
        QVERIFY(!cancel->isEnabled());
        QVERIFY2(messages.errors.isEmpty(), qPrintable(messages.errors.join('\n'))); // the user's own cancel is no error
        QVERIFY(window.findChild<QLabel *>(QStringLiteral("lbPreviewState"))->text().contains(QLatin1String("Cancel")));

        pages->setCurrentIndex(0);
        window.setSqlText(QStringLiteral("SELECT g.n FROM generate_series(1, 50) g(n)"));
        pages->setCurrentIndex(1);
        QTRY_VERIFY_WITH_TIMEOUT(window.isDataOpen() || !messages.errors.isEmpty(), 20000);
        QVERIFY2(messages.errors.isEmpty(), qPrintable(messages.errors.join('\n')));
        QCOMPARE(window.dataPanel()->query().table()->rowCount(), 7);
    }

    // F7 opens the builder on the tab's connection and editor text; OK puts the text back.
    void f7OpensTheBuilderFromTheWorkspace()
    {
        GuiFixture fx;
        TMFrm *main = fx.show();
        TSqlFrm *frame = main->currentFrame();
        TReaderConnection record = TestServers::postgres();
        record.Description = QStringLiteral("builder");
        WorkspaceDriver::addConnection(frame, record);
        WorkspaceDriver::selectConnection(frame, record.Description);
        frame->editor()->setText(QStringLiteral("select 1 as one"));

        QString seenDialect;
        QTimer::singleShot(0, this, [&] {
            auto *window = qobject_cast<TfmAQBuilder *>(QApplication::activeModalWidget());
            QVERIFY(window);
            const auto close = qScopeGuard([window] { window->accept(); });
            seenDialect = SqlDialects::name(window->engine()->dialect().dialect);
            window->setSqlText(QStringLiteral("select 2 as two"));
        });
        QAction *f7 = main->findChild<QAction *>(QStringLiteral("Action14"));
        QVERIFY(f7);
        QCOMPARE(f7->shortcut(), QKeySequence(Qt::Key_F7));
        f7->trigger();
        QCOMPARE(seenDialect, QStringLiteral("PostgreSQL"));
        QVERIFY2(frame->editor()->text().contains(QLatin1String("2 AS two"), Qt::CaseInsensitive),
                 qPrintable(frame->editor()->text()));
    }
};

QTEST_MAIN(tst_QueryBuilderWindowServers)
#include "tst_QueryBuilderWindowServers.moc"
