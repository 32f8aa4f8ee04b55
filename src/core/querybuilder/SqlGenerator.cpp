#include "core/querybuilder/SqlGenerator.h"

#include "core/querybuilder/SqlLexer.h"
#include "core/querybuilder/SqlParser.h"

#include <QRegularExpression>

#include <algorithm>

namespace {

QString spaces(int n)
{
    return QString(qMax(0, n), QLatin1Char(' '));
}

// Which characters of generated text belong to a string literal or a quoted name (quotes
// included), as the dialect's lexer reads it: line breaks and indents may go anywhere else,
// never there.
QVector<bool> quotedMask(const QString &text, SqlDialect dialect)
{
    QVector<bool> mask(text.size(), false);
    try {
        for (const SqlToken &t : SqlLexer::tokenize(text, dialect))
            if (t.kind == SqlToken::String || t.kind == SqlToken::QuotedName)
                std::fill(mask.begin() + t.offset, mask.begin() + t.offset + t.length, true);
    } catch (const SqlParseError &) {
        // Generated text always reads; should it not, nothing is moved.
        mask.fill(true);
    }
    return mask;
}

bool isWordPart(const ExprPart &p, const char *upper)
{
    return p.kind == ExprPart::Word && p.text.compare(QLatin1String(upper), Qt::CaseInsensitive) == 0;
}

// Whether a condition ends in a BETWEEN still waiting for its AND: written before another
// condition of an AND group, it would take that AND as its own.
bool endsInOpenBetween(const Expr &e)
{
    int depth = 0;
    int caseDepth = 0;
    bool open = false;
    for (const ExprPart &p : e.parts) {
        if (p.kind == ExprPart::LParen)
            ++depth;
        else if (p.kind == ExprPart::RParen)
            --depth;
        else if (depth != 0)
            continue;
        else if (isWordPart(p, "CASE"))
            ++caseDepth;
        else if (isWordPart(p, "END") && caseDepth > 0)
            --caseDepth;
        else if (caseDepth == 0 && isWordPart(p, "BETWEEN"))
            open = true;
        else if (caseDepth == 0 && isWordPart(p, "AND"))
            open = false;
    }
    return open;
}

// Whether a limit can be written in another form with the same meaning.
bool convertible(const RowLimit &l, LimitForm to)
{
    if (l.count.isEmpty() || (l.form == LimitForm::Rows && !l.offset.isEmpty()))
        return false;
    if (l.percent && to != LimitForm::Top)
        return false;
    if (l.withTies && to != LimitForm::Top && to != LimitForm::FetchFirst)
        return false;
    if ((to == LimitForm::Top || to == LimitForm::Rows) && !l.offset.isEmpty())
        return false;
    return true;
}

RowLimit converted(const RowLimit &l, LimitForm to)
{
    RowLimit r = l;
    r.form = to;
    r.skipFirst = false;
    return r;
}

bool isHeadForm(LimitForm f)
{
    return f == LimitForm::Top || f == LimitForm::FirstSkip;
}

} // namespace

SqlGenerator::SqlGenerator(DialectChoice dialect, GeneratorOptions options)
    : m_dialect(std::move(dialect)), m_options(std::move(options))
{
}

QString SqlGenerator::generate(const Query &q) const
{
    if (q.isEmpty())
        return QString();
    const int indent = m_options.mainQuery.globalIndent;
    QString text = query(q, m_options.mainQuery);
    if (indent > 0)
        text = spaces(indent) + indentRest(text, indent);
    return m_options.wordWrap ? wrap(text) : text;
}

// Moves every line after the first `pad` columns to the right, leaving line breaks inside
// literals and quoted names alone.
QString SqlGenerator::indentRest(const QString &text, int pad) const
{
    if (pad <= 0 || !text.contains(QLatin1Char('\n')))
        return text;
    const QVector<bool> quoted = quotedMask(text, m_dialect.dialect);
    QString out;
    out.reserve(text.size() + 16 * pad);
    for (int i = 0; i < text.size(); ++i) {
        out += text.at(i);
        if (text.at(i) == QLatin1Char('\n') && !quoted.at(i))
            out += spaces(pad);
    }
    return out;
}

