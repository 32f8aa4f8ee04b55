#pragma once
#include "gui/ui/DefPreviewFrmUn.h"

#include <QString>

class QsciScintilla;
class TSynEditPrint;

// The text print preview over the editor printer. Scale items: "Whole Page" (tag -1) and "Page
// Width" (tag -2) switch those modes, the others scale to their percentage. A right click halves
// the scale (not below 25); a left click doubles it (not above 400), or in whole-page mode
// goes to 100.
class TSePrintPreviewFrm : public TDefPreviewFrm
{
    Q_OBJECT
public:
    TSePrintPreviewFrm(TSynEditPrint *printer, QsciScintilla *editor, QWidget *parent = nullptr);

    int scalePercent() const { return m_scale; }
    bool wholePage() const { return m_mode == WholePage; }
    bool pageWidth() const { return m_mode == PageWidth; }
    void setScalePercent(int percent);

public slots:
    void FormShow();
    void PrintCmdExecute();
    void PrevCmdExecute();
    void NextCmdExecute();
    void ZoomCmdExecute();
    void Fitto1Click(QAction *item);
    void SynEditPrintPreviewMouseDown(Qt::MouseButton button);
    void SynEditPrintPreviewPreviewPage(int page);
    void tbPrintSetupClick();

protected:
    void showEvent(QShowEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    enum Mode { Scaled, WholePage, PageWidth };
    void applyScale();

    TSynEditPrint *m_editorPrinter;
    QsciScintilla *m_editor;
    int m_scale = 100;
    Mode m_mode = Scaled;
};

// Opens the text preview of an editor's content under a title, modally; the user prints from it.
namespace SePrintPreview {

void show(QsciScintilla *editor, const QString &title, QWidget *parent);

} // namespace SePrintPreview
