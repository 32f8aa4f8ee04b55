// ODBC results read from the statement's handle, each value in the form that keeps it exact:
// integers and doubles as such, binary as bytes, and everything else (decimals, dates, times with
// their fractions, texts) as the driver's own text. Qt's ODBC driver turns timestamps into
// QDateTime (milliseconds) and decimals into doubles, which the grid could not write back.
//
// Rows arrive in blocks: every column is bound (SQLBindCol, column-wise) to an array of rows and
// one SQLFetch fills the whole array. A bound buffer holds short values; a value longer than its
// buffer (declared sizes are no promise: a SQLite column takes any length, PostgreSQL's numeric
// and json report sizes their values exceed) is read again whole with SQLGetData, after
// positioning on its row when the block holds several. How far a driver allows that decides the
// block: several rows when it can read bound columns of any row of a block (SQL_GD_BLOCK and
// SQL_GD_BOUND), one row when it can read bound columns only (SQL_GD_BOUND), and otherwise one
// row with only the numbers bound and every other value read with SQLGetData, after the bound
// columns as ODBC requires. (MariaDB's driver is the exception explained in bind().)
#include "core/workspace/ResultFetchNative.h"

#include "core/connections/ODBCHUn.h"
#include "core/workspace/EngineCancel.h"
#include "core/base/SqlErrorText.h"
#include "core/base/VantryError.h"

#include <QSqlDriver>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlResult>

#include <algorithm>
#include <limits>
#include <cstring>
#include <string>

namespace {

struct OdbcApi
{
    SQLRETURN (*fetch)(SQLHSTMT) = nullptr;
    SQLRETURN (*getData)(SQLHSTMT, SQLUSMALLINT, SQLSMALLINT, SQLPOINTER, SQLLEN, SQLLEN *) = nullptr;
    SQLRETURN (*bindCol)(SQLHSTMT, SQLUSMALLINT, SQLSMALLINT, SQLPOINTER, SQLLEN, SQLLEN *) = nullptr;
    SQLRETURN (*setStmtAttr)(SQLHSTMT, SQLINTEGER, SQLPOINTER, SQLINTEGER) = nullptr;
    SQLRETURN (*setPos)(SQLHSTMT, SQLSETPOSIROW, SQLUSMALLINT, SQLUSMALLINT) = nullptr;
    SQLRETURN (*freeStmt)(SQLHSTMT, SQLUSMALLINT) = nullptr;
    SQLRETURN (*getInfo)(SQLHDBC, SQLUSMALLINT, SQLPOINTER, SQLSMALLINT, SQLSMALLINT *) = nullptr;
    SQLRETURN (*execDirect)(SQLHSTMT, SQLWCHAR *, SQLINTEGER) = nullptr;
    SQLRETURN (*numResultCols)(SQLHSTMT, SQLSMALLINT *) = nullptr;
    SQLRETURN (*describeCol)(SQLHSTMT, SQLUSMALLINT, SQLWCHAR *, SQLSMALLINT, SQLSMALLINT *, SQLSMALLINT *, SQLULEN *,
                             SQLSMALLINT *, SQLSMALLINT *) = nullptr;
    SQLRETURN (*colAttribute)(SQLHSTMT, SQLUSMALLINT, SQLUSMALLINT, SQLPOINTER, SQLSMALLINT, SQLSMALLINT *,
                              SQLLEN *) = nullptr;

    template<typename F>
    static bool find(F &pointer, const char *name)
    {
        pointer = reinterpret_cast<F>(ResultFetchNative::loadedSymbol("libodbc.so.2", name));
        return pointer != nullptr;
    }

