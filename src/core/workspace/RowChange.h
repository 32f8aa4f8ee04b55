#pragma once
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariantList>

// One row's change as plain values, taken from a ResultTable on the window's thread and written
// on the thread that owns the connection, which never sees the table itself.
struct RowChange
{
    enum class Kind { Update, Insert, Delete };

    Kind kind = Kind::Update;
    qint64 row = -1;      // the row in the ResultTable, handed back with the outcome
    QString table;        // as the statement wrote it
    QStringList columns;  // the result's column names, in order
    QStringList types;    // their type names as the fetch gave them
    QVariantList stored;  // what the database holds as far as the grid knows: locates the row
    QVariantList values;  // the row after the change (the stored values for a delete)
    QList<int> changed;   // the columns an update writes
};

// What a written change left in the database.
struct RowOutcome
{
    RowChange change;
    // The row as the database now holds it, one value per column (generated keys and defaults
    // included); empty after a delete.
    QVariantList values;
    // False when the row could not be read again; values then holds what was written.
    bool readBack = false;
};
