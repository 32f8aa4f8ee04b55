// Running the editor's text: one statement (Run SQL), a script cut at delimiter lines (Run as
// Script), the table list's click, and the history steps. The handlers read the editor and hand
// the work to the tab's run service; its reports fill the log, the status bar and the grid.
#include "core/app/MdmUn.h"
#include "core/app/SqlHistory.h"
#include "gui/app/UserMessages.h"
#include "core/base/VantryError.h"
#include "gui/components/DBGridEh1.h"
#include "gui/workspace/ResultPanel.h"
#include "gui/workspace/SqlLogFrameUn.h"
#include "gui/workspace/SqlFrmSettings.h"
#include "core/workspace/SqlRun.h"
#include "core/workspace/TableFilter.h"
#include "gui/workspace/SqlUn.h"
#include "gui/workspace/TSqlSelectDlgUn.h"
#include "gui/ui/fuAQBuilder.h"

#include <Qsci/qsciscintilla.h>

#include <QAction>
#include <QApplication>
#include <QKeyEvent>
#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QSpinBox>
#include <QTableView>
#include <QToolButton>

void TSqlFrm::connectRunService()
{
    connect(m_run, &RunService::statusChanged, this, &TSqlFrm::setStatus);
    connect(m_run, &RunService::statementStarted, LogPanel, &TSqlLogFrame::SetSQL);
    connect(m_run, &RunService::messageLogged, LogPanel, &TSqlLogFrame::SetMessage);
    connect(m_run, &RunService::busyChanged, this, &TSqlFrm::runBusyChanged);
    connect(m_run, &RunService::resultOpened, this,
            [this](std::shared_ptr<ResultTable> table, const ResultSource &source, bool moreRemain) {
                Panel3->showResult(std::move(table), source, moreRemain);
                Panel3->grid()->setFocus();
            });
    connect(m_run, &RunService::rowsFetched, Panel3, &ResultPanel::appendRows);
    connect(m_run, &RunService::fetchStopped, this, [this](const QString &reason) {
        Panel3->fetchingStopped();
        LogPanel->SetSQL(Panel3->query().source().table.isEmpty() ? QStringLiteral("(fetch)") : Panel3->query().source().table);
        LogPanel->SetMessage(reason, 2);
    });
    connect(m_run, &RunService::tablesListed, this, [this](const QStringList &names) {
        setStatus(QStringLiteral("OK."));
        setTableNames(names);
    });
    // The table list is not a statement of the log: its failures go to the error box.
    connect(m_run, &RunService::tablesFailed, this,
            [this](const QString &message) { UserMessages::error(this, message); });
    Panel3->setRunService(m_run, [this] { return runOptions(); });

    // Esc anywhere in the tab cancels what runs; while nothing runs the key is left to the widgets.
    auto *escape = new QAction(this);
    escape->setObjectName(QStringLiteral("acCancelRun"));
    escape->setShortcut(QKeySequence(Qt::Key_Escape));
    escape->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    escape->setEnabled(false);
    addAction(escape);
    connect(escape, &QAction::triggered, this, &TSqlFrm::tbCancelRunClick);
    se->installEventFilter(this);
}

