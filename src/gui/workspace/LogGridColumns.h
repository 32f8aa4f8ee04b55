#pragma once

class QTableView;

// Spreads the log grid's columns over its width: the short columns keep their widths and the
// statement and message share the rest, the statement taking two parts of three.
void fitLogColumns(QTableView *grid);
// Fits the columns again whenever the grid's width changes.
void keepLogColumnsFitted(QTableView *grid);
