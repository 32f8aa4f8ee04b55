// The result panel's export and print commands: each hands the rows the grid shows to the tools
// service, which reads them through the core's export source, never through the grid widget.

#include "gui/workspace/ResultPanel.h"

#include "gui/components/DBGridEh1.h"
#include "gui/components/ResultGridModel.h"
#include "gui/interchange/DMToolsUn.h"
#include "core/workspace/ResultExportSource.h"

namespace {

const QString kGridTitle = QStringLiteral("Sql Result");

} // namespace

void ResultPanel::withAllRows(std::function<void()> then)
{
    if (!m_tools || !m_query.isOpen() || refuseWhileSorting())
        return;
    // An export or printout covers the whole result: the rows not fetched yet come first.
    if (m_query.moreRemain()) {
        m_afterFetchAll = std::move(then);
        fetchAll();
        return;
    }
    then();
}

std::shared_ptr<ExportSource> ResultPanel::exportSource()
{
    return std::make_shared<ResultExportSource>(*m_query.table(), m_grid->gridModel()->view());
}

void ResultPanel::MenuItem1Click()
{
    withAllRows([this] { m_tools->ExportGrid(this, exportSource()); });
}

void ResultPanel::tbExcelExportClick()
{
    withAllRows([this] {
        m_tools->ExportGrid(this, exportSource(), QStringLiteral("Exporting to MS Excel..."), QStringLiteral("Vantry.xls"));
    });
}

void ResultPanel::Print1Click()
{
    MenuItem4Click();  // "Print" opens the preview as well; the user prints from there
}

void ResultPanel::MenuItem4Click()
{
    withAllRows([this] { m_tools->PrintPreviewGrid(window(), exportSource(), kGridTitle); });
}
