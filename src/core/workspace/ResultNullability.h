#pragma once
#include "core/workspace/ResultTable.h"

#include <QSqlDatabase>
#include <QSqlRecord>
#include <QString>

namespace ResultNullability {

// The table's columns as the driver describes them; `table` is the name as the statement wrote
// it. Read before the query's rows stream in: a streaming connection takes no other statement.
QSqlRecord tableRecord(const QSqlDatabase &db, const QString &table);

// Marks the result's columns that the table declares NOT NULL, so the grid can refuse a NULL
// there before the database does.
void apply(const QSqlRecord &record, ResultTable &result);

inline void read(const QSqlDatabase &db, const QString &table, ResultTable &result)
{
    apply(tableRecord(db, table), result);
}

} // namespace ResultNullability
