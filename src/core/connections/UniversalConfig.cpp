#include "core/connections/UniversalConfig.h"

namespace {

QString boolText(bool value) { return value ? QStringLiteral("True") : QStringLiteral("False"); }

} // namespace

QString UniversalConfig::option(const QString &name) const
{
    for (const auto &o : options) {
        if (o.first == name)
            return o.second;
    }
    return {};
}

UniversalConfig UniversalConfig::fromRecord(const TReaderConnection &rc)
{
    UniversalConfig c;
    auto add = [&c](const char *name, const QString &value) {
        c.options.append({QLatin1String(name), value});
    };
    switch (rc.ConnectionType) {
    case dsMySql:
        c.providerName = QStringLiteral("MYSQL");
        add("MySQL.SSLCACert", rc.SSLCACert);
        add("MySQL.SSLCert", rc.SSLCert);
        add("MySQL.SSLKey", rc.SSLKey);
        add("MySQL.Compress", boolText(rc.Compress));
        add("MySQL.ConnectionTimeout", QString::number(rc.TimeOut));
        add("MySQL.UseUnicode", boolText(rc.UseUnicode));
        add("MySQL.Protocol", rc.TLS != 0 ? QStringLiteral("mpSSL") : QStringLiteral("mpDefault"));
        break;
    case dsPostgreSQL:
        c.providerName = QStringLiteral("POSTGRESQL");
        add("PostgreSQL.SSLCACert", rc.SSLCACert);
        add("PostgreSQL.SSLCert", rc.SSLCert);
        add("PostgreSQL.SSLKey", rc.SSLKey);
        add("PostgreSQL.ConnectionTimeout", QString::number(rc.TimeOut));
        add("PostgreSQL.UseUnicode", boolText(rc.UseUnicode));
        add("PostgreSQL.SSLMode", rc.TLS != 0 ? QStringLiteral("smRequire") : QStringLiteral("smDisable"));
        break;
    case dsInterbase:
        c.providerName = QStringLiteral("INTERBASE");
        add("InterBase.UseUnicode", boolText(rc.UseUnicode));
        break;
    case dsSqLite:
        c.providerName = QStringLiteral("SQLITE");
        add("SQLite.UseUnicode", boolText(rc.UseUnicode));
        break;
    case dsSqlServerCE:
        c.providerName = QStringLiteral("SQL SERVER");
        add("SQL Server.OLEDBProvider", QStringLiteral("prCompact"));
        break;
    default:
        break;
    }
    c.server = rc.Server;
    c.userName = rc.UserName;
    c.password = rc.Password;
    c.database = rc.DataBase;
    c.port = rc.Port;
    return c;
}
