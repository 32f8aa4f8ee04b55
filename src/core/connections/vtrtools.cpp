#include "core/connections/vtrtools.h"

#include "core/base/DataFolder.h"
#include "core/base/VantryError.h"

#include <QStringList>

#include <bzlib.h>

#include <climits>
#include <cstring>

namespace {

using Rec = TReaderConnection;

// ---------------------------------------------------------------------------------------------
// Escaping

struct Escape
{
    char16_t character;
    char16_t letter;
};

// Carriage return is written "\n" and line feed "\l": deliberately reversed, must stay.
constexpr Escape kEscapes[] = {
    {13, u'n'}, {10, u'l'}, {0, u'0'},  {7, u'a'},    {8, u'b'},   {27, u'e'},
    {9, u't'},  {12, u'f'}, {11, u'v'}, {u'\\', u'\\'}, {u',', u'c'},
};

// ---------------------------------------------------------------------------------------------
// Reading items

[[noreturn]] void throwItemError(int position, const char *field, const QString &item,
                                 const QString &expected)
{
    // Shown to the user: keep a runaway item short.
    QString shown = item.left(60);
    if (shown.size() < item.size())
        shown += QStringLiteral("...");
    throw VantryError(QStringLiteral("The connection parameters can't be read: item %1 (%2) is "
                                     "\"%3\", expected %4.")
                          .arg(position)
                          .arg(QLatin1String(field), shown, expected));
}

// Decimal digits with an optional sign, nothing else (no blanks, no hexadecimal).
bool parseWholeNumber(const QString &item, qint64 &value)
{
    if (item.isEmpty())
        return false;
    int start = (item.at(0) == QLatin1Char('-') || item.at(0) == QLatin1Char('+')) ? 1 : 0;
    if (start == item.size())
        return false;
    for (int i = start; i < item.size(); ++i) {
        if (item.at(i) < QLatin1Char('0') || item.at(i) > QLatin1Char('9'))
            return false;
    }
    bool ok = false;
    value = item.toLongLong(&ok, 10);
    return ok;
}

qint64 readNumber(const QString &item, int position, const char *field, qint64 min, qint64 max,
                  const QString &expected)
{
    qint64 value = 0;
    if (!parseWholeNumber(item, value) || value < min || value > max)
        throwItemError(position, field, item, expected);
    return value;
}

// The usual boolean rule: "-1"/"0", "True"/"False" in any case, any other whole number is true
// unless it is zero. Other words are not booleans.
bool readBoolean(const QString &item, int position, const char *field)
{
    if (item.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0)
        return true;
    if (item.compare(QLatin1String("false"), Qt::CaseInsensitive) == 0)
        return false;
    qint64 value = 0;
    if (!parseWholeNumber(item, value))
        throwItemError(position, field, item,
                       QStringLiteral("a boolean (\"-1\", \"0\", \"True\" or \"False\")"));
    return value != 0;
}

// ---------------------------------------------------------------------------------------------
// The item table: one entry per position 0..60, each knowing how to write and read its field.

struct ItemDef
{
    const char *field;
    QString (*write)(const Rec &);
    void (*read)(Rec &, const QString &item, int position, const char *field);
};

template <auto M>
QString writeString(const Rec &r) { return EscapeParamValue(r.*M); }
template <auto M>
void readString(Rec &r, const QString &item, int, const char *) { r.*M = UnescapeParamValue(item); }

template <auto M>
QString writeBool(const Rec &r) { return r.*M ? QStringLiteral("-1") : QStringLiteral("0"); }
template <auto M>
void readBool(Rec &r, const QString &item, int position, const char *field)
{
    r.*M = readBoolean(item, position, field);
}
// UseUnicode and Compress are true only when written exactly "-1"; "True" reads as false.
// Older texts depend on this; it must stay.
template <auto M>
void readStrictBool(Rec &r, const QString &item, int, const char *) { r.*M = item == QLatin1String("-1"); }

template <auto M>
QString writeNumber(const Rec &r) { return QString::number(qint64(r.*M)); }
template <auto M>
void readInt32(Rec &r, const QString &item, int position, const char *field)
{
    r.*M = qint32(readNumber(item, position, field, INT_MIN, INT_MAX,
                             QStringLiteral("a whole number from %1 to %2").arg(INT_MIN).arg(INT_MAX)));
}
template <auto M>
void readUInt32(Rec &r, const QString &item, int position, const char *field)
{
    r.*M = quint32(readNumber(item, position, field, 0, UINT_MAX,
                              QStringLiteral("a whole number from 0 to %1").arg(UINT_MAX)));
}
template <auto M, typename E, int Count>
void readEnum(Rec &r, const QString &item, int position, const char *field)
{
    r.*M = E(readNumber(item, position, field, 0, Count - 1,
                        QStringLiteral("a whole number from 0 to %1").arg(Count - 1)));
}

#define VTR_STRING(f) {#f, &writeString<&Rec::f>, &readString<&Rec::f>}
#define VTR_BOOL(f) {#f, &writeBool<&Rec::f>, &readBool<&Rec::f>}
#define VTR_STRICT_BOOL(f) {#f, &writeBool<&Rec::f>, &readStrictBool<&Rec::f>}
#define VTR_INT32(f) {#f, &writeNumber<&Rec::f>, &readInt32<&Rec::f>}
#define VTR_UINT32(f) {#f, &writeNumber<&Rec::f>, &readUInt32<&Rec::f>}
#define VTR_ENUM(f, E, n) {#f, &writeNumber<&Rec::f>, &readEnum<&Rec::f, E, n>}

// The order of this table is the stored format.
const ItemDef kItems[kParameterItemCount] = {
    VTR_ENUM(ConnectionType, TDataSourceType, kDataSourceTypeCount), // 0
    VTR_BOOL(UseTablesMask),                                           // 1
    VTR_STRING(TablesMask),                                            // 2
    VTR_STRING(SourceFile),                                            // 3
    VTR_STRING(Directory),                                             // 4
    VTR_BOOL(Delimited),                                               // 5
    VTR_STRING(Delimiter),                                             // 6
    VTR_STRING(Quote),                                                 // 7
    VTR_UINT32(HeaderLines),                                           // 8
    VTR_UINT32(FooterLines),                                           // 9
    VTR_STRING(OdbcDsnName),                                           // 10
    VTR_STRING(Server),                                                // 11
    VTR_STRING(DataBase),                                              // 12
    VTR_STRING(UserName),                                              // 13
    VTR_STRING(Password),                                              // 14
    VTR_BOOL(IsTable),                                                 // 15
    VTR_STRING(Table),                                                 // 16
    VTR_STRING(Tables),                                                // 17
    VTR_STRING(SelectStatement),                                       // 18
    VTR_BOOL(ShowSystemTables),                                        // 19
    VTR_STRING(Description),                                           // 20
    VTR_INT32(ConnectionID),                                           // 21
    VTR_BOOL(UseFilesMask),                                            // 22
    VTR_STRING(FilesMask),                                             // 23
    VTR_BOOL(CrossTable),                                              // 24
    VTR_UINT32(FirstField),                                            // 25
    VTR_UINT32(Blocks),                                                // 26
    VTR_UINT32(BlockLength),                                           // 27
    VTR_STRING(RDelimiter),                                            // 28
    VTR_STRING(RQuote),                                                // 29
    VTR_STRING(LineTerminator),                                        // 30
    VTR_ENUM(ExcelVersion, TExcelVersion, 2),                          // 31
    VTR_ENUM(AccessVersion, TAccessVersion, 2),                        // 32
    VTR_STRING(SQL_SEPARATOR),                                         // 33
    VTR_STRING(SqlBefore),                                             // 34
    VTR_STRING(SqlAfter),                                              // 35
    VTR_BOOL(DisableBulkFetch),                                        // 36
    VTR_ENUM(FileEncoding, TVtrFileEncoding, 7),                       // 37
    VTR_INT32(Port),                                                   // 38
    VTR_BOOL(ReadAllTables),                                           // 39
    VTR_BOOL(ReadAllData),                                             // 40
    VTR_UINT32(NoOfTablesToRead),                                      // 41
    VTR_UINT32(NoOfRecordsToRead),                                     // 42
    VTR_STRING(RejectedFile),                                          // 43
    VTR_INT32(TLS),                                                    // 44
    VTR_STRING(XMLTableTag),                                           // 45
    VTR_STRING(XMLRecordTag),                                          // 46
    VTR_BOOL(SearchInSubdirectories),                                  // 47
    VTR_ENUM(XMLTransformationType, TXMLTransformationType, 3),        // 48
    VTR_STRING(XMLTransformation),                                     // 49
    VTR_BOOL(LoginRequired),                                           // 50
    VTR_BOOL(Passive),                                                 // 51
    VTR_BOOL(UseHostCommand),                                          // 52
    VTR_BOOL(AutoLogin),                                               // 53
    VTR_STRICT_BOOL(UseUnicode),                                       // 54
    VTR_STRICT_BOOL(Compress),                                         // 55
    VTR_STRING(SSLCACert),                                             // 56
    VTR_STRING(SSLCert),                                               // 57
    VTR_STRING(SSLKey),                                                // 58
    VTR_INT32(TimeOut),                                                // 59
    VTR_ENUM(OraConnectAs, ToraConnectAs, 3),                          // 60
};

#undef VTR_STRING
#undef VTR_BOOL
#undef VTR_STRICT_BOOL
#undef VTR_INT32
#undef VTR_UINT32
#undef VTR_ENUM

const QLatin1String kPrefix("OP=");
const QLatin1String kDefaultLineTerminator("{CR}+{LF}");
const QLatin1String kPathMacro("<CommonDocumentsDir>");

// ---------------------------------------------------------------------------------------------
// bzip2

constexpr int kBlockSize100k = 5;

// Decompresses one or more concatenated bzip2 streams. False when the bytes are not a complete
// bzip2 stream or the output grows past the cap. Bytes behind a complete stream that don't start
// another one are ignored, as the bzip2 tool does.
bool bunzip(const QByteArray &in, QByteArray &out)
{
    if (quint64(in.size()) > UINT_MAX)
        return false;
    constexpr unsigned int kChunk = 64 * 1024;
    const char *next = in.constData();
    unsigned int remaining = unsigned(in.size());
    bool firstStream = true;
    out.clear();
    while (remaining > 0) {
        if (!firstStream && (remaining < 3 || std::memcmp(next, "BZh", 3) != 0))
            break;
        bz_stream stream;
        std::memset(&stream, 0, sizeof stream);
        if (BZ2_bzDecompressInit(&stream, 0, 0) != BZ_OK)
            return false;
        stream.next_in = const_cast<char *>(next);
        stream.avail_in = remaining;
        int rc = BZ_OK;
        while (rc == BZ_OK) {
            const qsizetype used = out.size();
            if (used >= kMaxUnpackedParameterBytes) {
                rc = BZ_MEM_ERROR;
                break;
            }
            out.resize(used + kChunk);
            stream.next_out = out.data() + used;
            stream.avail_out = kChunk;
            rc = BZ2_bzDecompress(&stream);
            out.resize(used + (kChunk - stream.avail_out));
            // All input consumed, room left for output, and still no end: the stream is cut short.
            if (rc == BZ_OK && stream.avail_in == 0 && stream.avail_out > 0)
                rc = BZ_UNEXPECTED_EOF;
        }
        BZ2_bzDecompressEnd(&stream);
        if (rc != BZ_STREAM_END || out.size() > kMaxUnpackedParameterBytes)
            return false;
        next += remaining - stream.avail_in;
        remaining = stream.avail_in;
        firstStream = false;
    }
    return true;
}

} // namespace

