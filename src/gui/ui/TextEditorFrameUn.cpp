#include "gui/ui/TextEditorFrameUn.h"

#include "gui/components/SqlEditor.h"
#include "gui/interchange/DMToolsUn.h"
#include "gui/ui/EditorFiles.h"
#include "gui/ui/TextSearch.h"

#include <Qsci/qsciscintilla.h>

#include <QAction>
#include <QIcon>
#include <QMenu>
#include <QStackedWidget>
#include <QTabWidget>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

struct ToolDef
{
    const char *name;
    const char *hint;
    const char *icon;     // freedesktop icon name; the caption shows when the theme has none
    const char *caption;
    bool visible;
    bool check;           // a check button, down at first
    void (TTextEditorFrame::*slot)();
};

// The toolbar in its order. The hidden buttons have no action in this frame and stay hidden.
const ToolDef kTools[] = {
    {"tbOpen", "Open File", "document-open", "Open", true, false, &TTextEditorFrame::tbOpenClick},
    {"tbsave", "Save File", "document-save", "Save", true, false, &TTextEditorFrame::tbsaveClick},
    {"tbPrint", "Print File", "document-print", "Print", true, false, &TTextEditorFrame::tbPrintClick},
    {"tbPrintPreview", "Print Preview", "document-print-preview", "Preview", true, false,
     &TTextEditorFrame::tbPrintPreviewClick},
    {"tbCut", "Cut", "edit-cut", "Cut", true, false, &TTextEditorFrame::tbCutClick},
    {"tbCopy", "Copy", "edit-copy", "Copy", true, false, &TTextEditorFrame::tbCopyClick},
    {"tbPaste", "Paste", "edit-paste", "Paste", true, false, &TTextEditorFrame::tbPasteClick},
    {"tbUndo", "Undo", "edit-undo", "Undo", true, false, &TTextEditorFrame::tbUndoClick},
    {"tbFind", "Search", "edit-find", "Find", true, false, &TTextEditorFrame::tbFindClick},
    {"tbFindNext", "Repeat Search", "go-down", "Next", true, false, &TTextEditorFrame::tbFindNextClick},
    {"tbFindPrevios", "Find Previous", "go-up", "Previous", true, false, &TTextEditorFrame::tbFindPreviosClick},
    {"tbReplace", "Replace", "edit-find-replace", "Replace", true, false, &TTextEditorFrame::tbReplaceClick},
    {"tbRun", "Run Script", "system-run", "Run", false, false, nullptr},
    {"tbStopOnError", "Stop on Error", "process-stop", "Stop on Error", false, true, nullptr},
    {"tbShowLog", "Show Log", "text-x-generic", "Log", false, true, nullptr},
    {"tbClear", "Clear", "edit-clear", "Clear", true, false, &TTextEditorFrame::tbClearClick},
    {"tbBuildSQL", "SQL Builder", "applications-development", "Builder", false, false, nullptr},
    {"tbCalc", "", "accessories-calculator", "Calc", false, false, nullptr},
    {"rbRedo", "Redo", "edit-redo", "Redo", true, false, &TTextEditorFrame::rbRedoClick},
    {"tbEdit", "Edit", "accessories-text-editor", "Edit", false, false, nullptr},
    {"tbEmail", "Email", "mail-send", "Email", false, false, nullptr},
};

struct MenuDef
{
    const char *name;
    const char *caption;
    QKeySequence key;
    void (TTextEditorFrame::*slot)();
    bool separatorAfter;
};

} // namespace

TTextEditorFrame::TTextEditorFrame(QWidget *parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("TextEditorFrame"));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);

    adp = new QWidget(this);
    adp->setObjectName(QStringLiteral("adp"));
    auto *dock = new QVBoxLayout(adp);
    dock->setContentsMargins(0, 0, 0, 0);
    tb = new QToolBar(adp);
    tb->setObjectName(QStringLiteral("tb"));
    tb->setMovable(false);
    tb->setFloatable(false);
    tb->setIconSize(QSize(16, 16));
    dock->addWidget(tb);
    layout->addWidget(adp);

    smEditor = SqlEditor::create(this, "smEditor");
    SqlEditor::useTextEditorStyle(smEditor);
    layout->addWidget(smEditor, 1);
    m_files = new EditorFiles(smEditor, this);

    buildToolbar();
    buildMenu();
}

void TTextEditorFrame::buildToolbar()
{
    for (const ToolDef &def : kTools) {
        auto *b = new QToolButton(tb);
        b->setObjectName(QString::fromLatin1(def.name));
        b->setToolTip(QString::fromLatin1(def.hint));
        b->setAutoRaise(true);
        const QIcon icon = QIcon::fromTheme(QString::fromLatin1(def.icon));
        if (icon.isNull()) {
            b->setText(QString::fromLatin1(def.caption));
            b->setToolButtonStyle(Qt::ToolButtonTextOnly);
        } else {
            b->setIcon(icon);
        }
        b->setCheckable(def.check);
        b->setChecked(def.check);
        QAction *slot = tb->addWidget(b);
        slot->setVisible(def.visible);
        if (def.slot)
            connect(b, &QToolButton::clicked, this, def.slot);
    }
}

