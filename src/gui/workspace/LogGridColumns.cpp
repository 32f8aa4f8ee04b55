#include "gui/workspace/LogGridColumns.h"

#include "gui/workspace/LogTableModel.h"

#include <QEvent>
#include <QHeaderView>
#include <QTableView>

namespace {

class ColumnFitter : public QObject
{
public:
    ColumnFitter(QTableView *grid) : QObject(grid), m_grid(grid) {}

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Resize)
            fitLogColumns(m_grid);
        return QObject::eventFilter(watched, event);
    }

private:
    QTableView *m_grid;
};

} // namespace

void keepLogColumnsFitted(QTableView *grid)
{
    grid->viewport()->installEventFilter(new ColumnFitter(grid));
    fitLogColumns(grid);
}

void fitLogColumns(QTableView *grid)
{
    static const int fixedWidths[] = {44, 50, 70, 0, 0, 80};
    QHeaderView *header = grid->horizontalHeader();
    int fixed = 0;
    for (int c = 0; c < LogTableModel::ColumnCount; ++c) {
        if (c == LogTableModel::ColSql || c == LogTableModel::ColMessage)
            continue;
        header->resizeSection(c, fixedWidths[c]);
        fixed += fixedWidths[c];
    }
    const int rest = qMax(160, grid->viewport()->width() - fixed);
    const int sql = rest * 2 / 3;
    header->resizeSection(LogTableModel::ColSql, sql);
    header->resizeSection(LogTableModel::ColMessage, rest - sql);
}
