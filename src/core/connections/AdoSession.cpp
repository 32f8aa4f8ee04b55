#include "connections/AdoSession.h"

#include "connections/AdoConnectionString.h"
#include "connections/AdoToOdbc.h"

void AdoSession::open(const TReaderConnection &record)
{
    openConnectionString(AdoConnectionString::fromRecord(record), record.TimeOut);
}

void AdoSession::openConnectionString(const QString &adoConnectionString, int timeoutSeconds)
{
    close();
    m_odbc = AdoToOdbc::translate(adoConnectionString);
    QSqlDatabase db = replaceDatabase(QStringLiteral("QODBC"));
    db.setDatabaseName(m_odbc);
    db.setConnectOptions(QStringLiteral("SQL_ATTR_LOGIN_TIMEOUT=%1")
                             .arg(timeoutSeconds > 0 ? timeoutSeconds : kAdoConnectionTimeoutSeconds));
    openOrThrow(db);
}
