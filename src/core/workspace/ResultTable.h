#pragma once
#include "core/workspace/ResultColumn.h"

#include <QHash>
#include <QList>
#include <QSet>
#include <QString>
#include <QVariant>
#include <vector>

// The in-memory result of one query: fetched rows kept columnar in ResultColumn, plus an edit
// buffer on top of them (changed cells, inserted rows, deleted rows). Rows are addressed by a
// stable index: fetched rows first, inserted rows after them; deleted rows keep their index and
// are only marked, so views can hide them.
class ResultTable
{
public:
    enum class RowState { Unchanged, Modified, Inserted, Deleted };

    ResultColumn &addColumn(const QString &name, const QString &typeName,
                            QMetaType::Type logicalType = QMetaType::UnknownType);
    int columnCount() const { return int(m_columns.size()); }
    const ResultColumn &column(int col) const { return m_columns[size_t(col)]; }
    ResultColumn &column(int col) { return m_columns[size_t(col)]; }
    QStringList columnNames() const;
    int columnIndex(const QString &name) const;

    // Called by a fetcher after the last row; rows must have been appended to every column.
    void finishFetch(bool truncated);
    // Appends the rows of a later batch of the same result (a table of the same columns) and
    // says whether more rows remain on the server. Throws VantryError while rows are inserted,
    // since those are numbered after the fetched ones.
    void appendBatch(ResultTable &&batch, bool moreRemain);
    qint64 fetchedRows() const { return m_fetchedRows; }
    // True when rows of the result remain unfetched (a record limit, or a fetch on demand).
    bool truncated() const { return m_truncated; }

    qint64 rowCount() const { return m_fetchedRows + qint64(m_inserted.size()); }
    bool isInserted(qint64 row) const { return row >= m_fetchedRows; }

    // The current value: a pending edit, else the last value written back, else the fetched one.
    QVariant value(qint64 row, int col) const;
    bool isNull(qint64 row, int col) const;
    // The value the database holds as far as this table knows: what locates the row.
    QVariant storedValue(qint64 row, int col) const;
    bool isChanged(qint64 row, int col) const;
    QList<int> changedColumns(qint64 row) const;

    // True when some cell of the table no longer shows its fetched value (edits, inserted rows);
    // lets sorting and filtering read the columns directly while there are none.
    bool hasOverrides() const { return !m_pending.isEmpty() || !m_committed.isEmpty() || !m_inserted.empty(); }
    bool isOverridden(qint64 row, int col) const
    {
        return isInserted(row) || m_pending.contains(cellKey(row, col)) || m_committed.contains(cellKey(row, col));
    }

    RowState rowState(qint64 row) const;
    bool isDeleted(qint64 row) const { return m_deleted.contains(row); }
    QList<qint64> pendingRows() const;

    // Edits; each throws VantryError when the table is read-only or the row is deleted.
    void setValue(qint64 row, int col, const QVariant &value);
    // Sets a cell to NULL; refused for a column the database declares NOT NULL.
    void setNull(qint64 row, int col);
    qint64 insertRow();
    qint64 cloneRow(qint64 source);
    void markDeleted(qint64 row);
    // Drops the pending edits of a row; a pending inserted row disappears (is marked deleted).
    void revertRow(qint64 row);
    // Makes the pending edits of a row its stored values, after they reached the database.
    void acceptRow(qint64 row);
    // Makes a written row unchanged, holding `stored`, the values the database now has (one per
    // column). Pending cells equal to `written` (what the write sent) are done with; an edit made
    // while the write was under way stays pending.
    void acceptStored(qint64 row, const QVariantList &stored, const QVariantList &written);

    // Why the last write of a row failed, for the grid to show beside it; empty when it did not
    // fail. Cleared when the row is written or reverted.
    QString rowFailure(qint64 row) const { return m_failures.value(row); }
    void setRowFailure(qint64 row, const QString &message);

    bool isReadOnly() const { return m_readOnly; }
    void setReadOnly(bool readOnly) { m_readOnly = readOnly; }

    size_t memoryBytes() const;

private:
    void checkEditable(qint64 row) const;
    QVariant nullOf(int col) const;
    void dropPending(qint64 row, int col);
    quint64 cellKey(qint64 row, int col) const { return quint64(row) * quint64(columnCount()) + quint64(col); }

    std::vector<ResultColumn> m_columns;
    qint64 m_fetchedRows = 0;
    bool m_truncated = false;
    bool m_readOnly = false;
    QHash<quint64, QVariant> m_pending;   // edits not yet written back
    QHash<quint64, QVariant> m_committed; // edits written back, overriding fetched values
    QHash<qint64, int> m_pendingPerRow;   // number of pending cells per row
    std::vector<std::vector<QVariant>> m_inserted;
    std::vector<bool> m_insertPending;    // inserted rows not yet written back
    QSet<qint64> m_deleted;
    QHash<qint64, QString> m_failures;
};
