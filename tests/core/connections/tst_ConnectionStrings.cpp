// Connection type codes, ADO connection strings, the SQL Server driver choice, the ADO-to-ODBC
// translation and the universal path's configuration: all checked to the character.
#include "core/base/VantryError.h"
#include "core/connections/AdoConnectionString.h"
#include "core/connections/AdoToOdbc.h"
#include "core/connections/ConnectionTypes.h"
#include "core/connections/SqlServerDriver.h"
#include "core/connections/UniversalConfig.h"

#include "ErrorOf.h"
#include "TestServers.h"

#include <QtTest>

Q_DECLARE_METATYPE(TDataSourceType)

class tst_ConnectionStrings : public QObject
{
    Q_OBJECT

    SqlServerDriverChoice m_saved;

private slots:
    void initTestCase() { m_saved = SqlServerDriver::current(); }
    void cleanup() { SqlServerDriver::set(m_saved); }

    void typeTable_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("text");
        QTest::addColumn<TDataSourceType>("type");
        QTest::addColumn<int>("code");
        QTest::newRow("Oracle") << 0 << "Oracle Database" << dsOracle << 331;
        QTest::newRow("SQL Server") << 1 << "Microsoft SQL Server" << dsSqlServer << 321;
        QTest::newRow("ODBC") << 2 << "ODBC" << dsODBC << 341;
        QTest::newRow("MySQL") << 3 << "MySQL" << dsMySql << 343;
        QTest::newRow("PostgreSQL") << 4 << "PostgreSQL" << dsPostgreSQL << 345;
        QTest::newRow("Interbase") << 5 << "Interbase/Firebird" << dsInterbase << 347;
        QTest::newRow("OLE DB") << 6 << "OleDB(ADO)" << dsOleDb << 339;
        QTest::newRow("SQLite") << 7 << "SQLite" << dsSqLite << 349;
        QTest::newRow("SQL Server CE") << 8 << "Microsoft SQL Server CE" << dsSqlServerCE << 323;
    }
    void typeTable()
    {
        QFETCH(int, index);
        QFETCH(QString, text);
        QFETCH(TDataSourceType, type);
        QFETCH(int, code);
        QCOMPARE(ConnectionTypes::entryText(index), text);
        QCOMPARE(ConnectionTypes::typeOfIndex(index), type);
        QCOMPARE(ConnectionTypes::indexOfType(type), index);
        QCOMPARE(ConnectionTypes::codeOfType(type), code);
        QCOMPARE(ConnectionTypes::typeOfCode(code), type);
    }

    void otherTypesAreStoredAs341()
    {
        QCOMPARE(ConnectionTypes::count(), 9);
        int outside = 0;
        for (int t = 0; t < kDataSourceTypeCount; ++t) {
            const auto type = TDataSourceType(t);
            if (ConnectionTypes::indexOfType(type) >= 0)
                continue;
            ++outside;
            QCOMPARE(ConnectionTypes::codeOfType(type), 341);
        }
        QCOMPARE(outside, kDataSourceTypeCount - 9);
        QCOMPARE(ConnectionTypes::typeOfCode(341), dsODBC); // read back, 341 is ODBC
        QCOMPARE(ConnectionTypes::typeOfCode(999), dsNone);
        QCOMPARE(ConnectionTypes::indexOfCode(999), -1);
        QVERIFY(!errorOf([] { ConnectionTypes::entry(9); }).isEmpty());
    }

    void adoStrings_data()
    {
        QTest::addColumn<TDataSourceType>("type");
        QTest::addColumn<QString>("server");
        QTest::addColumn<QString>("database");
        QTest::addColumn<QString>("user");
        QTest::addColumn<QString>("password");
        QTest::addColumn<QString>("expected");
        QTest::newRow("Oracle") << dsOracle << "ORCL" << "ignored" << "scott" << "tiger"
            << "Provider=OraOLEDB.Oracle.1;Password=tiger;User ID=scott;Data Source=ORCL;Persist Security Info=True";
        QTest::newRow("SQL Server, integrated") << dsSqlServer << "srv\\SQLEXPRESS" << "Sales" << " " << ""
            << "Provider=SQLOLEDB.1;Persist Security Info=False;Integrated Security=SSPI;Password=;User ID= ;"
               "Initial Catalog=Sales;Data Source=srv\\SQLEXPRESS";
        QTest::newRow("SQL Server, login") << dsSqlServer << "10.0.0.5,1433" << "Sales" << "sa" << "s3cret"
            << "Provider=SQLOLEDB.1;Persist Security Info=False;Password=s3cret;User ID=sa;"
               "Initial Catalog=Sales;Data Source=10.0.0.5,1433";
        QTest::newRow("SQL Server, password only") << dsSqlServer << "srv" << "" << "" << "pw"
            << "Provider=SQLOLEDB.1;Persist Security Info=False;Password=pw;User ID=;Initial Catalog=;Data Source=srv";
        QTest::newRow("ODBC driver string") << dsODBC << "driver={SQLite3};Database=/tmp/a.db" << "" << "u" << "p"
            << "Provider=MSDASQL.1;Extended Properties=\"driver={SQLite3};Database=/tmp/a.db\"";
        QTest::newRow("ODBC data source") << dsODBC << "PgSales" << "" << "me" << "pw"
            << "Provider=MSDASQL.1;Password=pw;User ID=me;Data Source=PgSales";
        QTest::newRow("OLE DB, macro expanded") << dsOleDb
            << "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=<CommonDocumentsDir>/nw.mdb" << "" << "" << ""
            << "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=/srv/docs/nw.mdb";
        QTest::newRow("other type") << dsExcel << "" << "" << "" << ""
            << "Provider=MSDASQL.1;Extended Properties=\"DSN=Sheets\"";
    }
    void adoStrings()
    {
        QFETCH(TDataSourceType, type);
        QFETCH(QString, server);
        QFETCH(QString, database);
        QFETCH(QString, user);
        QFETCH(QString, password);
        QFETCH(QString, expected);
        qputenv("VANTRY_COMMON_DOCUMENTS", "/srv/docs");
        // Whatever driver was found, the ADO path uses SQLOLEDB.
        SqlServerDriver::chooseFrom({QStringLiteral("SQL Server Native Client 10.0")});
        TReaderConnection r = TestServers::record(type, server, 0, database, user, password);
        r.OdbcDsnName = QStringLiteral("Sheets");
        QCOMPARE(AdoConnectionString::fromRecord(r), expected);
        qunsetenv("VANTRY_COMMON_DOCUMENTS");
    }

    void odbcTextOfOtherTypes()
    {
        TReaderConnection r;
        r.ConnectionType = dsAccess;
        QCOMPARE(AdoConnectionString::odbcConnectionText(r), QString());
        r.OdbcDsnName = QStringLiteral("DRIVER={MDBTools};DBQ=/x.mdb");
        QCOMPARE(AdoConnectionString::odbcConnectionText(r), r.OdbcDsnName);
    }

    void driverChoice_data()
    {
        QTest::addColumn<QStringList>("installed");
        QTest::addColumn<QString>("driver");
        QTest::addColumn<QString>("library");
        QTest::addColumn<int>("version");
        QTest::newRow("nothing") << QStringList() << "DRIVER={SQL Server}" << "ODBCBCP.DLL" << 4;
        QTest::newRow("unrelated") << QStringList{"PostgreSQL Unicode", "MariaDB Unicode", "SQLite3"}
                                   << "DRIVER={SQL Server}" << "ODBCBCP.DLL" << 4;
        QTest::newRow("native client 10 wins whatever the list order")
            << QStringList{"SQL Native Client", "SQL Server", "SQL Server Native Client 10.0"}
            << "DRIVER={SQL Server Native Client 10.0}" << "Sqlncli10.dll" << 8;
        QTest::newRow("native client") << QStringList{"SQL Server", "SQL Native Client"}
                                       << "DRIVER={SQL Native Client}" << "Sqlncli.dll" << 8;
        QTest::newRow("Windows names before Linux ones")
            << QStringList{"ODBC Driver 18 for SQL Server", "SQL Server"}
            << "DRIVER={SQL Server}" << "ODBCBCP.DLL" << 4;
        QTest::newRow("driver 18") << QStringList{"FreeTDS", "ODBC Driver 17 for SQL Server", "ODBC Driver 18 for SQL Server"}
                                   << "DRIVER={ODBC Driver 18 for SQL Server}" << "libmsodbcsql-18.so" << 8;
        QTest::newRow("driver 17") << QStringList{"FreeTDS", "ODBC Driver 17 for SQL Server"}
                                   << "DRIVER={ODBC Driver 17 for SQL Server}" << "libmsodbcsql-17.so" << 8;
        QTest::newRow("FreeTDS") << QStringList{"PostgreSQL ANSI", "FreeTDS"}
                                 << "DRIVER={FreeTDS}" << "libtdsodbc.so" << 4;
        QTest::newRow("case and blanks") << QStringList{" odbc driver 17 for sql server "}
                                         << "DRIVER={ODBC Driver 17 for SQL Server}" << "libmsodbcsql-17.so" << 8;
    }
    void driverChoice()
    {
        QFETCH(QStringList, installed);
        QFETCH(QString, driver);
        QFETCH(QString, library);
        QFETCH(int, version);
        SqlServerDriver::chooseFrom(installed);
        const SqlServerDriverChoice c = SqlServerDriver::current();
        QCOMPARE(c.odbcDriverText, driver);
        QCOMPARE(c.bulkCopyLibrary, library);
        QCOMPARE(c.version, version);
    }

    void translation_data()
    {
        QTest::addColumn<QString>("ado");
        QTest::addColumn<QString>("odbc");
        QTest::newRow("MSDASQL extended properties")
            << "Provider=MSDASQL.1;Extended Properties=\"DRIVER={SQLite3};Database=/tmp/a.db\""
            << "DRIVER={SQLite3};Database=/tmp/a.db";
        QTest::newRow("MSDASQL data source") << "Provider=MSDASQL.1;Password=pw;User ID=me;Data Source=PgSales"
                                             << "DSN=PgSales;UID=me;PWD=pw";
        QTest::newRow("MSDASQL empty credentials") << "Provider=MSDASQL.1;Password=;User ID=;Data Source=PgSales"
                                                   << "DSN=PgSales;UID=;PWD=";
        QTest::newRow("quoted password with semicolon")
            << "Provider=MSDASQL.1;Password=\"a;b\"\"c\";User ID='o''neil';Data Source=D"
            << "DSN=D;UID=o'neil;PWD={a;b\"c}";
        QTest::newRow("keys in any case") << "provider=msdasql;EXTENDED PROPERTIES='DSN=X;UID=y'"
                                          << "DSN=X;UID=y";
        QTest::newRow("SQL Server login")
            << "Provider=SQLOLEDB.1;Persist Security Info=False;Password=s3cret;User ID=sa;Initial Catalog=Sales;Data Source=db1"
            << "DRIVER={ODBC Driver 18 for SQL Server};Server=db1;Database=Sales;UID=sa;PWD=s3cret";
        QTest::newRow("SQL Server integrated")
            << "Provider=SQLOLEDB.1;Persist Security Info=False;Integrated Security=SSPI;Password=;User ID=;Initial Catalog=Sales;Data Source=db1"
            << "DRIVER={ODBC Driver 18 for SQL Server};Server=db1;Database=Sales;Trusted_Connection=Yes";
        QTest::newRow("SQL Native Client provider")
            << "Provider=SQLNCLI10.1;Data Source=db2;Initial Catalog=x;User ID=u;Password=p"
            << "DRIVER={ODBC Driver 18 for SQL Server};Server=db2;Database=x;UID=u;PWD=p";
        QTest::newRow("Jet") << "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=/data/nw.mdb"
                             << "DRIVER={MDBTools};DBQ=/data/nw.mdb";
        QTest::newRow("ACE") << "Provider=Microsoft.ACE.OLEDB.12.0;Data Source=/data/nw.accdb;Persist Security Info=False"
                             << "DRIVER={MDBTools};DBQ=/data/nw.accdb";
        QTest::newRow("ODBC driver string as it stands") << "DRIVER={PostgreSQL Unicode};Server=127.0.0.1;PWD={a;b}"
                                                         << "DRIVER={PostgreSQL Unicode};Server=127.0.0.1;PWD={a;b}";
        QTest::newRow("ODBC DSN as it stands") << "dsn=Sales;UID=a" << "dsn=Sales;UID=a";
        QTest::newRow("no provider: ADO's default MSDASQL") << "Data Source=Sales;User ID=a;Password=b"
                                                            << "DSN=Sales;UID=a;PWD=b";
    }
    void translation()
    {
        QFETCH(QString, ado);
        QFETCH(QString, odbc);
        SqlServerDriver::chooseFrom({QStringLiteral("ODBC Driver 18 for SQL Server")});
        QCOMPARE(AdoToOdbc::translate(ado), odbc);
    }

    void translationErrors_data()
    {
        QTest::addColumn<QString>("ado");
        QTest::addColumn<QString>("message");
        QTest::newRow("Oracle provider")
            << "Provider=OraOLEDB.Oracle.1;Password=tiger;User ID=scott;Data Source=ORCL;Persist Security Info=True"
            << "OLE DB provider 'OraOLEDB.Oracle.1' is not available on this system";
        QTest::newRow("unknown provider") << "Provider = SomeVendor.Provider ;Data Source=x"
                                          << "OLE DB provider 'SomeVendor.Provider' is not available on this system";
        QTest::newRow("SQL Server Compact") << "Provider=Microsoft.SQLSERVER.CE.OLEDB.3.5;Data Source=a.sdf"
                                            << "Microsoft SQL Server Compact is not available on this system";
        QTest::newRow("empty") << "  " << "The connection string is empty.";
        QTest::newRow("MSDASQL without source") << "Provider=MSDASQL.1;User ID=a"
                                                << "The ODBC connection string names neither a data source nor a driver.";
    }
    void translationErrors()
    {
        QFETCH(QString, ado);
        QFETCH(QString, message);
        QCOMPARE(errorOf([&] { AdoToOdbc::translate(ado); }), message);
    }

    void adoPathEndToEnd()
    {
        // What the ADO path of a tab does: record, ADO string, ODBC string.
        SqlServerDriver::chooseFrom({QStringLiteral("FreeTDS")});
        QCOMPARE(AdoToOdbc::translate(AdoConnectionString::fromRecord(
                     TestServers::record(dsSqlServer, QStringLiteral("db1"), 0, QStringLiteral("Sales"), QString(), QString()))),
                 QStringLiteral("DRIVER={FreeTDS};Server=db1;Database=Sales;Trusted_Connection=Yes"));
        QCOMPARE(AdoToOdbc::translate(AdoConnectionString::fromRecord(
                     TestServers::record(dsODBC, QStringLiteral("MariaDB;x"), 0, QString(), QStringLiteral("u"), QStringLiteral("p")))),
                 QStringLiteral("DSN=MariaDB;UID=u;PWD=p")); // a ";" in a DSN name cuts it, as ADO does
    }

    void universalConfig_data()
    {
        QTest::addColumn<TDataSourceType>("type");
        QTest::addColumn<int>("tls");
        QTest::addColumn<QString>("provider");
        QTest::addColumn<QStringList>("options"); // name=value, in order
        QTest::newRow("MySQL") << dsMySql << 1 << "MYSQL"
            << QStringList{"MySQL.SSLCACert=/ca.pem", "MySQL.SSLCert=/c.pem", "MySQL.SSLKey=/k.pem",
                           "MySQL.Compress=True", "MySQL.ConnectionTimeout=15", "MySQL.UseUnicode=False",
                           "MySQL.Protocol=mpSSL"};
        QTest::newRow("MySQL without TLS") << dsMySql << 0 << "MYSQL"
            << QStringList{"MySQL.SSLCACert=/ca.pem", "MySQL.SSLCert=/c.pem", "MySQL.SSLKey=/k.pem",
                           "MySQL.Compress=True", "MySQL.ConnectionTimeout=15", "MySQL.UseUnicode=False",
                           "MySQL.Protocol=mpDefault"};
        QTest::newRow("PostgreSQL") << dsPostgreSQL << 1 << "POSTGRESQL"
            << QStringList{"PostgreSQL.SSLCACert=/ca.pem", "PostgreSQL.SSLCert=/c.pem", "PostgreSQL.SSLKey=/k.pem",
                           "PostgreSQL.ConnectionTimeout=15", "PostgreSQL.UseUnicode=False",
                           "PostgreSQL.SSLMode=smRequire"};
        QTest::newRow("PostgreSQL without TLS") << dsPostgreSQL << 0 << "POSTGRESQL"
            << QStringList{"PostgreSQL.SSLCACert=/ca.pem", "PostgreSQL.SSLCert=/c.pem", "PostgreSQL.SSLKey=/k.pem",
                           "PostgreSQL.ConnectionTimeout=15", "PostgreSQL.UseUnicode=False",
                           "PostgreSQL.SSLMode=smDisable"};
        QTest::newRow("Interbase") << dsInterbase << 0 << "INTERBASE" << QStringList{"InterBase.UseUnicode=False"};
        QTest::newRow("SQLite") << dsSqLite << 0 << "SQLITE" << QStringList{"SQLite.UseUnicode=False"};
        QTest::newRow("SQL Server CE") << dsSqlServerCE << 0 << "SQL SERVER"
                                       << QStringList{"SQL Server.OLEDBProvider=prCompact"};
        QTest::newRow("not universal") << dsODBC << 0 << "" << QStringList();
    }
    void universalConfig()
    {
        QFETCH(TDataSourceType, type);
        QFETCH(int, tls);
        QFETCH(QString, provider);
        QFETCH(QStringList, options);
        TReaderConnection r = TestServers::record(type, QStringLiteral("127.0.0.1"), 0, QStringLiteral("shop"),
                                     QStringLiteral("me"), QStringLiteral("pw"));
        r.Port = 3307;
        r.TLS = tls;
        r.TimeOut = 15;
        r.Compress = true;
        r.SSLCACert = QStringLiteral("/ca.pem");
        r.SSLCert = QStringLiteral("/c.pem");
        r.SSLKey = QStringLiteral("/k.pem");
        const UniversalConfig c = UniversalConfig::fromRecord(r);
        QCOMPARE(c.providerName, provider);
        QStringList got;
        for (const auto &o : c.options)
            got << o.first + QLatin1Char('=') + o.second;
        QCOMPARE(got, options);
        QCOMPARE(c.server, QStringLiteral("127.0.0.1"));
        QCOMPARE(c.database, QStringLiteral("shop"));
        QCOMPARE(c.userName, QStringLiteral("me"));
        QCOMPARE(c.password, QStringLiteral("pw"));
        QCOMPARE(c.port, 3307);

        r.UseUnicode = true;
        if (type == dsSqLite)
            QCOMPARE(UniversalConfig::fromRecord(r).option(QStringLiteral("SQLite.UseUnicode")), QStringLiteral("True"));
    }
};

QTEST_GUILESS_MAIN(tst_ConnectionStrings)
#include "tst_ConnectionStrings.moc"
