#pragma once
// TQwField: one column of a QVX file. It carries the column's QvxFieldHeader values, reads one
// value of the column from a TvtrFileReader and writes one to a stream.
//
// The writer keeps value slots the way the file format's reference writer lays them out in
// memory: the integer, real, packed-decimal and blob slots, the UTF-8 text, a reference to the
// slot holding the current value, and the length slots of 1, 2, 4 and 8 bytes followed by the
// dual flag and the marker bytes. Several written bytes come from that layout rather than from
// the value (see WriteField); files are meant to carry exactly those bytes.

#include <QByteArray>
#include <QString>
#include <QVariant>

class QIODevice;
class TvtrFileReader;

enum class TQvxFieldType : quint8 {
    QVX_SIGNED_INTEGER = 0,
    QVX_UNSIGNED_INTEGER = 1,
    QVX_IEEE_REAL = 2,
    QVX_PACKED_BCD = 3,
    QVX_BLOB = 4,
    QVX_TEXT = 5,
    QVX_QV_DUAL = 6,
};

enum class TQvxFieldExtent : quint8 {
    QVX_FIX = 0,
    QVX_COUNTED = 1,
    QVX_ZERO_TERMINATED = 2,
    QVX_QV_SPECIAL = 3,
};

enum class TQvxNullRepresentation : quint8 {
    QVX_NULL_NEVER = 0,
    QVX_NULL_ZERO_LENGTH = 1,
    QVX_NULL_FLAG_WITH_UNDEFINED_DATA = 2,
    QVX_NULL_FLAG_SUPPRESS_DATA = 3,
};

enum class TQvxFieldFormatType : quint8 {
    UNKNOWN = 0,
    ASCII = 1,
    INTEGER = 2,
    REAL = 3,
    FIX = 4,
    MONEY = 5,
    DATE = 6,
    TIME = 7,
    TIMESTAMP = 8,
    INTERVAL = 9,
};

class TQwField
{
public:
    TQwField() = default;

    // Header values, with their defaults.
    QString FieldName;
    TQvxFieldType Type = TQvxFieldType::QVX_TEXT;
    TQvxFieldExtent Extent = TQvxFieldExtent::QVX_COUNTED;
    TQvxNullRepresentation NullRepresentation = TQvxNullRepresentation::QVX_NULL_NEVER;
    bool LittleEndian = false;
    qint32 CodePage = 65001;
    qint32 ByteWidth = 2;
    qint32 FixPointDecimals = 0;
    TQvxFieldFormatType FormatType = TQvxFieldFormatType::UNKNOWN;
    qint32 nDec = 0;
    qint32 UseThou = 0;
    QString Fmt;
    QString Dec;
    QString Thou;
    bool BigEndian = false;

    // Stores a value for writing and returns true. A value that cannot be converted to the
    // column's number type raises the conversion error.
    bool AssignValue(const QVariant &value);
    // Reads one value of this column into Value(); the reader's read error when the file ends.
    void ReadField(TvtrFileReader &reader);
    // Writes the current value. Counted text updates the length slots as it goes.
    void WriteField(QIODevice &stream);

    // The field's QvxFieldHeader element, and its parsing.
    QString AsString() const;
    void SetAsString(const QString &text);

    // True turns the field into a dual field; false only clears the flag.
    void SetDualType(bool dual);
    bool DualType() const { return m_dual; }

    // The value last read or assigned.
    const QVariant &Value() const { return m_value; }
    // The UTF-8 text slot.
    const QByteArray &TextBytes() const { return m_text; }

    // XML texts of the enumerations; empty for a code outside the table.
    static QString TypeText(TQvxFieldType type);
    static QString ExtentText(TQvxFieldExtent extent);
    static QString NullRepresentationText(TQvxNullRepresentation representation);
    // The writer has no text for INTERVAL and writes an empty element; the parser knows it.
    static QString FormatTypeText(TQvxFieldFormatType type);

private:
    // Which slot holds the current value; written as the first bytes of the slot layout.
    enum class TSlot : quint8 {
        None, Int8, Int16, Int32, Int64, UInt8, UInt16, UInt32, UInt64, Single, Double, Bcd, Blob
    };

    // Writes count bytes of the slot layout from offset on: the 8-byte value reference, the
    // length slots of 1, 2, 4 and 8 bytes, the dual flag and the three marker bytes, then zeros.
    void WriteSlotLayout(QIODevice &stream, int offset, qint64 count) const;
    void WriteDual(QIODevice &stream) const;
    void ReadText(TvtrFileReader &reader);
    void ReadDual(TvtrFileReader &reader);

    // Value slots.
    qint8 m_int8 = 0;
    qint16 m_int16 = 0;
    qint32 m_int32 = 0;
    qint64 m_int64 = 0;
    quint8 m_uint8 = 0;
    quint16 m_uint16 = 0;
    quint32 m_uint32 = 0;
    quint64 m_uint64 = 0;
    float m_single = 0;
    double m_double = 0;
    qint32 m_blob = 0;
    QByteArray m_text;
    TSlot m_valueRef = TSlot::None;
    quint8 m_length1 = 0;
    quint16 m_length2 = 0;
    quint32 m_length4 = 0;
    quint64 m_length8 = 0; // never filled by the writer; see WriteField
    bool m_dual = false;
    QVariant m_value;
};
