#include "core/connections/UniversalDriverSettings.h"

#include "core/base/VantryError.h"

#include <QUrl>

namespace {

[[noreturn]] void refuse(const QString &driver, const QString &option, const QString &value, const QString &why)
{
    throw VantryError(QStringLiteral("The option %1=%2 cannot be used with the %3 driver: %4.")
                          .arg(option, value, driver, why));
}

bool isTrue(const QString &value)
{
    return value.compare(QLatin1String("True"), Qt::CaseInsensitive) == 0;
}

int timeoutSeconds(const QString &driver, const QString &option, const QString &value)
{
    bool ok = false;
    const int seconds = value.isEmpty() ? 0 : value.toInt(&ok);
    if (!value.isEmpty() && (!ok || seconds < 0))
        refuse(driver, option, value, QStringLiteral("not a number of seconds"));
    return seconds > 0 ? seconds : kDefaultConnectTimeoutSeconds;
}

// Qt splits the connect options at ";", so a value holding one cannot be passed.
QString plainValue(const QString &driver, const QString &option, const QString &value)
{
    if (value.contains(QLatin1Char(';')))
        refuse(driver, option, value, QStringLiteral("the driver's options cannot hold a \";\""));
    return value;
}

// A libpq connection parameter value, single-quoted when it holds a blank or a quote.
QString libpqValue(const QString &option, const QString &value)
{
    QString text = plainValue(QStringLiteral("QPSQL"), option, value);
    if (!text.contains(QLatin1Char(' ')) && !text.contains(QLatin1Char('\'')) && !text.contains(QLatin1Char('\\')))
        return text;
    text.replace(QLatin1Char('\\'), QLatin1String("\\\\")).replace(QLatin1Char('\''), QLatin1String("\\'"));
    return QLatin1Char('\'') + text + QLatin1Char('\'');
}

void mapMySql(const UniversalConfig &config, UniversalDriverSettings &s)
{
    s.connectTimeout = kDefaultConnectTimeoutSeconds;
    for (const auto &[name, value] : config.options) {
        if (name == QLatin1String("MySQL.SSLCACert") || name == QLatin1String("MySQL.SSLCert")
            || name == QLatin1String("MySQL.SSLKey")) {
            static const char *const keys[] = {"SSL_CA", "SSL_CERT", "SSL_KEY"};
            const int which = name.endsWith(QLatin1String("CACert")) ? 0 : name.endsWith(QLatin1String("Cert")) ? 1 : 2;
            if (!value.isEmpty())
                s.options << QLatin1String(keys[which]) + QLatin1Char('=') + plainValue(s.driver, name, value);
        } else if (name == QLatin1String("MySQL.Compress")) {
            if (isTrue(value))
                s.options << QStringLiteral("CLIENT_COMPRESS");
        } else if (name == QLatin1String("MySQL.ConnectionTimeout")) {
            s.connectTimeout = timeoutSeconds(s.driver, name, value);
        } else if (name == QLatin1String("MySQL.UseUnicode")) {
            // The driver always talks utf8mb4 with the server; either value is honoured by that.
        } else if (name == QLatin1String("MySQL.Protocol")) {
            if (value == QLatin1String("mpSSL"))
                s.options << QStringLiteral("CLIENT_SSL");
            else if (value != QLatin1String("mpDefault"))
                refuse(s.driver, name, value, QStringLiteral("only mpDefault and mpSSL are supported"));
        } else {
            refuse(s.driver, name, value, QStringLiteral("unknown option"));
        }
    }
    s.options << QStringLiteral("MYSQL_OPT_CONNECT_TIMEOUT=%1").arg(s.connectTimeout);
}

void mapPostgreSql(const UniversalConfig &config, UniversalDriverSettings &s)
{
    s.connectTimeout = kDefaultConnectTimeoutSeconds;
    for (const auto &[name, value] : config.options) {
        if (name == QLatin1String("PostgreSQL.SSLCACert") || name == QLatin1String("PostgreSQL.SSLCert")
            || name == QLatin1String("PostgreSQL.SSLKey")) {
            static const char *const keys[] = {"sslrootcert", "sslcert", "sslkey"};
            const int which = name.endsWith(QLatin1String("CACert")) ? 0 : name.endsWith(QLatin1String("Cert")) ? 1 : 2;
            if (!value.isEmpty())
                s.options << QLatin1String(keys[which]) + QLatin1Char('=') + libpqValue(name, value);
        } else if (name == QLatin1String("PostgreSQL.ConnectionTimeout")) {
            s.connectTimeout = timeoutSeconds(s.driver, name, value);
        } else if (name == QLatin1String("PostgreSQL.UseUnicode")) {
            // The driver always sets the client encoding to UTF-8; either value is honoured by that.
        } else if (name == QLatin1String("PostgreSQL.SSLMode")) {
            if (value == QLatin1String("smRequire"))
                s.options << QStringLiteral("sslmode=require");
            else if (value == QLatin1String("smDisable"))
                s.options << QStringLiteral("sslmode=disable");
            else
                refuse(s.driver, name, value, QStringLiteral("only smRequire and smDisable are supported"));
        } else {
            refuse(s.driver, name, value, QStringLiteral("unknown option"));
        }
    }
    s.options << QStringLiteral("connect_timeout=%1").arg(s.connectTimeout);
}

void mapInterBase(const UniversalConfig &config, UniversalDriverSettings &s)
{
    s.connectTimeout = kDefaultConnectTimeoutSeconds;
    for (const auto &[name, value] : config.options) {
        if (name == QLatin1String("InterBase.UseUnicode")) {
            if (isTrue(value))
                s.options << QStringLiteral("ISC_DPB_LC_CTYPE=UTF8");
        } else {
            refuse(s.driver, name, value, QStringLiteral("unknown option"));
        }
    }
}

void mapSqlite(const UniversalConfig &config, UniversalDriverSettings &s)
{
    for (const auto &[name, value] : config.options) {
        // SQLite keeps all text in Unicode; either value is honoured by that.
        if (name != QLatin1String("SQLite.UseUnicode"))
            refuse(s.driver, name, value, QStringLiteral("unknown option"));
    }
    const QString file = config.database;
    if (file.isEmpty())
        throw VantryError(QStringLiteral("No SQLite database file is given."));
    if (file == QLatin1String(":memory:")) {
        s.databaseName = file;
        return;
    }
    // Opened through a URI with mode=rw: SQLite then refuses a missing file instead of creating
    // an empty database in its place.
    s.sqliteFile = file;
    QUrl url = QUrl::fromLocalFile(file);
    url.setQuery(QStringLiteral("mode=rw"));
    s.databaseName = url.toString(QUrl::FullyEncoded);
    s.options << QStringLiteral("QSQLITE_OPEN_URI");
}

} // namespace

