// The pure parts of opening connections: provider options onto Qt driver options, table name
// quoting, TNS alias parsing, and the name handed to Qt's ODBC driver.

#include "core/base/VantryError.h"
#include "core/connections/AdoSession.h"
#include "core/connections/SqlNames.h"
#include "core/connections/TnsNames.h"
#include "core/connections/UniversalDriverSettings.h"

#include "ErrorOf.h"

#include <QtTest>

class tst_ConnectionDriverSettings : public QObject
{
    Q_OBJECT

private slots:
    void providerOptions_data();
    void providerOptions();
    void refusedConfigurations_data();
    void refusedConfigurations();
    void sqliteOpensWithoutCreating();
    void quoting_data();
    void quoting();
    void reservedWordFile();
    void tnsAliases_data();
    void tnsAliases();
    void qodbcName_data();
    void qodbcName();
};

namespace {
UniversalConfig config(const QString &provider, const QVector<QPair<QString, QString>> &options)
{
    UniversalConfig c;
    c.providerName = provider;
    c.options = options;
    c.server = "db.example";
    c.database = "sales";
    return c;
}
} // namespace

void tst_ConnectionDriverSettings::providerOptions_data()
{
    QTest::addColumn<UniversalConfig>("config");
    QTest::addColumn<QString>("driver");
    QTest::addColumn<QStringList>("options");

    QTest::newRow("MySQL defaults") << config("MYSQL", {{"MySQL.Compress", "False"}, {"MySQL.ConnectionTimeout", "0"},
                                                        {"MySQL.UseUnicode", "False"}, {"MySQL.Protocol", "mpDefault"}})
                                    << "QMYSQL" << QStringList{"MYSQL_OPT_CONNECT_TIMEOUT=15"};
    QTest::newRow("MySQL SSL, compression, time-out")
        << config("MYSQL", {{"MySQL.SSLCACert", "/c/ca.pem"}, {"MySQL.SSLCert", "/c/cert.pem"}, {"MySQL.SSLKey", "/c/key.pem"},
                            {"MySQL.Compress", "True"}, {"MySQL.ConnectionTimeout", "7"}, {"MySQL.Protocol", "mpSSL"}})
        << "QMYSQL"
        << QStringList{"SSL_CA=/c/ca.pem", "SSL_CERT=/c/cert.pem", "SSL_KEY=/c/key.pem", "CLIENT_COMPRESS",
                       "CLIENT_SSL", "MYSQL_OPT_CONNECT_TIMEOUT=7"};
    QTest::newRow("PostgreSQL disable") << config("POSTGRESQL", {{"PostgreSQL.SSLMode", "smDisable"}, {"PostgreSQL.ConnectionTimeout", "0"}})
                                        << "QPSQL" << QStringList{"sslmode=disable", "connect_timeout=15"};
    QTest::newRow("PostgreSQL require with files")
        << config("POSTGRESQL", {{"PostgreSQL.SSLCACert", "/my certs/ca.pem"}, {"PostgreSQL.SSLCert", "/c/it's.pem"},
                                 {"PostgreSQL.SSLKey", "/c/key.pem"}, {"PostgreSQL.SSLMode", "smRequire"},
                                 {"PostgreSQL.ConnectionTimeout", "4"}})
        << "QPSQL"
        << QStringList{"sslrootcert='/my certs/ca.pem'", "sslcert='/c/it\\'s.pem'", "sslkey=/c/key.pem",
                       "sslmode=require", "connect_timeout=4"};
    QTest::newRow("InterBase Unicode") << config("INTERBASE", {{"InterBase.UseUnicode", "True"}}) << "QIBASE"
                                       << QStringList{"ISC_DPB_LC_CTYPE=UTF8"};
    QTest::newRow("InterBase plain") << config("INTERBASE", {{"InterBase.UseUnicode", "False"}}) << "QIBASE" << QStringList{};
}

