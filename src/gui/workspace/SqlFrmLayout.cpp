// Builds the widgets of a workspace tab, outside in: the two toolbars, the connections panel with
// the table list, the SQL panel, the result area and the log.
#include "gui/app/UserMessages.h"
#include "gui/components/SqlEditor.h"
#include "gui/interchange/DMToolsUn.h"
#include "gui/ui/EditorFiles.h"
#include "gui/ui/TextSearch.h"
#include "gui/workspace/ConnectionGridModel.h"
#include "core/workspace/ConnectionList.h"
#include "gui/workspace/ResultPanel.h"
#include "gui/workspace/SqlLogFrameUn.h"
#include "gui/workspace/SqlUn.h"

#include <Qsci/qsciscintilla.h>

#include <QAction>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QSpinBox>
#include <QSplitter>
#include <QTableView>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

class SqlFrmBuilder
{
public:
    explicit SqlFrmBuilder(TSqlFrm *frame) : f(frame) {}

    void build()
    {
        auto *layout = new QVBoxLayout(f);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSpacing(0);
        layout->addWidget(buildToolbars());

        f->Splitter3 = new QSplitter(Qt::Horizontal, f);
        f->Splitter3->setObjectName(QStringLiteral("Splitter3"));
        f->Splitter3->setChildrenCollapsible(false);
        f->Splitter3->addWidget(buildConnectionsPanel());
        f->Splitter3->addWidget(buildWorkArea());
        f->Splitter3->setStretchFactor(1, 1);
        f->Splitter3->setSizes({230, 800});
        layout->addWidget(f->Splitter3, 1);
    }

private:
    // The editor's file commands live with the editor.
    static EditorFiles *editorFiles(TSqlFrm *frame) { return frame->se->findChild<EditorFiles *>(); }

    // Connects a signal to a handler of the frame; an error the handler raises goes to the error box.
    template <typename Sender, typename Signal> void handle(Sender *sender, Signal signal, void (TSqlFrm::*slot)())
    {
        TSqlFrm *frame = f;
        QObject::connect(sender, signal, frame,
                         [frame, slot] { UserMessages::guarded(frame, [frame, slot] { (frame->*slot)(); }); });
    }

    QToolButton *tool(QToolBar *bar, const char *name, const QString &text, const QString &hint, bool checkable = false,
                      bool down = false)
    {
        auto *b = new QToolButton(bar);
        b->setObjectName(QString::fromLatin1(name));
        b->setText(text);
        b->setToolTip(hint.isEmpty() ? text : hint);
        b->setCheckable(checkable);
        b->setChecked(down);
        b->setAutoRaise(true);
        b->setToolButtonStyle(Qt::ToolButtonTextOnly);
        bar->addWidget(b);
        return b;
    }

    QToolBar *toolbar(QWidget *parent, const char *name)
    {
        auto *bar = new QToolBar(parent);
        bar->setObjectName(QString::fromLatin1(name));
        bar->setMovable(false);
        bar->setIconSize(QSize(16, 16));
        return bar;
    }

