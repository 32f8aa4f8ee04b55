#include "core/connections/impDMun.h"

#include "core/base/VantryError.h"
#include "core/connections/AdoConnectionString.h"
#include "core/connections/AdoToOdbc.h"
#include "core/connections/ODBCHUn.h"
#include "core/connections/SqlServerDriver.h"
#include "core/connections/TableCatalogue.h"
#include "core/connections/TnsNames.h"
#include "core/connections/vtrtools.h"
#include "core/interchange/WorkbookReader.h"

#include <QSqlError>
#include <QSqlQuery>

#if __has_include("interchange/QvxLib.h")
#include "core/interchange/QvxLib.h"
#define VANTRY_HAS_QVX_TABLES 1
#endif

namespace {

// Bulk-copy switch of the SQL Server ODBC drivers (SQL_COPT_SS_BCP, SQL_BCP_ON).
constexpr SQLINTEGER kSqlCoptSsBcp = 1219;
constexpr SQLULEN kSqlBcpOn = 1;

bool containsDriverKey(const QString &text)
{
    return text.toUpper().contains(QLatin1String("DRIVER="));
}

bool userAndPasswordEmpty(const TReaderConnection &rc)
{
    return (rc.UserName.trimmed() + rc.Password.trimmed()).isEmpty();
}

void expandServerAndDatabase(TReaderConnection &rc)
{
    rc.Server = ExpandPathMacros(rc.Server);
    rc.DataBase = ExpandPathMacros(rc.DataBase);
}

// An ODBC environment and connection opened together; both freed with it.
struct OdbcLink
{
    explicit OdbcLink(const QString &versionFailure = QString::fromLatin1(Odbc::kSetVersionFailed))
        : env(versionFailure)
    {
    }
    Odbc::Environment env;
    std::unique_ptr<Odbc::Connection> dbc;
};

// The SQL Server connection of the test and the database list: pooling off, bulk copy on,
// then the chosen SQL Server driver with the record's server, database and login.
std::unique_ptr<OdbcLink> openSqlServer(const TReaderConnection &rc)
{
    auto link = std::make_unique<OdbcLink>(
        QStringLiteral("SQLSetEnvAttr(FHENV,SQL_ATTR_ODBC_VERSION, POINTER( SQL_OV_ODBC3) Failed:"));
    link->env.setPoolingOff(QStringLiteral("SQLSetEnvAttr(FHENV,SQL_ATTR_CONNECTION_POOLING, Pointer(SQL_CP_OFF) Failed:"));
    link->dbc = std::make_unique<Odbc::Connection>(link->env);
    if (!Odbc::succeeded(Odbc::api().SQLSetConnectAttr(link->dbc->handle(), kSqlCoptSsBcp,
                                                       reinterpret_cast<SQLPOINTER>(kSqlBcpOn), SQL_IS_UINTEGER)))
        throw VantryError(Odbc::errorText(
            QStringLiteral("SQLSetConnectAttr(Fhdbc, SQL_COPT_SS_BCP, Pointer(true),SQL_IS_UINTEGER) Failed:"),
            SQL_HANDLE_DBC, link->dbc->handle()));
    const QString driver = SqlServerDriver::current().odbcDriverText;
    // The two forms differ in the case of the database key and in the final ";"; both are kept.
    const QString connectionString =
        userAndPasswordEmpty(rc)
            ? driver + QStringLiteral(";Server=") + rc.Server + QStringLiteral(";Database=") + rc.DataBase
                  + QStringLiteral(";Trusted_Connection=Yes")
            : driver + QStringLiteral(";Server=") + rc.Server + QStringLiteral(";UID=") + rc.UserName
                  + QStringLiteral(";PWD=") + rc.Password + QStringLiteral(";DATABASE=") + rc.DataBase
                  + QStringLiteral(";");
    link->dbc->setLoginTimeout(rc.TimeOut > 0 ? rc.TimeOut : kAdoConnectionTimeoutSeconds);
    link->dbc->driverConnect(connectionString);
    return link;
}

// An ODBC record: a whole connection string in Server (when it holds "DRIVER=" and there is no
// login), else the data source Server with the record's login.
std::unique_ptr<OdbcLink> openOdbcRecord(const TReaderConnection &rc)
{
    auto link = std::make_unique<OdbcLink>();
    link->dbc = std::make_unique<Odbc::Connection>(link->env);
    link->dbc->setLoginTimeout(rc.TimeOut > 0 ? rc.TimeOut : kAdoConnectionTimeoutSeconds);
    if (rc.UserName.isEmpty() && rc.Password.isEmpty() && containsDriverKey(rc.Server))
        link->dbc->driverConnect(rc.Server);
    else
        link->dbc->connect(rc.Server, rc.UserName, rc.Password);
    return link;
}

std::unique_ptr<OdbcLink> openOdbcString(const QString &odbcConnectionString, int timeout)
{
    auto link = std::make_unique<OdbcLink>();
    link->dbc = std::make_unique<Odbc::Connection>(link->env);
    link->dbc->setLoginTimeout(timeout > 0 ? timeout : kAdoConnectionTimeoutSeconds);
    link->dbc->driverConnect(odbcConnectionString);
    return link;
}

SqlNames::QuoteStyle odbcQuoteStyle(Odbc::Connection &dbc, bool bracketStyle)
{
    if (bracketStyle)
        return SqlNames::QuoteStyle::Brackets;
    return dbc.identifierQuote() == QLatin1String("`") ? SqlNames::QuoteStyle::BackQuotes
                                                        : SqlNames::QuoteStyle::DoubleQuotes;
}

// SQL Server's list keeps catalogue and schema in every name; other ODBC sources name their
// tables as a statement on the same connection reads them.
QStringList odbcTableNames(Odbc::Connection &dbc, bool includeViews, bool includeSystemTables, bool bracketStyle,
                           bool sqlServer = false)
{
    QVector<CatalogueRow> rows;
    for (const Odbc::TableRow &row : Odbc::tableRows(dbc))
        rows << CatalogueRow{row.catalog, row.schema, row.name, row.type};
    const SqlNames::QuoteStyle style = odbcQuoteStyle(dbc, bracketStyle);
    return sqlServer ? tableNames(rows, includeViews, includeSystemTables, style)
                     : odbcSourceTableNames(rows, includeViews, includeSystemTables, style);
}

QStringList browseSqlServers()
{
    Odbc::Environment env;
    Odbc::Connection dbc(env);
    const QString answer = dbc.browseConnect(SqlServerDriver::current().odbcDriverText);
    const qsizetype open = answer.indexOf(QLatin1Char('{'));
    const qsizetype close = open < 0 ? -1 : answer.indexOf(QLatin1Char('}'), open);
    if (close < 0)
        return {};
    return answer.mid(open + 1, close - open - 1).split(QLatin1Char(','), Qt::SkipEmptyParts);
}

} // namespace

