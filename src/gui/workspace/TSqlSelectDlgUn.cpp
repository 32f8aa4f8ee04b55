#include "gui/workspace/TSqlSelectDlgUn.h"

#include "core/app/SqlHistory.h"
#include "gui/workspace/HistoryListModel.h"

#include <QHBoxLayout>
#include <QListView>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStyledItemDelegate>
#include <QVBoxLayout>

namespace {

// Each statement is drawn as a framed text box of 312 by 86 pixels, edited in a multi-line box.
class MemoDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem &, const QModelIndex &) const override { return {312, 86}; }

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        painter->save();
        const QRect box = option.rect.adjusted(3, 3, -3, -3);
        const bool selected = option.state & QStyle::State_Selected;
        painter->fillRect(box, option.palette.base());
        painter->setPen(selected ? option.palette.highlight().color() : option.palette.mid().color());
        painter->drawRect(box.adjusted(0, 0, -1, -1));
        if (selected)
            painter->drawRect(box.adjusted(1, 1, -2, -2));
        painter->setPen(option.palette.text().color());
        painter->drawText(box.adjusted(5, 4, -5, -4), Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap,
                          index.data().toString());
        painter->restore();
    }

    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &, const QModelIndex &) const override
    {
        auto *memo = new QPlainTextEdit(parent);
        memo->setObjectName(QStringLiteral("DBMemo1"));
        memo->setFrameShape(QFrame::Box);
        return memo;
    }

    void setEditorData(QWidget *editor, const QModelIndex &index) const override
    {
        static_cast<QPlainTextEdit *>(editor)->setPlainText(index.data(Qt::EditRole).toString());
    }

    void setModelData(QWidget *editor, QAbstractItemModel *model, const QModelIndex &index) const override
    {
        model->setData(index, static_cast<QPlainTextEdit *>(editor)->toPlainText(), Qt::EditRole);
    }

    void updateEditorGeometry(QWidget *editor, const QStyleOptionViewItem &option, const QModelIndex &) const override
    {
        editor->setGeometry(option.rect.adjusted(3, 3, -3, -3));
    }
};

} // namespace

TSqlSelectFrm::TSqlSelectFrm(SqlHistory &history, QWidget *parent)
    : TDefDlgFrm(parent), m_history(history)
{
    setObjectName(QStringLiteral("SqlSelectFrm"));
    setWindowTitle(QStringLiteral("Sql Execution History"));
    setSizeable(true);
    setPlacementPath(QStringLiteral("SqlSelectFrm\\"));
    imageSquare()->hide();
    resize(337, 332);

    auto *layout = new QVBoxLayout(TabSheet1());
    layout->setContentsMargins(4, 4, 4, 0);
    DBCtrlGrid1 = new QListView(TabSheet1());
    DBCtrlGrid1->setObjectName(QStringLiteral("DBCtrlGrid1"));
    DBCtrlGrid1->setModel(new HistoryListModel(history, DBCtrlGrid1));
    DBCtrlGrid1->setItemDelegate(new MemoDelegate(DBCtrlGrid1));
    DBCtrlGrid1->setUniformItemSizes(true);
    DBCtrlGrid1->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    DBCtrlGrid1->setEditTriggers(QAbstractItemView::SelectedClicked | QAbstractItemView::AnyKeyPressed |
                                 QAbstractItemView::EditKeyPressed);
    layout->addWidget(DBCtrlGrid1);

    // The list and the history share one cursor, so the workspace's previous/next steps start
    // from the statement picked here.
    if (history.currentIndex() >= 0)
        DBCtrlGrid1->setCurrentIndex(DBCtrlGrid1->model()->index(history.currentIndex(), 0));
    connect(DBCtrlGrid1->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex &current) {
                if (current.isValid())
                    m_history.setCurrentIndex(current.row());
            });
    connect(DBCtrlGrid1, &QListView::doubleClicked, this, &TSqlSelectFrm::DBMemo1DblClick);

    auto *clear = new QPushButton(QStringLiteral("Clear Log"), leftButtonArea());
    clear->setObjectName(QStringLiteral("ClearLogBtn"));
    clear->setAutoDefault(false);
    leftButtonArea()->layout()->addWidget(clear);
    connect(clear, &QPushButton::clicked, this, &TSqlSelectFrm::ClearLogBtnClick);
}

void TSqlSelectFrm::ClearLogBtnClick()
{
    // No question: every row goes, in the catalogue too; Cancel does not bring them back.
    m_history.deleteAll();
}

void TSqlSelectFrm::DBMemo1DblClick(const QModelIndex &index)
{
    if (index.isValid())
        m_history.setCurrentIndex(index.row());
    setPendingResult(QDialog::Accepted);
    done(QDialog::Accepted);
}
