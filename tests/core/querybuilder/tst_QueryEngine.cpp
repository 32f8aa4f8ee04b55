// The engine around the parser and generator: dialect codes, text and model in step, sleep mode
// and its wake-up question, the options file, and metadata from a real SQLite database.

#include "TestServers.h"

#include "core/querybuilder/QueryBuilderSource.h"
#include "core/querybuilder/QueryEngine.h"
#include "core/querybuilder/SessionMetadataProvider.h"
#include "core/querybuilder/SqlGenerator.h"
#include "core/querybuilder/SqlParser.h"

#include <QSettings>
#include <QSignalSpy>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QtTest>

class tst_QueryEngine : public QObject
{
    Q_OBJECT

private slots:
    void dialectCodes_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<int>("dialect");
        QTest::addColumn<QString>("version");
        using D = SqlDialect;
        const QVector<std::tuple<int, D, const char *>> table = {
            {0, D::AnsiSql92, ""}, {1, D::Generic, ""}, {3, D::AnsiSql2003, ""}, {4, D::Universal, ""},
            {10, D::MsSqlServer, "SQL Server 7"}, {11, D::MsSqlServer, "SQL Server 2000"}, {12, D::MsSqlServer, "SQL Server 2005"},
            {20, D::MySql, "3.0.0"}, {21, D::MySql, "4.0.0"}, {22, D::MySql, "4.1.0"}, {23, D::MySql, "5.0.0"},
            {30, D::PostgreSql, ""}, {40, D::Sqlite, ""},
            {50, D::Oracle, "Oracle 7"}, {51, D::Oracle, "Oracle 8"}, {52, D::Oracle, "Oracle 9"}, {53, D::Oracle, "Oracle 10"},
            {60, D::Informix, "Informix 8"}, {61, D::Informix, "Informix 9"}, {62, D::Informix, "Informix 10"},
            {70, D::MsAccess, "MS Jet 3"}, {72, D::MsAccess, "MS Jet 3"},
            {71, D::MsAccess, "MS Jet 4"}, {73, D::MsAccess, "MS Jet 4"}, {74, D::MsAccess, "MS Jet 4"}, {75, D::MsAccess, "MS Jet 4"},
            {90, D::Interbase, ""}, {100, D::Sybase, "ASA"}, {101, D::Sybase, "ASE"},
            // Not in the table: Universal.
            {2, D::Universal, ""}, {13, D::Universal, ""}, {80, D::Universal, ""}, {-1, D::Universal, ""}, {999, D::Universal, ""}};
        for (const auto &row : table)
            QTest::addRow("%d", std::get<0>(row)) << std::get<0>(row) << int(std::get<1>(row)) << QString::fromLatin1(std::get<2>(row));
    }

    void dialectCodes()
    {
        QFETCH(int, code);
        QFETCH(int, dialect);
        QFETCH(QString, version);
        const DialectChoice choice = SqlDialects::fromCode(code);
        QCOMPARE(int(choice.dialect), dialect);
        QCOMPARE(choice.serverVersion, version);
    }

    void connectionsChooseTheirDialect_data()
    {
        QTest::addColumn<TReaderConnection>("record");
        QTest::addColumn<int>("code");
        QTest::addColumn<bool>("quoteAll");
        QTest::newRow("mysql") << TestServers::mariadb() << 23 << false;
        QTest::newRow("postgres") << TestServers::postgres() << 30 << false;
        QTest::newRow("firebird") << TestServers::firebird() << 90 << false;
        QTest::newRow("sqlite") << TestServers::sqlite(QStringLiteral("/tmp/x.sqlite")) << 40 << false;
        TReaderConnection ce = TestServers::sqlite(QStringLiteral("/tmp/x.sdf"));
        ce.ConnectionType = dsSqlServerCE;
        QTest::newRow("sql server compact opens as sqlite") << ce << 40 << false;
        TReaderConnection oracle = TestServers::postgres();
        oracle.ConnectionType = dsOracle;
        QTest::newRow("oracle") << oracle << 53 << false;
        TReaderConnection sqlServer = TestServers::postgres();
        sqlServer.ConnectionType = dsSqlServer;
        QTest::newRow("sql server") << sqlServer << 12 << false;
        QTest::newRow("odbc dsn") << TestServers::odbc(QStringLiteral("Sales")) << 4 << false;
        QTest::newRow("odbc access") << TestServers::odbc(QStringLiteral("DRIVER={Microsoft Access Driver (*.mdb)};DBQ=a.mdb"))
                                     << 75 << false;
        QTest::newRow("jet") << TestServers::oleDb(QStringLiteral("Provider=Microsoft.Jet.OLEDB.4.0;Data Source=a.mdb")) << 75 << false;
        QTest::newRow("excel") << TestServers::oleDb(QStringLiteral("Provider=Microsoft.Jet.OLEDB.4.0;Data Source=a.xls;"
                                                                     "Extended Properties=\"Excel 8.0\""))
                               << 0 << true;
        QTest::newRow("oracle provider") << TestServers::oleDb(QStringLiteral("Provider=OraOLEDB.Oracle.1;Data Source=x")) << 53 << false;
        QTest::newRow("mysql provider") << TestServers::oleDb(QStringLiteral("Provider=MySQLProv;Data Source=x")) << 23 << false;
        QTest::newRow("foxpro") << TestServers::oleDb(QStringLiteral("Provider=VFPOLEDB.1;Data Source=c:\\foxpro\\db")) << 0 << false;
    }

    void connectionsChooseTheirDialect()
    {
        QFETCH(TReaderConnection, record);
        QFETCH(int, code);
        QFETCH(bool, quoteAll);
        QCOMPARE(QueryBuilderSource::dialectCode(record), code);
        QCOMPARE(QueryBuilderSource::quoteAllIdentifiers(record), quoteAll);
    }

    void textAndModelStayInStep()
    {
        QueryEngine engine;
        QSignalSpy updated(&engine, &QueryEngine::sqlUpdated);
        engine.setDialectCode(12);
        engine.setSql(QStringLiteral("select top 3 [a] from [t] where x = 1"));
        QCOMPARE(engine.sql(), QStringLiteral("SELECT TOP 3 [a]\nFROM [t]\nWHERE x = 1"));
        QCOMPARE(updated.count(), 1);
        QCOMPARE(updated.last().first().toString(), engine.sql());

        // The window edits the model: the text follows.
        Query q = engine.query();
        q.parts[0].items.append(SelectItem{Expr::fromText(QStringLiteral("b + 1")), Identifier::of(QStringLiteral("c")), true});
        QVERIFY(engine.setQuery(q));
        QCOMPARE(engine.sql(), QStringLiteral("SELECT TOP 3 [a], b + 1 AS c\nFROM [t]\nWHERE x = 1"));

        // Another dialect rewrites the same model.
        engine.setDialectCode(30);
        QCOMPARE(engine.sql(), QStringLiteral("SELECT \"a\", b + 1 AS c\nFROM \"t\"\nWHERE x = 1\nLIMIT 3"));
        engine.setQuoteAllIdentifiers(true);
        QCOMPARE(engine.sql(), QStringLiteral("SELECT \"a\", \"b\" + 1 AS \"c\"\nFROM \"t\"\nWHERE \"x\" = 1\nLIMIT 3"));
        QCOMPARE(updated.count(), 4);
    }

    void parseErrorKeepsWhatWasThere()
    {
        QueryEngine engine;
        engine.setSql(QStringLiteral("SELECT a FROM t"));
        const QString before = engine.sql();
        try {
            engine.setSql(QStringLiteral("SELECT a\nFROM t WHERE"));
            QFAIL("no error");
        } catch (const SqlParseError &e) {
            QCOMPARE(e.line(), 2);
            QCOMPARE(e.column(), 13);
        }
        QCOMPARE(engine.sql(), before);
        QVERIFY(!engine.query().isEmpty());
    }

    void sleepModeKeepsTheTextUntilWoken()
    {
        QueryEngine engine;
        const QString insert = QStringLiteral("INSERT INTO t (a)\n  VALUES (1) -- keep me");
        engine.setSql(insert);
        QVERIFY(engine.isSleeping());
        QCOMPARE(engine.sql(), insert);
        QVERIFY(engine.query().isEmpty());

        const Query select = SqlParser::parse(QStringLiteral("SELECT a FROM t"), SqlDialect::Universal).query;
        int asked = 0;
        engine.setWakeQueryHandler([&] { ++asked; return false; });
        QVERIFY(!engine.setQuery(select));
        QCOMPARE(asked, 1);
        QVERIFY(engine.isSleeping());
        QCOMPARE(engine.sql(), insert);
        // A dialect change does not touch the kept text either.
        engine.setDialectCode(53);
        QCOMPARE(engine.sql(), insert);

        engine.setWakeQueryHandler([&] { ++asked; return true; });
        QVERIFY(engine.setQuery(select));
        QCOMPARE(asked, 2);
        QVERIFY(!engine.isSleeping());
        QCOMPARE(engine.sql(), QStringLiteral("SELECT a\nFROM t"));

        // Without sleep mode a non-SELECT is refused and nothing changes.
        engine.setAllowSleepMode(false);
        QVERIFY_THROWS_EXCEPTION(SqlParseError, engine.setSql(QStringLiteral("EXEC p")));
        QCOMPARE(engine.sql(), QStringLiteral("SELECT a\nFROM t"));
    }

    void optionsFileRoundTrip()
    {
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("options.ini"));
        {
            // Missing keys keep the defaults; booleans are read in any of their spellings.
            QSettings s(file, QSettings::IniFormat);
            s.setValue(QStringLiteral("Builder/WordWrap"), QStringLiteral("yes"));
            s.setValue(QStringLiteral("MainQuery/WhereNewLine"), 3);
            s.setValue(QStringLiteral("Subqueries/KeywordsNewLine"), QStringLiteral("TRUE"));
            s.setValue(QStringLiteral("DerivedQueries/PartIndent"), QStringLiteral("not a number"));
        }
        GeneratorOptions options;
        {
            QSettings s(file, QSettings::IniFormat);
            options.read(s);
        }
        QVERIFY(options.wordWrap);
        QCOMPARE(options.rightMargin, GeneratorOptions().rightMargin);
        QCOMPARE(options.mainQuery.whereNewLine, 3);
        QVERIFY(options.subqueries.keywordsNewLine);
        QCOMPARE(options.derivedQueries.partIndent, SqlFormat::derivedQueryDefaults().partIndent);

        options.parenthesizeAndGroups = true;
        options.mainQuery.havingIndent = 7;
        options.derivedQueries.fromObjectNewLine = true;
        {
            QSettings s(file, QSettings::IniFormat);
            options.write(s);
        }
        QSettings s(file, QSettings::IniFormat);
        QCOMPARE(s.value(QStringLiteral("Builder/ParenthesizeANDGroups")).toString(), QStringLiteral("TRUE"));
        GeneratorOptions back;
        back.read(s);
        QVERIFY(back.parenthesizeAndGroups);
        QVERIFY(back.mainQuery == options.mainQuery);
        QVERIFY(back.subqueries == options.subqueries);
        QVERIFY(back.derivedQueries == options.derivedQueries);
    }

    void sqliteMetadataSuggestsLinks()
    {
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("shop.sqlite"));
        {
            QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("qbe-setup"));
            db.setDatabaseName(file);
            QVERIFY(db.open());
            QSqlQuery q(db);
            for (const char *sql : {"CREATE TABLE customers (id INTEGER PRIMARY KEY, name TEXT)",
                                    "CREATE TABLE orders (id INTEGER PRIMARY KEY, customer_id INTEGER REFERENCES customers (id), "
                                    "region TEXT, amount REAL)",
                                    "CREATE TABLE regions (code TEXT, country TEXT, name TEXT, PRIMARY KEY (code, country))",
                                    "CREATE TABLE shipments (id INTEGER PRIMARY KEY, rcode TEXT, rcountry TEXT, "
                                    "FOREIGN KEY (rcode, rcountry) REFERENCES regions (code, country))",
                                    "CREATE VIEW big_orders AS SELECT * FROM orders WHERE amount > 100"})
                QVERIFY2(q.exec(QString::fromLatin1(sql)), sql);
            db.close();
        }
        QSqlDatabase::removeDatabase(QStringLiteral("qbe-setup"));

        SessionMetadataProvider provider(TestServers::sqlite(file));
        QueryEngine engine;
        engine.setMetadataProvider(&provider);
        QVERIFY(engine.isOffline()); // not connected yet
        provider.connect();
        QVERIFY(!engine.isOffline());
        engine.refreshMetadata();
        const MetadataCatalog &catalog = engine.metadata();
        QVERIFY(catalog.find(QStringLiteral("ORDERS")));
        QCOMPARE(catalog.find(QStringLiteral("big_orders"))->kind, MetadataObject::View);
        const MetadataObject *regions = catalog.find(QStringLiteral("regions"));
        QCOMPARE(regions->columns.size(), 3);
        QVERIFY(regions->columns.at(0).primaryKey && regions->columns.at(1).primaryKey && !regions->columns.at(2).primaryKey);
        QCOMPARE(catalog.foreignKeys.size(), 2);

        engine.setSql(QStringLiteral("SELECT * FROM orders o, customers, shipments s JOIN regions r ON r.code = s.rcode"));
        const QVector<Link> links = engine.suggestedLinks();
        QCOMPARE(links.size(), 1); // shipments-regions is linked already
        QCOMPARE(links.first().left, 0);
        QCOMPARE(links.first().right, 1);
        QCOMPARE(SqlGenerator().conditions(links.first().condition), QStringLiteral("o.customer_id = customers.id"));

        // Objects the catalogue does not know are refused when asked, with their place.
        engine.setParsingErrorOnUnknownObjects(true);
        engine.setSql(QStringLiteral("WITH w AS (SELECT 1 AS x) SELECT * FROM w, big_orders"));
        try {
            engine.setSql(QStringLiteral("SELECT *\nFROM orders, nowhere"));
            QFAIL("no error");
        } catch (const SqlParseError &e) {
            QCOMPARE(e.reason(), QStringLiteral("Unknown object 'nowhere'"));
            QCOMPARE(e.line(), 2);
            QCOMPARE(e.column(), 14);
        }
        // Offline, nothing is checked.
        engine.setOffline(true);
        engine.setSql(QStringLiteral("SELECT * FROM nowhere"));

        QSqlQuery preview = provider.prepareDataset(QStringLiteral("SELECT COUNT(*) FROM customers"));
        QVERIFY(preview.exec() && preview.next());
        QCOMPARE(preview.value(0).toInt(), 0);
        QVERIFY_THROWS_EXCEPTION(VantryError, provider.prepareDataset(QStringLiteral("SELECT * FROM missing_table")));
    }
};

QTEST_GUILESS_MAIN(tst_QueryEngine)
#include "tst_QueryEngine.moc"
