// Fuzzes the reading of .xlsx sheet parts: the input is a block size (its first byte) and a
// sheet's XML, streamed in blocks that small through the scanner into the cells of a sheet with one shared string and a date format. Any
// input must end in a sheet or the reader's error: a crash, a sanitizer report, a hang or a
// giant allocation is a finding.

#include "core/base/VantryError.h"
#include "core/interchange/WorkbookSheetBuilder.h"
#include "core/interchange/XlsxSheetParser.h"
#include "core/interchange/XlsxXmlScanner.h"

#include <QBuffer>

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 1)
        return 0;
    QBuffer device;
    device.setData(reinterpret_cast<const char *>(data) + 1, qsizetype(size - 1));
    device.open(QIODevice::ReadOnly);
    static const QStringList sharedStrings{QStringLiteral("shared")};
    static const QVector<SerialKind> styleKinds{SerialKind::Number, SerialKind::Date, SerialKind::Time};
    try {
        WorkbookSheetBuilder sheet(QStringLiteral("fuzz.xlsx"), QStringLiteral("Fuzz"), {});
        XlsxXmlScanner xml(&device, data[0]);
        (void)XlsxSheetParser(sharedStrings, styleKinds, false).parse(xml, sheet);
        (void)xml.lineNumber();
        const WorkbookSheet cells = sheet.take();
        (void)cells.cellText(cells.rowCount(), cells.columnCount());
    } catch (const VantryError &) {
    }
    return 0;
}
