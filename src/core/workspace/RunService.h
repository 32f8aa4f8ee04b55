#pragma once
#include "core/connections/vtrIL.h"
#include "core/workspace/ResultSource.h"
#include "core/workspace/ResultTable.h"

#include <QObject>
#include <QSqlDatabase>
#include <QStringList>

#include <functional>
#include <memory>

class QThread;
class RunWorker;
class SqlHistory;
struct RunControl;

// What one workspace tab runs against its database, off the window's thread. The service owns
// the tab's live connection on a worker thread of its own (Qt SQL connections belong to the
// thread that opened them) and does the whole of a run there: connect, query or command, script
// chunks, fetching rows on demand, write-back and the table list. It reports back by signals,
// delivered on the thread the service lives on (the window's).
//
// One job runs at a time; jobs asked for meanwhile wait their turn. cancel() stops the running
// statement or fetch through the engine's own cancel call, and a connect that hangs is left to
// finish on its own while the service goes on with a fresh worker.
class RunService : public QObject
{
    Q_OBJECT
public:
    struct Options
    {
        // Rows of each batch read from the result. The first batch shows at once; later ones
        // come as the grid asks for them.
        qint64 batchRows = 1000;
        // When set, the first batch is the whole result (a maximum record count): the rest is
        // never fetched.
        bool capAtFirstBatch = false;
        // Bytes the rows of one result may take; a fetch that would pass it stops. 0: no limit.
        qint64 memoryBudget = 0;
    };

    explicit RunService(QObject *parent = nullptr);
    // Cancels what runs and waits for the worker to end; a worker still stuck in a connect after
    // a short wait is left to end on its own.
    ~RunService() override;

    // The history that Run SQL adds its statements to; may be null.
    void setHistory(SqlHistory *history) { m_history = history; }

    bool isBusy() const { return m_pendingJobs > 0; }

    // Run SQL: reconnects, then runs the statement as a query when its first six letters are
    // "SELECT", else as a command; a statement that ran is added to the history when it differs
    // from the history's current row.
    void runStatement(const TReaderConnection &record, const QString &statement, const Options &options);
    // A table's rows: reconnects and opens the query; the history is left alone.
    void openTable(const TReaderConnection &record, const QString &statement, const Options &options);
    // Run as Script: reconnects, then runs every chunk as a command; a failing chunk does not stop
    // the script, a cancel stops it before its next chunk.
    void runScript(const TReaderConnection &record, const QStringList &chunks);
    // Runs the last query again on the same connection.
    void refresh(const Options &options);
    // Reads the next rows of the open result: `rows` more, or all that remain when rows <= 0.
    void fetchMore(qint64 rows);
    // Ends the open result on the server; the rows fetched so far stay where they are.
    void stopFetching();
    // The table names of a connection (the tab's table list), on a connection of their own.
    void listTables(const TReaderConnection &record, bool includeSystemTables);
    // "Close Connection": ends the result and closes the universal and ADO paths.
    void closeConnection();
    // Runs `work` on the open connection (after ending any open result), then `done` on this
    // service's thread with an empty text on success or the error's message.
    void onConnection(std::function<void(const QSqlDatabase &)> work, std::function<void(const QString &error)> done);

    // Stops the running statement, fetch or connect. Safe to call when nothing runs.
    void cancel();

signals:
    void busyChanged(bool busy);
    void statusChanged(const QString &text);                // "Connecting", "Executing", "OK." ...
    void statementStarted(const QString &statement);        // the log's new row
    void messageLogged(const QString &message, int level);  // the log row's outcome: 0 OK, 2 error
    // A query opened: its first rows, where they can be written back, and whether more remain.
    void resultOpened(std::shared_ptr<ResultTable> table, const ResultSource &source, bool moreRemain);
    void rowsFetched(std::shared_ptr<ResultTable> batch, bool moreRemain);
    // Fetching ended early (a cancel, the memory budget, an error); the text says why.
    void fetchStopped(const QString &reason);
    void tablesListed(const QStringList &names);
    void tablesFailed(const QString &message);

private:
    friend class RunWorker;
    using Job = std::function<void(RunWorker &)>;
    void startWorker();
    void cancelEngine();
    void post(Job job);
    void jobDone(quint64 generation);
    // Applies the history rule and logs "OK.", on this thread (the catalogue lives here).
    void statementSucceeded(const QString &statement, bool record);

    QThread *m_thread = nullptr;
    RunWorker *m_worker = nullptr;
    std::shared_ptr<RunControl> m_control;
    SqlHistory *m_history = nullptr;
    int m_pendingJobs = 0;
};
