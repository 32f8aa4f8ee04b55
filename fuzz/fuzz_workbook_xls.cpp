// Fuzzes the .xls reader: each input is a whole file, read from memory, listed and read sheet by
// sheet. Any input must end in sheets or the reader's error: a crash, a sanitizer report, a hang
// or a giant allocation is a finding.

#include "core/base/VantryError.h"
#include "core/interchange/XlsReader.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    try {
        XlsReader book(bytes, QStringLiteral("fuzz.xls"));
        for (int i = 0; i < book.sheetNames().size(); ++i) {
            const WorkbookSheet sheet = book.readSheet(i);
            (void)sheet.cellText(sheet.rowCount(), sheet.columnCount());
        }
    } catch (const VantryError &) {
    }
    return 0;
}
