// The ODBC connection builder and the OLE DB connection-string editor with the installed ODBC
// drivers and the servers of scripts/test-servers: strings built by choosing a driver and filling
// its keywords connect; a failing driver's words reach the user and change nothing; a data link
// file written by the editor opens through the ADO path; Cancel leaves the caller's string.

#include "ErrorOf.h"
#include "TestServers.h"
#include "../gui/connections/DialogTestSupport.h"

#include "GuiFixture.h"
#include "core/connections/AdoSession.h"
#include "core/base/VantryError.h"
#include "core/connections/DataLinkFile.h"
#include "core/connections/ODBCHUn.h"
#include "core/connections/OdbcConnectionBuilder.h"
#include "gui/connections/DataLinkDialog.h"
#include "gui/connections/ODBCDlgUn.h"
#include "gui/connections/ODBCUn.h"
#include "gui/connections/OdbcKeywordForm.h"
#include "gui/connections/ServerComboBox.h"

#include <QComboBox>
#include <QDir>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QSqlQuery>
#include <QToolButton>
#include <memory>

using Values = QMap<QString, QString>;
Q_DECLARE_METATYPE(Values)

namespace {

Values sqliteValues() { return {{"Database", TestServers::env("VANTRY_SQLITE_FILE")}}; }

Values serverValues(const char *prefix)
{
    auto var = [prefix](const char *name) { return TestServers::env((QByteArray(prefix) + name).constData()); };
    return {{"Server", var("HOST")}, {"Port", var("PORT")}, {"Database", var("DATABASE")}, {"UID", var("USER")},
            {"PWD", var("PASSWORD")}};
}

// The first value of the first column a query gives on an ADO path connection string.
QString firstValue(const QString &connectionString, const QString &sql)
{
    AdoSession session;
    session.openConnectionString(connectionString);
    QSqlQuery query(session.database());
    if (!query.exec(sql) || !query.next())
        return QStringLiteral("<no row>");
    return query.value(0).toString();
}

} // namespace

