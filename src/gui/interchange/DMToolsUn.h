#pragma once
#include "gui/ui/AppStyles.h"

#include <QColor>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <functional>
#include <memory>

class ExportSource;
class QsciScintilla;
class QPrinter;
class QWidget;

// The tools service: exports of a grid's rows to files, grid and editor printing with their
// previews, and the program-wide visual style. One instance, made in main.cpp.
class TdmTools : public QObject
{
    Q_OBJECT
public:
    explicit TdmTools(QObject *parent = nullptr);

    // --- Export ---

    // Asks for the target file and the save dialog's filter entry (1-based); false when cancelled.
    using SaveDialog = std::function<bool(QWidget *parent, const QString &caption, const QString &defaultName,
                                          QString &fileName, int &entry)>;
    // Tells the user why an export failed.
    using ErrorBox = std::function<void(QWidget *parent, const QString &message)>;
    // Tests replace the file dialog and the error box.
    void setSaveDialog(SaveDialog dialog) { m_saveDialog = std::move(dialog); }
    void setErrorBox(ErrorBox box) { m_errorBox = std::move(box); }

    // Asks where to and in which format, then writes the source's rows there on a worker thread.
    // The grid is disabled meanwhile and enabled again afterwards, whatever the outcome; an export
    // that takes more than half a second shows a progress dialog with Cancel. Returns at once;
    // exportFinished reports the end. The .xlsm entry writes nothing.
    void ExportGrid(QWidget *grid, std::shared_ptr<const ExportSource> source, const QString &caption = {},
                    const QString &defaultName = {});
    bool isExporting() const { return !m_running.isEmpty(); }
    // Cancels the running exports of a grid (of every grid when null) and waits until they have
    // stopped; no file is left. Whoever drops the rows an export reads calls this first.
    void cancelExports(const QWidget *grid = nullptr);

    // --- Printing ---

    // Asks for the printer in the print dialog (which can also print to a PDF file); false when
    // cancelled. Tests replace it.
    using PrintDialog = std::function<bool(QWidget *parent, QPrinter *printer)>;
    void setPrintDialog(PrintDialog dialog) { m_printDialog = std::move(dialog); }

    // Prints the rows under the title after the print dialog.
    void PrintGrid(QWidget *parent, const ExportSource &rows, const QString &title);
    // Opens the grid preview window on a copy of the rows' texts; it lives until closed.
    QWidget *PrintPreviewGrid(QWidget *parent, std::shared_ptr<const ExportSource> rows, const QString &title);
    // Prints the editor's text under the title, with the header and footer bands, after the print dialog.
    void PrintSynEdit(QsciScintilla *editor, const QString &title);
    // Shows the editor's text in the text preview, modally.
    void PreviewSynEdit(QsciScintilla *editor, const QString &title);

    // --- Styles ---

    // The style names as the workspace's style list shows them. Two end in a blank, as stored;
    // the last one follows the desktop's light or dark scheme.
    static const QStringList &styleNames();

    // The entry of the style list last chosen, -1 before any.
    int applicationStyle() const { return m_style; }
    // Sets the application style of a style list entry and restyles every window. Out-of-range
    // entries fall back to the first style.
    void setApplicationStyle(int index);

    // Stores the theme number; 0 to 11 choose an application style, a higher number keeps the
    // current one. Either way the component styles and the look are applied again.
    void SetTheme(int theme);
    int theme() const { return m_theme; }
    // Sets the five component styles from the application style, and applies its palette and
    // style sheet to the whole program.
    void aasChange();
    TAppStyle appStyle() const { return TAppStyle(m_appStyle); }
    ComponentStyles componentStyles() const { return m_components; }
    bool desktopDark() const { return m_desktopDark; }
    // The grid title colour of the current style; invalid when the style sets none.
    QColor gridTitleColor() const;

signals:
    void applicationStyleChanged(int index);
    // An export ended: ok when the file was written; message names the cause of a failure and is
    // empty after a cancel or success.
    void exportFinished(bool ok, const QString &message);

private:
    void runExport(QWidget *grid, std::shared_ptr<const ExportSource> source, int format, const QString &fileName,
                   const QString &caption);

    int m_style = -1;
    int m_theme = 0;
    int m_appStyle = tsOffice2003Blue;
    bool m_desktopDark = false;
    ComponentStyles m_components{6, 8, 12, 8, 8};
    struct RunningExport;
    QList<std::shared_ptr<RunningExport>> m_running;
    SaveDialog m_saveDialog;
    PrintDialog m_printDialog;
    ErrorBox m_errorBox;
};