QString SqlGenerator::identifier(const Identifier &name) const
{
    if (!name.quoted && !m_options.quoteAllIdentifiers)
        return name.name;
    const SqlDialects::Traits &t = SqlDialects::traits(m_dialect.dialect);
    QString inner = name.name;
    inner.replace(t.closeQuote, QString(2, t.closeQuote));
    return t.openQuote + inner + t.closeQuote;
}

QString SqlGenerator::expression(const Expr &expr) const
{
    QString out;
    const ExprPart *prev = nullptr;
    for (int i = 0; i < expr.parts.size(); ++i) {
        const ExprPart &p = expr.parts.at(i);
        const ExprPart *next = i + 1 < expr.parts.size() ? &expr.parts.at(i + 1) : nullptr;
        bool space = prev != nullptr;
        if (prev) {
            if ((p.kind == ExprPart::Dot && prev->kind == ExprPart::Number) || (prev->kind == ExprPart::Dot && p.kind == ExprPart::Number))
                space = true; // "1 ." and ". 5" written together would read as one number
            else if (p.kind == ExprPart::Comma || p.kind == ExprPart::RParen || p.kind == ExprPart::Dot
                || prev->kind == ExprPart::LParen || prev->kind == ExprPart::Dot)
                space = false;
            else if ((p.kind == ExprPart::LParen)
                     && ((prev->kind == ExprPart::Word && !SqlParser::isReservedWord(prev->text)) || prev->kind == ExprPart::QuotedName))
                space = false;
            else if ((p.kind == ExprPart::Operator && p.text == QLatin1String("::") && prev->kind != ExprPart::Operator)
                     || (prev->kind == ExprPart::Operator && prev->text == QLatin1String("::") && p.kind != ExprPart::Operator
                         && p.kind != ExprPart::Parameter))
                space = false; // x::int; operators next to each other keep their blank
        }
        if (space)
            out += QLatin1Char(' ');
        switch (p.kind) {
        case ExprPart::QuotedName:
            out += identifier(Identifier{p.text, true});
            break;
        case ExprPart::Word: {
            // Every name quoted: a word that names a column or table, not a keyword, a function
            // or a type after AS.
            const bool quote = m_options.quoteAllIdentifiers && !SqlParser::isReservedWord(p.text)
                               && !(next && next->kind == ExprPart::LParen) && !(prev && isWordPart(*prev, "AS"))
                               && !(next && next->kind == ExprPart::String);
            out += quote ? identifier(Identifier{p.text, true}) : p.text;
            break;
        }
        case ExprPart::Subquery:
            out += QLatin1Char('(') + indentRest(query(*p.subquery, m_options.subqueries), m_options.subqueries.globalIndent)
                   + QLatin1Char(')');
            break;
        default:
            out += p.text;
        }
        prev = &p;
    }
    return out;
}

QString SqlGenerator::conditions(const ConditionGroup &g) const
{
    return group(g, 0, 0, 0, 0);
}

// mode: the WHERE/HAVING new-line mode; pad: the column the criteria start at; indent: the step
// of nested groups in mode 3; level: the nesting of this group.
namespace {

bool beginsLikeQuery(const QString &expression)
{
    const QString first = expression.trimmed().section(QRegularExpression(QStringLiteral("\\s")), 0, 0).toUpper();
    return first == QLatin1String("SELECT") || first == QLatin1String("WITH");
}

} // namespace

