#pragma once
#include <QString>

class QsciScintilla;
class QWidget;

// The SQL editor control set up the one way the program uses it: SQL highlighting, a monospace
// font, line numbers with leading zeros in the margin, F1 left free and Ctrl+F1 for context help.
// Also the control's own search and replace, which the program-wide search drives.
namespace SqlEditor {

QsciScintilla *create(QWidget *parent, const char *objectName);

// Right edge at column 400 (the log's text view).
void useLogStyle(QsciScintilla *editor);

// The text editor frame's editor: right edge at column 500, tabs typed as spaces, smart tabs and
// smart tab delete, trailing blanks trimmed from a line when Enter leaves it.
void useTextEditorStyle(QsciScintilla *editor);

struct SearchOptions
{
    bool backwards = false;
    bool matchCase = false;
    bool wholeWords = false;
    bool entireScope = false;   // from the start (or, backwards, the end) instead of the caret
    bool selectedOnly = false;  // within the selection only
    bool replace = false;       // replace the occurrence found
    bool replaceAll = false;    // ... and every later one
    // Asks before each replacement when a confirmation handler is attached; the editor has
    // none, so every occurrence is replaced without asking.
    bool prompt = false;
};

// Searches for the literal text. Found: the occurrence is selected (replaced when asked) and
// shown; a replace-all replaces every occurrence of the scope as one undo step and leaves the
// caret after the last. Returns the number found (0 for an empty text).
int searchReplace(QsciScintilla *editor, const QString &text, const QString &replacement, const SearchOptions &options);

// Collapses the selection to its start (backwards) or its end, the caret there.
void collapseSelection(QsciScintilla *editor, bool toStart);

QString wordAtCaret(QsciScintilla *editor);

// Replaces the editor's text by UTF-8 bytes as one step, without a QString copy in between: the
// fast path for large files. One undo brings the old text back.
void setUtf8Text(QsciScintilla *editor, const QByteArray &utf8);

} // namespace SqlEditor
