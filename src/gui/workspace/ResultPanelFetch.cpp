// The result area's traffic with the run service: rows fetched on demand, Refresh, and edits
// written back on the connection's thread.
#include "gui/workspace/ResultPanel.h"

#include "gui/components/DBGridEh1.h"
#include "gui/components/ResultGridModel.h"
#include "core/workspace/ResultWriteBack.h"
#include "core/workspace/TableKeys.h"

#include <QAction>
#include <QKeyEvent>
#include <QMessageBox>
#include <QScrollBar>

#include <utility>

void ResultPanel::setRunService(RunService *run, std::function<RunService::Options()> options)
{
    m_run = run;
    m_options = std::move(options);
    m_askPending = [this] {
        const auto answer = QMessageBox::question(this, QStringLiteral("Unsaved changes"),
                                                  QStringLiteral("The result has changes that are not saved yet. Save them?"),
                                                  QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel,
                                                  QMessageBox::Save);
        return answer == QMessageBox::Save      ? PendingChoice::Save
               : answer == QMessageBox::Discard ? PendingChoice::Discard
                                                : PendingChoice::Cancel;
    };
}

void ResultPanel::showResult(std::shared_ptr<ResultTable> table, const ResultSource &source, bool moreRemain)
{
    closeResult();
    // Keys are read again for each result: the user may have changed the table in between.
    m_keys = std::make_shared<TableKeyCache>();
    m_query.adopt(std::move(table), source, moreRemain);
    m_hasQuery = true;
    showRows();
    fetchIfNearEnd();
}

void ResultPanel::showRows()
{
    m_query.setReadOnly(readOnlyDown());
    m_grid->setResult(m_query.table(), m_query.sharedTable());
    setGroupColumns({});
    if (optimizeWidthDown())
        m_grid->optimizeColumnWidths();
    updateState();
}

void ResultPanel::appendRows(std::shared_ptr<ResultTable> batch, bool moreRemain)
{
    m_fetching = m_fetchingAll && moreRemain;
    if (!m_query.isOpen())
        return;
    // The table must not change while its rows are ordered off this thread: the batch waits.
    if (m_grid->gridModel()->isRebuilding()) {
        m_waitingBatches.push_back({std::move(batch), moreRemain});
        return;
    }
    const qint64 firstNew = m_query.table()->rowCount();
    m_query.appendBatch(std::move(*batch), moreRemain);
    ResultGridModel *model = m_grid->gridModel();
    // A sorted or filtered view waits for the last batch, so it is ordered once.
    if (model->view().isIdentity())
        model->rowsAppended(firstNew);
    else if (!moreRemain)
        m_grid->refreshRows();
    if (!moreRemain) {
        m_fetchingAll = false;
        if (auto then = std::exchange(m_afterFetchAll, {}))
            then();
    }
    updateState();
    fetchIfNearEnd();
}

void ResultPanel::rebuildingChanged(bool rebuilding)
{
    if (!rebuilding) {
        std::vector<WaitingBatch> waiting;
        waiting.swap(m_waitingBatches);
        for (WaitingBatch &batch : waiting)
            appendRows(std::move(batch.rows), batch.moreRemain);
    }
    updateState();
}

bool ResultPanel::refuseWhileSorting()
{
    if (!m_grid->gridModel()->isRebuilding())
        return false;
    emit commandFailed(QStringLiteral("The rows are being sorted and filtered; try again in a moment"));
    return true;
}

void ResultPanel::fetchingStopped()
{
    m_fetching = m_fetchingAll = false;
    m_afterFetchAll = {};  // the export waits for rows that will not come: the user sees why in the log
    m_query.stopFetching();
    if (m_query.isOpen() && !m_grid->gridModel()->view().isIdentity())
        m_grid->refreshRows();
    updateState();
}

void ResultPanel::requestRows(qint64 rows)
{
    if (!m_run || !m_query.moreRemain() || m_fetching)
        return;
    m_fetching = true;
    m_fetchingAll = rows <= 0;
    m_run->fetchMore(rows);
    updateState();
}

void ResultPanel::fetchAll()
{
    if (m_fetching && !m_fetchingAll) {
        // A batch is on its way; ask for the rest after it.
        m_fetching = false;
    }
    requestRows(0);
}

void ResultPanel::fetchIfNearEnd()
{
    if (!m_query.moreRemain() || m_fetching)
        return;
    const QScrollBar *bar = m_grid->verticalScrollBar();
    if (bar->value() >= bar->maximum() - bar->pageStep())
        requestRows(m_options ? m_options().batchRows : 1000);
}

void ResultPanel::stopFetchingForEdit()
{
    if (!m_query.moreRemain() || !m_run)
        return;
    // Rows added here are numbered after the fetched ones, and a write needs the connection:
    // the result's cursor ends, and the rows fetched so far stay. Refresh reads them all again.
    m_run->stopFetching();
    m_query.stopFetching();
    m_fetching = m_fetchingAll = false;
    updateState();
}

