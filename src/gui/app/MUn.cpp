#include "gui/app/MUn.h"

#include "gui/app/About.h"
#include "gui/app/MainActions.h"
#include "gui/app/PagerBar.h"
#include "core/base/SettingsStore.h"
#include "core/app/StatusMessage.h"
#include "gui/app/UserMessages.h"
#include "gui/connections/OdbcAdministrator.h"
#include "core/workspace/ConnectionList.h"
#include "gui/workspace/SqlUn.h"

#include <QAction>
#include <QPointer>
#include <QCloseEvent>
#include <QComboBox>
#include <QDesktopServices>
#include <QLabel>
#include <QMenuBar>
#include <QStatusBar>
#include <QTabBar>
#include <QTabWidget>
#include <QToolBar>
#include <QToolButton>
#include <QUrl>
#include <QVBoxLayout>
#include <Qsci/qsciscintilla.h>

namespace {
const QString kPlacementPath = QStringLiteral("P\\");

// The View items that show a tab's panel toggles, and the toggle each one mirrors.
struct ViewToggle
{
    const char *item;
    const char *button;
};
const ViewToggle kViewToggles[] = {
    {"SqlStatement1", "tbShowSql"},
    {"Connections1", "tbShowConnections"},
    {"SystemTables1", "tbShowSystemTables"},
    {"Log1", "tbShowLog"},
};
// The View items whose check marks the window keeps between runs.
const char *const kStoredChecks[] = {"Log1", "SystemTables1", "Conenctions1", "SqlStatement1"};
} // namespace

TMFrm::TMFrm(const AppServices &services, QWidget *parent)
    : QMainWindow(parent), m_services(services)
{
    setObjectName(QStringLiteral("MFrm"));
    setWindowTitle(QStringLiteral("Vantry"));
    createActions();
    createMenu();
    createStatusBar();

    PC = new PagerTabWidget(this);
    PC->setObjectName(QStringLiteral("PC"));
    PC->setTabsClosable(true);
    PC->setMovable(true);
    PC->setDocumentMode(true);
    m_pagerBar = new PagerBar(PC, PC);
    connect(m_pagerBar, &PagerBar::insertRequested, this, &TMFrm::AddPage);
    connect(m_pagerBar, &PagerBar::reopenRequested, this, &TMFrm::reopenPage);
    PC->setCornerWidget(m_pagerBar, Qt::TopRightCorner);
    connect(PC, &QTabWidget::currentChanged, this, &TMFrm::PCChange);
    connect(PC, &QTabWidget::tabCloseRequested, this, &TMFrm::PCClosePage);
    setCentralWidget(PC);

    restorePlacement();
}

TMFrm::~TMFrm()
{
    FormDestroy();
}

void TMFrm::createActions()
{
    for (const MainActionEntry &entry : mainActions()) {
        auto *a = new QAction(QString::fromLatin1(entry.caption), this);
        a->setObjectName(QString::fromLatin1(entry.name));
        a->setShortcut(entry.shortcut);
        a->setShortcutContext(Qt::WindowShortcut);
        a->setProperty("category", QString::fromLatin1(entry.category));
        if (*entry.hint)
            a->setToolTip(QString::fromLatin1(entry.hint));
        addAction(a);
        m_actions.insert(a->objectName(), a);
    }
    connect(action(QStringLiteral("Action1")), &QAction::triggered, this, &QWidget::close);
    connect(action(QStringLiteral("NewTabAct")), &QAction::triggered, this, &TMFrm::AddPage);
    connect(action(QStringLiteral("Aboutact")), &QAction::triggered, this, &TMFrm::showAbout);
    connect(action(QStringLiteral("HomePageAct")), &QAction::triggered, [] {
        QDesktopServices::openUrl(QUrl(TAboutFrm::homePageUrl()));
    });
    connect(action(QStringLiteral("EmailSupportAct")), &QAction::triggered, [] {
        QDesktopServices::openUrl(QUrl(TAboutFrm::supportUrl()));
    });
    connect(action(QStringLiteral("Action15")), &QAction::triggered, this, [this] { OdbcAdministrator::start(this); });

    const auto bind = [this](const char *name, void (TSqlFrm::*handler)()) {
        connect(action(QString::fromLatin1(name)), &QAction::triggered, this, [this, handler] {
            onCurrentFrame([handler](TSqlFrm *f) { UserMessages::guarded(f, [f, handler] { (f->*handler)(); }); });
        });
    };
    bind("Action3", &TSqlFrm::toggleShowSql);
    bind("Action4", &TSqlFrm::toggleShowConnections);
    bind("Action5", &TSqlFrm::toggleShowLog);
    bind("Action6", &TSqlFrm::toggleShowSystemTables);
    bind("Action13", &TSqlFrm::sbSqlSelectClick);
    bind("Action14", &TSqlFrm::tbSqlBuilderClick);
    bind("ConnectionProperiesAction", &TSqlFrm::ConnectionPropertiesItemClick);
    bind("AddConenctionAction", &TSqlFrm::AddConnectionItemClick);
    bind("DeleteConnectionAction", &TSqlFrm::DeleteConnectionItemClick);
    bind("Action2", &TSqlFrm::ToolButton7Click);
    bind("Action10", &TSqlFrm::tbRunScriptClick);
    bind("Action11", &TSqlFrm::SBPreviosClick);
    bind("Action12", &TSqlFrm::SBNextClick);
}

