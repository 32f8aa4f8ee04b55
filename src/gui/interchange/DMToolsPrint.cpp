#include "interchange/DMToolsUn.h"

#include "interchange/ExportSource.h"
#include "ui/GridPrinter.h"
#include "ui/SePrintPreviewUn.h"
#include "ui/SynEditPrint.h"
#include "ui/vtrPrvFrmEh.h"

#include <QPrintDialog>
#include <QPrinter>

namespace {

bool runPrintDialog(QWidget *parent, QPrinter *printer)
{
    QPrintDialog dialog(printer, parent);
    return dialog.exec() == QDialog::Accepted;
}

} // namespace

void TdmTools::PrintGrid(QWidget *parent, const ExportSource &rows, const QString &title)
{
    QPrinter printer(QPrinter::HighResolution);
    // The number of copies is the printer property the program sets to 1 before printing.
    printer.setCopyCount(1);
    printer.setDocName(title);
    const PrintDialog &dialog = m_printDialog ? m_printDialog : PrintDialog(runPrintDialog);
    if (dialog(parent, &printer))
        GridPrinter::print(&printer, PrintTable::from(rows), title);
}

QWidget *TdmTools::PrintPreviewGrid(QWidget *parent, std::shared_ptr<const ExportSource> rows, const QString &title)
{
    if (!rows)
        return nullptr;
    auto *preview = new TvtrPreviewFormEh(PrintTable::from(*rows), title, parent);
    preview->setAttribute(Qt::WA_DeleteOnClose);
    if (m_printDialog)
        preview->printDialog = [this, preview](QPrinter *printer) { return m_printDialog(preview, printer); };
    preview->PreviewEh1OpenPreviewer();
    return preview;
}

void TdmTools::PrintSynEdit(QsciScintilla *editor, const QString &title)
{
    TSynEditPrint printer(QPrinter::HighResolution);
    const PrintDialog &dialog = m_printDialog ? m_printDialog : PrintDialog(runPrintDialog);
    if (!dialog(editor, &printer))
        return;
    printer.setDocName(title);
    printer.setTitle(title);
    printer.printEditor(editor);
}

void TdmTools::PreviewSynEdit(QsciScintilla *editor, const QString &title)
{
    SePrintPreview::show(editor, title, editor ? editor->window() : nullptr);
}
