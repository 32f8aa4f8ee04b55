#pragma once
#include "ResultTable.h"

#include <QSqlDatabase>
#include <QString>

namespace ResultNullability {

// Marks the result's columns that the table declares NOT NULL, so the grid can refuse a NULL
// there before the database does. `table` is the name as the statement wrote it.
void read(const QSqlDatabase &db, const QString &table, ResultTable &result);

} // namespace ResultNullability
