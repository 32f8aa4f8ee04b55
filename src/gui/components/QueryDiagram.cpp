#include "gui/components/QueryDiagram.h"

#include "core/querybuilder/SqlGenerator.h"
#include "core/querybuilder/SqlParser.h"
#include "gui/components/QueryDiagramEdits.h"
#include "gui/components/QueryDiagramView.h"
#include "gui/components/QueryLinkDialog.h"
#include "gui/components/QueryMetadataTree.h"
#include "gui/components/QueryObjectBox.h"
#include "gui/components/QueryTreePane.h"

#include <QHBoxLayout>
#include <QInputDialog>
#include <QMenu>
#include <QMessageBox>
#include <QSplitter>
#include <QTabBar>
#include <QToolButton>

namespace {

// The catalogue with the links its foreign keys suggest for the part, as the engine finds them.
QVector<Link> suggestedFor(const SelectPart &part, const MetadataCatalog &catalog)
{
    QueryEngine probe;
    probe.setMetadata(catalog);
    Query q;
    q.parts << part;
    probe.setQuery(q);
    return probe.suggestedLinks();
}

} // namespace

QueryDiagram::QueryDiagram(QueryEngine *engine, QWidget *parent) : QWidget(parent), m_engine(engine)
{
    setObjectName(QStringLiteral("QueryBuilder"));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    m_vertical = new QSplitter(Qt::Vertical, this);
    layout->addWidget(m_vertical);
    m_horizontal = new QSplitter(Qt::Horizontal, m_vertical);
    m_metadataTree = new QueryMetadataTree(m_horizontal);

    auto *centre = new QWidget(m_horizontal);
    auto *centreLayout = new QVBoxLayout(centre);
    centreLayout->setContentsMargins(0, 0, 0, 0);
    centreLayout->setSpacing(0);
    auto *tabRow = new QHBoxLayout;
    m_tabBar = new QTabBar(centre);
    m_tabBar->setObjectName(QStringLiteral("UnionTabs"));
    m_tabBar->setContextMenuPolicy(Qt::CustomContextMenu);
    m_tabBar->setFocusPolicy(Qt::StrongFocus);
    m_tabBar->setDrawBase(false);
    m_addUnion = new QToolButton(centre);
    m_addUnion->setObjectName(QStringLiteral("tbAddUnion"));
    m_addUnion->setText(QStringLiteral("+"));
    m_addUnion->setToolTip(QStringLiteral("Add a UNION part"));
    m_addUnion->setAutoRaise(true);
    tabRow->addWidget(m_tabBar);
    tabRow->addWidget(m_addUnion);
    tabRow->addStretch();
    centreLayout->addLayout(tabRow);
    m_view = new QueryDiagramView(centre);
    centreLayout->addWidget(m_view);

    m_treePane = new QueryTreePane(m_horizontal);
    m_columns = new QueryColumnsPane(m_vertical);
    m_horizontal->setStretchFactor(1, 1);
    m_vertical->setStretchFactor(0, 1);

    m_columns->setApplier([this](const QueryColumnsPane::PartEdit &change) { edit(change); });
    connect(m_engine, &QueryEngine::sqlUpdated, this, &QueryDiagram::rebuild);
    connect(m_metadataTree, &QueryMetadataTree::addRequested, this, [this](const QString &name) { addObject(name); });
    connect(m_view, &QueryDiagramView::objectsDropped, this, [this](const QStringList &names) {
        for (const QString &name : names)
            addObject(name);
    });
    connect(m_view, &QueryDiagramView::columnToggled, this, &QueryDiagram::setColumnSelected);
    connect(m_view, &QueryDiagramView::linkRequested, this, &QueryDiagram::linkColumns);
    connect(m_view, &QueryDiagramView::removeRequested, this, &QueryDiagram::removeObject);
    connect(m_view, &QueryDiagramView::openDerivedRequested, this, &QueryDiagram::openDerived);
    connect(m_view, &QueryDiagramView::linkDialogRequested, this, &QueryDiagram::openLinkDialog);
    connect(m_view, &QueryDiagramView::linkConditionRequested, this, &QueryDiagram::editLinkCondition);
    connect(m_view, &QueryDiagramView::linkTypeRequested, this, [this](int link, Link::Type type) {
        edit([=](Query &, SelectPart &part) {
            if (link < part.links.size())
                part.links[link].type = type;
        });
    });
    connect(m_view, &QueryDiagramView::linkRemoveRequested, this, [this](int link, int pair) {
        edit([=](Query &, SelectPart &part) { QueryDiagramEdits::removeLink(part, link, pair); });
    });
    connect(m_tabBar, &QTabBar::currentChanged, this, [this](int index) {
        if (index >= 0 && index < m_tabs.size()) {
            m_current = m_tabs.at(index);
            rebuild();
        }
    });
    connect(m_tabBar, &QWidget::customContextMenuRequested, this, &QueryDiagram::tabMenu);
    connect(m_addUnion, &QToolButton::clicked, this, &QueryDiagram::addUnionPart);
    connect(m_treePane, &QueryTreePane::partActivated, this, [this](int part) {
        for (int i = 0; i < m_tabs.size(); ++i)
            if (m_tabs.at(i).steps.isEmpty() && m_tabs.at(i).part == part)
                setCurrentTab(i);
    });

    layoutPanes();
    rebuild();
}

