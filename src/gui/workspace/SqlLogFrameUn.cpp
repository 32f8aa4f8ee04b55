#include "gui/workspace/SqlLogFrameUn.h"

#include "core/base/SavedFile.h"
#include "core/base/VantryError.h"
#include "gui/components/ResultFilterHeader.h"
#include "gui/components/SqlEditor.h"
#include "gui/interchange/DMToolsUn.h"
#include "gui/ui/ModelExportSource.h"
#include "gui/ui/SePrintPreviewUn.h"
#include "gui/ui/TextSearch.h"
#include "core/workspace/ExecutionLog.h"
#include "gui/workspace/LogGridColumns.h"
#include "gui/workspace/LogTableModel.h"

#include <Qsci/qsciscintilla.h>

#include <QAction>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QInputDialog>
#include <QLabel>
#include <QMenu>
#include <QScrollBar>
#include <QTabWidget>
#include <QTableView>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

QAction *addEntry(QMenu *menu, const char *name, const QString &caption, const QKeySequence &key, QObject *receiver,
                  void (TSqlLogFrame::*slot)())
{
    QAction *a = menu->addAction(caption);
    a->setObjectName(QString::fromLatin1(name));
    a->setShortcut(key);
    a->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    QObject::connect(a, &QAction::triggered, static_cast<TSqlLogFrame *>(receiver), slot);
    return a;
}

} // namespace

TSqlLogFrame::TSqlLogFrame(QWidget *parent)
    : QWidget(parent), md(new ExecutionLog(this)), m_model(new LogTableModel(md, this)),
      m_sorted(new LogFilterModel(this))
{
    setObjectName(QStringLiteral("LogPanel"));
    auto *outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->setSpacing(0);

    auto *lg = new QWidget(this);
    lg->setObjectName(QStringLiteral("lg"));
    auto *lgLayout = new QVBoxLayout(lg);
    lgLayout->setContentsMargins(0, 0, 0, 0);
    lgLayout->setSpacing(0);
    auto *caption = new QWidget(lg);
    auto *captionLayout = new QHBoxLayout(caption);
    captionLayout->setContentsMargins(6, 2, 2, 2);
    auto *title = new QLabel(QStringLiteral("<B>Execution Log</B>"), caption);
    captionLayout->addWidget(title);
    captionLayout->addStretch();
    auto *lgClose = new QToolButton(caption);
    lgClose->setObjectName(QStringLiteral("lgClose"));
    lgClose->setText(QStringLiteral("\u00d7"));
    lgClose->setAutoRaise(true);
    // Showing and hiding the log is the workspace's decision: the caption's close button only
    // makes the inner panel visible again.
    connect(lgClose, &QToolButton::clicked, lg, [lg] { lg->setVisible(true); });
    captionLayout->addWidget(lgClose);
    lgLayout->addWidget(caption);
    outer->addWidget(lg);

    PC = new QTabWidget(lg);
    PC->setObjectName(QStringLiteral("PC"));
    PC->setTabPosition(QTabWidget::South);
    PC->setDocumentMode(true);
    lgLayout->addWidget(PC);

    auto *pTable = new QWidget(PC);
    pTable->setObjectName(QStringLiteral("pTable"));
    gLog = new QTableView(pTable);
    gLog->setObjectName(QStringLiteral("gLog"));
    // Titles with a filter row under them: a text per column narrows the rows shown.
    auto *header = new ResultFilterHeader(gLog);
    header->setSortIndicatorShown(true);
    gLog->setHorizontalHeader(header);
    connect(header, &ResultFilterHeader::filterChanged, m_sorted, &LogFilterModel::setColumnFilter);
    connect(gLog->horizontalScrollBar(), &QScrollBar::valueChanged, header, &ResultFilterHeader::placeEditors);
    m_sorted->setSourceModel(m_model);
    gLog->setModel(m_sorted);
    gLog->setSortingEnabled(true);
    gLog->sortByColumn(-1, Qt::AscendingOrder);
    // Read-only: typing searches the current column incrementally instead of editing.
    gLog->setEditTriggers(QAbstractItemView::NoEditTriggers);
    gLog->setSelectionBehavior(QAbstractItemView::SelectRows);
    gLog->setWordWrap(false);
    gLog->verticalHeader()->setVisible(false);
    gLog->verticalHeader()->setDefaultSectionSize(22);
    header->setSectionsMovable(true);
    header->setStretchLastSection(false);
    header->setSectionResizeMode(QHeaderView::Interactive); // a double-click on a border fits the column
    keepLogColumnsFitted(gLog);
    gLog->setContextMenuPolicy(Qt::CustomContextMenu);
    QMenu *gridMenu = buildGridMenu();
    gLog->addActions(gridMenu->actions());
    connect(gLog, &QWidget::customContextMenuRequested, gridMenu,
            [this, gridMenu](const QPoint &pos) { gridMenu->popup(gLog->viewport()->mapToGlobal(pos)); });
    auto *tableLayout = new QVBoxLayout(pTable);
    tableLayout->setContentsMargins(0, 0, 0, 0);
    tableLayout->setSpacing(0);
    tableLayout->addWidget(gLog);
    PC->addTab(pTable, QStringLiteral("Table"));

    seLog = SqlEditor::create(PC, "seLog");
    SqlEditor::useLogStyle(seLog);
    seLog->setContextMenuPolicy(Qt::CustomContextMenu);
    QMenu *textMenu = buildTextMenu();
    seLog->addActions(textMenu->actions());
    connect(seLog, &QWidget::customContextMenuRequested, textMenu,
            [this, textMenu](const QPoint &pos) { textMenu->popup(seLog->mapToGlobal(pos)); });
    auto *pLog = new QWidget(PC);
    pLog->setObjectName(QStringLiteral("pLog"));
    (new QVBoxLayout(pLog))->setContentsMargins(0, 0, 0, 0);
    pLog->layout()->addWidget(seLog);
    PC->addTab(pLog, QStringLiteral("SQL"));
    PC->setCurrentIndex(0);
}

