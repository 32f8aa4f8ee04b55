#include "core/connections/TableCatalogue.h"

#include <QtTest>

// The table list of an ODBC source names tables as a statement on that connection reads them.
class TestOdbcTableNames : public QObject
{
    Q_OBJECT

    const QVector<CatalogueRow> rows{
        {"vantry_test", "public", "customers", "TABLE"},
        {"vantry_test", "public", "order lines", "TABLE"},
        {"vantry_test", "sales", "orders", "TABLE"},
        {"vantry_test", "public", "customer_names", "VIEW"},
        {"vantry_test", "pg_catalog", "pg_class", "SYSTEM TABLE"},
        {"vantry_test", "information_schema", "tables", "VIEW"},
        {"shop", "", "items", "TABLE"},
        {"", "dbo", "stock", "TABLE"},
    };

private slots:
    void defaultSchemaLeftOutOthersKept()
    {
        QCOMPARE(odbcSourceTableNames(rows, false, false, SqlNames::QuoteStyle::DoubleQuotes),
                 (QStringList{"customers", "\"order lines\"", "sales.orders", "items", "stock"}));
    }
    void systemSchemasOnlyWithSystemTables()
    {
        const QStringList withViews = odbcSourceTableNames(rows, true, false, SqlNames::QuoteStyle::DoubleQuotes);
        QVERIFY(withViews.contains("customer_names"));
        QVERIFY(!withViews.contains("information_schema.tables"));
        const QStringList withSystem = odbcSourceTableNames(rows, false, true, SqlNames::QuoteStyle::BackQuotes);
        QVERIFY(withSystem.contains("pg_catalog.pg_class"));
        QVERIFY(withSystem.contains("information_schema.tables")); // a system view counts as system
        QVERIFY(!withSystem.contains("customer_names"));
        QVERIFY(withSystem.contains("`order lines`"));
    }
};

QTEST_GUILESS_MAIN(TestOdbcTableNames)
#include "tst_OdbcTableNames.moc"