void TMFrm::createMenu()
{
    auto *dock = new QWidget(this);
    dock->setObjectName(QStringLiteral("AdvDockPanel1"));
    auto *dockLayout = new QVBoxLayout(dock);
    dockLayout->setContentsMargins(0, 0, 0, 0);
    auto *toolbar = new QToolBar(dock);
    toolbar->setObjectName(QStringLiteral("AdvToolBar1"));
    toolbar->setMovable(false);
    toolbar->setFloatable(false);
    dockLayout->addWidget(toolbar);

    MM = new QMenuBar(toolbar);
    MM->setObjectName(QStringLiteral("MM"));
    MM->setNativeMenuBar(false);
    for (const MainMenuEntry &menuEntry : mainMenus()) {
        QMenu *menu = MM->addMenu(QString::fromLatin1(menuEntry.caption));
        menu->setObjectName(QString::fromLatin1(menuEntry.name));
        menu->menuAction()->setObjectName(QString::fromLatin1(menuEntry.name));
        for (const MainMenuItem &item : menuEntry.items) {
            QAction *entry = nullptr;
            if (!item.action) {
                entry = menu->addSeparator();
            } else {
                QAction *target = action(QString::fromLatin1(item.action));
                const QString caption = item.caption ? QString::fromLatin1(item.caption) : target->text();
                // The item shows the action's key; the action itself owns the short cut.
                entry = menu->addAction(caption);
                entry->setShortcut(target->shortcut());
                entry->setShortcutContext(Qt::WidgetShortcut);
                entry->setToolTip(target->toolTip());
                connect(entry, &QAction::triggered, target, &QAction::trigger);
            }
            entry->setObjectName(QString::fromLatin1(item.name));
            entry->setParent(this);
        }
    }
    for (const ViewToggle &toggle : kViewToggles)
        findChild<QAction *>(QString::fromLatin1(toggle.item))->setCheckable(true);
    connect(findChild<QMenu *>(QStringLiteral("View1")), &QMenu::aboutToShow, this, &TMFrm::syncViewChecks);
    toolbar->addWidget(MM);
    setMenuWidget(dock);
}

void TMFrm::createStatusBar()
{
    statusBar()->setObjectName(QStringLiteral("sp"));
    for (int i = 0; i < 2; ++i) {
        m_statusPanels[i] = new QLabel(this);
        m_statusPanels[i]->setObjectName(QStringLiteral("spPanel%1").arg(i));
        m_statusPanels[i]->setMinimumWidth(i == 0 ? 200 : 0);
        statusBar()->addWidget(m_statusPanels[i], i);
    }
    m_statusPanels[0]->setText(QStringLiteral("Disconnected"));
}

QString TMFrm::statusText() const { return m_statusPanels[0]->text(); }

template <typename Handler> void TMFrm::onCurrentFrame(Handler handler)
{
    if (m_current)
        handler(m_current);
}

void TMFrm::AddPage()
{
    auto *frame = new TSqlFrm(m_services, this, PC);
    m_current = frame;
    PC->blockSignals(true);
    const int index = PC->addTab(frame, QStringLiteral("Sql Editior"));
    if (QWidget *close = PC->tabBar()->tabButton(index, QTabBar::RightSide))
        close->setToolTip(QStringLiteral("Close"));
    PC->setCurrentIndex(index);
    PC->blockSignals(false);
    frame->restoreSettings();
    frame->setObjectName(QStringLiteral("SqlFrm%1").arg(PC->count()));
    connect(frame, &TSqlFrm::addTabRequested, this, &TMFrm::AddPage);
}

void TMFrm::PCChange(int index)
{
    auto *frame = qobject_cast<TSqlFrm *>(PC->widget(index));
    if (!frame)
        return;
    if (m_current && m_current != frame)
        frame->cbStyle()->setCurrentIndex(m_current->cbStyle()->currentIndex());
    m_current = frame;
    frame->mdsConnections()->reopen();
}

