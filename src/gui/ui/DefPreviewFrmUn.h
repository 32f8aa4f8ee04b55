#pragma once
#include <QDialog>

class QAction;
class QLabel;
class QMenu;
class QPrintPreviewWidget;
class QPrinter;
class QToolBar;
class QToolButton;

// The common print preview window: the toolbar tbMap (print, scale, printer setup, previous and
// next page, stop, close), the status bar sp whose first panel shows the page information, and
// the scale menu pmnScale. Descendants give the scale items' tags their own meaning and render
// their printout into the preview widget.
class TDefPreviewFrm : public QDialog
{
    Q_OBJECT
public:
    TDefPreviewFrm(QPrinter *printer, QWidget *parent = nullptr);

    QPrintPreviewWidget *previewWidget() const { return m_preview; }
    QMenu *scaleMenu() const { return pmnScale; }
    // The scale items in menu order: mni500 ... mni10, then mniWidth and mniFull.
    const QList<QAction *> &scaleItems() const { return m_scaleItems; }
    QString pageInfo() const;

public slots:
    void tbScaleClick();  // drops the scale menu down at the lower left corner of its button
    void tbCloseClick();

protected:
    QToolButton *button(const char *name) const;
    void setPageInfo(const QString &text);

    QToolBar *tbMap;
    QMenu *pmnScale;
    QPrintPreviewWidget *m_preview;
    QPrinter *m_printer;

private:
    QList<QAction *> m_scaleItems;
    QLabel *m_pageInfo;
};
