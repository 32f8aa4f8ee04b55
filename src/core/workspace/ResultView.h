#pragma once
#include "core/workspace/ResultTable.h"

#include <QString>
#include <QVector>
#include <vector>

// The order in which a grid shows the rows of a ResultTable: filtered, sorted and grouped, as a
// list of row indexes (a permutation) so the table's data never moves. Deleted rows are hidden;
// rows inserted and not yet written back stay visible whatever the filter says.
class ResultView
{
public:
    struct Entry
    {
        qint64 row;     // table row, or for a group header the first row of the group
        qint32 level;   // -1 for a data row, else the grouping level of the header
        qint32 count;   // rows in the group (headers only)
    };

    void setTable(const ResultTable *table);
    // Per-column filter texts: "abc" (contains, any case), "=x", "<>x", "<x", "<=x", ">x", ">=x",
    // "(null)" and "(not null)". Empty texts filter nothing.
    void setFilter(int col, const QString &text);
    QString filter(int col) const { return m_filters.value(col); }
    void clearFilters() { m_filters.clear(); }
    void setSort(int col, bool ascending);
    int sortColumn() const { return m_sortColumn; }
    bool sortAscending() const { return m_ascending; }
    void setGroupColumns(const QVector<int> &cols) { m_groups = cols; }
    const QVector<int> &groupColumns() const { return m_groups; }

    // Recomputes the entries from the table and the settings above.
    void rebuild();
    // True when the view shows every row in table order (no filter, sort or grouping).
    bool isIdentity() const;
    // After rows were appended to the table from `firstNew` on: an identity view takes them as
    // they are, any other view is rebuilt.
    void rowsAppended(qint64 firstNew);

    qint64 size() const { return qint64(m_entries.size()); }
    // Data rows among the entries (the size without group headers).
    qint64 dataRows() const { return m_dataRows; }
    const Entry &entry(qint64 index) const { return m_entries[size_t(index)]; }
    // Position of a table row among the entries, -1 when hidden.
    qint64 indexOf(qint64 row) const;

    // Three-way comparison of two cells of one column; NULL sorts first.
    static int compare(const ResultTable &table, int col, qint64 a, qint64 b);
    // Text of a cell as the grid shows and searches it (NULL gives a null QString).
    static QString text(const ResultTable &table, qint64 row, int col);

private:

    const ResultTable *m_table = nullptr;
    QVector<QString> m_filters;
    int m_sortColumn = -1;
    bool m_ascending = true;
    QVector<int> m_groups;
    std::vector<Entry> m_entries;
    qint64 m_dataRows = 0;
};
