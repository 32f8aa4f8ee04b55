// The query builder's "Data" page: the query's rows in the workspace's grid, run through the
// window's own run service on a thread of its own, with the workspace's row limit and Cancel.
#include "gui/ui/fuAQBuilder.h"

#include "gui/app/UserMessages.h"
#include "gui/components/DBGridEh1.h"
#include "gui/components/GridTitleColor.h"
#include "gui/components/QueryDiagram.h"
#include "gui/interchange/DMToolsUn.h"
#include "gui/ui/TextEditorFrameUn.h"
#include "gui/workspace/ResultPanel.h"

#include <QAction>
#include <QLabel>
#include <QMenu>
#include <QTabWidget>
#include <QToolBar>
#include <QVBoxLayout>

void TfmAQBuilder::buildDataPage(QWidget *page)
{
    m_data = new ResultPanel(page);
    m_data->setObjectName(QStringLiteral("pnlData"));
    m_data->setTools(m_services.tools);
    auto *toolbar = m_data->findChild<QToolBar *>(QStringLiteral("tbGrid"));
    toolbar->setObjectName(QStringLiteral("GridToolBar"));
    m_data->findChild<QMenu *>(QStringLiteral("PMGrid"))->setObjectName(QStringLiteral("PM"));
    // Refresh (F5, button and menu) reopens the preview on the engine's current text rather than
    // re-running the statement the grid last showed.
    auto *refresh = m_data->findChild<QAction *>(QStringLiteral("tbRefresh"));
    disconnect(refresh, &QAction::triggered, m_data, nullptr);
    connect(refresh, &QAction::triggered, this, &TfmAQBuilder::tbRefreshClick);

    // Cancel stops the preview's statement or fetch; it is usable while the service works.
    auto *cancel = new QAction(QStringLiteral("Cancel"), toolbar);
    cancel->setObjectName(QStringLiteral("tbCancelPreview"));
    cancel->setToolTip(QStringLiteral("Cancel the running query"));
    cancel->setEnabled(false);
    toolbar->insertAction(toolbar->actions().value(0), cancel);
    toolbar->widgetForAction(cancel)->setObjectName(QStringLiteral("tbCancelPreview"));
    connect(cancel, &QAction::triggered, this, &TfmAQBuilder::tbCancelPreviewClick);

    lbPreviewState = new QLabel(page);
    lbPreviewState->setObjectName(QStringLiteral("lbPreviewState"));
    lbPreviewState->setContentsMargins(6, 2, 6, 2);
    auto *layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_data, 1);
    layout->addWidget(lbPreviewState);

    connect(PC, &QTabWidget::currentChanged, this, [this](int index) {
        if (PC->widget(index) == tsData)
            tsDataShow();
    });
}

void TfmAQBuilder::connectPreview()
{
    m_data->setRunService(m_run, [this] { return m_services.runOptions; });
    connect(m_run, &RunService::resultOpened, this,
            [this](std::shared_ptr<ResultTable> table, const ResultSource &source, bool moreRemain) {
                m_data->showResult(std::move(table), source, moreRemain);
                m_dataOpen = true;
            });
    connect(m_run, &RunService::rowsFetched, m_data, &ResultPanel::appendRows);
    connect(m_run, &RunService::fetchStopped, this, [this](const QString &reason) {
        m_data->fetchingStopped();
        lbPreviewState->setText(reason);
    });
    connect(m_run, &RunService::statusChanged, this, [this](const QString &status) {
        lbPreviewState->setText(m_statusOverride.isEmpty() ? status : m_statusOverride);
        m_statusOverride.clear();
    });
    // A statement that fails reports on the page and in the error box, as a dialog's errors do;
    // one the user cancelled only says so on the page. Every run logs one outcome, and a cancelled
    // run's may come after the next run started.
    connect(m_run, &RunService::messageLogged, this, [this](const QString &message, int level) {
        if (m_cancelledOutcomes > 0) {
            --m_cancelledOutcomes;
            if (level >= 2) // the status that follows the outcome says why instead of "Error"
                m_statusOverride = QStringLiteral("Cancelled by the user");
            return;
        }
        if (level < 2)
            return;
        lbPreviewState->setText(QStringLiteral("Error"));
        UserMessages::error(this, message);
    });
    connect(m_data, &ResultPanel::commandFailed, this, [this](const QString &message) {
        UserMessages::error(this, message);
    });
    connect(m_run, &RunService::busyChanged, this, [this](bool busy) {
        findChild<QAction *>(QStringLiteral("tbCancelPreview"))->setEnabled(busy);
        if (!busy)
            m_cancelledOutcomes = 0; // every run has ended: no outcome is still to come
    });
}

void TfmAQBuilder::FormShow()
{
    // The theme's style sheet is the application's and reaches this window by itself; the grid's
    // title colour is set per grid.
    if (m_services.tools)
        applyGridTitleColor(m_data->grid(), m_services.tools->gridTitleColor());
}

void TfmAQBuilder::tsDataShow()
{
    m_data->resolvePendingEdits([this] {
        closePreview();
        openPreview();
    });
}

void TfmAQBuilder::openPreview()
{
    // Text typed into the pane counts even when the pane was never left: switching pages by
    // the keyboard or from code need not take the focus from it first.
    if (m_textModified) {
        if (!giveTextToEngine())
            return;
    } else if (diagramHasFocus()) {
        acSQLBuilderPlainTextSQLUpdated(m_engine.sql());
    }
    if (m_engine.isSleeping()) {
        // Two blanks before "Non-Select": the message has always read so.
        UserMessages::error(this, QStringLiteral("Cannot execute  Non-Select statement."));
        return;
    }
    const QString statement = m_engine.sql().trimmed();
    if (statement.isEmpty() || m_record.ConnectionType == dsNone)
        return;
    lbPreviewState->clear();
    m_run->openTable(m_record, statement, m_services.runOptions);
}

void TfmAQBuilder::closePreview()
{
    if (m_run->isBusy())
        tbCancelPreviewClick();
    m_data->closeResult();
    m_dataOpen = false;
}

void TfmAQBuilder::tbRefreshClick()
{
    // An empty preview that has read all its rows has nothing to refresh.
    const bool emptyAndDone = m_dataOpen && m_data->query().table() && m_data->query().table()->rowCount() == 0
                              && !m_data->query().moreRemain();
    if (!emptyAndDone)
        tsDataShow();
}

void TfmAQBuilder::tbAddClick() { m_data->Add1Click(); }
void TfmAQBuilder::tbPostClick() { m_data->tbPostClick(); }
void TfmAQBuilder::tbDeleteClick() { m_data->Delete1Click(); }
void TfmAQBuilder::tbCloneClick() { m_data->tbCloneClick(); }
void TfmAQBuilder::tbFindClick() { m_data->Find1Click(); }
void TfmAQBuilder::tbPrintClick() { m_data->Print1Click(); }
void TfmAQBuilder::tbPreviewClick() { m_data->MenuItem4Click(); }
void TfmAQBuilder::tbOWClick() { m_data->tbOptimizeWidthClick(); }
void TfmAQBuilder::tbCancelPreviewClick()
{
    if (!m_run->isBusy())
        return;
    m_cancelledOutcomes = 1; // one run at a time: the one under way
    m_run->cancel();
}
