#include "core/workspace/RunWorker.h"

#include "core/base/VantryError.h"
#include "core/connections/impDMun.h"
#include "core/workspace/ResultNullability.h"
#include "core/workspace/SqlRun.h"

#include <QLocale>
#include <QThread>

namespace {

// Rows read per round trip when every remaining row is wanted: large enough that the per-batch
// cost vanishes, small enough that the window gets rows to show and a cancel is seen often.
constexpr qint64 WholeResultBatch = 20000;

} // namespace

RunWorker::RunWorker(RunService *service, std::shared_ptr<RunControl> control)
    : m_service(service), m_control(std::move(control))
{
    m_connection.setStatusCallback([this](const QString &text) { status(text); });
}

RunWorker::~RunWorker()
{
    endResult();
    std::lock_guard<std::mutex> lock(m_control->mutex);
    if (m_control->engine)
        m_control->engine->release();
    m_control->engine.reset();
}

void RunWorker::report(std::function<void(RunService &)> fn)
{
    std::lock_guard<std::mutex> lock(m_control->mutex);
    if (m_control->abandoned)
        return;
    RunService *service = m_service;
    std::shared_ptr<RunControl> control = m_control;
    QMetaObject::invokeMethod(
        service,
        [service, control, fn = std::move(fn)] {
            if (service->m_control == control)
                fn(*service);
        },
        Qt::QueuedConnection);
}

void RunWorker::status(const QString &text)
{
    report([text](RunService &s) { emit s.statusChanged(text); });
}

void RunWorker::logStart(const QString &statement)
{
    report([statement](RunService &s) { emit s.statementStarted(statement); });
}

void RunWorker::logOutcome(const QString &message, int level)
{
    report([message, level](RunService &s) {
        emit s.messageLogged(message, level);
        emit s.statusChanged(level == 0 ? message : QStringLiteral("Error"));
    });
}

QString RunWorker::failureText(const QString &message) const
{
    return cancelled() ? QStringLiteral("Cancelled by the user: ") + message : message;
}

void RunWorker::finishJob()
{
    const quint64 job = m_job;
    report([job](RunService &s) { s.jobDone(job); });
}

bool RunWorker::connect(const TReaderConnection &record, const QString &statement)
{
    endResult();
    {
        std::lock_guard<std::mutex> lock(m_control->mutex);
        if (m_control->engine)
            m_control->engine->release();
        m_control->engine.reset();
    }
    m_control->connecting = true;
    try {
        m_connection.connect(record);
    } catch (const VantryError &e) {
        m_control->connecting = false;
        // A failure before the statement reached the log still gets a row of its own.
        logStart(statement);
        logOutcome(failureText(e.message()), 2);
        return false;
    }
    m_control->connecting = false;
    if (m_connection.openPath() != AccessPath::Oracle) {
        auto engine = EngineCancel::forConnection(m_connection.database());
        std::lock_guard<std::mutex> lock(m_control->mutex);
        m_control->engine = std::move(engine);
    }
    return true;
}

bool RunWorker::stoppedAfterConnect(const QString &statement)
{
    if (!cancelled())
        return false;
    // A cancel that came while connecting: nothing of the run may reach the database.
    logStart(statement);
    logOutcome(QStringLiteral("Cancelled by the user before the statement ran"), 2);
    return true;
}

std::shared_ptr<EngineCancel> RunWorker::engine() const
{
    std::lock_guard<std::mutex> lock(m_control->mutex);
    return m_control->engine;
}

void RunWorker::endResult()
{
    if (m_cursor)
        m_cursor->close();
    m_cursor.reset();
}

void RunWorker::runStatement(const TReaderConnection &record, const QString &statement,
                             const RunService::Options &options, bool isQuery, bool recordHistory)
{
    if (!connect(record, statement) || stoppedAfterConnect(statement))
        return;
    status(QStringLiteral("Executing"));
    logStart(statement);
    try {
        if (isQuery)
            openQuery(statement, options);
        else
            executeCommand(statement);
    } catch (const VantryError &e) {
        logOutcome(failureText(e.message()), 2);
        return;
    }
    if (cancelled()) {
        // Some servers end a killed statement without an error (MariaDB's SLEEP, BENCHMARK): its
        // outcome is not what the statement would have given, so it is no success.
        logOutcome(QStringLiteral("Cancelled by the user: the server stopped the statement early"), 2);
        return;
    }
    report([statement, recordHistory](RunService &s) { s.statementSucceeded(statement, recordHistory); });
}

void RunWorker::runScript(const TReaderConnection &record, const QStringList &chunks)
{
    if (!connect(record, chunks.join(QLatin1Char('\n'))) || stoppedAfterConnect(chunks.value(0)))
        return;
    for (const QString &chunk : chunks) {
        // A cancel stops the script before its next chunk.
        if (cancelled())
            return;
        status(QStringLiteral("Executing"));
        logStart(chunk);
        try {
            executeCommand(chunk);
            logOutcome(QStringLiteral("OK."), 0);
        } catch (const VantryError &e) {
            logOutcome(failureText(e.message()), 2);
        }
    }
}

