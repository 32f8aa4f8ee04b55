#pragma once
class QsciScintilla;
class QWidget;

// The SQL editor control set up the one way the program uses it: SQL highlighting, a monospace
// font, line numbers in the margin.
namespace SqlEditor {

QsciScintilla *create(QWidget *parent, const char *objectName);

// Line numbers with leading zeros and a right edge at column 400 (the log's text view).
void useLogStyle(QsciScintilla *editor);

} // namespace SqlEditor
