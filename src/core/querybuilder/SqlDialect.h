#pragma once
// SQL dialects of the query builder: which quotes, comments, strings and row-limit forms each one
// reads and writes, and the numeric dialect codes that openers use to pick a dialect and a server
// version.

#include <QString>
#include <QStringList>

// The fifteen dialects in the order the builder window lists them, then the engine's own base
// dialect, which the window never lists but dialect code 1 selects.
enum class SqlDialect {
    Universal,
    AnsiSql92,
    MsSqlServer,
    MsAccess,
    Oracle,
    MySql,
    PostgreSql,
    Interbase,
    Firebird,
    Informix,
    Sqlite,
    AnsiSql89,
    Sybase,
    AnsiSql2003,
    Db2,
    Generic
};

// The row-limit forms. A query stores the form it was written in; the generator keeps it when the
// target dialect reads it and otherwise writes the dialect's preferred form.
enum class LimitForm {
    None,
    Top,        // SELECT TOP n [PERCENT] [WITH TIES]
    FirstSkip,  // SELECT FIRST n SKIP m (and SKIP m FIRST n)
    Limit,      // LIMIT n [OFFSET m], LIMIT m, n
    Rows,       // ROWS m [TO n]
    FetchFirst  // [OFFSET m ROWS] FETCH FIRST n ROWS ONLY
};

struct DialectChoice
{
    SqlDialect dialect = SqlDialect::Universal;
    QString serverVersion; // one of serverVersions(dialect), or free text for MySQL; may be empty
    bool operator==(const DialectChoice &o) const { return dialect == o.dialect && serverVersion == o.serverVersion; }
};

namespace SqlDialects {

// The fifteen names of the dialect list, index i naming SqlDialect(i).
QStringList names();
QString name(SqlDialect dialect);

// The server versions the window offers for a dialect; empty for unversioned dialects. MySQL
// takes free text, so its list is empty and initialMySqlVersion() gives the starting text.
QStringList serverVersions(SqlDialect dialect);
QString initialMySqlVersion();

// The dialect and server version that an opener's numeric code stands for. A code that the table
// of codes does not list selects Universal, the dialect that reads every form, so that nothing an
// unknown server accepts is refused.
DialectChoice fromCode(int code);

// Lexical and syntactic traits.
struct Traits
{
    bool doubleQuoteIdentifiers = true; // "name"; else "..." is a string (MySQL)
    bool bracketIdentifiers = false;    // [name]
    bool backtickIdentifiers = false;   // `name`
    QChar openQuote = '"';              // how the generator quotes
    QChar closeQuote = '"';
    bool backslashEscapes = false;      // '\'' inside strings (MySQL)
    bool hashComments = false;          // # to end of line (MySQL)
    bool nestedComments = false;        // /* /* */ */ (PostgreSQL)
    bool dollarQuotes = false;          // $tag$...$tag$ (PostgreSQL)
    QList<LimitForm> limitForms;        // forms read; the first is the one the generator prefers
    bool parenthesizedJoins = false;    // the generator nests joins in parentheses (Access)
    bool minusForExcept = false;        // MINUS is a set operator (Oracle)
};

const Traits &traits(SqlDialect dialect);

// Whether the dialect reads a limit form.
bool acceptsLimit(SqlDialect dialect, LimitForm form);

} // namespace SqlDialects
