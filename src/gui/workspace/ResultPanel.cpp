#include "gui/workspace/ResultPanel.h"

#include "core/base/VantryError.h"
#include "gui/components/DBGridEh1.h"
#include "gui/components/ResultFindDialog.h"
#include "gui/components/ResultGridModel.h"
#include "gui/components/ResultGroupingPanel.h"
#include "core/workspace/ResultWriteBack.h"
#include "gui/interchange/DMToolsUn.h"

#include <QAction>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QScrollBar>
#include <QStyle>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

ResultPanel::ResultPanel(QWidget *parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("Panel3"));
    m_toolbar = new QToolBar(this);
    m_toolbar->setObjectName(QStringLiteral("tbGrid"));
    m_toolbar->setIconSize(QSize(16, 16));
    m_toolbar->setToolButtonStyle(Qt::ToolButtonTextOnly);
    m_grid = new DBGridEh1(this);
    m_grouping = new ResultGroupingPanel(this);
    m_grouping->hide();
    m_status = new QLabel(this);
    m_status->setObjectName(QStringLiteral("lbResultState"));
    m_status->setContentsMargins(8, 0, 8, 0);

    // Captions are short so the toolbar fits beside the grid; the hints carry the full names.
    QAction *refresh = addButton("tbRefresh", QStringLiteral("Refresh"), QStringLiteral("Refresh"), QKeySequence(Qt::Key_F5));
    m_toolbar->addSeparator()->setObjectName(QStringLiteral("sp1"));
    QAction *add = addButton("tbAdd", QStringLiteral("Add"), QStringLiteral("Add"), QKeySequence(Qt::Key_Insert));
    QAction *del = addButton("tbDelete", QStringLiteral("Delete"), QStringLiteral("Delete Selected Records"),
                             QKeySequence(Qt::CTRL | Qt::Key_Delete));
    QAction *post = addButton("tbPost", QStringLiteral("Post"), QStringLiteral("Post"));
    QAction *clone = addButton("tbClone", QStringLiteral("Clone"), QStringLiteral("Clone Record"));
    m_toolbar->addSeparator()->setObjectName(QStringLiteral("sp2"));
    QAction *find = addButton("tbFind", QStringLiteral("Find"), QStringLiteral("Find"), QKeySequence(Qt::CTRL | Qt::Key_F));
    QAction *fit = addButton("tbOptimizeWidth", QStringLiteral("Fit Widths"), QStringLiteral("Fit Column Widths"));
    // "Groupping" is the hint's spelling and is kept deliberately.
    QAction *group = addButton("tbShowGroupping", QStringLiteral("Grouping"), QStringLiteral("Show Groupping"));
    QAction *readOnly = addButton("tbReadOnly", QStringLiteral("Read Only"), QStringLiteral("Read Only"));
    for (QAction *toggle : {fit, group, readOnly})
        toggle->setCheckable(true);
    m_toolbar->addSeparator()->setObjectName(QStringLiteral("sp3"));
    QAction *exportData = addButton("tbExport", QStringLiteral("Export"), QStringLiteral("Export Data"));
    QAction *print = addButton("tbPrint", QStringLiteral("Print"), QStringLiteral("Print"));
    QAction *preview = addButton("tbPreview", QStringLiteral("Preview"), QStringLiteral("Preview"));
    QAction *excel = addButton("tbExcelExport", QStringLiteral("Excel"), QStringLiteral("Export To Excel"));
    QAction *import = addButton("tbImport", QStringLiteral("Import"), QStringLiteral("Import Data"));
    m_toolbar->addWidget(m_status);

    connect(refresh, &QAction::triggered, this, &ResultPanel::Refresh1Click);
    connect(add, &QAction::triggered, this, &ResultPanel::Add1Click);
    connect(del, &QAction::triggered, this, &ResultPanel::Delete1Click);
    connect(post, &QAction::triggered, this, &ResultPanel::tbPostClick);
    connect(clone, &QAction::triggered, this, &ResultPanel::tbCloneClick);
    connect(find, &QAction::triggered, this, &ResultPanel::Find1Click);
    connect(fit, &QAction::triggered, this, &ResultPanel::tbOptimizeWidthClick);
    connect(group, &QAction::triggered, this, &ResultPanel::tbShowGrouppingClick);
    connect(readOnly, &QAction::triggered, this, &ResultPanel::tbReadOnlyClick);
    connect(exportData, &QAction::triggered, this, &ResultPanel::MenuItem1Click);
    connect(print, &QAction::triggered, this, &ResultPanel::Print1Click);
    connect(preview, &QAction::triggered, this, &ResultPanel::MenuItem4Click);
    connect(excel, &QAction::triggered, this, &ResultPanel::tbExcelExportClick);
    connect(import, &QAction::triggered, this, &ResultPanel::tbImportClick);

    // The grid's pop-up menu carries the same commands.
    m_menu = new QMenu(this);
    m_menu->setObjectName(QStringLiteral("PMGrid"));
    for (auto [name, caption, action] : {std::tuple{"Refresh1", "Refresh", refresh}, {"Add1", "Add", add},
                                         {"Delete1", "Delete", del}, {"Find1", "Find", find},
                                         {"MenuItem1", "Export Data", exportData}, {"Print1", "Print", print},
                                         {"MenuItem4", "Preview", preview}}) {
        QAction *item = m_menu->addAction(QString::fromLatin1(caption), action, &QAction::trigger);
        item->setObjectName(QString::fromLatin1(name));
        item->setShortcut(action->shortcut());
        item->setShortcutVisibleInContextMenu(true);
        item->setShortcutContext(Qt::WidgetShortcut); // the toolbar action owns the shortcut
        connect(action, &QAction::changed, item, [item, action] {
            item->setVisible(action->isVisible());
            item->setEnabled(action->isEnabled());
        });
    }
    QAction *setNull = new QAction(QStringLiteral("Set to NULL"), this);
    setNull->setObjectName(QStringLiteral("SetNull1"));
    setNull->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_0));
    setNull->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    setNull->setShortcutVisibleInContextMenu(true);
    addAction(setNull);
    m_menu->addAction(setNull);
    connect(setNull, &QAction::triggered, this, &ResultPanel::SetNull1Click);
    m_grid->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_grid, &QWidget::customContextMenuRequested, this,
            [this](const QPoint &pos) { m_menu->exec(m_grid->viewport()->mapToGlobal(pos)); });
    connect(m_grid, &DBGridEh1::message, this, &ResultPanel::commandFailed);
    connect(m_grid, &DBGridEh1::groupRequested, this, [this](int column) {
        QVector<int> columns = m_grid->groupColumns();
        if (!columns.contains(column))
            columns << column;
        setShowGrouppingDown(true);
        setGroupColumns(columns);
    });
    connect(m_grouping, &ResultGroupingPanel::columnsChanged, this, &ResultPanel::setGroupColumns);
    connect(m_grid->gridModel(), &QAbstractItemModel::modelReset, this, [this] {
        // Sorting, filtering and grouping need every row of the result.
        if (m_query.moreRemain() && !m_grid->gridModel()->view().isIdentity())
            fetchAll();
        updateState();
    });
    connect(m_grid->gridModel(), &ResultGridModel::rebuildingChanged, this, &ResultPanel::rebuildingChanged);
    connect(m_grid->verticalScrollBar(), &QScrollBar::valueChanged, this, &ResultPanel::fetchIfNearEnd);
    m_grid->installEventFilter(this);
    // Enter on an edited cell writes its row, as leaving the row does.
    connect(m_grid->itemDelegate(), &QAbstractItemDelegate::closeEditor, this,
            [this](QWidget *, QAbstractItemDelegate::EndEditHint hint) {
                if (hint == QAbstractItemDelegate::SubmitModelCache)
                    postRowIfPending(m_grid->currentTableRow());
            });
    // Leaving a row writes its edits, as moving off an edited record does in any data grid.
    connect(m_grid, &DBGridEh1::currentTableRowChanged, this,
            [this](qint64 previous, qint64) { postRowIfPending(previous); });

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_toolbar);
    layout->addWidget(m_grouping);
    layout->addWidget(m_grid, 1);
    m_confirmDelete = [this](int rows) {
        return QMessageBox::question(this, QStringLiteral("Confirm"),
                                     QStringLiteral("Delete %1 selected record(s)?").arg(rows))
               == QMessageBox::Yes;
    };
    updateState();
}