bool ResultPanel::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_grid && event->type() == QEvent::KeyPress) {
        const auto *key = static_cast<QKeyEvent *>(event);
        if (key->key() == Qt::Key_End && (key->modifiers() & Qt::ControlModifier))
            fetchAll();  // the last row is wanted: read them all
    }
    return QWidget::eventFilter(watched, event);
}

void ResultPanel::Refresh1Click()
{
    if (!m_run || !m_hasQuery)
        return;
    resolvePendingEdits([this] {
        closeResult();
        m_run->refresh(m_options ? m_options() : RunService::Options());
    });
}

void ResultPanel::resolvePendingEdits(std::function<void()> proceed)
{
    m_grid->commitEditor();
    if (!m_query.isOpen() || m_query.table()->pendingRows().isEmpty()) {
        proceed();
        return;
    }
    switch (m_askPending ? m_askPending() : PendingChoice::Save) {
    case PendingChoice::Save:
        postPending(std::move(proceed));
        return;
    case PendingChoice::Discard:
        for (qint64 row : m_query.table()->pendingRows())
            m_query.table()->revertRow(row);
        m_grid->refreshRows();
        proceed();
        return;
    case PendingChoice::Cancel:
        return;
    }
}

bool ResultPanel::hasPendingEdits() const
{
    return m_query.isOpen() && (!m_query.table()->pendingRows().isEmpty()
                                || m_grid->isEditing());
}

void ResultPanel::tbPostClick()
{
    if (!m_query.isOpen() || m_query.isReadOnly())
        return;
    m_grid->commitEditor();
    postPending({});
}

void ResultPanel::postRowIfPending(qint64 row)
{
    if (m_posting || row < 0 || !m_query.isOpen() || m_query.isReadOnly())
        return;
    const auto state = m_query.table()->rowState(row);
    if (state == ResultTable::RowState::Modified || state == ResultTable::RowState::Inserted)
        postPending({});
}

void ResultPanel::postPending(std::function<void()> then)
{
    if (refuseWhileSorting())
        return;
    const QList<qint64> rows = m_query.isOpen() ? m_query.table()->pendingRows() : QList<qint64>();
    if (rows.isEmpty() || !m_run || m_posting) {
        if (rows.isEmpty() && then)
            then();
        return;
    }
    if (m_query.isReadOnly()) {
        emit commandFailed(QStringLiteral("The result is read-only: %1").arg(m_query.readOnlyReason()));
        return;
    }
    std::vector<RowChange> changes;
    for (qint64 row : rows)
        if (std::optional<RowChange> change = ResultWriteBack::snapshotPost(*m_query.table(), row, m_query.source().table))
            changes.push_back(std::move(*change));
    writeChanges(std::move(changes), std::move(then));
}

void ResultPanel::writeChanges(std::vector<RowChange> changes, std::function<void()> then)
{
    writeChangesFor(std::move(changes), [this, then = std::move(then)](const QString &error) {
        if (!error.isEmpty()) {
            // The edit stays in the grid, still pending and marked, and the reason goes to the log.
            emit commandFailed(error);
            return;
        }
        if (then)
            then();
    });
}

void ResultPanel::writeChangesFor(std::vector<RowChange> changes, std::function<void(const QString &error)> finished)
{
    if (changes.empty() || !m_run) {
        if (finished)
            finished({});
        return;
    }
    stopFetchingForEdit();
    m_posting = true;
    m_grid->setEnabled(false);  // no edits while the rows are on their way to the database
    std::shared_ptr<ResultTable> table = m_query.sharedTable();
    std::shared_ptr<TableKeyCache> keys = m_keys;
    auto outcomes = std::make_shared<std::vector<RowOutcome>>();
    auto failedRow = std::make_shared<qint64>(-1);
    m_run->onConnection(
        [changes = std::move(changes), keys, outcomes, failedRow](const QSqlDatabase &db) {
            for (const RowChange &change : changes) {
                *failedRow = change.row;
                outcomes->push_back(ResultWriteBack::apply(db, change, *keys));
            }
            *failedRow = -1;
        },
        [this, table, outcomes, failedRow, finished = std::move(finished)](const QString &error) {
            m_posting = false;
            m_grid->setEnabled(true);
            // The rows written take the values the database holds now (generated keys included).
            for (const RowOutcome &outcome : *outcomes)
                ResultWriteBack::accept(*table, outcome);
            if (!error.isEmpty() && *failedRow >= 0)
                table->setRowFailure(*failedRow, error);
            if (table == m_query.sharedTable())
                m_grid->refreshRows();
            updateState();
            if (finished)
                finished(error);
        });
}