QMenu *TSqlLogFrame::buildTextMenu()
{
    auto *menu = new QMenu(this);
    menu->setObjectName(QStringLiteral("pmLog"));
    addEntry(menu, "Cut1", QStringLiteral("Cut"), QKeySequence(Qt::CTRL | Qt::Key_X), this, &TSqlLogFrame::Cut1Click);
    addEntry(menu, "Copy1", QStringLiteral("Copy"), QKeySequence(Qt::CTRL | Qt::Key_C), this, &TSqlLogFrame::Copy1Click);
    // Ctrl+P pastes in the log's text view (not Ctrl+V); the binding is deliberate and stays.
    addEntry(menu, "Paste1", QStringLiteral("Paste"), QKeySequence(Qt::CTRL | Qt::Key_P), this, &TSqlLogFrame::Paste1Click);
    addEntry(menu, "Search", QStringLiteral("Search"), QKeySequence(Qt::CTRL | Qt::Key_F), this, &TSqlLogFrame::SearchClick);
    addEntry(menu, "RepeatSearch1", QStringLiteral("Repeat Search"), {}, this, &TSqlLogFrame::RepeatSearch1Click);
    addEntry(menu, "Replace", QStringLiteral("Replace"), QKeySequence(Qt::CTRL | Qt::Key_R), this, &TSqlLogFrame::ReplaceClick);
    // "Print" deliberately opens the preview too, under its own title; the user prints from there.
    addEntry(menu, "Print1", QStringLiteral("Print"), {}, this, &TSqlLogFrame::Print1Click);
    addEntry(menu, "PrintPreview1", QStringLiteral("Print Preview"), {}, this, &TSqlLogFrame::PrintPreview1Click);
    addEntry(menu, "Clear1", QStringLiteral("Clear"), {}, this, &TSqlLogFrame::Clear1Click);
    addEntry(menu, "SaveLog1", QStringLiteral("Save Log"), {}, this, &TSqlLogFrame::SaveLog1Click);
    return menu;
}

QMenu *TSqlLogFrame::buildGridMenu()
{
    auto *menu = new QMenu(this);
    menu->setObjectName(QStringLiteral("pmGrid"));
    addEntry(menu, "Find1", QStringLiteral("Find"), QKeySequence(Qt::CTRL | Qt::Key_F), this, &TSqlLogFrame::Find1Click);
    addEntry(menu, "PrintGridMenuItem", QStringLiteral("Print"), {}, this, &TSqlLogFrame::PrintGridMenuItemClick);
    addEntry(menu, "PrintPreviewMenuItem", QStringLiteral("Print Preview"), {}, this, &TSqlLogFrame::PrintPreviewMenuItemClick);
    // The grid's "Clear" empties both views; the text view's "Clear" keeps the table. Deliberate.
    addEntry(menu, "MenuItem10", QStringLiteral("Clear"), {}, this, &TSqlLogFrame::MenuItem10Click);
    return menu;
}

