#include "core/interchange/ExportSink.h"
#include "core/interchange/WorkbookCell.h"
#include "core/interchange/WorkbookExport.h"

#include <QHash>
#include <QTemporaryFile>
#include <QtEndian>
#include <cstring>

// An Excel 97-2003 workbook: one BIFF8 "Workbook" stream (workbook globals, then one sheet) in a
// compound file. Texts go to the shared string table, which the globals carry before the sheet:
// the sheet is therefore written to a temporary file first, collecting the strings, and copied
// behind the globals once they are known. The compound file (version 3, 512-byte sectors) has
// the stream right behind its header sector; its allocation table and directory follow it, and the header is
// rewritten at the end once their places are known.

namespace WorkbookExport {

namespace {

constexpr qint64 MaxRows = 65536;
constexpr int MaxColumns = 256;
constexpr int SectorSize = 512;
constexpr int MiniStreamCutoff = 4096;
constexpr quint32 DifatSector = 0xFFFFFFFC;
constexpr int SlotsPerSector = SectorSize / 4;
constexpr quint32 EndOfChain = 0xFFFFFFFE;
constexpr quint32 FatSector = 0xFFFFFFFD;
constexpr quint32 FreeSector = 0xFFFFFFFF;
constexpr quint32 NoStream = 0xFFFFFFFF;
constexpr int HeaderFatSlots = 109;

// Cell formats after the 15 style formats and the default cell format 15.
constexpr quint16 XfDate = 16, XfDateTime = 17, XfTime = 18;
constexpr quint16 FormatDate = 164, FormatDateTime = 165, FormatTime = 166;

void put16(std::string &out, quint16 v)
{
    char b[2];
    qToLittleEndian(v, b);
    out.append(b, 2);
}

void put32(std::string &out, quint32 v)
{
    char b[4];
    qToLittleEndian(v, b);
    out.append(b, 4);
}

void putDouble(std::string &out, double v)
{
    quint64 bits;
    std::memcpy(&bits, &v, sizeof bits);
    char b[8];
    qToLittleEndian(bits, b);
    out.append(b, 8);
}

void record(std::string &out, quint16 type, const std::string &body)
{
    put16(out, type);
    put16(out, quint16(body.size()));
    out.append(body);
}

// Characters always stored as UTF-16, after a length of 8 or 16 bits and a flags byte of 1.
void putUnicode(std::string &out, const QString &text, bool shortLength)
{
    if (shortLength)
        out.push_back(char(text.size()));
    else
        put16(out, quint16(text.size()));
    out.push_back('\x01');
    for (QChar ch : text)
        put16(out, ch.unicode());
}

std::string bof(quint16 kind)
{
    std::string body;
    put16(body, 0x0600);  // BIFF8
    put16(body, kind);
    put16(body, 0x0DBB);  // build
    put16(body, 0x07CC);  // year
    put32(body, 0);
    put32(body, 0x00000006);
    return body;
}

std::string font()
{
    std::string body;
    put16(body, 200);     // height in twips
    put16(body, 0);       // attributes
    put16(body, 0x7FFF);  // colour: automatic
    put16(body, 400);     // weight
    put16(body, 0);       // escapement
    body.push_back(0);    // underline
    body.push_back(0);    // family
    body.push_back(0);    // character set
    body.push_back(0);
    putUnicode(body, QStringLiteral("Arial"), true);
    return body;
}

std::string xf(quint16 format, bool style)
{
    std::string body;
    put16(body, 0);                          // font
    put16(body, format);
    put16(body, style ? 0xFFF5 : 0x0001);    // locked; style formats have no parent
    body.push_back(0x20);                    // alignment: bottom
    body.push_back(0);
    body.push_back(0);
    body.push_back(char(style ? 0 : 0xF8));  // attributes set by this format
    put32(body, 0);
    put32(body, 0);
    put16(body, 0x20C0);                     // automatic pattern colours
    return body;
}

constexpr size_t MaxRecordBody = 8224;

// The shared string table: each distinct text once; cells refer to it by index.
class SharedStrings
{
public:
    quint32 add(const QString &text)
    {
        ++m_total;
        const auto found = m_index.constFind(text);
        if (found != m_index.constEnd())
            return *found;
        const auto index = quint32(m_strings.size());
        m_index.insert(text, index);
        m_strings.push_back(text);
        return index;
    }