QString SqlGenerator::group(const ConditionGroup &g, int mode, int pad, int indent, int level) const
{
    const QString op = g.op == ConditionGroup::And ? QStringLiteral("AND") : QStringLiteral("OR");
    const bool breakHere = mode > 0 && (level == 0 || mode == 3);
    const int myPad = pad + (level > 0 ? indent : 0);
    QStringList texts;
    for (const ConditionItem &item : g.items) {
        if (item.group) {
            const bool bare = g.op == ConditionGroup::Or && item.group->op == ConditionGroup::And
                              && !m_options.parenthesizeAndGroups;
            if (bare && !(mode == 3)) {
                texts << group(*item.group, mode == 3 ? mode : 0, myPad, indent, level + 1);
            } else if (mode == 3) {
                const int innerPad = myPad + indent;
                texts << QStringLiteral("(\n") + spaces(innerPad)
                             + group(*item.group, mode, myPad, indent, level + 1) + QLatin1Char('\n') + spaces(myPad)
                             + QLatin1Char(')');
            } else {
                texts << QLatin1Char('(') + group(*item.group, 0, myPad, indent, level + 1) + QLatin1Char(')');
            }
        } else {
            const QString e = indentRest(expression(item.condition), myPad);
            const bool takesNextAnd = g.op == ConditionGroup::And && &item != &g.items.last()
                                      && endsInOpenBetween(item.condition);
            // A criterion that begins with SELECT or WITH would read as a subquery once in parentheses.
            const bool wrap = (m_options.parenthesizeSingleCriterion && !beginsLikeQuery(e)) || takesNextAnd;
            texts << (wrap ? QLatin1Char('(') + e + QLatin1Char(')') : e);
        }
    }
    if (!breakHere)
        return texts.join(QLatin1Char(' ') + op + QLatin1Char(' '));
    if (mode == 2)
        return texts.join(QLatin1Char(' ') + op + QLatin1Char('\n') + spaces(myPad));
    return texts.join(QLatin1Char('\n') + spaces(myPad) + op + QLatin1Char(' '));
}

QString SqlGenerator::limitText(const RowLimit &l) const
{
    const QString count = expression(l.count);
    const QString offset = expression(l.offset);
    QStringList words;
    switch (l.form) {
    case LimitForm::None:
        break;
    case LimitForm::Top:
        words << QStringLiteral("TOP") << count;
        if (l.percent)
            words << QStringLiteral("PERCENT");
        if (l.withTies)
            words << QStringLiteral("WITH TIES");
        break;
    case LimitForm::FirstSkip:
        if (l.skipFirst && !offset.isEmpty())
            words << QStringLiteral("SKIP") << offset;
        if (!count.isEmpty())
            words << QStringLiteral("FIRST") << count;
        if (!l.skipFirst && !offset.isEmpty())
            words << QStringLiteral("SKIP") << offset;
        break;
    case LimitForm::Limit:
        if (l.skipFirst && !offset.isEmpty())
            words << QStringLiteral("LIMIT") << offset + QLatin1Char(',') << count;
        else {
            words << QStringLiteral("LIMIT") << count;
            if (!offset.isEmpty())
                words << QStringLiteral("OFFSET") << offset;
        }
        break;
    case LimitForm::Rows:
        words << QStringLiteral("ROWS") << count;
        if (!offset.isEmpty())
            words << QStringLiteral("TO") << offset;
        break;
    case LimitForm::FetchFirst:
        if (!offset.isEmpty())
            words << QStringLiteral("OFFSET") << offset << QStringLiteral("ROWS");
        if (!count.isEmpty())
            words << QStringLiteral("FETCH FIRST") << count
                  << (l.withTies ? QStringLiteral("ROWS WITH TIES") : QStringLiteral("ROWS ONLY"));
        break;
    }
    return words.join(QLatin1Char(' '));
}

