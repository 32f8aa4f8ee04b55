#pragma once
// The query model of the query builder: what the parser builds from a SELECT statement, what the
// builder window edits, and what the generator writes back as text. Plain values: copying a query
// copies everything in it, subqueries included, and == compares the whole tree.
//
// A Query is one statement: optional WITH queries, one or more union parts, and the ORDER BY and
// trailing row limit that apply to the whole. A union part (SelectPart) holds the objects of its
// FROM clause (tables, views, table functions and derived tables, each with an alias), the links
// between them (the joins with their conditions), the select list, the WHERE and HAVING criteria
// as condition groups, and the grouping. Expressions keep their tokens as written, with the
// expression subqueries (IN, EXISTS, ANY/ALL, scalar) parsed into queries of their own.

#include "core/querybuilder/SqlDialect.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <memory>

// A deep-copying owner of one value, for the recursive parts of the model.
template <typename T>
class Box
{
public:
    Box() = default;
    explicit Box(T value) : m_p(std::make_unique<T>(std::move(value))) {}
    Box(const Box &o) : m_p(o.m_p ? std::make_unique<T>(*o.m_p) : nullptr) {}
    Box(Box &&) noexcept = default;
    Box &operator=(const Box &o)
    {
        if (this != &o)
            m_p = o.m_p ? std::make_unique<T>(*o.m_p) : nullptr;
        return *this;
    }
    Box &operator=(Box &&) noexcept = default;
    explicit operator bool() const { return bool(m_p); }
    T &operator*() const { return *m_p; }
    T *operator->() const { return m_p.get(); }
    T *get() const { return m_p.get(); }
    bool operator==(const Box &o) const { return m_p && o.m_p ? *m_p == *o.m_p : !m_p && !o.m_p; }
    bool operator!=(const Box &o) const { return !(*this == o); }

private:
    std::unique_ptr<T> m_p;
};

struct Query;

// A name as written. Quoted when it was written in quotes or cannot be written without them
// (a reserved word, a blank, a character outside letters, digits, _ and $).
struct Identifier
{
    QString name;
    bool quoted = false;
    bool isEmpty() const { return name.isEmpty(); }
    bool operator==(const Identifier &o) const { return name == o.name && quoted == o.quoted; }
    bool operator!=(const Identifier &o) const { return !(*this == o); }
    // A name as the parser would store it: quoted when it needs quotes.
    static Identifier of(const QString &name);
};

enum class SubqueryKind { Scalar, In, Exists, Quantified };

// One piece of an expression: a token as written, or a subquery with its own model.
struct ExprPart
{
    enum Kind { Word, QuotedName, String, Number, Parameter, Operator, Comma, Dot, LParen, RParen, Subquery };
    Kind kind = Word;
    QString text;                 // the token; for QuotedName the name without quotes
    SubqueryKind subqueryKind = SubqueryKind::Scalar;
    Box<Query> subquery;          // set for Subquery
    bool operator==(const ExprPart &o) const;
    bool operator!=(const ExprPart &o) const { return !(*this == o); }
};

struct Expr
{
    QVector<ExprPart> parts;
    bool isEmpty() const { return parts.isEmpty(); }
    bool operator==(const Expr &o) const { return parts == o.parts; }
    bool operator!=(const Expr &o) const { return !(*this == o); }
    // The aggregate function the expression is a call of (COUNT, SUM, AVG, MIN, MAX, upper case),
    // or empty.
    QString aggregate() const;
    // Builds an expression from SQL text in a dialect; throws SqlParseError.
    static Expr fromText(const QString &text, SqlDialect dialect = SqlDialect::Universal);
};

// WHERE and HAVING criteria: a group of conditions joined by one operator. An item is either one
// condition (an expression) or a nested group.
struct ConditionGroup;
struct ConditionItem
{
    Expr condition;
    Box<ConditionGroup> group; // set for a nested group
    bool operator==(const ConditionItem &o) const { return condition == o.condition && group == o.group; }
    bool operator!=(const ConditionItem &o) const { return !(*this == o); }
};

struct ConditionGroup
{
    enum Operator { And, Or };
    Operator op = And;
    QVector<ConditionItem> items;
    bool isEmpty() const { return items.isEmpty(); }
    bool operator==(const ConditionGroup &o) const { return op == o.op && items == o.items; }
    bool operator!=(const ConditionGroup &o) const { return !(*this == o); }
    void add(const Expr &condition) { items.append(ConditionItem{condition, {}}); }
    void add(const ConditionGroup &group) { items.append(ConditionItem{{}, Box<ConditionGroup>(group)}); }
};

