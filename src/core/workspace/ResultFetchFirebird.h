#pragma once
#include "core/workspace/ResultCursor.h"

#include <QSqlDatabase>
#include <memory>

// Reads a SELECT through the Firebird client library behind the QIBASE driver, so values stay as
// the server holds them: times and timestamps with their fourth decimal, scaled integers
// (NUMERIC, DECIMAL) as exact decimal text, CHAR(n) as n characters, text BLOBs as text in the
// connection's character set, binary BLOBs and OCTETS as bytes. Returns nullptr when it cannot
// serve the statement (another driver, the library not loaded, not a SELECT, a type it does not
// read), so the caller takes the generic path; database errors throw VantryError.
namespace ResultFetchFirebird {

std::unique_ptr<ResultCursor> open(const QSqlDatabase &db, const QString &statement);

} // namespace ResultFetchFirebird