    bool load()
    {
        return find(fetch, "SQLFetch") && find(getData, "SQLGetData") && find(bindCol, "SQLBindCol")
            && find(setStmtAttr, "SQLSetStmtAttr") && find(setPos, "SQLSetPos") && find(freeStmt, "SQLFreeStmt")
            && find(getInfo, "SQLGetInfoW") && find(execDirect, "SQLExecDirectW")
            && find(numResultCols, "SQLNumResultCols") && find(describeCol, "SQLDescribeColW")
            && find(colAttribute, "SQLColAttributeW");
    }
};

const OdbcApi *odbcApi()
{
    return ResultFetchNative::loadedApi<OdbcApi>();
}

enum class Read { Integer, Real, Bytes, Text };

// How a column of an ODBC SQL type is read, and the type name the rest of the program knows it
// by: the name of the type the generic path gives its values (Qt's ODBC driver), so that both
// paths describe a result alike.
struct OdbcType
{
    Read read;
    QString name;
};

OdbcType odbcType(SQLSMALLINT sqlType, bool isUnsigned)
{
    switch (sqlType) {
    case SQL_BIT: case SQL_INTEGER: case SQL_SMALLINT:
        return {Read::Integer, isUnsigned ? QStringLiteral("uint") : QStringLiteral("int")};
    case SQL_TINYINT: // named unsigned whatever its sign, as Qt's driver names it; the value keeps its sign
        return {Read::Integer, QStringLiteral("uint")};
    case SQL_BIGINT:
        return {Read::Integer, isUnsigned ? QStringLiteral("qulonglong") : QStringLiteral("qlonglong")};
    case SQL_FLOAT: case SQL_REAL: case SQL_DOUBLE:
        return {Read::Real, QStringLiteral("double")};
    case SQL_BINARY: case SQL_VARBINARY: case SQL_LONGVARBINARY:
        return {Read::Bytes, QStringLiteral("QByteArray")};
    case SQL_NUMERIC:
        return {Read::Text, QStringLiteral("numeric")};
    case SQL_DECIMAL:
        return {Read::Text, QStringLiteral("decimal")};
    // Dates and times keep the names that tell the write-back they are not compared with "=";
    // their values stay the driver's text, fractions included.
    case SQL_DATE: case SQL_TYPE_DATE:
        return {Read::Text, QStringLiteral("QDate")};
    case SQL_TIME: case SQL_TYPE_TIME:
        return {Read::Text, QStringLiteral("QTime")};
    case SQL_TIMESTAMP: case SQL_TYPE_TIMESTAMP:
        return {Read::Text, QStringLiteral("QDateTime")};
    case SQL_CHAR: case SQL_VARCHAR: case SQL_LONGVARCHAR: case SQL_WCHAR: case SQL_WVARCHAR:
    case SQL_WLONGVARCHAR: case SQL_GUID:
        return {Read::Text, QStringLiteral("QString")};
    default:
        return {Read::Text, QStringLiteral("QByteArray")};
    }
}

// A result column as the driver describes it.
struct Described
{
    QString name;
    OdbcType type;
    int size; // declared size (characters or bytes), 0 when unknown
};

// Bound buffers stay small: a text column takes at most this many UTF-16 units per row, and a
// block at most BlockBytes of buffers (and at most BlockRows rows). Longer values are read again
// with SQLGetData.
constexpr SQLLEN MaxBoundUnits = 512;
constexpr SQLLEN BlockBytes = 2 << 20;
constexpr SQLULEN BlockRows = 1024;

// UTF-16 (as the driver writes SQL_C_WCHAR) to UTF-8, replacing a lone surrogate with U+FFFD as
// QString's own conversion does. ASCII, the common case, is copied a unit at a time.
void utf16ToUtf8(const char16_t *text, size_t units, std::string &out)
{
    out.clear();
    out.reserve(units * 3);
    for (size_t i = 0; i < units; ++i) {
        char32_t c = text[i];
        if (c < 0x80) {
            out.push_back(char(c));
            continue;
        }
        if (c >= 0xD800 && c < 0xDC00 && i + 1 < units && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000)
            c = 0x10000 + ((c - 0xD800) << 10) + (char32_t(text[++i]) - 0xDC00);
        else if (c >= 0xD800 && c < 0xE000)
            c = 0xFFFD;
        if (c < 0x800) {
            out.push_back(char(0xC0 | (c >> 6)));
        } else if (c < 0x10000) {
            out.push_back(char(0xE0 | (c >> 12)));
            out.push_back(char(0x80 | ((c >> 6) & 0x3F)));
        } else {
            out.push_back(char(0xF0 | (c >> 18)));
            out.push_back(char(0x80 | ((c >> 12) & 0x3F)));
            out.push_back(char(0x80 | ((c >> 6) & 0x3F)));
        }
        out.push_back(char(0x80 | (c & 0x3F)));
    }
}

// One result column: how it is read and, when bound, its slice of the block.
struct Column
{
    Read read;
    SQLSMALLINT cType;
    bool bound = false;
    SQLLEN width = 0;               // bytes per row of the bound buffer
    std::vector<char> data{};       // capacity rows of `width` bytes
    std::vector<SQLLEN> indicators{}; // one per row: length in bytes, or SQL_NULL_DATA

