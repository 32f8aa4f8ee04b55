#pragma once
#include "core/interchange/WorkbookReader.h"
#include "core/workspace/ResultTable.h"

#include <QString>
#include <QVector>

// How a sheet of a workbook lands in a result, one sheet row per new result row.
namespace SheetImport {

// The sheet name a user's choice stands for: one leading and one trailing double quote are
// dropped, so a name typed in quotes ("Sheet 1") finds the sheet Sheet 1.
QString sheetNameOf(const QString &chosen);

// The sheet column that the k-th visible field (k from 1) takes: column k + 1. The sheet's first
// column is never loaded; imports have always worked this way and sheets are laid out for it.
inline int sheetColumnOf(int visibleField) { return visibleField + 1; }

// Fills a newly inserted result row from one sheet row. The fields in `visibleColumns` (result
// column indexes in field order; hidden fields are left out and stay NULL) take consecutive
// sheet columns starting at column 2. An empty cell leaves its field NULL; any other text is
// converted to the field's type as text typed into the grid is. Throws VantryError when the
// result refuses the edit.
void fillRow(ResultTable &table, qint64 row, const QVector<int> &visibleColumns, const WorkbookSheet &sheet,
             int sheetRow);

} // namespace SheetImport