TimpDM::TimpDM() = default;
TimpDM::~TimpDM() = default;

void TimpDM::GetServersList(const QString &kind, QStringList &list, QString *error)
{
    list.clear();
    if (kind == QLatin1String("ORACLE")) {
        list = TnsNames::aliases();
        return;
    }
    if (kind != QLatin1String("ODBC") && kind != QLatin1String("SQL SERVER"))
        return;
    Odbc::api(); // a driver manager that cannot be loaded raises here
    try {
        list = kind == QLatin1String("ODBC") ? Odbc::dataSources() : browseSqlServers();
    } catch (const VantryError &e) {
        list.clear();
        if (error)
            *error = e.message();
    }
}

bool TimpDM::GetListOfDataBasesR(TReaderConnection rc, QStringList &list, QString &error)
{
    expandServerAndDatabase(rc);
    if (rc.ConnectionType == dsSqlServer) {
        try {
            auto link = openSqlServer(rc);
            Odbc::Statement statement(*link->dbc);
            statement.execDirect(QStringLiteral("select name from MASTER.dbo.sysdatabases order by name"),
                                 QStringLiteral("SQLExecDirect(FHSMT,PChar ('select name from MASTER.dbo.sysdatabases "
                                                "order by name'), SQL_NTS) Failed:"));
            QStringList names;
            for (const QStringList &row : statement.fetchAll(1))
                names << row.first();
            list = names;
        } catch (const VantryError &e) {
            error = e.message();
        }
        return true;
    }
    if (rc.ConnectionType != dsMySql && rc.ConnectionType != dsPostgreSQL)
        return true;

    UniversalConfig config = UniversalConfig::fromRecord(rc);
    // Without a database MySQL connects to none; PostgreSQL needs one to connect to at all, so it
    // tries its maintenance databases before the record's own.
    QStringList databases{QString()};
    if (rc.ConnectionType == dsPostgreSQL)
        databases = QStringList{QStringLiteral("postgres"), QStringLiteral("template1"), rc.DataBase};
    QString firstError;
    for (const QString &database : std::as_const(databases)) {
        config.database = database;
        try {
            m_uc.openConfig(config);
            break;
        } catch (const VantryError &e) {
            if (firstError.isEmpty())
                firstError = e.message();
        }
    }
    if (!m_uc.isOpen())
        throw VantryError(firstError);
    QSqlQuery query(m_uc.database());
    const QString sql = rc.ConnectionType == dsMySql
                            ? QStringLiteral("show databases")
                            : QStringLiteral("select datname from pg_catalog.pg_database where not datistemplate "
                                             "and datallowconn order by 1");
    if (!query.exec(sql))
        throw VantryError(describeSqlError(query.lastError()));
    QStringList names;
    while (query.next())
        names << query.value(0).toString();
    query.finish();
    m_uc.close();
    list = names;
    return true;
}