    // The bytes a bound value may fill, the terminator of texts aside.
    SQLLEN room() const { return read == Read::Text ? width - SQLLEN(sizeof(char16_t)) : width; }
};

SQLSMALLINT cTypeOf(Read read)
{
    switch (read) {
    case Read::Integer: return SQL_C_SBIGINT;
    case Read::Real: return SQL_C_DOUBLE;
    case Read::Bytes: return SQL_C_BINARY;
    case Read::Text: return SQL_C_WCHAR;
    }
    return SQL_C_WCHAR;
}

// Bytes per row of a bound buffer for a column of the given declared size (0 or less: unknown).
SQLLEN boundWidth(Read read, int declaredSize)
{
    if (read == Read::Integer || read == Read::Real)
        return 8;
    const SQLLEN size = declaredSize > 0 ? SQLLEN(declaredSize) : MaxBoundUnits;
    if (read == Read::Bytes)
        return std::clamp<SQLLEN>(size, 16, MaxBoundUnits);
    // Room for the terminator, and for a few characters more than declared (a sign, a point).
    return std::clamp<SQLLEN>(size + 8, 32, MaxBoundUnits) * SQLLEN(sizeof(char16_t));
}

// Bytes per row of a buffer that holds any value of the declared size (in characters, each up
// to two UTF-16 units), or 0 when the size is unknown or too large to bind whole.
SQLLEN wholeWidth(Read read, int declaredSize)
{
    constexpr int MaxWholeCharacters = 4000;
    if (read == Read::Integer || read == Read::Real)
        return 8;
    if (declaredSize <= 0 || declaredSize > MaxWholeCharacters)
        return 0;
    if (read == Read::Bytes)
        return std::max(declaredSize, 1);
    return (SQLLEN(declaredSize) * 2 + 8) * SQLLEN(sizeof(char16_t));
}

class OdbcCursor : public ResultCursor
{
public:
    OdbcCursor(const OdbcApi *api, const QSqlDatabase &db, EngineCancel *cancel)
        : m_api(api), m_query(db), m_cancel(cancel), m_connection(connectionHandle(db))
    {
        m_query.setForwardOnly(true);
    }
    ~OdbcCursor() override { close(); }

