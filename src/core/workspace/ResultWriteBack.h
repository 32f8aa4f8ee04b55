#pragma once
#include "core/workspace/ResultTable.h"
#include "core/workspace/RowChange.h"
#include "core/workspace/TableKeys.h"

#include <QSqlDatabase>
#include <QString>
#include <optional>

// Writes the edit buffer of a ResultTable back to the one table the query reads from, in three
// steps so that only the middle one touches the database:
//   snapshot() on the window's thread copies one row's change out of the table;
//   apply() on the connection's thread writes it and reads the row back;
//   accept() on the window's thread makes the row unchanged with the values read back.
// A row is located by the table's key (primary key, else a unique key of NOT NULL columns), or
// when there is none by all fields whose type has an equality, NULLs compared with IS NULL. Every
// write runs in a transaction and must touch exactly one row; otherwise it is rolled back and the
// error says whether no row or several rows matched.
class ResultWriteBack
{
public:
    // The pending change of a row: nothing for an unchanged or deleted row.
    static std::optional<RowChange> snapshotPost(const ResultTable &result, qint64 row, const QString &table);
    static RowChange snapshotDelete(const ResultTable &result, qint64 row, const QString &table);
    // Throws VantryError naming the cause; the database is then as it was.
    static RowOutcome apply(const QSqlDatabase &db, const RowChange &change, TableKeyCache &keys);
    static void accept(ResultTable &result, const RowOutcome &outcome);

    // The three steps in a row on one thread, for callers that write synchronously. A failure
    // is kept as the row's failure text and thrown.
    ResultWriteBack(const QSqlDatabase &db, const QString &table);
    void postRow(ResultTable &result, qint64 row);
    // Deletes the row in the database (a row not yet inserted is only dropped) and marks it.
    void deleteRow(ResultTable &result, qint64 row);

    // The database half of the two above for a caller that reads the table on the connection's
    // thread while the grid waits: snapshot and apply in one. The caller accepts the outcome on
    // its own thread (accept(), or acceptRow and markDeleted, which keep no values read back).
    std::optional<RowOutcome> writeToDatabase(const ResultTable &result, qint64 row);
    RowOutcome deleteInDatabase(const ResultTable &result, qint64 row);

private:
    void run(ResultTable &result, const RowChange &change);

    QSqlDatabase m_db;
    QString m_table;
    TableKeyCache m_keys;
};