ResultPanel::~ResultPanel()
{
    if (m_tools)
        m_tools->cancelExports(this);  // an export still reading these rows stops first
    // The grid outlives m_query (children die in the QWidget destructor): let go of the rows first.
    m_grid->setResult(nullptr);
}

QAction *ResultPanel::addButton(const char *name, const QString &caption, const QString &hint,
                                const QKeySequence &shortcut)
{
    QAction *action = m_toolbar->addAction(caption);
    action->setObjectName(QString::fromLatin1(name));
    action->setToolTip(hint);
    if (!shortcut.isEmpty()) {
        action->setShortcut(shortcut);
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        addAction(action);
    }
    m_toolbar->widgetForAction(action)->setObjectName(QString::fromLatin1(name));
    return action;
}

template<typename Fn>
void ResultPanel::guarded(Fn fn)
{
    try {
        fn();
    } catch (const VantryError &error) {
        emit commandFailed(error.message());
    }
    m_grid->viewport()->update();
    updateState();
}

void ResultPanel::closeResult()
{
    if (m_tools)
        m_tools->cancelExports(this);  // an export still reading these rows stops first
    m_grid->setResult(nullptr);
    m_query.close();
    m_waitingBatches.clear();
    m_afterFetchAll = {};
    m_fetching = m_fetchingAll = false;
    if (m_find)
        m_find->hide();
    updateState();
}

