// Start-up of the program to its window shown and the event loop idle, offscreen, with an empty
// catalogue against one holding 1,000 connections and 1,000,000 history rows, in the same run:
// the launches alternate, and the best of each is compared. Beside the wall time, the processor
// time the program used (user and system), which other work on a shared machine disturbs less.
//
//   bench_startup [launches] [history rows] [connections]
//
// The program leaves by itself once idle (VANTRY_QUIT_WHEN_IDLE); each data folder is prepared by
// a first launch that creates its catalogue, then filled directly through SQLite.
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <cstdio>
#include <sqlite3.h>
#include <sys/resource.h>

namespace {

struct Times
{
    double wallMs = 1e300;
    double cpuMs = 1e300;

    void keepBest(const Times &other)
    {
        wallMs = std::min(wallMs, other.wallMs);
        cpuMs = std::min(cpuMs, other.cpuMs);
    }
};

// User and system time of the finished child processes so far.
double childrenCpuMs()
{
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    auto ms = [](const timeval &t) { return t.tv_sec * 1e3 + t.tv_usec / 1e3; };
    return ms(usage.ru_utime) + ms(usage.ru_stime);
}

// One launch; negative times when the program failed.
Times launch(const QString &home)
{
    QProcess program;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("VANTRY_HOME"), home);
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    environment.insert(QStringLiteral("VANTRY_QUIT_WHEN_IDLE"), QStringLiteral("1"));
    program.setProcessEnvironment(environment);
    const double cpuBefore = childrenCpuMs();
    QElapsedTimer timer;
    timer.start();
    program.start(QStringLiteral(VANTRY_PROGRAM), {});
    if (!program.waitForFinished(120000) || program.exitCode() != 0) {
        std::printf("launch failed: %s\n%s\n", qPrintable(program.errorString()), program.readAllStandardError().constData());
        return {-1, -1};
    }
    const double wallMs = timer.nsecsElapsed() / 1e6;
    return {wallMs, childrenCpuMs() - cpuBefore};
}

bool run(sqlite3 *db, const char *sql)
{
    char *error = nullptr;
    if (sqlite3_exec(db, sql, nullptr, nullptr, &error) == SQLITE_OK)
        return true;
    std::printf("%s: %s\n", sql, error);
    sqlite3_free(error);
    return false;
}

// Copies the catalogue's sample connection until there are `connections`, and writes `rows`
// history rows of statements of realistic length.
bool fill(const QString &catalogue, int connections, int rows)
{
    sqlite3 *db = nullptr;
    if (sqlite3_open(catalogue.toUtf8().constData(), &db) != SQLITE_OK)
        return false;
    bool ok = run(db, "begin");
    const QByteArray copies = QStringLiteral(
        "with recursive n(i) as (select 1 union all select i + 1 from n where i < %1) "
        "insert into CONNECTIONS (CONNECTION_ID, OBJECT_ID, CONNECTION_NAME, CONNECTION_PARAMETERS, CONNECTION_COMMENTS, "
        "CREATED, CREATED_BY, CHANGED, CHANGED_BY, CONNECTION_TYPE) "
        "select 100000 + i, OBJECT_ID, CONNECTION_NAME || ' ' || i, CONNECTION_PARAMETERS, CONNECTION_COMMENTS, CREATED, "
        "CREATED_BY, CHANGED, CHANGED_BY, CONNECTION_TYPE from n, (select * from CONNECTIONS limit 1)").arg(connections - 1).toUtf8();
    ok = ok && run(db, copies.constData());
    const QByteArray history = QStringLiteral(
        "with recursive n(i) as (select 1 union all select i + 1 from n where i < %1) "
        "insert into SQL_EXECUTION_HISTORY (SQL_EXECUTION_HISTORY_ID, EXECUTED_SQL, CREATED, CREATED_BY, CHANGED, CHANGED_BY) "
        "select 1000000 + i, 'select id, name, total from orders where customer_id = ' || i || ' order by created desc', "
        "'2024-01-02T03:04:05.000', 'bench', '2024-01-02T03:04:05.000', 'bench' from n").arg(rows).toUtf8();
    ok = ok && run(db, history.constData()) && run(db, "commit");
    sqlite3_close(db);
    return ok;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const int launches = argc > 1 ? std::atoi(argv[1]) : 7;
    const int rows = argc > 2 ? std::atoi(argv[2]) : 1000000;
    const int connections = argc > 3 ? std::atoi(argv[3]) : 1000;
    QTemporaryDir emptyHome, largeHome;
    if (launch(emptyHome.path()).wallMs < 0 || launch(largeHome.path()).wallMs < 0)
        return 1;
    std::printf("Filling %d connections and %d history rows ...\n", connections, rows);
    if (!fill(largeHome.filePath(QStringLiteral("db.sqlite")), connections, rows))
        return 1;
    launch(largeHome.path()); // the file into the page cache, as for a user who started before
    Times empty, large;
    for (int i = 0; i < launches; ++i) {
        empty.keepBest(launch(emptyHome.path()));
        large.keepBest(launch(largeHome.path()));
    }
    std::printf("%-48s %10s %10s\n", "start-up to the window shown and idle", "wall ms", "cpu ms");
    std::printf("%-48s %10.1f %10.1f\n", "empty catalogue", empty.wallMs, empty.cpuMs);
    const QString what = QStringLiteral("%1 connections, %2 history rows").arg(connections).arg(rows);
    std::printf("%-48s %10.1f %10.1f\n", qPrintable(what), large.wallMs, large.cpuMs);
    std::printf("%-48s %10.2f %10.2f\n", "ratio", large.wallMs / empty.wallMs, large.cpuMs / empty.cpuMs);
    return 0;
}
