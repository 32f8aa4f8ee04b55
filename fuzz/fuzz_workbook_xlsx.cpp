// Fuzzes the .xlsx reader (and whatever package the bytes make): open the package from memory,
// list its sheets and read each one. Any input must end in sheets or the reader's error: a crash,
// a sanitizer report, a hang or a giant allocation is a finding.

#include "core/base/VantryError.h"
#include "core/interchange/WorkbookFormats.h"

#include <QBuffer>

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    auto device = std::make_unique<QBuffer>();
    device->setData(reinterpret_cast<const char *>(data), qsizetype(size));
    device->open(QIODevice::ReadOnly);
    try {
        auto book = openWorkbookPackage(std::move(device), QStringLiteral("fuzz.xlsx"));
        for (int i = 0; i < book->sheetNames().size(); ++i) {
            const WorkbookSheet sheet = book->readSheet(i);
            (void)sheet.cellText(sheet.rowCount(), sheet.columnCount());
        }
    } catch (const VantryError &) {
    }
    return 0;
}
