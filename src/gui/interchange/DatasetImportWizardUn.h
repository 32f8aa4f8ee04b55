#pragma once
#include <QDialog>
#include <QStringList>
#include <QVector>

#include <atomic>
#include <memory>

class DatasetImportTarget;
class QComboBox;
class QLabel;
class QListWidget;
class QProgressBar;
class QPushButton;
class QStackedWidget;
class QTableView;
class QTimer;
class SheetPreviewModel;
class TFileNameEdit;
class WorkbookReader;
class WorkbookSheet;

// The Data Import Wizard: loads the rows of one sheet of a workbook (.xls, .xlsx, .xlsm, .xlsb)
// into an open, editable result that the caller supplies and keeps. Four pages: a welcome, the
// source file `fe`, the sheet `cbSheet`, and the ready page with the preview grid `gData`, where
// Process Now appends one result row per sheet row.
//
// The workbook is opened and the sheet read on worker threads, with the progress shown and Cancel
// able to stop the read. The import is a chain on the window's thread: a row is appended and
// written back through the target, and when its outcome arrives the status column of its grid
// row shows "OK" or the error, the progress bar moves, and the next row follows. A row that fails
// does not stop the others; Cancel stops between rows. The ready page's label then says how many
// rows were posted and how many failed.
class TDatasetImportWizardFrm : public QDialog
{
    Q_OBJECT
public:
    enum Page { WelcomePage, FilePage, SheetPage, ReadyPage };

    explicit TDatasetImportWizardFrm(DatasetImportTarget *target, QWidget *parent = nullptr);
    ~TDatasetImportWizardFrm() override;

    // The entry operation: makes the wizard on the target and shows it modally. It frees itself
    // when closed; the caller gets it back only to watch it.
    static TDatasetImportWizardFrm *Execute(DatasetImportTarget *target, QWidget *parent);

    // The filter of the file-name box, in the "description|patterns|..." form.
    static const QString &fileFilter();

    int currentPage() const;
    // A workbook is being opened, a sheet read or rows imported.
    bool isBusy() const { return m_work != Work::None; }
    // The chosen sheet: its name (without surrounding quotes), its index in the workbook (-1 when
    // there is none) and its rows once read.
    QString sheetName() const { return m_sheetName; }
    int sheetIndex() const { return m_sheetIndex; }
    const WorkbookSheet *sheet() const { return m_sheet.get(); }
    // Outcome of the last Process Now.
    int postedRows() const { return m_posted; }
    int failedRows() const { return m_failed; }
    SheetPreviewModel *preview() const { return m_preview; }

public slots:
    void UseMaskPNextButtonClick();            // opens the workbook and lists its sheets
    void SourceIsTableOrSqlPNextButtonClick(); // reads the chosen sheet into the preview
    void StartBtnClick();                      // Process Now: imports the sheet's rows
    void nextClick();
    void backClick();
    void toStartClick();
    void toLastClick();
    void finishClick();
    void helpClick();
    // Cancel, Esc and closing the window: a read stops and the wizard closes; an import stops
    // after the row under way and the wizard stays to show what arrived.
    void reject() override;

signals:
    // The wizard has finished a step that ran off the window's thread or over the database.
    void workbookOpened();
    void sheetRead();
    void importFinished();

private:
    enum class Work { None, Opening, Reading, Importing };

    QWidget *makeWelcomePage();
    QWidget *makeFilePage();
    QWidget *makeSheetPage();
    QWidget *makeReadyPage();
    QPushButton *makeButton(const char *name, const QString &caption);
    void showPage(int page);
    void setWork(Work work);
    void updateButtons();
    void dropSheet();
    void sheetLoaded(std::shared_ptr<const WorkbookSheet> sheet);
    void showReadProgress();
    void importRow(int sheetRow);
    void finishImport();

    DatasetImportTarget *m_target;
    std::shared_ptr<WorkbookReader> m_workbook;
    std::shared_ptr<const WorkbookSheet> m_sheet;
    QString m_sheetName;
    int m_sheetIndex = -1;
    int m_rowCount = 0;
    int m_columnCount = 0;

    Work m_work = Work::None;
    // Shared with the thread reading a sheet: the rows read so far, and whether to stop.
    struct ReadState
    {
        std::atomic<int> rowsRead{0};
        std::atomic<bool> cancel{false};
    };
    std::shared_ptr<ReadState> m_read;
    QTimer *m_readTimer;
    QVector<int> m_fields;
    bool m_stopImport = false;
    bool m_imported = false;
    int m_posted = 0;
    int m_failed = 0;

    QListWidget *RouteMapSteps;
    QLabel *m_title;
    QLabel *m_subtitle;
    QStackedWidget *m_pages;
    TFileNameEdit *fe;
    QLabel *m_fileState;
    QComboBox *cbSheet;
    QLabel *ProgressLbl;
    QProgressBar *pb;
    QPushButton *StartBtn;
    QTableView *gData;
    SheetPreviewModel *m_preview;
    QPushButton *m_help;
    QPushButton *m_toStart;
    QPushButton *m_toLast;
    QPushButton *m_back;
    QPushButton *m_next;
    QPushButton *m_finish;
    QPushButton *m_cancel;
};