QString SqlGenerator::query(const Query &q, const SqlFormat &f) const
{
    const QString breakOrSpace = f.mainPartNewLine ? QStringLiteral("\n") : QStringLiteral(" ");
    QStringList sections;
    if (!q.with.isEmpty()) {
        const SqlFormat &d = m_options.derivedQueries;
        QStringList withs;
        for (const WithQuery &w : q.with) {
            QString head = identifier(w.name);
            if (!w.columns.isEmpty()) {
                QStringList cols;
                for (const Identifier &c : w.columns)
                    cols << identifier(c);
                head += QStringLiteral(" (") + cols.join(QStringLiteral(", ")) + QLatin1Char(')');
            }
            const QString body = query(*w.query, d);
            if (d.mainPartNewLine)
                withs << head + QStringLiteral(" AS (\n") + spaces(d.globalIndent) + indentRest(body, d.globalIndent) + QStringLiteral("\n)");
            else
                withs << head + QStringLiteral(" AS (") + body + QLatin1Char(')');
        }
        sections << (q.recursive ? QStringLiteral("WITH RECURSIVE ") : QStringLiteral("WITH "))
                        + withs.join(QLatin1Char(',') + breakOrSpace);
    }

    // Row limits in a form the dialect reads, where the meaning allows.
    const SqlDialects::Traits &traits = SqlDialects::traits(m_dialect.dialect);
    const LimitForm preferred = traits.limitForms.value(0, LimitForm::None);
    RowLimit trailing = q.limit;
    const bool single = q.parts.size() == 1 && !q.parts.first().nested;
    RowLimit firstHead = q.parts.isEmpty() ? RowLimit() : q.parts.first().headLimit;
    if (!trailing.isEmpty() && !SqlDialects::acceptsLimit(m_dialect.dialect, trailing.form) && preferred != LimitForm::None
        && convertible(trailing, preferred)) {
        if (!isHeadForm(preferred))
            trailing = converted(trailing, preferred);
        else if (single && firstHead.isEmpty()) {
            firstHead = converted(trailing, preferred);
            trailing = RowLimit();
        }
    }
    if (!firstHead.isEmpty() && !SqlDialects::acceptsLimit(m_dialect.dialect, firstHead.form) && preferred != LimitForm::None
        && convertible(firstHead, preferred)) {
        if (isHeadForm(preferred))
            firstHead = converted(firstHead, preferred);
        else if (single && trailing.isEmpty()) {
            trailing = converted(firstHead, preferred);
            firstHead = RowLimit();
        }
    }

    QStringList parts;
    for (int i = 0; i < q.parts.size(); ++i) {
        const SelectPart &p = q.parts.at(i);
        QString text;
        if (i > 0) {
            static const char *const ops[] = {"UNION", "EXCEPT", "INTERSECT", "MINUS"};
            QString op = QLatin1String(ops[p.setOperator]);
            if (p.all)
                op += QStringLiteral(" ALL");
            else if (p.distinctKeyword)
                op += QStringLiteral(" DISTINCT");
            text = op + breakOrSpace;
        }
        if (p.nested)
            text += QLatin1Char('(') + indentRest(query(*p.nested, f), 1) + QLatin1Char(')');
        else
            text += part(p, i == 0 ? firstHead : p.headLimit, f);
        parts << text;
    }
    sections << parts.join(breakOrSpace);

    if (!q.orderBy.isEmpty()) {
        QStringList items;
        for (const SortItem &s : q.orderBy) {
            QString t = expression(s.expression);
            if (s.direction != SortItem::Default)
                t += s.direction == SortItem::Ascending ? QStringLiteral(" ASC") : QStringLiteral(" DESC");
            if (s.nulls != SortItem::NullsDefault)
                t += s.nulls == SortItem::NullsFirst ? QStringLiteral(" NULLS FIRST") : QStringLiteral(" NULLS LAST");
            items << indentRest(t, f.partIndent);
        }
        sections << (f.keywordsNewLine ? QStringLiteral("ORDER BY\n") + spaces(f.partIndent) : QStringLiteral("ORDER BY "))
                        + items.join(QStringLiteral(", "));
    }
    if (!trailing.isEmpty())
        sections << limitText(trailing);
    return sections.join(breakOrSpace);
}

