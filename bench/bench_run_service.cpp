// The run service as a tab uses it, against references in the same run:
//  - time from Run to the first rows of "select * from" a 1,000,000-row table;
//  - fetching every row on demand, against the raw client loop, and the process's peak memory
//    growth during that fetch against the rows' payload;
//  - the window's responsiveness: the longest gap between two turns of this thread's event loop
//    while a long statement runs and while 1,000,000 rows stream in;
//  - cancel latency on each engine: from Cancel to the service being idle.
// SQLite always; PostgreSQL, MariaDB, Firebird and ODBC when the test-server environment is set.
//
//   bench_run_service [rows]
#include "BenchData.h"
#include "TestServers.h"
#include "core/workspace/RunService.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>
#include <cstdio>

namespace {

// Peak resident memory of the process in bytes (VmHWM), and a way to reset it.
qint64 residentPeak()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n'))
        if (line.startsWith("VmHWM:"))
            return line.mid(6).trimmed().split(' ').first().toLongLong() * 1024;
    return 0;
}

void resetResidentPeak()
{
    QFile clear(QStringLiteral("/proc/self/clear_refs"));
    if (clear.open(QIODevice::WriteOnly))
        clear.write("5");
}

// Runs the event loop until the service is idle, measuring the longest gap between two turns.
struct LoopWatch
{
    qint64 longestGapMs = 0;
    qint64 elapsedMs = 0;

    void runUntilIdle(RunService &run)
    {
        QElapsedTimer clock, gap;
        clock.start();
        gap.start();
        QEventLoop loop;
        QTimer tick;
        tick.setInterval(1);
        QObject::connect(&tick, &QTimer::timeout, [&] {
            longestGapMs = std::max(longestGapMs, gap.elapsed());
            gap.restart();
            if (!run.isBusy())
                loop.quit();
        });
        tick.start();
        loop.exec();
        elapsedMs = clock.elapsed();
    }
};

struct Opened
{
    std::shared_ptr<ResultTable> table;
    bool more = false;
    double firstRowsMs = 0;
};

// Opens the query with batches of `batch` rows, then reads the rest on demand as a grid does
// when the user jumps to the last row.
Opened openAndFetchAll(const TReaderConnection &rc, const QString &sql, qint64 batch, LoopWatch &watch)
{
    RunService run;
    Opened opened;
    QElapsedTimer clock;
    QObject::connect(&run, &RunService::resultOpened,
                     [&](std::shared_ptr<ResultTable> table, const ResultSource &, bool more) {
                         opened.firstRowsMs = clock.nsecsElapsed() / 1e6;
                         opened.table = std::move(table);
                         opened.more = more;
                         if (more)
                             run.fetchMore(0);
                     });
    QObject::connect(&run, &RunService::rowsFetched, [&](std::shared_ptr<ResultTable> rows, bool more) {
        opened.table->appendBatch(std::move(*rows), more);
    });
    RunService::Options options;
    options.batchRows = batch;
    clock.start();
    run.openTable(rc, sql, options);
    watch.runUntilIdle(run);
    return opened;
}

void engine(const char *name, const TReaderConnection &rc, const QString &table, const BenchData::Raw &raw)
{
    std::printf("\n%s\n", name);
    // Time to first rows: open with one batch and stop there.
    {
        RunService run;
        QElapsedTimer clock;
        double ms = 0;
        QObject::connect(&run, &RunService::resultOpened, [&](auto, const ResultSource &, bool) { ms = clock.nsecsElapsed() / 1e6; });
        RunService::Options options;
        clock.start();
        run.openTable(rc, QStringLiteral("select * from ") + table, options);
        LoopWatch watch;
        watch.runUntilIdle(run);
        std::printf("%-34s %8.1f ms   (first 1,000 rows of the table)\n", "Run to first rows", ms);
    }
    resetResidentPeak();
    const qint64 before = residentPeak();
    LoopWatch watch;
    const Opened all = openAndFetchAll(rc, QStringLiteral("select * from ") + table, 1000, watch);
    const qint64 peak = residentPeak() - before;
    std::printf("%-34s %8lld ms   raw loop %8.1f ms   ratio %.2f   rows %lld\n", "fetch every row on demand",
                watch.elapsedMs, raw.ms, watch.elapsedMs / raw.ms, all.table ? all.table->rowCount() : 0);
    std::printf("%-34s %8.1f MB   payload %8.1f MB   ratio %.2f\n", "peak memory growth", peak / 1e6,
                raw.payload / 1e6, double(peak) / double(raw.payload));
    std::printf("%-34s %8lld ms\n", "longest event-loop gap (stream)", watch.longestGapMs);
}

