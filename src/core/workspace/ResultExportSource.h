#pragma once
#include "core/workspace/ResultTable.h"
#include "core/workspace/ResultView.h"
#include "core/interchange/ExportSource.h"

#include <vector>

// A result as an export reads it: every column of the table, the data rows in the order the
// grid shows them (filtered and sorted; group headers left out). The row order is copied when
// the source is made, so the view may change afterwards; the table must not change while an
// export reads it.
class ResultExportSource : public ExportSource
{
public:
    ResultExportSource(const ResultTable &table, const ResultView &view);
    // Every row of the table that is not deleted, in table order.
    explicit ResultExportSource(const ResultTable &table);

    int columnCount() const override { return m_table.columnCount(); }
    QString columnName(int col) const override { return m_table.column(col).name(); }
    qint64 rowCount() const override { return qint64(m_rows.size()); }
    bool isNull(qint64 row, int col) const override;
    std::string_view text(qint64 row, int col, std::string &scratch) const override;
    QVariant value(qint64 row, int col) const override;

private:
    const ResultTable &m_table;
    std::vector<qint64> m_rows;
    bool m_direct;  // no edits: cells can be read straight from the columns
};
