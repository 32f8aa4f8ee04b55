// Feeds arbitrary bytes to the data link file reader and the OLE DB connection-string reader
// behind the data link dialog. A refusal (VantryError) is the expected answer to a bad file;
// a crash, a sanitizer report, a hang, or properties that do not survive being written into a
// string and read back, is a finding.
#include "core/base/VantryError.h"
#include "core/connections/DataLinkFile.h"
#include "core/connections/DataLinkProperties.h"

#include <cstdint>
#include <cstdlib>

namespace {

bool sameBoxes(const DataLinkProperties &a, const DataLinkProperties &b)
{
    return a.provider == b.provider && a.dataSource == b.dataSource && a.initialCatalog == b.initialCatalog
           && a.userId == b.userId && a.password == b.password && a.extendedProperties == b.extendedProperties;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    QString connectionString;
    try {
        connectionString = DataLinkFile::parse(bytes, QStringLiteral("fuzz.udl"));
    } catch (const VantryError &) {
        connectionString = QString::fromUtf8(bytes);
    }
    const DataLinkProperties read = DataLinkProperties::fromConnectionString(connectionString);
    const DataLinkProperties again = DataLinkProperties::fromConnectionString(read.connectionString());
    if (!sameBoxes(read, again))
        std::abort();
    return 0;
}
