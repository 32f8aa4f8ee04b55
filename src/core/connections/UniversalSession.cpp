#include "core/connections/UniversalSession.h"

#include "core/base/VantryError.h"
#include "core/connections/TcpProbe.h"
#include "core/connections/UniversalDriverSettings.h"

#include <QFileInfo>

void UniversalSession::open(const TReaderConnection &record)
{
    openConfig(UniversalConfig::fromRecord(record));
}

void UniversalSession::openConfig(const UniversalConfig &config)
{
    close();
    const UniversalDriverSettings s = universalDriverSettings(config);
    if (!s.sqliteFile.isEmpty() && !QFileInfo(s.sqliteFile).isFile())
        throw VantryError(QStringLiteral("The SQLite database file \"%1\" does not exist.").arg(s.sqliteFile));
    // The Firebird client waits minutes for a host that does not answer; find out first.
    if (s.driver == QLatin1String("QIBASE") && !s.hostName.isEmpty())
        TcpProbe::requireReachable(s.hostName, s.port > 0 ? s.port : 3050, s.connectTimeout);

    QSqlDatabase db = replaceDatabase(s.driver);
    db.setHostName(s.hostName);
    db.setPort(s.port);
    db.setDatabaseName(s.databaseName);
    db.setUserName(s.userName);
    db.setPassword(s.password);
    db.setConnectOptions(s.options.join(QLatin1Char(';')));
    try {
        openOrThrow(db);
    } catch (const VantryError &e) {
        if (s.sqliteFile.isEmpty())
            throw;
        throw VantryError(QStringLiteral("%1 (SQLite database file \"%2\")").arg(e.message(), s.sqliteFile));
    }
}

QString UniversalSession::driverName() const
{
    return isOpen() ? database().driverName() : QString();
}
