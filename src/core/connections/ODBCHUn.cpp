#include "core/connections/ODBCHUn.h"

#include "core/base/VantryError.h"

#include <QLibrary>
#include <QMutex>

#include <vector>

static_assert(sizeof(SQLWCHAR) == sizeof(char16_t), "the driver manager's SQLWCHAR must be UTF-16");

namespace Odbc {

const char *const kAllocEnvFailed = "SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, FHENV) Failed:";
const char *const kSetVersionFailed = "SQLSetEnvAttr(FHENV,SQL_ATTR_ODBC_VERSION, Pointer(SQL_OV_ODBC3),0) Failed:";
const char *const kAllocDbcFailed = "SQLAllocHandle(SQL_HANDLE_DBC, FHENV, fhdbc) Failed:";

namespace {

// The driver manager is loaded once per process and stays loaded: drivers it loaded may still
// be in use by Qt's ODBC plug-in, so it is never unloaded. (Destroying a QLibrary leaves its
// library loaded; the objects are kept here only so that nothing we allocate is lost.)
struct Loaded
{
    QMutex mutex;
    QStringList names;          // empty: the default names
    std::unique_ptr<Api> api;   // null until loaded (or after the names changed)
    std::vector<std::unique_ptr<QLibrary>> libraries;
};

Loaded &loaded()
{
    static Loaded instance;
    return instance;
}

template<typename F>
void resolve(QLibrary &library, F &pointer, const char *name)
{
    pointer = reinterpret_cast<F>(library.resolve(name));
    if (!pointer)
        throw VantryError(QStringLiteral("The ODBC driver manager %1 has no entry point %2.")
                              .arg(library.fileName(), QString::fromLatin1(name)));
}

std::unique_ptr<Api> load(const QStringList &names, std::vector<std::unique_ptr<QLibrary>> &libraries)
{
    QStringList failures;
    for (const QString &name : names) {
        auto owned = std::make_unique<QLibrary>(name);
        if (!owned->load()) {
            failures << owned->errorString();
            continue;
        }
        QLibrary *library = owned.get();
        libraries.push_back(std::move(owned));
        auto api = std::make_unique<Api>();
        api->libraryFile = library->fileName();
        resolve(*library, api->SQLAllocHandle, "SQLAllocHandle");
        resolve(*library, api->SQLFreeHandle, "SQLFreeHandle");
        resolve(*library, api->SQLSetEnvAttr, "SQLSetEnvAttr");
        resolve(*library, api->SQLSetConnectAttr, "SQLSetConnectAttr");
        resolve(*library, api->SQLDriverConnectW, "SQLDriverConnectW");
        resolve(*library, api->SQLConnectW, "SQLConnectW");
        resolve(*library, api->SQLBrowseConnectW, "SQLBrowseConnectW");
        resolve(*library, api->SQLDisconnect, "SQLDisconnect");
        resolve(*library, api->SQLDataSourcesW, "SQLDataSourcesW");
        resolve(*library, api->SQLDriversW, "SQLDriversW");
        resolve(*library, api->SQLTablesW, "SQLTablesW");
        resolve(*library, api->SQLExecDirectW, "SQLExecDirectW");
        resolve(*library, api->SQLNumResultCols, "SQLNumResultCols");
        resolve(*library, api->SQLFetch, "SQLFetch");
        resolve(*library, api->SQLGetData, "SQLGetData");
        resolve(*library, api->SQLGetInfoW, "SQLGetInfoW");
        resolve(*library, api->SQLGetDiagRecW, "SQLGetDiagRecW");
        resolve(*library, api->SQLCloseCursor, "SQLCloseCursor");
        return api;
    }
    // The loader's own words for each name tried.
    throw VantryError(QStringLiteral("The ODBC driver manager could not be loaded: %1")
                          .arg(failures.join(QStringLiteral("; "))));
}

SQLSMALLINT lengthOf(const QString &text)
{
    return SQLSMALLINT(qMin<qsizetype>(text.size(), 32767));
}

} // namespace

QStringList libraryNames()
{
    Loaded &l = loaded();
    QMutexLocker lock(&l.mutex);
    if (!l.names.isEmpty())
        return l.names;
    const QString fromEnvironment = qEnvironmentVariable("VANTRY_ODBC_LIBRARY");
    if (!fromEnvironment.isEmpty())
        return {fromEnvironment};
    return {QStringLiteral("libodbc.so.2"), QStringLiteral("libodbc.so")};
}

void setLibraryNames(const QStringList &names)
{
    Loaded &l = loaded();
    QMutexLocker lock(&l.mutex);
    l.names = names;
    l.api.reset();
}

const Api &api()
{
    const QStringList names = libraryNames();
    Loaded &l = loaded();
    QMutexLocker lock(&l.mutex);
    if (!l.api)
        l.api = load(names, l.libraries);
    return *l.api;
}

std::unique_ptr<SQLWCHAR[]> toSqlW(const QString &text)
{
    auto buffer = std::make_unique<SQLWCHAR[]>(size_t(text.size()) + 1);
    for (qsizetype i = 0; i < text.size(); ++i)
        buffer[size_t(i)] = SQLWCHAR(text.at(i).unicode());
    buffer[size_t(text.size())] = 0;
    return buffer;
}

QString fromSqlW(const SQLWCHAR *text, qsizetype length)
{
    if (length < 0) {
        length = 0;
        while (text[length])
            ++length;
    }
    return QString(reinterpret_cast<const QChar *>(text), length);
}

QString diagnostics(SQLSMALLINT handleType, SQLHANDLE handle)
{
    const Api &odbc = api();
    QStringList lines;
    for (SQLSMALLINT record = 1;; ++record) {
        SQLWCHAR state[6] = {};
        SQLINTEGER nativeError = 0;
        SQLWCHAR message[1024] = {};
        SQLSMALLINT messageLength = 0;
        const SQLRETURN rc = odbc.SQLGetDiagRecW(handleType, handle, record, state, &nativeError, message,
                                                 SQLSMALLINT(std::size(message)), &messageLength);
        if (!succeeded(rc))
            break;
        const qsizetype length = qBound(qsizetype(0), qsizetype(messageLength), qsizetype(std::size(message)) - 1);
        lines << QStringLiteral("[%1] %2").arg(fromSqlW(state, 5), fromSqlW(message, length).trimmed());
    }
    return lines.join(QLatin1Char('\n'));
}

QString errorText(const QString &prefix, SQLSMALLINT handleType, SQLHANDLE handle)
{
    const QString records = handle ? diagnostics(handleType, handle) : QString();
    return records.isEmpty() ? prefix : prefix + QLatin1Char(' ') + records;
}

// ---------------------------------------------------------------- Environment

Environment::Environment(const QString &versionFailure)
{
    const Api &odbc = api();
    if (!succeeded(odbc.SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &m_env)))
        throw VantryError(QString::fromLatin1(kAllocEnvFailed));
    if (!succeeded(odbc.SQLSetEnvAttr(m_env, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0))) {
        const QString text = errorText(versionFailure, SQL_HANDLE_ENV, m_env);
        odbc.SQLFreeHandle(SQL_HANDLE_ENV, m_env);
        throw VantryError(text);
    }
}

