#pragma once
// Builds .xls files byte by byte for tests of what writers at hand do not write: records split
// over CONTINUE records, cached formula results, BIFF5, damaged and hostile files.

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>
#include <QtEndian>

#include <cstring>

namespace xls {

inline QByteArray le16(int value)
{
    char bytes[2];
    qToLittleEndian(quint16(value), bytes);
    return QByteArray(bytes, 2);
}

inline QByteArray le32(quint32 value)
{
    char bytes[4];
    qToLittleEndian(value, bytes);
    return QByteArray(bytes, 4);
}

inline QByteArray f64(double value)
{
    quint64 bits;
    std::memcpy(&bits, &value, sizeof bits);
    char bytes[8];
    qToLittleEndian(bits, bytes);
    return QByteArray(bytes, 8);
}

inline QByteArray record(int type, const QByteArray &body)
{
    return le16(type) + le16(int(body.size())) + body;
}

// A cell record's row, column (both from 0) and cell format.
inline QByteArray cell(int row, int column, int xf = 0)
{
    return le16(row) + le16(column) + le16(xf);
}

// Characters one byte each (flags 0) or UTF-16 (flags 1), without count or flags.
inline QByteArray latin1(const QString &text)
{
    return text.toLatin1();
}

inline QByteArray utf16(const QString &text)
{
    QByteArray bytes;
    for (const QChar c : text)
        bytes += le16(c.unicode());
    return bytes;
}

// A BIFF8 string with a 16-bit (or 8-bit) count, stored in two bytes a character.
inline QByteArray unicodeString(const QString &text, bool shortCount = false)
{
    return (shortCount ? QByteArray(1, char(text.size())) : le16(int(text.size()))) + QByteArray(1, '\x01') + utf16(text);
}

inline QByteArray bof(int version, int kind)
{
    return record(0x0809, le16(version) + le16(kind) + QByteArray(12, 0));
}

inline QByteArray eof()
{
    return record(0x000A, {});
}

struct Sheet
{
    QString name;
    QByteArray records;  // the cell records between the sheet's BOF and EOF
    int kind = 0;        // 0 a worksheet, 2 a chart
};

// A workbook stream: the globals (BOF, the given records, one BOUNDSHEET a sheet, EOF), then each
// sheet's BOF, records and EOF. BIFF8 names are UTF-16, BIFF5 names Latin-1 bytes.
inline QByteArray workbookStream(const QByteArray &globals, const QList<Sheet> &sheets, bool biff8 = true)
{
    const int version = biff8 ? 0x0600 : 0x0500;
    QList<QByteArray> names;
    int globalsSize = int(bof(version, 5).size() + globals.size() + eof().size());
    for (const Sheet &sheet : sheets) {
        names << (biff8 ? unicodeString(sheet.name, true) : QByteArray(1, char(sheet.name.size())) + sheet.name.toLatin1());
        globalsSize += 4 + 6 + int(names.last().size());
    }
    QByteArray stream = bof(version, 5) + globals;
    QByteArray bodies;
    for (int i = 0; i < sheets.size(); ++i) {
        const quint32 offset = quint32(globalsSize + bodies.size());
        stream += record(0x0085, le32(offset) + QByteArray(1, 0) + QByteArray(1, char(sheets[i].kind)) + names[i]);
        bodies += bof(version, sheets[i].kind == 2 ? 0x20 : 0x10) + sheets[i].records + eof();
    }
    return stream + eof() + bodies;
}

constexpr int kSector = 512;
constexpr quint32 kFree = 0xFFFFFFFF, kEnd = 0xFFFFFFFE, kFatSector = 0xFFFFFFFD;

// A compound file (version 3, 512-byte sectors) holding one stream in its root storage: in the mini
// stream when it is shorter than 4,096 bytes, else in regular sectors. Sector 0 holds the
// allocation table, sector 1 the directory, sector 2 the mini allocation table; the stream's
// sectors (or the mini stream's) follow in order from sector 3. A test damages a chain at a known
// place: the allocation table slot of sector n lies at byte 512 + 4n, the directory at byte 1024.
inline QByteArray compoundFile(const QString &streamName, const QByteArray &stream)
{
    const bool mini = stream.size() < 4096;
    QByteArray data = stream;
    if (mini)
        data.append(QByteArray((64 - data.size() % 64) % 64, 0));
    data.append(QByteArray((kSector - data.size() % kSector) % kSector, 0));
    const int dataSectors = int(data.size() / kSector);
    Q_ASSERT(3 + dataSectors <= kSector / 4);  // one allocation table sector is enough

    QByteArray fat = le32(kFatSector) + le32(kEnd) + le32(kEnd);
    for (int i = 0; i < dataSectors; ++i)
        fat += le32(i + 1 < dataSectors ? quint32(4 + i) : kEnd);
    fat.append(QByteArray(kSector - fat.size(), '\xFF'));

    QByteArray miniFat;
    const int miniSectors = mini ? int((stream.size() + 63) / 64) : 0;
    for (int i = 0; i < miniSectors; ++i)
        miniFat += le32(i + 1 < miniSectors ? quint32(i + 1) : kEnd);
    miniFat.append(QByteArray(kSector - miniFat.size(), '\xFF'));

    auto entry = [](const QString &name, int type, quint32 child, quint32 start, quint32 size) {
        QByteArray bytes = utf16(name);
        bytes.append(QByteArray(64 - bytes.size(), 0));
        bytes += le16(int(name.size() + 1) * 2) + QByteArray(1, char(type)) + QByteArray(1, 1);
        bytes += le32(kFree) + le32(kFree) + le32(child) + QByteArray(16 + 4 + 16, 0);
        return bytes + le32(start) + le32(size) + le32(0);
    };
    QByteArray directory = entry(QStringLiteral("Root Entry"), 5, 1, mini ? 3 : kEnd, mini ? quint32(data.size()) : 0)
                           + entry(streamName, 2, kFree, mini ? 0 : 3, quint32(stream.size()));
    directory.append(QByteArray(kSector - directory.size(), 0));

    QByteArray header("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8);
    header += QByteArray(16, 0) + le16(0x3E) + le16(3) + le16(0xFFFE) + le16(9) + le16(6) + QByteArray(6, 0);
    header += le32(0) + le32(1) + le32(1) + le32(0) + le32(4096);  // directory sectors, FAT sectors, directory, -, cutoff
    header += le32(mini ? 2 : kEnd) + le32(mini ? 1 : 0) + le32(kEnd) + le32(0);  // mini FAT, DIFAT
    header += le32(0);
    header.append(QByteArray(kSector - header.size(), '\xFF'));
    return header + fat + directory + miniFat + data;
}

} // namespace xls