void TimpDM::GetTablesListR(TReaderConnection rc, QStringList &list, bool includeViews, bool includeSystemTables,
                            bool bracketStyle)
{
    expandServerAndDatabase(rc);
    QStringList names;
    switch (rc.ConnectionType) {
    case dsMySql:
    case dsPostgreSQL:
    case dsInterbase:
    case dsSqLite:
    case dsSqlServerCE: {
        m_uc.open(rc);
        const QSqlDatabase db = m_uc.database();
        const bool mysql = rc.ConnectionType == dsMySql;
        const SqlNames::QuoteStyle style = bracketStyle ? SqlNames::QuoteStyle::Brackets
                                           : mysql      ? SqlNames::QuoteStyle::BackQuotes
                                                        : SqlNames::QuoteStyle::DoubleQuotes;
        names = tableNames(universalCatalogueRows(db), includeViews, includeSystemTables, style,
                           rc.ConnectionType == dsPostgreSQL);
        break;
    }
    case dsOracle:
        m_oc.open(rc); // raises until an Oracle session can log on
        break;
    case dsSqlServer: {
        auto link = openSqlServer(rc);
        names = odbcTableNames(*link->dbc, includeViews, includeSystemTables, bracketStyle, true);
        break;
    }
    case dsODBC: {
        auto link = openOdbcRecord(rc);
        names = odbcTableNames(*link->dbc, includeViews, includeSystemTables, bracketStyle);
        break;
    }
    case dsOleDb: {
        auto link = openOdbcString(AdoToOdbc::translate(rc.Server), rc.TimeOut);
        names = odbcTableNames(*link->dbc, includeViews, includeSystemTables, bracketStyle);
        break;
    }
    case dsAccess: {
        const QString file = rc.SourceFile.isEmpty() ? rc.DataBase : rc.SourceFile;
        if (file.isEmpty())
            break; // an Access source without a file has no tables
        auto link = openOdbcString(QStringLiteral("DRIVER={MDBTools};DBQ=") + ExpandPathMacros(file), rc.TimeOut);
        names = odbcTableNames(*link->dbc, includeViews, includeSystemTables, bracketStyle);
        break;
    }
    case dsQVX:
#ifdef VANTRY_HAS_QVX_TABLES
        names = qvxTablesList(ExpandPathMacros(rc.SourceFile.isEmpty() ? rc.DataBase : rc.SourceFile));
        break;
#else
        throw VantryError(QStringLiteral("Listing the tables of a QVX file is not available in this build."));
#endif
    case dsExcel:
        // A workbook's tables are its sheets, in workbook order and by their plain names: the Excel
        // source quotes every identifier where it uses one.
        names = WorkbookReader::open(ExpandPathMacros(rc.SourceFile.isEmpty() ? rc.DataBase : rc.SourceFile))->sheetNames();
        break;
    default: {
        // Every other type is read through ODBC with the connection text of its ADO string.
        auto link = openOdbcString(AdoToOdbc::translate(AdoConnectionString::fromRecord(rc)), rc.TimeOut);
        names = odbcTableNames(*link->dbc, includeViews, includeSystemTables, bracketStyle);
        break;
    }
    }
    list = names;
}

void TimpDM::TestRConnection(TReaderConnection rc)
{
    expandServerAndDatabase(rc);
    switch (rc.ConnectionType) {
    case dsODBC:
        openOdbcRecord(rc); // the handles are disconnected and freed as it goes out of scope
        return;
    case dsOracle:
        m_oc.open(rc); // stays logged on
        return;
    case dsSqlServer:
        openSqlServer(rc);
        return;
    case dsOleDb:
        m_oleDb.openConnectionString(rc.Server, rc.TimeOut); // stays open
        return;
    default:
        m_uc.close();
        m_uc.open(rc);
        m_uc.close();
        return;
    }
}
