#pragma once
// One FROM object on the query diagram: a title with its reference name and a row per column,
// each with a check box that says whether the column is in the select list. The first row, "*",
// stands for all columns. The box only draws; the diagram view reads the rows it hits.

#include <QGraphicsObject>
#include <QSet>

class QueryObjectBox : public QGraphicsObject
{
    Q_OBJECT
public:
    static constexpr int TitleRow = -1;
    static constexpr int NoRow = -2;

    QueryObjectBox(const QString &referenceName, const QString &caption, const QStringList &columns,
                   const QSet<QString> &selected, bool derived);

    QString referenceName() const { return m_reference; }
    QStringList columns() const { return m_columns; } // "*" first
    bool isDerived() const { return m_derived; }
    bool isTicked(int row) const;

    // The row under a point in scene coordinates: a column index, TitleRow or NoRow.
    int rowAt(const QPointF &scenePos) const;
    bool onCheckBox(const QPointF &scenePos) const;
    int rowOf(const QString &column) const;
    // Where a link meets the row, on the side that faces `towards` (scene coordinates).
    QPointF anchor(int row, const QPointF &towards) const;

    int currentRow() const { return m_current; }
    void setCurrentRow(int row);

    QRectF boundingRect() const override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;

signals:
    void moved();

protected:
    QVariant itemChange(GraphicsItemChange change, const QVariant &value) override;

private:
    QRectF rowRect(int row) const;
    QRectF checkRect(int row) const;

    QString m_reference;
    QString m_caption;
    QStringList m_columns;
    QSet<QString> m_selected; // lower-case column names
    bool m_derived;
    int m_current = 0;
    qreal m_width = 160;
};
