#include "ui/SePrintPreviewUn.h"

#include <Qsci/qsciprinter.h>
#include <Qsci/qsciscintilla.h>

#include <QPrintPreviewDialog>

namespace SePrintPreview {

void show(QsciScintilla *editor, const QString &title, QWidget *parent)
{
    QsciPrinter printer(QPrinter::ScreenResolution);
    printer.setDocName(title);
    printer.setWrapMode(QsciScintilla::WrapWord);
    QPrintPreviewDialog preview(&printer, parent);
    preview.setObjectName(QStringLiteral("SePrintPreview"));
    preview.setWindowTitle(title);
    QObject::connect(&preview, &QPrintPreviewDialog::paintRequested, editor,
                     [editor, &printer](QPrinter *) { printer.printRange(editor); });
    preview.resize(900, 700);
    preview.exec();
}

} // namespace SePrintPreview
