#include "gui/ui/SePrintPreviewUn.h"

#include "gui/ui/SynEditPrint.h"

#include <Qsci/qsciscintilla.h>

#include <QAction>
#include <QGraphicsView>
#include <QMenu>
#include <QMouseEvent>
#include <QPageSetupDialog>
#include <QPrintPreviewWidget>
#include <QPrinterInfo>
#include <QToolButton>

TSePrintPreviewFrm::TSePrintPreviewFrm(TSynEditPrint *printer, QsciScintilla *editor, QWidget *parent)
    : TDefPreviewFrm(printer, parent), m_editorPrinter(printer), m_editor(editor)
{
    setObjectName(QStringLiteral("SePrintPreview"));
    m_preview->setObjectName(QStringLiteral("SynEditPrintPreview"));
    // Here "Whole Page" is tag -1 and "Page Width" tag -2; the percentages keep their numbers.
    findChild<QAction *>(QStringLiteral("mniFull"))->setData(-1);
    findChild<QAction *>(QStringLiteral("mniWidth"))->setData(-2);
    button("tbStop")->hide();

    connect(m_preview, &QPrintPreviewWidget::paintRequested, this, [this](QPrinter *) { m_editorPrinter->printEditor(m_editor); });
    connect(m_preview, &QPrintPreviewWidget::previewChanged, this, [this] { SynEditPrintPreviewPreviewPage(m_preview->currentPage()); });
    connect(pmnScale, &QMenu::triggered, this, &TSePrintPreviewFrm::Fitto1Click);
    connect(button("tbPrint"), &QToolButton::clicked, this, &TSePrintPreviewFrm::PrintCmdExecute);
    connect(button("tbPrevPage"), &QToolButton::clicked, this, &TSePrintPreviewFrm::PrevCmdExecute);
    connect(button("tbNextPage"), &QToolButton::clicked, this, &TSePrintPreviewFrm::NextCmdExecute);
    connect(button("tbPrinterSetupDialog"), &QToolButton::clicked, this, &TSePrintPreviewFrm::tbPrintSetupClick);
    for (QGraphicsView *view : m_preview->findChildren<QGraphicsView *>())
        view->viewport()->installEventFilter(this);
}

void TSePrintPreviewFrm::showEvent(QShowEvent *event)
{
    TDefPreviewFrm::showEvent(event);
    FormShow();
}

void TSePrintPreviewFrm::FormShow()
{
    m_preview->updatePreview();
    m_preview->setCurrentPage(1);
    const QPrinterInfo current = QPrinterInfo::defaultPrinter();
    if (!current.isNull()) {
        const QString name = current.printerName();
        // Short hint and long hint, as "short|long".
        button("tbPrint")->setToolTip(QStringLiteral("Print (%1)|Print the document on %1").arg(name));
    }
    applyScale();
}

void TSePrintPreviewFrm::applyScale()
{
    switch (m_mode) {
    case WholePage:
        m_preview->fitInView();
        break;
    case PageWidth:
        m_preview->fitToWidth();
        break;
    case Scaled:
        m_preview->setZoomMode(QPrintPreviewWidget::CustomZoom);
        m_preview->setZoomFactor(m_scale / 100.0);
        break;
    }
}

void TSePrintPreviewFrm::setScalePercent(int percent)
{
    m_mode = Scaled;
    m_scale = percent;
    applyScale();
}

void TSePrintPreviewFrm::PrintCmdExecute()
{
    m_preview->print();
}

void TSePrintPreviewFrm::PrevCmdExecute()
{
    m_preview->setCurrentPage(m_preview->currentPage() - 1);
    SynEditPrintPreviewPreviewPage(m_preview->currentPage());
}

void TSePrintPreviewFrm::NextCmdExecute()
{
    m_preview->setCurrentPage(m_preview->currentPage() + 1);
    SynEditPrintPreviewPreviewPage(m_preview->currentPage());
}

void TSePrintPreviewFrm::ZoomCmdExecute()
{
    m_mode = WholePage;
    applyScale();
}

void TSePrintPreviewFrm::Fitto1Click(QAction *item)
{
    const int tag = item ? item->data().toInt() : 0;
    if (tag == -1)
        m_mode = WholePage;
    else if (tag == -2)
        m_mode = PageWidth;
    else if (tag > 0) {
        m_mode = Scaled;
        m_scale = tag;
    }
    applyScale();
}

void TSePrintPreviewFrm::SynEditPrintPreviewMouseDown(Qt::MouseButton button)
{
    if (button == Qt::RightButton) {
        setScalePercent(std::max(25, m_scale / 2));
    } else if (button == Qt::LeftButton) {
        setScalePercent(m_mode == WholePage ? 100 : std::min(400, m_scale * 2));
    }
}

void TSePrintPreviewFrm::SynEditPrintPreviewPreviewPage(int page)
{
    setPageInfo(QStringLiteral(" Page: ") + QString::number(page));
}

void TSePrintPreviewFrm::tbPrintSetupClick()
{
    QPageSetupDialog setup(m_editorPrinter, this);
    setup.exec();
    m_preview->updatePreview();
}

bool TSePrintPreviewFrm::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::MouseButtonPress) {
        SynEditPrintPreviewMouseDown(static_cast<QMouseEvent *>(event)->button());
        return true;
    }
    return TDefPreviewFrm::eventFilter(watched, event);
}

namespace SePrintPreview {

void show(QsciScintilla *editor, const QString &title, QWidget *parent)
{
    TSynEditPrint printer(QPrinter::HighResolution);
    printer.setDocName(title);
    printer.setTitle(title);
    TSePrintPreviewFrm preview(&printer, editor, parent);
    preview.setWindowTitle(title);
    preview.exec();
}

} // namespace SePrintPreview
