// Feeds arbitrary bytes to the readers of stored connection parameters: UnpackParameters (bzip2 or
// plain text) and StrToReaderConnection (the "OP=" text). Conversion errors are the expected way
// to refuse a bad text; anything else -- a crash, a sanitizer report, a record that doesn't survive
// being written and read again -- is a finding.
#include "core/base/VantryError.h"
#include "core/connections/vtrtools.h"

#include <QDir>

#include <cstdint>
#include <cstdlib>

namespace {

void checkRecord(const QString &text)
{
    TReaderConnection record;
    try {
        StrToReaderConnection(text, record);
    } catch (const VantryError &) {
        return;
    }
    // Whatever was read must be written and read back unchanged.
    const QString written = ReaderConnectionToStr(record);
    if (ReaderConnectionFromStr(written) != record)
        std::abort();
    if (UnpackParameters(PackParameters(written)) != written)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    // The default rejected-records file names the data folder: keep it out of the user's home.
    qputenv("VANTRY_HOME", QDir::tempPath().toUtf8() + "/vantry-fuzz-home");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    checkRecord(UnpackParameters(bytes));
    checkRecord(QString::fromUtf8(bytes));
    return 0;
}
