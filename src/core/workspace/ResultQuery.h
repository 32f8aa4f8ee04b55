#pragma once
#include "core/workspace/ResultSource.h"
#include "core/workspace/ResultTable.h"

#include <QSqlDatabase>
#include <memory>

// One query's result as the result area works with it: the rows, where they came from, whether
// and where edits can be written back, and the statement to run again on refresh.
//
// A result read by the run service arrives through adopt() and appendBatch(); open(), refresh()
// and the write-back members work on a connection of the calling thread, for callers that
// already run off the window's thread.
class ResultQuery
{
public:
    // Takes a result whose first rows were read elsewhere; moreRemain tells whether further rows
    // can still be fetched.
    void adopt(std::shared_ptr<ResultTable> table, const ResultSource &source, bool moreRemain);
    // Adds a later batch of rows of the adopted result.
    void appendBatch(ResultTable &&batch, bool moreRemain);
    bool moreRemain() const { return m_moreRemain; }
    // No further rows will be fetched (the cursor was ended); the rows so far stay.
    void stopFetching() { m_moreRemain = false; }
    std::shared_ptr<ResultTable> sharedTable() const { return m_table; }

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

    QSqlDatabase m_db;
    QString m_statement;
    qint64 m_limit = 0;
    bool m_userReadOnly = false;
    ResultSource m_source;
    std::shared_ptr<ResultTable> m_table;
    bool m_moreRemain = false;
};
