#include "gui/components/ResultGridModel.h"

#include "core/base/VantryError.h"
#include "core/workspace/CellText.h"

#include <QBrush>
#include <QColor>
#include <QFont>
#include <QThread>
#include <utility>

void ResultGridModel::setTable(ResultTable *table, std::shared_ptr<const void> owner)
{
    beginResetModel();
    ++m_generation;
    m_table = table;
    m_owner = std::move(owner);
    m_view.setTable(table);
    m_view.rebuild();
    endResetModel();
    if (m_rebuilding) {
        m_rebuilding = m_refreshAgain = false;
        emit rebuildingChanged(false);
    }
}

void ResultGridModel::refresh()
{
    if (m_rebuilding) {
        m_refreshAgain = true;
        return;
    }
    if (m_table && m_owner && m_table->rowCount() >= BackgroundRows) {
        rebuildInBackground();
        return;
    }
    beginResetModel();
    m_view.rebuild();
    endResetModel();
    emit rebuilt();
}

void ResultGridModel::rebuildInBackground()
{
    m_rebuilding = true;
    emit rebuildingChanged(true);
    // The copy carries the new settings; the grid keeps showing the old order until it is done.
    auto view = std::make_shared<ResultView>(m_view);
    std::shared_ptr<const void> owner = m_owner;
    const quint64 generation = m_generation;
    QThread *worker = QThread::create([view, owner] { view->rebuild(); });
    connect(worker, &QThread::finished, worker, &QObject::deleteLater);
    connect(worker, &QThread::finished, this, [this, view, generation] {
        if (generation != m_generation)
            return;
        beginResetModel();
        m_view = std::move(*view);
        endResetModel();
        m_rebuilding = false;
        if (std::exchange(m_refreshAgain, false)) {
            refresh();
            return;
        }
        emit rebuildingChanged(false);
        emit rebuilt();
    });
    worker->start();
}

void ResultGridModel::rowsAppended(qint64 firstNew)
{
    if (!m_view.isIdentity()) {
        refresh();
        return;
    }
    const qint64 before = m_view.size();
    const qint64 after = before + (m_table ? m_table->rowCount() - firstNew : 0);
    if (after <= before)
        return;
    beginInsertRows({}, int(before), int(after - 1));
    m_view.rowsAppended(firstNew);
    endInsertRows();
}

qint64 ResultGridModel::tableRow(int modelRow) const
{
    if (modelRow < 0 || modelRow >= m_view.size())
        return -1;
    const ResultView::Entry &entry = m_view.entry(modelRow);
    return entry.level < 0 ? entry.row : -1;
}

bool ResultGridModel::isGroupHeader(int modelRow) const
{
    return modelRow >= 0 && modelRow < m_view.size() && m_view.entry(modelRow).level >= 0;
}

QString ResultGridModel::groupText(int modelRow) const
{
    const ResultView::Entry &entry = m_view.entry(modelRow);
    const int col = m_view.groupColumns().value(entry.level);
    QString value = ResultView::text(*m_table, entry.row, col);
    if (value.isNull())
        value = QStringLiteral("(null)");
    return QStringLiteral("%1%2: %3 (%4)")
        .arg(QString(entry.level * 4, QLatin1Char(' ')), m_table->column(col).name(), value)
        .arg(entry.count);
}

int ResultGridModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() || !m_table ? 0 : int(m_view.size());
}

int ResultGridModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() || !m_table ? 0 : m_table->columnCount();
}

