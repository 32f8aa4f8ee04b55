#pragma once
#include "workspace/ResultQuery.h"

#include <QWidget>
#include <functional>

class DBGridEh1;
class QAction;
class QLabel;
class QMenu;
class QToolBar;
class ResultFindDialog;
class ResultGroupingPanel;
class TdmTools;

// The result area Panel3 of a workspace tab: the grid toolbar and the grid DBGridEh1 with its
// commands. The tab opens a query here and closes it; errors of openQuery are VantryError for
// the tab to log, and errors of the toolbar commands arrive through commandFailed.
class ResultPanel : public QWidget
{
    Q_OBJECT
public:
    explicit ResultPanel(QWidget *parent = nullptr);
    ~ResultPanel() override;

    // Fetches the rows of a SELECT (at most recordLimit) and shows them; fits the column widths
    // when tbOptimizeWidth is down. Throws VantryError.
    void openQuery(const QSqlDatabase &db, const QString &statement, qint64 recordLimit);
    // Drops the result.
    void closeResult();
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

public slots:
    void Refresh1Click();        // re-runs the last query on the same connection (F5)
    void Add1Click();            // appends a new row (Ins)
    void tbPostClick();          // writes the pending rows to the database
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

signals:
    // A command failed; the text names the cause. The tab logs it.
    void commandFailed(const QString &message);

private:
    QAction *addButton(const char *name, const QString &caption, const QString &hint, const QKeySequence &shortcut = {});
    template<typename Fn>
    void guarded(Fn fn);
    void showResult();
    void updateState();
    void postRowIfPending(qint64 row);
    void setGroupColumns(const QVector<int> &columns);

    ResultQuery m_query;
    QToolBar *m_toolbar;
    DBGridEh1 *m_grid;
    ResultGroupingPanel *m_grouping;
    QLabel *m_status;
    QMenu *m_menu;
    ResultFindDialog *m_find = nullptr;
    std::function<bool(int)> m_confirmDelete;
    bool m_posting = false;
    TdmTools *m_tools = nullptr;
};
