#include "gui/components/QueryDiagramView.h"

#include "core/querybuilder/MetadataProvider.h"
#include "gui/components/QueryDiagramEdits.h"
#include "gui/components/QueryLinkLine.h"
#include "gui/components/QueryMetadataTree.h"
#include "gui/components/QueryObjectBox.h"

#include <QActionGroup>
#include <QContextMenuEvent>
#include <QGraphicsScene>
#include <QMenu>
#include <QMimeData>
#include <QPainter>

namespace {

struct Colours
{
    QColor background, pattern, link;
};

// "Light gray on White", "Dark gray on Light gray", "Light gray on Dark gray".
Colours coloursOf(int darkness)
{
    switch (darkness) {
    case 1: return {QColor(0xd6, 0xd6, 0xd6), QColor(0x90, 0x90, 0x90), QColor(0x20, 0x20, 0x20)};
    case 2: return {QColor(0x4a, 0x4a, 0x4a), QColor(0x80, 0x80, 0x80), QColor(0xf0, 0xf0, 0xf0)};
    default: return {Qt::white, QColor(0xdc, 0xdc, 0xdc), QColor(0x30, 0x30, 0x30)};
    }
}

QString joinCaption(Link::Type type)
{
    switch (type) {
    case Link::Left: return QStringLiteral("LEFT OUTER JOIN");
    case Link::Right: return QStringLiteral("RIGHT OUTER JOIN");
    case Link::Full: return QStringLiteral("FULL OUTER JOIN");
    case Link::Cross: return QStringLiteral("CROSS JOIN");
    default: return QStringLiteral("INNER JOIN");
    }
}

} // namespace

QueryDiagramView::QueryDiagramView(QWidget *parent) : QGraphicsView(parent)
{
    setObjectName(QStringLiteral("DiagramView"));
    setScene(new QGraphicsScene(this));
    setAcceptDrops(true);
    setRenderHint(QPainter::Antialiasing);
    setAlignment(Qt::AlignLeft | Qt::AlignTop);
    setFocusPolicy(Qt::StrongFocus);
    applyOptions(m_options);
}

void QueryDiagramView::applyOptions(const QueryDiagramOptions &options)
{
    m_options = options;
    const Colours c = coloursOf(options.bkDarkness);
    // A dotted grid in the pattern colour over the background colour.
    QPixmap tile(16, 16);
    tile.fill(c.background);
    QPainter p(&tile);
    p.setPen(c.pattern);
    p.drawPoint(0, 0);
    p.end();
    setBackgroundBrush(QBrush(tile));
    setFrameShape(options.borderStyle == 0 ? QFrame::NoFrame : QFrame::StyledPanel);
    setLineWidth(qMax(0, options.borderWidth));
    for (QueryLinkLine *line : m_lines)
        line->setPen(QPen(c.link, 1.4));
}

QueryObjectBox *QueryDiagramView::box(const QString &referenceName) const
{
    for (QueryObjectBox *b : m_boxes)
        if (b->referenceName().compare(referenceName, Qt::CaseInsensitive) == 0)
            return b;
    return nullptr;
}

QueryObjectBox *QueryDiagramView::currentBox() const
{
    return m_boxes.contains(m_currentBox) ? m_currentBox : nullptr;
}

void QueryDiagramView::setCurrentBox(QueryObjectBox *box)
{
    scene()->clearSelection();
    m_currentBox = box;
    if (!box)
        return;
    box->setSelected(true);
    scene()->setFocusItem(box);
    ensureVisible(box);
}

void QueryDiagramView::rememberPositions()
{
    QHash<QString, QPointF> &positions = m_positions[m_key];
    for (QueryObjectBox *b : m_boxes)
        positions.insert(b->referenceName().toLower(), b->pos());
}