    // SST and its CONTINUE records. A text split between two records goes on in the next one
    // after a fresh flags byte; a text's length and flags are never split.
    std::string records() const
    {
        std::string out, body;
        bool first = true;
        auto flush = [&] {
            record(out, first ? 0x00FC : 0x003C, body);
            body.clear();
            first = false;
        };
        put32(body, m_total);
        put32(body, quint32(m_strings.size()));
        for (const QString &text : m_strings) {
            if (body.size() + 3 + (text.isEmpty() ? 0 : 2) > MaxRecordBody)
                flush();
            put16(body, quint16(text.size()));
            body.push_back('\x01');
            for (qsizetype i = 0; i < text.size();) {
                size_t room = (MaxRecordBody - body.size()) / 2;
                if (room == 0) {
                    flush();
                    body.push_back('\x01');
                    room = (MaxRecordBody - 1) / 2;
                }
                const qsizetype n = std::min<qsizetype>(qsizetype(room), text.size() - i);
                for (qsizetype k = 0; k < n; ++k)
                    put16(body, text[i + k].unicode());
                i += n;
            }
        }
        flush();
        return out;
    }

private:
    QHash<QString, quint32> m_index;
    std::vector<QString> m_strings;
    quint32 m_total = 0;
};

// The workbook globals: everything before the sheet, whose stream offset it names.
std::string globals(quint32 sheetOffset, const std::string &sharedStrings)
{
    std::string out;
    record(out, 0x0809, bof(0x0005));
    std::string codepage;
    put16(codepage, 1200);  // UTF-16
    record(out, 0x0042, codepage);
    std::string window;
    for (quint16 v : {0, 0, 0x4000, 0x2000, 0x0038, 0, 0, 1, 0x0258})
        put16(window, v);
    record(out, 0x003D, window);
    for (int i = 0; i < 4; ++i)
        record(out, 0x0031, font());
    const std::pair<quint16, const char *> formats[] = {
        {FormatDate, "yyyy-mm-dd"}, {FormatDateTime, "yyyy-mm-dd hh:mm:ss"}, {FormatTime, "hh:mm:ss"}};
    for (auto [index, text] : formats) {
        std::string body;
        put16(body, index);
        putUnicode(body, QString::fromLatin1(text), false);
        record(out, 0x041E, body);
    }
    for (int i = 0; i < 15; ++i)
        record(out, 0x00E0, xf(0, true));
    for (quint16 format : {quint16(0), FormatDate, FormatDateTime, FormatTime})
        record(out, 0x00E0, xf(format, false));
    std::string style;
    put16(style, 0x8000);  // built-in style of format 0: "Normal"
    style.push_back(0);
    style.push_back(char(0xFF));
    record(out, 0x0293, style);
    std::string sheet;
    put32(sheet, sheetOffset);
    sheet.push_back(0);  // visible
    sheet.push_back(0);  // worksheet
    putUnicode(sheet, QStringLiteral("Sheet1"), true);
    record(out, 0x0085, sheet);
    out += sharedStrings;
    record(out, 0x000A, {});
    return out;
}

void cellHead(std::string &body, quint16 row, quint16 col, quint16 format)
{
    put16(body, row);
    put16(body, col);
    put16(body, format);
}

void label(std::string &out, quint16 row, quint16 col, const QString &text, SharedStrings &strings)
{
    std::string body;
    cellHead(body, row, col, 15);
    put32(body, strings.add(text.size() > MaxXlsText ? text.left(MaxXlsText) : text));
    record(out, 0x00FD, body);
}

void writeCell(std::string &out, quint16 row, quint16 col, const WorkbookCell &cell, SharedStrings &strings)
{
    std::string body;
    switch (cell.kind) {
    case WorkbookCell::Empty:
        return;
    case WorkbookCell::Number:
    case WorkbookCell::Date:
    case WorkbookCell::DateTime:
    case WorkbookCell::Time: {
        const quint16 format = cell.kind == WorkbookCell::Number ? 15
                               : cell.kind == WorkbookCell::Date ? XfDate
                               : cell.kind == WorkbookCell::DateTime ? XfDateTime
                                                                     : XfTime;
        cellHead(body, row, col, format);
        putDouble(body, cell.number);
        record(out, 0x0203, body);
        return;
    }
    case WorkbookCell::Bool:
        cellHead(body, row, col, 15);
        body.push_back(char(cell.flag ? 1 : 0));
        body.push_back(0);  // a boolean, not an error code
        record(out, 0x0205, body);
        return;
    case WorkbookCell::Text:
        label(out, row, col, cell.text, strings);
        return;
    }
}

void writeAll(QIODevice &out, const std::string &bytes)
{
    if (out.write(bytes.data(), qint64(bytes.size())) != qint64(bytes.size()))
        throw VantryError(QStringLiteral("Cannot write the export file: %1").arg(out.errorString()));
}

std::string directoryEntry(const QString &name, quint8 type, quint32 child, quint32 start, quint64 size)
{
    std::string entry;
    for (QChar ch : name)
        put16(entry, ch.unicode());
    entry.resize(64, '\0');
    put16(entry, name.isEmpty() ? 0 : quint16((name.size() + 1) * 2));
    entry.push_back(char(type));
    entry.push_back(1);  // black
    put32(entry, NoStream);
    put32(entry, NoStream);
    put32(entry, child);
    entry.append(16 + 4 + 8 + 8, '\0');  // class id, state, times
    put32(entry, start);
    put32(entry, quint32(size));
    put32(entry, quint32(size >> 32));
    return entry;
}

} // namespace

void writeXls(const ExportSource &source, QIODevice &out, ExportProgress *progress)
{
    const qint64 rows = source.rowCount();
    const int cols = source.columnCount();
    if (rows + 1 > MaxRows)
        throw VantryError(QStringLiteral("The result has %1 rows; an .xls sheet holds at most %2 with the title row. "
                                         "Choose .xlsx for larger results.").arg(rows).arg(MaxRows - 1));
    if (cols > MaxColumns)
        throw VantryError(QStringLiteral("The result has %1 columns; an .xls sheet holds at most %2.").arg(cols).arg(MaxColumns));

    // The sheet, into a temporary file while the shared strings are collected.
    QTemporaryFile sheetFile;
    if (!sheetFile.open())
        throw VantryError(QStringLiteral("Cannot create a temporary file: %1").arg(sheetFile.errorString()));
    SharedStrings strings;
    {
        ExportSink sink(sheetFile, progress);
        std::string &buf = sink.buffer();
        record(buf, 0x0809, bof(0x0010));
        std::string dims;
        put32(dims, 0);
        put32(dims, quint32(rows + 1));
        put16(dims, 0);
        put16(dims, quint16(cols));
        put16(dims, 0);
        record(buf, 0x0200, dims);
        std::string window;
        for (quint16 v : {0x06B6, 0, 0, 64, 0, 0, 0, 0, 0})
            put16(window, v);
        record(buf, 0x023E, window);
        for (int col = 0; col < cols; ++col)
            label(buf, 0, quint16(col), source.columnName(col), strings);
        for (qint64 row = 0; row < rows; ++row) {
            for (int col = 0; col < cols; ++col)
                writeCell(buf, quint16(row + 1), quint16(col), WorkbookCell::from(source.value(row, col)), strings);
            sink.rowDone(row + 1);
        }
        record(buf, 0x000A, {});
        sink.finish(rows);
    }

    // The header sector is written last; the stream starts at sector 0, right after it.
    writeAll(out, std::string(SectorSize, '\0'));
    const std::string sharedStrings = strings.records();
    // The globals' size does not depend on the offset they name, so one trial run gives it.
    const std::string global = globals(quint32(globals(0, sharedStrings).size()), sharedStrings);
    writeAll(out, global);
    if (!sheetFile.seek(0))
        throw VantryError(QStringLiteral("Cannot read the temporary file: %1").arg(sheetFile.errorString()));
    for (QByteArray chunk = sheetFile.read(1 << 20); !chunk.isEmpty(); chunk = sheetFile.read(1 << 20))
        writeAll(out, chunk.toStdString());
    const qint64 streamSize = qint64(global.size()) + sheetFile.size();

    // A stream under 4096 bytes would belong in the mini stream; padding keeps it in sectors.
    const qint64 paddedSize = std::max<qint64>(streamSize, MiniStreamCutoff);
    const qint64 streamSectors = (paddedSize + SectorSize - 1) / SectorSize;
    writeAll(out, std::string(size_t(streamSectors * SectorSize - streamSize), '\0'));

    // The allocation table covers the stream, itself, the sectors that list it beyond the
    // header's 109 slots, and the directory sector.
    qint64 fatSectors = 1, difatSectors = 0;
    for (;;) {
        const qint64 total = streamSectors + fatSectors + difatSectors + 1;
        const qint64 needFat = (total + SlotsPerSector - 1) / SlotsPerSector;
        const qint64 needDifat = needFat > HeaderFatSlots
                                     ? (needFat - HeaderFatSlots + SlotsPerSector - 2) / (SlotsPerSector - 1) : 0;
        if (needFat == fatSectors && needDifat == difatSectors)
            break;
        fatSectors = needFat;
        difatSectors = needDifat;
    }
    const quint32 firstFat = quint32(streamSectors);
    const quint32 firstDifat = quint32(streamSectors + fatSectors);
    const quint32 directorySector = quint32(streamSectors + fatSectors + difatSectors);
    std::string fat;
    for (qint64 s = 0; s < streamSectors; ++s)
        put32(fat, s + 1 < streamSectors ? quint32(s + 1) : EndOfChain);
    for (qint64 s = 0; s < fatSectors; ++s)
        put32(fat, FatSector);
    for (qint64 s = 0; s < difatSectors; ++s)
        put32(fat, DifatSector);
    put32(fat, EndOfChain);
    fat.resize(size_t(fatSectors * SectorSize), '\xFF');
    writeAll(out, fat);

    // Each further list sector names 127 allocation-table sectors and then the next list sector.
    std::string difat;
    for (qint64 d = 0; d < difatSectors; ++d) {
        for (qint64 i = 0; i < SlotsPerSector - 1; ++i) {
            const qint64 index = HeaderFatSlots + d * (SlotsPerSector - 1) + i;
            put32(difat, index < fatSectors ? firstFat + quint32(index) : FreeSector);
        }
        put32(difat, d + 1 < difatSectors ? firstDifat + quint32(d + 1) : EndOfChain);
    }
    writeAll(out, difat);

    std::string directory = directoryEntry(QStringLiteral("Root Entry"), 5, 1, EndOfChain, 0);
    directory += directoryEntry(QStringLiteral("Workbook"), 2, NoStream, 0, quint64(paddedSize));
    while (directory.size() < size_t(SectorSize))
        directory += directoryEntry(QString(), 0, NoStream, 0, 0);
    writeAll(out, directory);

    std::string header("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8);
    header.append(16, '\0');
    for (quint16 v : {0x003E, 0x0003, 0xFFFE, 9, 6, 0, 0, 0})
        put16(header, v);
    put32(header, 0);                 // directory sectors: not counted in version 3
    put32(header, quint32(fatSectors));
    put32(header, directorySector);
    put32(header, 0);                 // transaction signature
    put32(header, MiniStreamCutoff);
    put32(header, EndOfChain);        // no mini allocation table
    put32(header, 0);
    put32(header, difatSectors ? firstDifat : EndOfChain);
    put32(header, quint32(difatSectors));
    for (int i = 0; i < HeaderFatSlots; ++i)
        put32(header, i < fatSectors ? firstFat + quint32(i) : FreeSector);
    if (!out.seek(0))
        throw VantryError(QStringLiteral("Cannot write the export file: %1").arg(out.errorString()));
    writeAll(out, header);
}

} // namespace WorkbookExport
