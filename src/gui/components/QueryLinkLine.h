#pragma once
// A link on the query diagram: one line per column equality of a join's condition, or one line
// between the two boxes when the condition pairs no columns. Drawn in the "LinkPainter" style;
// an outer join marks the side whose rows are all kept.

#include "core/querybuilder/QueryModel.h"

#include <QGraphicsPathItem>
#include <QPointer>

class QueryObjectBox;

class QueryLinkLine : public QGraphicsPathItem
{
public:
    enum { Type = UserType + 21 };

    // `pair` is the index of the column equality in the link's condition, -1 for the whole link.
    QueryLinkLine(int link, int pair, Link::Type joinType, int painterStyle,
                  QueryObjectBox *left, int leftRow, QueryObjectBox *right, int rightRow);
    int type() const override { return Type; }
    int link() const { return m_link; }
    int pair() const { return m_pair; }
    // Redraws after a box moved.
    void updatePath();

private:
    int m_link, m_pair;
    Link::Type m_joinType;
    int m_style;
    QPointer<QueryObjectBox> m_left, m_right;
    int m_leftRow, m_rightRow;
};
