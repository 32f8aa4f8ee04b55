#include "core/workspace/ResultFetchNative.h"

#include "core/base/VantryError.h"

#include <QSqlDriver>
#include <charconv>
#include <cstdlib>

namespace {

// libpq is reached through the copy the QPSQL driver loaded, so only its C interface is declared.
struct PGconn;
struct PGresult;
using Oid = unsigned int;

enum PgStatus { PgCommandOk = 1, PgTuplesOk = 2, PgSingleTuple = 9 };

struct PostgresApi
{
    int (*resultStatus)(const PGresult *) = nullptr;
    char *(*resultErrorMessage)(const PGresult *) = nullptr;
    char *(*errorMessage)(const PGconn *) = nullptr;
    void (*clear)(PGresult *) = nullptr;
    int (*ntuples)(const PGresult *) = nullptr;
    int (*nfields)(const PGresult *) = nullptr;
    char *(*fname)(const PGresult *, int) = nullptr;
    Oid (*ftype)(const PGresult *, int) = nullptr;
    char *(*getvalue)(const PGresult *, int, int) = nullptr;
    int (*getlength)(const PGresult *, int, int) = nullptr;
    int (*getisnull)(const PGresult *, int, int) = nullptr;
    unsigned char *(*unescapeBytea)(const unsigned char *, size_t *) = nullptr;
    void (*freemem)(void *) = nullptr;
    int (*sendQuery)(PGconn *, const char *) = nullptr;
    int (*setSingleRowMode)(PGconn *) = nullptr;
    PGresult *(*getResult)(PGconn *) = nullptr;
    void *(*getCancel)(PGconn *) = nullptr;
    int (*cancel)(void *, char *, int) = nullptr;
    void (*freeCancel)(void *) = nullptr;

    bool load()
    {
        const char *lib = "libpq.so.5";
        auto get = [lib](auto &fn, const char *name) {
            fn = reinterpret_cast<std::remove_reference_t<decltype(fn)>>(
                ResultFetchNative::loadedSymbol(lib, name));
            return fn != nullptr;
        };
        return get(resultStatus, "PQresultStatus")
               && get(resultErrorMessage, "PQresultErrorMessage")
               && get(errorMessage, "PQerrorMessage") && get(clear, "PQclear")
               && get(ntuples, "PQntuples") && get(nfields, "PQnfields")
               && get(fname, "PQfname") && get(ftype, "PQftype") && get(getvalue, "PQgetvalue")
               && get(getlength, "PQgetlength") && get(getisnull, "PQgetisnull")
               && get(unescapeBytea, "PQunescapeBytea") && get(freemem, "PQfreemem")
               && get(sendQuery, "PQsendQuery") && get(setSingleRowMode, "PQsetSingleRowMode")
               && get(getResult, "PQgetResult") && get(getCancel, "PQgetCancel")
               && get(cancel, "PQcancel") && get(freeCancel, "PQfreeCancel");
    }
};

const PostgresApi *postgresApi()
{
    return ResultFetchNative::loadedApi<PostgresApi>();
}

enum class Decode { Integer, Real, Boolean, Bytes, Text };

struct PgType
{
    Decode decode;
    const char *name;
};

PgType pgType(Oid oid)
{
    switch (oid) {
    case 16: return {Decode::Boolean, "bool"};
    case 17: return {Decode::Bytes, "bytea"};
    case 20: return {Decode::Integer, "int8"};
    case 21: return {Decode::Integer, "int2"};
    case 23: return {Decode::Integer, "int4"};
    case 26: return {Decode::Integer, "oid"};
    case 700: return {Decode::Real, "float4"};
    case 701: return {Decode::Real, "float8"};
    case 18: return {Decode::Text, "char"};
    case 19: return {Decode::Text, "name"};
    case 25: return {Decode::Text, "text"};
    case 114: return {Decode::Text, "json"};
    case 1042: return {Decode::Text, "bpchar"};
    case 1043: return {Decode::Text, "varchar"};
    case 1082: return {Decode::Text, "date"};
    case 1083: return {Decode::Text, "time"};
    case 1114: return {Decode::Text, "timestamp"};
    case 1184: return {Decode::Text, "timestamptz"};
    // numeric stays text so that no digit is lost on the way to the grid and back
    case 1700: return {Decode::Text, "numeric"};
    case 2950: return {Decode::Text, "uuid"};
    case 3802: return {Decode::Text, "jsonb"};
    default: return {Decode::Text, nullptr};
    }
}

qint64 parseInteger(const char *text)
{
    bool negative = *text == '-';
    if (negative)
        ++text;
    quint64 value = 0;
    while (*text >= '0' && *text <= '9')
        value = value * 10 + quint64(*text++ - '0');
    // Negated while unsigned: the smallest bigint has no positive counterpart to negate.
    return negative ? qint64(0 - value) : qint64(value);
}

double parseReal(const char *text, int length)
{
    double value = 0;
    const auto [end, error] = std::from_chars(text, text + length, value);
    // from_chars does not know PostgreSQL's spelling of the special values.
    if (error != std::errc() || end != text + length)
        return std::strtod(text, nullptr);
    return value;
}

class PgResult
{
public:
    PgResult(const PostgresApi *api, PGresult *result) : m_api(api), m_result(result) {}
    ~PgResult() { m_api->clear(m_result); }
    PgResult(const PgResult &) = delete;
    PgResult &operator=(const PgResult &) = delete;
    PGresult *get() const { return m_result; }

private:
    const PostgresApi *m_api;
    PGresult *m_result;
};

// Reads a server-side cursor in a transaction of its own: each batch is one FETCH, so the client
// holds no more than one batch of libpq's result however large the query's result is.
// Streams the query's rows in libpq's single-row mode: the client holds one row of libpq's
// result at a time however large the result is, and the server sends rows as fast as a plain
// query does. The connection is busy until the last row is read; ending the result early
// cancels the query and drains what is still on its way.
class PostgresCursor : public ResultCursor
{
public:
    PostgresCursor(const PostgresApi *api, PGconn *conn) : m_api(api), m_conn(conn) {}
    ~PostgresCursor() override { close(); }

