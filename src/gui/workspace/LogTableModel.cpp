#include "gui/workspace/LogTableModel.h"

#include "gui/components/BadgeIcon.h"
#include "core/workspace/ExecutionLog.h"

LogTableModel::LogTableModel(ExecutionLog *log, QObject *parent)
    : QAbstractTableModel(parent), m_log(log)
{
    connect(log, &ExecutionLog::rowAppended, this, [this](int row) {
        beginInsertRows({}, row, row);
        endInsertRows();
    });
    connect(log, &ExecutionLog::rowChanged, this,
            [this](int row) { emit dataChanged(index(row, 0), index(row, ColumnCount - 1)); });
    connect(log, &ExecutionLog::cleared, this, [this] {
        beginResetModel();
        endResetModel();
    });
}

int LogTableModel::rowCount(const QModelIndex &parent) const { return parent.isValid() ? 0 : m_log->count(); }

int LogTableModel::columnCount(const QModelIndex &parent) const { return parent.isValid() ? 0 : ColumnCount; }

QIcon LogTableModel::statusIcon(int status)
{
    static const QIcon icons[] = {
        BadgeIcon::draw(BadgeIcon::Shape::Circle, 16, QColor(0x2e, 0x9d, 0x4b), QStringLiteral("\u2713")),
        BadgeIcon::draw(BadgeIcon::Shape::Circle, 16, QColor(0xe0, 0xa0, 0x20), QStringLiteral("!")),
        BadgeIcon::draw(BadgeIcon::Shape::Circle, 16, QColor(0xd0, 0x33, 0x2c), QStringLiteral("\u2715")),
    };
    return icons[(status >= 0 && status <= 2) ? status : 0];
}

QVariant LogTableModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_log->count())
        return {};
    const LogEntry &e = m_log->row(index.row());
    if (role == Qt::DecorationRole && index.column() == ColStatus)
        return statusIcon(e.status);
    if (role == Qt::UserRole) {  // sort keys
        switch (index.column()) {
        case ColNumber: return e.number;
        case ColStatus: return e.status;
        case ColTime: return e.time;
        case ColTimeTaken: return e.timeTakenMs();
        default: break;
        }
    }
    if (role != Qt::DisplayRole && role != Qt::ToolTipRole && role != Qt::UserRole)
        return {};
    switch (index.column()) {
    case ColNumber: return e.number;
    case ColStatus: return role == Qt::ToolTipRole ? QVariant(e.status) : QVariant();
    case ColTime: return ExecutionLog::formatTime(e.time);
    case ColSql: return e.sql;
    case ColMessage: return e.message;
    case ColTimeTaken: return ExecutionLog::formatDuration(e.timeTakenMs());
    default: return {};
    }
}

QVariant LogTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    static const char *const titles[] = {"N:", "Status", "Time", "SQL", "Message", "TimeTaken"};
    return section >= 0 && section < ColumnCount ? QString::fromLatin1(titles[section]) : QVariant();
}

LogFilterModel::LogFilterModel(QObject *parent) : QSortFilterProxyModel(parent)
{
    setSortRole(Qt::UserRole);
}

void LogFilterModel::setColumnFilter(int column, const QString &text)
{
    if (column < 0)
        return;
    if (m_filters.size() <= column)
        m_filters.resize(column + 1);
    if (m_filters[column] == text)
        return;
    m_filters[column] = text;
    invalidateFilter();
}

QString LogFilterModel::columnFilter(int column) const { return m_filters.value(column); }

bool LogFilterModel::filterAcceptsRow(int sourceRow, const QModelIndex &sourceParent) const
{
    const QAbstractItemModel *source = sourceModel();
    for (int c = 0; c < m_filters.size(); ++c) {
        if (m_filters[c].isEmpty())
            continue;
        // The status column shows a picture: its filter matches the number behind it.
        const int role = c == LogTableModel::ColStatus ? Qt::UserRole : Qt::DisplayRole;
        const QString value = source->index(sourceRow, c, sourceParent).data(role).toString();
        if (!value.contains(m_filters[c], Qt::CaseInsensitive))
            return false;
    }
    return true;
}
