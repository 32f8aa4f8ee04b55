#include "gui/interchange/DMToolsUn.h"

#include "core/interchange/ExportSource.h"
#include "gui/ui/GridPrinter.h"
#include "gui/ui/SePrintPreviewUn.h"
#include "gui/ui/SynEditPrint.h"
#include "gui/ui/vtrPrvFrmEh.h"

#include <QMessageBox>
#include <QPrintDialog>
#include <QPrinter>

namespace {

bool runPrintDialog(QWidget *parent, QPrinter *printer)
{
    QPrintDialog dialog(printer, parent);
    return dialog.exec() == QDialog::Accepted;
}

// A printout of a very large result runs to thousands of pages and is laid out in one go: the
// user confirms it first.
constexpr qint64 LargePrintRows = 50000;

bool confirmLargePrint(QWidget *parent, qint64 rows)
{
    if (rows <= LargePrintRows)
        return true;
    return QMessageBox::question(parent, QStringLiteral("Print"),
                                 QStringLiteral("The grid holds %L1 rows; its printout runs to thousands of pages "
                                                "and takes a while to prepare. Continue?").arg(rows))
           == QMessageBox::Yes;
}

} // namespace

void TdmTools::PrintGrid(QWidget *parent, const ExportSource &rows, const QString &title)
{
    QPrinter printer(QPrinter::HighResolution);
    // The number of copies is the printer property the program sets to 1 before printing.
    printer.setCopyCount(1);
    printer.setDocName(title);
    const PrintDialog &dialog = m_printDialog ? m_printDialog : PrintDialog(runPrintDialog);
    if (confirmLargePrint(parent, rows.rowCount()) && dialog(parent, &printer))
        GridPrinter::print(&printer, PrintTable::from(rows), title);
}

QWidget *TdmTools::PrintPreviewGrid(QWidget *parent, std::shared_ptr<const ExportSource> rows, const QString &title)
{
    if (!rows || !confirmLargePrint(parent, rows->rowCount()))
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
