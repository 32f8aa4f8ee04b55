#pragma once
// The visual side of the query builder: the metadata tree to drag tables from, the diagram with
// one box per object of the shown union part and the links between their columns, the union and
// sub-query tabs, the query tree pane and the columns pane. It never keeps a model of its own:
// every edit builds a new query from engine->query() and hands it to engine->setQuery(), and
// every sqlUpdated redraws from engine->query().

#include "core/querybuilder/QueryEngine.h"
#include "gui/components/QueryDiagramOptions.h"

#include <QWidget>

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
    // engine's model again). Names are as the catalogue or the query shows them.
    QString addObject(const QString &objectName); // returns the new object's alias/name
    void removeObject(const QString &alias);
    void setColumnSelected(const QString &alias, const QString &column, bool selected);
    void linkColumns(const QString &leftAlias, const QString &leftColumn,
                     const QString &rightAlias, const QString &rightColumn);

signals:
    void treePaneVisibilityChanged(bool visible);

private:
    void rebuild();

    QueryEngine *m_engine;
    QueryDiagramOptions m_options;
    QWidget *m_treePane = nullptr;
};
