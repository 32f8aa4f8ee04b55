// The result panel's export and print commands: each hands the rows the grid shows to the tools
// service, which reads them through the core's export source, never through the grid widget.

#include "ResultPanel.h"

#include "components/DBGridEh1.h"
#include "components/ResultGridModel.h"
#include "interchange/DMToolsUn.h"
#include "workspace/ResultExportSource.h"

namespace {

const QString kGridTitle = QStringLiteral("Sql Result");

} // namespace

void ResultPanel::MenuItem1Click()
{
    if (m_tools && m_query.isOpen())
        m_tools->ExportGrid(this, std::make_shared<ResultExportSource>(*m_query.table(), m_grid->gridModel()->view()));
}

void ResultPanel::tbExcelExportClick()
{
    if (m_tools && m_query.isOpen())
        m_tools->ExportGrid(this, std::make_shared<ResultExportSource>(*m_query.table(), m_grid->gridModel()->view()),
                            QStringLiteral("Exporting to MS Excel..."), QStringLiteral("Vantry.xls"));
}

void ResultPanel::Print1Click()
{
    MenuItem4Click();  // "Print" opens the preview as well; the user prints from there
}

void ResultPanel::MenuItem4Click()
{
    if (m_tools && m_query.isOpen())
        m_tools->PrintPreviewGrid(window(), std::make_shared<ResultExportSource>(*m_query.table(), m_grid->gridModel()->view()),
                                  kGridTitle);
}
