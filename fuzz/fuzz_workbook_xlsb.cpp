// Fuzzes the .xlsb reader's records: the input is split into a shared-strings part, a styles part
// and a sheet part (two length bytes each for the first two), packed with a fixed workbook part
// into an uncompressed ZIP written in memory, and read. Mutations so reach the records rather than dying
// in the compression. Any input must end in a sheet or the reader's error: a crash, a sanitizer
// report, a hang or a giant allocation is a finding.

#include "core/base/VantryError.h"
#include "core/interchange/WorkbookFormats.h"

#include <QBuffer>
#include <QtEndian>

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

quint32 crc32(const QByteArray &bytes)
{
    quint32 crc = 0xFFFFFFFFu;
    for (const char c : bytes) {
        crc ^= quint8(c);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1u)));
    }
    return ~crc;
}

template<typename T>
void put(QByteArray &out, T value)
{
    char bytes[sizeof(T)];
    qToLittleEndian(value, bytes);
    out.append(bytes, sizeof(T));
}

// An uncompressed ZIP package of the parts: each local header with its data, then the central
// directory and its end record.
QByteArray zip(const QList<QPair<QString, QByteArray>> &parts)
{
    QByteArray out;
    QByteArray directory;
    for (const auto &part : parts) {
        const QByteArray name = part.first.toUtf8();
        const quint32 crc = crc32(part.second);
        const auto size = quint32(part.second.size());
        const auto offset = quint32(out.size());
        put<quint32>(out, 0x04034b50);
        for (quint16 field : {20, 0, 0, 0, 0})  // version, flags, stored, time, date
            put(out, field);
        for (quint32 field : {crc, size, size})
            put(out, field);
        put(out, quint16(name.size()));
        put<quint16>(out, 0);
        out += name + part.second;

        put<quint32>(directory, 0x02014b50);
        for (quint16 field : {20, 20, 0, 0, 0, 0})  // made by, needed, flags, stored, time, date
            put(directory, field);
        for (quint32 field : {crc, size, size})
            put(directory, field);
        for (quint16 field : {quint16(name.size()), quint16(0), quint16(0), quint16(0), quint16(0)})
            put(directory, field);
        put<quint32>(directory, 0);
        put(directory, offset);
        directory += name;
    }
    const auto directoryOffset = quint32(out.size());
    out += directory;
    put<quint32>(out, 0x06054b50);
    for (quint16 field : {quint16(0), quint16(0), quint16(parts.size()), quint16(parts.size())})
        put(out, field);
    put(out, quint32(directory.size()));
    put(out, directoryOffset);
    put<quint16>(out, 0);
    return out;
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
