// Exports a 1,000,000-row x 10-column result fetched from a SQLite file: CSV against
// `sqlite3 -csv` writing the same rows from the same file (time ratio), and .xlsx with the peak
// memory growth over the fetched result (constant-memory workbook writing) and its time.

#include "core/interchange/GridExport.h"
#include "core/workspace/ResultExportSource.h"
#include "core/workspace/ResultQuery.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <cstdio>

namespace {

constexpr int Rows = 1000000;

void generate(QSqlDatabase &db)
{
    QSqlQuery q(db);
    q.exec(QStringLiteral("create table bench_rows (id integer, code text, name text, qty integer, price real, "
                          "ratio real, city text, note text, flag integer, created text)"));
    db.transaction();
    q.prepare(QStringLiteral("insert into bench_rows values (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"));
    for (int i = 0; i < Rows; ++i) {
        q.addBindValue(i);
        q.addBindValue(QStringLiteral("C%1").arg(i % 9973, 5, 10, QLatin1Char('0')));
        q.addBindValue(QStringLiteral("Customer number %1").arg(i));
        q.addBindValue(i % 1000);
        q.addBindValue((i % 100000) / 100.0);
        q.addBindValue(1.0 / (1 + i % 97));
        q.addBindValue(i % 3 ? QStringLiteral("Paris") : QStringLiteral("Lyon, \"centre\""));
        q.addBindValue(i % 5 ? QVariant(QStringLiteral("note text for row")) : QVariant(QMetaType(QMetaType::QString)));
        q.addBindValue(i % 2);
        q.addBindValue(QStringLiteral("2024-%1-%2").arg(1 + i % 12, 2, 10, QLatin1Char('0')).arg(1 + i % 28, 2, 10, QLatin1Char('0')));
        if (!q.exec())
            qFatal("insert failed: %s", qPrintable(q.lastError().text()));
    }
    db.commit();
}

qint64 statusKb(const char *field)
{
    QFile status(QStringLiteral("/proc/self/status"));
    status.open(QIODevice::ReadOnly);
    for (const QByteArray &line : status.readAll().split('\n'))
        if (line.startsWith(field))
            return line.mid(int(qstrlen(field))).trimmed().split(' ').value(0).toLongLong();
    return -1;
}

void resetPeak()
{
    // Writing 5 to clear_refs resets the peak resident size (VmHWM).
    QFile refs(QStringLiteral("/proc/self/clear_refs"));
    if (refs.open(QIODevice::WriteOnly))
        refs.write("5");
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("bench.sqlite"));
    ResultQuery query;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("bench"));
        db.setDatabaseName(file);
        if (!db.open())
            qFatal("cannot open %s", qPrintable(file));
        generate(db);
        query.open(db, QStringLiteral("select * from bench_rows"), 0);
    }
    const ResultTable &table = *query.table();
    const ResultExportSource source(table);
    std::printf("result: %lld rows x %d columns, %.1f MB in memory\n", table.rowCount(), table.columnCount(),
                table.memoryBytes() / 1048576.0);

    // Reference first (it also warms the page cache), then ours, then the reference again.
    const QString reference = dir.filePath(QStringLiteral("sqlite3.csv"));
    auto runSqlite = [&] {
        QElapsedTimer timer;
        timer.start();
        QProcess sqlite;
        sqlite.setStandardOutputFile(reference);
        sqlite.start(QStringLiteral("sqlite3"), {QStringLiteral("-csv"), file, QStringLiteral("select * from bench_rows")});
        if (!sqlite.waitForFinished(-1) || sqlite.exitCode() != 0)
            qFatal("sqlite3 -csv failed");
        return timer.nsecsElapsed() / 1e9;
    };
    runSqlite();
    const QString csv = dir.filePath(QStringLiteral("vantry.csv"));
    double ours = 1e9, theirs = 1e9;
    for (int run = 0; run < 3; ++run) {
        theirs = std::min(theirs, runSqlite());
        QElapsedTimer timer;
        timer.start();
        GridExport::write(source, ExportFormat::Csv, csv);
        ours = std::min(ours, timer.nsecsElapsed() / 1e9);
    }
    std::printf("sqlite3 -csv:   %.3f s, %.1f MB\n", theirs, QFile(reference).size() / 1048576.0);
    std::printf("CSV export:     %.3f s, %.1f MB, %.2f x sqlite3 -csv (best of 3)\n", ours,
                QFile(csv).size() / 1048576.0, ours / theirs);

    const qint64 before = statusKb("VmRSS:");
    resetPeak();
    QElapsedTimer timer;
    timer.start();
    GridExport::write(source, ExportFormat::Xlsx, dir.filePath(QStringLiteral("vantry.xlsx")));
    const double xlsxSeconds = timer.nsecsElapsed() / 1e9;
    const qint64 peak = statusKb("VmHWM:");
    std::printf("XLSX export:    %.3f s, %.1f MB file, peak memory growth %.1f MB over the result\n", xlsxSeconds,
                QFile(dir.filePath(QStringLiteral("vantry.xlsx"))).size() / 1048576.0, (peak - before) / 1024.0);
    return 0;
}
