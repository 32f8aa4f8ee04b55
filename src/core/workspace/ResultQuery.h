#pragma once
#include "ResultSource.h"
#include "ResultTable.h"

#include <QSqlDatabase>
#include <memory>

// One query's result as the result area works with it: the rows, where they came from, whether
// and where edits can be written back, and the statement to run again on refresh.
class ResultQuery
{
public:
    // Fetches the rows (at most recordLimit; <= 0 for all). Throws VantryError.
    void open(const QSqlDatabase &db, const QString &statement, qint64 recordLimit);
    // Runs the last statement again on the same connection.
    void refresh();
    void close();

    bool isOpen() const { return m_table != nullptr; }
    ResultTable *table() const { return m_table.get(); }
    const ResultSource &source() const { return m_source; }
    const QString &statement() const { return m_statement; }

    // Read-only as the user asked (the grid's read-only button) ...
    void setReadOnly(bool readOnly);
    // ... or because the result cannot be written back; the reason says why.
    bool isReadOnly() const;
    QString readOnlyReason() const;

    // Write-back of the edit buffer; each throws VantryError and leaves the row pending.
    void post(qint64 row);
    void postPending();
    void remove(qint64 row);

private:
    void requireWritable() const;
    void readNullability();

    QSqlDatabase m_db;
    QString m_statement;
    qint64 m_limit = 0;
    bool m_userReadOnly = false;
    ResultSource m_source;
    std::unique_ptr<ResultTable> m_table;
};
