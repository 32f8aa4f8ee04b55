#include "core/workspace/ResultTable.h"

#include "core/base/VantryError.h"

#include <QSet>

ResultColumn &ResultTable::addColumn(const QString &name, const QString &typeName,
                                     QMetaType::Type logicalType)
{
    m_columns.emplace_back(name, typeName, logicalType);
    return m_columns.back();
}

QStringList ResultTable::columnNames() const
{
    QStringList names;
    for (const ResultColumn &column : m_columns)
        names << column.name();
    return names;
}

int ResultTable::columnIndex(const QString &name) const
{
    for (int col = 0; col < columnCount(); ++col)
        if (m_columns[size_t(col)].name().compare(name, Qt::CaseInsensitive) == 0)
            return col;
    return -1;
}

void ResultTable::finishFetch(bool truncated)
{
    m_fetchedRows = m_columns.empty() ? 0 : m_columns.front().rowCount();
    for (ResultColumn &column : m_columns) {
        if (column.rowCount() != m_fetchedRows)
            throw VantryError(QStringLiteral("Column %1 has %2 values for %3 rows")
                                  .arg(column.name())
                                  .arg(column.rowCount())
                                  .arg(m_fetchedRows));
        column.finish();
    }
    m_truncated = truncated;
}

void ResultTable::appendBatch(ResultTable &&batch, bool moreRemain)
{
    if (!m_inserted.empty())
        throw VantryError(QStringLiteral("Rows cannot be fetched while new rows are being added"));
    if (batch.columnCount() != columnCount())
        throw VantryError(QStringLiteral("A batch of %1 columns does not fit a result of %2")
                              .arg(batch.columnCount())
                              .arg(columnCount()));
    for (int col = 0; col < columnCount(); ++col)
        m_columns[size_t(col)].appendColumn(std::move(batch.m_columns[size_t(col)]));
    m_fetchedRows = m_columns.empty() ? 0 : m_columns.front().rowCount();
    m_truncated = moreRemain;
}

QVariant ResultTable::storedValue(qint64 row, int col) const
{
    if (isInserted(row))
        return m_inserted[size_t(row - m_fetchedRows)][size_t(col)];
    const auto committed = m_committed.constFind(cellKey(row, col));
    if (committed != m_committed.constEnd())
        return *committed;
    return m_columns[size_t(col)].value(row);
}

QVariant ResultTable::value(qint64 row, int col) const
{
    const auto pending = m_pending.constFind(cellKey(row, col));
    if (pending != m_pending.constEnd())
        return *pending;
    return storedValue(row, col);
}

bool ResultTable::isNull(qint64 row, int col) const
{
    if (!isInserted(row) && m_pending.isEmpty() && m_committed.isEmpty())
        return m_columns[size_t(col)].isNull(row);
    return resultIsNull(value(row, col));
}

bool ResultTable::isChanged(qint64 row, int col) const
{
    return m_pending.contains(cellKey(row, col));
}

QList<int> ResultTable::changedColumns(qint64 row) const
{
    QList<int> cols;
    for (int col = 0; col < columnCount(); ++col)
        if (isChanged(row, col))
            cols << col;
    return cols;
}

ResultTable::RowState ResultTable::rowState(qint64 row) const
{
    if (m_deleted.contains(row))
        return RowState::Deleted;
    if (isInserted(row) && m_insertPending[size_t(row - m_fetchedRows)])
        return RowState::Inserted;
    if (m_pendingPerRow.value(row) > 0)
        return RowState::Modified;
    return RowState::Unchanged;
}

QList<qint64> ResultTable::pendingRows() const
{
    QSet<qint64> rows;
    for (auto it = m_pendingPerRow.constBegin(); it != m_pendingPerRow.constEnd(); ++it)
        if (it.value() > 0 && !m_deleted.contains(it.key()))
            rows.insert(it.key());
    for (size_t i = 0; i < m_insertPending.size(); ++i)
        if (m_insertPending[i] && !m_deleted.contains(m_fetchedRows + qint64(i)))
            rows.insert(m_fetchedRows + qint64(i));
    QList<qint64> sorted(rows.begin(), rows.end());
    std::sort(sorted.begin(), sorted.end());
    return sorted;
}

void ResultTable::checkEditable(qint64 row) const
{
    if (m_readOnly)
        throw VantryError(QStringLiteral("The result is read-only"));
    if (row < 0 || row >= rowCount())
        throw VantryError(QStringLiteral("Row %1 does not exist").arg(row + 1));
    if (m_deleted.contains(row))
        throw VantryError(QStringLiteral("Row %1 has been deleted").arg(row + 1));
}

