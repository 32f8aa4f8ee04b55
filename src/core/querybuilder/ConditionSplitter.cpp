#include "core/querybuilder/ConditionSplitter.h"

#include "core/querybuilder/SqlParser.h"

namespace ConditionSplitter {

namespace {

using Parts = QVector<ExprPart>;

// A run of parts [begin, end) of the condition being split; the parts themselves are moved into
// the model only once, at the leaves.
struct Range
{
    int begin;
    int end;
    int size() const { return end - begin; }
};

bool isWord(const ExprPart &p, QLatin1String upper)
{
    return p.kind == ExprPart::Word && p.text.compare(upper, Qt::CaseInsensitive) == 0;
}

bool isLimitWord(const ExprPart &p, const DialectWords &w)
{
    return (w.rows && isWord(p, QLatin1String("ROWS")))
           || (w.firstSkip && (isWord(p, QLatin1String("FIRST")) || isWord(p, QLatin1String("SKIP"))))
           || (w.top && isWord(p, QLatin1String("TOP")));
}

// The runs between the outermost occurrences of `op` (AND or OR).
QVector<Range> splitAt(const Parts &parts, Range r, QLatin1String op)
{
    QVector<Range> pieces;
    int depth = 0;
    int caseDepth = 0;
    bool pendingBetween = false;
    int start = r.begin;
    for (int i = r.begin; i < r.end; ++i) {
        const ExprPart &p = parts.at(i);
        if (p.kind == ExprPart::LParen)
            ++depth;
        else if (p.kind == ExprPart::RParen)
            --depth;
        else if (depth != 0 || p.kind != ExprPart::Word)
            continue;
        else if (isWord(p, QLatin1String("CASE")))
            ++caseDepth;
        else if (isWord(p, QLatin1String("END")) && caseDepth > 0)
            --caseDepth;
        else if (caseDepth == 0 && isWord(p, QLatin1String("BETWEEN")))
            pendingBetween = true;
        else if (caseDepth == 0 && pendingBetween && isWord(p, QLatin1String("AND")))
            pendingBetween = false;
        else if (caseDepth == 0 && isWord(p, op)) {
            if (i == start)
                throw EmptyCondition();
            pieces.append({start, i});
            start = i + 1;
        }
    }
    if (caseDepth > 0)
        throw UnclosedCase();
    if (start >= r.end)
        throw EmptyCondition();
    pieces.append({start, r.end});
    return pieces;
}

// Whether the first part's parenthesis closes at the last part.
bool isWrapped(const Parts &parts, Range r)
{
    if (r.size() < 2 || parts.at(r.begin).kind != ExprPart::LParen || parts.at(r.end - 1).kind != ExprPart::RParen)
        return false;
    int depth = 0;
    for (int i = r.begin; i < r.end; ++i) {
        if (parts.at(i).kind == ExprPart::LParen)
            ++depth;
        else if (parts.at(i).kind == ExprPart::RParen && --depth == 0)
            return i == r.end - 1;
    }
    return false;
}

// Whether the word at i would end a condition written without parentheses. The parser reads
// LEFT( and RIGHT( as functions and WITHIN GROUP as part of an aggregate, so those go on.
bool endsConditionAt(const Parts &parts, int i, Range r)
{
    const ExprPart &p = parts.at(i);
    if (p.kind != ExprPart::Word || !SqlParser::endsCondition(p.text))
        return false;
    if ((isWord(p, QLatin1String("LEFT")) || isWord(p, QLatin1String("RIGHT")))
        && i + 1 < r.end && parts.at(i + 1).kind == ExprPart::LParen)
        return false;
    return !(isWord(p, QLatin1String("GROUP")) && i > r.begin && isWord(parts.at(i - 1), QLatin1String("WITHIN")));
}

// Whether the parts read the same without the parentheses around them: nothing at their outer
// level (a comma of a row value, a FROM of EXTRACT, a clause word) would end a condition early.
bool standsAlone(const Parts &parts, Range r, const DialectWords &words)
{
    int depth = 0;
    for (int i = r.begin; i < r.end; ++i) {
        const ExprPart &p = parts.at(i);
        if (p.kind == ExprPart::LParen)
            ++depth;
        else if (p.kind == ExprPart::RParen)
            --depth;
        else if (depth == 0 && (p.kind == ExprPart::Comma || endsConditionAt(parts, i, r)
                                || (words.minus && isWord(p, QLatin1String("MINUS")))))
            return false;
        else if (depth == 0 && i + 1 < r.end && isLimitWord(p, words)) {
            const ExprPart::Kind next = parts.at(i + 1).kind;
            if (next == ExprPart::Number || next == ExprPart::Parameter || next == ExprPart::LParen || next == ExprPart::Subquery)
                return false;
        }
    }
    return true;
}

class Splitter
{
public:
    Splitter(Parts &parts, const DialectWords &words) : m_parts(parts), m_words(words) {}

    ConditionGroup group(Range r, int nesting)
    {
        ConditionGroup g;
        const QVector<Range> ors = splitAt(m_parts, r, QLatin1String("OR"));
        if (ors.size() > 1) {
            g.op = ConditionGroup::Or;
            for (const Range &piece : ors) {
                const QVector<Range> ands = splitAt(m_parts, piece, QLatin1String("AND"));
                if (ands.size() > 1) {
                    ConditionGroup andGroup;
                    for (const Range &a : ands)
                        andGroup.items.append(leaf(a, nesting));
                    g.items.append(ConditionItem{{}, Box<ConditionGroup>(std::move(andGroup))});
                } else {
                    g.items.append(leaf(piece, nesting));
                }
            }
            return g;
        }
        for (const Range &piece : splitAt(m_parts, r, QLatin1String("AND")))
            g.items.append(leaf(piece, nesting));
        return g;
    }

private:
    ConditionItem leaf(Range r, int nesting)
    {
        // "()" stays: there is no condition inside to take out.
        while (isWrapped(m_parts, r) && r.size() > 2 && nesting < 200 && standsAlone(m_parts, {r.begin + 1, r.end - 1}, m_words)) {
            r = {r.begin + 1, r.end - 1};
            ++nesting;
            if (splitAt(m_parts, r, QLatin1String("OR")).size() > 1 || splitAt(m_parts, r, QLatin1String("AND")).size() > 1)
                return ConditionItem{{}, Box<ConditionGroup>(group(r, nesting + 1))};
        }
        Expr e;
        e.parts.reserve(r.size());
        for (int i = r.begin; i < r.end; ++i)
            e.parts.append(std::move(m_parts[i]));
        return ConditionItem{std::move(e), {}};
    }

    Parts &m_parts;
    const DialectWords &m_words;
};

} // namespace

ConditionGroup split(Expr condition, const DialectWords &words)
{
    Splitter splitter(condition.parts, words);
    return splitter.group({0, int(condition.parts.size())}, 0);
}

} // namespace ConditionSplitter
