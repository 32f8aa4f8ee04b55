// The connection properties dialog against the servers of scripts/test-servers: the test button,
// the database list beside the database box, and the table list behind "Browse data".

#include "TestServers.h"
#include "../gui/connections/DialogTestSupport.h"

#include "GuiFixture.h"
#include "gui/connections/FileNameEdit.h"
#include "gui/connections/ServerComboBox.h"
#include "core/connections/impDMun.h"
#include "gui/workspace/SqlUn.h"
#include "gui/workspace/TableBrowserUn.h"

#include <QListWidget>

#include <QLineEdit>
#include <QToolButton>
#include <memory>

Q_DECLARE_METATYPE(TReaderConnection)

class tst_ConnectionDialogServers : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { VANTRY_REQUIRE_TEST_SERVERS(); }
    void init()
    {
        m_fx = std::make_unique<GuiFixture>();
        m_services = m_fx->services();
        m_services.discovery = &m_discovery;
    }
    void cleanup() { m_fx.reset(); }

    void testConnects_data();
    void testConnects();
    void testShowsTheServersMessage_data();
    void testShowsTheServersMessage();
    void databaseListIsSortedAndKeepsTheTypedName();
    void databaseListErrorIsShown();
    void browseDataOpensTheTablesOfTheTypedConnection();

private:
    std::unique_ptr<TDBConnectionDlgFrm> dialogOn(const TReaderConnection &rc)
    {
        auto dlg = std::make_unique<TDBConnectionDlgFrm>(m_services);
        dlg->setFreeOnClose(false);
        dlg->SetConnectionParams(rc);
        dlg->show();
        return dlg;
    }

    TimpDM m_discovery;
    std::unique_ptr<GuiFixture> m_fx;
    AppServices m_services;
};

void tst_ConnectionDialogServers::testConnects_data()
{
    QTest::addColumn<TReaderConnection>("record");
    QTest::newRow("PostgreSQL") << TestServers::postgres();
    QTest::newRow("MariaDB") << TestServers::mariadb();
    QTest::newRow("SQLite") << TestServers::sqlite();
}

void tst_ConnectionDialogServers::testConnects()
{
    QFETCH(TReaderConnection, record);
    MessageLog log;
    auto dlg = dialogOn(record);
    QTest::mouseClick(dlg->tbTestConnection, Qt::LeftButton);
    QCOMPARE(log.errors, QStringList());
    QCOMPARE(log.infos, QStringList{"Connected!"});
    QVERIFY(dlg->isVisible());
}

void tst_ConnectionDialogServers::testShowsTheServersMessage_data()
{
    QTest::addColumn<TReaderConnection>("record");
    QTest::addColumn<QString>("expected");
    TReaderConnection pg = TestServers::postgres();
    pg.Password = "wrong";
    QTest::newRow("PostgreSQL wrong password") << pg << "password authentication failed";
    TReaderConnection my = TestServers::mariadb();
    my.Password = "wrong";
    QTest::newRow("MariaDB wrong password") << my << "Access denied";
}

void tst_ConnectionDialogServers::testShowsTheServersMessage()
{
    QFETCH(TReaderConnection, record);
    QFETCH(QString, expected);
    MessageLog log;
    auto dlg = dialogOn(record);
    const TReaderConnection before = dlg->connectionParams();
    QTest::mouseClick(dlg->tbTestConnection, Qt::LeftButton);
    QCOMPARE(log.infos, QStringList());
    QCOMPARE(log.errors.size(), 1);
    QVERIFY2(log.errors.first().contains(expected), qPrintable(log.errors.first()));
    QVERIFY(dlg->isVisible());
    QCOMPARE(dlg->connectionParams(), before);
}

void tst_ConnectionDialogServers::databaseListIsSortedAndKeepsTheTypedName()
{
    MessageLog log;
    TReaderConnection rc = TestServers::postgres();
    rc.DataBase = "typed but not there";
    auto dlg = dialogOn(rc);
    QTest::mouseClick(dlg->findChild<QToolButton *>("sbRefreshDatabases"), Qt::LeftButton);
    QCOMPARE(log.errors, QStringList());
    QStringList items;
    for (int i = 0; i < dlg->DatabaseEd->count(); ++i)
        items << dlg->DatabaseEd->itemText(i);
    QVERIFY2(items.contains(TestServers::env("VANTRY_PG_DATABASE")), qPrintable(items.join(", ")));
    QStringList sorted = items;
    sorted.sort(Qt::CaseInsensitive);
    QCOMPARE(items, sorted);
    QCOMPARE(dlg->DatabaseEd->currentText(), QStringLiteral("typed but not there"));

    // A double click in the database box lists again, without doubling the names.
    QTest::mouseDClick(dlg->DatabaseEd->lineEdit(), Qt::LeftButton);
    QCOMPARE(dlg->DatabaseEd->count(), items.size());
}

void tst_ConnectionDialogServers::databaseListErrorIsShown()
{
    MessageLog log;
    TReaderConnection rc = TestServers::mariadb();
    rc.Password = "wrong";
    auto dlg = dialogOn(rc);
    dlg->DatabaseEd->addItem("kept");
    dlg->cbServerExit();
    QCOMPARE(log.errors.size(), 1);
    QVERIFY2(log.errors.first().contains("Access denied"), qPrintable(log.errors.first()));
    QCOMPARE(dlg->DatabaseEd->count(), 1);
}

void tst_ConnectionDialogServers::browseDataOpensTheTablesOfTheTypedConnection()
{
    MessageLog log;
    auto dlg = dialogOn(TReaderConnection());
    chooseType(*dlg, 7);
    dlg->fe->setText(TestServers::env("VANTRY_SQLITE_FILE")); // typed, not saved
    QStringList tables;
    QString title;
    whenModal<TTableBrowserFrm>([&](TTableBrowserFrm &browser) {
        title = browser.windowTitle();
        for (int i = 0; i < browser.sql()->tablesList()->count(); ++i)
            tables << browser.sql()->tablesList()->item(i)->text();
        browser.reject();
    });
    QTest::mouseClick(dlg->btnBrowseData, Qt::LeftButton);
    QCOMPARE(log.errors, QStringList());
    QCOMPARE(title, QStringLiteral("Table Browser"));
    QVERIFY2(tables.contains("customers") && tables.contains("customer_names"), qPrintable(tables.join(", ")));
    QVERIFY(dlg->isVisible());
}

QTEST_MAIN(tst_ConnectionDialogServers)
#include "tst_ConnectionDialogServers.moc"