UniversalDriverSettings universalDriverSettings(const UniversalConfig &config)
{
    UniversalDriverSettings s;
    s.hostName = config.server;
    s.port = config.port > 0 ? config.port : -1;
    s.databaseName = config.database;
    s.userName = config.userName;
    s.password = config.password;
    const QString &provider = config.providerName;
    if (provider == QLatin1String("MYSQL")) {
        s.driver = QStringLiteral("QMYSQL");
        mapMySql(config, s);
    } else if (provider == QLatin1String("POSTGRESQL")) {
        s.driver = QStringLiteral("QPSQL");
        mapPostgreSql(config, s);
    } else if (provider == QLatin1String("INTERBASE")) {
        s.driver = QStringLiteral("QIBASE");
        mapInterBase(config, s);
    } else if (provider == QLatin1String("SQLITE")) {
        s.driver = QStringLiteral("QSQLITE");
        mapSqlite(config, s);
    } else if (provider == QLatin1String("SQL SERVER")) {
        throw VantryError(QStringLiteral("Microsoft SQL Server Compact is not available on this system"));
    } else {
        throw VantryError(provider.isEmpty()
                              ? QStringLiteral("This connection type has no universal provider.")
                              : QStringLiteral("The universal provider %1 is not available on this system.").arg(provider));
    }
    return s;
}
