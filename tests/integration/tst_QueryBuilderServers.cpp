// The SELECT corpus against the real servers: every statement of a server's dialect runs as
// written and as the query builder regenerates it, and both return the same rows. The metadata
// providers then read the same tables back, with their keys, over Qt SQL and over ODBC.

#include "../core/querybuilder/SelectCorpus.h"
#include "TestServers.h"

#include "core/connections/AdoSession.h"
#include "core/connections/UniversalSession.h"
#include "core/querybuilder/QueryEngine.h"
#include "core/querybuilder/SessionMetadataProvider.h"
#include "core/querybuilder/SqlGenerator.h"
#include "core/querybuilder/SqlParser.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QTemporaryDir>
#include <QtTest>

namespace {

const QStringList Tables = {QStringLiteral("qbe_items"), QStringLiteral("qbe_orders"), QStringLiteral("qbe_customers")};

void dropTables(const QSqlDatabase &db)
{
    for (const QString &table : Tables)
        QSqlQuery(db).exec(QStringLiteral("DROP TABLE ") + table); // absent tables are fine
}

// The rows of a statement as sorted texts; throws on an error.
QStringList rowsOf(const QSqlDatabase &db, const QString &sql)
{
    QSqlQuery q(db);
    q.setForwardOnly(true);
    if (!q.exec(sql))
        throw VantryError(q.lastError().text());
    QStringList rows;
    while (q.next()) {
        QStringList values;
        for (int c = 0; c < q.record().count(); ++c)
            values << (q.isNull(c) ? QStringLiteral("<null>") : q.value(c).toString());
        rows << values.join(QLatin1Char('|'));
    }
    rows.sort();
    return rows;
}

} // namespace

class tst_QueryBuilderServers : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;

    // Runs the corpus entries of the server; returns the failures.
    static QStringList runCorpus(const QSqlDatabase &db, SelectCorpus::Server server, int &ran)
    {
        QStringList failures;
        for (const SelectCorpus::Entry &entry : SelectCorpus::all()) {
            if (entry.server != server)
                continue;
            ++ran;
            try {
                const QStringList original = rowsOf(db, entry.sql);
                const QString generated = SqlGenerator({entry.dialect, {}}).generate(SqlParser::parse(entry.sql, entry.dialect).query);
                const QStringList again = rowsOf(db, generated);
                if (original != again)
                    failures << QStringLiteral("rows differ:\n%1\n%2\n%3 rows against %4").arg(entry.sql, generated)
                                    .arg(original.size()).arg(again.size());
                else if (original.isEmpty() && !entry.sql.contains(QLatin1String("EXCEPT")))
                    failures << QStringLiteral("no rows to compare:\n%1").arg(entry.sql);
            } catch (const VantryError &e) {
                failures << QStringLiteral("%1\n%2").arg(entry.sql, e.message());
            }
        }
        return failures;
    }

    static void checkCatalog(const MetadataCatalog &catalog, const QString &where)
    {
        const MetadataObject *orders = catalog.find(QStringLiteral("qbe_orders"));
        QVERIFY2(orders, qPrintable(where));
        QCOMPARE(orders->columns.size(), 4);
        QCOMPARE(orders->columns.first().name.toLower(), QStringLiteral("id"));
        QVERIFY2(orders->columns.first().primaryKey, qPrintable(where));
        QVERIFY(!orders->columns.at(1).primaryKey);
        QVERIFY2(!orders->columns.at(1).type.isEmpty(), qPrintable(where));
        int found = 0;
        for (const MetadataForeignKey &fk : catalog.foreignKeys) {
            if (fk.table.compare(QLatin1String("qbe_orders"), Qt::CaseInsensitive) == 0) {
                QCOMPARE(fk.referencedTable.toLower(), QStringLiteral("qbe_customers"));
                QCOMPARE(fk.columns.join(QLatin1Char(',')).toLower(), QStringLiteral("customer_id"));
                QCOMPARE(fk.referencedColumns.join(QLatin1Char(',')).toLower(), QStringLiteral("id"));
                ++found;
            } else if (fk.table.compare(QLatin1String("qbe_items"), Qt::CaseInsensitive) == 0) {
                ++found;
            }
        }
        QVERIFY2(found == 2, qPrintable(QStringLiteral("%1: %2 foreign keys of ours").arg(where).arg(found)));
    }

private slots:
    void initTestCase()
    {
        VANTRY_REQUIRE_TEST_SERVERS();
        QVERIFY(m_dir.isValid());
    }

    void corpusAndMetadata_data()
    {
        QTest::addColumn<int>("server");
        QTest::newRow("sqlite") << int(SelectCorpus::SQLite);
        QTest::newRow("postgres") << int(SelectCorpus::Postgres);
        QTest::newRow("mariadb") << int(SelectCorpus::MariaDb);
        QTest::newRow("firebird") << int(SelectCorpus::Firebird);
    }

    void corpusAndMetadata()
    {
        QFETCH(int, server);
        TReaderConnection record;
        switch (server) {
        case SelectCorpus::SQLite: {
            QFile file(m_dir.filePath(QStringLiteral("qbe.sqlite")));
            QVERIFY(file.open(QIODevice::WriteOnly)); // an empty file is an empty database
            record = TestServers::sqlite(file.fileName());
            break;
        }
        case SelectCorpus::Postgres: record = TestServers::postgres(); break;
        case SelectCorpus::MariaDb: record = TestServers::mariadb(); break;
        default: record = TestServers::firebird(); break;
        }
        try {
            run(record, server);
        } catch (const VantryError &e) {
            QFAIL(qPrintable(e.message()));
        }
    }

private:
    void run(const TReaderConnection &record, int server)
    {
        UniversalSession session;
        session.open(record);
        const QSqlDatabase db = session.database();
        dropTables(db);
        for (const QString &sql : SelectCorpus::schema()) {
            QSqlQuery q(db);
            QVERIFY2(q.exec(sql), qPrintable(sql + QLatin1Char('\n') + q.lastError().text()));
        }

        int ran = 0;
        const QStringList failures = runCorpus(db, SelectCorpus::Server(server), ran);
        qInfo("%d statements run twice", ran);

        // The provider reads the same tables back on a connection of its own.
        SessionMetadataProvider provider(record);
        provider.connect();
        checkCatalog(provider.loadCatalog(), QStringLiteral("Qt SQL"));
        QueryEngine engine;
        engine.setMetadataProvider(&provider);
        engine.refreshMetadata();
        engine.setSql(QStringLiteral("SELECT * FROM qbe_items i, qbe_orders o"));
        QCOMPARE(engine.suggestedLinks().size(), 1);
        QCOMPARE(SqlGenerator().conditions(engine.suggestedLinks().first().condition).toLower(), QStringLiteral("i.order_id = o.id"));

        if (server == SelectCorpus::Postgres) {
            // The same through ODBC: tables from SQLTables, keys from SQLForeignKeys.
            SessionMetadataProvider odbc(TestServers::odbc(qEnvironmentVariable("VANTRY_ODBC_PG_DSN"), record.UserName, record.Password));
            odbc.connect();
            checkCatalog(odbc.loadCatalog(), QStringLiteral("ODBC"));
        }

        dropTables(db);
        QVERIFY(ran > 40);
        QVERIFY2(failures.isEmpty(), qPrintable(QStringLiteral("%1 of %2 failed:\n\n").arg(failures.size()).arg(ran)
                                                + failures.join(QStringLiteral("\n\n"))));
    }

private slots:
};

QTEST_GUILESS_MAIN(tst_QueryBuilderServers)
#include "tst_QueryBuilderServers.moc"
