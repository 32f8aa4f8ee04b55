#include "core/base/SqlErrorText.h"

#include <QSqlError>

QString sqlErrorText(const QSqlError &error)
{
    const QString fromDatabase = error.databaseText().trimmed();
    // SQLite's text for its OK code says nothing; the driver's own text says what went wrong.
    if (!fromDatabase.isEmpty() && fromDatabase.compare(QLatin1String("not an error"), Qt::CaseInsensitive) != 0)
        return fromDatabase;
    const QString text = error.text().trimmed();
    return text.isEmpty() ? QStringLiteral("The driver reported a failure without a message.") : text;
}

QString describeSqlError(const QSqlError &error)
{
    const QString database = error.databaseText().trimmed();
    const QString driver = error.driverText().trimmed();
    if (database.isEmpty())
        return driver;
    if (driver.isEmpty() || database.contains(driver))
        return database;
    return driver + QStringLiteral(": ") + database;
}
