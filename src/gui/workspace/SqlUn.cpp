#include "workspace/SqlUn.h"

#include "app/StatusMessage.h"
#include "interchange/DMToolsUn.h"
#include "workspace/ConnectionGridModel.h"
#include "workspace/ConnectionList.h"
#include "workspace/SqlFrmSettings.h"
#include "workspace/SqlLogFrameUn.h"

#include <Qsci/qsciscintilla.h>

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QSpinBox>
#include <QSplitter>
#include <QTableView>
#include <QToolBar>
#include <QToolButton>

void buildSqlFrm(TSqlFrm *frame);

TSqlFrm::TSqlFrm(const AppServices &services, QObject *mainWindow, QWidget *parent)
    : QWidget(parent), m_services(services), m_mainWindow(mainWindow)
{
    setObjectName(QStringLiteral("SqlFrm"));
    m_connections = new ConnectionList(services.catalogue, this);
    m_connectionModel = new ConnectionGridModel(m_connections, this);
    buildSqlFrm(this);
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
        toggle->setVisible(false);
        toggle->setChecked(true);
        ConnectionsGrid->setVisible(false);
    }
    tbShowSqlClick();
    tbShowConnectionsClick();
    tbShowLogClick();
    cbStyleChange();
}

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
    if (button("tbShowLog")->isChecked()) {
        QApplication::processEvents();
        LogPanel->setVisible(true);
        QList<int> sizes = Splitter1->sizes();
        if (sizes.size() == 3 && sizes[2] < 150) {
            sizes[1] = qMax(0, sizes[1] - (150 - sizes[2]));
            sizes[2] = 150;
            Splitter1->setSizes(sizes);
        }
    } else {
        LogPanel->setVisible(false);
    }
}

void TSqlFrm::tbShowSystemTablesClick()
{
    // The table list arrives with the live connections; until then there is nothing to reload.
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
    if (m_services.tools)
        m_services.tools->setApplicationStyle(m_cbStyle->currentIndex());
    saveSettings();
}

void TSqlFrm::ToolButton7Click() {}
void TSqlFrm::tbRunScriptClick() {}
void TSqlFrm::SBPreviosClick() {}
void TSqlFrm::SBNextClick() {}
void TSqlFrm::sbSqlSelectClick() {}
void TSqlFrm::tbSqlBuilderClick() {}
void TSqlFrm::ConnectionPropertiesItemClick() {}
void TSqlFrm::AddConnectionItemClick() {}

void TSqlFrm::DeleteConnectionItemClick()
{
    m_connections->deleteCurrent();
}

void TSqlFrm::RefreshConnectionItmClick()
{
    m_connections->reopen();
}
