#pragma once
#include "core/app/RowStamps.h"

#include <QSqlQuery>
#include <QVariant>

// Reading and writing the four stamp columns of a catalogue row. Times are stored as ISO text.
namespace StampColumns {

QVariant toColumn(const QDateTime &time);
RowStamps read(const QSqlQuery &query);

} // namespace StampColumns
