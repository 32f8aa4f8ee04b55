#pragma once
#include <QWidget>

class EditorFiles;
class QMenu;
class QToolBar;
class QToolButton;
class QsciScintilla;
class TdmTools;

// The reusable text editor panel: a toolbar over an SQL-highlighting editor with file open and
// save, printing, the clipboard, undo and redo, and the program-wide search and replace. Placed in
// the connection dialog's "Comments" page and under the query builder.
class TTextEditorFrame : public QWidget
{
    Q_OBJECT
public:
    explicit TTextEditorFrame(QWidget *parent = nullptr);

    QsciScintilla *editor() const { return smEditor; }
    EditorFiles *files() const { return m_files; }

    // The tools service that prints; without it the print commands do nothing.
    void setTools(TdmTools *tools) { m_tools = tools; }

    QString toPlainText() const;
    void setPlainText(const QString &text);

    // A modest size, so a host's layout is not widened to the whole toolbar (it folds the
    // buttons that do not fit behind its extension arrow).
    QSize sizeHint() const override { return {360, 200}; }

    // The title of a printout: the caption of the tab page the frame sits on, else empty.
    QString printTitle() const;

public slots:
    void tbOpenClick();
    void tbsaveClick();
    void tbPrintClick();
    void tbPrintPreviewClick();
    void tbCutClick();
    void tbCopyClick();
    void tbPasteClick();
    void tbUndoClick();
    void rbRedoClick();
    void tbClearClick();
    void tbFindClick();
    void tbFindNextClick();
    void tbFindPreviosClick();  // find previous
    void tbReplaceClick();

private:
    void buildToolbar();
    void buildMenu();

    QWidget *adp;
    QToolBar *tb;
    QsciScintilla *smEditor;
    QMenu *pmSe;
    EditorFiles *m_files;
    TdmTools *m_tools = nullptr;
};
