// Fetch of 1,000,000 rows x 10 columns into the result table, against a raw client loop that
// reads every column, in the same run: SQLite (always) and PostgreSQL (when the test-server
// environment is present). Also times a sort and filters over the fetched rows.
//
//   bench_result_fetch [rows]
//
// PostgreSQL comes from VANTRY_PG_HOST, VANTRY_PG_PORT, VANTRY_PG_DATABASE, VANTRY_PG_USER and
// VANTRY_PG_PASSWORD, as "scripts/test-servers env-file" exports them.
#include "BenchData.h"
#include "core/workspace/ResultFetcher.h"
#include "core/workspace/ResultView.h"

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

void report(const char *what, const Raw &raw, double ms, const ResultTable &table)
{
    std::printf("%-28s raw loop %8.1f ms   result table %8.1f ms   ratio %.2f\n", what, raw.ms, ms, ms / raw.ms);
    std::printf("%-28s payload %8.1f MB   result table %8.1f MB   ratio %.2f   rows %lld\n", "", raw.payload / 1e6,
                table.memoryBytes() / 1e6, double(table.memoryBytes()) / double(raw.payload), table.rowCount());
}

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

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const int rows = argc > 1 ? std::atoi(argv[1]) : 1000000;
    const QString file = BenchData::generatedSqliteFile("result_fetch.db", rows);

    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("bench"));
        db.setDatabaseName(file);
        if (!db.open())
            return std::printf("cannot open %s\n", qPrintable(file)), 1;
        const Raw raw = rawSqlite(file);
        double ms = 0;
        auto table = timedFetch(db, QStringLiteral("select * from t"), 1000000, ms);
        std::printf("\nSQLite (%s path)\n", qPrintable(ResultFetcher::lastPath()));
        report("fetch 1M x 10", raw, ms, *table);
        double genericMs = 0;
        timedFetch(db, QStringLiteral("select * from t"), 1000000, genericMs, ResultFetcher::Path::Generic, 1);
        std::printf("%-28s %8.1f ms   ratio to raw %.2f\n", "generic QSqlQuery path", genericMs, genericMs / raw.ms);
        std::printf("\nSort and filter over %lld rows\n", table->rowCount());
        viewTimings(*table);
        db.close();
    }
    QSqlDatabase::removeDatabase(QStringLiteral("bench"));

    if (qEnvironmentVariableIsEmpty("VANTRY_PG_PORT")) {
        std::printf("\nPostgreSQL skipped: no VANTRY_PG_PORT (source \"$(scripts/test-servers env-file)\")\n");
        return 0;
    }
    QSqlDatabase pg = QSqlDatabase::addDatabase(QStringLiteral("QPSQL"), QStringLiteral("benchpg"));
    pg.setHostName(qEnvironmentVariable("VANTRY_PG_HOST"));
    pg.setPort(qEnvironmentVariable("VANTRY_PG_PORT").toInt());
    pg.setDatabaseName(qEnvironmentVariable("VANTRY_PG_DATABASE"));
    pg.setUserName(qEnvironmentVariable("VANTRY_PG_USER"));
    pg.setPassword(qEnvironmentVariable("VANTRY_PG_PASSWORD"));
    if (!pg.open())
        return std::printf("PostgreSQL: %s\n", qPrintable(pg.lastError().text())), 1;
    const QByteArray conninfo = QStringLiteral("host=%1 port=%2 dbname=%3 user=%4 password=%5")
                                    .arg(pg.hostName()).arg(pg.port()).arg(pg.databaseName(), pg.userName(), pg.password())
                                    .toUtf8();
    createPostgres(conninfo, rows);
    const Raw raw = rawPostgres(conninfo);
    double ms = 0;
    auto table = timedFetch(pg, QStringLiteral("select * from vantry_bench_t"), 1000000, ms);
    std::printf("\nPostgreSQL (%s path)\n", qPrintable(ResultFetcher::lastPath()));
    report("fetch 1M x 10", raw, ms, *table);
    double genericMs = 0;
    timedFetch(pg, QStringLiteral("select * from vantry_bench_t"), 1000000, genericMs, ResultFetcher::Path::Generic, 1);
    std::printf("%-28s %8.1f ms   ratio to raw %.2f\n", "generic QSqlQuery path", genericMs, genericMs / raw.ms);
    return 0;
}