void TTextEditorFrame::buildMenu()
{
    const MenuDef entries[] = {
        {"Open1", "Open", {}, &TTextEditorFrame::tbOpenClick, false},
        {"SaveAs1", "Save As", {}, &TTextEditorFrame::tbsaveClick, true},
        {"Print1", "Print", {}, &TTextEditorFrame::tbPrintClick, false},
        {"PrintPreview1", "Print Preview", {}, &TTextEditorFrame::tbPrintPreviewClick, true},
        {"Cut1", "Cut", QKeySequence(Qt::CTRL | Qt::Key_X), &TTextEditorFrame::tbCutClick, false},
        {"Copy1", "Copy", QKeySequence(Qt::CTRL | Qt::Key_C), &TTextEditorFrame::tbCopyClick, false},
        {"Paste1", "Paste", QKeySequence(Qt::CTRL | Qt::Key_V), &TTextEditorFrame::tbPasteClick, false},
        {"Undo1", "Undo", QKeySequence(Qt::CTRL | Qt::Key_Z), &TTextEditorFrame::tbUndoClick, false},
        {"Redo1", "Redo", {}, &TTextEditorFrame::rbRedoClick, true},
        {"Search1", "Search", QKeySequence(Qt::CTRL | Qt::Key_F), &TTextEditorFrame::tbFindClick, false},
        {"RepeatSearch1", "Repeat Search", QKeySequence(Qt::Key_F3), &TTextEditorFrame::tbFindNextClick, false},
        {"Replace1", "Replace", QKeySequence(Qt::CTRL | Qt::Key_R), &TTextEditorFrame::tbReplaceClick, false},
    };
    pmSe = new QMenu(this);
    pmSe->setObjectName(QStringLiteral("pmSe"));
    for (const MenuDef &def : entries) {
        QAction *a = pmSe->addAction(QString::fromLatin1(def.caption));
        a->setObjectName(QString::fromLatin1(def.name));
        a->setShortcut(def.key);
        a->setShortcutContext(Qt::WidgetShortcut);
        connect(a, &QAction::triggered, this, def.slot);
        smEditor->addAction(a);
        if (def.separatorAfter)
            pmSe->addSeparator();
    }
    smEditor->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(smEditor, &QWidget::customContextMenuRequested, this,
            [this](const QPoint &pos) { pmSe->popup(smEditor->mapToGlobal(pos)); });
}

QString TTextEditorFrame::toPlainText() const { return smEditor->text(); }
void TTextEditorFrame::setPlainText(const QString &text) { smEditor->setText(text); }

QString TTextEditorFrame::printTitle() const
{
    // A tab page sits in the tab widget's page stack.
    QWidget *page = parentWidget();
    QWidget *stack = page ? page->parentWidget() : nullptr;
    auto *tabs = qobject_cast<QTabWidget *>(stack && qobject_cast<QStackedWidget *>(stack) ? stack->parentWidget() : nullptr);
    const int index = tabs ? tabs->indexOf(page) : -1;
    return index >= 0 ? tabs->tabText(index) : QString();
}

void TTextEditorFrame::tbOpenClick() { m_files->open(); }
void TTextEditorFrame::tbsaveClick() { m_files->save(); }

void TTextEditorFrame::tbPrintClick()
{
    if (m_tools)
        m_tools->PrintSynEdit(smEditor, printTitle());
}

void TTextEditorFrame::tbPrintPreviewClick()
{
    if (m_tools)
        m_tools->PreviewSynEdit(smEditor, printTitle());
}

void TTextEditorFrame::tbCutClick() { smEditor->cut(); }
void TTextEditorFrame::tbCopyClick() { smEditor->copy(); }
void TTextEditorFrame::tbPasteClick() { smEditor->paste(); }
void TTextEditorFrame::tbUndoClick() { smEditor->undo(); }
void TTextEditorFrame::rbRedoClick() { smEditor->redo(); }
void TTextEditorFrame::tbClearClick() { smEditor->clear(); }
void TTextEditorFrame::tbFindClick() { TextSearch::ShowSearchReplaceDialog(smEditor, false); }
void TTextEditorFrame::tbFindNextClick() { TextSearch::DoSearchReplaceText(smEditor, false, false); }
void TTextEditorFrame::tbFindPreviosClick() { TextSearch::DoSearchReplaceText(smEditor, false, true); }
void TTextEditorFrame::tbReplaceClick() { TextSearch::ShowSearchReplaceDialog(smEditor, true); }
