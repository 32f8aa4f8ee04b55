#include "core/connections/AdoConnectionString.h"

#include "core/connections/SqlServerDriver.h"
#include "core/connections/vtrtools.h"

namespace AdoConnectionString {

namespace {

QString quoted(const QString &text) { return QLatin1Char('"') + text + QLatin1Char('"'); }

QString msdasqlExtendedProperties(const QString &odbcText)
{
    return QStringLiteral("Provider=MSDASQL.1;Extended Properties=") + quoted(odbcText);
}

QString sqlServer(const TReaderConnection &rc)
{
    // Without user and password Windows authentication is asked for. The (empty) password and
    // user pieces are still written in that form: intended.
    const bool integrated = (rc.UserName.trimmed() + rc.Password.trimmed()).isEmpty();
    return SqlServerDriver::current().providerText + QStringLiteral(";Persist Security Info=False")
           + (integrated ? QStringLiteral(";Integrated Security=SSPI") : QString())
           + QStringLiteral(";Password=") + rc.Password + QStringLiteral(";User ID=") + rc.UserName
           + QStringLiteral(";Initial Catalog=") + rc.DataBase + QStringLiteral(";Data Source=")
           + rc.Server;
}

} // namespace

QString fromRecord(const TReaderConnection &rc)
{
    switch (rc.ConnectionType) {
    case dsOracle:
        return QStringLiteral("Provider=OraOLEDB.Oracle.1;Password=") + rc.Password
               + QStringLiteral(";User ID=") + rc.UserName + QStringLiteral(";Data Source=") + rc.Server
               + QStringLiteral(";Persist Security Info=True");
    case dsSqlServer:
        return sqlServer(rc);
    case dsODBC:
        if (rc.Server.toUpper().contains(QLatin1String("DRIVER=")))
            return msdasqlExtendedProperties(rc.Server);
        return QStringLiteral("Provider=MSDASQL.1;Password=") + rc.Password + QStringLiteral(";User ID=")
               + rc.UserName + QStringLiteral(";Data Source=") + rc.Server;
    case dsOleDb:
        // The stored text is itself the connection string.
        return ExpandPathMacros(rc.Server);
    default:
        return msdasqlExtendedProperties(odbcConnectionText(rc));
    }
}

QString odbcConnectionText(const TReaderConnection &rc)
{
    if (rc.OdbcDsnName.isEmpty() || rc.OdbcDsnName.contains(QLatin1Char('=')))
        return rc.OdbcDsnName;
    return QStringLiteral("DSN=") + rc.OdbcDsnName;
}

} // namespace AdoConnectionString
