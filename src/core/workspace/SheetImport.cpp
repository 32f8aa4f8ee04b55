#include "core/workspace/SheetImport.h"

#include "core/workspace/CellText.h"

namespace SheetImport {

QString sheetNameOf(const QString &chosen)
{
    QString name = chosen;
    if (name.startsWith(QLatin1Char('"')))
        name.remove(0, 1);
    if (name.endsWith(QLatin1Char('"')))
        name.chop(1);
    return name;
}

void fillRow(ResultTable &table, qint64 row, const QVector<int> &visibleColumns, const WorkbookSheet &sheet,
             int sheetRow)
{
    for (int k = 1; k <= visibleColumns.size(); ++k) {
        const int col = visibleColumns[k - 1];
        const QString text = sheet.cellText(sheetRow, sheetColumnOf(k));
        // A new row's fields start as NULL, which is what an empty cell means; the write-back
        // then leaves them out of the INSERT, so column defaults apply as for a row added in
        // the grid.
        if (text.isEmpty())
            continue;
        table.setValue(row, col, valueFromCellText(table.column(col), text, true));
    }
}

} // namespace SheetImport
