#include "core/workspace/RunService.h"

#include "core/app/SqlHistory.h"
#include "core/base/VantryError.h"
#include "core/workspace/RunWorker.h"
#include "core/workspace/SqlRun.h"

#include <QThread>

#include <thread>

namespace {

// How long closing a tab waits for its worker after a cancel before leaving it to end alone.
constexpr unsigned long WorkerExitWaitMs = 3000;

} // namespace

RunService::RunService(QObject *parent) : QObject(parent)
{
    startWorker();
}

RunService::~RunService()
{
    m_control->cancelledUpTo = m_control->posted.load();
    cancelEngine();
    {
        std::lock_guard<std::mutex> lock(m_control->mutex);
        m_control->abandoned = true;
    }
    m_thread->quit();
    if (!m_thread->wait(WorkerExitWaitMs))
        return; // the thread and its worker delete themselves when the hung call returns
    delete m_thread;
}

void RunService::startWorker()
{
    m_control = std::make_shared<RunControl>();
    m_thread = new QThread;
    m_thread->setObjectName(QStringLiteral("vantry-run"));
    m_worker = new RunWorker(this, m_control);
    m_worker->moveToThread(m_thread);
    QObject::connect(m_thread, &QThread::finished, m_worker, &QObject::deleteLater);
    m_thread->start();
}

void RunService::post(Job job)
{
    const quint64 sequence = ++m_control->posted;
    if (m_pendingJobs++ == 0)
        emit busyChanged(true);
    RunWorker *worker = m_worker;
    QMetaObject::invokeMethod(
        worker,
        [worker, sequence, job = std::move(job)] {
            worker->beginJob(sequence);
            job(*worker);
            worker->finishJob();
        },
        Qt::QueuedConnection);
}

void RunService::jobDone(quint64)
{
    if (m_pendingJobs > 0 && --m_pendingJobs == 0)
        emit busyChanged(false);
}

void RunService::statementSucceeded(const QString &statement, bool record)
{
    try {
        if (record && m_history && SqlRun::shouldRecord(*m_history, statement))
            m_history->append(statement);
    } catch (const VantryError &e) {
        emit messageLogged(e.message(), 2);
        emit statusChanged(QStringLiteral("Error"));
        return;
    }
    emit statusChanged(QStringLiteral("OK."));
    emit messageLogged(QStringLiteral("OK."), 0);
}

void RunService::runStatement(const TReaderConnection &record, const QString &statement, const Options &options)
{
    const bool query = SqlRun::isQuery(statement);
    post([=](RunWorker &w) { w.runStatement(record, statement, options, query, true); });
}

void RunService::openTable(const TReaderConnection &record, const QString &statement, const Options &options)
{
    post([=](RunWorker &w) { w.runStatement(record, statement, options, true, false); });
}

void RunService::runScript(const TReaderConnection &record, const QStringList &chunks)
{
    post([=](RunWorker &w) { w.runScript(record, chunks); });
}

void RunService::refresh(const Options &options)
{
    post([=](RunWorker &w) { w.refresh(options); });
}

void RunService::fetchMore(qint64 rows)
{
    post([=](RunWorker &w) { w.fetchMore(rows); });
}

void RunService::stopFetching()
{
    post([](RunWorker &w) { w.stopFetching(); });
}

void RunService::listTables(const TReaderConnection &record, bool includeSystemTables)
{
    post([=](RunWorker &w) { w.listTables(record, includeSystemTables); });
}

void RunService::closeConnection()
{
    post([](RunWorker &w) { w.closeConnection(); });
}

void RunService::onConnection(std::function<void(const QSqlDatabase &)> work, std::function<void(const QString &)> done)
{
    post([=](RunWorker &w) { w.onConnection(work, done); });
}

void RunService::cancel()
{
    if (!isBusy())
        return;
    m_control->cancelledUpTo = m_control->posted.load();
    if (m_control->connecting) {
        // No engine can stop a connect in progress: leave the worker to finish it unseen and go
        // on with a fresh one, so the tab is usable at once.
        {
            std::lock_guard<std::mutex> lock(m_control->mutex);
            m_control->abandoned = true;
        }
        QThread *old = m_thread;
        QObject::connect(old, &QThread::finished, old, &QObject::deleteLater);
        old->quit();
        startWorker();
        m_pendingJobs = 0;
        emit messageLogged(QStringLiteral("Cancelled by the user while connecting"), 2);
        emit statusChanged(QStringLiteral("Error"));
        emit busyChanged(false);
        return;
    }
    cancelEngine();
}

void RunService::cancelEngine()
{
    std::shared_ptr<EngineCancel> engine;
    {
        std::lock_guard<std::mutex> lock(m_control->mutex);
        engine = m_control->engine;
    }
    // The engine's cancel may wait on the network (PQcancel, a KILL QUERY connection): never on
    // this thread.
    if (engine)
        std::thread([engine] { engine->cancel(); }).detach();
}