    // Runs the statement; false, before running it, when Qt's driver gives no statement handle.
    // Qt's driver makes the handle (and owns it); the statement then runs on it directly
    // (SQLExecDirect) rather than prepared: psqlODBC prepares on the server and then reads every
    // row of a prepared statement's result more slowly, for nothing when it runs once.
    bool start(const QString &statement, ResultFetchNative::OdbcFetch mode)
    {
        if (!m_query.prepare(statement)) {
            const QSqlError error = m_query.lastError();
            close();
            throw VantryError(sqlErrorText(error));
        }
        m_statement = handleOf(m_query);
        if (!m_statement)
            return false;
        if (m_cancel)
            m_cancel->watchStatement(&m_query);
        const std::unique_ptr<SQLWCHAR[]> text = Odbc::toSqlW(statement);
        const SQLRETURN rc = m_api->execDirect(m_statement, text.get(), SQL_NTS);
        if (rc != SQL_NO_DATA && !Odbc::succeeded(rc)) {
            QString message = Odbc::diagnostics(SQL_HANDLE_STMT, m_statement);
            if (message.isEmpty())
                message = QStringLiteral("The ODBC driver could not run the statement.");
            close();
            throw VantryError(message);
        }
        m_executed = true;
        const std::vector<Described> columns = describe();
        for (const Described &column : columns) {
            m_columns.push_back({column.type.read, cTypeOf(column.type.read)});
            addColumn(column.name, column.type.name);
        }
        m_open = !columns.empty();
        if (m_open && mode == ResultFetchNative::OdbcFetch::Block)
            bind(columns);
        return true;
    }

    bool fetch(ResultTable &batch, qint64 maxRows) override
    {
        for (qint64 rows = 0; m_open && rows < maxRows;) {
            if (m_next >= m_fetched && !fetchBlock(maxRows - rows))
                break;
            const SQLULEN take = std::min<SQLULEN>(m_fetched - m_next, SQLULEN(maxRows - rows));
            for (size_t col = 0; col < m_columns.size(); ++col)
                for (SQLULEN row = m_next; row < m_next + take; ++row)
                    readValue(batch.column(int(col)), col, row);
            m_next += take;
            rows += qint64(take);
        }
        return m_open;
    }

    void close() override
    {
        if (m_cancel)
            m_cancel->watchStatement(nullptr);
        m_cancel = nullptr;
        m_open = false;
        unbind();
        // The statement ran outside Qt's knowledge, so its cursor is closed here; Qt's driver
        // frees the handle with the query.
        if (m_executed && m_statement)
            m_api->freeStmt(m_statement, SQL_CLOSE);
        m_executed = false;
        m_query.finish();
    }

    QString path() const override { return QStringLiteral("odbc"); }

private:
    static SQLHANDLE handleOf(const QVariant &handle)
    {
        return handle.isValid() ? *static_cast<const SQLHANDLE *>(handle.constData()) : nullptr;
    }
    static SQLHSTMT handleOf(const QSqlQuery &query)
    {
        return handleOf(query.result() ? query.result()->handle() : QVariant());
    }
    static SQLHDBC connectionHandle(const QSqlDatabase &db)
    {
        return db.driver() ? handleOf(db.driver()->handle()) : nullptr;
    }

    SQLUINTEGER getDataExtensions() const
    {
        SQLUINTEGER extensions = 0;
        if (!m_connection || !Odbc::succeeded(m_api->getInfo(m_connection, SQL_GETDATA_EXTENSIONS, &extensions,
                                                             SQLSMALLINT(sizeof extensions), nullptr)))
            return 0;
        return extensions;
    }

    QString driverName() const
    {
        char16_t name[256] = {};
        SQLSMALLINT length = 0;
        if (!m_connection || !Odbc::succeeded(m_api->getInfo(m_connection, SQL_DRIVER_NAME, name, SQLSMALLINT(sizeof name), &length)))
            return QString();
        return QString::fromUtf16(name, std::min<qsizetype>(length / 2, std::size(name) - 1));
    }

