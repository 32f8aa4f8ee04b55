// Opening stored connections and discovering databases and tables against the real servers of
// scripts/test-servers: SQLite, PostgreSQL, MariaDB, Firebird, ODBC data sources and strings, and
// an OLE DB string through MSDASQL.

#include "TestServers.h"

#include "core/base/VantryError.h"
#include "core/connections/ODBCHUn.h"
#include "core/connections/WorkspaceConnection.h"
#include "core/connections/impDMun.h"
#include "core/connections/vtrtools.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QtTest>

Q_DECLARE_METATYPE(TReaderConnection)

namespace {

QString quotedOdbc(const QString &text)
{
    return QStringLiteral("Provider=MSDASQL.1;Extended Properties=\"%1\"").arg(text);
}

QString sqliteDriverString()
{
    return QStringLiteral("DRIVER={%1};Database=%2")
        .arg(TestServers::env("VANTRY_ODBC_SQLITE_DRIVER"), TestServers::env("VANTRY_SQLITE_FILE"));
}

} // namespace

class tst_ConnectionDiscovery : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { VANTRY_REQUIRE_TEST_SERVERS(); }

    void connectTestAndListTables_data();
    void connectTestAndListTables();
    void listDatabases_data();
    void listDatabases();
    void serverLists();
    void macroInStoredRecordIsExpandedOnConnect();
    void closeConnectionClosesUniversalAndAdoPaths();
    void sessionsOwnDistinctQtConnections();
};

void tst_ConnectionDiscovery::connectTestAndListTables_data()
{
    using namespace TestServers;
    QTest::addColumn<TReaderConnection>("record");
    QTest::addColumn<QString>("table");       // always listed
    QTest::addColumn<QString>("blankName");   // the quoted name with a blank
    QTest::addColumn<QString>("view");        // listed with views only
    QTest::addColumn<QString>("systemTable"); // listed with system tables only; empty: not checked

    QTest::newRow("SQLite") << sqlite() << "customers" << "\"order lines\"" << "customer_names" << "sqlite_master";
    QTest::newRow("PostgreSQL") << postgres() << "public.customers" << "public.\"order lines\""
                                << "public.customer_names" << "";
    QTest::newRow("MariaDB") << mariadb() << "customers" << "`order lines`" << "customer_names"
                             << "information_schema.TABLES";
    QTest::newRow("Firebird") << firebird() << "CUSTOMERS" << "\"order lines\"" << "CUSTOMER_NAMES"
                              << "RDB$RELATIONS";
    QTest::newRow("ODBC DSN SQLite") << odbc(env("VANTRY_ODBC_SQLITE_DSN")) << "customers" << "\"order lines\""
                                     << "customer_names" << "";
    QTest::newRow("ODBC DSN PostgreSQL")
        << odbc(env("VANTRY_ODBC_PG_DSN"), env("VANTRY_PG_USER"), env("VANTRY_PG_PASSWORD"))
        << "customers" << "\"order lines\"" << "customer_names" << "";
    QTest::newRow("ODBC DSN MariaDB") << odbc(env("VANTRY_ODBC_MYSQL_DSN")) << "customers" << "`order lines`"
                                      << "customer_names" << "";
    QTest::newRow("ODBC DRIVER string") << odbc(sqliteDriverString()) << "customers" << "\"order lines\""
                                        << "customer_names" << "";
    QTest::newRow("OLE DB MSDASQL")
        << oleDb(quotedOdbc(QStringLiteral("DRIVER={%1};Servername=%2;Port=%3;Database=%4;Username=%5;Password=%6")
                                .arg(env("VANTRY_ODBC_PG_DRIVER"), env("VANTRY_PG_HOST"), env("VANTRY_PG_PORT"),
                                     env("VANTRY_PG_DATABASE"), env("VANTRY_PG_USER"), env("VANTRY_PG_PASSWORD"))))
        << "customers" << "\"order lines\"" << "customer_names" << "";
}

