#include "gui/components/QueryObjectBox.h"

#include <QApplication>
#include <QFontMetricsF>
#include <QPainter>
#include <QStyleOptionGraphicsItem>

namespace {
const qreal RowHeight = 18;
const qreal TitleHeight = 22;
const qreal CheckSize = 11;
}

QueryObjectBox::QueryObjectBox(const QString &referenceName, const QString &caption, const QStringList &columns,
                               const QSet<QString> &selected, bool derived)
    : m_reference(referenceName), m_caption(caption), m_columns(QStringList{QStringLiteral("*")} + columns),
      m_selected(selected), m_derived(derived)
{
    setFlags(ItemIsMovable | ItemIsSelectable | ItemIsFocusable | ItemSendsGeometryChanges);
    setToolTip(caption);
    const QFontMetricsF fm(QApplication::font());
    qreal width = fm.horizontalAdvance(caption) + 24;
    for (const QString &c : m_columns)
        width = qMax(width, fm.horizontalAdvance(c) + CheckSize + 24);
    m_width = qBound<qreal>(120, width, 320);
}

bool QueryObjectBox::isTicked(int row) const
{
    return row >= 0 && row < m_columns.size() && m_selected.contains(m_columns.at(row).toLower());
}

QRectF QueryObjectBox::boundingRect() const
{
    return QRectF(0, 0, m_width, TitleHeight + RowHeight * m_columns.size() + 4);
}

QRectF QueryObjectBox::rowRect(int row) const
{
    return QRectF(2, TitleHeight + RowHeight * row, m_width - 4, RowHeight);
}

QRectF QueryObjectBox::checkRect(int row) const
{
    const QRectF r = rowRect(row);
    return QRectF(r.left() + 4, r.center().y() - CheckSize / 2, CheckSize, CheckSize);
}

int QueryObjectBox::rowAt(const QPointF &scenePos) const
{
    const QPointF p = mapFromScene(scenePos);
    if (!boundingRect().contains(p))
        return NoRow;
    if (p.y() < TitleHeight)
        return TitleRow;
    const int row = int((p.y() - TitleHeight) / RowHeight);
    return row < m_columns.size() ? row : NoRow;
}

bool QueryObjectBox::onCheckBox(const QPointF &scenePos) const
{
    const int row = rowAt(scenePos);
    return row >= 0 && checkRect(row).adjusted(-3, -3, 3, 3).contains(mapFromScene(scenePos));
}

int QueryObjectBox::rowOf(const QString &column) const
{
    for (int i = 0; i < m_columns.size(); ++i)
        if (m_columns.at(i).compare(column, Qt::CaseInsensitive) == 0)
            return i;
    return -1;
}

QPointF QueryObjectBox::anchor(int row, const QPointF &towards) const
{
    const QRectF r = row >= 0 ? rowRect(row) : QRectF(0, 0, m_width, TitleHeight);
    const QPointF centre = mapToScene(r.center());
    const bool right = towards.x() > centre.x();
    return mapToScene(QPointF(right ? m_width : 0, r.center().y()));
}

void QueryObjectBox::setCurrentRow(int row)
{
    m_current = qBound(0, row, m_columns.size() - 1);
    update();
}

QVariant QueryObjectBox::itemChange(GraphicsItemChange change, const QVariant &value)
{
    if (change == ItemPositionHasChanged)
        emit moved();
    return QGraphicsObject::itemChange(change, value);
}

void QueryObjectBox::paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *)
{
    const QPalette pal = QApplication::palette();
    const bool active = isSelected() || hasFocus();
    const QRectF outer = boundingRect();
    painter->setPen(QPen(active ? pal.color(QPalette::Highlight) : pal.color(QPalette::Mid), active ? 2 : 1));
    painter->setBrush(pal.color(QPalette::Base));
    painter->drawRect(outer.adjusted(0.5, 0.5, -0.5, -0.5));

    const QRectF title(1, 1, m_width - 2, TitleHeight - 1);
    painter->fillRect(title, active ? pal.color(QPalette::Highlight) : pal.color(QPalette::Button));
    painter->setPen(active ? pal.color(QPalette::HighlightedText) : pal.color(QPalette::ButtonText));
    QFont bold = painter->font();
    bold.setBold(true);
    painter->setFont(bold);
    const QString caption = m_caption.compare(m_reference, Qt::CaseInsensitive) == 0 || m_caption.isEmpty()
                                ? m_reference
                                : m_reference + QStringLiteral(" (") + m_caption + QLatin1Char(')');
    painter->drawText(title.adjusted(6, 0, -4, 0), Qt::AlignVCenter | Qt::AlignLeft,
                      QFontMetricsF(bold).elidedText(caption, Qt::ElideRight, title.width() - 10));
    painter->setFont(QApplication::font());

    for (int row = 0; row < m_columns.size(); ++row) {
        const QRectF r = rowRect(row);
        if (row == m_current && hasFocus())
            painter->fillRect(r, pal.color(QPalette::AlternateBase).darker(110));
        const QRectF box = checkRect(row);
        painter->setPen(pal.color(QPalette::Text));
        painter->setBrush(pal.color(QPalette::Base));
        painter->drawRect(box);
        if (isTicked(row)) {
            painter->setPen(QPen(pal.color(QPalette::Text), 1.6));
            painter->drawPolyline(QPolygonF({box.topLeft() + QPointF(2, 5.5), box.topLeft() + QPointF(4.5, 8.5),
                                             box.topLeft() + QPointF(9, 2.5)}));
        }
        painter->setPen(pal.color(QPalette::Text));
        painter->drawText(r.adjusted(CheckSize + 10, 0, -2, 0), Qt::AlignVCenter | Qt::AlignLeft, m_columns.at(row));
    }
}