QueryDiagram::~QueryDiagram() = default;

void QueryDiagram::applyOptions(const QueryDiagramOptions &options)
{
    const bool treeWas = m_options.showTreePane;
    m_options = options;
    m_view->applyOptions(options);
    layoutPanes();
    reloadMetadata();
    rebuild();
    if (treeWas != options.showTreePane)
        emit treePaneVisibilityChanged(options.showTreePane);
}

// The side panes and the columns pane take their share of the splitters from the "SplitHorizontal"
// and "SplitVertical" spin boxes: each step is a fifth of the diagram's size.
void QueryDiagram::layoutPanes()
{
    m_metadataTree->setVisible(m_options.showMetadataTreePane);
    m_treePane->setVisible(m_options.showTreePane);
    m_columns->setVisible(m_options.showColumnsPane);
    if (m_sized)
        sizePanes();
    const int icon = m_options.addObjectStyle == 0 ? 24 : m_options.addObjectStyle == 1 ? 16 : 0;
    m_metadataTree->setIconSize(QSize(icon, icon));
    m_tabBar->setShape(m_options.tabStyle == 1 ? QTabBar::TriangularNorth : QTabBar::RoundedNorth);
}

void QueryDiagram::sizePanes()
{
    // Each step of a split option gives the metadata tree a sixth of the width and the query
    // tree, with its deeper nodes, a fifth (the columns pane a fifth of the height), up to four
    // steps.
    const int width = qMax(m_horizontal->width(), 600);
    const int steps = qBound(1, m_options.splitHorizontal, 4);
    const int left = steps * width / 6, right = steps * width / 5;
    m_horizontal->setSizes({left, qMax(width - left - right, width / 3), right});
    const int height = qMax(m_vertical->height(), 400);
    const int below = qBound(1, m_options.splitVertical, 4) * height / 5;
    m_vertical->setSizes({height - below, below});
}

void QueryDiagram::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    // Splitter sizes given before the first show are spread by the panes' size hints; now the
    // panes have their real size.
    if (!m_sized) {
        m_sized = true;
        sizePanes();
    }
}

void QueryDiagram::setTreePaneVisible(bool visible)
{
    if (m_options.showTreePane == visible)
        return;
    m_options.showTreePane = visible;
    m_treePane->setVisible(visible);
    // A pane hidden at the first show had no share yet.
    if (visible && m_sized)
        sizePanes();
    emit treePaneVisibilityChanged(visible);
}

bool QueryDiagram::isTreePaneVisible() const { return m_options.showTreePane; }

void QueryDiagram::reloadMetadata()
{
    m_metadataTree->reload(m_engine->metadata(), m_options);
    rebuild(); // the boxes list the catalogue's columns
}

QString QueryDiagram::subqueryTitle(Query &root, const QVector<int> &steps) const
{
    QStringList names;
    Query *q = &root;
    for (int step : steps) {
        const QVector<QueryDiagramEdits::Nested> nested = QueryDiagramEdits::nestedQueries(*q);
        if (step >= nested.size())
            break;
        names << nested.at(step).title;
        q = nested.at(step).query;
    }
    return names.join(QStringLiteral(" > "));
}

