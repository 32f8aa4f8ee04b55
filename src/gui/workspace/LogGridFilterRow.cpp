#include "workspace/LogGridFilterRow.h"

#include "workspace/LogTableModel.h"

#include <QEvent>
#include <QHeaderView>
#include <QLineEdit>
#include <QScrollBar>
#include <QTableView>

LogGridFilterRow::LogGridFilterRow(QTableView *grid, LogFilterModel *filter, QWidget *parent)
    : QWidget(parent), m_grid(grid)
{
    setObjectName(QStringLiteral("gLogFilter"));
    const QAbstractItemModel *model = grid->model();
    for (int c = 0; c < model->columnCount(); ++c) {
        auto *box = new QLineEdit(this);
        box->setObjectName(QStringLiteral("gLogFilter%1").arg(c));
        box->setClearButtonEnabled(true);
        box->setPlaceholderText(model->headerData(c, Qt::Horizontal).toString());
        connect(box, &QLineEdit::textChanged, filter, [filter, c](const QString &text) { filter->setColumnFilter(c, text); });
        m_boxes.push_back(box);
    }
    QHeaderView *header = grid->horizontalHeader();
    connect(header, &QHeaderView::sectionResized, this, &LogGridFilterRow::placeBoxes);
    connect(header, &QHeaderView::sectionMoved, this, &LogGridFilterRow::placeBoxes);
    connect(header, &QHeaderView::geometriesChanged, this, &LogGridFilterRow::placeBoxes);
    connect(grid->horizontalScrollBar(), &QScrollBar::valueChanged, this, &LogGridFilterRow::placeBoxes);
}

QSize LogGridFilterRow::sizeHint() const
{
    return {m_grid->sizeHint().width(), m_boxes.empty() ? 0 : m_boxes.front()->sizeHint().height()};
}

void LogGridFilterRow::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    placeBoxes();
}

void LogGridFilterRow::placeBoxes()
{
    // The grid's viewport starts after its frame (and its row header, when shown).
    const QHeaderView *header = m_grid->horizontalHeader();
    const int offset = m_grid->viewport()->mapTo(m_grid, QPoint(0, 0)).x() + m_grid->mapTo(parentWidget(), QPoint(0, 0)).x()
                       - mapTo(parentWidget(), QPoint(0, 0)).x();
    for (int c = 0; c < int(m_boxes.size()); ++c) {
        QLineEdit *box = m_boxes[c];
        box->setVisible(!header->isSectionHidden(c));
        box->setGeometry(offset + header->sectionViewportPosition(c), 0, header->sectionSize(c), height());
    }
}

namespace {

class ColumnFitter : public QObject
{
public:
    ColumnFitter(QTableView *grid) : QObject(grid), m_grid(grid) {}

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Resize)
            fitLogColumns(m_grid);
        return QObject::eventFilter(watched, event);
    }

private:
    QTableView *m_grid;
};

} // namespace

void keepLogColumnsFitted(QTableView *grid)
{
    grid->viewport()->installEventFilter(new ColumnFitter(grid));
    fitLogColumns(grid);
}

void fitLogColumns(QTableView *grid)
{
    static const int fixedWidths[] = {44, 50, 70, 0, 0, 80};
    QHeaderView *header = grid->horizontalHeader();
    int fixed = 0;
    for (int c = 0; c < LogTableModel::ColumnCount; ++c) {
        if (c == LogTableModel::ColSql || c == LogTableModel::ColMessage)
            continue;
        header->resizeSection(c, fixedWidths[c]);
        fixed += fixedWidths[c];
    }
    const int rest = qMax(160, grid->viewport()->width() - fixed);
    const int sql = rest * 2 / 3;
    header->resizeSection(LogTableModel::ColSql, sql);
    header->resizeSection(LogTableModel::ColMessage, rest - sql);
}
