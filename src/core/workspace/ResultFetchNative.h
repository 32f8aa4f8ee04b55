#pragma once
#include "core/workspace/ResultCursor.h"

#include <QSqlDatabase>
#include <atomic>
#include <memory>

// Cursors that read through the native client handle of a Qt driver. Each returns nullptr when
// it cannot serve the connection (another driver, client library not loaded), so the caller
// falls back to the generic path; database errors throw VantryError.
namespace ResultFetchNative {

std::unique_ptr<ResultCursor> openSqlite(const QSqlDatabase &db, const QString &statement);
std::unique_ptr<ResultCursor> openPostgres(const QSqlDatabase &db, const QString &statement);
// ODBC: runs the statement through Qt's driver, then reads its values from the statement handle,
// in blocks of bound rows, or (ValueByValue) one SQLGetData per value, the way that asks least
// of a driver.
enum class OdbcFetch { Block, ValueByValue };
std::unique_ptr<ResultCursor> openOdbc(const QSqlDatabase &db, const QString &statement, EngineCancel *cancel,
                                       OdbcFetch mode = OdbcFetch::Block);

// Looks up a symbol of a client library that is already loaded into the process (by the Qt
// driver plugin); nullptr when the library is not loaded or lacks the symbol. Resolving against
// the loaded library, rather than linking one, guarantees the handle and the functions belong to
// the same copy of the client.
void *loadedSymbol(const char *library, const char *symbol);

// The entry-point table `Api` (a struct with `bool load()`) of a client library, once all its
// entry points are found; nullptr until then. A failed lookup is tried again next time: the
// first result may be read before any connection has loaded that library.
template<typename Api>
const Api *loadedApi()
{
    static std::atomic<const Api *> found{nullptr};
    if (const Api *api = found.load())
        return api;
    Api loaded;
    if (!loaded.load())
        return nullptr;
    static const Api api = loaded;
    found.store(&api);
    return &api;
}

} // namespace ResultFetchNative