void QueryDiagram::rebuild()
{
    Query root = m_engine->query();
    // The tabs: one per union part of the main query, then those of each open sub-query.
    QVector<Tab> tabs;
    QStringList titles;
    const int rootParts = qMax(1, int(root.parts.size()));
    for (int p = 0; p < rootParts; ++p) {
        tabs.append(Tab{{}, p});
        titles << (rootParts == 1 ? QStringLiteral("Main Query") : QStringLiteral("Union %1").arg(p + 1));
    }
    QVector<QVector<int>> stillOpen;
    for (const QVector<int> &steps : qAsConst(m_openSubqueries)) {
        const Query *sub = QueryDiagramEdits::queryAt(root, steps);
        if (!sub || sub->parts.isEmpty())
            continue;
        stillOpen << steps;
        const QString title = subqueryTitle(root, steps);
        for (int p = 0; p < sub->parts.size(); ++p) {
            tabs.append(Tab{steps, p});
            titles << (sub->parts.size() == 1 ? title : QStringLiteral("%1 (Union %2)").arg(title).arg(p + 1));
        }
    }
    m_openSubqueries = stillOpen;
    int current = 0;
    for (int i = 0; i < tabs.size(); ++i)
        if (tabs.at(i).steps == m_current.steps && tabs.at(i).part == m_current.part)
            current = i;
    m_tabs = tabs;
    m_current = tabs.at(current);
    {
        const QSignalBlocker block(m_tabBar);
        while (m_tabBar->count() > tabs.size())
            m_tabBar->removeTab(m_tabBar->count() - 1);
        for (int i = 0; i < tabs.size(); ++i) {
            if (i < m_tabBar->count())
                m_tabBar->setTabText(i, titles.at(i));
            else
                m_tabBar->addTab(titles.at(i));
        }
        m_tabBar->setCurrentIndex(current);
    }

    Query *owner = QueryDiagramEdits::queryAt(root, m_current.steps);
    const SelectPart empty;
    const SelectPart &part = owner && m_current.part < owner->parts.size() ? owner->parts.at(m_current.part) : empty;
    QString key;
    for (int step : m_current.steps)
        key += QString::number(step) + QLatin1Char('/');
    m_view->showPart(part, m_engine->metadata(), key + QString::number(m_current.part));
    m_columns->showPart(owner ? *owner : Query(), m_current.part, m_engine->dialect());
    m_treePane->showQuery(root, m_engine->dialect(), m_options);
}

void QueryDiagram::edit(const QueryColumnsPane::PartEdit &change)
{
    Query q = m_engine->query();
    Query *owner = QueryDiagramEdits::queryAt(q, m_current.steps);
    if (owner && owner->parts.isEmpty() && m_current.steps.isEmpty())
        owner->parts.append(SelectPart()); // the first object of an empty query starts its first part
    if (owner && m_current.part < owner->parts.size()) {
        change(*owner, owner->parts[m_current.part]);
        // Refused while sleeping: the engine keeps its model and the redraw below shows it.
        m_engine->setQuery(q);
    }
    rebuild();
}

QString QueryDiagram::addObject(const QString &objectName)
{
    QString added;
    const MetadataCatalog &catalog = m_engine->metadata();
    edit([&](Query &, SelectPart &part) {
        added = QueryDiagramEdits::addObject(part, objectName, catalog);
        if (!catalog.foreignKeys.isEmpty())
            QueryDiagramEdits::addSuggestedLinks(part, suggestedFor(part, catalog));
    });
    if (QueryObjectBox *b = m_view->box(added))
        m_view->setCurrentBox(b);
    return added;
}

void QueryDiagram::removeObject(const QString &alias)
{
    edit([&](Query &owner, SelectPart &part) {
        if (!QueryDiagramEdits::removeObject(part, alias))
            return;
        QVector<SortItem> orderBy;
        for (const SortItem &s : owner.orderBy)
            if (!QueryDiagramEdits::mentionsObject(s.expression, alias))
                orderBy.append(s);
        owner.orderBy = orderBy;
    });
    if (!m_view->boxes().isEmpty())
        m_view->setCurrentBox(m_view->boxes().first());
}

void QueryDiagram::setColumnSelected(const QString &alias, const QString &column, bool selected)
{
    edit([&](Query &, SelectPart &part) { QueryDiagramEdits::setColumnSelected(part, alias, column, selected); });
}

void QueryDiagram::linkColumns(const QString &leftAlias, const QString &leftColumn, const QString &rightAlias,
                               const QString &rightColumn)
{
    edit([&](Query &, SelectPart &part) {
        QueryDiagramEdits::linkColumns(part, leftAlias, leftColumn, rightAlias, rightColumn);
    });
}

void QueryDiagram::openLinkDialog(const QString &owner, const QString &column)
{
    QueryLinkDialog::Objects objects;
    for (const QueryObjectBox *b : m_view->boxes())
        objects.append({b->referenceName(), b->columns().mid(1)});
    if (objects.size() < 2) {
        QMessageBox::information(this, QStringLiteral("Link Columns"),
                                 QStringLiteral("Add a second object to the diagram before linking columns."));
        return;
    }
    QueryLinkDialog dialog(objects, owner, column, this);
    if (dialog.exec() == QDialog::Accepted)
        linkColumns(dialog.leftOwner(), dialog.leftColumn(), dialog.rightOwner(), dialog.rightColumn());
}

void QueryDiagram::editLinkCondition(int link)
{
    const Query q = m_engine->query();
    const Query *owner = QueryDiagramEdits::queryAt(const_cast<Query &>(q), m_current.steps);
    if (!owner || m_current.part >= owner->parts.size() || link >= owner->parts.at(m_current.part).links.size())
        return;
    const SqlGenerator generator(m_engine->dialect());
    bool ok = false;
    const QString text = QInputDialog::getText(this, QStringLiteral("Join Condition"), QStringLiteral("&ON"), QLineEdit::Normal,
                                               generator.conditions(owner->parts.at(m_current.part).links.at(link).condition), &ok);
    if (!ok)
        return;
    try {
        const ConditionGroup condition = text.trimmed().isEmpty() ? ConditionGroup()
                                                                  : SqlParser::parseCondition(text, m_engine->dialect().dialect);
        edit([&](Query &, SelectPart &part) { part.links[link].condition = condition; });
    } catch (const SqlParseError &e) {
        QMessageBox::critical(this, QStringLiteral("Join Condition"), e.reason());
    }
}

