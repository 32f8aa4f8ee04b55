#include "gui/components/QueryDiagramEdits.h"

namespace QueryDiagramEdits {

namespace {

bool same(const QString &a, const QString &b) { return a.compare(b, Qt::CaseInsensitive) == 0; }

bool isName(const ExprPart &p) { return p.kind == ExprPart::Word || p.kind == ExprPart::QuotedName; }

ExprPart namePart(const QString &name)
{
    if (name == QLatin1String("*"))
        return ExprPart{ExprPart::Operator, name, SubqueryKind::Scalar, {}};
    const Identifier id = Identifier::of(name);
    return ExprPart{id.quoted ? ExprPart::QuotedName : ExprPart::Word, id.name, SubqueryKind::Scalar, {}};
}


// Drops the conditions that refer to the object; a nested group left empty goes too.
void dropConditions(ConditionGroup &group, const QString &owner)
{
    QVector<ConditionItem> kept;
    for (ConditionItem &item : group.items) {
        if (item.group) {
            dropConditions(*item.group, owner);
            if (!item.group->isEmpty())
                kept.append(item);
        } else if (!mentionsObject(item.condition, owner)) {
            kept.append(item);
        }
    }
    group.items = kept;
}

// Every "owner.column" the expression uses.
void collectColumns(const Expr &expr, const QString &owner, QStringList &out)
{
    for (int i = 0; i + 2 < expr.parts.size(); ++i) {
        const ExprPart &o = expr.parts.at(i), &dot = expr.parts.at(i + 1), &c = expr.parts.at(i + 2);
        if (isName(o) && same(o.text, owner) && dot.kind == ExprPart::Dot && isName(c)
            && (i + 3 >= expr.parts.size() || expr.parts.at(i + 3).kind != ExprPart::Dot)
            && !out.contains(c.text, Qt::CaseInsensitive))
            out << c.text;
    }
}

void collectColumns(const ConditionGroup &group, const QString &owner, QStringList &out)
{
    for (const ConditionItem &item : group.items) {
        if (item.group)
            collectColumns(*item.group, owner, out);
        else
            collectColumns(item.condition, owner, out);
    }
}

void nestedInExpr(Expr &expr, QVector<Nested> &out)
{
    for (ExprPart &p : expr.parts)
        if (p.kind == ExprPart::Subquery && p.subquery)
            out.append({QStringLiteral("Subquery %1").arg(out.size() + 1), p.subquery.get()});
}

void nestedInGroup(ConditionGroup &group, QVector<Nested> &out)
{
    for (ConditionItem &item : group.items) {
        if (item.group)
            nestedInGroup(*item.group, out);
        else
            nestedInExpr(item.condition, out);
    }
}

} // namespace

Expr columnRef(const QString &owner, const QString &column)
{
    Expr e;
    if (!owner.isEmpty()) {
        e.parts.append(namePart(owner));
        e.parts.append(ExprPart{ExprPart::Dot, QStringLiteral("."), SubqueryKind::Scalar, {}});
    }
    e.parts.append(namePart(column));
    return e;
}

bool readColumnRef(const Expr &expr, QString *owner, QString *column)
{
    const QVector<ExprPart> &p = expr.parts;
    const auto columnPart = [](const ExprPart &part) {
        return isName(part) || (part.kind == ExprPart::Operator && part.text == QLatin1String("*"));
    };
    if (p.size() == 1 && columnPart(p.at(0))) {
        *owner = QString();
        *column = p.at(0).text;
        return true;
    }
    if (p.size() == 3 && isName(p.at(0)) && p.at(1).kind == ExprPart::Dot && columnPart(p.at(2))) {
        *owner = p.at(0).text;
        *column = p.at(2).text;
        return true;
    }
    return false;
}

bool mentionsObject(const Expr &expr, const QString &owner)
{
    for (int i = 0; i + 1 < expr.parts.size(); ++i)
        if (isName(expr.parts.at(i)) && same(expr.parts.at(i).text, owner) && expr.parts.at(i + 1).kind == ExprPart::Dot
            && (i == 0 || expr.parts.at(i - 1).kind != ExprPart::Dot))
            return true;
    return false;
}

int findObject(const SelectPart &part, const QString &referenceName)
{
    for (int i = 0; i < part.objects.size(); ++i)
        if (same(part.objects.at(i).referenceName(), referenceName))
            return i;
    return -1;
}

QStringList objectColumns(const SelectPart &part, int object, const MetadataCatalog &catalog)
{
    QStringList columns;
    const SourceObject &o = part.objects.at(object);
    if (o.kind == SourceObject::Table && !o.name.isEmpty()) {
        const QString schema = o.name.size() > 1 ? o.name.at(o.name.size() - 2).name : QString();
        if (const MetadataObject *m = catalog.find(o.name.last().name, schema))
            for (const MetadataColumn &c : m->columns)
                columns << c.name;
    } else if (!o.columnAliases.isEmpty()) {
        for (const Identifier &c : o.columnAliases)
            columns << c.name;
    } else if (o.kind == SourceObject::Derived && o.derived && !o.derived->parts.isEmpty()) {
        for (const SelectItem &item : o.derived->parts.first().items) {
            QString owner, column;
            if (!item.alias.isEmpty())
                columns << item.alias.name;
            else if (readColumnRef(item.expression, &owner, &column) && column != QLatin1String("*"))
                columns << column;
        }
    }
    // Columns the query uses that the catalogue does not list (offline, or a misspelt name).
    const QString owner = o.referenceName();
    QStringList used;
    for (const SelectItem &item : part.items) {
        QString itemOwner, column;
        if (readColumnRef(item.expression, &itemOwner, &column) && itemOwner.isEmpty() && part.objects.size() == 1
            && column != QLatin1String("*"))
            used << column;
        collectColumns(item.expression, owner, used);
    }
    for (const Link &l : part.links)
        collectColumns(l.condition, owner, used);
    collectColumns(part.where, owner, used);
    collectColumns(part.having, owner, used);
    for (const Expr &e : part.groupBy)
        collectColumns(e, owner, used);
    for (const QString &c : used)
        if (!columns.contains(c, Qt::CaseInsensitive))
            columns << c;
    return columns;
}

QString addObject(SelectPart &part, const QString &objectName, const MetadataCatalog &catalog)
{
    SourceObject o;
    QStringList pieces = objectName.split(QLatin1Char('.'));
    if (const MetadataObject *m = catalog.find(pieces.last(), pieces.size() > 1 ? pieces.at(pieces.size() - 2) : QString()))
        pieces.last() = m->name; // the catalogue's spelling
    for (const QString &piece : pieces)
        o.name.append(Identifier::of(piece));
    // A second copy of a table needs an alias of its own: name1, name2...
    const QString base = pieces.last();
    if (findObject(part, base) >= 0) {
        int n = 1;
        while (findObject(part, base + QString::number(n)) >= 0)
            ++n;
        o.alias = Identifier::of(base + QString::number(n));
    }
    part.objects.append(o);
    return o.referenceName();
}

bool removeObject(SelectPart &part, const QString &referenceName)
{
    const int index = findObject(part, referenceName);
    if (index < 0)
        return false;
    const bool only = part.objects.size() == 1;
    QVector<SelectItem> items;
    for (const SelectItem &item : part.items) {
        QString owner, column;
        const bool bare = only && readColumnRef(item.expression, &owner, &column) && owner.isEmpty();
        if (!bare && !mentionsObject(item.expression, referenceName))
            items.append(item);
    }
    part.items = items;
    QVector<Link> links;
    for (Link l : part.links) {
        if (l.left == index || l.right == index)
            continue;
        if (l.left > index)
            --l.left;
        if (l.right > index)
            --l.right;
        links.append(l);
    }
    part.links = links;
    dropConditions(part.where, referenceName);
    dropConditions(part.having, referenceName);
    QVector<Expr> groupBy;
    for (const Expr &e : part.groupBy)
        if (!mentionsObject(e, referenceName))
            groupBy.append(e);
    part.groupBy = groupBy;
    part.objects.remove(index);
    return true;
}

bool isColumnSelected(const SelectPart &part, const QString &owner, const QString &column)
{
    for (const SelectItem &item : part.items) {
        QString itemOwner, itemColumn;
        if (!readColumnRef(item.expression, &itemOwner, &itemColumn) || !same(itemColumn, column))
            continue;
        if (same(itemOwner, owner) || (itemOwner.isEmpty() && part.objects.size() == 1))
            return true;
    }
    return false;
}

void setColumnSelected(SelectPart &part, const QString &owner, const QString &column, bool selected)
{
    if (selected) {
        if (!isColumnSelected(part, owner, column))
            part.items.append(SelectItem{columnRef(owner, column), {}, true});
        return;
    }
    QVector<SelectItem> items;
    for (const SelectItem &item : part.items) {
        QString itemOwner, itemColumn;
        const bool names = readColumnRef(item.expression, &itemOwner, &itemColumn) && same(itemColumn, column)
                           && (same(itemOwner, owner) || (itemOwner.isEmpty() && part.objects.size() == 1));
        if (!names)
            items.append(item);
    }
    part.items = items;
}

bool linkColumns(SelectPart &part, const QString &leftOwner, const QString &leftColumn,
                 const QString &rightOwner, const QString &rightColumn)
{
    const int a = findObject(part, leftOwner), b = findObject(part, rightOwner);
    if (a < 0 || b < 0 || a == b)
        return false;
    Expr equality = columnRef(part.objects.at(a).referenceName(), leftColumn);
    equality.parts.append(ExprPart{ExprPart::Operator, QStringLiteral("="), SubqueryKind::Scalar, {}});
    equality.parts += columnRef(part.objects.at(b).referenceName(), rightColumn).parts;
    const int joined = qMax(a, b);
    for (Link &l : part.links) {
        if (l.right != joined)
            continue;
        for (const ConditionItem &item : l.condition.items)
            if (item.condition == equality)
                return true;
        l.condition.add(equality);
        return true;
    }
    Link link;
    link.left = qMin(a, b);
    link.right = joined;
    link.condition.add(equality);
    part.links.append(link);
    return true;
}

QVector<ColumnPair> linkedColumns(const Link &link)
{
    QVector<ColumnPair> pairs;
    for (const ConditionItem &item : link.condition.items) {
        const QVector<ExprPart> &p = item.condition.parts;
        if (item.group || p.size() != 7 || p.at(3).kind != ExprPart::Operator || p.at(3).text != QLatin1String("="))
            continue;
        Expr left, right;
        left.parts = p.mid(0, 3);
        right.parts = p.mid(4, 3);
        ColumnPair pair;
        if (readColumnRef(left, &pair.leftOwner, &pair.leftColumn) && readColumnRef(right, &pair.rightOwner, &pair.rightColumn))
            pairs.append(pair);
    }
    return pairs;
}

void removeLink(SelectPart &part, int link, int pair)
{
    if (link < 0 || link >= part.links.size())
        return;
    Link &l = part.links[link];
    if (pair >= 0) {
        int seen = 0;
        for (int i = 0; i < l.condition.items.size(); ++i) {
            Link single;
            single.condition.items = {l.condition.items.at(i)};
            if (linkedColumns(single).isEmpty())
                continue;
            if (seen++ == pair) {
                l.condition.items.remove(i);
                break;
            }
        }
    }
    if (pair < 0 || l.condition.isEmpty())
        part.links.remove(link);
}

void addSuggestedLinks(SelectPart &part, const QVector<Link> &suggested)
{
    const int added = int(part.objects.size()) - 1;
    for (const Link &s : suggested) {
        if (s.right != added && s.left != added)
            continue;
        bool merged = false;
        for (Link &l : part.links)
            if (l.right == added) {
                l.condition.items += s.condition.items;
                merged = true;
                break;
            }
        if (!merged)
            part.links.append(s);
    }
}

QVector<Nested> nestedQueries(Query &query)
{
    QVector<Nested> out;
    for (WithQuery &w : query.with)
        if (w.query)
            out.append({w.name.name, w.query.get()});
    for (int i = 0; i < query.parts.size(); ++i) {
        SelectPart &p = query.parts[i];
        if (p.nested)
            out.append({QStringLiteral("Union %1").arg(i + 1), p.nested.get()});
        for (SourceObject &o : p.objects)
            if (o.kind == SourceObject::Derived && o.derived)
                out.append({o.referenceName().isEmpty() ? QStringLiteral("Derived table") : o.referenceName(), o.derived.get()});
        for (SelectItem &item : p.items)
            nestedInExpr(item.expression, out);
        nestedInGroup(p.where, out);
        nestedInGroup(p.having, out);
        for (Link &l : p.links)
            nestedInGroup(l.condition, out);
    }
    return out;
}

Query *queryAt(Query &root, const QVector<int> &steps)
{
    Query *q = &root;
    for (int step : steps) {
        const QVector<Nested> nested = nestedQueries(*q);
        if (step < 0 || step >= nested.size())
            return nullptr;
        q = nested.at(step).query;
    }
    return q;
}

} // namespace QueryDiagramEdits
