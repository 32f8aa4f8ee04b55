#pragma once
#include <QHash>
#include <QMutex>
#include <QSqlDatabase>
#include <QStringList>

// The columns that identify one row of a table: its primary key, else the first unique key whose
// columns are all NOT NULL. Read from the database's own catalogue (pg_index, information_schema,
// SQLite's pragmas, Firebird's RDB$ tables; the driver's primary index through ODBC). An empty
// list means the table has no such key. Must run on the thread that owns the connection.
QStringList findTableKey(const QSqlDatabase &db, const QString &table);

// Columns of a table whose type has no "=" (json, xml, the geometric types), read from the
// catalogue of PostgreSQL, where a driver that reports them as text (ODBC) would otherwise let
// them into a match; empty for other databases, whose fetch names such types itself.
QStringList findIncomparableColumns(const QSqlDatabase &db, const QString &table);

// The keys found so far, per connection and table as written in the statement, so that each
// table's catalogue is read once; a catalogue that cannot be read counts as no key. Safe to
// share between threads.
class TableKeyCache
{
public:
    QStringList keyOf(const QSqlDatabase &db, const QString &table);
    QStringList incomparableOf(const QSqlDatabase &db, const QString &table);
    // True when the connection's driver passes a bound text one character too long (MariaDB's
    // ODBC driver takes the terminating zero along), so texts must be bound as UTF-8 bytes.
    // Tried once per connection with a bound one-letter text.
    bool bindsTextAsBytes(const QSqlDatabase &db);
    // Forgets every table, after the user changed the schema, say.
    void clear();

private:
    QStringList cached(QHash<QString, QStringList> &cache, const QSqlDatabase &db, const QString &table,
                       QStringList (*find)(const QSqlDatabase &, const QString &));

    QMutex m_mutex;
    QHash<QString, QStringList> m_keys;
    QHash<QString, QStringList> m_incomparable;
    QHash<QString, bool> m_textAsBytes;
};
