#pragma once
#include <QWidget>

class ExecutionLog;
class LogTableModel;
class QMenu;
class LogFilterModel;
class QTabWidget;
class QTableView;
class QsciScintilla;

// The execution log at the foot of a tab: a table of every statement run (number, status picture,
// times, statement, message, time taken) and the same as running text in an editable view.
class TdmTools;

class TSqlLogFrame : public QWidget
{
    Q_OBJECT
public:
    explicit TSqlLogFrame(QWidget *parent = nullptr);

    ExecutionLog *table() const { return md; }
    QTableView *grid() const { return gLog; }
    QsciScintilla *textView() const { return seLog; }

    void SetSQL(const QString &sql);
    void SetMessage(const QString &message, int status);
    // Empties the text view and the table; numbering restarts at 1.
    void Clear();

    // The tools service that prints the grid; without it the grid's print entries do nothing.
    void setTools(TdmTools *tools) { m_tools = tools; }

    // Writes the text view's lines to `fileName` (no header, no columns).
    void saveLogTo(const QString &fileName);

public slots:
    // Text view menu.
    void Cut1Click();
    void Copy1Click();
    void Paste1Click();
    void SearchClick();
    void RepeatSearch1Click();
    void ReplaceClick();
    void Print1Click();
    void PrintPreview1Click();
    void Clear1Click();
    void SaveLog1Click();
    // Grid menu.
    void Find1Click();
    void PrintGridMenuItemClick();     // prints gLog as "Execution Log"
    void PrintPreviewMenuItemClick();  // previews gLog as "Execution Log"
    void MenuItem10Click();

private:
    QMenu *buildTextMenu();
    QMenu *buildGridMenu();
    void appendTextLine(const QString &text);
    // Asks for the text to find (remembered for the next search); false when cancelled or empty.
    bool askSearchText(const QString &title);

    ExecutionLog *md;
    LogTableModel *m_model;
    LogFilterModel *m_sorted;
    QTabWidget *PC;
    QTableView *gLog;
    TdmTools *m_tools = nullptr;
    QsciScintilla *seLog;
    QString m_lastSearch;
};