void ResultPanel::updateState()
{
    const bool open = m_query.isOpen();
    const bool editable = open && !m_query.isReadOnly();
    for (const char *name : {"tbAdd", "tbDelete", "tbClone"})
        findChild<QAction *>(QString::fromLatin1(name))->setEnabled(editable);
    // Post stays enabled while the result can be edited: a cell being typed into is an edit too.
    findChild<QAction *>(QStringLiteral("tbPost"))->setEnabled(editable);
    findChild<QAction *>(QStringLiteral("SetNull1"))->setEnabled(editable);
    // An import writes every row back, so it needs a result the write-back can write.
    findChild<QAction *>(QStringLiteral("tbImport"))->setEnabled(editable && m_run);
    findChild<QAction *>(QStringLiteral("tbRefresh"))->setEnabled(m_hasQuery || !m_query.statement().isEmpty());
    if (!open) {
        m_status->clear();
        return;
    }
    const ResultTable *table = m_query.table();
    const qint64 shown = m_grid->gridModel()->view().dataRows();
    QString text = QStringLiteral("%1 rows").arg(table->fetchedRows());
    if (m_fetchingAll)
        text += QStringLiteral(" fetched, fetching the rest...");
    else if (m_grid->gridModel()->isRebuilding())
        text += QStringLiteral(", sorting...");
    else if (m_query.moreRemain())
        text += QStringLiteral(" fetched, more remain");
    else if (table->truncated())
        text += QStringLiteral(" (not all rows were fetched)");
    if (shown != table->rowCount())
        text += QStringLiteral(", %1 shown").arg(shown);
    if (!m_query.source().writable)
        text += QStringLiteral("  \u2022  Read-only: ") + m_query.readOnlyReason();
    m_status->setText(text);
}

void ResultPanel::setGroupColumns(const QVector<int> &columns)
{
    QStringList names;
    for (int column : columns)
        names << m_query.table()->column(column).name();
    m_grouping->setColumns(columns, names);
    m_grid->setGroupColumns(columns);
}

void ResultPanel::Add1Click()
{
    if (!m_query.isOpen() || m_query.isReadOnly())
        return;
    if (refuseWhileSorting())
        return;
    stopFetchingForEdit();
    guarded([&] {
        const qint64 row = m_query.table()->insertRow();
        m_grid->refreshRows();
        m_grid->setCurrentTableRow(row, 0);
    });
}

