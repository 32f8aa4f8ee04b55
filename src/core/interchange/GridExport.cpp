#include "core/interchange/GridExport.h"

#include "core/base/SavedFile.h"
#include "core/interchange/ExportSink.h"
#include "core/interchange/WorkbookExport.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryFile>
#include <cstdio>
#include <cstring>

namespace GridExport {

const QStringList &filterEntries()
{
    static const QStringList entries = {
        QStringLiteral("Comma delimited (*.csv)"),   QStringLiteral("Tab delimited (*.tab)"),
        QStringLiteral("Microsoft Excel (*.xls)"),   QStringLiteral("Microsoft Excel (*.xlsx)"),
        QStringLiteral("Microsoft Excel (*.xlsm)"), QStringLiteral("Html (*.html)"),
    };
    return entries;
}

ExportFormat formatForEntry(int entry)
{
    switch (entry) {
    case 1:
        return ExportFormat::Csv;
    case 2:
        // The "Tab delimited" entry separates fields by line feeds, not tabs. This is the
        // program's established behaviour and must stay.
        return ExportFormat::LineFeedDelimited;
    case 3:
        return ExportFormat::Xls;
    case 4:
        return ExportFormat::Xlsx;
    case 6:
        return ExportFormat::Html;
    default:
        // Entry 5 (.xlsm) has no action: the dialog closes and nothing is written.
        return ExportFormat::None;
    }
}

int entryOfFilter(const QString &filter)
{
    return int(filterEntries().indexOf(filter)) + 1;
}

namespace {

// A field needs quotes when it holds the separator, a quote or a line break.
bool needsQuotes(std::string_view text, char separator)
{
    for (char c : text)
        if (c == separator || c == '"' || c == '\n' || c == '\r')
            return true;
    return false;
}

void appendField(std::string &out, std::string_view text, char separator)
{
    if (!needsQuotes(text, separator)) {
        out.append(text);
        return;
    }
    out.push_back('"');
    for (char c : text) {
        if (c == '"')
            out.push_back('"');
        out.push_back(c);
    }
    out.push_back('"');
}

void appendHtml(std::string &out, std::string_view text)
{
    for (char c : text) {
        switch (c) {
        case '&': out.append("&amp;"); break;
        case '<': out.append("&lt;"); break;
        case '>': out.append("&gt;"); break;
        case '"': out.append("&quot;"); break;
        case '\'': out.append("&#39;"); break;
        case '\n': out.append("<br>"); break;
        case '\r': break;
        default: out.push_back(c);
        }
    }
}

std::string utf8(const QString &text)
{
    return text.toStdString();
}

QString describe(const QString &path, const QString &cause)
{
    return QStringLiteral("Cannot write \"%1\": %2").arg(QDir::toNativeSeparators(path), cause);
}

} // namespace

void writeDelimited(const ExportSource &source, char separator, QIODevice &out, ExportProgress *progress)
{
    ExportSink sink(out, progress);
    std::string &buf = sink.buffer();
    const int cols = source.columnCount();
    for (int col = 0; col < cols; ++col) {
        if (col)
            buf.push_back(separator);
        appendField(buf, utf8(source.columnName(col)), separator);
    }
    buf.append("\r\n");
    std::string scratch;
    const qint64 rows = source.rowCount();
    for (qint64 row = 0; row < rows; ++row) {
        for (int col = 0; col < cols; ++col) {
            if (col)
                buf.push_back(separator);
            if (!source.isNull(row, col))
                appendField(buf, source.text(row, col, scratch), separator);
        }
        buf.append("\r\n");
        sink.rowDone(row + 1);
    }
    sink.finish(rows);
}

void writeHtml(const ExportSource &source, QIODevice &out, ExportProgress *progress)
{
    ExportSink sink(out, progress);
    std::string &buf = sink.buffer();
    buf.append("<!DOCTYPE html>\n<html>\n<head>\n<meta charset=\"utf-8\">\n<title>Export</title>\n</head>\n"
               "<body>\n<table border=\"1\" cellspacing=\"0\" cellpadding=\"2\">\n<thead>\n<tr>");
    const int cols = source.columnCount();
    for (int col = 0; col < cols; ++col) {
        buf.append("<th>");
        appendHtml(buf, utf8(source.columnName(col)));
        buf.append("</th>");
    }
    buf.append("</tr>\n</thead>\n<tbody>\n");
    std::string scratch;
    const qint64 rows = source.rowCount();
    for (qint64 row = 0; row < rows; ++row) {
        buf.append("<tr>");
        for (int col = 0; col < cols; ++col) {
            buf.append("<td>");
            if (!source.isNull(row, col))
                appendHtml(buf, source.text(row, col, scratch));
            buf.append("</td>");
        }
        buf.append("</tr>\n");
        sink.rowDone(row + 1);
    }
    buf.append("</tbody>\n</table>\n</body>\n</html>\n");
    sink.finish(rows);
}

namespace {

// Streams into a temporary file beside path that replaces path only once all of it is written.
template<typename Fn>
void writeSaved(const QString &path, Fn fill)
{
    QSaveFile file(path);
    // Writing straight into the target would leave a half-written file behind on a failure.
    file.setDirectWriteFallback(false);
    if (!file.open(QIODevice::WriteOnly))
        throw VantryError(describe(path, file.errorString()));
    fill(file);  // throws; the temporary file is discarded when file goes out of scope
    const QString cause = commitSaved(file);
    if (!cause.isEmpty())
        throw VantryError(describe(path, cause));
}

// The .xlsx writer takes a file name: it writes a temporary file beside path, renamed at the end.
void writeXlsxFile(const ExportSource &source, const QString &path, ExportProgress *progress)
{
    const QFileInfo target(path);
    // As for the other formats: an existing file that may not be written is not replaced.
    if (target.exists() && !target.isWritable())
        throw VantryError(describe(path, QStringLiteral("the existing file is not writable")));
    QTemporaryFile temp(target.absoluteDir().filePath(QStringLiteral(".%1.XXXXXX").arg(target.fileName())));
    if (!temp.open())
        throw VantryError(describe(path, temp.errorString()));
    temp.close();
    WorkbookExport::writeXlsx(source, temp.fileName(), progress);
    // std::rename replaces an existing target in one step.
    if (std::rename(QFile::encodeName(temp.fileName()).constData(), QFile::encodeName(path).constData()) != 0)
        throw VantryError(describe(path, QString::fromLocal8Bit(std::strerror(errno))));
    temp.setAutoRemove(false);
}

} // namespace

void write(const ExportSource &source, ExportFormat format, const QString &path, ExportProgress *progress)
{
    switch (format) {
    case ExportFormat::None:
        return;
    case ExportFormat::Csv:
        writeSaved(path, [&](QIODevice &out) { writeDelimited(source, ',', out, progress); });
        return;
    case ExportFormat::LineFeedDelimited:
        writeSaved(path, [&](QIODevice &out) { writeDelimited(source, '\n', out, progress); });
        return;
    case ExportFormat::Html:
        writeSaved(path, [&](QIODevice &out) { writeHtml(source, out, progress); });
        return;
    case ExportFormat::Xls:
        writeSaved(path, [&](QIODevice &out) { WorkbookExport::writeXls(source, out, progress); });
        return;
    case ExportFormat::Xlsx:
        writeXlsxFile(source, path, progress);
        return;
    }
}

} // namespace GridExport