QString SqlGenerator::part(const SelectPart &p, const RowLimit &head, const SqlFormat &f) const
{
    const QString breakOrSpace = f.mainPartNewLine ? QStringLiteral("\n") : QStringLiteral(" ");
    const QString pad = spaces(f.partIndent);
    // A clause: its keyword, then its items on the keyword's line or below it.
    const auto clause = [&](const QString &keyword, const QStringList &items, bool itemNewLine) {
        const QString separator = itemNewLine ? QStringLiteral(",\n") + pad : QStringLiteral(", ");
        return keyword + (f.keywordsNewLine ? QLatin1Char('\n') + pad : QStringLiteral(" ")) + items.join(separator);
    };

    QString headText = QStringLiteral("SELECT");
    const bool limitFirst = head.form == LimitForm::FirstSkip;
    if (limitFirst)
        headText += QLatin1Char(' ') + limitText(head);
    if (p.distinct)
        headText += QStringLiteral(" DISTINCT");
    if (!head.isEmpty() && !limitFirst)
        headText += QLatin1Char(' ') + limitText(head);

    QStringList items;
    for (const SelectItem &item : p.items) {
        if (!item.visible)
            continue;
        QString t = expression(item.expression);
        if (!item.alias.isEmpty())
            t += QStringLiteral(" AS ") + identifier(item.alias);
        items << indentRest(t, f.partIndent);
    }
    if (items.isEmpty())
        items << QStringLiteral("*");
    QStringList sections{clause(headText, items, f.selectItemNewLine)};
    if (!p.objects.isEmpty())
        sections << (f.keywordsNewLine ? QStringLiteral("FROM\n") + pad : QStringLiteral("FROM ")) + from(p, f);
    const auto criteria = [&](const char *keyword, const ConditionGroup &g, int mode, int indent) {
        const QString body = group(g, mode, f.partIndent, indent, 0);
        const bool below = f.keywordsNewLine || mode == 3;
        return QLatin1String(keyword) + (below ? QLatin1Char('\n') + pad : QStringLiteral(" ")) + body;
    };
    if (!p.where.isEmpty())
        sections << criteria("WHERE", p.where, f.whereNewLine, f.whereIndent);
    if (!p.groupBy.isEmpty()) {
        QStringList keys;
        for (const Expr &e : p.groupBy)
            keys << indentRest(expression(e), f.partIndent);
        sections << clause(QStringLiteral("GROUP BY"), keys, f.groupItemNewLine);
    }
    if (!p.having.isEmpty())
        sections << criteria("HAVING", p.having, f.havingNewLine, f.havingIndent);
    return sections.join(breakOrSpace);
}

QString SqlGenerator::from(const SelectPart &p, const SqlFormat &f) const
{
    const bool nestJoins = SqlDialects::traits(m_dialect.dialect).parenthesizedJoins;
    const QString joinBreak = f.fromJoinNewLine ? QLatin1Char('\n') + spaces(f.partIndent) : QStringLiteral(" ");
    QStringList entries;
    QVector<int> joinsPerEntry;
    for (int i = 0; i < p.objects.size(); ++i) {
        const Link *l = nullptr;
        for (const Link &candidate : p.links)
            if (candidate.right == i) {
                l = &candidate;
                break;
            }
        const QString objectText = object(p.objects.at(i), f);
        if (l && !entries.isEmpty()) {
            const QPair<QString, QString> around = link(*l);
            QString joined = joinBreak + around.first + objectText + around.second;
            if (nestJoins && joinsPerEntry.last() > 0)
                joined.prepend(QLatin1Char(')'));
            ++joinsPerEntry.last();
            entries.last() += joined;
        } else {
            entries << objectText;
            joinsPerEntry << 0;
        }
    }
    if (nestJoins) {
        // Access nests every join but the last in parentheses: ((a JOIN b ON ..) JOIN c ON ..).
        for (int e = 0; e < entries.size(); ++e)
            if (joinsPerEntry.at(e) > 1)
                entries[e].prepend(QString(joinsPerEntry.at(e) - 1, QLatin1Char('(')));
    }
    const QString separator = f.fromObjectNewLine ? QStringLiteral(",\n") + spaces(f.partIndent) : QStringLiteral(", ");
    return entries.join(separator);
}