void QueryDiagramView::showPart(const SelectPart &part, const MetadataCatalog &catalog, const QString &key)
{
    rememberPositions();
    const QueryObjectBox *current = currentBox();
    const QString currentName = current ? current->referenceName() : QString();
    const int currentRow = current ? current->currentRow() : 0;
    m_key = key;
    m_dragBox = nullptr;
    m_dragLine = nullptr;
    m_boxes.clear();
    m_currentBox = nullptr;
    m_lines.clear();
    scene()->clear();
    m_links = part.links;

    QHash<QString, QPointF> &positions = m_positions[m_key];
    qreal nextX = 20;
    for (const QueryObjectBox *b : qAsConst(m_boxes))
        nextX = qMax(nextX, b->sceneBoundingRect().right() + 40);
    for (const QPointF &p : qAsConst(positions))
        nextX = qMax(nextX, p.x() + 220);
    for (int i = 0; i < part.objects.size(); ++i) {
        const SourceObject &o = part.objects.at(i);
        const QString ref = o.referenceName();
        const QStringList columns = QueryDiagramEdits::objectColumns(part, i, catalog);
        QSet<QString> selected;
        for (const QString &c : QStringList{QStringLiteral("*")} + columns)
            if (QueryDiagramEdits::isColumnSelected(part, ref, c))
                selected.insert(c.toLower());
        QString caption;
        if (o.kind == SourceObject::Derived)
            caption = QStringLiteral("subquery");
        else
            for (const Identifier &n : o.name)
                caption += (caption.isEmpty() ? QString() : QStringLiteral(".")) + n.name;
        auto *b = new QueryObjectBox(ref, caption, columns, selected, o.kind == SourceObject::Derived);
        scene()->addItem(b);
        if (positions.contains(ref.toLower())) {
            b->setPos(positions.value(ref.toLower()));
        } else if (m_hasDropPos) {
            b->setPos(m_dropPos);
            m_dropPos += QPointF(30, 30);
        } else {
            b->setPos(nextX, 20 + (i % 2) * 40);
            nextX += b->boundingRect().width() + 60;
        }
        positions.insert(ref.toLower(), b->pos());
        m_boxes << b;
    }
    m_hasDropPos = false;

    const QPen pen(coloursOf(m_options.bkDarkness).link, 1.4);
    for (int i = 0; i < part.links.size(); ++i) {
        const Link &l = part.links.at(i);
        const QVector<QueryDiagramEdits::ColumnPair> pairs = QueryDiagramEdits::linkedColumns(l);
        const auto add = [&](int pair, QueryObjectBox *a, int rowA, QueryObjectBox *b, int rowB) {
            auto *line = new QueryLinkLine(i, pair, l.type, m_options.linkPainter, a, rowA, b, rowB);
            line->setPen(pen);
            scene()->addItem(line);
            connect(a, &QueryObjectBox::moved, this, [line] { line->updatePath(); });
            connect(b, &QueryObjectBox::moved, this, [line] { line->updatePath(); });
            m_lines << line;
        };
        int drawn = 0;
        for (int p = 0; p < pairs.size(); ++p) {
            QueryObjectBox *a = box(pairs.at(p).leftOwner), *b = box(pairs.at(p).rightOwner);
            if (!a || !b || a == b)
                continue;
            add(p, a, a->rowOf(pairs.at(p).leftColumn), b, b->rowOf(pairs.at(p).rightColumn));
            ++drawn;
        }
        if (drawn == 0 && l.left >= 0 && l.right >= 0 && l.left < m_boxes.size() && l.right < m_boxes.size())
            add(-1, m_boxes.at(l.left), QueryObjectBox::TitleRow, m_boxes.at(l.right), QueryObjectBox::TitleRow);
    }
    scene()->setSceneRect(scene()->itemsBoundingRect().adjusted(-20, -20, 200, 200).united(QRectF(0, 0, 10, 10)));
    if (QueryObjectBox *b = box(currentName)) {
        b->setCurrentRow(currentRow);
        setCurrentBox(b);
    }
}

QueryObjectBox *QueryDiagramView::boxAt(const QPointF &scenePos) const
{
    for (QGraphicsItem *item : scene()->items(scenePos))
        if (auto *b = qobject_cast<QueryObjectBox *>(item->toGraphicsObject()))
            return b;
    return nullptr;
}

void QueryDiagramView::mousePressEvent(QMouseEvent *event)
{
    const QPointF pos = mapToScene(event->pos());
    QueryObjectBox *b = boxAt(pos);
    if (event->button() == Qt::LeftButton && b) {
        const int row = b->rowAt(pos);
        if (row >= 0) {
            b->setCurrentRow(row);
            setCurrentBox(b);
            if (b->onCheckBox(pos)) {
                emit columnToggled(b->referenceName(), b->columns().at(row), !b->isTicked(row));
            } else if (row > 0) {
                // Start a link: a line follows the mouse until it is dropped on another column.
                m_dragBox = b;
                m_dragRow = row;
                const QPointF from = b->anchor(row, pos);
                m_dragLine = scene()->addLine(QLineF(from, pos), QPen(palette().color(QPalette::Highlight), 1.5, Qt::DashLine));
            }
            event->accept();
            return;
        }
        m_currentBox = b;
    }
    QGraphicsView::mousePressEvent(event);
}

void QueryDiagramView::mouseDoubleClickEvent(QMouseEvent *event)
{
    QueryObjectBox *b = boxAt(mapToScene(event->pos()));
    if (b && b->isDerived() && b->rowAt(mapToScene(event->pos())) == QueryObjectBox::TitleRow) {
        emit openDerivedRequested(b->referenceName());
        return;
    }
    QGraphicsView::mouseDoubleClickEvent(event);
}

