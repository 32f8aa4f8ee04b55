#pragma once
// The query tree pane: the query as an outline, a node per union part ("Unions") with its select
// items ("Expressions") and FROM objects ("Objects"), derived tables opening into their own
// parts. Captions, what is shown and what starts expanded come from the "TreePane" options.

#include "core/querybuilder/QueryModel.h"
#include "gui/components/QueryDiagramOptions.h"

#include <QTreeWidget>

class QueryTreePane : public QTreeWidget
{
    Q_OBJECT
public:
    explicit QueryTreePane(QWidget *parent = nullptr);
    void showQuery(const Query &query, const DialectChoice &dialect, const QueryDiagramOptions &options);

signals:
    // A union part of the main query was chosen (Enter or double-click).
    void partActivated(int part);

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void addQuery(QTreeWidgetItem *parent, const Query &query, const DialectChoice &dialect,
                  const QueryDiagramOptions &options, bool top);
};
