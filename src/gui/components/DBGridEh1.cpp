#include "gui/components/DBGridEh1.h"

#include "gui/components/ResultFilterHeader.h"
#include "gui/components/ResultGridModel.h"
#include "core/workspace/ResultTable.h"

#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QScrollBar>
#include <algorithm>
#include <set>

DBGridEh1::DBGridEh1(QWidget *parent) : QTableView(parent)
{
    setObjectName(QStringLiteral("DBGridEh1"));
    m_model = new ResultGridModel(this);
    m_header = new ResultFilterHeader(this);
    setHorizontalHeader(m_header);
    setModel(m_model);
    setSelectionBehavior(QAbstractItemView::SelectItems);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed
                    | QAbstractItemView::AnyKeyPressed);
    setWordWrap(false);
    setTextElideMode(Qt::ElideRight);
    setAlternatingRowColors(true);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    m_header->setDefaultSectionSize(110);
    m_header->setContextMenuPolicy(Qt::CustomContextMenu);
    m_header->setSortIndicator(-1, Qt::AscendingOrder);

    connect(m_header, &QHeaderView::sectionClicked, this, &DBGridEh1::headerClicked);
    connect(m_header, &QWidget::customContextMenuRequested, this, &DBGridEh1::headerMenu);
    connect(m_header, &ResultFilterHeader::filterChanged, this, &DBGridEh1::setFilterText);
    connect(m_header, &ResultFilterHeader::editorsRebuilt, this, [this] {
        for (int col = 0; col < m_model->columnCount(); ++col)
            if (QLineEdit *editor = m_header->filterEditor(col)) {
                const QSignalBlocker block(editor);
                editor->setText(m_model->view().filter(col));
            }
    });
    connect(horizontalScrollBar(), &QScrollBar::valueChanged, m_header, &ResultFilterHeader::placeEditors);
    connect(m_model, &ResultGridModel::editRefused, this, &DBGridEh1::message);
    connect(m_model, &ResultGridModel::rebuilt, this, &DBGridEh1::rowsRebuilt);
    connect(selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex &current, const QModelIndex &previous) {
                const qint64 before = previous.isValid() ? m_model->tableRow(previous.row()) : -1;
                const qint64 after = current.isValid() ? m_model->tableRow(current.row()) : -1;
                if (before != after)
                    emit currentTableRowChanged(before, after);
            });
}

DBGridEh1::~DBGridEh1()
{
    // The model dies before the header; the header must not rebuild its editors meanwhile.
    m_header->blockSignals(true);
}

void DBGridEh1::setResult(ResultTable *table, std::shared_ptr<const void> owner)
{
    m_model->setTable(table, std::move(owner));
    m_header->clearFilters();
    m_header->setSortIndicator(-1, Qt::AscendingOrder);
    clearSpans();
}

void DBGridEh1::setReadOnly(bool readOnly)
{
    m_readOnly = readOnly;
    if (ResultTable *table = m_model->table())
        table->setReadOnly(readOnly || table->isReadOnly());
    viewport()->update();
}

void DBGridEh1::refreshRows()
{
    if (!m_model->isRebuilding()) {
        m_restoreRow = currentTableRow();
        m_restoreColumn = currentIndex().column();
    }
    m_model->refresh();
}

void DBGridEh1::rowsRebuilt()
{
    const qint64 row = m_restoreRow;
    const int column = m_restoreColumn;
    clearSpans();
    // Group headers span the row; past a few thousand groups spans cost more than they give.
    if (!m_model->view().groupColumns().isEmpty() && m_model->columnCount() > 1) {
        int spans = 0;
        for (int r = 0; r < m_model->rowCount() && spans < 5000; ++r)
            if (m_model->isGroupHeader(r)) {
                setSpan(r, 0, 1, m_model->columnCount());
                ++spans;
            }
    }
    if (row >= 0)
        setCurrentTableRow(row, column);
}

void DBGridEh1::commitEditor()
{
    if (state() != QAbstractItemView::EditingState)
        return;
    if (QWidget *editor = QApplication::focusWidget(); editor && isAncestorOf(editor)) {
        commitData(editor);
        closeEditor(editor, QAbstractItemDelegate::NoHint);
    }
}

qint64 DBGridEh1::currentTableRow() const
{
    return currentIndex().isValid() ? m_model->tableRow(currentIndex().row()) : -1;
}

void DBGridEh1::setCurrentTableRow(qint64 row, int column)
{
    const int modelRow = m_model->modelRow(row);
    if (modelRow < 0)
        return;
    const QModelIndex index = m_model->index(modelRow, std::max(0, column));
    setCurrentIndex(index);
    scrollTo(index);
}

QList<qint64> DBGridEh1::selectedTableRows() const
{
    std::set<int> modelRows;
    for (const QModelIndex &index : selectionModel()->selectedIndexes())
        modelRows.insert(index.row());
    if (modelRows.empty() && currentIndex().isValid())
        modelRows.insert(currentIndex().row());
    QList<qint64> rows;
    for (int modelRow : modelRows) {
        const qint64 row = m_model->tableRow(modelRow);
        if (row >= 0)
            rows << row;
    }
    return rows;
}