void tst_ConnectionDiscovery::connectTestAndListTables()
{
    QFETCH(TReaderConnection, record);
    QFETCH(QString, table);
    QFETCH(QString, blankName);
    QFETCH(QString, view);
    QFETCH(QString, systemTable);

    TimpDM dm;
    try {
        dm.TestRConnection(record);
    } catch (const VantryError &e) {
        QFAIL(qPrintable(e.message()));
    }

    // The workspace's connect: statuses, then a query on the open path.
    QStringList statuses;
    WorkspaceConnection connection([&](const QString &s) { statuses << s; });
    try {
        connection.connect(record);
    } catch (const VantryError &e) {
        QFAIL(qPrintable(e.message()));
    }
    QCOMPARE(statuses, (QStringList{"Connecting", "Connected!"}));
    QVERIFY(connection.openPath() != AccessPath::None);
    {
        QSqlQuery query(connection.database());
        QVERIFY2(query.exec(QStringLiteral("select count(*) from customers")), qPrintable(query.lastError().text()));
        QVERIFY(query.next());
        QCOMPARE(query.value(0).toInt(), 2);
    }

    QStringList tablesOnly, withViews, withSystem;
    dm.GetTablesListR(record, tablesOnly, false, false);
    dm.GetTablesListR(record, withViews, true, false);
    dm.GetTablesListR(record, withSystem, false, true);

    QVERIFY2(tablesOnly.contains(table), qPrintable(tablesOnly.join(", ")));
    QVERIFY2(tablesOnly.contains(blankName), qPrintable(tablesOnly.join(", ")));
    QVERIFY2(!tablesOnly.contains(view), qPrintable(tablesOnly.join(", ")));
    QVERIFY2(withViews.contains(view), qPrintable(withViews.join(", ")));
    QVERIFY2(withViews.contains(table), qPrintable(withViews.join(", ")));
    if (!systemTable.isEmpty()) {
        QVERIFY2(!tablesOnly.contains(systemTable), qPrintable(tablesOnly.join(", ")));
        QVERIFY2(withSystem.contains(systemTable), qPrintable(withSystem.join(", ")));
    }
    for (const QString &name : std::as_const(withSystem)) {
        QVERIFY2((!name.startsWith("pg_catalog.") && !name.startsWith("information_schema."))
                     || record.ConnectionType != dsPostgreSQL,
                 qPrintable(name));
    }
}

void tst_ConnectionDiscovery::listDatabases_data()
{
    QTest::addColumn<TReaderConnection>("record");
    QTest::addColumn<QString>("expected"); // empty: the list is left as it was
    QTest::newRow("PostgreSQL") << TestServers::postgres() << "vantry_test";
    QTest::newRow("MariaDB") << TestServers::mariadb() << "vantry_test";
    QTest::newRow("SQLite") << TestServers::sqlite() << "";
}

void tst_ConnectionDiscovery::listDatabases()
{
    QFETCH(TReaderConnection, record);
    QFETCH(QString, expected);
    TimpDM dm;
    QStringList list{"untouched"};
    QString error;
    QVERIFY(dm.GetListOfDataBasesR(record, list, error));
    QVERIFY2(error.isEmpty(), qPrintable(error));
    if (expected.isEmpty()) {
        QCOMPARE(list, QStringList{"untouched"});
    } else {
        QVERIFY2(list.contains(expected), qPrintable(list.join(", ")));
        QVERIFY(!list.contains("untouched"));
    }
}