void tst_ConnectionDriverSettings::providerOptions()
{
    QFETCH(UniversalConfig, config);
    QFETCH(QString, driver);
    QFETCH(QStringList, options);
    const UniversalDriverSettings s = universalDriverSettings(config);
    QCOMPARE(s.driver, driver);
    QCOMPARE(s.options, options);
    QCOMPARE(s.hostName, QString("db.example"));
    QCOMPARE(s.databaseName, QString("sales"));
    QCOMPARE(s.port, -1); // port 0: the driver's default
}

void tst_ConnectionDriverSettings::refusedConfigurations_data()
{
    QTest::addColumn<UniversalConfig>("config");
    QTest::addColumn<QString>("expected");
    QTest::newRow("SQL Server Compact") << config("SQL SERVER", {{"SQL Server.OLEDBProvider", "prCompact"}})
                                        << "Microsoft SQL Server Compact is not available on this system";
    QTest::newRow("no provider") << config("", {}) << "no universal provider";
    QTest::newRow("unknown option") << config("MYSQL", {{"MySQL.Pipe", "True"}}) << "MySQL.Pipe=True";
    QTest::newRow("unknown protocol") << config("MYSQL", {{"MySQL.Protocol", "mpPipe"}}) << "MySQL.Protocol=mpPipe";
    QTest::newRow("unknown SSL mode") << config("POSTGRESQL", {{"PostgreSQL.SSLMode", "smVerifyFull"}}) << "smVerifyFull";
    QTest::newRow("semicolon in a path") << config("MYSQL", {{"MySQL.SSLKey", "/a;b.pem"}}) << "/a;b.pem";
    QTest::newRow("time-out not a number") << config("POSTGRESQL", {{"PostgreSQL.ConnectionTimeout", "soon"}}) << "soon";
}

void tst_ConnectionDriverSettings::refusedConfigurations()
{
    QFETCH(UniversalConfig, config);
    QFETCH(QString, expected);
    const QString error = errorOf([&] { universalDriverSettings(config); });
    QVERIFY2(error.contains(expected), qPrintable(error));
}

void tst_ConnectionDriverSettings::sqliteOpensWithoutCreating()
{
    UniversalConfig c = config("SQLITE", {{"SQLite.UseUnicode", "True"}});
    c.database = "/data/my db#1.sqlite";
    const UniversalDriverSettings s = universalDriverSettings(c);
    QCOMPARE(s.driver, QString("QSQLITE"));
    QCOMPARE(s.sqliteFile, c.database);
    QCOMPARE(s.databaseName, QString("file:///data/my%20db%231.sqlite?mode=rw"));
    QCOMPARE(s.options, QStringList{"QSQLITE_OPEN_URI"});
}

void tst_ConnectionDriverSettings::quoting_data()
{
    QTest::addColumn<QString>("catalog");
    QTest::addColumn<QString>("schema");
    QTest::addColumn<QString>("table");
    QTest::addColumn<int>("style");
    QTest::addColumn<QString>("expected");
    const int dq = int(SqlNames::QuoteStyle::DoubleQuotes), br = int(SqlNames::QuoteStyle::Brackets),
              bq = int(SqlNames::QuoteStyle::BackQuotes);
    QTest::newRow("plain") << "" << "" << "customers" << dq << "customers";
    QTest::newRow("schema") << "" << "public" << "customers" << dq << "public.customers";
    QTest::newRow("catalogue without schema") << "db" << "" << "customers" << dq << "customers";
    QTest::newRow("all three") << "db" << "dbo" << "customers" << dq << "db.dbo.customers";
    QTest::newRow("blank") << "" << "my schema" << "order lines" << dq << "\"my schema\".\"order lines\"";
    QTest::newRow("reserved, any case") << "" << "" << "Order" << dq << "\"Order\"";
    QTest::newRow("brackets") << "db" << "dbo" << "order lines" << br << "db.dbo.[order lines]";
    QTest::newRow("back quotes") << "" << "" << "select" << bq << "`select`";
    QTest::newRow("quote inside") << "" << "" << "a \"b\"" << dq << "\"a \"\"b\"\"\"";
    QTest::newRow("tab is a blank") << "" << "" << "a\tb" << br << "[a\tb]";
}

