#include "core/querybuilder/QueryBuilderSource.h"

#include "core/connections/AdoConnectionString.h"

#include <QStringList>

namespace QueryBuilderSource {

namespace {

bool usesAdo(TDataSourceType type)
{
    switch (type) {
    case dsMySql: case dsPostgreSQL: case dsInterbase: case dsSqLite: case dsSqlServerCE: case dsOracle:
        return false;
    default:
        return true;
    }
}

// The value of the string's Provider= part, upper-cased.
QString providerOf(const QString &connectionString)
{
    for (const QString &piece : connectionString.split(QLatin1Char(';'))) {
        const int eq = piece.indexOf(QLatin1Char('='));
        if (eq > 0 && piece.left(eq).trimmed().compare(QLatin1String("Provider"), Qt::CaseInsensitive) == 0)
            return piece.mid(eq + 1).trimmed().toUpper();
    }
    return QString();
}

} // namespace

int dialectCode(const TReaderConnection &record)
{
    switch (record.ConnectionType) {
    case dsMySql: return 23;
    case dsPostgreSQL: return 30;
    case dsInterbase: return 90;
    case dsSqLite: return 40;
    case dsSqlServerCE: return 40;
    case dsOracle: return 53;
    default: break;
    }
    const QString connectionString = AdoConnectionString::fromRecord(record).toUpper();
    const QString provider = providerOf(connectionString);
    int code = 4;
    if (provider.contains(QLatin1String("SQLOLEDB")) || provider.contains(QLatin1String("SQLNCLI")))
        code = 12;
    else if (provider.contains(QLatin1String("JET")))
        code = 75;
    else if (provider.contains(QLatin1String("ORA")))
        code = 53;
    else if (provider.contains(QLatin1String("MYSQLPROV")))
        code = 23;
    if (connectionString.contains(QLatin1String("ACCESS")))
        code = 75;
    else if (connectionString.contains(QLatin1String("FOXPRO")) || connectionString.contains(QLatin1String("EXCEL")))
        code = 0;
    return code;
}

bool quoteAllIdentifiers(const TReaderConnection &record)
{
    return usesAdo(record.ConnectionType)
           && AdoConnectionString::fromRecord(record).toUpper().contains(QLatin1String("EXCEL"));
}

} // namespace QueryBuilderSource