void tst_ConnectionDiscovery::serverLists()
{
    TimpDM dm;
    QStringList list{"stale"};
    dm.GetServersList("ODBC", list);
    for (const char *dsn : {"VANTRY_ODBC_SQLITE_DSN", "VANTRY_ODBC_PG_DSN", "VANTRY_ODBC_MYSQL_DSN"})
        QVERIFY2(list.contains(TestServers::env(dsn)), qPrintable(list.join(", ")));
    QVERIFY(!list.contains("stale"));

    // No SQL Server driver is installed: the list stays empty and the error names the call.
    QString error;
    dm.GetServersList("SQL SERVER", list, &error);
    QVERIFY(list.isEmpty());
    QVERIFY2(error.startsWith("SQLBrowseConnect Failed:"), qPrintable(error));

    QTemporaryDir tnsAdmin;
    QFile tns(tnsAdmin.filePath("tnsnames.ora"));
    QVERIFY(tns.open(QIODevice::WriteOnly));
    tns.write("# test aliases\nORCL =\n  (DESCRIPTION = (ADDRESS = (PROTOCOL = TCP)(HOST = db)(PORT = 1521))\n"
              "    (CONNECT_DATA = (SERVICE_NAME = orcl)))\nSALES.EXAMPLE, REPORTS = (DESCRIPTION = (ADDRESS = (HOST = x)))\n");
    tns.close();
    qputenv("TNS_ADMIN", tnsAdmin.path().toLocal8Bit());
    dm.GetServersList("ORACLE", list);
    qunsetenv("TNS_ADMIN");
    QCOMPARE(list, (QStringList{"ORCL", "SALES.EXAMPLE", "REPORTS"}));

    dm.GetServersList("odbc", list); // the kind is case-sensitive
    QVERIFY(list.isEmpty());
}

void tst_ConnectionDiscovery::macroInStoredRecordIsExpandedOnConnect()
{
    QTemporaryDir documents;
    QVERIFY(QFile::copy(TestServers::env("VANTRY_SQLITE_FILE"), documents.filePath("macro.sqlite")));
    qputenv("VANTRY_COMMON_DOCUMENTS", documents.path().toLocal8Bit());

    TReaderConnection stored = TestServers::sqlite(QStringLiteral("<CommonDocumentsDir>/macro.sqlite"));
    const QByteArray column = PackParameters(ReaderConnectionToStr(stored));

    WorkspaceConnection connection;
    try {
        connection.connect(WorkspaceConnection::recordFromStored(column));
    } catch (const VantryError &e) {
        qunsetenv("VANTRY_COMMON_DOCUMENTS");
        QFAIL(qPrintable(e.message()));
    }
    QCOMPARE(connection.current().DataBase, documents.filePath("macro.sqlite"));
    QVERIFY(UnpackParameters(column).contains("<CommonDocumentsDir>/macro.sqlite"));

    // The discovery service expands Server and DataBase itself.
    TimpDM dm;
    QStringList tables;
    dm.GetTablesListR(stored, tables, false, false);
    qunsetenv("VANTRY_COMMON_DOCUMENTS");
    QVERIFY2(tables.contains("customers"), qPrintable(tables.join(", ")));
}

void tst_ConnectionDiscovery::closeConnectionClosesUniversalAndAdoPaths()
{
    QStringList statuses;
    WorkspaceConnection connection([&](const QString &s) { statuses << s; });
    connection.connect(TestServers::sqlite());
    connection.connect(TestServers::odbc(TestServers::env("VANTRY_ODBC_SQLITE_DSN")));
    // The second connect closed the universal path first.
    QCOMPARE(statuses, (QStringList{"Connecting", "Connected!", "Disconnected", "Connecting", "Connected!"}));
    QCOMPARE(connection.openPath(), AccessPath::Ado);
    statuses.clear();
    connection.closeConnection();
    QCOMPARE(statuses, QStringList{"Disconnected"});
    QCOMPARE(connection.openPath(), AccessPath::None);
    QVERIFY_THROWS_EXCEPTION(VantryError, connection.database());
}

void tst_ConnectionDiscovery::sessionsOwnDistinctQtConnections()
{
    QString name;
    {
        WorkspaceConnection a, b;
        a.connect(TestServers::sqlite());
        b.connect(TestServers::sqlite());
        QVERIFY(a.universal().connectionName() != b.universal().connectionName());
        name = a.universal().connectionName();
        QVERIFY(QSqlDatabase::contains(name));
    }
    QVERIFY(!QSqlDatabase::contains(name));
}

QTEST_GUILESS_MAIN(tst_ConnectionDiscovery)
#include "tst_ConnectionDiscovery.moc"
