#pragma once
#include "gui/app/AppServices.h"

#include <QHash>
#include <QMainWindow>

class QAction;
class QLabel;
class QMenuBar;
class PagerBar;
class QTabWidget;
class TSqlFrm;

// The main window: menu, toolbar, status bar and a pager of workspace tabs. Every command goes to
// the tab that is current; the window itself owns no database logic.
class TMFrm : public QMainWindow
{
    Q_OBJECT
public:
    explicit TMFrm(const AppServices &services, QWidget *parent = nullptr);
    ~TMFrm() override;

    TSqlFrm *currentFrame() const { return m_current; }
    QAction *action(const QString &name) const { return m_actions.value(name); }
    QTabWidget *pager() const { return PC; }
    QString statusText() const;
    // Text the first tab's editor shows instead of its saved one (a file named on the command line).
    void setFirstTabText(const QString &text) { m_firstTabText = text; }

public slots:
    void AddPage();
    void PCChange(int index);
    void PCClosePage(int index);
    void removePage(int index);
    // A new tab with the editor text of a closed one ("Closed Pages").
    void reopenPage(const QString &text);
    void showAbout();
    // The View items' check marks follow the current tab's panel toggles.
    void syncViewChecks();

protected:
    bool event(QEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void createActions();
    void createMenu();
    void createStatusBar();
    void FormShow();
    void FormDestroy();
    void restorePlacement();
    void savePlacement();

    // Runs `handler` on the current tab, when there is one.
    template <typename Handler> void onCurrentFrame(Handler handler);

    AppServices m_services;
    QTabWidget *PC = nullptr;
    PagerBar *m_pagerBar = nullptr; // the pager's buttons
    QMenuBar *MM = nullptr;
    QLabel *m_statusPanels[2] = {nullptr, nullptr};
    QHash<QString, QAction *> m_actions;
    TSqlFrm *m_current = nullptr;
    QString m_firstTabText;
    bool m_shown = false;
    bool m_destroyed = false;
};
