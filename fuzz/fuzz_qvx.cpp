// Fuzzes the QVX reader: ReadHeader and then ReadRecord until it says stop, on random files.
// Any input must end in records or the reader's error: a crash, a sanitizer report, a record
// loop that does not move on, or a giant allocation is a finding.

#include "core/base/VantryError.h"
#include "core/interchange/QvxLib.h"

#include <QBuffer>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    QBuffer device;
    device.setData(reinterpret_cast<const char *>(data), qsizetype(size));
    device.open(QIODevice::ReadOnly);
    try
    {
        TQVXFile file;
        file.ReadHeader(&device);
        // Every record takes at least one byte, so there are never more records than bytes.
        size_t records = 0;
        while (file.ReadRecord())
        {
            for (int i = 0; i < file.FieldCount(); ++i)
                (void)file.Field(i).Value().toString();
            if (++records > size + 1)
                abort();
        }
        (void)file.SourceFilePosition();
    }
    catch (const VantryError &)
    {
    }
    return 0;
}
