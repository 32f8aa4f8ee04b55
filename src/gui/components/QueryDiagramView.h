#pragma once
// The drawing area of the query diagram: a box per FROM object of one union part and the links
// between their columns. It draws what it is given and turns the mouse and the keyboard into
// requests (tick a column, link two columns, remove an object...) that the diagram carries out
// on the engine's model.
//
// Mouse: drag a box's title to move it, click a check box to tick a column, drag a column onto a
// column of another box to link them, right-click a box or a link for its menu, drop a table
// from the metadata tree to add it. Keyboard: Tab and Shift+Tab move between boxes, Up and Down
// between columns, Space ticks, Del removes the box, Ctrl+L links the current column, Enter opens
// a derived table, the menu key (or Shift+F10) opens the menu of the current box.

#include "core/querybuilder/QueryModel.h"
#include "gui/components/QueryDiagramOptions.h"

#include <QGraphicsView>
#include <QHash>

class QueryObjectBox;
class QueryLinkLine;
class QMenu;
struct MetadataCatalog;

class QueryDiagramView : public QGraphicsView
{
    Q_OBJECT
public:
    explicit QueryDiagramView(QWidget *parent = nullptr);

    void applyOptions(const QueryDiagramOptions &options);
    // Draws a union part. `key` names the tab, so box positions are kept per tab.
    void showPart(const SelectPart &part, const MetadataCatalog &catalog, const QString &key);

    QueryObjectBox *box(const QString &referenceName) const;
    QList<QueryObjectBox *> boxes() const { return m_boxes; }
    QList<QueryLinkLine *> lines() const { return m_lines; }
    QueryObjectBox *currentBox() const;
    void setCurrentBox(QueryObjectBox *box);

signals:
    void columnToggled(const QString &owner, const QString &column, bool selected);
    void linkRequested(const QString &leftOwner, const QString &leftColumn, const QString &rightOwner,
                       const QString &rightColumn);
    // Asks for the keyboard's link dialog, starting from a column.
    void linkDialogRequested(const QString &owner, const QString &column);
    void removeRequested(const QString &owner);
    void openDerivedRequested(const QString &owner);
    void linkTypeRequested(int link, Link::Type type);
    void linkConditionRequested(int link);
    void linkRemoveRequested(int link, int pair);
    void objectsDropped(const QStringList &names);

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    bool focusNextPrevChild(bool next) override;
    bool event(QEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    QueryObjectBox *boxAt(const QPointF &scenePos) const;
    void boxMenu(QueryObjectBox *box, const QPoint &globalPos);
    void linkMenu(QueryLinkLine *line, const QPoint &globalPos);
    void fillLinkMenu(QMenu *menu, int link, int pair);
    void rememberPositions();
    void toggleCurrent();

    QueryDiagramOptions m_options;
    QString m_key;
    QHash<QString, QHash<QString, QPointF>> m_positions; // per tab, per reference name (lower case)
    QPointF m_dropPos;
    bool m_hasDropPos = false;
    QList<QueryObjectBox *> m_boxes;
    QueryObjectBox *m_currentBox = nullptr; // the box the keyboard acts on
    QList<QueryLinkLine *> m_lines;
    QVector<Link> m_links;
    // A link being dragged from a column.
    QueryObjectBox *m_dragBox = nullptr;
    int m_dragRow = -1;
    QGraphicsLineItem *m_dragLine = nullptr;
};
