#include "gui/workspace/SqlUn.h"

#include "core/app/MdmUn.h"
#include "core/app/StatusMessage.h"
#include "gui/components/BusyCursor.h"
#include "gui/components/DBGridEh1.h"
#include "gui/components/GridTitleColor.h"
#include "gui/connections/ConnectionEditor.h"
#include "core/connections/impDMun.h"
#include "gui/interchange/DMToolsUn.h"
#include "gui/workspace/ConnectionGridModel.h"
#include "core/workspace/ConnectionList.h"
#include "gui/workspace/ResultPanel.h"
#include "gui/workspace/SqlFrmSettings.h"
#include "gui/workspace/SqlLogFrameUn.h"

#include <Qsci/qsciscintilla.h>

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QListWidget>
#include <QSpinBox>
#include <QSplitter>
#include <QTabWidget>
#include <QTableView>
#include <QToolBar>
#include <QToolButton>

void buildSqlFrm(TSqlFrm *frame);

TSqlFrm::TSqlFrm(const AppServices &services, QObject *mainWindow, QWidget *parent)
    : QWidget(parent), m_services(services), m_mainWindow(mainWindow)
{
    setObjectName(QStringLiteral("SqlFrm"));
    m_connections = new ConnectionList(services.catalogue, this);
    connect(m_connections, &ConnectionList::reset, this, &TSqlFrm::followCaptionConnection);
    connect(m_connections, &ConnectionList::rowChanged, this, &TSqlFrm::followCaptionConnection);
    m_connectionModel = new ConnectionGridModel(m_connections, this);
    m_run = new RunService(this);
    m_run->setHistory(services.catalogue ? &services.catalogue->history() : nullptr);
    buildSqlFrm(this);
    connectRunService();
}

TSqlFrm::~TSqlFrm() = default;

QToolButton *TSqlFrm::button(const char *name) const
{
    return findChild<QToolButton *>(QString::fromLatin1(name));
}

void TSqlFrm::setStatus(const QString &text)
{
    postStatusMessage(m_mainWindow, text);
}

void TSqlFrm::restoreSettings()
{
    if (m_services.settings)
        SqlFrmSettings::restore(this, *m_services.settings);
    fsRestorePlacement();
}

void TSqlFrm::saveSettings()
{
    if (m_services.settings)
        SqlFrmSettings::save(this, *m_services.settings);
}

void TSqlFrm::fsRestorePlacement()
{
    if (m_services.hideConnectionGrid && m_cbStyle->isVisibleTo(this)) {
        QToolButton *toggle = button("tbShowConnections");
        // A toolbar shows its widgets through actions: hide the action, not the button.
        for (QAction *action : tb1->actions()) {
            if (tb1->widgetForAction(action) == toggle)
                action->setVisible(false);
        }
        toggle->setChecked(true);
        ConnectionsGrid->setVisible(false);
    }
    tbShowSqlClick();
    tbShowConnectionsClick();
    tbShowLogClick();
    Panel3->tbReadOnlyClick();
    Panel3->tbShowGrouppingClick();
    cbStyleChange();
}

// ---- panels -------------------------------------------------------------------------------------

void TSqlFrm::tbShowSqlClick()
{
    const bool show = button("tbShowSql")->isChecked();
    tb2->setVisible(show);
    peSeparator->setVisible(show);
    seRecords->setVisible(show);
    seRecords->setFixedHeight(22);
    SqlPanel->setVisible(show);
}

void TSqlFrm::tbShowConnectionsClick()
{
    Panel1->setVisible(button("tbShowConnections")->isChecked());
}

void TSqlFrm::tbShowLogClick()
{
    if (!button("tbShowLog")->isChecked()) {
        LogPanel->setVisible(false);
        return;
    }
    LogPanel->setVisible(true);
    QList<int> sizes = Splitter1->sizes();
    if (sizes.size() == 3 && sizes[2] < 150) {
        sizes[1] = qMax(0, sizes[1] - (150 - sizes[2]));
        sizes[2] = 150;
        Splitter1->setSizes(sizes);
    }
}

void TSqlFrm::tbShowSystemTablesClick()
{
    cbConListClick();
}

