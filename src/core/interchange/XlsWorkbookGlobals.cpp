#include "core/interchange/XlsWorkbookGlobals.h"

#include "core/interchange/BiffRecords.h"
#include "core/interchange/WorkbookSheetBuilder.h"

#include <QHash>
#include <QtEndian>

namespace {

constexpr quint16 kBiff5 = 0x0500;
constexpr quint16 kBiff8 = 0x0600;
constexpr quint16 kGlobalsSubstream = 0x0005;
constexpr quint8 kWorksheet = 0;
constexpr int kDefaultCodePage = 1252;

QStringDecoder codePageDecoder(int codePage)
{
    switch (codePage) {
    case 367: return QStringDecoder("US-ASCII");
    case 1200: return QStringDecoder(QStringConverter::Utf16LE);
    case 10000:
    case 32768: return QStringDecoder("macintosh");
    case 32769: return QStringDecoder("cp1252");
    case 65001: return QStringDecoder(QStringConverter::Utf8);
    default: return QStringDecoder(QByteArray("cp" + QByteArray::number(codePage)).constData());
    }
}

void readSharedStrings(BiffRecordStream &records, QStringList &strings, const QString &file)
{
    BiffFields fields(records);
    fields.skip(4);  // the count of cells that use the table
    const quint32 count = fields.u32();
    // The count comes from the file: what is reserved is bounded by the bytes that follow, at
    // least three a string.
    strings.reserve(qsizetype(qMin<quint32>(count, quint32(records.size()) / 3 + 1)));
    while (quint32(strings.size()) < count && !fields.atEnd()) {
        QString text = fields.unicodeString(2);
        if (!fields.ok())
            throwWorkbookError(file, QStringLiteral("it is damaged: its shared string %1 is cut short").arg(strings.size() + 1));
        strings.append(std::move(text));
    }
}

} // namespace

void readXlsWorkbookGlobals(const QByteArray &stream, const QString &file, XlsWorkbookGlobals &globals)
{
    BiffRecordStream records(stream, 0);
    if (!records.next() || records.type() != BiffRecord::Bof || records.size() < 4
        || qFromLittleEndian<quint16>(records.data() + 2) != kGlobalsSubstream)
        throwWorkbookError(file, QStringLiteral("it is damaged: its workbook stream does not begin with the workbook's globals"));
    const quint16 version = qFromLittleEndian<quint16>(records.data());
    if (version != kBiff8 && version != kBiff5)
        throwWorkbookError(file, QStringLiteral("it is an Excel workbook of version %1, which is not supported").arg(version, 4, 16, QLatin1Char('0')));
    globals.biff8 = version == kBiff8;
    globals.decoder = codePageDecoder(kDefaultCodePage);

    QHash<int, SerialKind> customFormats;
    QVector<quint16> xfFormats;
    while (records.next() && records.type() != BiffRecord::Eof) {
        BiffFields fields(records.data(), records.size());
        switch (records.type()) {
        case BiffRecord::FilePass:
            throwWorkbookError(file, QStringLiteral("it is protected by a password"));
        case BiffRecord::CodePage: {
            const int codePage = fields.u16();
            globals.decoder = codePageDecoder(codePage);
            if (!globals.decoder.isValid() && !globals.biff8)
                throwWorkbookError(file, QStringLiteral("its text is in a character set that cannot be read (code page %1)").arg(codePage));
            break;
        }
        case BiffRecord::DateMode:
            globals.date1904 = fields.u16() == 1;
            break;
        case BiffRecord::Format: {
            const quint16 index = fields.u16();
            const QString code = globals.biff8 ? fields.unicodeString(2) : fields.byteString(1, globals.decoder);
            if (fields.ok())
                customFormats.insert(index, formatCodeKind(code));
            break;
        }
        case BiffRecord::Xf:
            fields.skip(2);  // the font
            xfFormats.append(fields.u16());
            break;
        case BiffRecord::BoundSheet: {
            XlsSheetEntry sheet;
            sheet.offset = fields.u32();
            fields.skip(1);  // visible, hidden or very hidden: every worksheet is listed
            const quint8 kind = fields.u8();
            sheet.name = globals.biff8 ? fields.unicodeString(1) : fields.byteString(1, globals.decoder);
            if (!fields.ok())
                throwWorkbookError(file, QStringLiteral("it is damaged: the entry of its sheet %1 is cut short").arg(globals.sheets.size() + 1));
            if (kind == kWorksheet)
                globals.sheets.append(sheet);
            break;
        }
        case BiffRecord::SharedStrings:
            readSharedStrings(records, globals.sharedStrings, file);
            break;
        default:
            break;
        }
    }
    if (records.cutShort())
        throwWorkbookError(file, QStringLiteral("it is damaged: a record of its globals is cut short"));

    globals.xfKinds.reserve(xfFormats.size());
    for (const quint16 format : xfFormats)
        globals.xfKinds.append(customFormats.value(format, builtInFormatKind(format)));
}