    // Sends the query and reads the result's columns from its first row (or its empty end).
    void start(const QByteArray &sql)
    {
        if (!m_api->sendQuery(m_conn, sql.constData()))
            throw VantryError(QString::fromUtf8(m_api->errorMessage(m_conn)).trimmed());
        m_open = true;
        m_api->setSingleRowMode(m_conn);
        try {
            m_pending = next();
            describe(m_pending);
        } catch (...) {
            close();
            throw;
        }
    }

    bool fetch(ResultTable &batch, qint64 maxRows) override
    {
        try {
            for (qint64 rows = 0; rows < maxRows; ++rows) {
                PGresult *row = m_pending ? std::exchange(m_pending, nullptr) : (m_open ? next() : nullptr);
                if (!row || m_api->resultStatus(row) != PgSingleTuple) {
                    // The end of the rows (a result of none, or no result at all).
                    if (row)
                        m_api->clear(row);
                    drain();
                    return false;
                }
                PgResult owned(m_api, row);
                append(batch, row, 1);
            }
            return true;
        } catch (...) {
            close();
            throw;
        }
    }

    void close() override
    {
        if (m_pending)
            m_api->clear(std::exchange(m_pending, nullptr));
        if (!m_open)
            return;
        // Rows still on their way: ask the server to stop sending them, then read what came.
        if (void *token = m_api->getCancel(m_conn)) {
            char error[256];
            m_api->cancel(token, error, int(sizeof error));
            m_api->freeCancel(token);
        }
        drain();
    }

