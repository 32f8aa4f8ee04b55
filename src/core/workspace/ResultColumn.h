#pragma once
#include "core/base/BulkArray.h"

#include <QByteArray>
#include <QMetaType>
#include <QString>
#include <QVariant>
#include <cstdint>
#include <string_view>
#include <vector>

// True for NULL in every form a value can take: an invalid or null QVariant, and also a null
// QString, QByteArray or date, which the Qt SQL drivers bind as NULL. An empty text is not NULL.
bool resultIsNull(const QVariant &value);

// How a column keeps its values. A column starts Empty (only NULLs seen) and takes the kind of
// its first value; a later value of another kind widens it (Integer -> Real -> Text -> Bytes),
// remembering the kind of each value once numbers and texts mix.
enum class ResultStorage : quint8 { Empty, Integer, Real, Text, Bytes };

// One column of a result, stored columnar: one 64-bit slot per row (the integer, the bits of the
// double, or the end of the text in its arena block), a null bitmap, and texts packed back to back
// in a few large blocks. No heap object per cell.
class ResultColumn
{
public:
    ResultColumn(QString name, QString typeName, QMetaType::Type logicalType);

    const QString &name() const { return m_name; }
    const QString &typeName() const { return m_typeName; }
    // The type the values mean (date, bool, ...), used when handing a value back as a QVariant.
    QMetaType::Type logicalType() const { return m_logicalType; }
    ResultStorage storage() const { return m_storage; }
    // True for exact decimals (NUMERIC, DECIMAL): kept as the server's text, compared as numbers.
    bool isDecimal() const { return m_decimal; }
    // Values of several kinds in one column (SQLite lets every value have its own type).
    bool hasMixedKinds() const { return !m_kinds.empty(); }
    bool nullable() const { return m_nullable; }
    void setNullable(bool nullable) { m_nullable = nullable; }

    qint64 rowCount() const { return m_rows; }
    void reserve(qint64 rows);

    void appendNull();
    void appendInt(qint64 value);
    void appendReal(double value);
    void appendText(const char *utf8, size_t size);
    void appendBytes(const char *data, size_t size);
    // Appends a value of any type; used by the generic fetch path and by tests.
    void appendVariant(const QVariant &value);

    bool isNull(qint64 row) const { return (m_nulls[size_t(row >> 6)] >> (row & 63)) & 1u; }
    qint64 intAt(qint64 row) const { return qint64(m_slots[size_t(row)]); }
    double realAt(qint64 row) const;
    std::string_view bytesAt(qint64 row) const;
    QVariant value(qint64 row) const;

    // Appends every row of a column of the same result read as a later batch. Its text blocks
    // are moved over rather than copied, so the batch is left empty.
    void appendColumn(ResultColumn &&batch);

    // Releases spare capacity once the fetch is over.
    void finish();
    size_t memoryBytes() const;

private:
    void appendSlot(quint64 slot, bool null, ResultStorage kind);
    void appendValueOf(const ResultColumn &other, qint64 row);
    void startKinds(ResultStorage existing);
    void widenTo(ResultStorage storage);
    quint64 storeBytes(const char *data, size_t size);
    quint64 currentEnd() const;

    QString m_name;
    QString m_typeName;
    QMetaType::Type m_logicalType;
    bool m_decimal = false;
    ResultStorage m_storage = ResultStorage::Empty;
    bool m_nullable = true;
    qint64 m_rows = 0;
    BulkArray<quint64> m_slots;
    BulkArray<quint64> m_nulls;
    // Kind of each value, kept only once a text column also received numbers or bytes (SQLite
    // lets every value have its own type); the value is then handed back with its own type.
    std::vector<ResultStorage> m_kinds;
    // Arena blocks; a slot of a text column holds (block << 40) | end offset, and the text begins
    // where the previous row's text ended in the same block, or at 0 in a new block.
    struct Block
    {
        BulkBlock memory;
        size_t used = 0;
    };
    std::vector<Block> m_blocks;
};
