#pragma once
#include "gui/app/AppServices.h"
#include "core/connections/WorkspaceConnection.h"
#include "core/workspace/RunService.h"
#include "core/connections/vtrIL.h"

#include <QWidget>

class ConnectionList;
class ConnectionGridModel;
class QComboBox;
class QLineEdit;
class QListWidget;
class QMenu;
class QSpinBox;
class QSplitter;
class QTableView;
class QToolBar;
class QToolButton;
class QsciScintilla;
class ResultPanel;
class TSqlLogFrame;

// One workspace tab: the connection panel with the table list on the left, the SQL editor, the
// result area and the execution log on the right, and two toolbars on top.
class TSqlFrm : public QWidget
{
    Q_OBJECT
public:
    TSqlFrm(const AppServices &services, QObject *mainWindow, QWidget *parent = nullptr);
    ~TSqlFrm() override;
    // Before the tab closes or the program quits: with unposted edits in the grid the user saves
    // them (proceed runs once they are written), discards them (proceed runs) or cancels.
    void whenEditsResolved(std::function<void()> proceed);
    bool hasPendingEdits() const;

    ConnectionList *mdsConnections() const { return m_connections; }
    QComboBox *cbStyle() const { return m_cbStyle; }
    QsciScintilla *editor() const { return se; }
    TSqlLogFrame *log() const { return LogPanel; }
    ResultPanel *resultPanel() const { return Panel3; }
    RunService *runService() const { return m_run; }
    // A statement, script, fetch or table listing of this tab is under way.
    bool isRunning() const { return m_run->isBusy(); }
    QListWidget *tablesList() const { return lbTablesList; }

    // Stored settings under "SQL\", shared by every tab.
    void restoreSettings();
    void saveSettings();

    void setStatus(const QString &text);

    // The record of the connection row under the grid's cursor, path macros expanded; with no
    // current row, the record of the previous call.
    TReaderConnection GetConnection();
    // A frame that works on one handed-in record instead of the connection grid (the table browser).
    void setFixedConnection(const TReaderConnection &record);
    // Whether the connection dialog may change a connection's type.
    void setTypeLocked(bool locked) { m_typeLocked = locked; }

    // Fills the table list from names (the table browser hands in its own).
    void setTableNames(const QStringList &names);

signals:
    void addTabRequested();

public slots:
    // Panel toggles: each reads its own button's state.
    void tbShowSqlClick();
    void tbShowConnectionsClick();
    void tbShowLogClick();
    void tbShowSystemTablesClick();
    // The main menu's View items: flip the button, then run its handler.
    void toggleShowSql();
    void toggleShowConnections();
    void toggleShowLog();
    void toggleShowSystemTables();

    void cbStyleChange();
    void fsRestorePlacement();

    // Run SQL (F3), Run as Script (F4), history previous (F11) / next (F12), history picker (F6).
    void ToolButton7Click();
    void tbRunScriptClick();
    void SBPreviosClick();
    void SBNextClick();
    void sbSqlSelectClick();
    void tbSqlBuilderClick();
    void tbCancelRunClick();  // stops what runs (Esc)

    // The connection grid and its pop-up menu.
    void cbConListClick();
    void ConnectionPropertiesItemClick();
    void AddConnectionItemClick();
    void DeleteConnectionItemClick();
    void RefreshConnectionItmClick();
    void N7Click();  // Close Connection

    // The table list and its pop-up menu.
    void JvIncSearchChange();
    void lbTablesListClick();
    void Selectfromtable1Click();
    void Deletefromtable1Click();
    void runcatetable1Click();  // Truncate table

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void setPageCaption(const QString &caption);
    void followCaptionConnection();
    friend class SqlFrmBuilder;
    QToolButton *button(const char *name) const;
    QString selectedTable() const;
    bool onOraclePath() const;
    void runConnectionDialog();
    void logFailure(const QString &statement, const QString &message);
    // A grid command or write-back failed: a log row of its own, the log scrolled to it, and the
    // failure's first line in the status bar.
    void logGridFailure(const QString &message);
    // "Error: " and the first line of a message, cut to fit the status bar.
    static QString briefStatus(const QString &message);
    RunService::Options runOptions();
    void runBusyChanged(bool busy);
    void connectRunService();
    // The first step of both run commands: an empty editor is refused with a message box.
    bool hasTextToRun();

    AppServices m_services;
    QObject *m_mainWindow;
    ConnectionList *m_connections = nullptr;
    ConnectionGridModel *m_connectionModel = nullptr;
    RunService *m_run = nullptr;
    TReaderConnection m_record;
    bool m_fixedRecord = false;
    qint64 m_captionConnectionId = 0; // the stored connection the page's caption names, 0 for none
    bool m_typeLocked = false;

    QToolBar *tb1 = nullptr;
    QToolBar *tb2 = nullptr;
    QComboBox *m_cbStyle = nullptr;
    QComboBox *peSeparator = nullptr;
    QSpinBox *seRecords = nullptr;
    QSplitter *Splitter3 = nullptr;   // connections panel | work area
    QSplitter *Splitter2 = nullptr;   // connection grid | tables panel
    QSplitter *Splitter1 = nullptr;   // SQL panel | result area | log
    QWidget *Panel1 = nullptr;
    QTableView *ConnectionsGrid = nullptr;
    QWidget *TablesPanel = nullptr;
    QLineEdit *JvIncSearch = nullptr;
    QListWidget *lbTablesList = nullptr;
    QListWidget *lb = nullptr;
    QWidget *SqlPanel = nullptr;
    QsciScintilla *se = nullptr;
    ResultPanel *Panel3 = nullptr;
    TSqlLogFrame *LogPanel = nullptr;
};
