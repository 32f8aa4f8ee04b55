#pragma once
#include "core/workspace/ResultQuery.h"
#include "core/workspace/RowChange.h"
#include "core/workspace/TableKeys.h"
#include "core/workspace/RunService.h"
#include "gui/interchange/DatasetImportTarget.h"

#include <QWidget>
#include <functional>

class DBGridEh1;
class QAction;
class QLabel;
class QMenu;
class QToolBar;
class ResultFindDialog;
class ResultGroupingPanel;
class ExportSource;
class TdmTools;

// The result area Panel3 of a workspace tab: the grid toolbar and the grid DBGridEh1 with its
// commands. The tab's run service opens a query and hands its first rows here; further rows are
// fetched through the service as the user scrolls towards the end, jumps to the last row, or
// sorts, filters or groups. Edits are written back through the service too, so the window never
// waits on the database. Errors of the commands arrive through commandFailed. The import wizard
// appends its rows here, each written back as it arrives.
class ResultPanel : public QWidget, public DatasetImportTarget
{
    Q_OBJECT
public:
    explicit ResultPanel(QWidget *parent = nullptr);
    ~ResultPanel() override;

    // The service that fetches, refreshes and writes back; `options` gives the batch size and the
    // memory limit of the next refresh.
    void setRunService(RunService *run, std::function<RunService::Options()> options);
    // Shows a result's first rows; fits the column widths when tbOptimizeWidth is down.
    void showResult(std::shared_ptr<ResultTable> table, const ResultSource &source, bool moreRemain);
    // Adds a later batch of rows of the shown result.
    void appendRows(std::shared_ptr<ResultTable> batch, bool moreRemain);
    // Fetching stopped early (cancel, memory limit, error): no more rows come.
    void fetchingStopped();
    // Reads every remaining row (export, sort, filter and grouping need them all).
    void fetchAll();
    // Drops the result.
    void closeResult();
    // Unposted edits are never dropped: with none, `proceed` runs at once; otherwise the user is
    // asked to save (post, then proceed once written), discard (then proceed) or cancel.
    void resolvePendingEdits(std::function<void()> proceed);
    bool hasPendingEdits() const;
    bool isResultOpen() const { return m_query.isOpen(); }
    ResultQuery &query() { return m_query; }
    DBGridEh1 *grid() const { return m_grid; }

    // The states the tab keeps in its settings ("tbReadOnly.Down" and the others); setting one
    // runs its command as a click would.
    bool readOnlyDown() const;
    void setReadOnlyDown(bool down);
    bool optimizeWidthDown() const;
    void setOptimizeWidthDown(bool down);
    bool showGrouppingDown() const;
    void setShowGrouppingDown(bool down);

    // The tools service that exports and prints the grid; without it those commands do nothing.
    void setTools(TdmTools *tools) { m_tools = tools; }

    // Asked before Delete1Click deletes; the default shows a question box. Tests replace it.
    void setDeleteConfirmation(std::function<bool(int rows)> confirm) { m_confirmDelete = std::move(confirm); }
    enum class PendingChoice { Save, Discard, Cancel };
    // Asked when unposted edits stand in the way of another command; tests replace it.
    void setPendingEditsQuestion(std::function<PendingChoice()> ask) { m_askPending = std::move(ask); }

    // The import wizard's side of the result (in ResultPanelImport.cpp).
    QVector<int> visibleFields() const override;
    void appendRow(const Fill &fill, std::function<void(const QString &error)> done) override;

public slots:
    void Refresh1Click();        // re-runs the last query on the same connection (F5)
    void Add1Click();            // appends a new row (Ins)
    void tbPostClick();          // writes the pending rows to the database
    void SetNull1Click();        // sets the current cell to NULL (Ctrl+0)
    void Delete1Click();         // deletes the selected rows after a confirmation (Ctrl+Del)
    void tbCloneClick();         // appends a copy of the current row
    void Find1Click();           // the grid's find dialog (Ctrl+F)
    void tbOptimizeWidthClick(); // fits all column widths
    void tbShowGrouppingClick(); // shows or hides the grouping panel
    void tbReadOnlyClick();      // read-only mode
    // In ResultPanelExport.cpp:
    void MenuItem1Click();       // exports the grid's rows to a file (Export Data)
    void Print1Click();          // grid print preview; "Print" deliberately previews too
    void MenuItem4Click();       // grid print preview (Preview)
    void tbExcelExportClick();   // exports the grid's rows to a workbook (Export To Excel)
    // In ResultPanelImport.cpp:
    void tbImportClick();        // loads a workbook sheet into the result (Import Data)

signals:
    // A command failed; the text names the cause. The tab logs it.
    void commandFailed(const QString &message);

private:
    QAction *addButton(const char *name, const QString &caption, const QString &hint, const QKeySequence &shortcut = {});
    template<typename Fn>
    void guarded(Fn fn);
    void showRows();
    void updateState();
    void postRowIfPending(qint64 row);
    // Writes the pending rows through the service; `then` runs once all are written.
    void postPending(std::function<void()> then);
    // Writes the changes one by one on the connection's thread and accepts each written row here;
    // the first failure stops the rest, marks its row and goes to the log. `then` runs when all
    // were written.
    void writeChanges(std::vector<RowChange> changes, std::function<void()> then);
    // The same, telling `finished` the outcome (an empty text, or the failure) instead of the log.
    void writeChangesFor(std::vector<RowChange> changes, std::function<void(const QString &error)> finished);
    void requestRows(qint64 rows);
    void fetchIfNearEnd();
    // Ends the on-demand fetch before the result is changed here (edits, inserts).
    void stopFetchingForEdit();
    bool eventFilter(QObject *watched, QEvent *event) override;
    void rebuildingChanged(bool rebuilding);
    // True, with a message, while a large result is being ordered: the table must not change.
    bool refuseWhileSorting();
    // Runs `then` once every row of the result is fetched (at once when none remain).
    void withAllRows(std::function<void()> then);
    std::shared_ptr<ExportSource> exportSource();
    void setGroupColumns(const QVector<int> &columns);

    ResultQuery m_query;
    QToolBar *m_toolbar;
    DBGridEh1 *m_grid;
    ResultGroupingPanel *m_grouping;
    QLabel *m_status;
    QMenu *m_menu;
    ResultFindDialog *m_find = nullptr;
    std::function<bool(int)> m_confirmDelete;
    std::function<PendingChoice()> m_askPending;
    RunService *m_run = nullptr;
    std::shared_ptr<TableKeyCache> m_keys = std::make_shared<TableKeyCache>();
    std::function<RunService::Options()> m_options;
    bool m_posting = false;
    bool m_fetching = false;     // a fetch of rows is under way
    bool m_fetchingAll = false;  // ... and it reads every remaining row
    bool m_hasQuery = false;     // a query was shown since the tab opened: Refresh can run
    struct WaitingBatch
    {
        std::shared_ptr<ResultTable> rows;
        bool moreRemain;
    };
    std::vector<WaitingBatch> m_waitingBatches;  // arrived while the rows were being ordered
    std::function<void()> m_afterFetchAll;       // an export waiting for the last rows
    TdmTools *m_tools = nullptr;
};