void ResultTable::setValue(qint64 row, int col, const QVariant &value)
{
    checkEditable(row);
    const quint64 key = cellKey(row, col);
    const QVariant stored = storedValue(row, col);
    const bool null = resultIsNull(value);
    const bool same = resultIsNull(stored) == null && (null || stored == value);
    const bool wasPending = m_pending.contains(key);
    if (same) {
        if (wasPending) {
            m_pending.remove(key);
            --m_pendingPerRow[row];
        }
        return;
    }
    m_pending.insert(key, value);
    if (!wasPending)
        ++m_pendingPerRow[row];
}

QVariant ResultTable::nullOf(int col) const
{
    const QMetaType::Type type = m_columns[size_t(col)].logicalType();
    return QVariant(QMetaType(type == QMetaType::UnknownType ? int(QMetaType::QString) : int(type)));
}

void ResultTable::setNull(qint64 row, int col)
{
    checkEditable(row);
    const ResultColumn &column = m_columns[size_t(col)];
    if (!column.nullable())
        throw VantryError(QStringLiteral("Column %1 is NOT NULL: it cannot be set to NULL").arg(column.name()));
    setValue(row, col, nullOf(col));
}

qint64 ResultTable::insertRow()
{
    if (m_readOnly)
        throw VantryError(QStringLiteral("The result is read-only"));
    std::vector<QVariant> values;
    values.reserve(size_t(columnCount()));
    for (int col = 0; col < columnCount(); ++col)
        values.push_back(nullOf(col));
    m_inserted.push_back(std::move(values));
    m_insertPending.push_back(true);
    return rowCount() - 1;
}

qint64 ResultTable::cloneRow(qint64 source)
{
    checkEditable(source);
    const qint64 row = insertRow();
    for (int col = 0; col < columnCount(); ++col)
        m_inserted.back()[size_t(col)] = value(source, col);
    return row;
}

void ResultTable::markDeleted(qint64 row)
{
    checkEditable(row);
    revertRow(row);
    m_deleted.insert(row);
}

void ResultTable::revertRow(qint64 row)
{
    m_failures.remove(row);
    for (int col = 0; col < columnCount(); ++col)
        m_pending.remove(cellKey(row, col));
    m_pendingPerRow.remove(row);
    if (isInserted(row) && m_insertPending[size_t(row - m_fetchedRows)])
        m_deleted.insert(row);
}

void ResultTable::acceptRow(qint64 row)
{
    for (int col = 0; col < columnCount(); ++col) {
        const auto pending = m_pending.find(cellKey(row, col));
        if (pending == m_pending.end())
            continue;
        if (isInserted(row))
            m_inserted[size_t(row - m_fetchedRows)][size_t(col)] = *pending;
        else
            m_committed.insert(cellKey(row, col), *pending);
        m_pending.erase(pending);
    }
    m_pendingPerRow.remove(row);
    m_failures.remove(row);
    if (isInserted(row))
        m_insertPending[size_t(row - m_fetchedRows)] = false;
}

void ResultTable::dropPending(qint64 row, int col)
{
    if (m_pending.remove(cellKey(row, col)) && --m_pendingPerRow[row] <= 0)
        m_pendingPerRow.remove(row);
}

void ResultTable::acceptStored(qint64 row, const QVariantList &stored, const QVariantList &written)
{
    for (int col = 0; col < columnCount() && col < stored.size(); ++col) {
        const auto pending = m_pending.constFind(cellKey(row, col));
        if (pending != m_pending.constEnd() && col < written.size()
            && resultIsNull(*pending) == resultIsNull(written[col])
            && (resultIsNull(*pending) || *pending == written[col]))
            dropPending(row, col);
        if (isInserted(row)) {
            m_inserted[size_t(row - m_fetchedRows)][size_t(col)] = stored[col];
            continue;
        }
        const QVariant fetched = m_columns[size_t(col)].value(row);
        if (resultIsNull(fetched) == resultIsNull(stored[col])
            && (resultIsNull(fetched) || fetched == stored[col]))
            m_committed.remove(cellKey(row, col));
        else
            m_committed.insert(cellKey(row, col), stored[col]);
    }
    m_failures.remove(row);
    if (isInserted(row))
        m_insertPending[size_t(row - m_fetchedRows)] = false;
}

void ResultTable::setRowFailure(qint64 row, const QString &message)
{
    if (message.isEmpty())
        m_failures.remove(row);
    else
        m_failures.insert(row, message);
}

size_t ResultTable::memoryBytes() const
{
    size_t bytes = sizeof(*this);
    for (const ResultColumn &column : m_columns)
        bytes += column.memoryBytes();
    return bytes;
}
