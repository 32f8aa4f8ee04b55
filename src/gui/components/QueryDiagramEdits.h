#pragma once
// The edits the diagram makes to a query model, apart from any widget: adding and removing FROM
// objects, ticking columns, linking columns, and finding the query a tab shows. The diagram
// copies engine->query(), edits the copy with these and hands it back to the engine.

#include "core/querybuilder/MetadataProvider.h"
#include "core/querybuilder/QueryModel.h"

namespace QueryDiagramEdits {

// A column named through its object: "alias.column", as the diagram writes a ticked column.
Expr columnRef(const QString &owner, const QString &column);
// The object and column an expression names: "owner.column" or a bare "column" (owner empty).
// False for anything else.
bool readColumnRef(const Expr &expr, QString *owner, QString *column);
// Whether an expression mentions an object by its reference name ("alias.anything").
bool mentionsObject(const Expr &expr, const QString &owner);

// The index of the object with this reference name (case-insensitive), or -1.
int findObject(const SelectPart &part, const QString &referenceName);

// The columns a box lists: the catalogue's columns of a table or view, a derived table's output
// names, then any column the query itself uses through the object that the catalogue lacks.
QStringList objectColumns(const SelectPart &part, int object, const MetadataCatalog &catalog);

// Adds a table or view ("name" or "schema.name"), with an alias when the name is already taken.
// Returns its reference name.
QString addObject(SelectPart &part, const QString &objectName, const MetadataCatalog &catalog);
// Removes the object with its select items, links, criteria and grouping that refer to it.
// False when there is no such object.
bool removeObject(SelectPart &part, const QString &referenceName);

// Ticks or clears a column: adds "owner.column" to the select list or removes every item that
// names it. "*" stands for all the object's columns.
void setColumnSelected(SelectPart &part, const QString &owner, const QString &column, bool selected);
// Whether the select list names the column (through the owner, or bare when unambiguous).
bool isColumnSelected(const SelectPart &part, const QString &owner, const QString &column);

// Joins two objects on the equality of two of their columns. The object that comes later in the
// FROM list is the joined one; when it is joined already, the equality is added to its join.
// False when an alias is unknown or both are the same object.
bool linkColumns(SelectPart &part, const QString &leftOwner, const QString &leftColumn,
                 const QString &rightOwner, const QString &rightColumn);

// Removes one column equality of a link (its index among linkedColumns()), or the whole link
// when `pair` is -1 or the equality was its last condition.
void removeLink(SelectPart &part, int link, int pair);

// Adds the links that foreign keys suggest for a newly added object (the last one); several keys
// into it become one join whose condition holds them all.
void addSuggestedLinks(SelectPart &part, const QVector<Link> &suggested);

// The equalities "a.x = b.y" of a link's condition, for drawing one line per pair of columns.
struct ColumnPair
{
    QString leftOwner, leftColumn, rightOwner, rightColumn;
};
QVector<ColumnPair> linkedColumns(const Link &link);

// The queries nested directly in a query, in a fixed order: WITH queries, then per union part
// its parenthesized query, derived tables, and subqueries of its select list, criteria and joins.
struct Nested
{
    QString title;
    Query *query = nullptr;
};
QVector<Nested> nestedQueries(Query &query);
// Follows indexes of nestedQueries() down from the root; null when a step is out of range.
Query *queryAt(Query &root, const QVector<int> &steps);

} // namespace QueryDiagramEdits
