#pragma once
#include "gui/ui/DefPreviewFrmUn.h"
#include "gui/ui/GridPrinter.h"

#include <QTimer>
#include <memory>

class QPrinter;

// The grid print preview. The scale items select the preview's view modes by their tags 0 to 9
// (500, 200, 150, 100, 75, 50, 25, 10 per cent, page width, whole page). Holding a page button
// steps once, again after 400 ms and then every 100 ms until it is released.
class TvtrPreviewFormEh : public TDefPreviewFrm
{
    Q_OBJECT
public:
    TvtrPreviewFormEh(PrintTable table, const QString &title, QWidget *parent = nullptr);
    ~TvtrPreviewFormEh() override;

    QPrinter *printer() const { return m_printer; }
    int viewMode() const { return m_viewMode; }
    bool isGenerating() const { return m_generating; }
    int pageCount() const;
    int currentPage() const;

    // Asks for the printer and prints; tests replace the print and setup dialogs.
    std::function<bool(QPrinter *)> printDialog;
    std::function<bool(QPrinter *)> setupDialog;

public slots:
    void mniScaleClick(QAction *item);
    void tbtPrintClick();
    void tbPrinterSetupDialogClick();
    void tbtPrevPageClick();
    void tbtNextPageClick();
    void tbStopClick();
    void PreviewEh1PrinterPreviewChanged();
    void PreviewEh1OpenPreviewer();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void FormCreate();
    void render(QPrinter *printer);
    void setViewMode(int mode);
    void pageButtonPressed(QToolButton *button);
    void pageButtonReleased();
    void stepPage(int delta, QToolButton *button);

    PrintTable m_table;
    QString m_title;
    QPrinter *m_printer;
    int m_viewMode = 9;
    bool m_generating = false;
    bool m_stopRequested = false;
    bool m_closeRequested = false;
    QTimer m_repeat;
    QToolButton *m_held = nullptr;
    bool m_ignoreClick = false;
};
