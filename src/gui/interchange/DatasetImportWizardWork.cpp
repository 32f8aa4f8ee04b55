// The import wizard's work: opening the workbook and reading the sheet on worker threads, and
// the import as a chain of rows written back one after the other.

#include "gui/interchange/DatasetImportWizardUn.h"

#include "core/interchange/WorkbookReader.h"
#include "core/workspace/SheetImport.h"
#include "gui/app/UserMessages.h"
#include "gui/connections/FileNameEdit.h"
#include "gui/interchange/DatasetImportTarget.h"
#include "gui/interchange/SheetPreviewModel.h"
#include "gui/ui/BackgroundWork.h"

#include <QComboBox>
#include <QLabel>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QTableView>
#include <QTimer>

#include <algorithm>

void TDatasetImportWizardFrm::UseMaskPNextButtonClick()
{
    const QString fileName = fe->text().trimmed();
    if (fileName.isEmpty()) {
        UserMessages::error(this, QStringLiteral("Please choose a source file"));
        return;
    }
    setWork(Work::Opening);
    m_fileState->setText(QStringLiteral("Opening %1...").arg(fileName));
    // Opening reads a whole .xls file (and the globals of any workbook): work for a worker thread too.
    auto opened = std::make_shared<std::shared_ptr<WorkbookReader>>();
    auto names = std::make_shared<QStringList>();
    runInBackground(
        this,
        [fileName, opened, names] {
            *opened = WorkbookReader::open(fileName);
            *names = (*opened)->sheetNames();
        },
        [this, opened, names](const QString &error) {
            setWork(Work::None);
            m_fileState->clear();
            if (!error.isEmpty()) {
                UserMessages::error(this, error);
                return;
            }
            m_workbook = *opened;
            dropSheet();
            cbSheet->clear();
            cbSheet->addItems(*names);
            showPage(SheetPage);
            emit workbookOpened();
        });
}

void TDatasetImportWizardFrm::dropSheet()
{
    m_sheet.reset();
    m_sheetIndex = -1;
    m_rowCount = m_columnCount = 0;
    m_imported = false;
    m_preview->clear();
    pb->setRange(0, 100);
    pb->setValue(0);
    ProgressLbl->setText(QStringLiteral("Ready"));
    updateButtons();
}

void TDatasetImportWizardFrm::SourceIsTableOrSqlPNextButtonClick()
{
    if (!m_workbook)
        return;
    const QString chosen = cbSheet->currentText();
    m_sheetName = SheetImport::sheetNameOf(chosen);
    const int index = m_workbook->sheetIndex(m_sheetName);
    dropSheet();
    m_sheetIndex = index;
    if (index < 0) {
        UserMessages::error(this, QStringLiteral("Wrong selection: ") + chosen);
        return;
    }
    showPage(ReadyPage);
    setWork(Work::Reading);
    // The rows are not known before the sheet is read: the bar shows that work is under way.
    pb->setRange(0, 0);
    m_read = std::make_shared<ReadState>();
    showReadProgress();
    m_readTimer->start();
    auto read = std::make_shared<WorkbookSheet>();
    runInBackground(
        this,
        [book = m_workbook, index, state = m_read, read] {
            *read = book->readSheet(index, [state](int rowsRead) {
                state->rowsRead = rowsRead;
                return !state->cancel;
            });
        },
        [this, state = m_read, read](const QString &error) {
            if (state != m_read)
                return;
            m_readTimer->stop();
            setWork(Work::None);
            if (!error.isEmpty()) {
                dropSheet();
                showPage(SheetPage);
                if (!state->cancel)
                    UserMessages::error(this, error);
                return;
            }
            sheetLoaded(read);
        });
}

void TDatasetImportWizardFrm::showReadProgress()
{
    if (m_read)
        ProgressLbl->setText(QStringLiteral("Reading sheet %1... %2 rows").arg(m_sheetName).arg(m_read->rowsRead.load()));
}

void TDatasetImportWizardFrm::sheetLoaded(std::shared_ptr<const WorkbookSheet> sheet)
{
    m_sheet = std::move(sheet);
    m_rowCount = m_sheet->rowCount();
    m_columnCount = m_sheet->columnCount();
    // The bar counts rows; an empty sheet keeps a range of one so the bar does not show the
    // endless "busy" animation of an empty range.
    pb->setRange(0, std::max(m_rowCount, 1));
    pb->setValue(0);
    m_preview->setSheet(m_sheet);
    ProgressLbl->setText(QStringLiteral("Ready"));
    updateButtons();
    emit sheetRead();
}

void TDatasetImportWizardFrm::StartBtnClick()
{
    if (!m_sheet || isBusy() || m_imported)
        return;
    m_fields = m_target->visibleFields();
    m_posted = m_failed = 0;
    m_stopImport = false;
    pb->setValue(0);
    setWork(Work::Importing);
    importRow(1);
}

void TDatasetImportWizardFrm::importRow(int sheetRow)
{
    if (m_stopImport || sheetRow > m_rowCount) {
        finishImport();
        return;
    }
    ProgressLbl->setText(QStringLiteral("Importing row %1 of %2").arg(sheetRow).arg(m_rowCount));
    QPointer<TDatasetImportWizardFrm> self(this);
    m_target->appendRow(
        [sheet = m_sheet, fields = m_fields, sheetRow](ResultTable &table, qint64 row) {
            SheetImport::fillRow(table, row, fields, *sheet, sheetRow);
        },
        [self, sheetRow](const QString &error) {
            if (!self)
                return;  // the window was closed; the row under way was written or refused all the same
            if (error.isEmpty()) {
                ++self->m_posted;
                self->m_preview->setStatus(sheetRow, QStringLiteral("OK"));
            } else {
                ++self->m_failed;
                self->m_preview->setStatus(sheetRow, error);
            }
            self->pb->setValue(sheetRow);
            // The row stays in sight as the import moves down the sheet; the view keeps its
            // horizontal place, so the columns the user is looking at stay in view.
            const int leftColumn = std::max(0, self->gData->columnAt(0));
            self->gData->scrollTo(self->m_preview->index(sheetRow, leftColumn));
            // The next row starts from the event loop, so a long run of rows that fail at once
            // does not nest one call in the other.
            QTimer::singleShot(0, self.data(), [self, sheetRow] {
                if (self)
                    self->importRow(sheetRow + 1);
            });
        });
}

void TDatasetImportWizardFrm::finishImport()
{
    const int remaining = m_rowCount - m_posted - m_failed;
    QString text = QStringLiteral("%1 rows posted, %2 failed").arg(m_posted).arg(m_failed);
    if (m_stopImport && remaining > 0)
        text = QStringLiteral("Cancelled: ") + text + QStringLiteral(", %1 not imported").arg(remaining);
    else
        text = QStringLiteral("Done: ") + text;
    ProgressLbl->setText(text);
    // The rows are in the database now; a second Process Now would add them again.
    m_imported = true;
    setWork(Work::None);
    emit importFinished();
}

void TDatasetImportWizardFrm::reject()
{
    switch (m_work) {
    case Work::Importing:
        // The row under way finishes; the ready page then says what arrived.
        m_stopImport = true;
        ProgressLbl->setText(QStringLiteral("Cancelling after the current row..."));
        return;
    case Work::Reading:
        m_read->cancel = true;
        break;
    case Work::Opening:
    case Work::None:
        break;
    }
    QDialog::reject();
}
