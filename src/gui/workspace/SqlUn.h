#pragma once
#include "app/AppServices.h"

#include <QWidget>

class ConnectionList;
class ConnectionGridModel;
class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QSpinBox;
class QSplitter;
class QTableView;
class QToolBar;
class QToolButton;
class QsciScintilla;
class TSqlLogFrame;

// One workspace tab: the connection panel with the table list on the left, the SQL editor, the
// result area and the execution log on the right, and two toolbars on top.
class TSqlFrm : public QWidget
{
    Q_OBJECT
public:
    TSqlFrm(const AppServices &services, QObject *mainWindow, QWidget *parent = nullptr);
    ~TSqlFrm() override;

    ConnectionList *mdsConnections() const { return m_connections; }
    QComboBox *cbStyle() const { return m_cbStyle; }
    QsciScintilla *editor() const { return se; }
    TSqlLogFrame *log() const { return LogPanel; }

    // Stored settings under "SQL\", shared by every tab.
    void restoreSettings();
    void saveSettings();

    void setStatus(const QString &text);

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

    // The connection grid's pop-up menu.
    void ConnectionPropertiesItemClick();
    void AddConnectionItemClick();
    void DeleteConnectionItemClick();
    void RefreshConnectionItmClick();

private:
    friend class SqlFrmBuilder;
    QToolButton *button(const char *name) const;

    AppServices m_services;
    QObject *m_mainWindow;
    ConnectionList *m_connections = nullptr;
    ConnectionGridModel *m_connectionModel = nullptr;

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
    QWidget *Panel3 = nullptr;
    TSqlLogFrame *LogPanel = nullptr;
};