// A FROM object: a table or view by its (qualified) name, a table function with its arguments,
// or a derived table with its own query.
struct SourceObject
{
    enum Kind { Table, Function, Derived };
    Kind kind = Table;
    QVector<Identifier> name;     // schema.table and the like; the function name for Function
    Expr arguments;               // Function: what stands between the parentheses
    Box<Query> derived;           // Derived
    Identifier alias;
    QVector<Identifier> columnAliases; // derived table or function: alias(c1, c2)
    bool outer = false;           // Informix's "OUTER table" in a comma-separated FROM list
    // The name the other clauses use for it: the alias, else the last part of the name.
    QString referenceName() const;
    bool operator==(const SourceObject &o) const;
    bool operator!=(const SourceObject &o) const { return !(*this == o); }
};

// A link between two objects: the join that brings object `right` in, with its condition. `left`
// is the earlier object the condition refers to (the one drawn at the link's other end).
struct Link
{
    enum Type { Inner, Left, Right, Full, Cross };
    Type type = Inner;
    int left = 0;
    int right = 1;
    bool natural = false;
    bool innerKeyword = true;      // INNER JOIN rather than plain JOIN
    ConditionGroup condition;      // ON ...
    QVector<Identifier> usingColumns; // USING (...)
    bool operator==(const Link &o) const;
    bool operator!=(const Link &o) const { return !(*this == o); }
};

struct SelectItem
{
    Expr expression;
    Identifier alias;
    bool visible = true; // an item the builder keeps for criteria only is not written
    bool operator==(const SelectItem &o) const
    {
        return expression == o.expression && alias == o.alias && visible == o.visible;
    }
    bool operator!=(const SelectItem &o) const { return !(*this == o); }
};

struct SortItem
{
    enum Direction { Default, Ascending, Descending };
    enum Nulls { NullsDefault, NullsFirst, NullsLast };
    Expr expression;
    Direction direction = Default;
    Nulls nulls = NullsDefault;
    bool operator==(const SortItem &o) const
    {
        return expression == o.expression && direction == o.direction && nulls == o.nulls;
    }
    bool operator!=(const SortItem &o) const { return !(*this == o); }
};

// A row limit: the first `count` rows after skipping `offset`. Top and FirstSkip stand in the
// SELECT head of a union part; Limit, Rows and FetchFirst follow the ORDER BY of a query.
struct RowLimit
{
    LimitForm form = LimitForm::None;
    Expr count;
    Expr offset;
    bool percent = false;    // TOP n PERCENT
    bool withTies = false;   // TOP n WITH TIES, FETCH FIRST n ROWS WITH TIES
    bool skipFirst = false;  // SKIP m FIRST n (Informix order); LIMIT m, n for Limit
    bool isEmpty() const { return form == LimitForm::None; }
    bool operator==(const RowLimit &o) const;
    bool operator!=(const RowLimit &o) const { return !(*this == o); }
};

// One SELECT of a union, or a parenthesized query standing as a union part.
struct SelectPart
{
    enum SetOperator { Union, Except, Intersect, Minus };
    SetOperator setOperator = Union; // how the part joins the one before it; unused for the first
    bool all = false;                // UNION ALL, EXCEPT ALL...
    bool distinctKeyword = false;    // UNION DISTINCT
    Box<Query> nested;               // set when the part is "( query )": the rest is then empty

    bool distinct = false;
    RowLimit headLimit;              // TOP, FIRST/SKIP
    QVector<SelectItem> items;
    QVector<SourceObject> objects;
    QVector<Link> links;
    ConditionGroup where;
    QVector<Expr> groupBy;
    ConditionGroup having;
    bool operator==(const SelectPart &o) const;
    bool operator!=(const SelectPart &o) const { return !(*this == o); }
};

struct WithQuery
{
    Identifier name;
    QVector<Identifier> columns;
    Box<Query> query;
    bool operator==(const WithQuery &o) const { return name == o.name && columns == o.columns && query == o.query; }
    bool operator!=(const WithQuery &o) const { return !(*this == o); }
};

struct Query
{
    bool recursive = false; // WITH RECURSIVE
    QVector<WithQuery> with;
    QVector<SelectPart> parts;
    QVector<SortItem> orderBy;
    RowLimit limit;
    bool isEmpty() const { return parts.isEmpty(); }
    bool operator==(const Query &o) const;
    bool operator!=(const Query &o) const { return !(*this == o); }
};
