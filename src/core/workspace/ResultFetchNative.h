#pragma once
#include "ResultTable.h"

#include <QSqlDatabase>
#include <memory>

// Fetch paths that read through the native client handle of a Qt driver. Each returns nullptr
// when it cannot serve the connection (another driver, client library not loaded), so the caller
// falls back to the generic path; database errors throw VantryError.
namespace ResultFetchNative {

std::unique_ptr<ResultTable> fetchSqlite(const QSqlDatabase &db, const QString &statement,
                                         qint64 recordLimit);
std::unique_ptr<ResultTable> fetchPostgres(const QSqlDatabase &db, const QString &statement,
                                           qint64 recordLimit);

// Looks up a symbol of a client library that is already loaded into the process (by the Qt
// driver plugin); nullptr when the library is not loaded or lacks the symbol. Resolving against
// the loaded library, rather than linking one, guarantees the handle and the functions belong to
// the same copy of the client.
void *loadedSymbol(const char *library, const char *symbol);

} // namespace ResultFetchNative
