#include "core/workspace/SqliteScript.h"

#include "core/workspace/ResultFetchNative.h"
#include "core/base/VantryError.h"

#include <QSqlDriver>

namespace {

struct sqlite3;
using ExecFn = int (*)(sqlite3 *, const char *, int (*)(void *, int, char **, char **), void *, char **);
using FreeFn = void (*)(void *);

} // namespace

bool SqliteScript::execute(const QSqlDatabase &db, const QString &statements)
{
    if (db.driverName() != QLatin1String("QSQLITE") || !db.driver())
        return false;
    const QVariant handle = db.driver()->handle();
    if (!handle.isValid() || qstrcmp(handle.typeName(), "sqlite3*") != 0)
        return false;
    sqlite3 *connection = *static_cast<sqlite3 *const *>(handle.constData());
    auto exec = reinterpret_cast<ExecFn>(ResultFetchNative::loadedSymbol("libsqlite3.so.0", "sqlite3_exec"));
    auto release = reinterpret_cast<FreeFn>(ResultFetchNative::loadedSymbol("libsqlite3.so.0", "sqlite3_free"));
    if (!connection || !exec || !release)
        return false;
    char *error = nullptr;
    const QByteArray sql = statements.toUtf8();
    if (exec(connection, sql.constData(), nullptr, nullptr, &error) == 0)
        return true;
    const QString message = error ? QString::fromUtf8(error) : QStringLiteral("SQLite reported a failure without a message.");
    release(error);
    throw VantryError(message);
}
