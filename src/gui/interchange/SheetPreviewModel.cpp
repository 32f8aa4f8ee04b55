#include "gui/interchange/SheetPreviewModel.h"

#include <QApplication>
#include <QColor>
#include <QPalette>

void SheetPreviewModel::setSheet(std::shared_ptr<const WorkbookSheet> sheet)
{
    beginResetModel();
    m_sheet = std::move(sheet);
    m_status = QStringList();
    if (m_sheet)
        for (int r = 0; r < m_sheet->rowCount(); ++r)
            m_status.append(QString());
    endResetModel();
}

void SheetPreviewModel::setStatus(int sheetRow, const QString &text)
{
    if (sheetRow < 1 || sheetRow > m_status.size())
        return;
    m_status[sheetRow - 1] = text;
    const QModelIndex cell = index(sheetRow, columnCount() - 1);
    emit dataChanged(cell, cell);
}

int SheetPreviewModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() || !m_sheet ? 0 : m_sheet->rowCount() + 1;
}

int SheetPreviewModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() || !m_sheet ? 0 : m_sheet->columnCount() + 2;
}

QVariant SheetPreviewModel::data(const QModelIndex &index, int role) const
{
    if (!m_sheet || !index.isValid())
        return {};
    const int row = index.row();
    const int col = index.column();
    const int statusColumn = columnCount() - 1;
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        if (row == 0) {
            if (col == statusColumn)
                return QStringLiteral("Status");
            return col == 0 ? QVariant() : QVariant(col);
        }
        if (col == 0)
            return row >= 2 ? QVariant(row - 1) : QVariant();  // the number of the row above
        if (col == statusColumn)
            return m_status.value(row - 1);
        return m_sheet->cellText(row, col);
    case Qt::TextAlignmentRole:
        if (isTitle(index))
            return int(Qt::AlignCenter);
        return {};
    case Qt::BackgroundRole:
        if (isTitle(index))
            return QApplication::palette().button();
        return {};
    case Qt::ForegroundRole:
        if (isTitle(index))
            return QApplication::palette().buttonText();
        if (col == statusColumn && !m_status.value(row - 1).isEmpty() && m_status.value(row - 1) != QLatin1String("OK"))
            return QColor(Qt::red);  // the row was refused: the text is the reason
        return {};
    case Qt::ToolTipRole:
        if (row > 0 && col == statusColumn)
            return m_status.value(row - 1);
        return {};
    default:
        return {};
    }
}

Qt::ItemFlags SheetPreviewModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    return isTitle(index) ? Qt::ItemIsEnabled : Qt::ItemIsEnabled | Qt::ItemIsSelectable;
}
