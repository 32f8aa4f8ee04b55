#pragma once
// The ODBC call interface: the driver manager (unixODBC's libodbc) loaded on first use through
// QLibrary, its entry points resolved by name, and small owners of ODBC handles.
//
// Every failing call throws VantryError with a fixed text naming the call ("SQLDriverConnect
// Failed:") followed by the diagnostic records of the failing handle, one per line as
// "[SQLSTATE] message". Texts go in and out as UTF-16 (the W entry points), so names outside
// ASCII survive whatever the driver manager's ANSI code page is.

#include <sql.h>
#include <sqlext.h>

#include <QString>
#include <QStringList>
#include <QVector>

#include <memory>

namespace Odbc {

// The library names tried in order when the driver manager is loaded: $VANTRY_ODBC_LIBRARY when
// set, else "libodbc.so.2", then "libodbc.so".
QStringList libraryNames();

// Replaces the names tried (an empty list restores the default) and unloads nothing: the next
// call that needs the driver manager loads it afresh from the new names.
void setLibraryNames(const QStringList &names);

// The entry points the program uses, resolved by name from the loaded driver manager.
struct Api
{
    SQLRETURN (*SQLAllocHandle)(SQLSMALLINT, SQLHANDLE, SQLHANDLE *);
    SQLRETURN (*SQLFreeHandle)(SQLSMALLINT, SQLHANDLE);
    SQLRETURN (*SQLSetEnvAttr)(SQLHENV, SQLINTEGER, SQLPOINTER, SQLINTEGER);
    SQLRETURN (*SQLSetConnectAttr)(SQLHDBC, SQLINTEGER, SQLPOINTER, SQLINTEGER);
    SQLRETURN (*SQLDriverConnectW)(SQLHDBC, SQLHWND, SQLWCHAR *, SQLSMALLINT, SQLWCHAR *, SQLSMALLINT,
                                   SQLSMALLINT *, SQLUSMALLINT);
    SQLRETURN (*SQLConnectW)(SQLHDBC, SQLWCHAR *, SQLSMALLINT, SQLWCHAR *, SQLSMALLINT, SQLWCHAR *,
                             SQLSMALLINT);
    SQLRETURN (*SQLBrowseConnectW)(SQLHDBC, SQLWCHAR *, SQLSMALLINT, SQLWCHAR *, SQLSMALLINT, SQLSMALLINT *);
    SQLRETURN (*SQLDisconnect)(SQLHDBC);
    SQLRETURN (*SQLDataSourcesW)(SQLHENV, SQLUSMALLINT, SQLWCHAR *, SQLSMALLINT, SQLSMALLINT *, SQLWCHAR *,
                                 SQLSMALLINT, SQLSMALLINT *);
    SQLRETURN (*SQLDriversW)(SQLHENV, SQLUSMALLINT, SQLWCHAR *, SQLSMALLINT, SQLSMALLINT *, SQLWCHAR *,
                             SQLSMALLINT, SQLSMALLINT *);
    SQLRETURN (*SQLTablesW)(SQLHSTMT, SQLWCHAR *, SQLSMALLINT, SQLWCHAR *, SQLSMALLINT, SQLWCHAR *,
                            SQLSMALLINT, SQLWCHAR *, SQLSMALLINT);
    SQLRETURN (*SQLExecDirectW)(SQLHSTMT, SQLWCHAR *, SQLINTEGER);
    SQLRETURN (*SQLNumResultCols)(SQLHSTMT, SQLSMALLINT *);
    SQLRETURN (*SQLFetch)(SQLHSTMT);
    SQLRETURN (*SQLGetData)(SQLHSTMT, SQLUSMALLINT, SQLSMALLINT, SQLPOINTER, SQLLEN, SQLLEN *);
    SQLRETURN (*SQLGetInfoW)(SQLHDBC, SQLUSMALLINT, SQLPOINTER, SQLSMALLINT, SQLSMALLINT *);
    SQLRETURN (*SQLGetDiagRecW)(SQLSMALLINT, SQLHANDLE, SQLSMALLINT, SQLWCHAR *, SQLINTEGER *, SQLWCHAR *,
                                SQLSMALLINT, SQLSMALLINT *);
    SQLRETURN (*SQLCloseCursor)(SQLHSTMT);

