#include "TestServers.h"
#include "core/interchange/GridExport.h"
#include "core/workspace/ResultExportSource.h"
#include "core/workspace/ResultQuery.h"

#include "PythonReader.h"

#include <QJsonArray>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QtTest>

// Results of PostgreSQL and MariaDB with their own column types, exported to workbooks and read
// back by openpyxl and xlrd: integers, decimals and doubles stay numbers, booleans booleans,
// dates and timestamps dates, NULL an empty cell; CSV holds the grid's texts.
class TestExportServers : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    static QSqlDatabase open(const QString &server)
    {
        return TestServers::openServer(server, QStringLiteral("export-") + server);
    }
    static void exec(const QSqlDatabase &db, const QString &sql)
    {
        QSqlQuery query(db);
        if (!query.exec(sql))
            QFAIL(qPrintable(sql + ": " + query.lastError().text()));
    }

private slots:
    void initTestCase() { VANTRY_REQUIRE_TEST_SERVERS(); }

    void workbooksKeepServerTypes_data()
    {
        QTest::addColumn<QString>("server");
        QTest::newRow("postgres") << "postgres";
        QTest::newRow("mariadb") << "mariadb";
    }
    void workbooksKeepServerTypes()
    {
        QFETCH(QString, server);
        QSqlDatabase db = open(server);
        QVERIFY(db.isOpen());
        const QString table = QStringLiteral("exp16_types");
        const bool pg = server == QLatin1String("postgres");
        exec(db, QStringLiteral("drop table if exists %1").arg(table));
        exec(db, QStringLiteral("create table %1 (id integer, amount numeric(10,2), ratio double precision, flag boolean, "
                                "day date, stamp timestamp null, name varchar(40))").arg(table));
        exec(db, QStringLiteral("insert into %1 values (1, 12.50, 0.25, true, '2024-02-29', '2023-12-31 23:59:58', 'ünï'),"
                                " (2, -3.10, -1e10, false, '1999-01-01', '2000-01-01 00:00:00', 'a,b'),"
                                " (3, null, null, null, null, null, null)").arg(table));
        ResultQuery query;
        query.open(db, QStringLiteral("select * from %1 order by id").arg(table), 0);
        const ResultExportSource source(*query.table());

        const QString xlsx = m_dir.filePath(server + QStringLiteral(".xlsx"));
        const QString xls = m_dir.filePath(server + QStringLiteral(".xls"));
        const QString csv = m_dir.filePath(server + QStringLiteral(".csv"));
        GridExport::write(source, ExportFormat::Xlsx, xlsx);
        GridExport::write(source, ExportFormat::Xls, xls);
        GridExport::write(source, ExportFormat::Csv, csv);
        exec(db, QStringLiteral("drop table %1").arg(table));

        // Both readers give [type, text] per cell or null; MariaDB's booleans are tinyint numbers.
        const QString flagType = pg ? QStringLiteral("bool") : QStringLiteral("int");
        const QJsonArray expected{
            QJsonArray{QJsonArray{"int", "1"}, QJsonArray{"float", "12.5"}, QJsonArray{"float", "0.25"},
                       QJsonArray{flagType, pg ? "True" : "1"}, QJsonArray{"datetime", "2024-02-29 00:00:00"},
                       QJsonArray{"datetime", "2023-12-31 23:59:58"}, QJsonArray{"str", "ünï"}},
            QJsonArray{QJsonArray{"int", "2"}, QJsonArray{"float", "-3.1"}, QJsonArray{"int", "-10000000000"},
                       QJsonArray{flagType, pg ? "False" : "0"}, QJsonArray{"datetime", "1999-01-01 00:00:00"},
                       QJsonArray{"datetime", "2000-01-01 00:00:00"}, QJsonArray{"str", "a,b"}},
            QJsonArray{QJsonArray{"int", "3"}, QJsonValue::Null, QJsonValue::Null, QJsonValue::Null,
                       QJsonValue::Null, QJsonValue::Null, QJsonValue::Null},
        };
        const QJsonDocument fromXlsx = runPythonReader(
            QStringLiteral("import json, sys, openpyxl\n"
                           "ws = openpyxl.load_workbook(sys.argv[1]).worksheets[0]\n"
                           "def cell(v):\n"
                           "    if v is None: return None\n"
                           "    if isinstance(v, float) and v == int(v): return ['int', str(int(v))]\n"
                           "    return [type(v).__name__, str(v)]\n"
                           "print(json.dumps([[cell(c.value) for c in r] for r in ws.iter_rows(min_row=2, max_row=4, max_col=7)]))\n"),
            {xlsx});
        QCOMPARE(fromXlsx.array(), expected);
        const QJsonDocument fromXls = readXlsCells(xls, QStringLiteral("range(1, 4)"), 7);
        QCOMPARE(fromXls.array(), expected);

        // CSV holds what the grid shows, cell for cell.
        const QJsonDocument fromCsv = runPythonReader(
            QStringLiteral("import csv, json, sys\nprint(json.dumps(list(csv.reader(open(sys.argv[1], newline='', encoding='utf-8')))))\n"),
            {csv});
        const ResultTable &result = *query.table();
        QCOMPARE(fromCsv.array().size(), 4);
        for (int row = 0; row < 3; ++row)
            for (int col = 0; col < 7; ++col)
                QCOMPARE(fromCsv.array()[row + 1].toArray()[col].toString(),
                         ResultView::text(result, row, col).isNull() ? QString() : ResultView::text(result, row, col));
    }
};

QTEST_GUILESS_MAIN(TestExportServers)
#include "tst_ExportServers.moc"
