#pragma once
#include "core/workspace/ResultColumn.h"

#include <QString>
#include <QVariant>

// The value a text typed into a cell of a result column stands for, as the grid and the sheet
// import both convert it: an empty text is NULL in a column that was NULL or holds numbers or
// typed values, booleans accept true/false/1/0, integer and real columns take numbers, and
// anything else stays text for the database to convert (or refuse) when the row is written.
QVariant valueFromCellText(const ResultColumn &column, const QString &text, bool wasNull);
