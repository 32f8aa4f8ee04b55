#include "querybuilder/ConditionSplitter.h"

#include "querybuilder/SqlParser.h"

namespace ConditionSplitter {

namespace {

using Parts = QVector<ExprPart>;

bool isWord(const ExprPart &p, QLatin1String upper)
{
    return p.kind == ExprPart::Word && p.text.compare(upper, Qt::CaseInsensitive) == 0;
}

// The parts between the outermost occurrences of `op` (AND or OR).
QVector<Parts> splitAt(const Parts &parts, QLatin1String op)
{
    QVector<Parts> pieces(1);
    int depth = 0;
    int caseDepth = 0;
    bool pendingBetween = false;
    for (const ExprPart &p : parts) {
        if (p.kind == ExprPart::LParen)
            ++depth;
        else if (p.kind == ExprPart::RParen)
            --depth;
        else if (depth == 0 && isWord(p, QLatin1String("CASE")))
            ++caseDepth;
        else if (depth == 0 && isWord(p, QLatin1String("END")) && caseDepth > 0)
            --caseDepth;
        else if (depth == 0 && caseDepth == 0 && isWord(p, QLatin1String("BETWEEN")))
            pendingBetween = true;
        else if (depth == 0 && caseDepth == 0 && isWord(p, QLatin1String("AND")) && pendingBetween) {
            pendingBetween = false;
        } else if (depth == 0 && caseDepth == 0 && isWord(p, op)) {
            if (pieces.last().isEmpty())
                throw EmptyCondition();
            pieces.append(Parts());
            continue;
        }
        pieces.last().append(p);
    }
    if (pieces.last().isEmpty())
        throw EmptyCondition();
    return pieces;
}

// Whether the first part's parenthesis closes at the last part.
bool isWrapped(const Parts &parts)
{
    if (parts.size() < 2 || parts.first().kind != ExprPart::LParen || parts.last().kind != ExprPart::RParen)
        return false;
    int depth = 0;
    for (int i = 0; i < parts.size(); ++i) {
        if (parts.at(i).kind == ExprPart::LParen)
            ++depth;
        else if (parts.at(i).kind == ExprPart::RParen && --depth == 0)
            return i == parts.size() - 1;
    }
    return false;
}

// Whether the parts read the same without the parentheses around them: nothing at their outer
// level (a comma of a row value, a FROM of EXTRACT, a clause word) would end a condition early.
bool standsAlone(const Parts &parts)
{
    int depth = 0;
    for (const ExprPart &p : parts) {
        if (p.kind == ExprPart::LParen)
            ++depth;
        else if (p.kind == ExprPart::RParen)
            --depth;
        else if (depth == 0 && (p.kind == ExprPart::Comma || (p.kind == ExprPart::Word && SqlParser::endsCondition(p.text))))
            return false;
    }
    return true;
}

ConditionGroup splitParts(const Parts &parts, int nesting);

ConditionItem leaf(const Parts &parts, int nesting)
{
    Parts inner = parts;
    // "()" stays: there is no condition inside to take out.
    while (isWrapped(inner) && inner.size() > 2 && nesting < 200 && standsAlone(inner.mid(1, inner.size() - 2))) {
        inner = inner.mid(1, inner.size() - 2);
        ++nesting;
        if (splitAt(inner, QLatin1String("OR")).size() > 1 || splitAt(inner, QLatin1String("AND")).size() > 1)
            return ConditionItem{{}, Box<ConditionGroup>(splitParts(inner, nesting + 1))};
    }
    return ConditionItem{Expr{inner}, {}};
}

ConditionGroup splitParts(const Parts &parts, int nesting)
{
    ConditionGroup group;
    const QVector<Parts> ors = splitAt(parts, QLatin1String("OR"));
    if (ors.size() > 1) {
        group.op = ConditionGroup::Or;
        for (const Parts &piece : ors) {
            const QVector<Parts> ands = splitAt(piece, QLatin1String("AND"));
            if (ands.size() > 1) {
                ConditionGroup andGroup;
                for (const Parts &a : ands)
                    andGroup.items.append(leaf(a, nesting));
                group.items.append(ConditionItem{{}, Box<ConditionGroup>(std::move(andGroup))});
            } else {
                group.items.append(leaf(piece, nesting));
            }
        }
        return group;
    }
    for (const Parts &piece : splitAt(parts, QLatin1String("AND")))
        group.items.append(leaf(piece, nesting));
    return group;
}

} // namespace

ConditionGroup split(const Expr &condition)
{
    return splitParts(condition.parts, 0);
}

} // namespace ConditionSplitter