void QueryDiagramView::mouseMoveEvent(QMouseEvent *event)
{
    if (m_dragLine && m_dragBox) {
        const QPointF pos = mapToScene(event->pos());
        m_dragLine->setLine(QLineF(m_dragBox->anchor(m_dragRow, pos), pos));
        return;
    }
    QGraphicsView::mouseMoveEvent(event);
}

void QueryDiagramView::mouseReleaseEvent(QMouseEvent *event)
{
    if (m_dragLine) {
        const QPointF pos = mapToScene(event->pos());
        delete m_dragLine;
        m_dragLine = nullptr;
        QueryObjectBox *from = m_dragBox;
        m_dragBox = nullptr;
        QueryObjectBox *to = boxAt(pos);
        const int row = to ? to->rowAt(pos) : QueryObjectBox::NoRow;
        if (from && to && to != from && row > 0)
            emit linkRequested(from->referenceName(), from->columns().at(m_dragRow), to->referenceName(), to->columns().at(row));
        return;
    }
    QGraphicsView::mouseReleaseEvent(event);
}

void QueryDiagramView::contextMenuEvent(QContextMenuEvent *event)
{
    if (event->reason() == QContextMenuEvent::Keyboard) {
        if (QueryObjectBox *b = currentBox())
            boxMenu(b, viewport()->mapToGlobal(mapFromScene(b->sceneBoundingRect().topRight())));
        return;
    }
    const QPointF pos = mapToScene(event->pos());
    for (QGraphicsItem *item : scene()->items(pos)) {
        if (auto *b = qobject_cast<QueryObjectBox *>(item->toGraphicsObject())) {
            setCurrentBox(b);
            boxMenu(b, event->globalPos());
            return;
        }
    }
    // Links are thin: look a few pixels around the click.
    const QRectF near(pos - QPointF(4, 4), QSizeF(8, 8));
    for (QGraphicsItem *item : scene()->items(near))
        if (item->type() == QueryLinkLine::Type) {
            linkMenu(static_cast<QueryLinkLine *>(item), event->globalPos());
            return;
        }
}

void QueryDiagramView::boxMenu(QueryObjectBox *b, const QPoint &globalPos)
{
    QMenu menu(this);
    const QString ref = b->referenceName();
    const QString column = b->currentRow() > 0 ? b->columns().at(b->currentRow()) : QString();
    if (b->isDerived())
        menu.addAction(QStringLiteral("Open Subquery"), this, [this, ref] { emit openDerivedRequested(ref); });
    menu.addAction(QStringLiteral("Link Column...\tCtrl+L"), this, [this, ref, column] { emit linkDialogRequested(ref, column); });
    // The links of this box, each with its own join menu, so the keyboard reaches them too.
    const int self = m_boxes.indexOf(b);
    for (int i = 0; i < m_links.size(); ++i) {
        const Link &l = m_links.at(i);
        const int other = l.left == self ? l.right : l.right == self ? l.left : -1;
        if (other >= 0 && other < m_boxes.size())
            fillLinkMenu(menu.addMenu(QStringLiteral("Join with %1").arg(m_boxes.at(other)->referenceName())), i, -1);
    }
    menu.addSeparator();
    menu.addAction(QStringLiteral("Remove Object\tDel"), this, [this, ref] { emit removeRequested(ref); });
    menu.exec(globalPos);
}

void QueryDiagramView::linkMenu(QueryLinkLine *line, const QPoint &globalPos)
{
    QMenu menu(this);
    fillLinkMenu(&menu, line->link(), line->pair());
    menu.exec(globalPos);
}

void QueryDiagramView::fillLinkMenu(QMenu *menu, int index, int pair)
{
    if (index < 0 || index >= m_links.size())
        return;
    const Link &l = m_links.at(index);
    const QString left = l.left < m_boxes.size() ? m_boxes.at(l.left)->referenceName() : QString();
    const QString right = l.right < m_boxes.size() ? m_boxes.at(l.right)->referenceName() : QString();
    auto *group = new QActionGroup(menu);
    const QList<QPair<Link::Type, QString>> types{
        {Link::Inner, QStringLiteral("only matching rows")},
        {Link::Left, QStringLiteral("all rows of %1").arg(left)},
        {Link::Right, QStringLiteral("all rows of %1").arg(right)},
        {Link::Full, QStringLiteral("all rows of both")}};
    for (const auto &t : types) {
        QAction *a = menu->addAction(joinCaption(t.first) + QStringLiteral(": ") + t.second);
        a->setCheckable(true);
        a->setChecked(l.type == t.first);
        group->addAction(a);
        const Link::Type type = t.first;
        connect(a, &QAction::triggered, this, [this, index, type] { emit linkTypeRequested(index, type); });
    }
    menu->addSeparator();
    menu->addAction(QStringLiteral("Edit Condition..."), this, [this, index] { emit linkConditionRequested(index); });
    menu->addAction(QStringLiteral("Delete Link"), this, [this, index, pair] { emit linkRemoveRequested(index, pair); });
}

