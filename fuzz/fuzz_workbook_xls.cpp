// Fuzzes the .xls reader: FreeXL reads files by name, so each input is written to one temporary
// file, opened, listed and read sheet by sheet. Any input must end in sheets or the reader's
// error: a crash, a sanitizer report, a hang or a giant allocation is a finding.

#include "core/base/VantryError.h"
#include "core/interchange/XlsReader.h"

#include <QFile>
#include <QTemporaryDir>

#include <cstdint>
#include <cstdlib>

// FreeXL loses a small block of its own on some damaged files even when the handle is closed
// (seed freexl-lost-block.xls): a library leak of a few hundred bytes a file, not one of
// ours, so the leak checker leaves allocations made inside FreeXL out.
extern "C" const char *__lsan_default_suppressions()
{
    return "leak:libfreexl.so\n";
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static QTemporaryDir dir;
    static const QString path = dir.filePath(QStringLiteral("fuzz.xls"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)
        || file.write(reinterpret_cast<const char *>(data), qint64(size)) != qint64(size))
        abort();
    file.close();
    try {
        XlsReader book(path);
        for (int i = 0; i < book.sheetNames().size(); ++i) {
            const WorkbookSheet sheet = book.readSheet(i);
            (void)sheet.cellText(sheet.rowCount(), sheet.columnCount());
        }
    } catch (const VantryError &) {
    }
    return 0;
}