    QWidget *buildToolbars()
    {
        auto *adptop = new QWidget(f);
        adptop->setObjectName(QStringLiteral("adptop"));
        auto *rows = new QVBoxLayout(adptop);
        rows->setContentsMargins(2, 0, 2, 0);
        rows->setSpacing(0);
        auto *row = new QHBoxLayout;
        rows->addLayout(row);

        QToolBar *tb1 = f->tb1 = toolbar(adptop, "tb1");
        handle(tool(tb1, "tbShowSql", QStringLiteral("SQL"), QStringLiteral("Show Sql Statement"), true, true),
                         &QToolButton::clicked, &TSqlFrm::tbShowSqlClick);
        handle(tool(tb1, "tbShowConnections", QStringLiteral("Connections"), QStringLiteral("Show Connections"),
                              true, true),
                         &QToolButton::clicked, &TSqlFrm::tbShowConnectionsClick);
        handle(tool(tb1, "tbShowLog", QStringLiteral("Log"), QStringLiteral("Show Log"), true, true),
                         &QToolButton::clicked, &TSqlFrm::tbShowLogClick);
        handle(tool(tb1, "tbShowSystemTables", QStringLiteral("System"), QStringLiteral("Show System Tables"),
                              true, false),
                         &QToolButton::clicked, &TSqlFrm::tbShowSystemTablesClick);
        tb1->addSeparator();
        handle(tool(tb1, "tbAddTab", QStringLiteral("+ Tab"), QStringLiteral("Add Tab")), &QToolButton::clicked, &TSqlFrm::addTabRequested);
        f->m_cbStyle = new QComboBox(tb1);
        f->m_cbStyle->setObjectName(QStringLiteral("cbStyle"));
        f->m_cbStyle->addItems(TdmTools::styleNames());
        f->m_cbStyle->setSizeAdjustPolicy(QComboBox::AdjustToContents);
        tb1->addWidget(f->m_cbStyle);
        handle(f->m_cbStyle, QOverload<int>::of(&QComboBox::activated), &TSqlFrm::cbStyleChange);
        row->addWidget(tb1);
        row->addStretch();

        QToolBar *tb2 = f->tb2 = toolbar(adptop, "tb2");
        QToolButton *open = tool(tb2, "tbOpen", QStringLiteral("Open"), QStringLiteral("Open"));
        QToolButton *save = tool(tb2, "tbSave", QStringLiteral("Save"), QStringLiteral("Save"));
        QToolButton *printSql = tool(tb2, "tbPrintSQL", QStringLiteral("Print"), QStringLiteral("Print"));
        QToolButton *previewSql = tool(tb2, "tbPrintPreview", QStringLiteral("Preview"), QStringLiteral("Print Preview"));
        // ToolButton8Click and tbPreview2Click: print or preview the editor text as "Sql Script".
        QObject::connect(printSql, &QToolButton::clicked, f, [f = this->f] {
            if (f->m_services.tools)
                f->m_services.tools->PrintSynEdit(f->se, QStringLiteral("Sql Script"));
        });
        QObject::connect(previewSql, &QToolButton::clicked, f, [f = this->f] {
            if (f->m_services.tools)
                f->m_services.tools->PreviewSynEdit(f->se, QStringLiteral("Sql Script"));
        });
        tb2->addSeparator();
        QToolButton *cut = tool(tb2, "tbCut", QStringLiteral("Cut"), QString());
        QToolButton *copy = tool(tb2, "tbCopy", QStringLiteral("Copy"), QString());
        QToolButton *paste = tool(tb2, "tbPaste", QStringLiteral("Paste"), QString());
        QToolButton *undo = tool(tb2, "tbUndo", QStringLiteral("Undo"), QString());
        QToolButton *redo = tool(tb2, "tbRedo", QStringLiteral("Redo"), QString());
        QToolButton *find = tool(tb2, "tbFindSQL", QStringLiteral("Find"), QStringLiteral("Search"));
        QToolButton *again = tool(tb2, "rbRepeatSearch", QStringLiteral("Again"), QStringLiteral("Repeat Search"));
        QToolButton *replace = tool(tb2, "tbReS", QStringLiteral("Replace"), QStringLiteral("Replace"));
        tb2->addSeparator();
        tool(tb2, "cbAutoClearLog", QStringLiteral("Auto Clear"), QStringLiteral("Clear Log Before Run"), true, false);
        handle(tool(tb2, "tbRunSQL", QStringLiteral("Run"), QStringLiteral("Run Sql")), &QToolButton::clicked, &TSqlFrm::ToolButton7Click);
        handle(tool(tb2, "tbRunScript", QStringLiteral("Script"), QStringLiteral("Run as script")),
                         &QToolButton::clicked, &TSqlFrm::tbRunScriptClick);
        // Stops the running statement, script or fetch (Esc in the tab); enabled while one runs.
        QToolButton *stop = tool(tb2, "tbCancelRun", QStringLiteral("Cancel"), QStringLiteral("Cancel the running statement (Esc)"));
        stop->setEnabled(false);
        handle(stop, &QToolButton::clicked, &TSqlFrm::tbCancelRunClick);
        handle(tool(tb2, "tbSQLBuilder", QStringLiteral("Builder"), QStringLiteral("Sql Builder")),
                         &QToolButton::clicked, &TSqlFrm::tbSqlBuilderClick);
        f->peSeparator = new QComboBox(tb2);
        f->peSeparator->setObjectName(QStringLiteral("peSeparator"));
        f->peSeparator->setEditable(true);
        f->peSeparator->addItems({QStringLiteral("GO"), QStringLiteral("/"), QStringLiteral(";")});
        f->peSeparator->setToolTip(QStringLiteral("Sql Statements Delimiter"));
        f->peSeparator->setMinimumContentsLength(4);
        tb2->addWidget(f->peSeparator);
        f->seRecords = new QSpinBox(tb2);
        f->seRecords->setObjectName(QStringLiteral("seRecords"));
        f->seRecords->setRange(0, 100000000);
        f->seRecords->setValue(1000);
        f->seRecords->setToolTip(QStringLiteral("Records to Fetch"));
        tb2->addWidget(f->seRecords);
        rows->addWidget(tb2);

        // The editor commands only forward to the editor control.
        QObject::connect(cut, &QToolButton::clicked, f, [f = this->f] { f->se->cut(); });
        QObject::connect(copy, &QToolButton::clicked, f, [f = this->f] { f->se->copy(); });
        QObject::connect(paste, &QToolButton::clicked, f, [f = this->f] { f->se->paste(); });
        QObject::connect(undo, &QToolButton::clicked, f, [f = this->f] { f->se->undo(); });
        QObject::connect(redo, &QToolButton::clicked, f, [f = this->f] { f->se->redo(); });
        // Open and Save and the program-wide search work on the editor the way the text editor
        // frame's do; the file dialogs propose each other's last file name.
        QObject::connect(open, &QToolButton::clicked, f, [f = this->f] { editorFiles(f)->open(); });
        QObject::connect(save, &QToolButton::clicked, f, [f = this->f] { editorFiles(f)->save(); });
        QObject::connect(find, &QToolButton::clicked, f,
                         [f = this->f] { TextSearch::ShowSearchReplaceDialog(f->se, false); });
        QObject::connect(again, &QToolButton::clicked, f,
                         [f = this->f] { TextSearch::DoSearchReplaceText(f->se, false, false); });
        QObject::connect(replace, &QToolButton::clicked, f,
                         [f = this->f] { TextSearch::ShowSearchReplaceDialog(f->se, true); });
        return adptop;
    }

