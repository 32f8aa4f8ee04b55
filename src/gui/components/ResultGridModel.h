#pragma once
#include "core/workspace/ResultTable.h"
#include "core/workspace/ResultView.h"

#include <QAbstractTableModel>

#include <memory>

// Table model over a ResultTable as the grid shows it: rows in the order of a ResultView
// (filtered, sorted, grouped), NULL drawn as a greyed "(null)", long texts on one line, group
// headers as rows of their own, a row whose write failed in red with the reason as its tip.
// Edits go into the table's edit buffer.
class ResultGridModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    using QAbstractTableModel::QAbstractTableModel;

    // `owner` keeps the table alive while rows are ordered off this thread.
    void setTable(ResultTable *table, std::shared_ptr<const void> owner = {});
    ResultTable *table() const { return m_table; }
    ResultView &view() { return m_view; }
    // Re-applies filters, sort and grouping after a change of any of them or of the rows. A large
    // result is ordered on a thread of its own, the grid showing the old order meanwhile; rebuilt
    // is emitted when the new order shows, at once for a small result.
    void refresh();
    // Rows are being ordered off this thread: the table must not change meanwhile.
    bool isRebuilding() const { return m_rebuilding; }
    // Results of at least this many rows are ordered off the window's thread.
    static constexpr qint64 BackgroundRows = 100000;
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
    void rebuildingChanged(bool rebuilding);
    void rebuilt();

private:
    void rebuildInBackground();

    ResultTable *m_table = nullptr;
    std::shared_ptr<const void> m_owner;
    ResultView m_view;
    bool m_rebuilding = false;
    bool m_refreshAgain = false;  // settings changed while a rebuild ran
    quint64 m_generation = 0;     // a new table makes a running rebuild's outcome stale
};
