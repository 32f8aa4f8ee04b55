#include "gui/components/QueryLinkLine.h"

#include "gui/components/QueryObjectBox.h"

#include <QPainterPath>
#include <QPen>
#include <QtMath>

namespace {

enum Style { Simple, AccessStyle, EnterpriseManagerStyle };

// A filled arrow head at `tip`, pointing away from `from`: the kept side of an outer join.
void addArrow(QPainterPath &path, const QPointF &from, const QPointF &tip)
{
    const qreal angle = qAtan2(tip.y() - from.y(), tip.x() - from.x());
    const qreal size = 8;
    const QPointF a = tip - QPointF(qCos(angle - 0.45) * size, qSin(angle - 0.45) * size);
    const QPointF b = tip - QPointF(qCos(angle + 0.45) * size, qSin(angle + 0.45) * size);
    path.moveTo(tip);
    path.lineTo(a);
    path.lineTo(b);
    path.closeSubpath();
}

} // namespace

QueryLinkLine::QueryLinkLine(int link, int pair, Link::Type joinType, int painterStyle, QueryObjectBox *left,
                             int leftRow, QueryObjectBox *right, int rightRow)
    : m_link(link), m_pair(pair), m_joinType(joinType), m_style(painterStyle), m_left(left), m_right(right),
      m_leftRow(leftRow), m_rightRow(rightRow)
{
    setZValue(-1); // under the boxes
    setFlag(ItemIsSelectable);
    QString tip;
    switch (joinType) {
    case Link::Left: tip = QStringLiteral("LEFT OUTER JOIN"); break;
    case Link::Right: tip = QStringLiteral("RIGHT OUTER JOIN"); break;
    case Link::Full: tip = QStringLiteral("FULL OUTER JOIN"); break;
    case Link::Cross: tip = QStringLiteral("CROSS JOIN"); break;
    default: tip = QStringLiteral("INNER JOIN"); break;
    }
    setToolTip(tip + QStringLiteral(" (right-click to change)"));
    updatePath();
}

void QueryLinkLine::updatePath()
{
    if (!m_left || !m_right)
        return;
    const QPointF leftCentre = m_left->sceneBoundingRect().center();
    const QPointF rightCentre = m_right->sceneBoundingRect().center();
    const QPointF a = m_left->anchor(m_leftRow, rightCentre);
    const QPointF b = m_right->anchor(m_rightRow, leftCentre);
    // Short horizontal stubs leave each box on the side facing the other one.
    const qreal stubA = a.x() >= leftCentre.x() ? 14 : -14;
    const qreal stubB = b.x() >= rightCentre.x() ? 14 : -14;
    const QPointF a1 = a + QPointF(stubA, 0), b1 = b + QPointF(stubB, 0);

    QPainterPath path(a);
    if (m_style == Simple) {
        path.lineTo(b);
    } else if (m_style == AccessStyle) {
        path.lineTo(a1);
        path.lineTo(b1);
        path.lineTo(b);
    } else {
        // Right angles only, meeting half way between the boxes.
        const qreal midX = (a1.x() + b1.x()) / 2;
        path.lineTo(a1);
        path.lineTo(QPointF(midX, a1.y()));
        path.lineTo(QPointF(midX, b1.y()));
        path.lineTo(b1);
        path.lineTo(b);
    }
    // The kept side of an outer join gets the arrow: LEFT keeps the left object's rows.
    const bool arrowLeft = m_joinType == Link::Left || m_joinType == Link::Full;
    const bool arrowRight = m_joinType == Link::Right || m_joinType == Link::Full;
    if (arrowLeft)
        addArrow(path, m_style == Simple ? b : a1, a);
    if (arrowRight)
        addArrow(path, m_style == Simple ? a : b1, b);
    if (m_style == EnterpriseManagerStyle) {
        // Key ends: a small diamond where the line meets each box.
        for (const QPointF &p : {a1, b1})
            path.addPolygon(QPolygonF({p + QPointF(-3, 0), p + QPointF(0, -3), p + QPointF(3, 0), p + QPointF(0, 3), p + QPointF(-3, 0)}));
    }
    setPath(path);
}
