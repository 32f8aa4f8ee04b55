#include "ResultFetchNative.h"

#include "app/VantryError.h"

#include <QSqlDriver>
#include <sqlite3.h>

namespace {

// The few sqlite3 entry points the fetch needs, taken from the library the QSQLITE driver loaded.
struct SqliteApi
{
    decltype(&sqlite3_prepare_v2) prepare = nullptr;
    decltype(&sqlite3_step) step = nullptr;
    decltype(&sqlite3_finalize) finalize = nullptr;
    decltype(&sqlite3_errmsg) errmsg = nullptr;
    decltype(&sqlite3_column_count) columnCount = nullptr;
    decltype(&sqlite3_column_name) columnName = nullptr;
    decltype(&sqlite3_column_decltype) columnDecltype = nullptr;
    decltype(&sqlite3_column_type) columnType = nullptr;
    decltype(&sqlite3_column_int64) columnInt64 = nullptr;
    decltype(&sqlite3_column_double) columnDouble = nullptr;
    decltype(&sqlite3_column_text) columnText = nullptr;
    decltype(&sqlite3_column_blob) columnBlob = nullptr;
    decltype(&sqlite3_column_bytes) columnBytes = nullptr;

    bool load()
    {
        const char *lib = "libsqlite3.so.0";
        auto get = [lib](auto &fn, const char *name) {
            fn = reinterpret_cast<std::remove_reference_t<decltype(fn)>>(
                ResultFetchNative::loadedSymbol(lib, name));
            return fn != nullptr;
        };
        return get(prepare, "sqlite3_prepare_v2") && get(step, "sqlite3_step")
               && get(finalize, "sqlite3_finalize") && get(errmsg, "sqlite3_errmsg")
               && get(columnCount, "sqlite3_column_count")
               && get(columnName, "sqlite3_column_name")
               && get(columnDecltype, "sqlite3_column_decltype")
               && get(columnType, "sqlite3_column_type")
               && get(columnInt64, "sqlite3_column_int64")
               && get(columnDouble, "sqlite3_column_double")
               && get(columnText, "sqlite3_column_text")
               && get(columnBlob, "sqlite3_column_blob")
               && get(columnBytes, "sqlite3_column_bytes");
    }
};

const SqliteApi *sqliteApi()
{
    static const SqliteApi api = [] {
        SqliteApi loaded;
        if (!loaded.load())
            loaded.step = nullptr;
        return loaded;
    }();
    return api.step ? &api : nullptr;
}

QMetaType::Type logicalTypeOf(const char *declared)
{
    const QByteArray type = QByteArray(declared ? declared : "").toLower();
    return type.startsWith("bool") ? QMetaType::Bool : QMetaType::UnknownType;
}

struct StatementGuard
{
    const SqliteApi *api;
    sqlite3_stmt *stmt = nullptr;
    ~StatementGuard() { api->finalize(stmt); }
};

} // namespace

std::unique_ptr<ResultTable> ResultFetchNative::fetchSqlite(const QSqlDatabase &db,
                                                            const QString &statement,
                                                            qint64 recordLimit)
{
    const QVariant handle = db.driver()->handle();
    if (!handle.isValid() || qstrcmp(handle.typeName(), "sqlite3*") != 0)
        return nullptr;
    sqlite3 *connection = *static_cast<sqlite3 *const *>(handle.constData());
    const SqliteApi *api = sqliteApi();
    if (!connection || !api)
        return nullptr;

    const QByteArray sql = statement.toUtf8();
    StatementGuard guard{api};
    if (api->prepare(connection, sql.constData(), int(sql.size()), &guard.stmt, nullptr) != SQLITE_OK)
        throw VantryError(QString::fromUtf8(api->errmsg(connection)));
    sqlite3_stmt *stmt = guard.stmt;
    if (!stmt)
        throw VantryError(QStringLiteral("The statement is empty"));

    auto table = std::make_unique<ResultTable>();
    const int columns = api->columnCount(stmt);
    for (int col = 0; col < columns; ++col) {
        const char *declared = api->columnDecltype(stmt, col);
        table->addColumn(QString::fromUtf8(api->columnName(stmt, col)),
                         QString::fromUtf8(declared ? declared : ""), logicalTypeOf(declared));
    }
    if (recordLimit > 0)
        for (int col = 0; col < columns; ++col)
            table->column(col).reserve(std::min<qint64>(recordLimit, 1 << 20));

    qint64 rows = 0;
    bool truncated = false;
    for (;;) {
        const int rc = api->step(stmt);
        if (rc == SQLITE_DONE)
            break;
        if (rc != SQLITE_ROW)
            throw VantryError(QString::fromUtf8(api->errmsg(connection)));
        if (recordLimit > 0 && rows == recordLimit) {
            truncated = true;
            break;
        }
        for (int col = 0; col < columns; ++col) {
            ResultColumn &column = table->column(col);
            switch (api->columnType(stmt, col)) {
            case SQLITE_INTEGER:
                column.appendInt(api->columnInt64(stmt, col));
                break;
            case SQLITE_FLOAT:
                column.appendReal(api->columnDouble(stmt, col));
                break;
            case SQLITE_TEXT: {
                const auto *text = reinterpret_cast<const char *>(api->columnText(stmt, col));
                column.appendText(text, size_t(api->columnBytes(stmt, col)));
                break;
            }
            case SQLITE_BLOB: {
                const auto *blob = static_cast<const char *>(api->columnBlob(stmt, col));
                column.appendBytes(blob, size_t(api->columnBytes(stmt, col)));
                break;
            }
            default:
                column.appendNull();
                break;
            }
        }
        ++rows;
    }
    table->finishFetch(truncated);
    return table;
}
