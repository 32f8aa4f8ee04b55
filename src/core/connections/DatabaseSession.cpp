#include "core/connections/DatabaseSession.h"

#include "core/base/SqlErrorText.h"
#include "core/base/VantryError.h"

#include <QAtomicInt>
#include <QSqlError>
#include <QStringList>

namespace {
QAtomicInt sessionCounter;
}

QtSqlSession::QtSqlSession()
    : m_name(QStringLiteral("vantry-session-%1").arg(sessionCounter.fetchAndAddRelaxed(1) + 1))
{
}

QtSqlSession::~QtSqlSession()
{
    removeDatabase();
}

void QtSqlSession::removeDatabase()
{
    if (!QSqlDatabase::contains(m_name))
        return;
    {
        QSqlDatabase db = QSqlDatabase::database(m_name, false);
        db.close();
    }
    QSqlDatabase::removeDatabase(m_name);
}

void QtSqlSession::close()
{
    if (QSqlDatabase::contains(m_name))
        QSqlDatabase::database(m_name, false).close();
}

bool QtSqlSession::isOpen() const
{
    return QSqlDatabase::contains(m_name) && QSqlDatabase::database(m_name, false).isOpen();
}

QSqlDatabase QtSqlSession::database() const
{
    if (!isOpen())
        throw VantryError(QStringLiteral("Not connected."));
    return QSqlDatabase::database(m_name, false);
}

QSqlDatabase QtSqlSession::replaceDatabase(const QString &driver)
{
    removeDatabase();
    if (!QSqlDatabase::isDriverAvailable(driver))
        throw VantryError(QStringLiteral("The Qt SQL driver %1 is not installed (available: %2).")
                              .arg(driver, QSqlDatabase::drivers().join(QStringLiteral(", "))));
    return QSqlDatabase::addDatabase(driver, m_name);
}

void QtSqlSession::openOrThrow(QSqlDatabase &db)
{
    if (db.open())
        return;
    const QString text = describeSqlError(db.lastError());
    db = QSqlDatabase();
    removeDatabase();
    throw VantryError(text.isEmpty() ? QStringLiteral("The connection could not be opened.") : text);
}
