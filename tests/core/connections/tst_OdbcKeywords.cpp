// The ODBC builder's text work: reading a driver's browse answer, the common keyword table, the
// values of a string, the completed string a driver returns, and the driver list file.
#include "core/connections/OdbcInstIni.h"
#include "core/connections/OdbcKeywords.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {

QStringList namesOf(const QVector<OdbcKeyword> &keywords)
{
    QStringList names;
    for (const OdbcKeyword &k : keywords)
        names << k.name;
    return names;
}

QString valueNamed(const QVector<OdbcKeywordValue> &values, const QString &name)
{
    for (const OdbcKeywordValue &v : values)
        if (v.name == name)
            return v.value;
    return QStringLiteral("<missing>");
}

} // namespace

class tst_OdbcKeywords : public QObject
{
    Q_OBJECT

private slots:
    void browseAnswerGivesTheKeywordsStillAsked()
    {
        const auto keywords = OdbcKeywords::fromBrowseResult(
            QStringLiteral("SERVER:Server={alpha,beta};UID:Login ID=?;PWD:Password=?;*APP:AppName=?;"
                           "*LANGUAGE:Language={us_english,Deutsch};DATABASE=master;DRIVER:Driver=?"));
        // DATABASE already has a value and DRIVER is the builder's own: neither is asked again.
        QCOMPARE(namesOf(keywords), QStringList({"SERVER", "UID", "PWD", "APP", "LANGUAGE"}));
        QCOMPARE(keywords[0].prompt, QStringLiteral("Server:"));
        QCOMPARE(keywords[0].choices, QStringList({"alpha", "beta"}));
        QVERIFY(!keywords[0].optional);
        QCOMPARE(keywords[1].prompt, QStringLiteral("Login ID:"));
        QVERIFY(keywords[2].kind == OdbcKeyword::Kind::Password);
        QVERIFY(keywords[3].optional);
        // An optional list may be left empty.
        QCOMPARE(keywords[4].choices, QStringList({QString(), "us_english", "Deutsch"}));
        QVERIFY(OdbcKeywords::fromBrowseResult(QString()).isEmpty());
    }

    void commonKeywordsFollowTheDriverFamily_data()
    {
        QTest::addColumn<QString>("driver");
        QTest::addColumn<QString>("library");
        QTest::addColumn<QString>("first");
        QTest::addColumn<int>("count");
        QTest::newRow("SQLite3") << "SQLite3" << "" << "Database" << 5;
        QTest::newRow("PostgreSQL") << "PostgreSQL Unicode" << "" << "Server" << 6;
        QTest::newRow("MariaDB") << "MariaDB Unicode" << "" << "Server" << 6;
        QTest::newRow("mdbtools") << "MDBTools" << "" << "DBQ" << 1;
        QTest::newRow("by library") << "Sales DB" << "/usr/lib/x86_64-linux-gnu/odbc/libmaodbc.so" << "Server" << 6;
        QTest::newRow("unknown") << "Acme Flat Files" << "libacme.so" << "UID" << 2;
    }
    void commonKeywordsFollowTheDriverFamily()
    {
        QFETCH(QString, driver);
        QFETCH(QString, library);
        QFETCH(QString, first);
        QFETCH(int, count);
        const auto keywords = OdbcKeywords::commonKeywords(driver, library);
        QCOMPARE(keywords.size(), count);
        QCOMPARE(keywords.first().name, first);
    }

    void valuesAreReadThroughAliasesAndTheRestIsKept()
    {
        const auto keywords = OdbcKeywords::commonKeywords(QStringLiteral("PostgreSQL Unicode"));
        QString others;
        const auto values = OdbcKeywords::valuesFrom(
            QStringLiteral("DRIVER={PostgreSQL Unicode};Servername=db1;database=sales;Username=ann;"
                           "PWD={a;b}};c};BoolsAsChar=0;Fetch=500"),
            keywords, &others);
        QCOMPARE(valueNamed(values, "Server"), QStringLiteral("db1"));
        QCOMPARE(valueNamed(values, "Database"), QStringLiteral("sales"));
        QCOMPARE(valueNamed(values, "UID"), QStringLiteral("ann"));
        QCOMPARE(valueNamed(values, "PWD"), QStringLiteral("a;b};c"));
        QCOMPARE(valueNamed(values, "Port"), QStringLiteral("5432")); // the default, not in the string
        QCOMPARE(others, QStringLiteral("BoolsAsChar=0;Fetch=500"));
    }