    std::vector<Described> describe()
    {
        SQLSMALLINT count = 0;
        check(m_api->numResultCols(m_statement, &count), "SQLNumResultCols");
        std::vector<Described> columns;
        for (SQLUSMALLINT col = 1; col <= SQLUSMALLINT(std::max<SQLSMALLINT>(count, 0)); ++col) {
            SQLWCHAR name[256] = {};
            SQLSMALLINT nameLength = 0, sqlType = 0, digits = 0, nullable = 0;
            SQLULEN size = 0;
            check(m_api->describeCol(m_statement, col, name, SQLSMALLINT(std::size(name)), &nameLength, &sqlType, &size,
                                     &digits, &nullable),
                  "SQLDescribeCol");
            SQLLEN isUnsigned = SQL_FALSE;
            if (!Odbc::succeeded(m_api->colAttribute(m_statement, col, SQL_DESC_UNSIGNED, nullptr, 0, nullptr, &isUnsigned)))
                isUnsigned = SQL_FALSE;
            const qsizetype length = std::clamp<qsizetype>(nameLength, 0, qsizetype(std::size(name)) - 1);
            columns.push_back({Odbc::fromSqlW(name, length), odbcType(sqlType, isUnsigned == SQL_TRUE),
                               size > SQLULEN(std::numeric_limits<int>::max()) ? 0 : int(size)});
        }
        return columns;
    }

    // Binds the columns the driver lets us bind and sizes the block (see the top of the file).
    void bind(const std::vector<Described> &described)
    {
        const SQLUINTEGER extensions = getDataExtensions();
        const bool rereadBound = extensions & SQL_GD_BOUND;
        const bool anyColumn = extensions & SQL_GD_ANY_COLUMN;
        // MariaDB's driver claims SQL_GD_BLOCK, but after SQLSetPos on a forward-only result its
        // SQLGetData reads another row and its next SQLFetch starts in the wrong place. Its
        // declared sizes are the server's own limits, though, so its values are bound whole and
        // never need reading again; a column wider than that is read a row at a time.
        const bool mariaDb = driverName().contains(QLatin1String("maodbc"), Qt::CaseInsensitive);
        m_positioned = rereadBound && (extensions & SQL_GD_BLOCK) && !mariaDb;
        bool whole = rereadBound && mariaDb;
        for (size_t col = 0; whole && col < m_columns.size(); ++col)
            whole = wholeWidth(m_columns[col].read, described[col].size) > 0;
        SQLLEN rowBytes = 0;
        for (size_t col = 0; col < m_columns.size(); ++col) {
            Column &column = m_columns[col];
            const bool exact = column.read == Read::Integer || column.read == Read::Real;
            if (!exact && !rereadBound) {
                if (anyColumn)
                    continue;
                break; // the columns from here on are read with SQLGetData, in order
            }
            const int declared = described[col].size;
            column.bound = true;
            column.width = whole ? wholeWidth(column.read, declared) : boundWidth(column.read, declared);
            rowBytes += column.width + SQLLEN(sizeof(SQLLEN));
        }
        m_capacity = m_positioned || whole
                         ? std::clamp<SQLULEN>(SQLULEN(BlockBytes / std::max<SQLLEN>(rowBytes, 1)), 1, BlockRows)
                         : 1;
        for (size_t col = 0; col < m_columns.size(); ++col) {
            Column &column = m_columns[col];
            if (!column.bound)
                continue;
            column.data.resize(size_t(column.width) * m_capacity);
            column.indicators.resize(m_capacity);
            check(m_api->bindCol(m_statement, SQLUSMALLINT(col + 1), column.cType, column.data.data(), column.width,
                                 column.indicators.data()),
                  "SQLBindCol");
        }
        m_rowStatus.resize(m_capacity);
        check(m_api->setStmtAttr(m_statement, SQL_ATTR_ROW_BIND_TYPE, SQLPOINTER(SQL_BIND_BY_COLUMN), 0),
              "SQLSetStmtAttr(SQL_ATTR_ROW_BIND_TYPE)");
        check(m_api->setStmtAttr(m_statement, SQL_ATTR_ROW_STATUS_PTR, m_rowStatus.data(), 0),
              "SQLSetStmtAttr(SQL_ATTR_ROW_STATUS_PTR)");
        check(m_api->setStmtAttr(m_statement, SQL_ATTR_ROWS_FETCHED_PTR, &m_fetched, 0),
              "SQLSetStmtAttr(SQL_ATTR_ROWS_FETCHED_PTR)");
        m_bound = true;
    }

