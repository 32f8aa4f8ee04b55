#include "core/connections/AdoSession.h"

#include "core/connections/AdoConnectionString.h"
#include "core/connections/AdoToOdbc.h"
#include "core/connections/OdbcKeywords.h"

#include <QRegularExpression>
#include <QStringList>

QString qodbcDatabaseName(const QString &odbcConnectionString)
{
    static const QRegularExpression emptyLogin(QStringLiteral("^\\s*(UID|PWD)\\s*=\\s*$"),
                                               QRegularExpression::CaseInsensitiveOption);
    QStringList kept;
    for (const QString &piece : OdbcKeywords::pieces(odbcConnectionString))
        if (!piece.trimmed().isEmpty() && !emptyLogin.match(piece).hasMatch())
            kept << piece;
    const QString name = kept.join(QLatin1Char(';'));
    const bool passedAsItIs = !name.contains(QLatin1String(".dsn"), Qt::CaseInsensitive)
                              && (name.contains(QLatin1String("DRIVER="), Qt::CaseInsensitive)
                                  || name.contains(QLatin1String("SERVER="), Qt::CaseInsensitive));
    if (passedAsItIs)
        return name;
    for (const QLatin1String keyword : {QLatin1String("FILEDSN="), QLatin1String("DSN=")}) {
        if (name.trimmed().startsWith(keyword, Qt::CaseInsensitive))
            return name.trimmed().mid(keyword.size());
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