Environment::~Environment()
{
    if (m_env)
        api().SQLFreeHandle(SQL_HANDLE_ENV, m_env);
}

void Environment::setPoolingOff(const QString &failure)
{
    if (!succeeded(api().SQLSetEnvAttr(m_env, SQL_ATTR_CONNECTION_POOLING, reinterpret_cast<SQLPOINTER>(SQL_CP_OFF), 0)))
        throw VantryError(errorText(failure, SQL_HANDLE_ENV, m_env));
}

// ---------------------------------------------------------------- Connection

Connection::Connection(Environment &env)
{
    if (!succeeded(api().SQLAllocHandle(SQL_HANDLE_DBC, env.handle(), &m_dbc)))
        throw VantryError(errorText(QString::fromLatin1(kAllocDbcFailed), SQL_HANDLE_ENV, env.handle()));
}

Connection::~Connection()
{
    disconnect();
    if (m_dbc)
        api().SQLFreeHandle(SQL_HANDLE_DBC, m_dbc);
}

void Connection::setLoginTimeout(int seconds)
{
    if (seconds > 0)
        api().SQLSetConnectAttr(m_dbc, SQL_ATTR_LOGIN_TIMEOUT, reinterpret_cast<SQLPOINTER>(SQLULEN(seconds)), 0);
}

