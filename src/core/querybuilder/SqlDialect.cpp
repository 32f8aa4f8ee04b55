#include "core/querybuilder/SqlDialect.h"

#include <QHash>

namespace SqlDialects {

QStringList names()
{
    return {QStringLiteral("Universal"),          QStringLiteral("ANSI SQL/92"), QStringLiteral("Microsoft SQL Server"),
            QStringLiteral("Microsoft Access"),   QStringLiteral("Oracle"),      QStringLiteral("MySQL"),
            QStringLiteral("PostgreSQL"),         QStringLiteral("Interbase"),   QStringLiteral("Firebird"),
            QStringLiteral("Informix"),           QStringLiteral("SQLite"),      QStringLiteral("ANSI SQL/89"),
            QStringLiteral("Sybase"),             QStringLiteral("ANSI SQL/2003"), QStringLiteral("DB2")};
}

QString name(SqlDialect dialect)
{
    if (dialect == SqlDialect::Generic)
        return QStringLiteral("Generic SQL");
    return names().value(int(dialect));
}

QStringList serverVersions(SqlDialect dialect)
{
    switch (dialect) {
    case SqlDialect::MsSqlServer:
        return {QStringLiteral("SQL Server 7"), QStringLiteral("SQL Server 2000"), QStringLiteral("SQL Server 2005")};
    case SqlDialect::Oracle:
        return {QStringLiteral("Oracle 7"), QStringLiteral("Oracle 8"), QStringLiteral("Oracle 9"),
                QStringLiteral("Oracle 10")};
    case SqlDialect::Firebird:
        return {QStringLiteral("Firebird v.1"), QStringLiteral("Firebird v.1.5"), QStringLiteral("Firebird v.2.0")};
    case SqlDialect::Informix:
        return {QStringLiteral("Informix 8"), QStringLiteral("Informix 9"), QStringLiteral("Informix 10")};
    case SqlDialect::MsAccess:
        return {QStringLiteral("MS Jet 3"), QStringLiteral("MS Jet 4")};
    case SqlDialect::Sybase:
        return {QStringLiteral("ASA"), QStringLiteral("ASE")};
    default:
        return {};
    }
}

QString initialMySqlVersion()
{
    return QStringLiteral("4.1.0");
}

DialectChoice fromCode(int code)
{
    const auto pick = [](SqlDialect d, int index) {
        return DialectChoice{d, serverVersions(d).value(index)};
    };
    switch (code) {
    case 0: return {SqlDialect::AnsiSql92, {}};
    case 1: return {SqlDialect::Generic, {}};
    case 3: return {SqlDialect::AnsiSql2003, {}};
    case 4: return {SqlDialect::Universal, {}};
    case 10: case 11: case 12: return pick(SqlDialect::MsSqlServer, code - 10);
    case 20: return {SqlDialect::MySql, QStringLiteral("3.0.0")};
    case 21: return {SqlDialect::MySql, QStringLiteral("4.0.0")};
    case 22: return {SqlDialect::MySql, QStringLiteral("4.1.0")};
    case 23: return {SqlDialect::MySql, QStringLiteral("5.0.0")};
    case 30: return {SqlDialect::PostgreSql, {}};
    case 40: return {SqlDialect::Sqlite, {}};
    case 50: case 51: case 52: case 53: return pick(SqlDialect::Oracle, code - 50);
    case 60: case 61: case 62: return pick(SqlDialect::Informix, code - 60);
    case 70: case 72: return pick(SqlDialect::MsAccess, 0);
    case 71: case 73: case 74: case 75: return pick(SqlDialect::MsAccess, 1);
    case 90: return {SqlDialect::Interbase, {}};
    case 100: case 101: return pick(SqlDialect::Sybase, code - 100);
    default:
        // Not in the table: Universal reads every quoting and limit form, so nothing is refused.
        return {SqlDialect::Universal, {}};
    }
}

namespace {

Traits makeTraits(SqlDialect d)
{
    Traits t;
    using L = LimitForm;
    switch (d) {
    case SqlDialect::Universal:
        t.bracketIdentifiers = t.backtickIdentifiers = true;
        t.limitForms = {L::Limit, L::Top, L::FirstSkip, L::Rows, L::FetchFirst};
        break;
    case SqlDialect::Generic:
    case SqlDialect::AnsiSql2003:
    case SqlDialect::Db2:
        t.limitForms = {L::FetchFirst};
        break;
    case SqlDialect::AnsiSql92:
    case SqlDialect::AnsiSql89:
    case SqlDialect::Oracle:
        t.minusForExcept = d == SqlDialect::Oracle;
        break;
    case SqlDialect::MsSqlServer:
        t.bracketIdentifiers = true;
        t.openQuote = '[';
        t.closeQuote = ']';
        t.limitForms = {L::Top};
        break;
    case SqlDialect::Sybase:
        t.bracketIdentifiers = true;
        t.openQuote = '[';
        t.closeQuote = ']';
        t.limitForms = {L::Top};
        break;
    case SqlDialect::MsAccess:
        t.doubleQuoteIdentifiers = false;
        t.bracketIdentifiers = t.backtickIdentifiers = true;
        t.openQuote = '[';
        t.closeQuote = ']';
        t.limitForms = {L::Top};
        t.parenthesizedJoins = true;
        break;
    case SqlDialect::MySql:
        t.doubleQuoteIdentifiers = false;
        t.backtickIdentifiers = true;
        t.openQuote = t.closeQuote = '`';
        t.backslashEscapes = t.hashComments = true;
        t.limitForms = {L::Limit};
        break;
    case SqlDialect::PostgreSql:
        t.nestedComments = t.dollarQuotes = true;
        t.limitForms = {L::Limit, L::FetchFirst};
        break;
    case SqlDialect::Sqlite:
        t.bracketIdentifiers = t.backtickIdentifiers = true;
        t.limitForms = {L::Limit};
        break;
    case SqlDialect::Interbase:
        t.limitForms = {L::Rows};
        break;
    case SqlDialect::Firebird:
        t.limitForms = {L::FirstSkip, L::Rows};
        break;
    case SqlDialect::Informix:
        t.limitForms = {L::FirstSkip};
        break;
    }
    return t;
}

} // namespace

const Traits &traits(SqlDialect dialect)
{
    static const QHash<int, Traits> all = [] {
        QHash<int, Traits> h;
        for (int i = 0; i <= int(SqlDialect::Generic); ++i)
            h.insert(i, makeTraits(SqlDialect(i)));
        return h;
    }();
    return *all.find(int(dialect));
}

bool acceptsLimit(SqlDialect dialect, LimitForm form)
{
    return form == LimitForm::None || traits(dialect).limitForms.contains(form);
}

} // namespace SqlDialects