    // Returns the statement to the state Qt's driver left it in, before the buffers go away.
    void unbind()
    {
        if (!m_bound || !m_statement)
            return;
        m_bound = false;
        m_api->freeStmt(m_statement, SQL_UNBIND);
        m_api->setStmtAttr(m_statement, SQL_ATTR_ROW_ARRAY_SIZE, SQLPOINTER(SQLULEN(1)), 0);
        m_api->setStmtAttr(m_statement, SQL_ATTR_ROW_STATUS_PTR, nullptr, 0);
        m_api->setStmtAttr(m_statement, SQL_ATTR_ROWS_FETCHED_PTR, nullptr, 0);
    }

    // Fetches the next block of at most `wanted` rows, so a record limit never reads past itself.
    // False at the end of the result.
    bool fetchBlock(qint64 wanted)
    {
        const SQLULEN size = std::min<SQLULEN>(m_capacity, SQLULEN(wanted));
        if (m_bound && size != m_arraySize) {
            check(m_api->setStmtAttr(m_statement, SQL_ATTR_ROW_ARRAY_SIZE, SQLPOINTER(size), 0),
                  "SQLSetStmtAttr(SQL_ATTR_ROW_ARRAY_SIZE)");
            m_arraySize = size;
        }
        const SQLRETURN rc = m_api->fetch(m_statement);
        if (rc == SQL_NO_DATA) {
            close();
            return false;
        }
        check(rc, "SQLFetch");
        if (!m_bound)
            m_fetched = 1;
        for (SQLULEN row = 0; m_bound && row < m_fetched; ++row)
            if (m_rowStatus[row] == SQL_ROW_ERROR)
                fail("SQLFetch");
        m_next = 0;
        if (m_fetched == 0)
            close();
        return m_fetched > 0;
    }

    void readValue(ResultColumn &out, size_t col, SQLULEN row)
    {
        const Column &column = m_columns[col];
        if (!column.bound)
            return readUnbound(out, col);
        const SQLLEN indicator = column.indicators[row];
        if (indicator == SQL_NULL_DATA)
            return out.appendNull();
        const char *value = column.data.data() + size_t(column.width) * row;
        switch (column.read) {
        case Read::Integer: {
            qint64 number;
            std::memcpy(&number, value, sizeof number);
            return out.appendInt(number);
        }
        case Read::Real: {
            double number;
            std::memcpy(&number, value, sizeof number);
            return out.appendReal(number);
        }
        case Read::Bytes:
        case Read::Text:
            if (indicator == SQL_NO_TOTAL || indicator > column.room()) {
                position(row);
                return readUnbound(out, col);
            }
            if (column.read == Read::Bytes)
                return out.appendBytes(value, size_t(indicator));
            utf16ToUtf8(reinterpret_cast<const char16_t *>(value), size_t(indicator) / sizeof(char16_t), m_utf8);
            return out.appendText(m_utf8.data(), m_utf8.size());
        }
    }

    // Makes `row` of the block the one SQLGetData reads.
    void position(SQLULEN row)
    {
        if (m_arraySize == 1)
            return;
        if (!m_positioned) // bound whole, yet longer than the column's declared size
            fail("a value longer than its column's declared size");
        check(m_api->setPos(m_statement, SQLSETPOSIROW(row + 1), SQL_POSITION, SQL_LOCK_NO_CHANGE), "SQLSetPos");
    }

