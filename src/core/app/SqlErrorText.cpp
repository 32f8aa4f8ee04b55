#include "app/SqlErrorText.h"

#include <QSqlError>

QString sqlErrorText(const QSqlError &error)
{
    const QString fromDatabase = error.databaseText().trimmed();
    if (!fromDatabase.isEmpty())
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
