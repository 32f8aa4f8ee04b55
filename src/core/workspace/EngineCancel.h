#pragma once
#include <QSqlDatabase>

#include <functional>
#include <memory>
#include <mutex>

class QSqlQuery;

// Stops what runs on one open connection through the engine's own cancel call: SQLite's
// sqlite3_interrupt, PostgreSQL's PQcancel, MariaDB's KILL QUERY on a second connection,
// Firebird's fb_cancel_operation, ODBC's SQLCancel on the running statement.
//
// Made on the thread that owns the connection, right after it opens; cancel() is called from
// another thread and may wait on the network, so never from the window's thread. release() runs
// on the owning thread before the connection closes; from then on cancel() does nothing, so a
// late cancel never touches a closed handle.
class EngineCancel
{
public:
    static std::shared_ptr<EngineCancel> forConnection(const QSqlDatabase &db);
    ~EngineCancel();

    // The statement running now, for engines that cancel a statement rather than a connection
    // (ODBC); nullptr when it is done.
    void watchStatement(const QSqlQuery *query);

    void cancel();
    void release();

private:
    EngineCancel() = default;

    std::mutex m_mutex;
    std::function<void()> m_cancel;       // the engine's cancel of the connection
    std::function<void()> m_release;      // frees what the cancel holds
    void *m_statement = nullptr;          // ODBC statement handle while one runs
    bool m_statementCancel = false;       // the engine cancels statements (ODBC)
};
