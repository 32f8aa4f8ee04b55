#pragma once
#include "core/connections/WorkspaceConnection.h"
#include "core/workspace/EngineCancel.h"
#include "core/workspace/ResultCursor.h"
#include "core/workspace/RunService.h"

#include <QObject>

#include <atomic>
#include <mutex>

// What the service and its worker share across threads: which jobs a cancel covers, whether the
// worker is inside a connect (where no engine can be cancelled), the engine cancel of the open
// connection, and whether the service has let go of this worker (it then reports nothing more).
struct RunControl
{
    std::atomic<quint64> posted{0};        // sequence number of the last job posted
    std::atomic<quint64> cancelledUpTo{0}; // jobs up to this number are cancelled
    std::atomic<bool> connecting{false};
    std::atomic<int> batchesInFlight{0};   // fetched batches the window has not taken yet

    std::mutex mutex;                      // guards the two below
    std::shared_ptr<EngineCancel> engine;
    bool abandoned = false;
};

// The worker half of RunService: lives on the service's worker thread and owns the tab's
// connection and the open result's cursor. Every member runs on that thread.
class RunWorker : public QObject
{
public:
    RunWorker(RunService *service, std::shared_ptr<RunControl> control);
    ~RunWorker() override;

    // The job being run and whether a cancel covers it.
    void beginJob(quint64 sequence) { m_job = sequence; }
    bool cancelled() const { return m_job <= m_control->cancelledUpTo.load(); }

    void runStatement(const TReaderConnection &record, const QString &statement,
                      const RunService::Options &options, bool isQuery, bool recordHistory);
    void runScript(const TReaderConnection &record, const QStringList &chunks);
    void refresh(const RunService::Options &options);
    void fetchMore(qint64 rows);
    void stopFetching();
    void listTables(const TReaderConnection &record, bool includeSystemTables);
    void closeConnection();
    void onConnection(const std::function<void(const QSqlDatabase &)> &work,
                      const std::function<void(const QString &)> &done);
    void finishJob();

private:
    // Posts `fn` to the service's thread, unless the service has let go of this worker.
    void report(std::function<void(RunService &)> fn);
    void status(const QString &text);
    void logStart(const QString &statement);
    void logOutcome(const QString &message, int level);
    // A failure's message; after a cancel it says so first.
    QString failureText(const QString &message) const;

    bool connect(const TReaderConnection &record, const QString &statement);
    bool stoppedAfterConnect(const QString &statement);
    // Waits while the window still has batches to take, so a fast server cannot pile up rows in
    // memory faster than the grid adds them.
    void waitForWindow() const;
    void openQuery(const QString &statement, const RunService::Options &options);
    void executeCommand(const QString &statement);
    void endResult();
    std::shared_ptr<EngineCancel> engine() const;

    RunService *m_service;
    std::shared_ptr<RunControl> m_control;
    WorkspaceConnection m_connection;
    std::unique_ptr<ResultCursor> m_cursor;
    QString m_lastQuery;
    RunService::Options m_options;
    qint64 m_resultBytes = 0;
    qint64 m_resultRows = 0;
    quint64 m_job = 0;
};
