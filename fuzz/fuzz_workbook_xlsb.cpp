// Fuzzes the .xlsb reader's records: the input is split into a shared-strings part, a styles part
// and a sheet part (two length bytes each for the first two), packed with a fixed workbook part
// into an uncompressed ZIP in memory, and read. Mutations so reach the records rather than dying
// in the compression. Any input must end in a sheet or the reader's error: a crash, a sanitizer
// report, a hang or a giant allocation is a finding.

#include "core/base/VantryError.h"
#include "core/interchange/WorkbookFormats.h"

#include <quazip.h>
#include <quazipfile.h>
#include <quazipnewinfo.h>

#include <QBuffer>

#include <cstdint>
#include <cstdlib>

namespace {

QByteArray record(int type, const QByteArray &data)
{
    QByteArray bytes;
    for (int value : {type, int(data.size())}) {
        do {
            const int byte = value & 0x7F;
            value >>= 7;
            bytes.append(char(value ? byte | 0x80 : byte));
        } while (value);
    }
    return bytes + data;
}

QByteArray wide(const char *latin)
{
    QByteArray bytes(4, 0);
    bytes[0] = char(qstrlen(latin));
    for (const char *c = latin; *c; ++c)
        bytes += QByteArray(1, *c) + QByteArray(1, 0);
    return bytes;
}

QByteArray zip(const QList<QPair<QString, QByteArray>> &parts)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    {
        QuaZip archive(&buffer);
        if (!archive.open(QuaZip::mdCreate))
            abort();
        for (const auto &part : parts) {
            QuaZipFile file(&archive);
            if (!file.open(QIODevice::WriteOnly, QuaZipNewInfo(part.first), nullptr, 0, 0, 0))
                abort();
            file.write(part.second);
            file.close();
        }
        archive.close();
    }
    return buffer.data();
}

QString rels(const QString &entries)
{
    return QStringLiteral("<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">%1</Relationships>")
        .arg(entries);
}

QString rel(const char *id, const char *type, const char *target)
{
    return QStringLiteral("<Relationship Id=\"%1\" Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/%2\" Target=\"%3\"/>")
        .arg(QLatin1String(id), QLatin1String(type), QLatin1String(target));
}

} // namespace

// The ZIP library warns through Qt about every bad seek a damaged package asks for; the
// warnings say nothing a finding would not, and slow the run down.
extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 4)
        return 0;
    const QByteArray input(reinterpret_cast<const char *>(data) + 4, qsizetype(size - 4));
    const int stringsSize = qMin(int(data[0] | data[1] << 8), int(input.size()));
    const int stylesSize = qMin(int(data[2] | data[3] << 8), int(input.size()) - stringsSize);

    static const QByteArray workbook = record(153, QByteArray(8, 0) + wide(""))
                                       + record(156, QByteArray(8, 0) + wide("rId1") + wide("Fuzz"));
    auto device = std::make_unique<QBuffer>();
    device->setData(zip({
        {"_rels/.rels", rels(rel("rId1", "officeDocument", "xl/workbook.bin")).toUtf8()},
        {"xl/_rels/workbook.bin.rels",
         rels(rel("rId1", "worksheet", "sheet.bin") + rel("rId2", "sharedStrings", "strings.bin")
              + rel("rId3", "styles", "styles.bin")).toUtf8()},
        {"xl/workbook.bin", workbook},
        {"xl/strings.bin", input.left(stringsSize)},
        {"xl/styles.bin", input.mid(stringsSize, stylesSize)},
        {"xl/sheet.bin", input.mid(stringsSize + stylesSize)},
    }));
    device->open(QIODevice::ReadOnly);
    try {
        auto book = openWorkbookPackage(std::move(device), QStringLiteral("fuzz.xlsb"));
        const WorkbookSheet sheet = book->readSheet(0);
        (void)sheet.cellText(sheet.rowCount(), sheet.columnCount());
    } catch (const VantryError &) {
    }
    return 0;
}