void longStatement(const char *name, const TReaderConnection &rc, const QString &sql)
{
    RunService run;
    run.runStatement(rc, sql, {});
    LoopWatch watch;
    watch.runUntilIdle(run);
    std::printf("%-34s %8lld ms   longest event-loop gap %lld ms\n", name, watch.elapsedMs, watch.longestGapMs);
}

void cancelLatency(const char *name, const TReaderConnection &rc, const QString &sql)
{
    RunService run;
    QEventLoop started;
    QObject::connect(&run, &RunService::statementStarted, &started, &QEventLoop::quit);
    run.runStatement(rc, sql, {});
    started.exec();
    // Let the statement reach the server and get going.
    QEventLoop settle;
    QTimer::singleShot(300, &settle, &QEventLoop::quit);
    settle.exec();
    QElapsedTimer clock;
    clock.start();
    run.cancel();
    LoopWatch watch;
    watch.runUntilIdle(run);
    std::printf("%-34s %8.1f ms\n", name, clock.nsecsElapsed() / 1e6);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const int rows = argc > 1 ? std::atoi(argv[1]) : 1000000;
    const QString file = BenchData::generatedSqliteFile("run_service.db", rows);
    const TReaderConnection sqlite = TestServers::sqlite(file);
    engine("SQLite", sqlite, QStringLiteral("t"), BenchData::rawSqlite(file));
    std::printf("\nWindow responsiveness\n");
    longStatement("SQLite long statement", sqlite,
                  QStringLiteral("with recursive c(x) as (select 1 union all select x + 1 from c where x < 30000000) "
                                 "select count(*) from c"));
    std::printf("\nCancel latency (Cancel to idle)\n");
    cancelLatency("SQLite", sqlite, QStringLiteral("with recursive c(x) as (select 1 union all select x + 1 from c) select count(*) from c"));

    if (qEnvironmentVariableIsEmpty("VANTRY_PG_PORT")) {
        std::printf("\nServers skipped: no VANTRY_PG_PORT (source \"$(scripts/test-servers env-file)\")\n");
        return 0;
    }
    const QByteArray conninfo = BenchData::postgresConninfo();
    BenchData::createPostgres(conninfo, rows);
    engine("PostgreSQL", TestServers::postgres(), QStringLiteral("vantry_bench_t"), BenchData::rawPostgres(conninfo));
    longStatement("PostgreSQL pg_sleep(10)", TestServers::postgres(), QStringLiteral("select pg_sleep(10)"));
    std::printf("\nCancel latency (Cancel to idle)\n");
    cancelLatency("PostgreSQL", TestServers::postgres(), QStringLiteral("select pg_sleep(60)"));
    cancelLatency("MariaDB", TestServers::mariadb(), QStringLiteral("select benchmark(5000000000, md5('vantry'))"));
    cancelLatency("Firebird", TestServers::firebird(),
                  QStringLiteral("select count(*) from rdb$relations a, rdb$relations b, rdb$relations c, "
                                 "rdb$relations d, rdb$relations e"));
    cancelLatency("ODBC (PostgreSQL driver)",
                  TestServers::odbc(TestServers::env("VANTRY_ODBC_PG_DSN"), TestServers::env("VANTRY_PG_USER"),
                                    TestServers::env("VANTRY_PG_PASSWORD")),
                  QStringLiteral("select pg_sleep(60)"));
    return 0;
}