QString Connection::driverConnect(const QString &connectionString, const QString &failure)
{
    auto in = toSqlW(connectionString);
    SQLWCHAR out[1024] = {};
    SQLSMALLINT outLength = 0;
    const SQLRETURN rc = api().SQLDriverConnectW(m_dbc, nullptr, in.get(), lengthOf(connectionString), out,
                                                 SQLSMALLINT(std::size(out)), &outLength, SQL_DRIVER_NOPROMPT);
    if (!succeeded(rc))
        throw VantryError(errorText(failure, SQL_HANDLE_DBC, m_dbc));
    m_connected = true;
    return fromSqlW(out, qBound(qsizetype(0), qsizetype(outLength), qsizetype(std::size(out)) - 1));
}

QString Connection::browseConnect(const QString &connectionString, bool *needsData, const QString &failure)
{
    auto in = toSqlW(connectionString);
    SQLWCHAR out[1024] = {};
    SQLSMALLINT outLength = 0;
    const SQLRETURN rc = api().SQLBrowseConnectW(m_dbc, in.get(), lengthOf(connectionString), out,
                                                 SQLSMALLINT(std::size(out)), &outLength);
    if (rc != SQL_NEED_DATA && !succeeded(rc))
        throw VantryError(errorText(failure, SQL_HANDLE_DBC, m_dbc));
    // A finished or half-finished browse leaves the connection in need of a disconnect.
    api().SQLDisconnect(m_dbc);
    if (needsData)
        *needsData = rc == SQL_NEED_DATA;
    return fromSqlW(out, qBound(qsizetype(0), qsizetype(outLength), qsizetype(std::size(out)) - 1));
}

void Connection::connect(const QString &dsn, const QString &user, const QString &password)
{
    auto d = toSqlW(dsn), u = toSqlW(user), p = toSqlW(password);
    // An empty login is passed as none, so the data source's stored login applies.
    const SQLRETURN rc = api().SQLConnectW(m_dbc, d.get(), lengthOf(dsn), user.isEmpty() ? nullptr : u.get(),
                                           lengthOf(user), password.isEmpty() ? nullptr : p.get(), lengthOf(password));
    if (!succeeded(rc))
        throw VantryError(errorText(QStringLiteral("SQLConnect Failed:"), SQL_HANDLE_DBC, m_dbc));
    m_connected = true;
}

void Connection::disconnect()
{
    if (m_connected)
        api().SQLDisconnect(m_dbc);
    m_connected = false;
}

QString Connection::identifierQuote()
{
    SQLWCHAR quote[8] = {};
    SQLSMALLINT length = 0;
    if (!succeeded(api().SQLGetInfoW(m_dbc, SQL_IDENTIFIER_QUOTE_CHAR, quote, SQLSMALLINT(sizeof quote), &length)))
        return QString();
    const QString text = fromSqlW(quote).trimmed();
    return text;
}

// ---------------------------------------------------------------- Statement

Statement::Statement(Connection &connection, const QString &allocFailure)
{
    if (!succeeded(api().SQLAllocHandle(SQL_HANDLE_STMT, connection.handle(), &m_stmt)))
        throw VantryError(errorText(allocFailure, SQL_HANDLE_DBC, connection.handle()));
}

Statement::~Statement()
{
    if (m_stmt)
        api().SQLFreeHandle(SQL_HANDLE_STMT, m_stmt);
}

void Statement::execDirect(const QString &sql, const QString &failure)
{
    auto text = toSqlW(sql);
    if (!succeeded(api().SQLExecDirectW(m_stmt, text.get(), SQL_NTS)))
        throw VantryError(errorText(failure, SQL_HANDLE_STMT, m_stmt));
}

