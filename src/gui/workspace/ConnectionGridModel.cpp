#include "gui/workspace/ConnectionGridModel.h"

#include "gui/components/ConnectionTypeIcons.h"
#include "core/workspace/ConnectionList.h"

ConnectionGridModel::ConnectionGridModel(ConnectionList *list, QObject *parent)
    : QAbstractTableModel(parent), m_list(list)
{
    connect(list, &ConnectionList::reset, this, [this] {
        beginResetModel();
        endResetModel();
    });
    connect(list, &ConnectionList::rowChanged, this,
            [this](int row) { emit dataChanged(index(row, 0), index(row, 1)); });
}

int ConnectionGridModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_list->count();
}

int ConnectionGridModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : 2;
}

QVariant ConnectionGridModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_list->count())
        return {};
    const auto &row = m_list->row(index.row());
    if (index.column() == 0 && role == Qt::DecorationRole)
        return ConnectionTypeIcons::forCode(row.connectionType);
    if (index.column() == 0 && role == Qt::ToolTipRole)
        return ConnectionTypeIcons::nameForCode(row.connectionType);
    if (index.column() == 1 && (role == Qt::DisplayRole || role == Qt::ToolTipRole))
        return row.connectionName;
    return {};
}

QVariant ConnectionGridModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    return section == 0 ? QStringLiteral("Type") : QStringLiteral("Name");
}
