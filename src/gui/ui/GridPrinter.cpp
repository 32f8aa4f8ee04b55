#include "gui/ui/GridPrinter.h"

#include "core/interchange/ExportSource.h"

#include <QFontMetrics>
#include <QPainter>
#include <QPrinter>

PrintTable PrintTable::from(const ExportSource &source)
{
    PrintTable table;
    const int cols = source.columnCount();
    for (int col = 0; col < cols; ++col)
        table.columns << source.columnName(col);
    std::string scratch;
    table.rows.reserve(size_t(source.rowCount()));
    for (qint64 row = 0; row < source.rowCount(); ++row) {
        QStringList cells;
        cells.reserve(cols);
        for (int col = 0; col < cols; ++col) {
            if (source.isNull(row, col)) {
                cells << QString();
                continue;
            }
            const std::string_view text = source.text(row, col, scratch);
            cells << QString::fromUtf8(text.data(), qsizetype(text.size()));
        }
        table.rows.push_back(cells);
    }
    return table;
}

namespace GridPrinter {

namespace {

constexpr int SampledRows = 500;  // rows measured for the column widths

struct Layout
{
    QRect page;
    QFont cellFont, titleFont;
    int rowHeight = 0, titleHeight = 0, footHeight = 0, padding = 0;
    std::vector<int> widths;
    std::vector<std::pair<int, int>> slices;  // [first, last) columns of each horizontal slice
    int rowsPerPage = 1;
};

Layout measure(QPainter &painter, QPrinter *printer, const PrintTable &table)
{
    Layout l;
    l.page = printer->pageLayout().paintRectPixels(printer->resolution());
    l.page.moveTo(0, 0);
    l.cellFont = QFont(QStringLiteral("DejaVu Sans"), 8);
    l.titleFont = QFont(QStringLiteral("DejaVu Sans"), 12, QFont::Bold);
    painter.setFont(l.cellFont);
    const QFontMetrics cell(l.cellFont, printer);
    const QFontMetrics title(l.titleFont, printer);
    l.padding = cell.averageCharWidth() / 2 + 1;
    l.rowHeight = cell.height() + l.padding;
    l.titleHeight = title.height() + l.rowHeight / 2;
    l.footHeight = l.rowHeight;
    const int maxWidth = std::max(l.page.width() * 2 / 5, 1);
    // Measured with the painter's own metrics, which are the ones the drawing elides by.
    QFont bold = l.cellFont;
    bold.setBold(true);
    painter.setFont(bold);
    std::vector<int> widths;
    for (int col = 0; col < table.columns.size(); ++col)
        widths.push_back(painter.fontMetrics().horizontalAdvance(table.columns[col]));
    painter.setFont(l.cellFont);
    for (int col = 0; col < table.columns.size(); ++col) {
        int w = widths[size_t(col)];
        for (size_t row = 0; row < table.rows.size() && row < size_t(SampledRows); ++row)
            w = std::max(w, painter.fontMetrics().horizontalAdvance(table.rows[row].value(col)));
        l.widths.push_back(std::min(w + 3 * l.padding, maxWidth));
    }
    int first = 0, used = 0;
    for (int col = 0; col < int(l.widths.size()); ++col) {
        if (col > first && used + l.widths[size_t(col)] > l.page.width()) {
            l.slices.emplace_back(first, col);
            first = col;
            used = 0;
        }
        used += l.widths[size_t(col)];
    }
    l.slices.emplace_back(first, int(l.widths.size()));
    l.rowsPerPage = std::max(1, (l.page.height() - l.titleHeight - l.footHeight) / l.rowHeight - 1);
    return l;
}

void drawRow(QPainter &painter, const Layout &l, const std::pair<int, int> &slice, int y, const QStringList &cells)
{
    int x = 0;
    for (int col = slice.first; col < slice.second; ++col) {
        const int w = l.widths[size_t(col)];
        const QRect box(x, y, w, l.rowHeight);
        painter.drawRect(box);
        const QRect inner = box.adjusted(l.padding, 0, -l.padding, 0);
        const QString text = painter.fontMetrics().elidedText(cells.value(col), Qt::ElideRight, inner.width());
        painter.drawText(inner, Qt::AlignLeft | Qt::AlignVCenter, text);
        x += w;
    }
}

} // namespace

int print(QPrinter *printer, const PrintTable &table, const QString &title)
{
    QPainter painter;
    if (!painter.begin(printer))
        return 0;
    Layout l = measure(painter, printer, table);
    const qint64 rowBlocks = std::max<qint64>(1, (qint64(table.rows.size()) + l.rowsPerPage - 1) / l.rowsPerPage);
    const int pages = int(rowBlocks * qint64(l.slices.size()));
    int page = 0;
    for (qint64 block = 0; block < rowBlocks; ++block) {
        for (const auto &slice : l.slices) {
            if (page++ > 0)
                printer->newPage();
            painter.setPen(Qt::black);
            painter.setFont(l.titleFont);
            painter.drawText(QRect(0, 0, l.page.width(), l.titleHeight), Qt::AlignHCenter | Qt::AlignTop, title);
            int y = l.titleHeight;
            QFont bold = l.cellFont;
            bold.setBold(true);
            painter.setFont(bold);
            drawRow(painter, l, slice, y, table.columns);
            painter.setFont(l.cellFont);
            const size_t first = size_t(block * l.rowsPerPage);
            const size_t last = std::min(table.rows.size(), first + size_t(l.rowsPerPage));
            for (size_t row = first; row < last; ++row) {
                y += l.rowHeight;
                drawRow(painter, l, slice, y, table.rows[row]);
            }
            painter.drawText(QRect(0, l.page.height() - l.footHeight, l.page.width(), l.footHeight),
                             Qt::AlignRight | Qt::AlignBottom, QStringLiteral("Page %1 of %2").arg(page).arg(pages));
        }
    }
    painter.end();
    return pages;
}

} // namespace GridPrinter