QVariant ResultGridModel::data(const QModelIndex &index, int role) const
{
    if (!m_table || !index.isValid())
        return {};
    const qint64 row = tableRow(index.row());
    if (row < 0) {
        switch (role) {
        case Qt::DisplayRole:
            return index.column() == 0 ? groupText(index.row()) : QVariant();
        case Qt::BackgroundRole:
            return QBrush(QColor(0xe4, 0xea, 0xf4));
        case Qt::FontRole: {
            QFont font;
            font.setBold(true);
            return font;
        }
        default:
            return {};
        }
    }
    const int col = index.column();
    switch (role) {
    case Qt::DisplayRole: {
        const QString text = ResultView::text(*m_table, row, col);
        if (text.isNull())
            return QStringLiteral("(null)");
        // Memo texts are drawn on one line; line breaks and tabs show as spaces.
        QString line = text.left(MaxCellText);
        for (QChar &c : line)
            if (c == QLatin1Char('\n') || c == QLatin1Char('\r') || c == QLatin1Char('\t'))
                c = QLatin1Char(' ');
        return text.size() > MaxCellText ? line + QChar(0x2026) : line;
    }
    case Qt::EditRole: {
        const QString text = ResultView::text(*m_table, row, col);
        return text.isNull() ? QString() : text;
    }
    case Qt::ToolTipRole: {
        // A row whose write failed says why; it stays marked until it is written or reverted.
        const QString failure = m_table->rowFailure(row);
        if (!failure.isEmpty())
            return QStringLiteral("Not saved: ") + failure;
        const QString text = ResultView::text(*m_table, row, col);
        return text.size() > 40 || text.contains(QLatin1Char('\n')) ? text.left(4000) : QVariant();
    }
    case Qt::ForegroundRole:
        return m_table->isNull(row, col) ? QVariant(QBrush(QColor(0x90, 0x90, 0x90))) : QVariant();
    case Qt::FontRole:
        if (m_table->isNull(row, col)) {
            QFont font;
            font.setItalic(true);
            return font;
        }
        return {};
    case Qt::BackgroundRole:
        if (!m_table->rowFailure(row).isEmpty())
            return QBrush(QColor(0xfb, 0xd5, 0xd5));
        if (m_table->rowState(row) == ResultTable::RowState::Inserted)
            return QBrush(QColor(0xe6, 0xf6, 0xe0));
        if (m_table->isChanged(row, col))
            return QBrush(QColor(0xff, 0xf4, 0xc8));
        return {};
    case Qt::TextAlignmentRole: {
        const ResultStorage storage = m_table->column(col).storage();
        return storage == ResultStorage::Integer || storage == ResultStorage::Real
                   ? QVariant(int(Qt::AlignRight | Qt::AlignVCenter))
                   : QVariant(int(Qt::AlignLeft | Qt::AlignVCenter));
    }
    default:
        return {};
    }
}

QVariant ResultGridModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (!m_table)
        return {};
    if (orientation == Qt::Vertical) {
        // Record numbers follow the result, not the view, and group headers have none.
        const qint64 row = tableRow(section);
        return role == Qt::DisplayRole && row >= 0 ? QVariant(row + 1) : QVariant();
    }
    if (section >= m_table->columnCount())
        return {};
    const ResultColumn &column = m_table->column(section);
    if (role == Qt::DisplayRole) {
        // The sort marker is part of the title so that every style shows it.
        if (m_view.sortColumn() == section)
            return column.name() + (m_view.sortAscending() ? QStringLiteral(" \u25B2") : QStringLiteral(" \u25BC"));
        return column.name();
    }
    if (role == Qt::ToolTipRole)
        return column.typeName().isEmpty() ? column.name()
                                           : QStringLiteral("%1 %2%3").arg(column.name(), column.typeName(),
                                                                         column.nullable() ? QString() : QStringLiteral(" NOT NULL"));
    return {};
}

Qt::ItemFlags ResultGridModel::flags(const QModelIndex &index) const
{
    if (!m_table || !index.isValid())
        return Qt::NoItemFlags;
    if (isGroupHeader(index.row()))
        return Qt::ItemIsEnabled;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    // Binary values are not edited as text: a round trip through hex would change them.
    if (!m_table->isReadOnly() && m_table->column(index.column()).storage() != ResultStorage::Bytes)
        flags |= Qt::ItemIsEditable;
    return flags;
}

bool ResultGridModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (!m_table || role != Qt::EditRole || !index.isValid())
        return false;
    if (m_rebuilding) {
        emit editRefused(QStringLiteral("The rows are being sorted and filtered; edit again in a moment"));
        return false;
    }
    const qint64 row = tableRow(index.row());
    if (row < 0)
        return false;
    const QString before = data(index, Qt::EditRole).toString();
    const QString text = value.toString();
    if (text == before && !(text.isEmpty() && !m_table->isNull(row, index.column())))
        return false;
    try {
        m_table->setValue(row, index.column(), valueFromCellText(m_table->column(index.column()), text, m_table->isNull(row, index.column())));
    } catch (const VantryError &error) {
        emit editRefused(error.message());
        return false;
    }
    emit dataChanged(this->index(index.row(), 0), this->index(index.row(), columnCount() - 1));
    return true;
}