bool TSqlFrm::eventFilter(QObject *watched, QEvent *event)
{
    // The editor claims Esc for itself; while a run is under way the key belongs to Cancel.
    if (watched == se && event->type() == QEvent::ShortcutOverride && isRunning()
        && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape) {
        event->ignore();
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

RunService::Options TSqlFrm::runOptions()
{
    RunService::Options options;
    options.batchRows = seRecords->value();
    // On the ADO path the record limit is a maximum record count; elsewhere it is the size of
    // each batch fetched on demand.
    options.capAtFirstBatch = accessPathFor(GetConnection().ConnectionType) == AccessPath::Ado;
    options.memoryBudget = m_services.settings ? SqlFrmSettings::resultMemoryBudget(*m_services.settings) : 0;
    return options;
}

void TSqlFrm::runBusyChanged(bool busy)
{
    for (const char *name : {"tbRunSQL", "tbRunScript"})
        button(name)->setEnabled(!busy);
    button("tbCancelRun")->setEnabled(busy);
    findChild<QAction *>(QStringLiteral("acCancelRun"))->setEnabled(busy);
    lbTablesList->setEnabled(!busy);
}

void TSqlFrm::tbCancelRunClick()
{
    m_run->cancel();
}

void TSqlFrm::logFailure(const QString &statement, const QString &message)
{
    // A failure before the statement reached the log (finding the table) still gets a row of its
    // own, so every error is in the log.
    LogPanel->SetSQL(statement);
    LogPanel->SetMessage(message, 2);
    setStatus(QStringLiteral("Error"));
}

void TSqlFrm::logGridFailure(const QString &message)
{
    const QString table = Panel3->query().source().table;
    LogPanel->SetSQL(table.isEmpty() ? QStringLiteral("(result grid)") : QStringLiteral("(result grid) ") + table);
    LogPanel->SetMessage(message, 2);
    LogPanel->grid()->scrollToBottom();
    setStatus(briefStatus(message));
}

QString TSqlFrm::briefStatus(const QString &message)
{
    // The status bar's first panel shows about this many characters.
    constexpr int Room = 90;
    QString line = message.section(QLatin1Char('\n'), 0, 0).trimmed();
    if (line.size() > Room)
        line = line.left(Room - 3) + QStringLiteral("...");
    return QStringLiteral("Error: ") + line;
}

bool TSqlFrm::onOraclePath() const
{
    return accessPathFor(m_record.ConnectionType) == AccessPath::Oracle;
}

QString TSqlFrm::selectedTable() const
{
    const QListWidgetItem *item = lbTablesList->currentItem();
    if (!item)
        throw VantryError(QStringLiteral("No table is selected in the table list."));
    return item->text();
}

bool TSqlFrm::hasTextToRun()
{
    if (!se->text().trimmed().isEmpty())
        return true;
    UserMessages::information(this, QStringLiteral("Nothing to execute!"));
    return false;
}

void TSqlFrm::whenEditsResolved(std::function<void()> proceed)
{
    Panel3->resolvePendingEdits(std::move(proceed));
}

bool TSqlFrm::hasPendingEdits() const
{
    return Panel3->hasPendingEdits();
}

void TSqlFrm::ToolButton7Click()
{
    if (isRunning() || !hasTextToRun())
        return;
    Panel3->resolvePendingEdits([this] {
        if (button("cbAutoClearLog")->isChecked())
            LogPanel->Clear();
        Panel3->closeResult();
        if (se->text().size() < 4) {
            try {
                se->setText(SqlRun::shortTextQuery(selectedTable()));
            } catch (const VantryError &e) {
                logFailure(SqlRun::statementText(se->selectedText(), se->text()), e.message());
                return;
            }
        }
        const QString statement = SqlRun::statementText(se->selectedText(), se->text());
        if (!statement.isEmpty())
            m_run->runStatement(GetConnection(), statement, runOptions());
    });
}

void TSqlFrm::tbRunScriptClick()
{
    if (isRunning() || !hasTextToRun())
        return;
    const QString delimiter = peSeparator->currentText();
    if (delimiter.isEmpty()) {
        UserMessages::information(this, QStringLiteral("Select Sql Statements Delimiter first!"));
        return;
    }
    if (button("cbAutoClearLog")->isChecked())
        LogPanel->Clear();
    // Chunks run as commands, never as queries; a failing chunk does not stop the script.
    m_run->runScript(GetConnection(), SqlRun::scriptChunks(se->text(), delimiter));
}

void TSqlFrm::lbTablesListClick()
{
    if (isRunning())
        return;
    const QListWidgetItem *item = lbTablesList->currentItem();
    const QString table = item ? item->text() : QString();
    if (!item) {
        logFailure(QStringLiteral("select * from "), QStringLiteral("No table is selected in the table list."));
        return;
    }
    Panel3->resolvePendingEdits([this, table] {
        GetConnection();
        Panel3->closeResult();
        // The editor and the history are left alone: a table click only shows the rows.
        const QString statement = onOraclePath() ? SqlRun::oracleTableQuery(table)
                                                 : QStringLiteral("select * from ") + table;
        m_run->openTable(GetConnection(), statement, runOptions());
    });
}

void TSqlFrm::JvIncSearchChange()
{
    QStringList all;
    for (int i = 0; i < lb->count(); ++i)
        all << lb->item(i)->text();
    lbTablesList->clear();
    lbTablesList->addItems(TableFilter::filter(all, JvIncSearch->text()));
}

void TSqlFrm::Selectfromtable1Click()
{
    const QString table = selectedTable();
    se->setText(onOraclePath() ? SqlRun::oracleTableQuery(table) : SqlRun::shortTextQuery(table));
}

void TSqlFrm::Deletefromtable1Click()
{
    se->setText(QStringLiteral("delete from ") + selectedTable());
}

void TSqlFrm::runcatetable1Click()
{
    se->setText(QStringLiteral("truncate table ") + selectedTable());
}

void TSqlFrm::SBPreviosClick()
{
    SqlHistory &history = m_services.catalogue->history();
    history.prior();
    if (const HistoryRow *row = history.current())
        se->setText(row->executedSql);
}

void TSqlFrm::SBNextClick()
{
    SqlHistory &history = m_services.catalogue->history();
    history.next();
    if (const HistoryRow *row = history.current())
        se->setText(row->executedSql);
}

void TSqlFrm::sbSqlSelectClick()
{
    SqlHistory &history = m_services.catalogue->history();
    auto *picker = new TSqlSelectFrm(history, this);
    picker->setPlacementStore(m_services.settings);
    if (picker->exec() == QDialog::Accepted) {
        const HistoryRow *row = history.current();
        se->setText(row ? row->executedSql : QString());
    }
}

void TSqlFrm::tbSqlBuilderClick()
{
    // The builder opens on the current connection and the editor's text; OK puts its text back.
    UserMessages::guarded(this, [this] {
        TfmAQBuilder::Services services;
        services.tools = m_services.tools;
        services.runOptions = runOptions();
        const QString text = TfmAQBuilder::Execute(GetConnection(), se->text(), services, this);
        if (text != se->text())
            se->setText(text);
    });
}