void RunWorker::refresh(const RunService::Options &options)
{
    logStart(m_lastQuery);
    status(QStringLiteral("Executing"));
    try {
        if (m_lastQuery.isEmpty())
            throw VantryError(QStringLiteral("No query has been run yet"));
        openQuery(m_lastQuery, options);
        logOutcome(QStringLiteral("OK."), 0);
    } catch (const VantryError &e) {
        logOutcome(failureText(e.message()), 2);
    }
}

void RunWorker::openQuery(const QString &statement, const RunService::Options &options)
{
    endResult();
    m_lastQuery = statement;
    m_options = options;
    const QSqlDatabase db = m_connection.database();
    ResultSource source = ResultSource::analyse(statement);
    // The table's description comes first: once rows stream, the connection takes nothing else.
    const QSqlRecord described = source.writable ? ResultNullability::tableRecord(db, source.table) : QSqlRecord();
    std::unique_ptr<ResultCursor> cursor = ResultCursor::open(db, statement, ResultCursor::Path::Automatic, engine().get());
    std::shared_ptr<ResultTable> table(cursor->emptyTable().release());
    bool more = cursor->fetch(*table, std::max<qint64>(options.batchRows, 1));
    if (source.writable && table->columnCount() == 0) {
        source.writable = false;
        source.reason = QStringLiteral("The result has no columns");
    }
    ResultNullability::apply(described, *table);
    table->finishFetch(more);
    if (options.capAtFirstBatch || !more) {
        cursor->close();
        more = false;
    } else {
        m_cursor = std::move(cursor);
    }
    m_resultBytes = qint64(table->memoryBytes());
    m_resultRows = table->fetchedRows();
    report([table, source, more](RunService &s) { emit s.resultOpened(table, source, more); });
}

void RunWorker::waitForWindow() const
{
    constexpr int MaxBatchesInFlight = 2;
    while (m_control->batchesInFlight.load() >= MaxBatchesInFlight && !cancelled()) {
        {
            std::lock_guard<std::mutex> lock(m_control->mutex);
            if (m_control->abandoned)
                return;
        }
        QThread::msleep(1);
    }
}

void RunWorker::fetchMore(qint64 rows)
{
    while (m_cursor) {
        waitForWindow();
        const qint64 wanted = rows > 0 ? rows : WholeResultBatch;
        std::shared_ptr<ResultTable> batch(m_cursor->emptyTable().release());
        bool more = false;
        QString stopped;
        try {
            more = m_cursor->fetch(*batch, wanted);
        } catch (const VantryError &e) {
            stopped = failureText(e.message());
        }
        m_resultBytes += qint64(batch->memoryBytes());
        m_resultRows += batch->columnCount() ? batch->column(0).rowCount() : 0;
        if (stopped.isEmpty() && more && cancelled())
            stopped = QStringLiteral("Cancelled by the user");
        if (stopped.isEmpty() && more && m_options.memoryBudget > 0 && m_resultBytes >= m_options.memoryBudget)
            stopped = QStringLiteral("the result reached the memory limit of %1 MB")
                          .arg(m_options.memoryBudget / (1024 * 1024));
        if (!stopped.isEmpty() || !more) {
            endResult();
            more = false;
        }
        ++m_control->batchesInFlight;
        report([batch, more, control = m_control](RunService &s) {
            emit s.rowsFetched(batch, more);
            --control->batchesInFlight;
        });
        if (!stopped.isEmpty()) {
            const QString reason = QStringLiteral("Fetched %1 rows; fetching stopped: %2")
                                       .arg(QLocale::c().toString(m_resultRows), stopped);
            report([reason](RunService &s) { emit s.fetchStopped(reason); });
        }
        if (rows > 0)
            break;
    }
}

void RunWorker::stopFetching()
{
    endResult();
}

void RunWorker::executeCommand(const QString &statement)
{
    SqlRun::executeCommand(m_connection.database(), statement, engine().get());
}

void RunWorker::listTables(const TReaderConnection &record, bool includeSystemTables)
{
    // The table list has a discovery connection of its own, made and used on this thread.
    try {
        TimpDM discovery;
        QStringList names;
        discovery.GetTablesListR(record, names, true, includeSystemTables);
        report([names](RunService &s) { emit s.tablesListed(names); });
    } catch (const VantryError &e) {
        const QString message = e.message();
        report([message](RunService &s) { emit s.tablesFailed(message); });
    }
}

void RunWorker::closeConnection()
{
    endResult();
    m_connection.closeConnection();
}

void RunWorker::onConnection(const std::function<void(const QSqlDatabase &)> &work,
                             const std::function<void(const QString &)> &done)
{
    QString error;
    try {
        endResult();
        work(m_connection.database());
    } catch (const VantryError &e) {
        error = failureText(e.message());
    }
    report([done, error](RunService &) { done(error); });
}
