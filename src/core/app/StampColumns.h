#pragma once
#include "core/app/RowStamps.h"

#include <QSqlQuery>
#include <QSqlRecord>
#include <QVariant>

// Reading and writing the four stamp columns of a catalogue row. Times are stored as ISO text.
namespace StampColumns {

QVariant toColumn(const QDateTime &time);
RowStamps read(const QSqlQuery &query);

// Where the four columns lie in a query's record, found once for a query of many rows.
struct Positions
{
    int created, createdBy, changed, changedBy;
};
Positions positionsIn(const QSqlRecord &record);
RowStamps read(const QSqlQuery &query, const Positions &at);

} // namespace StampColumns
