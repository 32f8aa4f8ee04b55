#include "core/querybuilder/QueryEngine.h"

#include "core/querybuilder/SqlGenerator.h"
#include "core/querybuilder/SqlLexer.h"
#include "core/querybuilder/SqlParser.h"

QueryEngine::QueryEngine(QObject *parent) : QObject(parent) {}

void QueryEngine::setDialect(const DialectChoice &dialect)
{
    m_dialect = dialect;
    if (!m_sleeping)
        regenerate();
}

void QueryEngine::setDialectCode(int code)
{
    setDialect(SqlDialects::fromCode(code));
}

void QueryEngine::setGeneratorOptions(const GeneratorOptions &options)
{
    const bool quoteAll = m_options.quoteAllIdentifiers;
    m_options = options;
    m_options.quoteAllIdentifiers = quoteAll;
    if (!m_sleeping)
        regenerate();
}

void QueryEngine::setQuoteAllIdentifiers(bool on)
{
    m_options.quoteAllIdentifiers = on;
    if (!m_sleeping)
        regenerate();
}

void QueryEngine::setSql(const QString &text)
{
    SqlParser::Result result = SqlParser::parse(text, m_dialect.dialect);
    if (!result.isSelect) {
        if (!m_allowSleep)
            throw SqlParseError(QStringLiteral("Only SELECT statements can be loaded"), 0, 1, 1);
        m_query = Query();
        m_sleeping = true;
        m_sql = text;
        emit sqlUpdated(m_sql);
        return;
    }
    checkKnownObjects(text);
    m_query = std::move(result.query);
    m_sleeping = false;
    regenerate();
}

bool QueryEngine::setQuery(const Query &query)
{
    if (m_sleeping && !query.isEmpty()) {
        if (m_wakeHandler && !m_wakeHandler())
            return false;
        m_sleeping = false;
    }
    if (m_sleeping)
        return false;
    m_query = query;
    regenerate();
    return true;
}

void QueryEngine::regenerate()
{
    const QString text = SqlGenerator(m_dialect, m_options).generate(m_query);
    if (text == m_sql)
        return;
    m_sql = text;
    emit sqlUpdated(m_sql);
}

void QueryEngine::refreshMetadata()
{
    if (isOffline())
        return;
    m_catalog = m_provider->loadCatalog();
}

namespace {

void collectTables(const Query &q, QVector<QVector<Identifier>> &tables, QStringList &withNames)
{
    for (const WithQuery &w : q.with) {
        withNames << w.name.name;
        collectTables(*w.query, tables, withNames);
    }
    const auto inExpr = [&](const Expr &e) {
        for (const ExprPart &p : e.parts)
            if (p.subquery)
                collectTables(*p.subquery, tables, withNames);
    };
    const auto inGroup = [&](const ConditionGroup &g, const auto &self) -> void {
        for (const ConditionItem &i : g.items) {
            if (i.group)
                self(*i.group, self);
            else
                inExpr(i.condition);
        }
    };
    for (const SelectPart &p : q.parts) {
        if (p.nested)
            collectTables(*p.nested, tables, withNames);
        for (const SourceObject &o : p.objects) {
            if (o.kind == SourceObject::Table)
                tables << o.name;
            else if (o.derived)
                collectTables(*o.derived, tables, withNames);
        }
        for (const SelectItem &i : p.items)
            inExpr(i.expression);
        inGroup(p.where, inGroup);
        inGroup(p.having, inGroup);
        for (const Link &l : p.links)
            inGroup(l.condition, inGroup);
    }
}

} // namespace

void QueryEngine::checkKnownObjects(const QString &text) const
{
    if (!m_errorOnUnknown || m_catalog.isEmpty() || isOffline())
        return;
    SqlParser::Result result = SqlParser::parse(text, m_dialect.dialect);
    QVector<QVector<Identifier>> tables;
    QStringList withNames;
    collectTables(result.query, tables, withNames);
    for (const QVector<Identifier> &name : tables) {
        const QString last = name.last().name;
        if (withNames.contains(last, Qt::CaseInsensitive)
            || m_catalog.find(last, name.size() > 1 ? name.at(name.size() - 2).name : QString()))
            continue;
        // Point at the first place the name is written.
        for (const SqlToken &t : SqlLexer::tokenize(text, m_dialect.dialect))
            if ((t.kind == SqlToken::Word || t.kind == SqlToken::QuotedName) && t.text.compare(last, Qt::CaseInsensitive) == 0)
                throw SqlParseError(QStringLiteral("Unknown object '%1'").arg(last), t.offset, t.line, t.column);
    }
}

QVector<Link> QueryEngine::suggestedLinks() const
{
    QVector<Link> links;
    if (m_query.parts.isEmpty())
        return links;
    const SelectPart &part = m_query.parts.first();
    const auto linked = [&](int a, int b) {
        for (const Link &l : part.links)
            if ((l.left == a && l.right == b) || (l.left == b && l.right == a))
                return true;
        return false;
    };
    for (const MetadataForeignKey &fk : m_catalog.foreignKeys) {
        for (int from = 0; from < part.objects.size(); ++from) {
            for (int to = 0; to < part.objects.size(); ++to) {
                const SourceObject &a = part.objects.at(from), &b = part.objects.at(to);
                if (from == to || a.kind != SourceObject::Table || b.kind != SourceObject::Table
                    || a.name.last().name.compare(fk.table, Qt::CaseInsensitive) != 0
                    || b.name.last().name.compare(fk.referencedTable, Qt::CaseInsensitive) != 0 || linked(from, to))
                    continue;
                Link link;
                link.left = qMin(from, to);
                link.right = qMax(from, to);
                for (int c = 0; c < fk.columns.size() && c < fk.referencedColumns.size(); ++c) {
                    Expr e;
                    const auto column = [&](const SourceObject &o, const QString &col) {
                        const Identifier owner = Identifier::of(o.referenceName());
                        const Identifier name = Identifier::of(col);
                        e.parts.append(ExprPart{owner.quoted ? ExprPart::QuotedName : ExprPart::Word, owner.name, SubqueryKind::Scalar, {}});
                        e.parts.append(ExprPart{ExprPart::Dot, QStringLiteral("."), SubqueryKind::Scalar, {}});
                        e.parts.append(ExprPart{name.quoted ? ExprPart::QuotedName : ExprPart::Word, name.name, SubqueryKind::Scalar, {}});
                    };
                    column(a, fk.columns.at(c));
                    e.parts.append(ExprPart{ExprPart::Operator, QStringLiteral("="), SubqueryKind::Scalar, {}});
                    column(b, fk.referencedColumns.at(c));
                    link.condition.add(e);
                }
                links.append(link);
            }
        }
    }
    return links;
}