    QWidget *captioned(QWidget *panel, const QString &caption, QVBoxLayout **layoutOut)
    {
        auto *layout = new QVBoxLayout(panel);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSpacing(2);
        auto *title = new QLabel(caption, panel);
        title->setObjectName(panel->objectName() + QStringLiteral("Caption"));
        title->setStyleSheet(QStringLiteral("font-weight: bold; padding: 3px 4px;"));
        layout->addWidget(title);
        *layoutOut = layout;
        return panel;
    }

    QAction *menuItem(QWidget *owner, const char *name, const QString &caption, const QKeySequence &key,
                      void (TSqlFrm::*slot)())
    {
        auto *a = new QAction(caption, owner);
        a->setObjectName(QString::fromLatin1(name));
        a->setShortcut(key);
        a->setShortcutContext(Qt::WidgetShortcut);
        owner->addAction(a);
        handle(a, &QAction::triggered, slot);
        return a;
    }

    // A named pop-up menu over the items already added to `owner`; the items stay on the owner
    // too, so their short cuts work while it has the focus.
    QMenu *popupMenu(QAbstractScrollArea *owner, const char *name)
    {
        auto *menu = new QMenu(owner);
        menu->setObjectName(QString::fromLatin1(name));
        menu->addActions(owner->actions());
        owner->setContextMenuPolicy(Qt::CustomContextMenu);
        QObject::connect(owner, &QWidget::customContextMenuRequested, menu,
                         [owner, menu](const QPoint &pos) { menu->popup(owner->viewport()->mapToGlobal(pos)); });
        return menu;
    }

