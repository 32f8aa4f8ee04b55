#include "gui/interchange/DMToolsUn.h"

#include "core/interchange/GridExport.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QProgressDialog>
#include <QThread>
#include <QTimer>

namespace {

// The extension of a filter entry such as "Html (*.html)".
QString extensionOf(const QString &entry)
{
    const qsizetype star = entry.lastIndexOf(QLatin1String("*."));
    return star < 0 ? QString() : entry.mid(star + 1).chopped(1);
}

bool runSaveDialog(QWidget *parent, const QString &caption, const QString &defaultName, QString &fileName, int &entry)
{
    QFileDialog dialog(parent, caption.isEmpty() ? QStringLiteral("Export Data") : caption);
    dialog.setObjectName(QStringLiteral("SD"));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setNameFilters(GridExport::filterEntries());
    if (!defaultName.isEmpty()) {
        dialog.selectFile(defaultName);
        for (const QString &filter : GridExport::filterEntries())
            if (extensionOf(filter) == QLatin1Char('.') + QFileInfo(defaultName).suffix())
                dialog.selectNameFilter(filter);
    }
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return false;
    fileName = dialog.selectedFiles().constFirst();
    entry = GridExport::entryOfFilter(dialog.selectedNameFilter());
    return true;
}

} // namespace

void TdmTools::ExportGrid(QWidget *grid, std::shared_ptr<const ExportSource> source, const QString &caption,
                          const QString &defaultName)
{
    if (!source)
        return;
    QString fileName;
    int entry = 0;
    const SaveDialog &dialog = m_saveDialog ? m_saveDialog : SaveDialog(runSaveDialog);
    if (!dialog(grid, caption, defaultName, fileName, entry) || fileName.isEmpty())
        return;
    const ExportFormat format = GridExport::formatForEntry(entry);
    if (format == ExportFormat::None)
        return;
    // A name typed without an extension gets the one of the chosen entry.
    if (QFileInfo(fileName).suffix().isEmpty())
        fileName += extensionOf(GridExport::filterEntries().value(entry - 1));
    runExport(grid, std::move(source), int(format), fileName, caption);
}

struct TdmTools::RunningExport
{
    ExportProgress progress;
    QString error;
    bool cancelled = false;
    QThread *worker = nullptr;
    const QWidget *grid = nullptr;
};

void TdmTools::cancelExports(const QWidget *grid)
{
    for (const auto &running : std::as_const(m_running)) {
        if (grid && running->grid != grid)
            continue;
        running->progress.cancel = true;
        running->worker->wait();
    }
}

void TdmTools::runExport(QWidget *grid, std::shared_ptr<const ExportSource> source, int format,
                         const QString &fileName, const QString &caption)
{
    auto outcome = std::make_shared<RunningExport>();
    QThread *worker = QThread::create([source, outcome, format, fileName] {
        try {
            GridExport::write(*source, ExportFormat(format), fileName, &outcome->progress);
        } catch (const ExportCancelled &) {
            outcome->cancelled = true;
        } catch (const VantryError &error) {
            outcome->error = error.message();
        } catch (const std::exception &error) {
            outcome->error = QStringLiteral("Cannot write \"%1\": %2").arg(fileName, QString::fromLocal8Bit(error.what()));
        }
    });

    outcome->worker = worker;
    outcome->grid = grid;
    QPointer<QWidget> target(grid);
    if (grid)
        grid->setEnabled(false);
    m_running << outcome;

    // The dialog appears only when the export runs longer than half a second.
    auto *dialog = new QProgressDialog(caption.isEmpty() ? QStringLiteral("Exporting...") : caption,
                                       QStringLiteral("Cancel"), 0, 1000, grid ? grid->window() : nullptr);
    dialog->setObjectName(QStringLiteral("ExportProgress"));
    dialog->setWindowModality(Qt::WindowModal);
    dialog->setMinimumDuration(500);
    dialog->setAutoReset(false);
    dialog->setAutoClose(false);
    dialog->setValue(0);
    connect(dialog, &QProgressDialog::canceled, dialog, [outcome] { outcome->progress.cancel = true; });
    const qint64 rows = source->rowCount();
    auto *timer = new QTimer(dialog);
    timer->setInterval(100);
    connect(timer, &QTimer::timeout, dialog, [dialog, outcome, rows] {
        const qint64 done = outcome->progress.rowsDone.load();
        dialog->setValue(rows > 0 ? int(std::min<qint64>(999, done * 1000 / rows)) : 0);
    });
    timer->start();

    connect(worker, &QThread::finished, this, [this, worker, dialog, target, outcome] {
        worker->deleteLater();
        dialog->deleteLater();
        if (target)
            target->setEnabled(true);
        m_running.removeOne(outcome);
        if (!outcome->error.isEmpty()) {
            if (m_errorBox)
                m_errorBox(target, outcome->error);
            else
                QMessageBox::critical(target, QStringLiteral("Export"), outcome->error);
        }
        emit exportFinished(outcome->error.isEmpty() && !outcome->cancelled, outcome->error);
    });
    worker->start();
}
