#pragma once
#include "core/base/SqlErrorText.h"
// One live connection of an access path (universal, Oracle, ADO), opened from a connection record.
//
// Sessions built on Qt SQL own a Qt connection name of their own ("vantry-session-<n>"), unique
// in the process, and remove it when they are destroyed, so any number of tabs and services may
// hold sessions side by side.

#include "core/connections/vtrIL.h"

#include <QSqlDatabase>
#include <QString>

class DatabaseSession
{
public:
    virtual ~DatabaseSession() = default;

    // Closes what is open, then opens the record's connection. Throws VantryError with the
    // driver's text when it cannot.
    virtual void open(const TReaderConnection &record) = 0;
    virtual void close() = 0;
    virtual bool isOpen() const = 0;

    // The open Qt SQL connection that statements run on. Throws VantryError when none is open.
    virtual QSqlDatabase database() const = 0;
};

// The common part of the sessions that open a Qt SQL driver.
class QtSqlSession : public DatabaseSession
{
public:
    QtSqlSession();
    ~QtSqlSession() override;
    QtSqlSession(const QtSqlSession &) = delete;
    QtSqlSession &operator=(const QtSqlSession &) = delete;

    void close() override;
    bool isOpen() const override;
    QSqlDatabase database() const override;

    QString connectionName() const { return m_name; }

protected:
    // Drops the previous Qt connection and adds a fresh one of the driver; throws when the Qt
    // SQL driver plug-in is not installed.
    QSqlDatabase replaceDatabase(const QString &driver);
    // Opens db; on failure removes it again and throws VantryError with the driver's text.
    void openOrThrow(QSqlDatabase &db);

private:
    void removeDatabase();
    QString m_name;
};


