#include "core/interchange/QvxField.h"

#include "core/interchange/QvxConvert.h"
#include "core/interchange/VtrFileReader.h"
#include "core/base/VantryError.h"

#include <QIODevice>
#include <QtEndian>

#include <array>
#include <cstring>

namespace {

// Dual markers: a number followed by its text, the text alone, and the text's terminator.
constexpr char DualNumberAndText = 6;
constexpr char DualTextOnly = 4;
constexpr char TextTerminator = 0;
// The marker a reader takes for a number without text.
constexpr quint8 DualNumberOnly = 2;
constexpr qint64 PackedRecordSize = 34;
// Where the 1-byte length slot sits in the slot layout, just after the 8-byte value reference.
constexpr int LengthSlotOffset = 8;

const std::array<const char *, 7> TypeTexts = {
    "QVX_SIGNED_INTEGER", "QVX_UNSIGNED_INTEGER", "QVX_IEEE_REAL", "QVX_PACKED_BCD",
    "QVX_BLOB",           "QVX_TEXT",             "QVX_QV_DUAL"};
const std::array<const char *, 4> ExtentTexts = {"QVX_FIX", "QVX_COUNTED", "QVX_ZERO_TERMINATED",
                                                 "QVX_QV_SPECIAL"};
const std::array<const char *, 4> NullTexts = {
    "QVX_NULL_NEVER", "QVX_NULL_ZERO_LENGTH", "QVX_NULL_FLAG_WITH_UNDEFINED_DATA",
    "QVX_NULL_FLAG_SUPPRESS_DATA"};
const std::array<const char *, 10> FormatTexts = {"UNKNOWN", "ASCII", "INTEGER",   "REAL",
                                                  "FIX",     "MONEY", "DATE",      "TIME",
                                                  "TIMESTAMP", "INTERVAL"};

template <size_t N>
QString TableText(const std::array<const char *, N> &table, quint8 code)
{
    return code < N ? QString::fromLatin1(table[code]) : QString();
}

// The code whose text is exactly text; the current value when none is.
template <typename E, size_t N>
E TableCode(const std::array<const char *, N> &table, const QString &text, E current)
{
    for (size_t i = 0; i < N; ++i)
        if (text == QLatin1String(table[i]))
            return E(i);
    return current;
}

template <typename T>
T ReadLittleEndian(TvtrFileReader &reader)
{
    uchar bytes[sizeof(T)];
    reader.ReadBuffer(bytes, sizeof(T));
    return qFromLittleEndian<T>(bytes);
}

template <typename T>
void WriteLittleEndian(QIODevice &stream, T value)
{
    uchar bytes[sizeof(T)];
    qToLittleEndian<T>(value, bytes);
    stream.write(reinterpret_cast<const char *>(bytes), sizeof(T));
}

void WriteDouble(QIODevice &stream, double value)
{
    quint64 bits;
    std::memcpy(&bits, &value, sizeof bits);
    WriteLittleEndian(stream, bits);
}

double ReadDouble(TvtrFileReader &reader)
{
    const quint64 bits = ReadLittleEndian<quint64>(reader);
    double value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

[[noreturn]] void ConversionError(const QVariant &value, const char *target)
{
    const QString from = value.isValid() ? QString::fromLatin1(value.typeName())
                                         : QStringLiteral("Null");
    throw VantryError(QStringLiteral("Could not convert variant of type (%1) into type (%2)")
                          .arg(from, QLatin1String(target)));
}

qint32 ToInt32(const QVariant &value)
{
    bool ok = false;
    const qint32 result = value.toInt(&ok);
    if (!ok)
        ConversionError(value, "Integer");
    return result;
}

qint64 ToInt64(const QVariant &value)
{
    bool ok = false;
    const qint64 result = value.toLongLong(&ok);
    if (!ok)
        ConversionError(value, "Int64");
    return result;
}

quint64 ToUInt64(const QVariant &value)
{
    bool ok = false;
    const quint64 result = value.toULongLong(&ok);
    if (!ok)
        ConversionError(value, "UInt64");
    return result;
}

double ToDouble(const QVariant &value)
{
    bool ok = false;
    const double result = value.toDouble(&ok);
    if (!ok)
        ConversionError(value, "Double");
    return result;
}

bool IsNumeric(const QVariant &value)
{
    switch (value.typeId())
    {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::Float:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::SChar:
    case QMetaType::UChar:
        return true;
    default:
        return false;
    }
}

// A date variant as a date-time; a time alone falls on day 0 (1899-12-30).
bool AsDateTime(const QVariant &value, QDateTime &result)
{
    switch (value.typeId())
    {
    case QMetaType::QDateTime:
        result = value.toDateTime();
        return true;
    case QMetaType::QDate:
        result = QDateTime(value.toDate(), QTime(0, 0));
        return true;
    case QMetaType::QTime:
        result = QDateTime(QDate(1899, 12, 30), value.toTime());
        return true;
    default:
        return false;
    }
}

QString Element(const char *name, const QString &value)
{
    return QStringLiteral("<%1>%2</%1>\n").arg(QLatin1String(name), value);
}

} // namespace

QString TQwField::TypeText(TQvxFieldType type)
{
    return TableText(TypeTexts, quint8(type));
}

QString TQwField::ExtentText(TQvxFieldExtent extent)
{
    return TableText(ExtentTexts, quint8(extent));
}

QString TQwField::NullRepresentationText(TQvxNullRepresentation representation)
{
    return TableText(NullTexts, quint8(representation));
}

QString TQwField::FormatTypeText(TQvxFieldFormatType type)
{
    // The writer stops at TIMESTAMP: INTERVAL goes out as an empty element. Deliberate; the
    // files this writer made have always looked so.
    if (type == TQvxFieldFormatType::INTERVAL)
        return QString();
    return TableText(FormatTexts, quint8(type));
}

bool TQwField::AssignValue(const QVariant &value)
{
    m_value = value;
    const int width = ByteWidth;
    switch (Type)
    {
    case TQvxFieldType::QVX_SIGNED_INTEGER:
        if (width == 1)
            m_int8 = qint8(ToInt32(value)), m_valueRef = TSlot::Int8;
        else if (width == 2)
            m_int16 = qint16(ToInt32(value)), m_valueRef = TSlot::Int16;
        else if (width == 4)
            m_int32 = ToInt32(value), m_valueRef = TSlot::Int32;
        else if (width == 8)
            m_int64 = ToInt64(value), m_valueRef = TSlot::Int64;
        break;
    case TQvxFieldType::QVX_UNSIGNED_INTEGER:
        if (width == 1)
            m_uint8 = quint8(ToInt32(value)), m_valueRef = TSlot::UInt8;
        else if (width == 2)
            m_uint16 = quint16(ToInt32(value)), m_valueRef = TSlot::UInt16;
        else if (width == 4)
            m_uint32 = quint32(ToInt64(value)), m_valueRef = TSlot::UInt32;
        else if (width == 8)
            m_uint64 = ToUInt64(value), m_valueRef = TSlot::UInt64;
        break;
    case TQvxFieldType::QVX_IEEE_REAL:
        if (width == 4)
            m_single = float(ToDouble(value)), m_valueRef = TSlot::Single;
        else if (width == 8)
            m_double = ToDouble(value), m_valueRef = TSlot::Double;
        break;
    case TQvxFieldType::QVX_PACKED_BCD:
        // Only the reference moves; the packed-decimal slot keeps what it held.
        m_valueRef = TSlot::Bcd;
        break;
    case TQvxFieldType::QVX_BLOB:
        m_blob = ToInt32(value), m_valueRef = TSlot::Blob;
        break;
    case TQvxFieldType::QVX_TEXT:
    case TQvxFieldType::QVX_QV_DUAL:
        // A null becomes empty text.
        m_text = value.toString().toUtf8();
        break;
    }
    return true;
}

void TQwField::WriteSlotLayout(QIODevice &stream, int offset, qint64 count) const
{
    if (count <= 0)
        return;
    QByteArray layout;
    for (int i = 0; i < 8; ++i) // the value reference, little-endian
        layout.append(char(i == 0 ? quint8(m_valueRef) : 0));
    layout.append(char(m_length1));
    for (int i = 0; i < 2; ++i)
        layout.append(char(m_length2 >> (8 * i)));
    for (int i = 0; i < 4; ++i)
        layout.append(char(m_length4 >> (8 * i)));
    for (int i = 0; i < 8; ++i)
        layout.append(char(m_length8 >> (8 * i)));
    layout.append(char(m_dual));
    layout.append(DualNumberAndText).append(DualTextOnly).append(TextTerminator);

    const QByteArray part = layout.mid(offset, qsizetype(std::min<qint64>(count, layout.size())));
    stream.write(part);
    const QByteArray zeros(4096, '\0');
    for (qint64 left = count - part.size(); left > 0; left -= zeros.size())
        stream.write(zeros.constData(), std::min<qint64>(left, zeros.size()));
}

void TQwField::WriteField(QIODevice &stream)
{
    if (Type == TQvxFieldType::QVX_QV_DUAL)
    {
        WriteDual(stream);
        return;
    }
    // Length prefix of counted fields. A width of 8 stores the length in the 4-byte slot but
    // writes the 8-byte slot, which is never filled, so an 8-byte prefix carries no length.
    // Deliberate and must stay: it is what files of this writer contain.
    if (Extent == TQvxFieldExtent::QVX_COUNTED)
    {
        const qint64 length = m_text.size();
        switch (ByteWidth)
        {
        case 1:
            m_length1 = quint8(length);
            WriteLittleEndian(stream, m_length1);
            break;
        case 2:
            m_length2 = quint16(length);
            WriteLittleEndian(stream, m_length2);
            break;
        case 4:
            m_length4 = quint32(length);
            WriteLittleEndian(stream, m_length4);
            break;
        case 8:
            m_length4 = quint32(length);
            WriteLittleEndian(stream, m_length8);
            break;
        default:
            break;
        }
    }
    // The null flag is the 1-byte length slot, not a null indicator. Deliberate, as above.
    if (NullRepresentation == TQvxNullRepresentation::QVX_NULL_FLAG_WITH_UNDEFINED_DATA ||
        NullRepresentation == TQvxNullRepresentation::QVX_NULL_FLAG_SUPPRESS_DATA)
        stream.write(reinterpret_cast<const char *>(&m_length1), 1);
    // Number, packed-decimal and blob columns write the bytes of the slot layout, starting with
    // the value reference, and not the value: such columns carry no values. Deliberate and must
    // stay, so that files keep the byte layout readers of this writer's files expect.
    switch (Type)
    {
    case TQvxFieldType::QVX_SIGNED_INTEGER:
    case TQvxFieldType::QVX_UNSIGNED_INTEGER:
    case TQvxFieldType::QVX_IEEE_REAL:
        WriteSlotLayout(stream, 0, ByteWidth);
        break;
    case TQvxFieldType::QVX_PACKED_BCD:
        WriteSlotLayout(stream, 0, PackedRecordSize);
        break;
    case TQvxFieldType::QVX_BLOB:
        WriteSlotLayout(stream, 0, 4);
        break;
    case TQvxFieldType::QVX_TEXT:
        stream.write(m_text);
        break;
    case TQvxFieldType::QVX_QV_DUAL:
        break;
    }
    // The terminator is taken from the length slots onward: zero only while the field has
    // never been counted. Deliberate, as above.
    if (Extent == TQvxFieldExtent::QVX_ZERO_TERMINATED)
        WriteSlotLayout(stream, LengthSlotOffset, ByteWidth);
}

void TQwField::WriteDual(QIODevice &stream) const
{
    QDateTime date;
    if (!m_value.isValid() || m_value.isNull())
    {
        stream.putChar(DualTextOnly);
        return;
    }
    if (IsNumeric(m_value))
    {
        stream.putChar(DualNumberAndText);
        WriteDouble(stream, m_value.toDouble());
    }
    else if (AsDateTime(m_value, date))
    {
        stream.putChar(DualNumberAndText);
        WriteDouble(stream, QvxConvert::DualDateNumber(date));
    }
    else
    {
        stream.putChar(DualTextOnly);
    }
    stream.write(m_text);
    stream.putChar(TextTerminator);
}

void TQwField::ReadField(TvtrFileReader &reader)
{
    const int width = ByteWidth;
    // Numbers are read little-endian whatever LittleEndian and BigEndian say.
    switch (Type)
    {
    case TQvxFieldType::QVX_SIGNED_INTEGER:
        // 8-bit values are held as 16-bit numbers: Qt's 8-bit variant types convert to text as
        // characters, and these values must read as numbers everywhere.
        if (width == 1)
            m_value = QVariant::fromValue(qint16(qint8(reader.ReadByte())));
        else if (width == 2)
            m_value = QVariant::fromValue(ReadLittleEndian<qint16>(reader));
        else if (width == 4)
            m_value = QVariant::fromValue(ReadLittleEndian<qint32>(reader));
        else if (width == 8)
            m_value = QVariant::fromValue(ReadLittleEndian<qint64>(reader));
        break;
    case TQvxFieldType::QVX_UNSIGNED_INTEGER:
        if (width == 1)
            m_value = QVariant::fromValue(quint16(reader.ReadByte()));
        else if (width == 2)
            m_value = QVariant::fromValue(ReadLittleEndian<quint16>(reader));
        else if (width == 4)
            m_value = QVariant::fromValue(ReadLittleEndian<quint32>(reader));
        else if (width == 8)
            m_value = QVariant::fromValue(ReadLittleEndian<quint64>(reader));
        break;
    case TQvxFieldType::QVX_IEEE_REAL:
        if (width == 4)
        {
            const quint32 bits = ReadLittleEndian<quint32>(reader);
            float single;
            std::memcpy(&single, &bits, sizeof single);
            m_value = QVariant(double(single));
        }
        else if (width == 8)
        {
            m_value = QVariant(ReadDouble(reader));
        }
        break;
    case TQvxFieldType::QVX_PACKED_BCD:
        m_value = reader.ReadPacked();
        break;
    case TQvxFieldType::QVX_BLOB:
        break; // blobs are not read; the value stays as it was
    case TQvxFieldType::QVX_TEXT:
        ReadText(reader);
        break;
    case TQvxFieldType::QVX_QV_DUAL:
        ReadDual(reader);
        break;
    }
}

void TQwField::ReadText(TvtrFileReader &reader)
{
    quint64 length = 0;
    if (Extent == TQvxFieldExtent::QVX_COUNTED)
    {
        switch (ByteWidth)
        {
        case 1: length = reader.ReadByte(); break;
        case 2: length = ReadLittleEndian<quint16>(reader); break;
        case 4: length = ReadLittleEndian<quint32>(reader); break;
        case 8: length = ReadLittleEndian<quint64>(reader); break;
        default: break;
        }
    }
    bool flagRead = false;
    quint8 flag = 0;
    if (NullRepresentation == TQvxNullRepresentation::QVX_NULL_FLAG_WITH_UNDEFINED_DATA ||
        NullRepresentation == TQvxNullRepresentation::QVX_NULL_FLAG_SUPPRESS_DATA)
    {
        flag = reader.ReadByte();
        flagRead = true;
    }
    if (Extent == TQvxFieldExtent::QVX_ZERO_TERMINATED)
    {
        m_value = QString::fromUtf8(reader.ReadLn());
        return;
    }
    if ((!flagRead || flag != 1) && length != 0)
    {
        // A length beyond the file's end is the read error, found before any allocation.
        const qint64 left = reader.Size() - reader.Position();
        if (length > quint64(std::max<qint64>(0, left)))
            reader.ReadError();
        m_value = QString::fromUtf8(reader.ReadBytes(qint64(length)));
        return;
    }
    // A null reads as empty text, not as null.
    m_value = QString(QLatin1String(""));
}

void TQwField::ReadDual(TvtrFileReader &reader)
{
    const quint8 marker = reader.ReadByte();
    if (marker == 0)
    {
        m_value = QString(QLatin1String(""));
    }
    else if (marker == DualNumberOnly)
    {
        const double number = ReadDouble(reader);
        if (FormatType == TQvxFieldFormatType::DATE || FormatType == TQvxFieldFormatType::TIME ||
            FormatType == TQvxFieldFormatType::TIMESTAMP)
            m_value = QvxConvert::OleToDateTime(number);
        else
            m_value = number;
    }
    else
    {
        // Number and text: the number is skipped and the text is the value.
        if (marker == quint8(DualNumberAndText))
            reader.Skip(8);
        m_value = QString::fromUtf8(reader.ReadLn());
    }
}

QString TQwField::AsString() const
{
    QString text = QStringLiteral("<QvxFieldHeader>\n");
    text += Element("FieldName", FieldName);
    text += Element("Type", TypeText(Type));
    text += Element("Extent", ExtentText(Extent));
    text += Element("NullRepresentation", NullRepresentationText(NullRepresentation));
    text += Element("LittleEndian", QvxConvert::BoolToStr(LittleEndian));
    text += Element("CodePage", QString::number(CodePage));
    text += Element("ByteWidth", QString::number(ByteWidth));
    text += Element("FixPointDecimals", QString::number(FixPointDecimals));
    text += QStringLiteral("<FieldFormat>\n");
    text += Element("Type", FormatTypeText(FormatType));
    text += Element("nDec", QString::number(nDec));
    text += Element("UseThou", QString::number(UseThou));
    text += Element("Fmt", Fmt);
    text += Element("Dec", Dec);
    text += Element("Thou", Thou);
    text += QStringLiteral("</FieldFormat>\n");
    text += Element("BigEndian", QvxConvert::BoolToStr(BigEndian));
    text += QStringLiteral("</QvxFieldHeader>\n");
    return text;
}

void TQwField::SetAsString(const QString &text)
{
    using QvxConvert::StrToBool;
    using QvxConvert::StrToInt;
    using QvxConvert::TakeElement;

    FieldName = TakeElement(text, u"FieldName");
    // Without the format element's content, the first <Type> left is the field's own.
    const QString format = TakeElement(text, u"FieldFormat");
    QString rest = text;
    if (!format.isEmpty())
        rest.replace(format, QString(), Qt::CaseInsensitive);

    Type = TableCode(TypeTexts, TakeElement(rest, u"Type"), Type);
    Extent = TableCode(ExtentTexts, TakeElement(rest, u"Extent"), Extent);
    NullRepresentation =
        TableCode(NullTexts, TakeElement(rest, u"NullRepresentation"), NullRepresentation);
    LittleEndian = StrToBool(TakeElement(rest, u"LittleEndian"));
    CodePage = StrToInt(TakeElement(rest, u"CodePage"));
    ByteWidth = StrToInt(TakeElement(rest, u"ByteWidth"));
    FixPointDecimals = StrToInt(TakeElement(rest, u"FixPointDecimals"));
    BigEndian = StrToBool(TakeElement(rest, u"BigEndian"));

    FormatType = TableCode(FormatTexts, TakeElement(format, u"Type"), FormatType);
    nDec = StrToInt(TakeElement(format, u"nDec"));
    UseThou = StrToInt(TakeElement(format, u"UseThou"));
    Fmt = TakeElement(format, u"Fmt");
    Dec = TakeElement(format, u"Dec");
    Thou = TakeElement(format, u"Thou");
}

void TQwField::SetDualType(bool dual)
{
    m_dual = dual;
    if (!dual)
        return;
    Type = TQvxFieldType::QVX_QV_DUAL;
    Extent = TQvxFieldExtent::QVX_QV_SPECIAL;
    NullRepresentation = TQvxNullRepresentation::QVX_NULL_NEVER;
    LittleEndian = false;
    CodePage = 65001;
    ByteWidth = 0;
    FixPointDecimals = 0;
    FormatType = TQvxFieldFormatType::UNKNOWN;
    nDec = 0;
    UseThou = 0;
    Fmt.clear();
    Dec.clear();
    Thou.clear();
    BigEndian = true;
}
