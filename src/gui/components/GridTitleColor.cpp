#include "gui/components/GridTitleColor.h"

#include <QHeaderView>
#include <QTableView>

void applyGridTitleColor(QTableView *grid, const QColor &color)
{
    QHeaderView *titles = grid->horizontalHeader();
    titles->setStyleSheet(color.isValid() ? QStringLiteral("QHeaderView::section { background-color: %1; }").arg(color.name())
                                          : QString());
}
