#pragma once
#include "core/interchange/WorkbookReader.h"

#include <QAbstractTableModel>
#include <QStringList>
#include <memory>

// The import wizard's preview grid gData over one sheet, laid out as a grid with a title row and
// a title column of its own: column count = the sheet's columns + 2, row count = its rows + 1.
// Row 0 holds the titles 1 .. n and "Status" over the last column; sheet row r shows its cells in
// grid row r, columns 1 .. n, and the outcome of its import in the status column. Its row number
// r stands in column 0 of grid row r + 1, one row below its data, so grid row 1 has none and
// the last sheet row's number falls off the grid. The offset is how the preview has always
// looked and is kept as it stands.
class SheetPreviewModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    using QAbstractTableModel::QAbstractTableModel;

    void setSheet(std::shared_ptr<const WorkbookSheet> sheet);
    void clear() { setSheet(nullptr); }
    const WorkbookSheet *sheet() const { return m_sheet.get(); }

    // The status column's text of sheet row r (from 1).
    void setStatus(int sheetRow, const QString &text);
    QString status(int sheetRow) const { return m_status.value(sheetRow - 1); }

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

private:
    bool isTitle(const QModelIndex &index) const { return index.row() == 0 || index.column() == 0; }

    std::shared_ptr<const WorkbookSheet> m_sheet;
    QStringList m_status;
};