void DBGridEh1::headerClicked(int section)
{
    ResultView &view = m_model->view();
    const bool ascending = view.sortColumn() == section ? !view.sortAscending() : true;
    sortByColumn(section, ascending ? Qt::AscendingOrder : Qt::DescendingOrder);
}

void DBGridEh1::sortByColumn(int column, Qt::SortOrder order)
{
    m_model->view().setSort(column, order == Qt::AscendingOrder);
    m_header->setSortIndicator(column, order);
    refreshRows();
}

void DBGridEh1::setGroupColumns(const QVector<int> &columns)
{
    m_model->view().setGroupColumns(columns);
    refreshRows();
}

QVector<int> DBGridEh1::groupColumns() const
{
    return m_model->view().groupColumns();
}

void DBGridEh1::setFilterText(int column, const QString &text)
{
    if (QLineEdit *editor = m_header->filterEditor(column); editor && editor->text() != text) {
        const QSignalBlocker block(editor);
        editor->setText(text);
    }
    m_model->view().setFilter(column, text);
    refreshRows();
}

void DBGridEh1::headerMenu(const QPoint &pos)
{
    const int section = m_header->logicalIndexAt(pos);
    if (section < 0)
        return;
    QMenu menu(this);
    menu.addAction(QStringLiteral("Sort Ascending"), this, [this, section] { sortByColumn(section, Qt::AscendingOrder); });
    menu.addAction(QStringLiteral("Sort Descending"), this, [this, section] { sortByColumn(section, Qt::DescendingOrder); });
    menu.addSeparator();
    menu.addAction(QStringLiteral("Group by This Column"), this, [this, section] { emit groupRequested(section); });
    menu.addAction(QStringLiteral("Fit Width"), this, [this, section] { resizeColumnToContents(section); });
    menu.exec(m_header->mapToGlobal(pos));
}

void DBGridEh1::optimizeColumnWidths()
{
    const QFontMetrics metrics(font());
    const QFontMetrics headerMetrics(m_header->font());
    const int sample = std::min(m_model->rowCount(), 500);
    const int first = std::max(0, rowAt(0));
    for (int col = 0; col < m_model->columnCount(); ++col) {
        // The title needs room for the sort marker as well.
        int width = headerMetrics.horizontalAdvance(m_model->headerData(col, Qt::Horizontal).toString()) + 28;
        for (int r = first; r < std::min(m_model->rowCount(), first + sample); ++r) {
            if (m_model->isGroupHeader(r))
                continue;
            const QString text = m_model->data(m_model->index(r, col)).toString().left(80);
            width = std::max(width, metrics.horizontalAdvance(text) + 14);
        }
        setColumnWidth(col, std::min(width, 360));
    }
    m_header->placeEditors();
}

void DBGridEh1::copySelection() const
{
    const QModelIndexList indexes = selectionModel()->selectedIndexes();
    if (indexes.isEmpty())
        return;
    std::set<int> rows, cols;
    for (const QModelIndex &index : indexes) {
        rows.insert(index.row());
        cols.insert(index.column());
    }
    QStringList lines;
    for (int r : rows) {
        QStringList fields;
        const qint64 row = m_model->tableRow(r);
        for (int c : cols) {
            if (row < 0 || !selectionModel()->isSelected(m_model->index(r, c))) {
                fields << QString();
                continue;
            }
            fields << m_model->data(m_model->index(r, c), Qt::EditRole).toString();
        }
        lines << fields.join(QLatin1Char('\t'));
    }
    QApplication::clipboard()->setText(lines.join(QLatin1Char('\n')) + QLatin1Char('\n'));
}

bool DBGridEh1::findNext(const QString &text, int column, bool matchCase, bool wholeCell, bool backwards)
{
    const int rows = m_model->rowCount();
    const int cols = m_model->columnCount();
    if (rows == 0 || cols == 0 || text.isEmpty())
        return false;
    const Qt::CaseSensitivity cs = matchCase ? Qt::CaseSensitive : Qt::CaseInsensitive;
    const QModelIndex current = currentIndex();
    qint64 pos = current.isValid() ? qint64(current.row()) * cols + current.column() : (backwards ? qint64(rows) * cols : -1);
    const qint64 end = qint64(rows) * cols;
    for (pos += backwards ? -1 : 1; pos >= 0 && pos < end; pos += backwards ? -1 : 1) {
        const int r = int(pos / cols), c = int(pos % cols);
        if ((column >= 0 && c != column) || m_model->isGroupHeader(r))
            continue;
        const qint64 row = m_model->tableRow(r);
        const QString cell = ResultView::text(*m_model->table(), row, c);
        if (cell.isNull())
            continue;
        if (wholeCell ? cell.compare(text, cs) == 0 : cell.contains(text, cs)) {
            const QModelIndex found = m_model->index(r, c);
            setCurrentIndex(found);
            scrollTo(found);
            return true;
        }
    }
    return false;
}

void DBGridEh1::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::Copy)) {
        copySelection();
        return;
    }
    QTableView::keyPressEvent(event);
}
