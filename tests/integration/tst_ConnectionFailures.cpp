// Connections that cannot be made: each must fail quickly with an error that names the cause, on
// both the workspace's connect and the discovery service's test.

#include "ErrorOf.h"
#include "TestServers.h"

#include "core/base/VantryError.h"
#include "core/connections/ODBCHUn.h"
#include "core/connections/WorkspaceConnection.h"
#include "core/connections/impDMun.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QtTest>

Q_DECLARE_METATYPE(TReaderConnection)

namespace {

// A privileged port no test machine serves: connecting to it on 127.0.0.1 is refused at once.
constexpr int kDeadPort = 1;

// Runs the call and returns its error text; a call that does not throw fails the test.
} // namespace

class tst_ConnectionFailures : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { VANTRY_REQUIRE_TEST_SERVERS(); }

    void failsWithCause_data();
    void failsWithCause();
    void unreachableHostFailsInBoundedTime_data();
    void unreachableHostFailsInBoundedTime();
    void missingSqliteFileIsNotCreated();
    void sqlServerWithoutDriverReportsTheCall();
    void missingDriverManager();
};

void tst_ConnectionFailures::failsWithCause_data()
{
    using namespace TestServers;
    QTest::addColumn<TReaderConnection>("record");
    QTest::addColumn<QString>("expected"); // a piece of the error text, compared ignoring case

    TReaderConnection rc = postgres();
    rc.Password = "wrong";
    QTest::newRow("PostgreSQL wrong password") << rc << "password authentication failed";
    rc = postgres();
    rc.DataBase = "no_such_database";
    QTest::newRow("PostgreSQL unknown database") << rc << "no_such_database";
    rc = postgres();
    rc.Port = kDeadPort;
    QTest::newRow("PostgreSQL nothing listens") << rc << "Connection refused";

    rc = mariadb();
    rc.Password = "wrong";
    QTest::newRow("MariaDB wrong password") << rc << "Access denied";
    rc = mariadb();
    rc.DataBase = "no_such_database";
    QTest::newRow("MariaDB unknown database") << rc << "no_such_database";
    rc = mariadb();
    rc.Port = kDeadPort;
    QTest::newRow("MariaDB nothing listens") << rc << "Can't connect";

    rc = firebird();
    rc.Password = "wrong";
    QTest::newRow("Firebird wrong password") << rc << "password";
    rc = firebird();
    rc.DataBase = "/nonexistent/folder/none.fdb";
    QTest::newRow("Firebird unknown database") << rc << "none.fdb";
    rc = firebird();
    rc.Port = kDeadPort;
    QTest::newRow("Firebird nothing listens") << rc << "Connection refused";

    rc = odbc("VantryNoSuchDsn");
    QTest::newRow("ODBC unknown DSN") << rc << "Data source name not found";
    rc = odbc(QStringLiteral("DRIVER={%1};Servername=127.0.0.1;Port=%2;Database=x;Username=u;Password=p")
                  .arg(env("VANTRY_ODBC_PG_DRIVER"))
                  .arg(kDeadPort));
    QTest::newRow("ODBC driver string, nothing listens") << rc << "refused";

    rc = record(dsSqlServerCE, QString(), 0, "/tmp/some.sdf", QString(), QString());
    QTest::newRow("SQL Server Compact") << rc << "Microsoft SQL Server Compact is not available on this system";
    rc = record(dsOracle, "ORCL", 0, QString(), "scott", "tiger");
    QTest::newRow("Oracle without client") << rc << "Oracle Instant Client";
    QTest::newRow("OLE DB unknown provider") << oleDb("Provider=Vantry.NoSuchProvider.1;Data Source=x")
                                             << "OLE DB provider 'Vantry.NoSuchProvider.1' is not available on this system";
}

void tst_ConnectionFailures::failsWithCause()
{
    QFETCH(TReaderConnection, record);
    QFETCH(QString, expected);

    TimpDM dm;
    QElapsedTimer timer;
    timer.start();
    const QString tested = errorOf([&] { dm.TestRConnection(record); });
    QVERIFY2(tested.contains(expected, Qt::CaseInsensitive), qPrintable(tested));

    QStringList statuses;
    WorkspaceConnection connection([&](const QString &s) { statuses << s; });
    const QString connected = errorOf([&] { connection.connect(record); });
    QVERIFY2(connected.contains(expected, Qt::CaseInsensitive), qPrintable(connected));
    QCOMPARE(statuses, QStringList{"Connecting"});
    QCOMPARE(connection.openPath(), AccessPath::None);

    // Failures of a reachable host are immediate; nothing may wait for a time-out here.
    QVERIFY2(timer.elapsed() < 10000, qPrintable(QString::number(timer.elapsed())));
}