    // The connection grid's pop-up menu PMC.
    void addConnectionMenu()
    {
        QTableView *grid = f->ConnectionsGrid;
        // F2 belongs to the main window's "Properties" action, which runs this same item on the
        // current tab; a second F2 here would make the key ambiguous, so the item only shows it.
        menuItem(grid, "ConnectionPropertiesItem", QStringLiteral("Properties\tF2"), {},
                 &TSqlFrm::ConnectionPropertiesItemClick);
        menuItem(grid, "AddConnectionItem", QStringLiteral("Add"), QKeySequence(Qt::Key_Insert),
                 &TSqlFrm::AddConnectionItemClick);
        menuItem(grid, "DeleteConnectionItem", QStringLiteral("Delete"), QKeySequence(Qt::CTRL | Qt::Key_Delete),
                 &TSqlFrm::DeleteConnectionItemClick);
        menuItem(grid, "RefreshConnectionItm", QStringLiteral("Refresh"), {}, &TSqlFrm::RefreshConnectionItmClick);
        menuItem(grid, "N7", QStringLiteral("Close Connection"), {}, &TSqlFrm::N7Click);
        popupMenu(grid, "PMC");
    }

    QWidget *buildConnectionsPanel()
    {
        f->Panel1 = new QWidget(f);
        f->Panel1->setObjectName(QStringLiteral("Panel1"));
        QVBoxLayout *layout = nullptr;
        captioned(f->Panel1, QStringLiteral("Connections"), &layout);

        f->Splitter2 = new QSplitter(Qt::Vertical, f->Panel1);
        f->Splitter2->setObjectName(QStringLiteral("Splitter2"));
        f->Splitter2->setChildrenCollapsible(false);
        layout->addWidget(f->Splitter2, 1);

        f->ConnectionsGrid = new QTableView(f->Splitter2);
        f->ConnectionsGrid->setObjectName(QStringLiteral("ConnectionsGrid"));
        f->ConnectionsGrid->setModel(f->m_connectionModel);
        f->ConnectionsGrid->setSelectionBehavior(QAbstractItemView::SelectRows);
        f->ConnectionsGrid->setSelectionMode(QAbstractItemView::SingleSelection);
        f->ConnectionsGrid->setEditTriggers(QAbstractItemView::NoEditTriggers);
        f->ConnectionsGrid->verticalHeader()->setVisible(false);
        f->ConnectionsGrid->verticalHeader()->setDefaultSectionSize(24);
        f->ConnectionsGrid->setIconSize(QSize(20, 20));
        f->ConnectionsGrid->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Fixed);
        f->ConnectionsGrid->setColumnWidth(0, 40);
        f->ConnectionsGrid->horizontalHeader()->setStretchLastSection(true);
        addConnectionMenu();
        QObject::connect(f->ConnectionsGrid->selectionModel(), &QItemSelectionModel::currentRowChanged, f,
                         [f = this->f](const QModelIndex &current) {
                             if (current.isValid())
                                 f->m_connections->setCurrentIndex(current.row());
                         });
        QObject::connect(f->m_connections, &ConnectionList::currentChanged, f, [f = this->f](int row) {
            const QModelIndex index = f->m_connectionModel->index(row, 1);
            if (index.isValid() && f->ConnectionsGrid->currentIndex().row() != row)
                f->ConnectionsGrid->setCurrentIndex(index);
        });
        handle(f->ConnectionsGrid, &QTableView::clicked, &TSqlFrm::cbConListClick);
        f->Splitter2->addWidget(f->ConnectionsGrid);