void QueryDiagram::addUnionPart()
{
    Query q = m_engine->query();
    Query *owner = QueryDiagramEdits::queryAt(q, m_current.steps);
    if (!owner)
        return;
    if (owner->parts.isEmpty())
        owner->parts.append(SelectPart());
    owner->parts.append(SelectPart());
    const int added = int(owner->parts.size()) - 1;
    if (m_engine->setQuery(q))
        m_current.part = added;
    rebuild();
}

bool QueryDiagram::openDerived(const QString &alias)
{
    Query q = m_engine->query();
    Query *owner = QueryDiagramEdits::queryAt(q, m_current.steps);
    if (!owner || m_current.part >= owner->parts.size())
        return false;
    const int object = QueryDiagramEdits::findObject(owner->parts.at(m_current.part), alias);
    if (object < 0 || !owner->parts.at(m_current.part).objects.at(object).derived)
        return false;
    const Query *target = owner->parts[m_current.part].objects[object].derived.get();
    const QVector<QueryDiagramEdits::Nested> nested = QueryDiagramEdits::nestedQueries(*owner);
    for (int i = 0; i < nested.size(); ++i) {
        if (nested.at(i).query != target)
            continue;
        const QVector<int> steps = m_current.steps + QVector<int>{i};
        if (!m_openSubqueries.contains(steps))
            m_openSubqueries.append(steps);
        m_current = Tab{steps, 0};
        rebuild();
        return true;
    }
    return false;
}

int QueryDiagram::tabCount() const { return m_tabBar->count(); }
int QueryDiagram::currentTab() const { return m_tabBar->currentIndex(); }
void QueryDiagram::setCurrentTab(int index) { m_tabBar->setCurrentIndex(index); }
QString QueryDiagram::tabTitle(int index) const { return m_tabBar->tabText(index); }

void QueryDiagram::tabMenu(const QPoint &pos)
{
    const int index = m_tabBar->tabAt(pos) >= 0 ? m_tabBar->tabAt(pos) : m_tabBar->currentIndex();
    if (index < 0 || index >= m_tabs.size())
        return;
    setCurrentTab(index);
    const Tab tab = m_tabs.at(index);
    Query q = m_engine->query();
    Query *owner = QueryDiagramEdits::queryAt(q, tab.steps);
    QMenu menu(this);
    menu.addAction(QStringLiteral("Add Union Part"), this, &QueryDiagram::addUnionPart);
    if (owner && owner->parts.size() > 1 && tab.part < owner->parts.size()) {
        if (tab.part > 0) {
            QMenu *op = menu.addMenu(QStringLiteral("Combine With Previous Part"));
            const QList<QPair<QString, QPair<SelectPart::SetOperator, bool>>> ops{
                {QStringLiteral("UNION"), {SelectPart::Union, false}},
                {QStringLiteral("UNION ALL"), {SelectPart::Union, true}},
                {QStringLiteral("EXCEPT"), {SelectPart::Except, false}},
                {QStringLiteral("INTERSECT"), {SelectPart::Intersect, false}}};
            for (const auto &o : ops) {
                QAction *a = op->addAction(o.first);
                a->setCheckable(true);
                const SelectPart &p = owner->parts.at(tab.part);
                a->setChecked(p.setOperator == o.second.first && p.all == o.second.second);
                const auto value = o.second;
                connect(a, &QAction::triggered, this, [this, value] {
                    edit([&](Query &, SelectPart &part) {
                        part.setOperator = value.first;
                        part.all = value.second;
                    });
                });
            }
        }
        menu.addAction(QStringLiteral("Remove Union Part"), this, [this, tab] {
            Query edited = m_engine->query();
            Query *parts = QueryDiagramEdits::queryAt(edited, tab.steps);
            if (!parts || tab.part >= parts->parts.size() || parts->parts.size() < 2)
                return;
            parts->parts.remove(tab.part);
            m_current.part = qMax(0, tab.part - 1);
            m_engine->setQuery(edited);
            rebuild();
        });
    }
    if (!tab.steps.isEmpty())
        menu.addAction(QStringLiteral("Close Subquery Tab"), this, [this, tab] {
            m_openSubqueries.removeAll(tab.steps);
            m_current = Tab{};
            rebuild();
        });
    menu.exec(m_tabBar->mapToGlobal(pos));
}