void TSqlLogFrame::appendTextLine(const QString &text)
{
    // The editor's handling of modification notices costs time in proportion to the text's
    // length; with them off for the append, adding line 10,000 costs what adding line 10 does.
    const QByteArray line = (ExecutionLog::trimmedForText(text) + QLatin1Char('\n')).toUtf8();
    const long mask = seLog->SendScintilla(QsciScintilla::SCI_GETMODEVENTMASK);
    seLog->SendScintilla(QsciScintilla::SCI_SETMODEVENTMASK, 0UL);
    seLog->SendScintilla(QsciScintilla::SCI_APPENDTEXT, static_cast<unsigned long>(line.size()), line.constData());
    seLog->SendScintilla(QsciScintilla::SCI_SETMODEVENTMASK, static_cast<unsigned long>(mask));
}

void TSqlLogFrame::SetSQL(const QString &sql)
{
    md->SetSQL(sql);
    appendTextLine(sql);
}

void TSqlLogFrame::SetMessage(const QString &message, int status)
{
    md->SetMessage(message, status);
    appendTextLine(message);
}

void TSqlLogFrame::Clear()
{
    seLog->clear();
    md->clear();
}

void TSqlLogFrame::Cut1Click() { seLog->cut(); }
void TSqlLogFrame::Copy1Click() { seLog->copy(); }
void TSqlLogFrame::Paste1Click() { seLog->paste(); }

bool TSqlLogFrame::askSearchText(const QString &title)
{
    bool ok = false;
    const QString text = QInputDialog::getText(this, title, QStringLiteral("Text to find:"), QLineEdit::Normal,
                                               m_lastSearch, &ok);
    if (!ok || text.isEmpty())
        return false;
    m_lastSearch = text;
    return true;
}

// The text view's search commands are the program-wide search and replace.
void TSqlLogFrame::SearchClick() { TextSearch::ShowSearchReplaceDialog(seLog, false); }
void TSqlLogFrame::RepeatSearch1Click() { TextSearch::DoSearchReplaceText(seLog, false, false); }
void TSqlLogFrame::ReplaceClick() { TextSearch::ShowSearchReplaceDialog(seLog, true); }

void TSqlLogFrame::Print1Click() { SePrintPreview::show(seLog, QStringLiteral("Sql Script Error Log"), this); }
void TSqlLogFrame::PrintPreview1Click() { SePrintPreview::show(seLog, QStringLiteral("Execution Log"), this); }

void TSqlLogFrame::PrintGridMenuItemClick()
{
    if (m_tools)
        m_tools->PrintGrid(this, ModelExportSource(gLog->model()), QStringLiteral("Execution Log"));
}

void TSqlLogFrame::PrintPreviewMenuItemClick()
{
    if (m_tools)
        m_tools->PrintPreviewGrid(window(), std::make_shared<ModelExportSource>(gLog->model()), QStringLiteral("Execution Log"));
}
void TSqlLogFrame::Clear1Click() { seLog->clear(); }
void TSqlLogFrame::MenuItem10Click() { Clear(); }

void TSqlLogFrame::SaveLog1Click()
{
    const QString fileName = QFileDialog::getSaveFileName(this, QStringLiteral("Save Log"), QString(),
                                                          QStringLiteral("All files (*.*)"));
    if (!fileName.isEmpty())
        saveLogTo(fileName);
}

void TSqlLogFrame::saveLogTo(const QString &fileName)
{
    const QString cause = saveWholeFile(fileName, seLog->text().toUtf8());
    if (!cause.isEmpty())
        throw VantryError(QStringLiteral("Cannot save the log to \"%1\": %2").arg(fileName, cause));
}

void TSqlLogFrame::Find1Click()
{
    if (!askSearchText(QStringLiteral("Find")))
        return;
    const QString &text = m_lastSearch;
    const int startColumn = qMax(0, gLog->currentIndex().column());
    const int rows = m_sorted->rowCount();
    const int startRow = qMax(0, gLog->currentIndex().row());
    for (int step = 0; step < rows; ++step) {
        const int r = (startRow + step) % rows;
        for (int c = 0; c < LogTableModel::ColumnCount; ++c) {
            const int column = (startColumn + c) % LogTableModel::ColumnCount;
            const QModelIndex idx = m_sorted->index(r, column);
            if (idx.data(Qt::DisplayRole).toString().contains(text, Qt::CaseInsensitive)) {
                gLog->setCurrentIndex(idx);
                return;
            }
        }
    }
}
