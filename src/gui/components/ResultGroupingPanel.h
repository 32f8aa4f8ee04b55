#pragma once
#include <QFrame>
#include <QStringList>
#include <QVector>

class QHBoxLayout;
class QLabel;

// The grid's grouping panel: shows the columns the rows are grouped by, in order, each with a
// button that removes it. Columns are added from a column title's menu.
class ResultGroupingPanel : public QFrame
{
    Q_OBJECT
public:
    explicit ResultGroupingPanel(QWidget *parent = nullptr);

    void setColumns(const QVector<int> &columns, const QStringList &names);
    QVector<int> columns() const { return m_columns; }

signals:
    void columnsChanged(const QVector<int> &columns);

private:
    QVector<int> m_columns;
    QHBoxLayout *m_layout;
    QLabel *m_hint;
};
