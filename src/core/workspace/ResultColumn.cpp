#include "core/workspace/ResultColumn.h"

#include "core/workspace/ValueTypes.h"

#include <QDate>
#include <QDateTime>
#include <QTime>
#include <cstring>

namespace {

// Text blocks grow fourfold from the first; the largest are big enough for huge pages.
constexpr size_t FirstBlock = 16 * 1024;
constexpr size_t LargestBlock = 4 * 1024 * 1024;
constexpr int OffsetBits = 40;
constexpr quint64 OffsetMask = (quint64(1) << OffsetBits) - 1;

quint64 realBits(double value)
{
    quint64 bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

QByteArray numberText(ResultStorage storage, quint64 slot)
{
    if (storage == ResultStorage::Integer)
        return QByteArray::number(qint64(slot));
    double value;
    std::memcpy(&value, &slot, sizeof value);
    return QByteArray::number(value, 'g', 17);
}

} // namespace

bool resultIsNull(const QVariant &value)
{
    if (!value.isValid() || value.isNull())
        return true;
    switch (value.metaType().id()) {
    case QMetaType::QString:
        return value.toString().isNull();
    case QMetaType::QByteArray:
        return value.toByteArray().isNull();
    case QMetaType::QDate:
        return value.toDate().isNull();
    case QMetaType::QTime:
        return value.toTime().isNull();
    case QMetaType::QDateTime:
        return value.toDateTime().isNull();
    default:
        return false;
    }
}

ResultColumn::ResultColumn(QString name, QString typeName, QMetaType::Type logicalType)
    : m_name(std::move(name)), m_typeName(std::move(typeName)), m_logicalType(logicalType),
      m_decimal(ValueTypes::isDecimal(m_typeName))
{
}

void ResultColumn::reserve(qint64 rows)
{
    m_slots.reserve(size_t(rows));
    m_nulls.reserve((size_t(rows) + 63) / 64);
}

void ResultColumn::startKinds(ResultStorage existing)
{
    if (m_kinds.empty())
        m_kinds.assign(size_t(m_rows), existing);
}

void ResultColumn::appendSlot(quint64 slot, bool null, ResultStorage kind)
{
    if (!m_kinds.empty())
        m_kinds.push_back(kind);
    if ((m_rows & 63) == 0)
        m_nulls.push_back(0);
    if (null)
        m_nulls.back() |= quint64(1) << (m_rows & 63);
    m_slots.push_back(slot);
    ++m_rows;
}

quint64 ResultColumn::currentEnd() const
{
    if (m_blocks.empty())
        return 0;
    return (quint64(m_blocks.size() - 1) << OffsetBits) | m_blocks.back().used;
}

void ResultColumn::appendNull()
{
    const bool text = m_storage == ResultStorage::Text || m_storage == ResultStorage::Bytes;
    appendSlot(text ? currentEnd() : 0, true, ResultStorage::Empty);
}

void ResultColumn::appendInt(qint64 value)
{
    switch (m_storage) {
    case ResultStorage::Empty:
        m_storage = ResultStorage::Integer;
        [[fallthrough]];
    case ResultStorage::Integer:
        appendSlot(quint64(value), false, ResultStorage::Integer);
        return;
    case ResultStorage::Real:
        appendSlot(realBits(double(value)), false, ResultStorage::Real);
        return;
    case ResultStorage::Text:
    case ResultStorage::Bytes: {
        startKinds(m_storage);
        const QByteArray text = QByteArray::number(value);
        appendSlot(storeBytes(text.constData(), size_t(text.size())), false, ResultStorage::Integer);
        return;
    }
    }
}

void ResultColumn::appendReal(double value)
{
    switch (m_storage) {
    case ResultStorage::Empty:
    case ResultStorage::Integer:
        widenTo(ResultStorage::Real);
        [[fallthrough]];
    case ResultStorage::Real:
        appendSlot(realBits(value), false, ResultStorage::Real);
        return;
    case ResultStorage::Text:
    case ResultStorage::Bytes: {
        startKinds(m_storage);
        const QByteArray text = QByteArray::number(value, 'g', 17);
        appendSlot(storeBytes(text.constData(), size_t(text.size())), false, ResultStorage::Real);
        return;
    }
    }
}

void ResultColumn::appendText(const char *utf8, size_t size)
{
    if (m_storage == ResultStorage::Bytes)
        startKinds(ResultStorage::Bytes);
    else if (m_storage != ResultStorage::Text)
        widenTo(ResultStorage::Text);
    appendSlot(storeBytes(utf8, size), false, ResultStorage::Text);
}

void ResultColumn::appendBytes(const char *data, size_t size)
{
    if (m_storage == ResultStorage::Text)
        startKinds(ResultStorage::Text);
    if (m_storage != ResultStorage::Bytes)
        widenTo(ResultStorage::Bytes);
    appendSlot(storeBytes(data, size), false, ResultStorage::Bytes);
}

void ResultColumn::appendVariant(const QVariant &value)
{
    if (resultIsNull(value)) {
        appendNull();
        return;
    }
    switch (value.metaType().id()) {
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::LongLong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
        appendInt(value.toLongLong());
        return;
    case QMetaType::ULongLong:
    case QMetaType::ULong:
        if (value.toULongLong() <= quint64(std::numeric_limits<qint64>::max()))
            appendInt(value.toLongLong());
        else
            appendText(value.toByteArray().constData(), size_t(value.toByteArray().size()));
        return;
    case QMetaType::Double:
    case QMetaType::Float:
        appendReal(value.toDouble());
        return;
    case QMetaType::QByteArray: {
        const QByteArray bytes = value.toByteArray();
        appendBytes(bytes.constData(), size_t(bytes.size()));
        return;
    }
    case QMetaType::QDate:
        return appendVariant(value.toDate().toString(Qt::ISODate));
    case QMetaType::QTime:
        return appendVariant(value.toTime().toString(Qt::ISODateWithMs));
    case QMetaType::QDateTime:
        return appendVariant(value.toDateTime().toString(Qt::ISODateWithMs));
    default: {
        const QByteArray text = value.toString().toUtf8();
        appendText(text.constData(), size_t(text.size()));
        return;
    }
    }
}

quint64 ResultColumn::storeBytes(const char *data, size_t size)
{
    if (m_blocks.empty() || m_blocks.back().memory.capacity() - m_blocks.back().used < size) {
        const size_t next = m_blocks.empty() ? FirstBlock
                                             : std::min(LargestBlock, m_blocks.back().memory.capacity() * 4);
        m_blocks.push_back(Block{BulkBlock(std::max(next, size)), 0});
    }
    Block &block = m_blocks.back();
    if (size)
        std::memcpy(block.memory.data() + block.used, data, size);
    block.used += size;
    return currentEnd();
}

void ResultColumn::widenTo(ResultStorage storage)
{
    if (m_storage == storage)
        return;
    if (m_storage == ResultStorage::Empty) {
        // Every slot so far is a NULL: numbers keep 0, texts need the empty locator 0 as well.
        m_storage = storage;
        return;
    }
    if (storage == ResultStorage::Real && m_storage == ResultStorage::Integer) {
        for (quint64 &slot : m_slots)
            slot = realBits(double(qint64(slot)));
        m_storage = storage;
        return;
    }
    if (m_storage == ResultStorage::Text && storage == ResultStorage::Bytes) {
        m_storage = storage;
        return;
    }
    // Numbers become texts: rebuild the slots as arena locators, remembering they were numbers.
    startKinds(m_storage);
    BulkArray<quint64> numbers = std::move(m_slots);
    m_slots.reserve(numbers.size());
    const ResultStorage old = m_storage;
    for (qint64 row = 0; row < m_rows; ++row) {
        if (isNull(row)) {
            m_slots.push_back(currentEnd());
        } else {
            const QByteArray text = numberText(old, numbers[size_t(row)]);
            m_slots.push_back(storeBytes(text.constData(), size_t(text.size())));
        }
    }
    m_storage = storage == ResultStorage::Bytes ? ResultStorage::Bytes : ResultStorage::Text;
}

double ResultColumn::realAt(qint64 row) const
{
    if (m_storage == ResultStorage::Integer)
        return double(intAt(row));
    double value;
    std::memcpy(&value, &m_slots[size_t(row)], sizeof value);
    return value;
}

std::string_view ResultColumn::bytesAt(qint64 row) const
{
    const quint64 slot = m_slots[size_t(row)];
    const size_t block = size_t(slot >> OffsetBits);
    const size_t end = size_t(slot & OffsetMask);
    size_t begin = 0;
    if (row > 0 && size_t(m_slots[size_t(row - 1)] >> OffsetBits) == block)
        begin = size_t(m_slots[size_t(row - 1)] & OffsetMask);
    if (end == begin)
        return {};
    return std::string_view(m_blocks[block].memory.data() + begin, end - begin);
}

QVariant ResultColumn::value(qint64 row) const
{
    if (isNull(row))
        return QVariant(QMetaType(m_logicalType == QMetaType::UnknownType ? int(QMetaType::QString)
                                                                          : int(m_logicalType)));
    const ResultStorage kind = m_kinds.empty() ? m_storage : m_kinds[size_t(row)];
    if (!m_kinds.empty() && (kind == ResultStorage::Integer || kind == ResultStorage::Real)) {
        const std::string_view text = bytesAt(row);
        const QByteArray number = QByteArray::fromRawData(text.data(), qsizetype(text.size()));
        return kind == ResultStorage::Integer ? QVariant(number.toLongLong()) : QVariant(number.toDouble());
    }
    switch (kind) {
    case ResultStorage::Empty:
        return {};
    case ResultStorage::Integer:
        if (m_logicalType == QMetaType::Bool)
            return QVariant(intAt(row) != 0);
        return QVariant(intAt(row));
    case ResultStorage::Real:
        return QVariant(realAt(row));
    case ResultStorage::Bytes: {
        const std::string_view bytes = bytesAt(row);
        return QVariant(bytes.empty() ? QByteArray("") : QByteArray(bytes.data(), qsizetype(bytes.size())));
    }
    case ResultStorage::Text:
        break;
    }
    const std::string_view text = bytesAt(row);
    // An empty text must stay a non-null QString, or the drivers would bind it as NULL.
    const QString string = text.empty() ? QStringLiteral("")
                                        : QString::fromUtf8(text.data(), qsizetype(text.size()));
    switch (m_logicalType) {
    case QMetaType::QDate: {
        const QDate date = QDate::fromString(string, Qt::ISODate);
        return date.isValid() ? QVariant(date) : QVariant(string);
    }
    case QMetaType::QDateTime: {
        const QDateTime stamp = QDateTime::fromString(string, Qt::ISODateWithMs);
        return stamp.isValid() ? QVariant(stamp) : QVariant(string);
    }
    default:
        return QVariant(string);
    }
}

void ResultColumn::appendColumn(ResultColumn &&batch)
{
    const bool sameKind = m_storage == batch.m_storage || m_storage == ResultStorage::Empty
                          || batch.m_storage == ResultStorage::Empty;
    if (!sameKind || !m_kinds.empty() || !batch.m_kinds.empty()) {
        for (qint64 row = 0; row < batch.m_rows; ++row)
            appendValueOf(batch, row);
        batch = ResultColumn(batch.m_name, batch.m_typeName, batch.m_logicalType);
        return;
    }
    if (m_storage == ResultStorage::Empty)
        m_storage = batch.m_storage;
    const bool text = m_storage == ResultStorage::Text || m_storage == ResultStorage::Bytes;
    // The batch's locators point into its own blocks, which land after ours: shift their block
    // number. Its first text begins at 0 of a block of its own, as the arena's rule wants.
    const quint64 shift = text ? quint64(m_blocks.size()) << OffsetBits : 0;
    reserve(m_rows + batch.m_rows);
    for (qint64 row = 0; row < batch.m_rows; ++row)
        appendSlot(batch.m_slots[size_t(row)] + shift, batch.isNull(row), m_storage);
    for (Block &block : batch.m_blocks)
        m_blocks.push_back(std::move(block));
    batch = ResultColumn(batch.m_name, batch.m_typeName, batch.m_logicalType);
}

void ResultColumn::appendValueOf(const ResultColumn &other, qint64 row)
{
    if (other.isNull(row))
        return appendNull();
    const ResultStorage kind = other.m_kinds.empty() ? other.m_storage : other.m_kinds[size_t(row)];
    if (!other.m_kinds.empty() && (kind == ResultStorage::Integer || kind == ResultStorage::Real)) {
        const std::string_view text = other.bytesAt(row);
        const QByteArray number = QByteArray::fromRawData(text.data(), qsizetype(text.size()));
        return kind == ResultStorage::Integer ? appendInt(number.toLongLong()) : appendReal(number.toDouble());
    }
    switch (kind) {
    case ResultStorage::Empty:
        return appendNull();
    case ResultStorage::Integer:
        return appendInt(other.intAt(row));
    case ResultStorage::Real:
        return appendReal(other.realAt(row));
    case ResultStorage::Text: {
        const std::string_view text = other.bytesAt(row);
        return appendText(text.data(), text.size());
    }
    case ResultStorage::Bytes: {
        const std::string_view bytes = other.bytesAt(row);
        return appendBytes(bytes.data(), bytes.size());
    }
    }
}

void ResultColumn::finish()
{
    m_slots.shrinkToFit();
    m_nulls.shrinkToFit();
    m_kinds.shrink_to_fit();
    if (!m_blocks.empty())
        m_blocks.back().memory.shrink(m_blocks.back().used);
}

size_t ResultColumn::memoryBytes() const
{
    size_t bytes = m_slots.memoryBytes() + m_nulls.memoryBytes() + m_kinds.capacity();
    for (const Block &block : m_blocks)
        bytes += block.memory.capacity();
    return bytes + sizeof(*this);
}
