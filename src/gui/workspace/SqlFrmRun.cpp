// Running the editor's text: one statement (Run SQL), a script cut at delimiter lines (Run as
// Script), the table list's click, and the history steps. Everything runs on the UI thread; after
// "Executing" pending events run so the status shows before a long statement blocks the window.
#include "app/MdmUn.h"
#include "app/SqlHistory.h"
#include "app/UserMessages.h"
#include "app/VantryError.h"
#include "components/BusyCursor.h"
#include "workspace/ResultPanel.h"
#include "workspace/SqlLogFrameUn.h"
#include "workspace/SqlRun.h"
#include "workspace/TableFilter.h"
#include "workspace/SqlUn.h"
#include "workspace/TSqlSelectDlgUn.h"

#include <Qsci/qsciscintilla.h>

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QSpinBox>
#include <QToolButton>

template <typename Work> void TSqlFrm::logged(const QString &statement, Work work)
{
    setStatus(QStringLiteral("Executing"));
    QApplication::processEvents();
    LogPanel->SetSQL(statement);
    try {
        work();
        setStatus(QStringLiteral("OK."));
        LogPanel->SetMessage(QStringLiteral("OK."), 0);
    } catch (const VantryError &e) {
        LogPanel->SetMessage(e.message(), 2);
        setStatus(QStringLiteral("Error"));
    }
}

void TSqlFrm::logFailure(const QString &statement, const QString &message)
{
    // A failure before the statement reached the log (connecting, finding the table) still gets
    // a row of its own, so every error is in the log.
    LogPanel->SetSQL(statement);
    LogPanel->SetMessage(message, 2);
    setStatus(QStringLiteral("Error"));
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

void TSqlFrm::runQuery(const QString &statement)
{
    // The Oracle path fetches on demand and applies no record limit.
    const qint64 limit = onOraclePath() ? 0 : seRecords->value();
    Panel3->openQuery(m_connection.database(), statement, limit);
    Panel3->setFocus();
}

bool TSqlFrm::hasTextToRun()
{
    if (!se->text().trimmed().isEmpty())
        return true;
    UserMessages::information(this, QStringLiteral("Nothing to execute!"));
    return false;
}

void TSqlFrm::ToolButton7Click()
{
    if (!hasTextToRun())
        return;
    if (button("cbAutoClearLog")->isChecked())
        LogPanel->Clear();
    BusyCursor busy;
    Panel3->closeResult();
    try {
        connectCurrent();  // every run reconnects
        if (se->text().size() < 4)
            se->setText(SqlRun::shortTextQuery(selectedTable()));
    } catch (const VantryError &e) {
        logFailure(SqlRun::statementText(se->selectedText(), se->text()), e.message());
        return;
    }
    const QString statement = SqlRun::statementText(se->selectedText(), se->text());
    if (statement.isEmpty())
        return;
    logged(statement, [&] {
        if (SqlRun::isQuery(statement))
            runQuery(statement);
        else
            SqlRun::executeCommand(m_connection.database(), statement);
        SqlHistory &history = m_services.catalogue->history();
        if (SqlRun::shouldRecord(history, statement))
            history.append(statement);
    });
}

void TSqlFrm::tbRunScriptClick()
{
    if (!hasTextToRun())
        return;
    const QString delimiter = peSeparator->currentText();
    if (delimiter.isEmpty()) {
        UserMessages::information(this, QStringLiteral("Select Sql Statements Delimiter first!"));
        return;
    }
    if (button("cbAutoClearLog")->isChecked())
        LogPanel->Clear();
    BusyCursor busy;
    try {
        connectCurrent();
    } catch (const VantryError &e) {
        logFailure(se->text(), e.message());
        return;
    }
    // Chunks run as commands, never as queries; a failing chunk does not stop the script.
    for (const QString &chunk : SqlRun::scriptChunks(se->text(), delimiter))
        logged(chunk, [&] { SqlRun::executeCommand(m_connection.database(), chunk); });
}

void TSqlFrm::lbTablesListClick()
{
    const QListWidgetItem *item = lbTablesList->currentItem();
    const QString table = item ? item->text() : QString();
    QString statement = QStringLiteral("select * from ") + table;
    BusyCursor busy;
    try {
        selectedTable();  // nothing chosen: the lookup's error goes to the log
        connectCurrent();
        Panel3->closeResult();
        if (onOraclePath())
            statement = SqlRun::oracleTableQuery(table);
    } catch (const VantryError &e) {
        logFailure(statement, e.message());
        return;
    }
    // The editor and the history are left alone: a table click only shows the rows.
    logged(statement, [&] { runQuery(statement); });
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
    if (picker->exec() == QDialog::Accepted) {
        const HistoryRow *row = history.current();
        se->setText(row ? row->executedSql : QString());
    }
}

void TSqlFrm::tbSqlBuilderClick()
{
    // The visual query builder is not part of this build yet.
}

