#pragma once
#include <QString>
#include <QStringList>
#include <vector>

class ExportSource;
class QPrinter;

// The texts of a grid as a printout shows them, copied from the rows once so that a preview can
// render again (after a printer setup) without the result it came from.
struct PrintTable
{
    QStringList columns;
    std::vector<QStringList> rows;

    static PrintTable from(const ExportSource &source);
};

// Prints a grid: the title on top of every page, the column titles repeated under it, rows
// paginated down the pages, and a grid too wide for one page split into column slices, each
// slice printed on pages of its own. "Page n of m" sits at the foot of every page.
namespace GridPrinter {

// Renders onto printer (which must be set up); returns the number of pages.
int print(QPrinter *printer, const PrintTable &table, const QString &title);

} // namespace GridPrinter
