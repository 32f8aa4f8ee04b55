// A workspace tab against the real servers: statements, failures, scripts and the record limit on
// each path.
#include "GuiFixture.h"
#include "TestServers.h"
#include "WorkspaceDriver.h"
#include "core/app/SqlHistory.h"
#include "gui/workspace/ResultPanel.h"
#include "core/workspace/ResultQuery.h"

#include <QSpinBox>

using namespace WorkspaceDriver;

class tst_WorkspaceServers : public QObject
{
    Q_OBJECT

    GuiFixture *fx = nullptr;
    TSqlFrm *frame = nullptr;

    void use(TReaderConnection record, const QString &name)
    {
        record.Description = name;
        addConnection(frame, record);
        selectConnection(frame, name);
    }

private slots:
    void init()
    {
        VANTRY_REQUIRE_TEST_SERVERS();
        fx = new GuiFixture;
        fx->show();
        frame = fx->window->currentFrame();
    }

    void cleanup()
    {
        delete fx;
        fx = nullptr;
    }

    void statementsRunOnEveryServer_data()
    {
        QTest::addColumn<int>("server");
        QTest::newRow("PostgreSQL") << 0;
        QTest::newRow("MariaDB") << 1;
        QTest::newRow("Firebird") << 2;
    }

    void statementsRunOnEveryServer()
    {
        QFETCH(int, server);
        const TReaderConnection records[] = {TestServers::postgres(), TestServers::mariadb(), TestServers::firebird()};
        use(records[server], QStringLiteral("server under test"));
        const QString table = QStringLiteral("WS_RUN_%1").arg(server);

        runScript(frame, QStringLiteral("drop table %1\nGO\ncreate table %1 (ID integer not null, NAME varchar(40))\n"
                                        "GO\ninsert into %1 values (1, 'one')\ngo\ninsert into %1 values (2, 'two')")
                             .arg(table));
        const ExecutionLog *log = frame->log()->table();
        QCOMPARE(log->count(), 4);  // the drop may fail on a first run; the rest must not
        for (int i = 1; i < 4; ++i)
            QVERIFY2(log->row(i).status == 0, qPrintable(log->row(i).message));

        run(frame, QStringLiteral("select * from %1 order by ID").arg(table));
        QCOMPARE(lastLog(frame).status, 0);
        QCOMPARE(frame->resultPanel()->query().table()->rowCount(), 2);

        const int history = fx->catalogue->history().count();
        run(frame, QStringLiteral("insert into %1 values ('not a number', 3)").arg(table));
        QCOMPARE(lastLog(frame).status, 2);
        QVERIFY(!lastLog(frame).message.isEmpty());
        QCOMPARE(fx->catalogue->history().count(), history);

        run(frame, QStringLiteral("delete from %1 where ID = 1").arg(table));
        QCOMPARE(lastLog(frame).status, 0);
        run(frame, QStringLiteral("select count(*) from %1").arg(table));
        QCOMPARE(frame->resultPanel()->query().table()->rowCount(), 1);
    }

    void recordLimitIsTheBatchSizeOrTheAdoCap()
    {
        // The sample database has 150 orders: through the universal path and through ODBC.
        const QString sample = fx->home.file(QStringLiteral("sample.sqlite"));
        frame->findChild<QSpinBox *>(QStringLiteral("seRecords"))->setValue(10);

        use(TestServers::sqlite(sample), QStringLiteral("universal"));
        run(frame, QStringLiteral("select * from ORDERS"));
        ResultPanel *panel = frame->resultPanel();
        // Batches of 10 arrive on demand; reading all of them gives every row exactly once.
        QVERIFY(panel->query().table()->rowCount() >= 10);
        QCOMPARE(panel->query().table()->rowCount() % 10, 0);
        panel->fetchAll();
        QVERIFY(waitIdle(frame));
        QCOMPARE(panel->query().table()->rowCount(), 150);
        QVERIFY(!panel->query().moreRemain());

        use(TestServers::odbc(QStringLiteral("DRIVER={%1};Database=%2")
                                  .arg(TestServers::env("VANTRY_ODBC_SQLITE_DRIVER"), sample)),
            QStringLiteral("odbc"));
        run(frame, QStringLiteral("select * from ORDERS"));
        QVERIFY2(lastLog(frame).status == 0, qPrintable(lastLog(frame).message));
        // On the ADO path the limit is a maximum record count.
        panel->fetchAll();
        QVERIFY(waitIdle(frame));
        QCOMPARE(panel->query().table()->rowCount(), 10);
    }

    void wrongPasswordIsLoggedNotShown()
    {
        TReaderConnection pg = TestServers::postgres();
        pg.Password = QStringLiteral("wrong");
        use(pg, QStringLiteral("bad login"));
        run(frame, QStringLiteral("select 1"));
        QCOMPARE(lastLog(frame).status, 2);
        QVERIFY2(lastLog(frame).message.contains(QStringLiteral("password"), Qt::CaseInsensitive),
                 qPrintable(lastLog(frame).message));
    }
};

QTEST_MAIN(tst_WorkspaceServers)
#include "tst_WorkspaceServers.moc"