void tst_ConnectionDriverSettings::quoting()
{
    QFETCH(QString, catalog);
    QFETCH(QString, schema);
    QFETCH(QString, table);
    QFETCH(int, style);
    QFETCH(QString, expected);
    QCOMPARE(SqlNames::qualifiedName(catalog, schema, table, SqlNames::QuoteStyle(style),
                                     SqlNames::builtInReservedWords()),
             expected);
}

void tst_ConnectionDriverSettings::reservedWordFile()
{
    QTemporaryFile file;
    QVERIFY(file.open());
    file.write("# comment line\nSTART, stop;Resume\n-- also a comment: COMMENTWORD\n  level  \n");
    file.close();
    const QSet<QString> words = SqlNames::readReservedWordFile(file.fileName());
    QCOMPARE(words, (QSet<QString>{"START", "STOP", "RESUME", "LEVEL"}));
    QVERIFY(SqlNames::needsQuotes("Level", words));
    QVERIFY(!SqlNames::needsQuotes("comment", words));
    QVERIFY(SqlNames::readReservedWordFile("/nonexistent/words.txt").isEmpty());
}

void tst_ConnectionDriverSettings::tnsAliases_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("aliases");
    QTest::newRow("one") << "ORCL = (DESCRIPTION = (ADDRESS = (HOST = h)(PORT = 1521)))" << QStringList{"ORCL"};
    QTest::newRow("several lines and comments")
        << "# ORCL_OLD = (x)\nA.WORLD =\n (DESCRIPTION =\n  (ADDRESS = (HOST = h))\n )\n\nB = (DESCRIPTION=(SID=b)) # B2 = (y)\n"
        << QStringList{"A.WORLD", "B"};
    QTest::newRow("aliases sharing an entry") << "X, Y ,Z = (DESCRIPTION = (SID = x))" << QStringList{"X", "Y", "Z"};
    QTest::newRow("unbalanced closing parenthesis") << "A = (x))\nB = (y)" << QStringList{"A", "B"};
    QTest::newRow("empty") << "" << QStringList{};
}

void tst_ConnectionDriverSettings::tnsAliases()
{
    QFETCH(QString, text);
    QFETCH(QStringList, aliases);
    QCOMPARE(TnsNames::parseAliases(text), aliases);
}

void tst_ConnectionDriverSettings::qodbcName_data()
{
    QTest::addColumn<QString>("odbc");
    QTest::addColumn<QString>("expected");
    QTest::newRow("DSN with login") << "DSN=Sales;UID=ann;PWD=x" << "Sales;UID=ann;PWD=x";
    QTest::newRow("DSN without login") << "DSN=Sales;UID=;PWD=" << "Sales";
    QTest::newRow("driver string") << "DRIVER={SQLite3};Database=/tmp/a.db" << "DRIVER={SQLite3};Database=/tmp/a.db";
    QTest::newRow("driver string with braces kept") << "Driver={PostgreSQL Unicode};Pwd={a;b}"
                                                    << "Driver={PostgreSQL Unicode};Pwd={a;b}";
    QTest::newRow("file DSN") << "FILEDSN=/home/a/x.dsn" << "/home/a/x.dsn";
}

void tst_ConnectionDriverSettings::qodbcName()
{
    QFETCH(QString, odbc);
    QFETCH(QString, expected);
    QCOMPARE(qodbcDatabaseName(odbc), expected);
}

QTEST_GUILESS_MAIN(tst_ConnectionDriverSettings)
#include "tst_ConnectionDriverSettings.moc"