QString EscapeParamValue(const QString &value)
{
    QString result;
    result.reserve(value.size());
    for (const QChar c : value) {
        bool escaped = false;
        for (const Escape &e : kEscapes) {
            if (c.unicode() == e.character) {
                result += QLatin1Char('\\');
                result += QChar(e.letter);
                escaped = true;
                break;
            }
        }
        if (!escaped)
            result += c;
    }
    return result;
}

QString UnescapeParamValue(const QString &value)
{
    QString result;
    result.reserve(value.size());
    for (int i = 0; i < value.size(); ++i) {
        const QChar c = value.at(i);
        if (c != QLatin1Char('\\') || i + 1 == value.size()) {
            result += c;
            continue;
        }
        const QChar letter = value.at(i + 1);
        bool known = false;
        for (const Escape &e : kEscapes) {
            if (letter.unicode() == e.letter) {
                result += QChar(e.character);
                known = true;
                break;
            }
        }
        if (!known) {
            result += c;
            result += letter;
        }
        ++i;
    }
    return result;
}

QString ReaderConnectionToStr(const TReaderConnection &rc)
{
    QString text = kPrefix;
    for (int i = 0; i < kParameterItemCount; ++i) {
        text += kItems[i].write(rc);
        if (i + 1 < kParameterItemCount)
            text += QLatin1Char(',');
    }
    return text;
}

