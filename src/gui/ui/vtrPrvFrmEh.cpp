#include "gui/ui/vtrPrvFrmEh.h"

#include <QAction>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QPageSetupDialog>
#include <QPrintDialog>
#include <QPrintPreviewWidget>
#include <QPrinter>
#include <QPrinterInfo>
#include <QToolButton>

namespace {

const int kPercents[] = {500, 200, 150, 100, 75, 50, 25, 10};
constexpr int ModeWidth = 8, ModeFull = 9;

} // namespace

TvtrPreviewFormEh::TvtrPreviewFormEh(PrintTable table, const QString &title, QWidget *parent)
    : TDefPreviewFrm(new QPrinter(QPrinter::HighResolution), parent), m_table(std::move(table)), m_title(title)
{
    setObjectName(QStringLiteral("vtrPreviewFormEh"));
    m_printer = TDefPreviewFrm::m_printer;
    m_printer->setDocName(title);
    // The number of copies is the printer property the program sets to 1 before rendering.
    m_printer->setCopyCount(1);
    m_preview->setObjectName(QStringLiteral("PreviewEh1"));
    printDialog = [this](QPrinter *printer) { return QPrintDialog(printer, this).exec() == QDialog::Accepted; };
    setupDialog = [this](QPrinter *printer) { return QPageSetupDialog(printer, this).exec() == QDialog::Accepted; };
    FormCreate();

    connect(m_preview, &QPrintPreviewWidget::paintRequested, this, &TvtrPreviewFormEh::render);
    connect(m_preview, &QPrintPreviewWidget::previewChanged, this, &TvtrPreviewFormEh::PreviewEh1PrinterPreviewChanged);
    connect(pmnScale, &QMenu::triggered, this, &TvtrPreviewFormEh::mniScaleClick);
    connect(button("tbPrint"), &QToolButton::clicked, this, &TvtrPreviewFormEh::tbtPrintClick);
    connect(button("tbPrinterSetupDialog"), &QToolButton::clicked, this, &TvtrPreviewFormEh::tbPrinterSetupDialogClick);
    connect(button("tbStop"), &QToolButton::clicked, this, &TvtrPreviewFormEh::tbStopClick);
    for (QToolButton *page : {button("tbPrevPage"), button("tbNextPage")}) {
        connect(page, &QToolButton::pressed, this, [this, page] { pageButtonPressed(page); });
        connect(page, &QToolButton::released, this, &TvtrPreviewFormEh::pageButtonReleased);
    }
    connect(button("tbPrevPage"), &QToolButton::clicked, this, &TvtrPreviewFormEh::tbtPrevPageClick);
    connect(button("tbNextPage"), &QToolButton::clicked, this, &TvtrPreviewFormEh::tbtNextPageClick);
    connect(&m_repeat, &QTimer::timeout, this, [this] {
        m_repeat.setInterval(100);
        if (m_held && m_held->isEnabled())
            stepPage(m_held == button("tbPrevPage") ? -1 : 1, nullptr);
    });
    setViewMode(ModeFull);
}

TvtrPreviewFormEh::~TvtrPreviewFormEh()
{
    delete m_preview;  // the preview widget paints through the printer: it goes first
    m_preview = nullptr;
    delete m_printer;
}

void TvtrPreviewFormEh::FormCreate()
{
    // Tags 0 to 9 in menu order select the view modes.
    for (int i = 0; i < scaleItems().size(); ++i) {
        scaleItems()[i]->setData(i);
        scaleItems()[i]->setCheckable(true);
    }
}

void TvtrPreviewFormEh::render(QPrinter *printer)
{
    m_generating = true;
    m_stopRequested = false;
    GridPrinter::print(printer, m_table, m_title);
    m_generating = false;
}

int TvtrPreviewFormEh::pageCount() const
{
    return m_preview->pageCount();
}

int TvtrPreviewFormEh::currentPage() const
{
    return m_preview->currentPage();
}

