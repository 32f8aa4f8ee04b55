#include "gui/workspace/HistoryListModel.h"

#include "core/app/SqlHistory.h"

HistoryListModel::HistoryListModel(SqlHistory &history, QObject *parent)
    : QAbstractListModel(parent), m_history(history)
{
    connect(&history, &SqlHistory::changed, this, [this] {
        beginResetModel();
        endResetModel();
    });
}

int HistoryListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_history.count();
}

QVariant HistoryListModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_history.count())
        return {};
    if (role == Qt::DisplayRole || role == Qt::EditRole || role == Qt::ToolTipRole)
        return m_history.row(index.row()).executedSql;
    return {};
}

bool HistoryListModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (!index.isValid() || role != Qt::EditRole)
        return false;
    m_history.setExecutedSql(index.row(), value.toString());
    return true;
}

Qt::ItemFlags HistoryListModel::flags(const QModelIndex &index) const
{
    return QAbstractListModel::flags(index) | Qt::ItemIsEditable;
}
