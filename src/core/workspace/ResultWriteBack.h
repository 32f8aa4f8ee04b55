#pragma once
#include "ResultTable.h"

#include <QSqlDatabase>
#include <QString>

// Writes the edit buffer of a ResultTable back to the one table the query reads from. A row is
// located by all of its fields in field order, NULLs compared with IS NULL. Every write runs in
// a transaction and must touch exactly one row; when the row cannot be told apart (no match,
// several matches) the write is rolled back and the error says how many rows matched.
class ResultWriteBack
{
public:
    ResultWriteBack(const QSqlDatabase &db, const QString &table);

    // Writes a modified or inserted row and makes its edits the stored values.
    void postRow(ResultTable &result, qint64 row);
    // Deletes the row in the database (a row not yet inserted is only dropped) and marks it.
    void deleteRow(ResultTable &result, qint64 row);

    // The database half of the two above, reading the table but leaving it as it is, so it can
    // run on the connection's thread while the window's thread shows the table; the caller then
    // accepts the row (acceptRow, markDeleted) on its own thread.
    void writeToDatabase(const ResultTable &result, qint64 row);
    void deleteInDatabase(const ResultTable &result, qint64 row);

private:
    struct Where
    {
        QString sql;
        QVariantList values;
    };
    Where locate(const ResultTable &result, qint64 row) const;
    void checkSingleRow(const Where &where, const char *action);
    QString field(const ResultTable &result, int col) const;
    void update(const ResultTable &result, qint64 row);
    void insert(const ResultTable &result, qint64 row);

    QSqlDatabase m_db;
    QString m_table;
};