void TMFrm::PCClosePage(int index)
{
    // Unposted edits of the tab are saved or discarded first, or the tab stays.
    QPointer<QWidget> page = PC->widget(index);
    if (auto *frame = qobject_cast<TSqlFrm *>(page.data()); frame && frame->hasPendingEdits()) {
        frame->whenEditsResolved([this, page] {
            if (page)
                removePage(PC->indexOf(page));
        });
        return;
    }
    removePage(index);
}

void TMFrm::removePage(int index)
{
    // The rule looks at the active page, not at the page being closed: closing an inactive tab
    // also moves the selection one page to the left. Deliberate; keep it.
    const int active = PC->currentIndex();
    if (active > 0)
        PC->setCurrentIndex(active - 1);
    QWidget *page = PC->widget(index);
    if (auto *frame = qobject_cast<TSqlFrm *>(page))
        m_pagerBar->recordClosed(PC->tabText(index), frame->editor()->text());
    PC->removeTab(index);
    if (page == m_current)
        m_current = qobject_cast<TSqlFrm *>(PC->currentWidget());
    delete page;
}

void TMFrm::reopenPage(const QString &text)
{
    AddPage();
    if (m_current)
        m_current->editor()->setText(text);
}

void TMFrm::showAbout()
{
    TAboutFrm about(this);
    about.exec();
}

bool TMFrm::event(QEvent *event)
{
    if (event->type() == StatusMessageEvent::kType) {
        m_statusPanels[0]->setText(static_cast<StatusMessageEvent *>(event)->text());
        return true;
    }
    return QMainWindow::event(event);
}

void TMFrm::showEvent(QShowEvent *event)
{
    QMainWindow::showEvent(event);
    if (!m_shown) {
        m_shown = true;
        FormShow();
    }
}

void TMFrm::FormShow()
{
    AddPage();
    if (!m_firstTabText.isNull() && m_current)
        m_current->editor()->setText(m_firstTabText);
}

void TMFrm::closeEvent(QCloseEvent *event)
{
    // Quitting with unposted edits: each tab's edits are saved or discarded first, then the
    // window closes again; a cancel keeps it open.
    for (int i = 0; i < PC->count(); ++i) {
        auto *frame = qobject_cast<TSqlFrm *>(PC->widget(i));
        if (frame && frame->hasPendingEdits()) {
            event->ignore();
            PC->setCurrentIndex(i);
            frame->whenEditsResolved([this] { QMetaObject::invokeMethod(this, &QWidget::close, Qt::QueuedConnection); });
            return;
        }
    }
    FormDestroy();
    QMainWindow::closeEvent(event);
}

void TMFrm::syncViewChecks()
{
    if (!m_current)
        return;
    for (const ViewToggle &toggle : kViewToggles) {
        auto *button = m_current->findChild<QToolButton *>(QString::fromLatin1(toggle.button));
        findChild<QAction *>(QString::fromLatin1(toggle.item))->setChecked(button && button->isChecked());
    }
}

void TMFrm::FormDestroy()
{
    if (m_destroyed)
        return;
    m_destroyed = true;
    syncViewChecks();
    // The tab that is current at exit decides the settings every tab starts with next time. A
    // settings file that cannot be written (disk full, read-only folder) is told, not ignored.
    UserMessages::guarded(this, [this] {
        if (m_current)
            m_current->saveSettings();
        savePlacement();
    });
}

void TMFrm::restorePlacement()
{
    SettingsStore *s = m_services.settings;
    if (!s)
        return;
    const QByteArray geometry = QByteArray::fromBase64(s->readString(kPlacementPath, QStringLiteral("Geometry")).toLatin1());
    if (!geometry.isEmpty())
        restoreGeometry(geometry);
    for (const char *name : kStoredChecks) {
        QAction *item = findChild<QAction *>(QString::fromLatin1(name));
        const QString key = QString::fromLatin1(name) + QStringLiteral(".Checked");
        if (item && item->isCheckable())
            item->setChecked(s->readBool(kPlacementPath, key, item->isChecked()));
    }
}

void TMFrm::savePlacement()
{
    SettingsStore *s = m_services.settings;
    if (!s)
        return;
    s->writeString(kPlacementPath, QStringLiteral("Geometry"), QString::fromLatin1(saveGeometry().toBase64()));
    for (const char *name : kStoredChecks) {
        QAction *item = findChild<QAction *>(QString::fromLatin1(name));
        if (item)
            s->writeBool(kPlacementPath, QString::fromLatin1(name) + QStringLiteral(".Checked"), item->isChecked());
    }
    s->sync();
}
