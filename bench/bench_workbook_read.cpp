// Reads a 100,000-row x 10-column sheet into memory with our workbook readers and, in the same
// run, with Python's openpyxl (read-only mode) from the same .xlsx and xlrd from the same .xls;
// prints rows per second and the ratio. The .xls format holds at most 65,536 rows a sheet, so its
// rows are split over two sheets and read whole. Both sides take every cell's text, as the import
// does. Python's times are taken inside Python around the open and the reading of every cell, so
// its interpreter start does not count against it.

#include "core/interchange/WorkbookReader.h"

#include "PythonWriter.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>

#include <cstdio>

namespace {

constexpr int kRows = 100000;

// Ten columns of mixed kinds: integers, reals, texts (unique and repeating), dates, date-times,
// booleans.
const char *kRowPython = "def row(i):\n"
                         "    return [i, i * 0.25, 'name %d' % i, ('red', 'green', 'blue')[i % 3],\n"
                         "            datetime.date(2000, 1, 1) + datetime.timedelta(days=i % 9000),\n"
                         "            datetime.datetime(2020, 1, 1, 12, 30) + datetime.timedelta(minutes=i),\n"
                         "            i % 2 == 0, -i, i / 7.0, 'text with some words %d' % (i * 13)]\n";

void writeFiles(const QString &xlsx, const QString &xls)
{
    const QString script = QStringLiteral(
        "import sys, datetime, openpyxl, xlwt\n%1"
        "wb = openpyxl.Workbook(write_only=True); ws = wb.create_sheet('Data')\n"
        "for i in range(%2): ws.append(row(i))\n"
        "wb.save(sys.argv[1])\n"
        "book = xlwt.Workbook(); d = xlwt.easyxf(num_format_str='yyyy-mm-dd'); t = xlwt.easyxf(num_format_str='yyyy-mm-dd hh:mm:ss')\n"
        "for s in range(0, %2, 65536):\n"
        "    ws = book.add_sheet('Data%d' % s)\n"
        "    for i in range(s, min(s + 65536, %2)):\n"
        "        for c, v in enumerate(row(i)): ws.write(i - s, c, v, d if c == 4 else t if c == 5 else xlwt.Style.default_style)\n"
        "book.save(sys.argv[2])\n")
                               .arg(QLatin1String(kRowPython))
                               .arg(kRows);
    if (!runPythonWriter(script, {xlsx, xls}))
        qFatal("the benchmark workbooks could not be written");
}

// Reads every sheet; returns the seconds taken and checks the row count.
double readWithOurs(const QString &path)
{
    QElapsedTimer timer;
    timer.start();
    auto book = WorkbookReader::open(path);
    qint64 rows = 0;
    for (int i = 0; i < book->sheetNames().size(); ++i) {
        const WorkbookSheet sheet = book->readSheet(i);
        rows += sheet.rowCount();
        if (sheet.columnCount() != 10)
            qFatal("%s: %d columns read", qPrintable(path), sheet.columnCount());
        qint64 characters = 0;
        for (int r = 1; r <= sheet.rowCount(); ++r)
            for (int c = 1; c <= sheet.columnCount(); ++c)
                characters += sheet.cellText(r, c).size();
        if (characters == 0)
            qFatal("%s: no text read", qPrintable(path));
    }
    const double seconds = timer.nsecsElapsed() / 1e9;
    if (rows != kRows)
        qFatal("%s: %lld rows read", qPrintable(path), rows);
    return seconds;
}

// Runs a Python reader that prints the seconds it took and the rows it read.
double readWithPython(const QString &code, const QString &path)
{
    QProcess python;
    python.start(QStringLiteral("/usr/bin/python3"),
                 {QStringLiteral("-c"), QStringLiteral("import sys, time\nstart = time.perf_counter()\n%1\n"
                                                       "print(time.perf_counter() - start, rows)\n").arg(code),
                  path});
    if (!python.waitForFinished(-1) || python.exitCode() != 0)
        qFatal("python failed: %s", python.readAllStandardError().constData());
    const QList<QByteArray> out = python.readAllStandardOutput().trimmed().split(' ');
    if (out.value(1).toLongLong() != kRows)
        qFatal("python read %s rows", out.value(1).constData());
    return out.value(0).toDouble();
}

void report(const char *format, double ours, double theirs, const char *reference)
{
    std::printf("%-5s ours: %7.3f s (%9.0f rows/s)   %-26s %7.3f s (%9.0f rows/s)   ratio %.1fx\n", format, ours,
                kRows / ours, reference, theirs, kRows / theirs, theirs / ours);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QTemporaryDir dir;
    const QString xlsx = dir.filePath(QStringLiteral("bench.xlsx"));
    const QString xls = dir.filePath(QStringLiteral("bench.xls"));
    writeFiles(xlsx, xls);

    // The best of three runs each, so the page cache and warm-up favour no one.
    double oursXlsx = 1e9, oursXls = 1e9, openpyxl = 1e9, xlrd = 1e9;
    for (int run = 0; run < 3; ++run) {
        oursXlsx = qMin(oursXlsx, readWithOurs(xlsx));
        oursXls = qMin(oursXls, readWithOurs(xls));
        openpyxl = qMin(openpyxl, readWithPython(QStringLiteral(
            "import openpyxl\nwb = openpyxl.load_workbook(sys.argv[1], read_only=True)\nrows = 0\n"
            "for ws in wb.worksheets:\n"
            "    for row in ws.iter_rows(values_only=True): rows += 1; cells = [str(v) for v in row]\n"), xlsx));
        xlrd = qMin(xlrd, readWithPython(QStringLiteral(
            "import xlrd\nb = xlrd.open_workbook(sys.argv[1])\nrows = 0\n"
            "for s in b.sheets():\n"
            "    for r in range(s.nrows): rows += 1; cells = [str(v) for v in s.row_values(r)]\n"), xls));
    }
    std::printf("%d rows x 10 columns, best of 3\n", kRows);
    report(".xlsx", oursXlsx, openpyxl, "openpyxl (read-only):");
    report(".xls", oursXls, xlrd, "xlrd:");
    return 0;
}