        f->TablesPanel = new QWidget(f->Splitter2);
        f->TablesPanel->setObjectName(QStringLiteral("TablesPanel"));
        QVBoxLayout *tables = nullptr;
        captioned(f->TablesPanel, QStringLiteral("Tables"), &tables);
        f->JvIncSearch = new QLineEdit(f->TablesPanel);
        f->JvIncSearch->setObjectName(QStringLiteral("JvIncSearch"));
        f->JvIncSearch->setPlaceholderText(QStringLiteral("Incremental Search"));
        f->JvIncSearch->setToolTip(QStringLiteral("Incremental Search"));
        f->JvIncSearch->setClearButtonEnabled(true);
        tables->addWidget(f->JvIncSearch);
        f->lbTablesList = new QListWidget(f->TablesPanel);
        f->lbTablesList->setObjectName(QStringLiteral("lbTablesList"));
        f->lbTablesList->setToolTip(QStringLiteral("All Tables"));
        menuItem(f->lbTablesList, "Selectfromtable1", QStringLiteral("Select * from table"), {}, &TSqlFrm::Selectfromtable1Click);
        menuItem(f->lbTablesList, "Deletefromtable1", QStringLiteral("Delete from table"), {}, &TSqlFrm::Deletefromtable1Click);
        menuItem(f->lbTablesList, "runcatetable1", QStringLiteral("Truncate table"), {}, &TSqlFrm::runcatetable1Click);
        popupMenu(f->lbTablesList, "pmTables");
        handle(f->lbTablesList, &QListWidget::itemClicked, &TSqlFrm::lbTablesListClick);
        handle(f->JvIncSearch, &QLineEdit::textChanged, &TSqlFrm::JvIncSearchChange);
        tables->addWidget(f->lbTablesList, 1);
        f->lb = new QListWidget(f->TablesPanel);
        f->lb->setObjectName(QStringLiteral("lb"));
        f->lb->hide();
        f->Splitter2->addWidget(f->TablesPanel);
        f->Splitter2->setSizes({200, 400});
        return f->Panel1;
    }

    QWidget *buildWorkArea()
    {
        f->Splitter1 = new QSplitter(Qt::Vertical, f);
        f->Splitter1->setObjectName(QStringLiteral("Splitter1"));
        f->Splitter1->setChildrenCollapsible(false);

        f->SqlPanel = new QWidget(f->Splitter1);
        f->SqlPanel->setObjectName(QStringLiteral("SqlPanel"));
        auto *sqlLayout = new QVBoxLayout(f->SqlPanel);
        sqlLayout->setContentsMargins(0, 0, 0, 0);
        sqlLayout->setSpacing(0);
        auto *captionRow = new QHBoxLayout;
        captionRow->setContentsMargins(4, 0, 2, 0);
        auto *caption = new QLabel(QStringLiteral("SQL"), f->SqlPanel);
        caption->setStyleSheet(QStringLiteral("font-weight: bold; padding: 3px 0px;"));
        captionRow->addWidget(caption);
        captionRow->addStretch();
        const auto small = [&](const char *name, const QString &text, const QString &hint, void (TSqlFrm::*slot)()) {
            auto *b = new QToolButton(f->SqlPanel);
            b->setObjectName(QString::fromLatin1(name));
            b->setText(text);
            b->setToolTip(hint);
            b->setAutoRaise(true);
            handle(b, &QToolButton::clicked, slot);
            captionRow->addWidget(b);
        };
        small("sbSqlSelect", QStringLiteral("History"), QStringLiteral("Sql History"), &TSqlFrm::sbSqlSelectClick);
        small("SBPrevios", QStringLiteral("\u25c0"), QStringLiteral("Previous Sql Statement"), &TSqlFrm::SBPreviosClick);
        small("SBNext", QStringLiteral("\u25b6"), QStringLiteral("Next Sql Statement"), &TSqlFrm::SBNextClick);
        sqlLayout->addLayout(captionRow);
        f->se = SqlEditor::create(f->SqlPanel, "se");
        new EditorFiles(f->se, f->se);
        sqlLayout->addWidget(f->se, 1);
        f->Splitter1->addWidget(f->SqlPanel);

        f->Panel3 = new ResultPanel(f->Splitter1);
        f->Panel3->setObjectName(QStringLiteral("Panel3"));
        f->Panel3->setTools(f->m_services.tools);
        QObject::connect(f->Panel3, &ResultPanel::commandFailed, f, &TSqlFrm::logGridFailure);
        f->Splitter1->addWidget(f->Panel3);

        f->LogPanel = new TSqlLogFrame(f->Splitter1);
        f->LogPanel->setTools(f->m_services.tools);
        f->Splitter1->addWidget(f->LogPanel);
        f->Splitter1->setStretchFactor(1, 1);
        f->Splitter1->setSizes({220, 400, 150});
        return f->Splitter1;
    }

    TSqlFrm *f;
};

void buildSqlFrm(TSqlFrm *frame)
{
    SqlFrmBuilder(frame).build();
}