    // Reads a value of the current row with SQLGetData, whatever its length.
    void readUnbound(ResultColumn &out, size_t col)
    {
        const Column &column = m_columns[col];
        const SQLUSMALLINT number = SQLUSMALLINT(col + 1);
        SQLLEN indicator = 0;
        switch (column.read) {
        case Read::Integer: {
            qint64 value = 0;
            check(m_api->getData(m_statement, number, SQL_C_SBIGINT, &value, sizeof value, &indicator), "SQLGetData");
            return indicator == SQL_NULL_DATA ? out.appendNull() : out.appendInt(value);
        }
        case Read::Real: {
            double value = 0;
            check(m_api->getData(m_statement, number, SQL_C_DOUBLE, &value, sizeof value, &indicator), "SQLGetData");
            return indicator == SQL_NULL_DATA ? out.appendNull() : out.appendReal(value);
        }
        case Read::Bytes: {
            if (!readLong(number, SQL_C_BINARY, 0))
                return out.appendNull();
            return out.appendBytes(m_long.constData(), size_t(m_long.size()));
        }
        case Read::Text: {
            if (!readLong(number, SQL_C_WCHAR, sizeof(char16_t)))
                return out.appendNull();
            utf16ToUtf8(reinterpret_cast<const char16_t *>(m_long.constData()), size_t(m_long.size()) / 2, m_utf8);
            return out.appendText(m_utf8.data(), m_utf8.size());
        }
        }
    }

    // Reads a value of any length in pieces into m_long; false for NULL. `terminator` is the
    // size of the zero the driver writes after each piece of text (none for binary).
    bool readLong(SQLUSMALLINT number, SQLSMALLINT type, int terminator)
    {
        m_long.clear();
        char piece[8192];
        for (;;) {
            SQLLEN indicator = 0;
            const SQLRETURN rc = m_api->getData(m_statement, number, type, piece, sizeof piece, &indicator);
            if (rc == SQL_NO_DATA)
                return true;
            check(rc, "SQLGetData");
            if (indicator == SQL_NULL_DATA)
                return false;
            const bool more = rc == SQL_SUCCESS_WITH_INFO;
            const SQLLEN room = SQLLEN(sizeof piece) - terminator;
            m_long.append(piece, int(more || indicator < 0 || indicator > room ? room : indicator));
            if (!more)
                return true;
        }
    }

    void check(SQLRETURN rc, const char *call)
    {
        if (!Odbc::succeeded(rc))
            fail(call);
    }

    // Ends the result and throws the driver's diagnostics for the failed call.
    [[noreturn]] void fail(const char *call)
    {
        QString message = QStringLiteral("The ODBC driver could not read the result (%1)").arg(QLatin1String(call));
        try {
            message = Odbc::errorText(message + QLatin1Char(':'), SQL_HANDLE_STMT, m_statement);
        } catch (const VantryError &) {
            // the diagnostics are a courtesy; the call's name already says what failed
        }
        close();
        throw VantryError(message);
    }

    const OdbcApi *m_api;
    QSqlQuery m_query;
    EngineCancel *m_cancel;
    SQLHDBC m_connection;
    SQLHSTMT m_statement = nullptr;
    std::vector<Column> m_columns;
    std::vector<SQLUSMALLINT> m_rowStatus;
    SQLULEN m_capacity = 1;  // rows per block
    SQLULEN m_arraySize = 1; // rows the statement fetches at a time now
    SQLULEN m_fetched = 0;   // rows in the current block
    SQLULEN m_next = 0;      // the block's next row to hand out
    bool m_bound = false;
    bool m_executed = false; // a cursor may be open on the statement
    bool m_positioned = false; // SQLGetData may read any row of a block after SQLSetPos
    bool m_open = false;
    std::string m_utf8;
    QByteArray m_long;
};

} // namespace

std::unique_ptr<ResultCursor> ResultFetchNative::openOdbc(const QSqlDatabase &db, const QString &statement,
                                                          EngineCancel *cancel, OdbcFetch mode)
{
    const OdbcApi *api = odbcApi();
    if (db.driverName() != QLatin1String("QODBC") || !api)
        return nullptr;
    auto cursor = std::make_unique<OdbcCursor>(api, db, cancel);
    if (!cursor->start(statement, mode))
        return nullptr;
    return cursor;
}
