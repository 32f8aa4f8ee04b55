#pragma once
// The visual side of the query builder: the metadata tree to drag tables from, the diagram with
// one box per object of the shown union part and the links between their columns, the union and
// sub-query tabs, the query tree pane and the columns pane. It keeps no model of its own: every
// edit copies engine->query(), changes the copy and hands it to engine->setQuery(), and every
// sqlUpdated redraws from engine->query().

#include "core/querybuilder/QueryEngine.h"
#include "gui/components/QueryColumnsPane.h"
#include "gui/components/QueryDiagramOptions.h"

#include <QWidget>

class QSplitter;
class QTabBar;
class QToolButton;
class QueryDiagramView;
class QueryMetadataTree;
class QueryTreePane;

class QueryDiagram : public QWidget
{
    Q_OBJECT
public:
    explicit QueryDiagram(QueryEngine *engine, QWidget *parent = nullptr);
    ~QueryDiagram() override;

    void applyOptions(const QueryDiagramOptions &options);
    QueryDiagramOptions options() const { return m_options; }

    // The query tree pane ("Unions", "Expressions", "Objects").
    void setTreePaneVisible(bool visible);
    bool isTreePaneVisible() const;

    // Rebuilds the metadata tree from engine->metadata() (after the window loaded it).
    void reloadMetadata();

    // What the keyboard, the mouse and the tests use; each pushes a new model into the engine
    // with engine->setQuery() (which may refuse while sleeping: then the diagram shows the
    // engine's model again). Names are as the catalogue or the query shows them. They act on the
    // union part of the current tab.
    QString addObject(const QString &objectName); // returns the new object's alias/name
    void removeObject(const QString &alias);
    void setColumnSelected(const QString &alias, const QString &column, bool selected);
    void linkColumns(const QString &leftAlias, const QString &leftColumn,
                     const QString &rightAlias, const QString &rightColumn);

    // Union parts and sub-query tabs.
    void addUnionPart();
    // Opens a derived table of the current part in a tab of its own and shows it.
    bool openDerived(const QString &alias);
    int tabCount() const;
    int currentTab() const;
    void setCurrentTab(int index);
    QString tabTitle(int index) const;

signals:
    void treePaneVisibilityChanged(bool visible);

protected:
    void showEvent(QShowEvent *event) override;

private:
    struct Tab
    {
        QVector<int> steps; // into nested queries, from the main query
        int part = 0;
    };

    void rebuild();
    void edit(const QueryColumnsPane::PartEdit &change);
    void editLinkCondition(int link);
    void openLinkDialog(const QString &owner, const QString &column);
    void tabMenu(const QPoint &pos);
    void layoutPanes();
    // The splitters' shares from the options, over the sizes the panes have now.
    void sizePanes();
    QString subqueryTitle(Query &root, const QVector<int> &steps) const;

    QueryEngine *m_engine;
    QueryDiagramOptions m_options;
    QVector<Tab> m_tabs;
    QVector<QVector<int>> m_openSubqueries;
    Tab m_current;
    QSplitter *m_vertical = nullptr;
    QSplitter *m_horizontal = nullptr;
    QueryMetadataTree *m_metadataTree = nullptr;
    QueryTreePane *m_treePane = nullptr;
    QTabBar *m_tabBar = nullptr;
    QToolButton *m_addUnion = nullptr;
    QueryDiagramView *m_view = nullptr;
    QueryColumnsPane *m_columns = nullptr;
    bool m_sized = false; // the panes got their shares at the first show
};
