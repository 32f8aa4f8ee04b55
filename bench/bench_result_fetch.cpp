// Fetch of 1,000,000 rows x 10 columns into the result table, against each engine's raw client
// loop in the same run: SQLite (sqlite3_step), PostgreSQL (PQexec), MariaDB (mysql_fetch_row),
// Firebird (isc_dsql_fetch) and ODBC through the PostgreSQL, MariaDB and SQLite drivers (SQLFetch
// over bound columns), with the generic QSqlQuery path beside each and the result's memory
// against the payload. Then sorts and filters over the fetched rows, and sorts of 1,000,000
// random texts and integers.
//
//   bench_result_fetch [rows] [engine ...]
//
// Named engines ("sqlite", "postgres", "odbc", ...: any part of a name in the table) limit the run
// to those.
//
// The servers come from the test-server environment ("scripts/test-servers env-file"); without
// it only SQLite runs.
#include "BenchData.h"
#include "BenchEngines.h"
#include "core/workspace/ResultFetcher.h"
#include "core/workspace/ResultView.h"
#include "core/base/VantryError.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QSqlDatabase>
#include <QSqlError>
#include <cstdio>
#include <libpq-fe.h>
#include <sqlite3.h>

namespace {

using namespace BenchData;

std::unique_ptr<ResultTable> timedFetch(const QSqlDatabase &db, const QString &sql, qint64 limit, double &ms,
                                        ResultFetcher::Path path = ResultFetcher::Path::Automatic, int runs = 3)
{
    std::unique_ptr<ResultTable> table;
    ms = bestOf(runs, [&] {
        table.reset();
        table = ResultFetcher::fetch(db, sql, limit, path);
    });
    return table;
}

void viewTimings(const ResultTable &table)
{
    ResultView view;
    view.setTable(&table);
    const struct { const char *what; int sortColumn; int filterColumn; const char *filter; } cases[] = {
        {"sort by integer", 1, -1, nullptr},
        {"sort by text", 5, -1, nullptr},
        {"sort by real (with NULLs)", 4, -1, nullptr},
        {"filter text contains", -1, 6, "9 ab"},
        {"filter integer >=", -1, 1, ">=500000"},
        {"filter + sort", 5, 7, "red"},
    };
    for (const auto &c : cases) {
        view.clearFilters();
        view.setSort(c.sortColumn, true);
        if (c.filterColumn >= 0)
            view.setFilter(c.filterColumn, QString::fromLatin1(c.filter));
        const double ms = bestOf(2, [&] { view.rebuild(); });
        std::printf("%-28s %8.1f ms   (%lld rows shown)\n", c.what, ms, view.size());
    }
    view.clearFilters();
    view.setSort(-1, true);
    view.setGroupColumns({7});
    const double ms = bestOf(2, [&] { view.rebuild(); });
    std::printf("%-28s %8.1f ms   (%lld entries)\n", "group by text", ms, view.size());
}

struct EngineRow
{
    QString engine;
    QString path;
    Raw raw;
    double fastMs = 0;
    double genericMs = 0;
    size_t memory = 0;
    qint64 rows = 0;
};

// Fetches `sql` through the fast path (best of `runs`) and the generic path (once).
EngineRow measure(const QString &engine, const QSqlDatabase &db, const QString &sql, const Raw &raw, int runs)
{
    EngineRow row{engine, QString(), raw};
    auto table = timedFetch(db, sql, 0, row.fastMs, ResultFetcher::Path::Automatic, runs);
    row.path = ResultFetcher::lastPath();
    row.memory = table->memoryBytes();
    row.rows = table->rowCount();
    table.reset();
    timedFetch(db, sql, 0, row.genericMs, ResultFetcher::Path::Generic, 1);
    std::printf("  %-22s done: %lld rows\n", qPrintable(engine), row.rows);
    std::fflush(stdout);
    return row;
}

QSqlDatabase openDb(const char *driver, const QString &name, const char *prefix)
{
    auto var = [prefix](const char *what) { return qEnvironmentVariable((QByteArray(prefix) + what).constData()); };
    QSqlDatabase db = QSqlDatabase::addDatabase(QLatin1String(driver), name);
    db.setHostName(var("HOST"));
    db.setPort(var("PORT").toInt());
    db.setDatabaseName(var("DATABASE"));
    db.setUserName(var("USER"));
    db.setPassword(var("PASSWORD"));
    if (QLatin1String(driver) == QLatin1String("QIBASE"))
        db.setConnectOptions(QStringLiteral("ISC_DPB_LC_CTYPE=UTF8"));
    if (!db.open())
        std::printf("%s: %s\n", driver, qPrintable(db.lastError().text()));
    return db;
}

// A data source name with its account (as the test servers describe them), or a whole connection
// string.
QSqlDatabase openOdbc(const QString &name, const QString &connection, const char *prefix)
{
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QODBC"), name);
    if (prefix) {
        db.setUserName(qEnvironmentVariable((QByteArray(prefix) + "USER").constData()));
        db.setPassword(qEnvironmentVariable((QByteArray(prefix) + "PASSWORD").constData()));
    }
    db.setDatabaseName(connection);
    if (!db.open())
        std::printf("ODBC %s: %s\n", qPrintable(connection), qPrintable(db.lastError().text()));
    return db;
}

void printTable(const std::vector<EngineRow> &rows)
{
    std::printf("\n%-20s %-9s %9s %9s %6s %10s %6s %9s %9s %6s\n", "engine", "path", "raw ms", "table ms", "ratio",
                "generic ms", "ratio", "payload", "table MB", "ratio");
    for (const EngineRow &r : rows)
        std::printf("%-20s %-9s %9.0f %9.0f %6.2f %10.0f %6.2f %9.1f %9.1f %6.2f\n", qPrintable(r.engine),
                    qPrintable(r.path), r.raw.ms, r.fastMs, r.fastMs / r.raw.ms, r.genericMs, r.genericMs / r.raw.ms,
                    r.raw.payload / 1e6, r.memory / 1e6, double(r.memory) / double(r.raw.payload));
}

void sortTimings(const QSqlDatabase &db)
{
    auto table = ResultFetcher::fetch(db, QStringLiteral("select * from sortset"), 0);
    ResultView view;
    view.setTable(table.get());
    const struct { const char *what; int column; bool ascending; } cases[] = {
        {"random texts ascending", 1, true},
        {"random texts descending", 1, false},
        {"random integers ascending", 2, true},
        {"random integers descending", 2, false},
    };
    std::printf("\nSort of %lld random 10-20 letter texts and 64-bit integers\n", table->rowCount());
    for (const auto &c : cases) {
        view.setSort(c.column, c.ascending);
        const double ms = bestOf(3, [&] { view.rebuild(); });
        std::printf("%-28s %8.1f ms\n", c.what, ms);
    }
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    const int rows = argc > 1 ? std::atoi(argv[1]) : 1000000;
    auto wanted = [argc, argv](const char *engine) {
        for (int i = 2; i < argc; ++i)
            if (QString::fromLatin1(engine).contains(QString::fromLocal8Bit(argv[i]), Qt::CaseInsensitive))
                return true;
        return argc <= 2;
    };
    const QString file = BenchData::generatedSqliteFile("result_fetch.db", rows);
    BenchData::createSortTable(file, rows);
    const char *tenColumns = "select id, a, b, x, y, code, name, tag, memo, note from t";
    const QString select = QStringLiteral("select * from vantry_bench_t");
    std::vector<EngineRow> table;

    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("bench"));
        db.setDatabaseName(file);
        if (!db.open())
            return std::printf("cannot open %s\n", qPrintable(file)), 1;
        if (wanted("SQLite"))
            table.push_back(measure(QStringLiteral("SQLite"), db, QLatin1String(tenColumns), rawSqlite(file), 3));
        auto fetched = ResultFetcher::fetch(db, QLatin1String(tenColumns), 0);
        std::printf("\nSort and filter over %lld rows\n", fetched->rowCount());
        viewTimings(*fetched);
        fetched.reset();
        sortTimings(db);
        db.close();
    }
    QSqlDatabase::removeDatabase(QStringLiteral("bench"));

    if (qEnvironmentVariableIsEmpty("VANTRY_PG_PORT")) {
        std::printf("\nServers skipped: no VANTRY_PG_PORT (source \"$(scripts/test-servers env-file)\")\n");
        printTable(table);
        return 0;
    }
    const QByteArray conninfo = postgresConninfo();
    std::printf("\nFilling the servers' tables with %d rows ...\n", rows);
    createPostgres(conninfo, rows);
    if (wanted("PostgreSQL")) {
        QSqlDatabase pg = openDb("QPSQL", QStringLiteral("benchpg"), "VANTRY_PG_");
        table.push_back(measure(QStringLiteral("PostgreSQL"), pg, select, rawPostgres(conninfo), 3));
    }
    QSqlDatabase maria = openDb("QMYSQL", QStringLiteral("benchmaria"), "VANTRY_MYSQL_");
    createMariaDb(maria, rows); // read by MariaDB's ODBC driver as well
    if (wanted("MariaDB")) {
        table.push_back(measure(QStringLiteral("MariaDB"), maria, select, rawMariaDb("select * from vantry_bench_t"), 3));
    }
    if (wanted("Firebird")) {
        QSqlDatabase fb = openDb("QIBASE", QStringLiteral("benchfb"), "VANTRY_FB_");
        createFirebird(fb, rows);
        table.push_back(measure(QStringLiteral("Firebird"), fb, select, rawFirebird("select * from vantry_bench_t"), 3));
    }
    const QString sqliteOdbc = QStringLiteral("DRIVER=%1;Database=%2").arg(qEnvironmentVariable("VANTRY_ODBC_SQLITE_DRIVER"), file);
    const struct { const char *engine; QString source; const char *prefix; QString sql; } odbc[] = {
        {"ODBC PostgreSQL", qEnvironmentVariable("VANTRY_ODBC_PG_DSN"), "VANTRY_PG_", select},
        {"ODBC MariaDB", qEnvironmentVariable("VANTRY_ODBC_MYSQL_DSN"), "VANTRY_MYSQL_", select},
        {"ODBC SQLite", sqliteOdbc, nullptr, QLatin1String(tenColumns)},
    };
    for (const auto &o : odbc) {
        if (!wanted(o.engine))
            continue;
        QSqlDatabase db = openOdbc(QLatin1String(o.engine), o.source, o.prefix);
        const auto var = [&o](const char *what) { return qEnvironmentVariable((QByteArray(o.prefix) + what).constData()); };
        const QString connection = o.prefix ? QStringLiteral("DSN=%1;UID=%2;PWD=%3").arg(o.source, var("USER"), var("PASSWORD"))
                                            : o.source;
        const Raw raw = rawOdbc(connection, o.sql.toUtf8().constData());
        try {
            table.push_back(measure(QLatin1String(o.engine), db, o.sql, raw, 3));
        } catch (const VantryError &e) {
            std::printf("%s: %s\n", o.engine, qPrintable(e.message()));
        }
    }
    printTable(table);
    return 0;
}
