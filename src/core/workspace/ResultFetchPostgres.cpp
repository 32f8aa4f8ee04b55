#include "ResultFetchNative.h"

#include "app/VantryError.h"

#include <QSqlDriver>
#include <charconv>
#include <cstdlib>

namespace {

// libpq is reached through the copy the QPSQL driver loaded, so only its C interface is declared.
struct PGconn;
struct PGresult;
using Oid = unsigned int;

enum PgStatus { PgCommandOk = 1, PgTuplesOk = 2, PgSingleTuple = 9 };
enum PgTransaction { PgTransIdle = 0 };

struct PostgresApi
{
    PGresult *(*exec)(PGconn *, const char *) = nullptr;
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
    int (*transactionStatus)(const PGconn *) = nullptr;
    unsigned char *(*unescapeBytea)(const unsigned char *, size_t *) = nullptr;
    void (*freemem)(void *) = nullptr;

    bool load()
    {
        const char *lib = "libpq.so.5";
        auto get = [lib](auto &fn, const char *name) {
            fn = reinterpret_cast<std::remove_reference_t<decltype(fn)>>(
                ResultFetchNative::loadedSymbol(lib, name));
            return fn != nullptr;
        };
        return get(exec, "PQexec") && get(resultStatus, "PQresultStatus")
               && get(resultErrorMessage, "PQresultErrorMessage")
               && get(errorMessage, "PQerrorMessage") && get(clear, "PQclear")
               && get(ntuples, "PQntuples") && get(nfields, "PQnfields")
               && get(fname, "PQfname") && get(ftype, "PQftype") && get(getvalue, "PQgetvalue")
               && get(getlength, "PQgetlength") && get(getisnull, "PQgetisnull")
               && get(transactionStatus, "PQtransactionStatus")
               && get(unescapeBytea, "PQunescapeBytea") && get(freemem, "PQfreemem");
    }
};

const PostgresApi *postgresApi()
{
    static const PostgresApi api = [] {
        PostgresApi loaded;
        if (!loaded.load())
            loaded.exec = nullptr;
        return loaded;
    }();
    return api.exec ? &api : nullptr;
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
    return negative ? -qint64(value) : qint64(value);
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

class PostgresReader
{
public:
    PostgresReader(const PostgresApi *api, PGconn *conn) : m_api(api), m_conn(conn) {}

    void exec(const QByteArray &command)
    {
        PgResult result(m_api, m_api->exec(m_conn, command.constData()));
        check(result.get(), PgCommandOk);
    }

    void check(PGresult *result, int expected)
    {
        if (!result)
            throw VantryError(QString::fromUtf8(m_api->errorMessage(m_conn)).trimmed());
        if (m_api->resultStatus(result) != expected
            && !(expected == PgTuplesOk && m_api->resultStatus(result) == PgCommandOk))
            throw VantryError(QString::fromUtf8(m_api->resultErrorMessage(result)).trimmed());
    }

    // Adds the rows of one FETCH to the table; returns how many it held.
    int append(ResultTable &table, PGresult *result, int maxRows)
    {
        const int fields = m_api->nfields(result);
        if (table.columnCount() == 0) {
            m_decode.clear();
            for (int col = 0; col < fields; ++col) {
                const Oid oid = m_api->ftype(result, col);
                const PgType type = pgType(oid);
                m_decode.push_back(type.decode);
                table.addColumn(QString::fromUtf8(m_api->fname(result, col)),
                                type.name ? QString::fromLatin1(type.name)
                                          : QStringLiteral("oid %1").arg(oid),
                                type.decode == Decode::Boolean ? QMetaType::Bool
                                                               : QMetaType::UnknownType);
            }
        }
        const int rows = std::min(m_api->ntuples(result), maxRows);
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
        return rows;
    }

private:
    const PostgresApi *m_api;
    PGconn *m_conn;
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

std::unique_ptr<ResultTable> ResultFetchNative::fetchPostgres(const QSqlDatabase &db,
                                                              const QString &statement,
                                                              qint64 recordLimit)
{
    const QVariant handle = db.driver()->handle();
    if (!handle.isValid()
        || (qstrcmp(handle.typeName(), "PGconn*") != 0 && qstrcmp(handle.typeName(), "pg_conn*") != 0))
        return nullptr;
    PGconn *conn = *static_cast<PGconn *const *>(handle.constData());
    const PostgresApi *api = postgresApi();
    // Inside a transaction of the user a failing DECLARE would abort it, so such a connection
    // takes the generic path.
    if (!conn || !api || api->transactionStatus(conn) != PgTransIdle)
        return nullptr;

    const QByteArray sql = withoutTrailingSemicolons(statement);
    auto table = std::make_unique<ResultTable>();
    PostgresReader reader(api, conn);

    // With a record limit the server stops after limit + 1 rows and streams them in one result,
    // which is the fastest way through libpq. Should the statement not fit in a subquery, the
    // cursor below runs it as written (and reports its error, if any).
    if (recordLimit > 0) {
        PgResult limited(api, api->exec(conn, "SELECT * FROM (" + sql + "\n) AS vantry_limited LIMIT "
                                                  + QByteArray::number(recordLimit + 1)));
        if (limited.get() && api->resultStatus(limited.get()) == PgTuplesOk) {
            const int got = api->ntuples(limited.get());
            reader.append(*table, limited.get(), int(std::min<qint64>(got, recordLimit)));
            table->finishFetch(got > recordLimit);
            return table;
        }
    }

    // A cursor fetched in batches keeps the client's memory bounded however large the result.
    constexpr qint64 Batch = 20000;
    reader.exec("BEGIN");
    try {
        reader.exec("DECLARE vantry_result NO SCROLL CURSOR FOR " + sql);
        qint64 rows = 0;
        bool truncated = false;
        for (;;) {
            const qint64 wanted = recordLimit > 0 ? std::min(Batch, recordLimit - rows + 1) : Batch;
            PgResult batch(api, api->exec(conn, "FETCH FORWARD " + QByteArray::number(wanted)
                                                    + " FROM vantry_result"));
            reader.check(batch.get(), PgTuplesOk);
            const int got = api->ntuples(batch.get());
            const int keep = recordLimit > 0 ? int(std::min<qint64>(got, recordLimit - rows)) : got;
            rows += reader.append(*table, batch.get(), keep);
            if (keep < got) {
                truncated = true;
                break;
            }
            if (got < wanted)
                break;
        }
        reader.exec("CLOSE vantry_result");
        reader.exec("COMMIT");
        table->finishFetch(truncated);
        return table;
    } catch (...) {
        PgResult rollback(api, api->exec(conn, "ROLLBACK"));
        throw;
    }
}
