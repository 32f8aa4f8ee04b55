// Reads a generated text file of about 100 MB line by line with TvtrFileReader (ReadLn) and
// counts its lines with `wc -l` in the same run, then prints both times and their ratio.
// The file is read once beforehand so that both runs find it in the page cache.

#include "core/interchange/VtrFileReader.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <cstdio>

namespace {

constexpr qint64 TargetSize = 100 * 1024 * 1024;

// Rows of a delimited export: an id, a name, an amount and a date, 30 to 110 bytes each.
qint64 GenerateFile(const QString &name)
{
    QFile file(name);
    if (!file.open(QIODevice::WriteOnly))
        qFatal("cannot create %s", qPrintable(name));
    QRandomGenerator random(42);
    QByteArray chunk;
    qint64 lines = 0;
    qint64 written = 0;
    while (written + chunk.size() < TargetSize)
    {
        chunk += QByteArray::number(lines) + ";\"" +
                 QByteArray(10 + random.bounded(80), char('a' + lines % 26)) + "\";" +
                 QByteArray::number(random.bounded(100000) / 100.0) + ";2024-01-" +
                 QByteArray::number(1 + lines % 28) + '\n';
        ++lines;
        if (chunk.size() > 1 << 20)
        {
            written += file.write(chunk);
            chunk.clear();
        }
    }
    file.write(chunk);
    return lines;
}

struct Run
{
    double seconds;
    qint64 lines;
};

Run ReadWithReader(const QString &name, const QString &terminators)
{
    QElapsedTimer timer;
    timer.start();
    TvtrFileReader reader(name, 65536);
    reader.SetLineTerminator(terminators);
    qint64 bytes = 0;
    QByteArray line;
    while (!reader.Eof()) {
        reader.ReadLn(line);
        bytes += line.size();
    }
    const Run run{timer.nsecsElapsed() / 1e9, reader.LinesRead()};
    if (bytes == 0)
        qFatal("nothing read");
    return run;
}

Run CountWithWc(const QString &name)
{
    QElapsedTimer timer;
    timer.start();
    QProcess wc;
    wc.start(QStringLiteral("wc"), {QStringLiteral("-l"), name});
    if (!wc.waitForFinished(-1) || wc.exitCode() != 0)
        qFatal("wc -l failed");
    const double seconds = timer.nsecsElapsed() / 1e9;
    return {seconds, wc.readAllStandardOutput().split(' ').value(0).trimmed().toLongLong()};
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QTemporaryDir dir;
    const QString name = dir.filePath(QStringLiteral("lines.txt"));
    const qint64 lines = GenerateFile(name);
    const double megabytes = QFile(name).size() / 1048576.0;
    CountWithWc(name); // warms the page cache

    const Run wc = CountWithWc(name);
    const Run lf = ReadWithReader(name, QStringLiteral("{LF}"));
    const Run all = ReadWithReader(name, QString());
    if (wc.lines != lines || lf.lines != lines || all.lines != lines)
        qFatal("line counts differ: generated %lld, wc %lld, reader %lld/%lld", lines, wc.lines,
               lf.lines, all.lines);

    std::printf("file: %.1f MB, %lld lines\n", megabytes, lines);
    std::printf("wc -l:                         %.3f s (%.0f MB/s)\n", wc.seconds,
                megabytes / wc.seconds);
    std::printf("ReadLn, terminator {LF}:       %.3f s (%.0f MB/s), %.2f x wc -l\n", lf.seconds,
                megabytes / lf.seconds, lf.seconds / wc.seconds);
    std::printf("ReadLn, default terminators:   %.3f s (%.0f MB/s), %.2f x wc -l\n", all.seconds,
                megabytes / all.seconds, all.seconds / wc.seconds);
    return 0;
}