void tst_ConnectionFailures::unreachableHostFailsInBoundedTime_data()
{
    QTest::addColumn<TReaderConnection>("record");
    // A non-routable address: packets go nowhere, or the network says unreachable at once.
    TReaderConnection rc = TestServers::postgres();
    rc.Server = "10.255.255.1";
    rc.TimeOut = 2;
    QTest::newRow("PostgreSQL") << rc;
    rc = TestServers::mariadb();
    rc.Server = "10.255.255.1";
    rc.TimeOut = 2;
    QTest::newRow("MariaDB") << rc;
    rc = TestServers::firebird(); // no time-out option: the default one applies
    rc.Server = "10.255.255.1";
    QTest::newRow("Firebird") << rc;
}

void tst_ConnectionFailures::unreachableHostFailsInBoundedTime()
{
    QFETCH(TReaderConnection, record);
    TimpDM dm;
    QElapsedTimer timer;
    timer.start();
    const QString error = errorOf([&] { dm.TestRConnection(record); });
    QVERIFY2(!error.isEmpty(), "connected to a non-routable address");
    QVERIFY2(timer.elapsed() < 25000, qPrintable(QString::number(timer.elapsed()) + " ms: " + error));
    qInfo("%lld ms: %s", qint64(timer.elapsed()), qPrintable(error));
}

void tst_ConnectionFailures::missingSqliteFileIsNotCreated()
{
    QTemporaryDir dir;
    const QString file = dir.filePath("missing.sqlite");
    TimpDM dm;
    const QString tested = errorOf([&] { dm.TestRConnection(TestServers::sqlite(file)); });
    QVERIFY2(tested.contains(file), qPrintable(tested));
    WorkspaceConnection connection;
    const QString connected = errorOf([&] { connection.connect(TestServers::sqlite(file)); });
    QVERIFY2(connected.contains(file), qPrintable(connected));
    QStringList tables;
    const QString listed = errorOf([&] { dm.GetTablesListR(TestServers::sqlite(file), tables, true, true); });
    QVERIFY2(listed.contains(file), qPrintable(listed));
    QVERIFY(!QFileInfo::exists(file));
}

void tst_ConnectionFailures::sqlServerWithoutDriverReportsTheCall()
{
    // No SQL Server ODBC driver is installed here: the test raises, the database list reports.
    TReaderConnection rc = TestServers::record(dsSqlServer, "127.0.0.1", 0, "master", "sa", "secret");
    TimpDM dm;
    const QString tested = errorOf([&] { dm.TestRConnection(rc); });
    QVERIFY2(tested.startsWith("SQLDriverConnect Failed: ["), qPrintable(tested));
    QStringList list{"kept"};
    QString error;
    QVERIFY(dm.GetListOfDataBasesR(rc, list, error));
    QVERIFY2(error.startsWith("SQLDriverConnect Failed:"), qPrintable(error));
    QCOMPARE(list, QStringList{"kept"});
}

void tst_ConnectionFailures::missingDriverManager()
{
    Odbc::setLibraryNames({"libvantry-no-such-odbc.so.9"});
    TimpDM dm;
    QStringList list;
    const QString listed = errorOf([&] { dm.GetServersList("ODBC", list); });
    const QString tested = errorOf([&] { dm.TestRConnection(TestServers::odbc("VantrySQLite")); });
    Odbc::setLibraryNames({});
    QVERIFY2(listed.contains("libvantry-no-such-odbc.so.9"), qPrintable(listed));
    QVERIFY2(listed.startsWith("The ODBC driver manager could not be loaded"), qPrintable(listed));
    QCOMPARE(tested, listed);
    // Loaded again from the default names afterwards.
    dm.GetServersList("ODBC", list);
    QVERIFY(list.contains(TestServers::env("VANTRY_ODBC_SQLITE_DSN")));
}

QTEST_GUILESS_MAIN(tst_ConnectionFailures)
#include "tst_ConnectionFailures.moc"