void ResultPanel::Delete1Click()
{
    if (!m_query.isOpen() || m_query.isReadOnly())
        return;
    if (refuseWhileSorting())
        return;
    const QList<qint64> rows = m_grid->selectedTableRows();
    if (rows.isEmpty() || !m_confirmDelete(int(rows.size())))
        return;
    stopFetchingForEdit();
    ResultTable *table = m_query.table();
    // Rows only added here need no database work; the others are deleted on the connection's
    // thread, and marked here once the database has let them go.
    std::vector<RowChange> changes;
    guarded([&] {
        for (qint64 row : rows) {
            if (table->rowState(row) == ResultTable::RowState::Inserted)
                table->markDeleted(row);
            else
                changes.push_back(ResultWriteBack::snapshotDelete(*table, row, m_query.source().table));
        }
    });
    m_grid->refreshRows();
    writeChanges(std::move(changes), {});
}

void ResultPanel::tbCloneClick()
{
    const qint64 source = m_grid->currentTableRow();
    if (!m_query.isOpen() || m_query.isReadOnly() || source < 0 || refuseWhileSorting())
        return;
    stopFetchingForEdit();
    guarded([&] {
        const qint64 row = m_query.table()->cloneRow(source);
        m_grid->refreshRows();
        m_grid->setCurrentTableRow(row, m_grid->currentIndex().column());
    });
}

void ResultPanel::Find1Click()
{
    if (!m_query.isOpen())
        return;
    if (!m_find)
        m_find = new ResultFindDialog(m_grid, this);
    m_find->prepare(m_grid->currentIndex().isValid() ? m_grid->currentIndex().column() : -1);
    m_find->show();
    m_find->raise();
}

void ResultPanel::tbOptimizeWidthClick()
{
    if (m_query.isOpen())
        m_grid->optimizeColumnWidths();
}

void ResultPanel::tbShowGrouppingClick()
{
    m_grouping->setVisible(showGrouppingDown());
    if (!showGrouppingDown() && !m_grid->groupColumns().isEmpty())
        setGroupColumns({});
}

void ResultPanel::tbReadOnlyClick()
{
    const bool down = readOnlyDown();
    m_query.setReadOnly(down);
    m_grid->setReadOnly(down);
    for (const char *name : {"tbAdd", "tbDelete", "tbPost", "sp1", "sp2", "tbClone"})
        findChild<QAction *>(QString::fromLatin1(name))->setVisible(!down);
    updateState();
}

bool ResultPanel::readOnlyDown() const
{
    return findChild<QAction *>(QStringLiteral("tbReadOnly"))->isChecked();
}

void ResultPanel::setReadOnlyDown(bool down)
{
    findChild<QAction *>(QStringLiteral("tbReadOnly"))->setChecked(down);
    tbReadOnlyClick();
}

bool ResultPanel::optimizeWidthDown() const
{
    return findChild<QAction *>(QStringLiteral("tbOptimizeWidth"))->isChecked();
}

void ResultPanel::setOptimizeWidthDown(bool down)
{
    findChild<QAction *>(QStringLiteral("tbOptimizeWidth"))->setChecked(down);
}

bool ResultPanel::showGrouppingDown() const
{
    return findChild<QAction *>(QStringLiteral("tbShowGroupping"))->isChecked();
}

void ResultPanel::setShowGrouppingDown(bool down)
{
    findChild<QAction *>(QStringLiteral("tbShowGroupping"))->setChecked(down);
    tbShowGrouppingClick();
}

void ResultPanel::SetNull1Click()
{
    const QModelIndex index = m_grid->currentIndex();
    const qint64 row = m_grid->currentTableRow();
    if (!m_query.isOpen() || m_query.isReadOnly() || row < 0 || !index.isValid() || refuseWhileSorting())
        return;
    guarded([&] { m_query.table()->setNull(row, index.column()); });
}