void TSqlFrm::toggleShowSql()
{
    button("tbShowSql")->toggle();
    tbShowSqlClick();
}

void TSqlFrm::toggleShowConnections()
{
    button("tbShowConnections")->toggle();
    tbShowConnectionsClick();
}

void TSqlFrm::toggleShowLog()
{
    button("tbShowLog")->toggle();
    tbShowLogClick();
}

void TSqlFrm::toggleShowSystemTables()
{
    button("tbShowSystemTables")->toggle();
    tbShowSystemTablesClick();
}

void TSqlFrm::cbStyleChange()
{
    if (m_services.tools) {
        m_services.tools->setApplicationStyle(m_cbStyle->currentIndex());
        // Four of the styles also colour the grids' column titles.
        const QColor titles = m_services.tools->gridTitleColor();
        applyGridTitleColor(Panel3->grid(), titles);
        applyGridTitleColor(LogPanel->grid(), titles);
    }
    saveSettings();
}

// ---- the connection panel -----------------------------------------------------------------------

TReaderConnection TSqlFrm::GetConnection()
{
    if (!m_fixedRecord) {
        if (const ConnectionRow *row = m_connections->current())
            m_record = WorkspaceConnection::recordFromStored(row->connectionParameters);
    }
    return m_record;
}

void TSqlFrm::setFixedConnection(const TReaderConnection &record)
{
    m_record = record;
    m_fixedRecord = true;
}

void TSqlFrm::cbConListClick()
{
    lbTablesList->clear();
    lb->clear();
    const bool systemTables = button("tbShowSystemTables")->isChecked();
    const TReaderConnection record = GetConnection();
    // The names arrive through tablesListed once the worker has read them.
    m_run->listTables(record, systemTables);
    // Only the page's caption changes: the paths stay as they are until the next run.
    const ConnectionRow *row = m_fixedRecord ? nullptr : m_connections->current();
    m_captionConnectionId = row ? row->connectionId : 0;
    setPageCaption(QStringLiteral("SQL Editor [") + record.Description + QLatin1Char(']'));
}

void TSqlFrm::setPageCaption(const QString &caption)
{
    for (QWidget *w = parentWidget(); w; w = w->parentWidget()) {
        if (auto *pager = qobject_cast<QTabWidget *>(w)) {
            const int index = pager->indexOf(this);
            if (index >= 0)
                pager->setTabText(index, caption);
            break;
        }
    }
}

void TSqlFrm::followCaptionConnection()
{
    // The caption names the connection last clicked; it follows a rename, and a deleted
    // connection gives the page its first caption back.
    if (m_captionConnectionId == 0)
        return;
    for (int i = 0; i < m_connections->count(); ++i) {
        const ConnectionRow &row = m_connections->row(i);
        if (row.connectionId == m_captionConnectionId) {
            const TReaderConnection record = WorkspaceConnection::recordFromStored(row.connectionParameters);
            setPageCaption(QStringLiteral("SQL Editor [") + record.Description + QLatin1Char(']'));
            return;
        }
    }
    m_captionConnectionId = 0;
    setPageCaption(QStringLiteral("Sql Editior"));
}

void TSqlFrm::setTableNames(const QStringList &names)
{
    lb->clear();
    lb->addItems(names);
    JvIncSearchChange();
}

void TSqlFrm::ConnectionPropertiesItemClick()
{
    m_connections->editCurrent();
    runConnectionDialog();
}

void TSqlFrm::AddConnectionItemClick()
{
    m_connections->insertRow();
    runConnectionDialog();
}

void TSqlFrm::runConnectionDialog()
{
    ConnectionEditor::run(this, m_services, *m_connections, m_typeLocked);
}

void TSqlFrm::DeleteConnectionItemClick()
{
    // Deleting a connection asks nothing.
    m_connections->deleteCurrent();
}

void TSqlFrm::RefreshConnectionItmClick()
{
    m_connections->reopen();
}

void TSqlFrm::N7Click()
{
    Panel3->closeResult();
    lb->clear();
    lbTablesList->clear();
    // Only the universal and ADO paths close here; an Oracle session is deliberately left open.
    m_run->closeConnection();
}
