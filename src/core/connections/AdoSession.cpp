#include "connections/AdoSession.h"

#include "connections/AdoConnectionString.h"
#include "connections/AdoToOdbc.h"

#include <QStringList>


QString qodbcDatabaseName(const QString &odbcConnectionString)
{
    QStringList kept;
    for (const AdoToOdbc::Pair &pair : AdoToOdbc::parse(odbcConnectionString)) {
        const QString key = pair.key.toUpper();
        if ((key == QLatin1String("UID") || key == QLatin1String("PWD")) && pair.value.isEmpty())
            continue;
        kept << pair.key + QLatin1Char('=') + AdoToOdbc::odbcValue(pair.value);
    }
    QString name = kept.join(QLatin1Char(';'));
    const bool passedAsItIs = !name.contains(QLatin1String(".dsn"), Qt::CaseInsensitive)
                              && (name.contains(QLatin1String("DRIVER="), Qt::CaseInsensitive)
                                  || name.contains(QLatin1String("SERVER="), Qt::CaseInsensitive));
    if (passedAsItIs)
        return name;
    for (const QLatin1String keyword : {QLatin1String("FILEDSN="), QLatin1String("DSN=")}) {
        if (name.startsWith(keyword, Qt::CaseInsensitive))
            return name.mid(keyword.size());
    }
    return name;
}

void AdoSession::open(const TReaderConnection &record)
{
    openConnectionString(AdoConnectionString::fromRecord(record), record.TimeOut);
}

void AdoSession::openConnectionString(const QString &adoConnectionString, int timeoutSeconds)
{
    close();
    m_odbc = AdoToOdbc::translate(adoConnectionString);
    QSqlDatabase db = replaceDatabase(QStringLiteral("QODBC"));
    db.setDatabaseName(qodbcDatabaseName(m_odbc));
    db.setConnectOptions(QStringLiteral("SQL_ATTR_LOGIN_TIMEOUT=%1")
                             .arg(timeoutSeconds > 0 ? timeoutSeconds : kAdoConnectionTimeoutSeconds));
    openOrThrow(db);
}