// The join's text before and after the joined object.
QPair<QString, QString> SqlGenerator::link(const Link &l) const
{
    QString text = l.natural ? QStringLiteral("NATURAL ") : QString();
    switch (l.type) {
    case Link::Inner: text += l.innerKeyword ? QStringLiteral("INNER JOIN") : QStringLiteral("JOIN"); break;
    case Link::Left: text += QStringLiteral("LEFT JOIN"); break;
    case Link::Right: text += QStringLiteral("RIGHT JOIN"); break;
    case Link::Full: text += QStringLiteral("FULL OUTER JOIN"); break;
    case Link::Cross: text += QStringLiteral("CROSS JOIN"); break;
    }
    QString after;
    if (!l.condition.isEmpty()) {
        after = QStringLiteral(" ON ") + conditions(l.condition);
    } else if (!l.usingColumns.isEmpty()) {
        QStringList cols;
        for (const Identifier &c : l.usingColumns)
            cols << identifier(c);
        after = QStringLiteral(" USING (") + cols.join(QStringLiteral(", ")) + QLatin1Char(')');
    }
    return {text + QLatin1Char(' '), after};
}

QString SqlGenerator::object(const SourceObject &o, const SqlFormat &f) const
{
    QString text = o.outer ? QStringLiteral("OUTER ") : QString();
    if (o.kind == SourceObject::Derived) {
        const SqlFormat &d = m_options.derivedQueries;
        const QString body = query(*o.derived, d);
        text += d.mainPartNewLine ? QStringLiteral("(\n") + spaces(f.partIndent + d.globalIndent)
                                       + indentRest(body, f.partIndent + d.globalIndent) + QLatin1Char('\n')
                                       + spaces(f.partIndent) + QLatin1Char(')')
                                 : QLatin1Char('(') + body + QLatin1Char(')');
    } else {
        QStringList names;
        for (const Identifier &n : o.name)
            names << identifier(n);
        text += names.join(QLatin1Char('.'));
        if (o.kind == SourceObject::Function)
            text += QLatin1Char('(') + expression(o.arguments) + QLatin1Char(')');
    }
    if (!o.alias.isEmpty())
        text += QLatin1Char(' ') + identifier(o.alias);
    if (!o.columnAliases.isEmpty()) {
        QStringList cols;
        for (const Identifier &c : o.columnAliases)
            cols << identifier(c);
        text += QStringLiteral(" (") + cols.join(QStringLiteral(", ")) + QLatin1Char(')');
    }
    return text;
}

// Breaks lines longer than the right margin at a blank outside quotes, continuing two columns
// to the right of the broken line's indent.
QString SqlGenerator::wrap(const QString &text) const
{
    const int margin = qMax(10, m_options.rightMargin);
    const QVector<bool> quoted = quotedMask(text, m_dialect.dialect);
    QString out;
    QString line;
    int breakAt = -1;
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c == QLatin1Char('\n') && !quoted.at(i)) {
            out += line + c;
            line.clear();
            breakAt = -1;
            continue;
        }
        if (c == QLatin1Char(' ') && !quoted.at(i) && !line.trimmed().isEmpty())
            breakAt = int(line.size());
        line += c;
        if (line.size() > margin && breakAt > 0) {
            int indent = 0;
            while (indent < line.size() && line.at(indent) == QLatin1Char(' '))
                ++indent;
            out += line.left(breakAt) + QLatin1Char('\n');
            line = spaces(indent + 2) + line.mid(breakAt + 1);
            breakAt = -1;
        }
    }
    return out + line;
}
