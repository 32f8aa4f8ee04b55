#pragma once
// The columns pane below the query diagram: one row per select item of the shown union part with
// its expression, alias, visibility, sort type and order, aggregate, grouping and criteria.
// Editing a cell turns into an edit of the model that the diagram hands to the engine.

#include "core/querybuilder/QueryModel.h"

#include <QTableWidget>

#include <functional>

class QueryColumnsPane : public QTableWidget
{
    Q_OBJECT
public:
    enum Column { ExpressionCol, AliasCol, VisibleCol, SortTypeCol, SortOrderCol, AggregateCol, GroupingCol, CriteriaCol };
    // An edit of the shown part; `owner` is the query the part belongs to (its ORDER BY).
    using PartEdit = std::function<void(Query &owner, SelectPart &part)>;

    explicit QueryColumnsPane(QWidget *parent = nullptr);
    void setApplier(std::function<void(const PartEdit &)> apply) { m_apply = std::move(apply); }
    void showPart(const Query &owner, int part, const DialectChoice &dialect);

private:
    void cellEdited(int row, int column);
    void comboChosen(int row, int column, const QString &text);
    void apply(const PartEdit &edit);
    void refill();

    std::function<void(const PartEdit &)> m_apply;
    Query m_owner;
    int m_part = 0;
    DialectChoice m_dialect;
    bool m_filling = false;
};