class tst_ConnectionBuilderServers : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { VANTRY_REQUIRE_TEST_SERVERS(); }

    void installedDriversGetTheirCommonKeywords_data()
    {
        QTest::addColumn<QString>("driver");
        QTest::addColumn<QStringList>("names");
        QTest::newRow("SQLite3") << TestServers::env("VANTRY_ODBC_SQLITE_DRIVER")
                                 << QStringList{"Database", "Timeout", "JournalMode", "FKSupport", "NoCreat"};
        QTest::newRow("PostgreSQL") << TestServers::env("VANTRY_ODBC_PG_DRIVER")
                                    << QStringList{"Server", "Port", "Database", "UID", "PWD", "SSLmode"};
        QTest::newRow("MariaDB") << TestServers::env("VANTRY_ODBC_MYSQL_DRIVER")
                                 << QStringList{"Server", "Port", "Database", "UID", "PWD", "Charset"};
    }
    void installedDriversGetTheirCommonKeywords()
    {
        QFETCH(QString, driver);
        QFETCH(QStringList, names);
        // None of these drivers browses, so the table answers for them.
        const auto keywords = OdbcConnectionBuilder::keywordsFor(driver);
        QVERIFY(keywords.source == OdbcConnectionBuilder::KeywordSource::CommonTable);
        QStringList got;
        for (const OdbcKeyword &k : keywords.keywords)
            got << k.name;
        QCOMPARE(got, names);
    }

    void choosingADriverBuildsAStringThatConnects_data()
    {
        QTest::addColumn<QString>("driver");
        QTest::addColumn<Values>("values");
        QTest::addColumn<QString>("sql");
        QTest::addColumn<QString>("expected");
        QTest::newRow("SQLite3") << TestServers::env("VANTRY_ODBC_SQLITE_DRIVER") << sqliteValues()
                                 << "SELECT COUNT(*) > 0 FROM customers" << "1";
        QTest::newRow("PostgreSQL") << TestServers::env("VANTRY_ODBC_PG_DRIVER") << serverValues("VANTRY_PG_")
                                    << "SELECT current_database()" << TestServers::env("VANTRY_PG_DATABASE");
        QTest::newRow("MariaDB") << TestServers::env("VANTRY_ODBC_MYSQL_DRIVER") << serverValues("VANTRY_MYSQL_")
                                 << "SELECT DATABASE()" << TestServers::env("VANTRY_MYSQL_DATABASE");
    }
    void choosingADriverBuildsAStringThatConnects()
    {
        QFETCH(QString, driver);
        QFETCH(Values, values);
        QFETCH(QString, sql);
        QFETCH(QString, expected);
        MessageLog log;
        TODBCDlgFrm dlg;
        dlg.setFreeOnClose(false);
        dlg.ConnectionMemo->setPlainText("DSN=left over");
        dlg.show();
        QList<QListWidgetItem *> items;
        QTRY_VERIFY_WITH_TIMEOUT(!(items = dlg.DriversLb->findItems(driver, Qt::MatchExactly)).isEmpty(), 10000);

        whenModal<OdbcKeywordForm>(
            [&](OdbcKeywordForm &form) {
                for (auto it = values.cbegin(); it != values.cend(); ++it)
                    form.setValue(it.key(), it.value());
                shoot(form, "OdbcKeywordForm-" + driver.section(' ', 0, 0) + ".png");
                QTest::mouseClick(form.okButton(), Qt::LeftButton);
            },
            30000);
        dlg.DriversLb->setCurrentItem(items.first());
        QTRY_VERIFY_WITH_TIMEOUT(dlg.ConnectionMemo->toPlainText() != "DSN=left over" || !log.errors.isEmpty(), 30000);
        QCOMPARE(log.errors, QStringList());
        shoot(dlg, "ODBCDlgFrm-" + driver.section(' ', 0, 0) + ".png");

        const QString built = dlg.ConnectionMemo->toPlainText();
        QVERIFY2(built.startsWith("DRIVER={" + driver + "}", Qt::CaseInsensitive), qPrintable(built));
        // The completed string connects again, through the driver manager and through the ADO path.
        QCOMPARE(errorOf([&] {
                     Odbc::Environment env;
                     Odbc::Connection dbc(env);
                     dbc.driverConnect(built);
                 }),
                 QString());
        QCOMPARE(firstValue(built, sql), expected);
    }

    void failingDriverShowsItsWordsAndChangesNothing()
    {
        MessageLog log;
        TODBCDlgFrm dlg;
        dlg.setFreeOnClose(false);
        dlg.ConnectionMemo->setPlainText("kept as it was");
        dlg.show();
        const QString driver = TestServers::env("VANTRY_ODBC_MYSQL_DRIVER");
        QList<QListWidgetItem *> items;
        QTRY_VERIFY_WITH_TIMEOUT(!(items = dlg.DriversLb->findItems(driver, Qt::MatchExactly)).isEmpty(), 10000);

        bool stayedOpen = false;
        whenModal<OdbcKeywordForm>(
            [&](OdbcKeywordForm &form) {
                Values values = serverValues("VANTRY_MYSQL_");
                values["PWD"] = "wrong";
                for (auto it = values.cbegin(); it != values.cend(); ++it)
                    form.setValue(it.key(), it.value());
                QTest::mouseClick(form.okButton(), Qt::LeftButton);
                stayedOpen = form.isVisible();
                QTest::mouseClick(form.cancelButton(), Qt::LeftButton);
            },
            30000);
        dlg.DriversLb->setCurrentItem(items.first());
        QTRY_VERIFY_WITH_TIMEOUT(!log.errors.isEmpty(), 30000);
        QVERIFY(stayedOpen);
        QCOMPARE(log.errors.size(), 1);
        QVERIFY2(log.errors.first().startsWith("SQLDriverConnect Failed: [28000]"), qPrintable(log.errors.first()));
        QVERIFY2(log.errors.first().contains("Access denied"), qPrintable(log.errors.first()));
        QCOMPARE(dlg.ConnectionMemo->toPlainText(), QStringLiteral("kept as it was"));
    }

    void dataLinkFileWrittenByTheEditorOpensThroughTheAdoPath_data()
    {
        QTest::addColumn<QString>("provider");
        QTest::addColumn<Values>("boxes");
        QTest::addColumn<QString>("sql");
        QTest::addColumn<QString>("expected");
        QTest::newRow("ODBC driver string")
            << "MSDASQL.1"
            << Values{{"ExtendedPropertiesEdt",
                       "DRIVER={" + TestServers::env("VANTRY_ODBC_SQLITE_DRIVER") + "};Database="
                           + TestServers::env("VANTRY_SQLITE_FILE")}}
            << "SELECT COUNT(*) > 0 FROM customers" << "1";
        QTest::newRow("data source with login")
            << "MSDASQL.1"
            << Values{{"DataSourceEdt", TestServers::env("VANTRY_ODBC_MYSQL_DSN")},
                      {"UserIdEdt", TestServers::env("VANTRY_MYSQL_USER")},
                      {"PasswordEdt", TestServers::env("VANTRY_MYSQL_PASSWORD")}}
            << "SELECT DATABASE()" << TestServers::env("VANTRY_MYSQL_DATABASE");
    }
    void dataLinkFileWrittenByTheEditorOpensThroughTheAdoPath()
    {
        QFETCH(QString, provider);
        QFETCH(Values, boxes);
        QFETCH(QString, sql);
        QFETCH(QString, expected);
        TempHome home;
        MessageLog log;
        DataLinkDialog links;
        links.setFreeOnClose(false);
        links.ProviderCb->setCurrentIndex(links.ProviderCb->findData(provider));
        for (auto it = boxes.cbegin(); it != boxes.cend(); ++it)
            links.findChild<QLineEdit *>(it.key())->setText(it.value());
        links.saveDataLink(QDir(DataLinkFile::folder()).filePath("built"));
        QCOMPARE(log.errors, QStringList());

        // The editor offers the new file by its name and hands back its full "FILE NAME=" string.
        TConnEditForm editor;
        editor.setFreeOnClose(false);
        QVERIFY(editor.DataLinkFile->findText("built.udl") >= 0);
        editor.Edit("FILE NAME=" + QDir(DataLinkFile::folder()).filePath("built.udl"));
        QCOMPARE(editor.DataLinkFile->currentText(), QStringLiteral("built.udl"));
        const QString result = editor.result();
        QCOMPARE(result, "FILE NAME=" + QDir(DataLinkFile::folder()).filePath("built.udl"));
        QCOMPARE(firstValue(result, sql), expected);
    }

    void buildButtonPutsTheOdbcStringWhereItIsSaved()
    {
        GuiFixture fx;
        MessageLog log;
        TDBConnectionDlgFrm dlg(fx.services());
        dlg.setFreeOnClose(false);
        dlg.SetConnectionParams(TestServers::odbc("VantrySQLite"));
        dlg.show();
        const QString driver = TestServers::env("VANTRY_ODBC_SQLITE_DRIVER");
        whenModal<TODBCDlgFrm>(
            [&](TODBCDlgFrm &builder) {
                QList<QListWidgetItem *> items;
                if (!QTest::qWaitFor([&] { return !(items = builder.DriversLb->findItems(driver, Qt::MatchExactly)).isEmpty(); }, 10000)) {
                    QTest::mouseClick(builder.cancelButton(), Qt::LeftButton);
                    return;
                }
                whenModal<OdbcKeywordForm>(
                    [&](OdbcKeywordForm &form) {
                        form.setValue("Database", TestServers::env("VANTRY_SQLITE_FILE"));
                        QTest::mouseClick(form.okButton(), Qt::LeftButton);
                    },
                    30000);
                builder.DriversLb->setCurrentItem(items.first());
                if (!QTest::qWaitFor([&] { return builder.ConnectionMemo->toPlainText().startsWith("DRIVER="); }, 30000))
                    qWarning("the builder's memo got no string");
                QTest::mouseClick(builder.okButton(), Qt::LeftButton);
            },
            30000);
        QTest::mouseClick(dlg.tbBuildConnectionString, Qt::LeftButton);
        QCOMPARE(log.errors, QStringList());
        const TReaderConnection rc = dlg.connectionParams();
        QVERIFY2(rc.Server.startsWith("DRIVER={" + driver + "}"), qPrintable(rc.Server));
        QCOMPARE(dlg.mOleDbConnection->toPlainText(), rc.Server);
        // The saved record opens with the built string.
        QCOMPARE(errorOf([&] { fx.discovery->TestRConnection(rc); }), QString());
    }
};

QTEST_MAIN(tst_ConnectionBuilderServers)
#include "tst_ConnectionBuilderServers.moc"