    QString libraryFile; // the file that was loaded
};

// The driver manager's entry points, loading the library on first use. Throws VantryError with
// the loader's own text when no library of libraryNames() loads, or names the entry point that
// is missing.
const Api &api();

inline bool succeeded(SQLRETURN rc) { return rc == SQL_SUCCESS || rc == SQL_SUCCESS_WITH_INFO; }

// The diagnostic records of a handle, one line each: "[SQLSTATE] message". Empty when there are none.
QString diagnostics(SQLSMALLINT handleType, SQLHANDLE handle);

// prefix, a blank and the diagnostics of the handle (the prefix alone when there are none).
QString errorText(const QString &prefix, SQLSMALLINT handleType, SQLHANDLE handle);

// Failure texts of the environment set-up.
extern const char *const kAllocEnvFailed;     // "SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, FHENV) Failed:"
extern const char *const kSetVersionFailed;   // "SQLSetEnvAttr(FHENV,SQL_ATTR_ODBC_VERSION, Pointer(SQL_OV_ODBC3),0) Failed:"
extern const char *const kAllocDbcFailed;     // "SQLAllocHandle(SQL_HANDLE_DBC, FHENV, fhdbc) Failed:"

// An environment handle set to ODBC 3; freed on destruction.
class Environment
{
public:
    // versionFailure is the text used when setting ODBC 3 fails (two paths word it differently).
    explicit Environment(const QString &versionFailure = QString::fromLatin1(kSetVersionFailed));
    ~Environment();
    Environment(const Environment &) = delete;
    Environment &operator=(const Environment &) = delete;

    SQLHENV handle() const { return m_env; }
    // Connection pooling off for connections made from this environment.
    void setPoolingOff(const QString &failure);

private:
    SQLHENV m_env = SQL_NULL_HENV;
};

// A connection handle; disconnected (when connected) and freed on destruction.
class Connection
{
public:
    explicit Connection(Environment &env);
    ~Connection();
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    SQLHDBC handle() const { return m_dbc; }
    bool isConnected() const { return m_connected; }

    // Seconds SQLDriverConnect/SQLConnect may wait for the server; 0 leaves the driver's own.
    void setLoginTimeout(int seconds);
    // SQLDriverConnect without prompting; returns the completed connection string.
    QString driverConnect(const QString &connectionString, const QString &failure = QStringLiteral("SQLDriverConnect Failed:"));
    // One step of SQLBrowseConnect: the driver's answer, which lists what it still needs
    // ("KEY:Prompt=?;...") or, once it has connected, the completed connection string. needsData
    // tells which. The connection is left disconnected either way: the answer is all that is wanted.
    QString browseConnect(const QString &connectionString, bool *needsData = nullptr,
                          const QString &failure = QStringLiteral("SQLBrowseConnect Failed:"));
    // SQLConnect to a data source name.
    void connect(const QString &dsn, const QString &user, const QString &password);
    void disconnect();

    // The quote character for identifiers this source reports (SQL_IDENTIFIER_QUOTE_CHAR);
    // empty when it has none.
    QString identifierQuote();

private:
    SQLHDBC m_dbc = SQL_NULL_HDBC;
    bool m_connected = false;
};

// A statement handle; freed on destruction.
class Statement
{
public:
    explicit Statement(Connection &connection, const QString &allocFailure = QStringLiteral("SQLAllocHandle(SQL_HANDLE_STMT, FHDBC, FHSMT) Failed:"));
    ~Statement();
    Statement(const Statement &) = delete;
    Statement &operator=(const Statement &) = delete;

    SQLHSTMT handle() const { return m_stmt; }

    void execDirect(const QString &sql, const QString &failure);
    // SQLTables for every catalogue, schema and table of the given types (comma-separated,
    // e.g. "'TABLE','VIEW'"; empty for all types).
    void tables(const QString &tableTypes = QString());

    // Fetches the next row; false at the end of the result.
    bool fetch();
    // Column (1-based) of the current row as text; a null value gives a null QString.
    QString text(int column);
    // Every remaining row as its first `columns` columns.
    QVector<QStringList> fetchAll(int columns);

private:
    SQLHSTMT m_stmt = SQL_NULL_HSTMT;
};

// A row of the ODBC table catalogue (SQLTables).
struct TableRow
{
    QString catalog;
    QString schema;
    QString name;
    QString type; // "TABLE", "VIEW", "SYSTEM TABLE", ...
};

// Every table catalogue row of a connected source.
QVector<TableRow> tableRows(Connection &connection);

// The descriptions of the installed drivers (SQLDrivers).
QStringList drivers();
// The names of the system and user data sources together (SQLDataSources, first to last).
QStringList dataSources();

// Conversions between QString and the driver manager's UTF-16 SQLWCHAR texts.
std::unique_ptr<SQLWCHAR[]> toSqlW(const QString &text);
QString fromSqlW(const SQLWCHAR *text, qsizetype length = -1);

} // namespace Odbc
