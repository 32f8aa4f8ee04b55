#pragma once
#include <QWidget>

#include <vector>

class LogFilterModel;
class QLineEdit;
class QTableView;

// The filter row above the log grid: one box per column, kept under its column as columns are
// resized, moved or scrolled. Typing in a box filters the grid's rows by that column.
class LogGridFilterRow : public QWidget
{
    Q_OBJECT
public:
    LogGridFilterRow(QTableView *grid, LogFilterModel *filter, QWidget *parent);

    QLineEdit *box(int column) const { return m_boxes.at(column); }
    QSize sizeHint() const override;

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void placeBoxes();

    QTableView *m_grid;
    std::vector<QLineEdit *> m_boxes;
};

// Spreads the log grid's columns over its width: the short columns keep their widths and the
// statement and message share the rest, the statement taking two parts of three.
void fitLogColumns(QTableView *grid);
// Fits the columns again whenever the grid's width changes.
void keepLogColumnsFitted(QTableView *grid);