void QueryDiagramView::toggleCurrent()
{
    if (QueryObjectBox *b = currentBox())
        emit columnToggled(b->referenceName(), b->columns().at(b->currentRow()), !b->isTicked(b->currentRow()));
}

void QueryDiagramView::keyPressEvent(QKeyEvent *event)
{
    QueryObjectBox *b = currentBox();
    if (!b && !m_boxes.isEmpty() && event->key() != Qt::Key_Tab && event->key() != Qt::Key_Backtab) {
        setCurrentBox(m_boxes.first());
        b = m_boxes.first();
    }
    if (b) {
        const bool ctrl = event->modifiers() & Qt::ControlModifier;
        const QString column = b->currentRow() > 0 ? b->columns().at(b->currentRow()) : QString();
        switch (event->key()) {
        case Qt::Key_Up:
        case Qt::Key_Down:
            if (ctrl)
                b->moveBy(0, event->key() == Qt::Key_Up ? -10 : 10);
            else
                b->setCurrentRow(b->currentRow() + (event->key() == Qt::Key_Up ? -1 : 1));
            return;
        case Qt::Key_Left:
        case Qt::Key_Right:
            if (ctrl) {
                b->moveBy(event->key() == Qt::Key_Left ? -10 : 10, 0);
                return;
            }
            break;
        case Qt::Key_Space: toggleCurrent(); return;
        case Qt::Key_Delete: emit removeRequested(b->referenceName()); return;
        case Qt::Key_L:
            if (ctrl) {
                emit linkDialogRequested(b->referenceName(), column);
                return;
            }
            break;
        case Qt::Key_Return:
        case Qt::Key_Enter:
            if (b->isDerived()) {
                emit openDerivedRequested(b->referenceName());
                return;
            }
            break;
        case Qt::Key_F10:
            if (event->modifiers() & Qt::ShiftModifier) {
                boxMenu(b, viewport()->mapToGlobal(mapFromScene(b->sceneBoundingRect().topRight())));
                return;
            }
            break;
        default: break;
        }
    }
    QGraphicsView::keyPressEvent(event);
}

// The graphics view hands Tab to the scene, which may swallow it; here Tab walks the boxes.
bool QueryDiagramView::event(QEvent *event)
{
    if (event->type() == QEvent::KeyPress) {
        auto *key = static_cast<QKeyEvent *>(event);
        if ((key->key() == Qt::Key_Tab || key->key() == Qt::Key_Backtab) && !(key->modifiers() & (Qt::ControlModifier | Qt::AltModifier))) {
            focusNextPrevChild(key->key() == Qt::Key_Tab && !(key->modifiers() & Qt::ShiftModifier));
            return true;
        }
    }
    return QGraphicsView::event(event);
}

// Tab walks through the boxes; past the last one it leaves the diagram as usual.
bool QueryDiagramView::focusNextPrevChild(bool next)
{
    if (!m_boxes.isEmpty()) {
        const int at = m_boxes.indexOf(currentBox());
        const int to = at < 0 ? (next ? 0 : m_boxes.size() - 1) : at + (next ? 1 : -1);
        if (to >= 0 && to < m_boxes.size()) {
            setCurrentBox(m_boxes.at(to));
            return true;
        }
        // Leaving: the next visit starts again at the first (or, backwards, the last) box.
        setCurrentBox(nullptr);
        scene()->setFocusItem(nullptr);
    }
    return QGraphicsView::focusNextPrevChild(next);
}

void QueryDiagramView::dragEnterEvent(QDragEnterEvent *event)
{
    if (event->mimeData()->hasFormat(QueryMetadataTree::mimeType()))
        event->acceptProposedAction();
    else
        QGraphicsView::dragEnterEvent(event);
}

void QueryDiagramView::dragMoveEvent(QDragMoveEvent *event)
{
    if (event->mimeData()->hasFormat(QueryMetadataTree::mimeType()))
        event->acceptProposedAction();
    else
        QGraphicsView::dragMoveEvent(event);
}

void QueryDiagramView::dropEvent(QDropEvent *event)
{
    if (!event->mimeData()->hasFormat(QueryMetadataTree::mimeType())) {
        QGraphicsView::dropEvent(event);
        return;
    }
    event->acceptProposedAction();
    m_dropPos = mapToScene(event->position().toPoint());
    m_hasDropPos = true;
    const QString names = QString::fromUtf8(event->mimeData()->data(QueryMetadataTree::mimeType()));
    emit objectsDropped(names.split(QLatin1Char('\n'), Qt::SkipEmptyParts));
}
