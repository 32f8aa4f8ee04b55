#pragma once
#include "core/interchange/ExportSource.h"
#include "core/base/VantryError.h"

#include <QString>
#include <QStringList>
#include <atomic>

class QIODevice;

// What the export writes for each entry of the save dialog.
enum class ExportFormat {
    None,              // the .xlsm entry: writes nothing, deliberately
    Csv,               // comma delimited
    LineFeedDelimited, // the "Tab delimited" entry: fields separated by line feeds, deliberately
    Xls,               // Excel 97-2003 workbook (BIFF8)
    Xlsx,              // Office Open XML workbook
    Html,
};

// Thrown by an export that stopped because the user cancelled it.
class ExportCancelled : public VantryError
{
public:
    ExportCancelled() : VantryError(QStringLiteral("Export cancelled.")) {}
};

// Shared between an export running on a worker thread and the window that watches it.
struct ExportProgress
{
    std::atomic<qint64> rowsDone{0};
    std::atomic<bool> cancel{false};
};

namespace GridExport {

// The save dialog's six entries, in order, in the "Name (*.ext)" form of a Qt file dialog.
const QStringList &filterEntries();
// The format of a 1-based filter entry; entry 5 (.xlsm) and unknown entries give None.
ExportFormat formatForEntry(int entry);
// The 1-based filter entry of a dialog's selected filter text, 0 when it is none of them.
int entryOfFilter(const QString &filter);

// Writes the source to path in the format. Nothing lands at path unless the whole export
// succeeded: the file is written under a temporary name beside it and renamed at the end.
// Throws VantryError naming the cause; ExportCancelled when progress->cancel was set.
void write(const ExportSource &source, ExportFormat format, const QString &path,
           ExportProgress *progress = nullptr);

// The three text formats into an open device (used by write and by the benchmarks).
void writeDelimited(const ExportSource &source, char separator, QIODevice &out, ExportProgress *progress);
void writeHtml(const ExportSource &source, QIODevice &out, ExportProgress *progress);

} // namespace GridExport