    QString path() const override { return QStringLiteral("postgres"); }

private:
    // The next result of the query; throws with the server's message on an error.
    PGresult *next()
    {
        PGresult *result = m_api->getResult(m_conn);
        if (!result) {
            m_open = false;
            return nullptr;
        }
        const int status = m_api->resultStatus(result);
        if (status != PgSingleTuple && status != PgTuplesOk && status != PgCommandOk) {
            const QString message = QString::fromUtf8(m_api->resultErrorMessage(result)).trimmed();
            m_api->clear(result);
            drain();
            throw VantryError(message.isEmpty() ? QString::fromUtf8(m_api->errorMessage(m_conn)).trimmed() : message);
        }
        return result;
    }

    // Reads and drops whatever the query still has to say, so the connection is free again.
    void drain()
    {
        while (m_open) {
            PGresult *result = m_api->getResult(m_conn);
            if (!result)
                m_open = false;
            else
                m_api->clear(result);
        }
    }

    void describe(PGresult *result)
    {
        const int fields = m_api->nfields(result);
        for (int col = 0; col < fields; ++col) {
            const Oid oid = m_api->ftype(result, col);
            const PgType type = pgType(oid);
            m_decode.push_back(type.decode);
            addColumn(QString::fromUtf8(m_api->fname(result, col)),
                      type.name ? QString::fromLatin1(type.name) : QStringLiteral("oid %1").arg(oid),
                      type.decode == Decode::Boolean ? QMetaType::Bool : QMetaType::UnknownType);
        }
    }

    void append(ResultTable &table, PGresult *result, int rows)
    {
        const int fields = int(m_decode.size());
        for (int col = 0; col < fields; ++col)
            table.column(col).reserve(table.column(col).rowCount() + rows);
        // Row by row: libpq keeps each row's values together, so this order reads memory in turn.
        for (int row = 0; row < rows; ++row) {
            for (int col = 0; col < fields; ++col) {
                ResultColumn &column = table.column(col);
                if (m_api->getisnull(result, row, col)) {
                    column.appendNull();
                    continue;
                }
                const char *text = m_api->getvalue(result, row, col);
                switch (m_decode[size_t(col)]) {
                case Decode::Integer:
                    column.appendInt(parseInteger(text));
                    break;
                case Decode::Real:
                    column.appendReal(parseReal(text, m_api->getlength(result, row, col)));
                    break;
                case Decode::Boolean:
                    column.appendInt(text[0] == 't' ? 1 : 0);
                    break;
                case Decode::Bytes: {
                    size_t size = 0;
                    unsigned char *bytes =
                        m_api->unescapeBytea(reinterpret_cast<const unsigned char *>(text), &size);
                    if (!bytes)
                        throw VantryError(QStringLiteral("Out of memory decoding a bytea value"));
                    column.appendBytes(reinterpret_cast<const char *>(bytes), size);
                    m_api->freemem(bytes);
                    break;
                }
                case Decode::Text:
                    column.appendText(text, size_t(m_api->getlength(result, row, col)));
                    break;
                }
            }
        }
    }

    const PostgresApi *m_api;
    PGconn *m_conn;
    bool m_open = false;            // the query still has results to read
    PGresult *m_pending = nullptr;  // the first row, read to learn the columns
    std::vector<Decode> m_decode;
};

QByteArray withoutTrailingSemicolons(const QString &statement)
{
    QString text = statement.trimmed();
    while (text.endsWith(QLatin1Char(';')))
        text = text.chopped(1).trimmed();
    return text.toUtf8();
}

} // namespace

std::unique_ptr<ResultCursor> ResultFetchNative::openPostgres(const QSqlDatabase &db, const QString &statement)
{
    const QVariant handle = db.driver()->handle();
    if (!handle.isValid()
        || (qstrcmp(handle.typeName(), "PGconn*") != 0 && qstrcmp(handle.typeName(), "pg_conn*") != 0))
        return nullptr;
    PGconn *conn = *static_cast<PGconn *const *>(handle.constData());
    const PostgresApi *api = postgresApi();
    if (!conn || !api)
        return nullptr;
    auto cursor = std::make_unique<PostgresCursor>(api, conn);
    cursor->start(withoutTrailingSemicolons(statement));
    return cursor;
}
