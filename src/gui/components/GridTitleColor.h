#pragma once
#include <QColor>

class QTableView;

// Colours the column titles of a grid with the style's title colour; an invalid colour gives the
// titles back to the style.
void applyGridTitleColor(QTableView *grid, const QColor &color);
