#pragma once
#include "core/workspace/ResultCursor.h"

#include <QSqlDatabase>
#include <memory>

// Reads a result through the MariaDB client library behind the QMYSQL driver, in the text
// protocol, so every value stays as the server wrote it: microseconds, zero dates ("0000-00-00"),
// exact decimals; BIT values become numbers and binary strings bytes. Returns nullptr when the
// connection is not a QMYSQL one or the library is not loaded; database errors throw VantryError.
namespace ResultFetchMariaDb {

std::unique_ptr<ResultCursor> open(const QSqlDatabase &db, const QString &statement);

} // namespace ResultFetchMariaDb