void Statement::tables(const QString &tableTypes)
{
    auto types = toSqlW(tableTypes);
    const SQLRETURN rc = api().SQLTablesW(m_stmt, nullptr, 0, nullptr, 0, nullptr, 0,
                                          tableTypes.isEmpty() ? nullptr : types.get(),
                                          tableTypes.isEmpty() ? 0 : lengthOf(tableTypes));
    if (!succeeded(rc))
        throw VantryError(errorText(QStringLiteral("SQLTables Failed:"), SQL_HANDLE_STMT, m_stmt));
}

bool Statement::fetch()
{
    const SQLRETURN rc = api().SQLFetch(m_stmt);
    if (rc == SQL_NO_DATA)
        return false;
    if (!succeeded(rc))
        throw VantryError(errorText(QStringLiteral("SQLFetch Failed:"), SQL_HANDLE_STMT, m_stmt));
    return true;
}

QString Statement::text(int column)
{
    // Read in pieces: SQLGetData returns a long value over several calls.
    QString result;
    SQLWCHAR buffer[512];
    for (;;) {
        SQLLEN indicator = 0;
        const SQLRETURN rc = api().SQLGetData(m_stmt, SQLUSMALLINT(column), SQL_C_WCHAR, buffer, sizeof buffer, &indicator);
        if (rc == SQL_NO_DATA)
            break;
        if (!succeeded(rc))
            throw VantryError(errorText(QStringLiteral("SQLGetData Failed:"), SQL_HANDLE_STMT, m_stmt));
        if (indicator == SQL_NULL_DATA)
            return QString();
        const qsizetype capacity = qsizetype(std::size(buffer)) - 1;
        const qsizetype available = indicator == SQL_NO_TOTAL ? capacity
                                                              : qMin<qsizetype>(indicator / qsizetype(sizeof(SQLWCHAR)), capacity);
        result += fromSqlW(buffer, available);
        if (rc == SQL_SUCCESS)
            break;
    }
    return result.isNull() ? QStringLiteral("") : result;
}

QVector<QStringList> Statement::fetchAll(int columns)
{
    QVector<QStringList> rows;
    while (fetch()) {
        QStringList row;
        for (int c = 1; c <= columns; ++c)
            row << text(c);
        rows << row;
    }
    return rows;
}

// ---------------------------------------------------------------- lists

QVector<TableRow> tableRows(Connection &connection)
{
    Statement statement(connection);
    statement.tables();
    QVector<TableRow> rows;
    for (const QStringList &row : statement.fetchAll(4))
        rows << TableRow{row[0], row[1], row[2], row[3]};
    return rows;
}

namespace {

// SQLDrivers and SQLDataSources share their shape: a first call, then next until no data.
template<typename Call>
QStringList enumerate(const char *failure, Call call)
{
    Environment env;
    QStringList names;
    SQLUSMALLINT direction = SQL_FETCH_FIRST;
    for (;;) {
        SQLWCHAR name[256] = {};
        SQLSMALLINT nameLength = 0;
        SQLWCHAR description[1024] = {};
        SQLSMALLINT descriptionLength = 0;
        const SQLRETURN rc = call(env.handle(), direction, name, SQLSMALLINT(std::size(name)), &nameLength,
                                  description, SQLSMALLINT(std::size(description)), &descriptionLength);
        if (rc == SQL_NO_DATA)
            break;
        if (!succeeded(rc)) {
            if (direction == SQL_FETCH_FIRST)
                throw VantryError(errorText(QString::fromLatin1(failure), SQL_HANDLE_ENV, env.handle()));
            break;
        }
        names << fromSqlW(name);
        direction = SQL_FETCH_NEXT;
    }
    return names;
}

} // namespace

QStringList drivers()
{
    return enumerate("SQLDrivers Failed:", api().SQLDriversW);
}

QStringList dataSources()
{
    return enumerate("SQLDataSources Failed:", api().SQLDataSourcesW);
}

} // namespace Odbc
