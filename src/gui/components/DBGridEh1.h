#pragma once
#include <QTableView>

#include <memory>

class ResultGridModel;
class ResultFilterHeader;
class ResultTable;

// The result grid: a table view over a ResultGridModel with sorting by a click on a column title
// (a second click reverses it), a filter row under the titles, grouping by columns, a find
// dialog, column width fitting, multi-row selection and copying of the selected cells.
class DBGridEh1 : public QTableView
{
    Q_OBJECT
public:
    explicit DBGridEh1(QWidget *parent = nullptr);
    ~DBGridEh1() override;

    ResultGridModel *gridModel() const { return m_model; }
    ResultFilterHeader *filterHeader() const { return m_header; }
    // `owner` keeps the table alive while a large result is ordered off the window's thread.
    void setResult(ResultTable *table, std::shared_ptr<const void> owner = {});

    void setReadOnly(bool readOnly);
    bool isReadOnly() const { return m_readOnly; }

    // Hands the value of an open cell editor to the model and closes the editor.
    void commitEditor();
    // A cell editor is open.
    bool isEditing() const { return state() == QAbstractItemView::EditingState; }
    // Re-reads the rows after inserts, deletes or posts, keeping the current cell on its row.
    void refreshRows();
    // Table row of the current cell, -1 when there is none or it is a group header.
    qint64 currentTableRow() const;
    void setCurrentTableRow(qint64 row, int column = -1);
    // Table rows of every selected cell, without duplicates, in view order.
    QList<qint64> selectedTableRows() const;

    void sortByColumn(int column, Qt::SortOrder order);
    void setGroupColumns(const QVector<int> &columns);
    QVector<int> groupColumns() const;
    void setFilterText(int column, const QString &text);

    // Fits every column to its title and the widest of the first rows, within a sensible cap.
    void optimizeColumnWidths();
    // Copies the selected cells as tab-separated lines (NULL as an empty field).
    void copySelection() const;
    // Finds the next cell (after the current one) whose text contains or equals the text;
    // column -1 searches every column. Returns false when nothing more matches.
    bool findNext(const QString &text, int column, bool matchCase, bool wholeCell, bool backwards);

signals:
    // A column was chosen for grouping from its title's menu.
    void groupRequested(int column);
    // The current cell moved to another table row; the previous one may need posting.
    void currentTableRowChanged(qint64 previous, qint64 current);
    void message(const QString &text);

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void headerClicked(int section);
    void rowsRebuilt();
    void headerMenu(const QPoint &pos);

    ResultGridModel *m_model;
    ResultFilterHeader *m_header;
    bool m_readOnly = false;
    // The row and column to show again once a refresh has ordered the rows.
    qint64 m_restoreRow = -1;
    int m_restoreColumn = 0;
};