void TvtrPreviewFormEh::setViewMode(int mode)
{
    m_viewMode = mode;
    if (mode == ModeWidth) {
        m_preview->fitToWidth();
    } else if (mode == ModeFull) {
        m_preview->fitInView();
    } else if (mode >= 0 && mode < int(std::size(kPercents))) {
        m_preview->setZoomMode(QPrintPreviewWidget::CustomZoom);
        m_preview->setZoomFactor(kPercents[mode] / 100.0);
    }
    PreviewEh1PrinterPreviewChanged();
}

void TvtrPreviewFormEh::mniScaleClick(QAction *item)
{
    if (!item || !scaleItems().contains(item))
        return;
    item->setChecked(true);
    setViewMode(item->data().toInt());
    m_preview->updatePreview();
}

void TvtrPreviewFormEh::tbtPrintClick()
{
    if (printDialog(m_printer))
        m_preview->print();
}

void TvtrPreviewFormEh::tbPrinterSetupDialogClick()
{
    if (setupDialog(m_printer))
        m_preview->updatePreview();
}

void TvtrPreviewFormEh::stepPage(int delta, QToolButton *button)
{
    // A click the button sends on release after auto-repeating steps no further.
    if (button && m_ignoreClick) {
        m_ignoreClick = false;
        return;
    }
    const int page = currentPage() + delta;
    if (page >= 1 && page <= pageCount())
        m_preview->setCurrentPage(page);
    PreviewEh1PrinterPreviewChanged();
}

void TvtrPreviewFormEh::tbtPrevPageClick()
{
    stepPage(-1, qobject_cast<QToolButton *>(sender()));
}

void TvtrPreviewFormEh::tbtNextPageClick()
{
    stepPage(1, qobject_cast<QToolButton *>(sender()));
}

void TvtrPreviewFormEh::pageButtonPressed(QToolButton *button)
{
    m_repeat.setInterval(400);
    m_repeat.start();
    m_held = button;
    m_ignoreClick = false;
}

void TvtrPreviewFormEh::pageButtonReleased()
{
    m_ignoreClick = m_repeat.isActive() && m_repeat.interval() == 100;
    m_repeat.stop();
    m_held = nullptr;
}

void TvtrPreviewFormEh::tbStopClick()
{
    if (m_generating)
        m_stopRequested = true;
}

void TvtrPreviewFormEh::PreviewEh1PrinterPreviewChanged()
{
    if (!m_generating && m_closeRequested) {
        m_closeRequested = false;
        close();
        return;
    }
    const bool printerExists = !QPrinterInfo::availablePrinterNames().isEmpty() || m_printer->outputFormat() == QPrinter::PdfFormat;
    button("tbStop")->setEnabled(m_generating);
    button("tbPrint")->setEnabled(!m_generating);
    button("tbPrinterSetupDialog")->setEnabled(!m_generating && printerExists);
    button("tbPrevPage")->setEnabled(currentPage() >= 2);
    button("tbNextPage")->setEnabled(currentPage() < pageCount());
    setPageInfo(QStringLiteral("Page %1 of %2").arg(currentPage()).arg(pageCount()));
    for (QAction *item : scaleItems())
        item->setChecked(item->data().toInt() == m_viewMode);
    setWindowTitle(QStringLiteral("Print Preview - ") + m_title);
}

void TvtrPreviewFormEh::PreviewEh1OpenPreviewer()
{
    if (isMinimized())
        showNormal();
    show();
    raise();
    activateWindow();
}

void TvtrPreviewFormEh::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape) {
        if (m_generating)
            tbStopClick();
        else
            close();
        return;
    }
    TDefPreviewFrm::keyPressEvent(event);
}

void TvtrPreviewFormEh::closeEvent(QCloseEvent *event)
{
    // A preview still being generated stops first and closes once generation reports its end.
    if (m_generating) {
        tbStopClick();
        m_closeRequested = true;
        event->ignore();
        return;
    }
    TDefPreviewFrm::closeEvent(event);
}