    void writtenStringReadsBackToTheSameValues()
    {
        const auto keywords = OdbcKeywords::commonKeywords(QStringLiteral("MariaDB Unicode"));
        const QVector<OdbcKeywordValue> typed = {{"Server", "db.example.com"}, {"Port", "3307"}, {"Database", ""},
                                                 {"UID", "bob"}, {"PWD", " semi;colon}brace "}, {"Charset", ""}};
        const QString text = OdbcKeywords::connectionString(QStringLiteral("MariaDB Unicode"), typed,
                                                            QStringLiteral("OPTION=3; ;SOCKET=/tmp/s"));
        // Empty values are left out; the password is braced, its own brace doubled.
        QCOMPARE(text, QStringLiteral("DRIVER={MariaDB Unicode};Server=db.example.com;Port=3307;UID=bob;"
                                      "PWD={ semi;colon}}brace };OPTION=3;SOCKET=/tmp/s"));
        QCOMPARE(OdbcKeywords::driverOf(text), QStringLiteral("MariaDB Unicode"));
        QString others;
        const auto back = OdbcKeywords::valuesFrom(text, keywords, &others);
        QCOMPARE(valueNamed(back, "PWD"), QStringLiteral(" semi;colon}brace "));
        QCOMPARE(valueNamed(back, "Port"), QStringLiteral("3307"));
        QCOMPARE(others, QStringLiteral("OPTION=3;SOCKET=/tmp/s"));
    }

    void aFileDriverIsNotAskedWithoutItsFile()
    {
        const auto sqlite = OdbcKeywords::commonKeywords(QStringLiteral("SQLite3"));
        auto values = OdbcKeywords::valuesFrom(QString(), sqlite);
        QCOMPARE(OdbcKeywords::firstMissing(sqlite, values), 0);
        values[0].value = QStringLiteral("  ");
        QCOMPARE(OdbcKeywords::firstMissing(sqlite, values), 0);
        values[0].value = QStringLiteral("/data/a.db");
        QCOMPARE(OdbcKeywords::firstMissing(sqlite, values), -1);
        // Server drivers may take their defaults (a local server, the user's own database).
        const auto pg = OdbcKeywords::commonKeywords(QStringLiteral("PostgreSQL Unicode"));
        QCOMPARE(OdbcKeywords::firstMissing(pg, OdbcKeywords::valuesFrom(QString(), pg)), -1);
    }

    void completedStringIsMadeFitToConnectAgain_data()
    {
        QTest::addColumn<QString>("completed");
        QTest::addColumn<QString>("expected");
        // The SQLite3 driver names no driver and an empty DSN in what it returns.
        QTest::newRow("sqlite") << "DSN=;Database=/data/a.db;StepAPI=;Timeout=;PWD="
                                << "DRIVER={SQLite3};Database=/data/a.db";
        QTest::newRow("braced value") << "DSN=;Database={/data/a;b.db};NoTXN=0"
                                      << "DRIVER={SQLite3};Database={/data/a;b.db};NoTXN=0";
        QTest::newRow("named driver") << "DRIVER={PostgreSQL Unicode};SERVER=h;PORT=1;ExtraSysTablePrefixes=;Fetch=100;"
                                      << "DRIVER={PostgreSQL Unicode};SERVER=h;PORT=1;Fetch=100";
        QTest::newRow("data source") << "DSN=Sales;UID=ann" << "DSN=Sales;UID=ann";
    }
    void completedStringIsMadeFitToConnectAgain()
    {
        QFETCH(QString, completed);
        QFETCH(QString, expected);
        QCOMPARE(OdbcKeywords::tidyCompleted(completed, QStringLiteral("SQLite3")), expected);
    }

    void driverSectionsOfOdbcinstIni()
    {
        const QString ini = QStringLiteral("[ODBC]\nTrace=No\n\n[PostgreSQL Unicode]\n; the wide driver\n"
                                           "Description = PostgreSQL ODBC driver\n Driver=psqlodbcw.so\n#Setup=x\n"
                                           "[SQLite3]\nDriver=libsqlite3odbc.so\n");
        const auto pg = OdbcInstIni::section(ini, QStringLiteral("postgresql unicode"));
        QCOMPARE(pg.value("Driver"), QStringLiteral("psqlodbcw.so"));
        QCOMPARE(pg.value("Description"), QStringLiteral("PostgreSQL ODBC driver"));
        QCOMPARE(pg.size(), 2);
        QVERIFY(OdbcInstIni::section(ini, QStringLiteral("Missing")).isEmpty());
    }

    void driverEntryIsReadFromTheDriverManagersFile()
    {
        QTemporaryDir dir;
        QFile file(dir.filePath("odbcinst.ini"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[Acme]\nDriver=/opt/acme/libtdsodbc.so\n");
        file.close();
        const QByteArray saved = qgetenv("ODBCSYSINI");
        qputenv("ODBCSYSINI", dir.path().toUtf8());
        QCOMPARE(OdbcInstIni::files().first(), dir.filePath("odbcinst.ini"));
        const QString library = OdbcInstIni::driverEntry(QStringLiteral("Acme")).value("Driver");
        qputenv("ODBCSYSINI", saved);
        QCOMPARE(library, QStringLiteral("/opt/acme/libtdsodbc.so"));
        // The library tells the family when the name doesn't.
        QCOMPARE(OdbcKeywords::commonKeywords(QStringLiteral("Acme"), library).last().name, QStringLiteral("TDS_Version"));
    }
};

QTEST_GUILESS_MAIN(tst_OdbcKeywords)
#include "tst_OdbcKeywords.moc"