QString DefaultRejectedFile()
{
    return QLatin1Char('"') + DataFolder::path() + QStringLiteral("/Rejected Records File.tab")
           + QLatin1Char('"');
}

void StrToReaderConnection(const QString &text, TReaderConnection &rc)
{
    const QString rest = text.startsWith(kPrefix) ? text.mid(kPrefix.size()) : text;
    // Values never hold a comma (it is escaped), so a plain split recovers them.
    // An empty text is no items at all, not one empty item.
    const QStringList items = rest.isEmpty() ? QStringList() : rest.split(QLatin1Char(','));

    rc.ReadAllTables = true;
    rc.ReadAllData = true;
    rc.RejectedFile = DefaultRejectedFile();

    const int count = qMin(int(items.size()), kParameterItemCount);
    for (int i = 0; i < count; ++i)
        kItems[i].read(rc, items.at(i), i, kItems[i].field);

    if (rc.LineTerminator.isEmpty())
        rc.LineTerminator = kDefaultLineTerminator;
}

TReaderConnection ReaderConnectionFromStr(const QString &text)
{
    TReaderConnection rc;
    StrToReaderConnection(text, rc);
    return rc;
}

QByteArray PackParameters(const QString &text)
{
    if (text.isEmpty())
        return {};
    QByteArray source = text.toUtf8();
    if (quint64(source.size()) > UINT_MAX / 2)
        throw VantryError(QStringLiteral("The connection parameters are too long to store (%1 bytes).")
                              .arg(source.size()));
    // bzip2's documented worst case: 1% larger plus 600 bytes.
    unsigned int destLength = unsigned(source.size() + source.size() / 100 + 600);
    QByteArray packed(qsizetype(destLength), Qt::Uninitialized);
    const int rc = BZ2_bzBuffToBuffCompress(packed.data(), &destLength, source.data(),
                                            unsigned(source.size()), kBlockSize100k, 0, 0);
    if (rc != BZ_OK)
        throw VantryError(QStringLiteral("The connection parameters could not be compressed "
                                         "(bzip2 error %1).").arg(rc));
    packed.resize(qsizetype(destLength));
    return packed;
}

QString UnpackParameters(const QByteArray &column)
{
    if (column.isEmpty())
        return {};
    QByteArray unpacked;
    if (bunzip(column, unpacked) && !unpacked.isEmpty())
        return QString::fromUtf8(unpacked);
    return QString::fromUtf8(column);
}

QString ExpandPathMacros(const QString &text)
{
    if (!text.contains(kPathMacro))
        return text;
    QString result = text;
    return result.replace(kPathMacro, DataFolder::commonDocumentsDir());
}

void ExpandConnectionPathMacros(TReaderConnection &rc)
{
    for (QString *field : {&rc.SourceFile, &rc.Directory, &rc.Server, &rc.DataBase, &rc.UserName,
                           &rc.Password, &rc.SelectStatement})
        *field = ExpandPathMacros(*field);
}
