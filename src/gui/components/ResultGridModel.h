#pragma once
#include "workspace/ResultTable.h"
#include "workspace/ResultView.h"

#include <QAbstractTableModel>

// Table model over a ResultTable as the grid shows it: rows in the order of a ResultView
// (filtered, sorted, grouped), NULL drawn as a greyed "(null)", long texts on one line, group
// headers as rows of their own. Edits go into the table's edit buffer.
class ResultGridModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    using QAbstractTableModel::QAbstractTableModel;

    void setTable(ResultTable *table);
    ResultTable *table() const { return m_table; }
    ResultView &view() { return m_view; }
    // Re-applies filters, sort and grouping after a change of any of them or of the rows.
    void refresh();
    // Shows the rows appended to the table from `firstNew` on: inserted at the end when the view
    // shows rows in table order, else by a refresh.
    void rowsAppended(qint64 firstNew);

    // The table row shown at a model row; -1 for a group header.
    qint64 tableRow(int modelRow) const;
    int modelRow(qint64 tableRow) const { return int(m_view.indexOf(tableRow)); }
    bool isGroupHeader(int modelRow) const;
    // Text of a group header row, e.g. "city: Paris (12)".
    QString groupText(int modelRow) const;

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    // A refused edit (read-only, deleted row) emits editRefused and changes nothing.
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;

    // Longest text shown in a cell before it is cut.
    static constexpr int MaxCellText = 500;

signals:
    void editRefused(const QString &message);

private:
    QVariant editValue(int col, const QString &text, qint64 row) const;

    ResultTable *m_table = nullptr;
    ResultView m_view;
};
