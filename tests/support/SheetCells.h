#pragma once
// A sheet's cells row by row, for comparing whole sheets in one go.
#include "core/interchange/WorkbookReader.h"

#include <QList>
#include <QStringList>

inline QList<QStringList> cells(const WorkbookSheet &sheet)
{
    QList<QStringList> rows;
    for (int r = 1; r <= sheet.rowCount(); ++r) {
        QStringList row;
        for (int c = 1; c <= sheet.columnCount(); ++c)
            row << sheet.cellText(r, c);
        rows << row;
    }
    return rows;
}
