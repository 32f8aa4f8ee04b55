#include "core/workspace/ResultFetchNative.h"

#include "core/base/VantryError.h"

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
    return ResultFetchNative::loadedApi<SqliteApi>();
}

QMetaType::Type logicalTypeOf(const char *declared)
{
    const QByteArray type = QByteArray(declared ? declared : "").toLower();
    return type.startsWith("bool") ? QMetaType::Bool : QMetaType::UnknownType;
}

// Steps a prepared statement batch by batch; the statement stays prepared between batches.
class SqliteCursor : public ResultCursor
{
public:
    SqliteCursor(const SqliteApi *api, sqlite3 *connection, sqlite3_stmt *stmt)
        : m_api(api), m_connection(connection), m_stmt(stmt)
    {
        const int columns = api->columnCount(stmt);
        for (int col = 0; col < columns; ++col) {
            const char *declared = api->columnDecltype(stmt, col);
            addColumn(QString::fromUtf8(api->columnName(stmt, col)),
                      QString::fromUtf8(declared ? declared : ""), logicalTypeOf(declared));
        }
    }
    ~SqliteCursor() override { close(); }

    bool fetch(ResultTable &batch, qint64 maxRows) override
    {
        if (!m_stmt)
            return false;
        // No reserve: the row count is unknown, and a column grows in place.
        const int columns = batch.columnCount();
        for (qint64 rows = 0; rows < maxRows; ++rows) {
            const int rc = m_api->step(m_stmt);
            if (rc == SQLITE_DONE) {
                close();
                return false;
            }
            if (rc != SQLITE_ROW) {
                const QString message = QString::fromUtf8(m_api->errmsg(m_connection));
                close();
                throw VantryError(message);
            }
            appendRow(batch, columns);
        }
        return true;
    }

    void close() override
    {
        if (m_stmt)
            m_api->finalize(m_stmt);
        m_stmt = nullptr;
    }

    QString path() const override { return QStringLiteral("sqlite"); }

private:
    void appendRow(ResultTable &batch, int columns)
    {
        for (int col = 0; col < columns; ++col) {
            ResultColumn &column = batch.column(col);
            switch (m_api->columnType(m_stmt, col)) {
            case SQLITE_INTEGER:
                column.appendInt(m_api->columnInt64(m_stmt, col));
                break;
            case SQLITE_FLOAT:
                column.appendReal(m_api->columnDouble(m_stmt, col));
                break;
            case SQLITE_TEXT: {
                const auto *text = reinterpret_cast<const char *>(m_api->columnText(m_stmt, col));
                column.appendText(text, size_t(m_api->columnBytes(m_stmt, col)));
                break;
            }
            case SQLITE_BLOB: {
                const auto *blob = static_cast<const char *>(m_api->columnBlob(m_stmt, col));
                column.appendBytes(blob, size_t(m_api->columnBytes(m_stmt, col)));
                break;
            }
            default:
                column.appendNull();
                break;
            }
        }
    }

    const SqliteApi *m_api;
    sqlite3 *m_connection;
    sqlite3_stmt *m_stmt;
};

} // namespace

std::unique_ptr<ResultCursor> ResultFetchNative::openSqlite(const QSqlDatabase &db, const QString &statement)
{
    const QVariant handle = db.driver()->handle();
    if (!handle.isValid() || qstrcmp(handle.typeName(), "sqlite3*") != 0)
        return nullptr;
    sqlite3 *connection = *static_cast<sqlite3 *const *>(handle.constData());
    const SqliteApi *api = sqliteApi();
    if (!connection || !api)
        return nullptr;

    const QByteArray sql = statement.toUtf8();
    sqlite3_stmt *stmt = nullptr;
    if (api->prepare(connection, sql.constData(), int(sql.size()), &stmt, nullptr) != SQLITE_OK) {
        const QString message = QString::fromUtf8(api->errmsg(connection));
        api->finalize(stmt);
        throw VantryError(message);
    }
    if (!stmt)
        throw VantryError(QStringLiteral("The statement is empty"));
    return std::make_unique<SqliteCursor>(api, connection, stmt);
}
