#pragma once
#include <QAbstractTableModel>
#include <QIcon>
#include <QSortFilterProxyModel>
#include <QStringList>

class ExecutionLog;

// The log grid's six columns: "N:", "Status" (a picture), "Time", "SQL", "Message", "TimeTaken".
class LogTableModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column { ColNumber, ColStatus, ColTime, ColSql, ColMessage, ColTimeTaken, ColumnCount };

    explicit LogTableModel(ExecutionLog *log, QObject *parent = nullptr);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    // The status pictures 0, 1 and 2; a value outside the list shows picture 0.
    static QIcon statusIcon(int status);

private:
    ExecutionLog *m_log;
};

// The log grid's sorted and filtered view: one filter text per column, as typed in the grid's
// filter row. A row shows when every non-empty filter occurs in its column, ignoring case; the
// status column matches its number.
class LogFilterModel : public QSortFilterProxyModel
{
    Q_OBJECT
public:
    explicit LogFilterModel(QObject *parent = nullptr);

    void setColumnFilter(int column, const QString &text);
    QString columnFilter(int column) const;

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex &sourceParent) const override;

private:
    QStringList m_filters;
};
