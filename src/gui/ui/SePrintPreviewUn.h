#pragma once
#include <QString>

class QsciScintilla;
class QWidget;

// Print preview of a text editor's content under a title; the user prints from the preview.
namespace SePrintPreview {

void show(QsciScintilla *editor, const QString &title, QWidget *parent);

} // namespace SePrintPreview
