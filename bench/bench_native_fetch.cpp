// Fetch of a table of common types (integers, decimals, microsecond timestamps, texts) through
// the MariaDB and Firebird clients' own cursors, against the generic QSqlQuery path in the same
// run, printing the ratio. Needs the test-server environment ("scripts/test-servers env-file").
//
//   bench_native_fetch [rows]
#include "core/workspace/ResultFetcher.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <cstdio>

namespace {

QString env(const char *name)
{
    return qEnvironmentVariable(name);
}

bool exec(const QSqlDatabase &db, const QString &sql)
{
    QSqlQuery query(db);
    if (query.exec(sql))
        return true;
    std::printf("%s\n  %s\n", qPrintable(sql.left(80)), qPrintable(query.lastError().text()));
    return false;
}

double bestOf(int runs, const QSqlDatabase &db, const QString &sql, ResultFetcher::Path path, qint64 &rows)
{
    double best = 1e300;
    for (int i = 0; i < runs; ++i) {
        QElapsedTimer timer;
        timer.start();
        const auto table = ResultFetcher::fetch(db, sql, 0, path);
        best = std::min(best, timer.nsecsElapsed() / 1e6);
        rows = table->rowCount();
    }
    return best;
}

void compare(const char *engine, const QSqlDatabase &db, const QString &sql)
{
    std::printf("%s\n", qPrintable(sql));
    qint64 rows = 0;
    const double native = bestOf(3, db, sql, ResultFetcher::Path::Automatic, rows);
    const QString path = ResultFetcher::lastPath();
    const double generic = bestOf(3, db, sql, ResultFetcher::Path::Generic, rows);
    std::printf("%-9s %lld rows: %s cursor %8.1f ms, generic QSqlQuery %8.1f ms, ratio %.2f\n", engine, rows,
                qPrintable(path), native, generic, native / generic);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const int rows = argc > 1 ? std::atoi(argv[1]) : 200000;
    if (env("VANTRY_MYSQL_PORT").isEmpty())
        return std::printf("no test servers: source \"$(scripts/test-servers env-file)\"\n"), 1;

    QSqlDatabase maria = QSqlDatabase::addDatabase(QStringLiteral("QMYSQL"), QStringLiteral("maria"));
    maria.setHostName(env("VANTRY_MYSQL_HOST"));
    maria.setPort(env("VANTRY_MYSQL_PORT").toInt());
    maria.setDatabaseName(env("VANTRY_MYSQL_DATABASE"));
    maria.setUserName(env("VANTRY_MYSQL_USER"));
    maria.setPassword(env("VANTRY_MYSQL_PASSWORD"));
    if (maria.open()
        && exec(maria, QStringLiteral("drop table if exists vantry_bench_native"))
        && exec(maria, QStringLiteral("create table vantry_bench_native (id bigint, a int, n decimal(18,4), "
                                      "ts datetime(6), code varchar(20), name varchar(60), memo text)"))
        && exec(maria, QStringLiteral("insert into vantry_bench_native select seq, seq %% 1000, seq / 7, "
                                      "timestamp'2024-01-01 00:00:00' + interval seq microsecond, "
                                      "concat('C', seq %% 100000), concat('name ', seq %% 5000, ' abc'), "
                                      "if(seq %% 4 = 0, null, repeat('m', 40)) from seq_0_to_%1").arg(rows - 1).replace("%%", "%")))
        compare("MariaDB", maria, QStringLiteral("select * from vantry_bench_native"));
    exec(maria, QStringLiteral("drop table if exists vantry_bench_native"));

    QSqlDatabase fb = QSqlDatabase::addDatabase(QStringLiteral("QIBASE"), QStringLiteral("fb"));
    fb.setHostName(env("VANTRY_FB_HOST"));
    fb.setPort(env("VANTRY_FB_PORT").toInt());
    fb.setDatabaseName(env("VANTRY_FB_DATABASE"));
    fb.setUserName(env("VANTRY_FB_USER"));
    fb.setPassword(env("VANTRY_FB_PASSWORD"));
    fb.setConnectOptions(QStringLiteral("ISC_DPB_LC_CTYPE=UTF8"));
    if (!fb.open())
        return std::printf("Firebird: %s\n", qPrintable(fb.lastError().text())), 1;
    QSqlQuery(fb).exec(QStringLiteral("drop table vantry_bench_native"));
    if (exec(fb, QStringLiteral("create table vantry_bench_native (id bigint, a integer, n numeric(18,4), "
                                "ts timestamp, code varchar(20), name varchar(60), memo blob sub_type text)"))
        && exec(fb, QStringLiteral("execute block as declare i integer = 0; begin while (i < %1) do begin "
                                   "insert into vantry_bench_native values (:i, mod(:i, 1000), :i / 7.0, "
                                   "dateadd(:i millisecond to timestamp '2024-01-01 00:00:00'), 'C' || mod(:i, 100000), "
                                   "'name ' || mod(:i, 5000) || ' abc', iif(mod(:i, 4) = 0, null, 'memo ' || :i)); "
                                   "i = i + 1; end end").arg(rows)))
    {
        compare("Firebird", fb, QStringLiteral("select id, a, n, ts, code, name from vantry_bench_native"));
        // one BLOB per row costs its own round trips on either path
        compare("Firebird", fb, QStringLiteral("select * from vantry_bench_native"));
    }
    exec(fb, QStringLiteral("drop table vantry_bench_native"));
    return 0;
}
