#include "core/querybuilder/SqlParser.h"

#include "core/querybuilder/ConditionSplitter.h"

#include "core/querybuilder/SqlWords.h"

namespace SqlParser {

bool isReservedWord(const QString &word)
{
    static const SqlWordSet words = {
        "SELECT", "FROM", "WHERE", "GROUP", "HAVING", "ORDER", "BY", "UNION", "EXCEPT", "INTERSECT", "MINUS",
        "LIMIT", "OFFSET", "FETCH", "FOR", "WINDOW", "INTO", "AS", "ON", "USING", "JOIN", "INNER", "LEFT", "RIGHT",
        "FULL", "CROSS", "NATURAL", "OUTER", "AND", "OR", "NOT", "IS", "IN", "LIKE", "ILIKE", "BETWEEN", "NULL",
        "CASE", "WHEN", "THEN", "ELSE", "END", "EXISTS", "DISTINCT", "ALL", "ANY", "SOME", "ASC", "DESC", "NULLS",
        "ESCAPE", "WITH", "TRUE", "FALSE", "OVER", "COLLATE", "QUALIFY", "RETURNING", "WITHIN"};
    return words.contains(word);
}

namespace {

// Words that end an expression at its outermost level.
bool isClauseWord(QStringView word)
{
    static const SqlWordSet words = {
        "FROM", "INTO", "WHERE", "GROUP", "HAVING", "ORDER", "UNION", "EXCEPT", "INTERSECT", "LIMIT", "OFFSET",
        "FETCH", "FOR", "WINDOW", "ON", "USING", "JOIN", "INNER", "LEFT", "RIGHT", "FULL", "CROSS", "NATURAL",
        "ASC", "DESC", "NULLS", "AS", "RETURNING", "QUALIFY"};
    return words.contains(word);
}

constexpr int MaxNesting = 150;

// First words of the statements other than SELECT that the dialects know.
bool startsOtherStatement(QStringView word)
{
    static const SqlWordSet words = {
        "INSERT", "UPDATE", "DELETE", "MERGE", "UPSERT", "REPLACE", "CREATE", "ALTER", "DROP", "TRUNCATE",
        "RENAME", "COMMENT", "GRANT", "REVOKE", "DENY", "EXEC", "EXECUTE", "CALL", "DECLARE", "SET", "BEGIN",
        "START", "COMMIT", "ROLLBACK", "SAVEPOINT", "RELEASE", "END", "USE", "SHOW", "DESCRIBE", "DESC",
        "EXPLAIN", "PRAGMA", "VACUUM", "ANALYZE", "ANALYSE", "REINDEX", "ATTACH", "DETACH", "LOCK", "UNLOCK",
        "LOAD", "COPY", "VALUES", "TABLE", "IF", "WHILE", "PRINT", "RAISERROR", "THROW", "RETURN", "GO",
        "BACKUP", "RESTORE", "DBCC", "CHECKPOINT", "KILL", "RECONFIGURE", "SHUTDOWN", "OPEN", "CLOSE", "FETCH",
        "DEALLOCATE", "PREPARE", "LISTEN", "NOTIFY", "DO", "REFRESH", "CLUSTER", "DISCARD", "RESET", "CONNECT",
        "DISCONNECT", "RECREATE", "OPTIMIZE", "REPAIR", "CHECK", "FLUSH", "HANDLER", "INSTALL",
        "UNINSTALL", "PURGE", "FLASHBACK", "AUDIT", "NOAUDIT", "ASSOCIATE", "DISASSOCIATE", "SUMMARIZE"};
    return words.contains(word);
}

} // namespace

bool endsCondition(const QString &word)
{
    return isClauseWord(word);
}

namespace {

ExprPart::Kind partKind(SqlToken::Kind kind)
{
    switch (kind) {
    case SqlToken::QuotedName: return ExprPart::QuotedName;
    case SqlToken::String: return ExprPart::String;
    case SqlToken::Number: return ExprPart::Number;
    case SqlToken::Parameter: return ExprPart::Parameter;
    case SqlToken::Operator: return ExprPart::Operator;
    case SqlToken::Comma: return ExprPart::Comma;
    case SqlToken::Dot: return ExprPart::Dot;
    case SqlToken::LParen: return ExprPart::LParen;
    case SqlToken::RParen: return ExprPart::RParen;
    default: return ExprPart::Word;
    }
}

class Parser
{
public:
    Parser(const QString &text, SqlDialect dialect)
        : m_tokens(SqlLexer::tokenize(text, dialect)), m_dialect(dialect), m_traits(SqlDialects::traits(dialect))
    {
    }

    Result run()
    {
        Result result;
        if (peek().kind == SqlToken::End || (peek().kind == SqlToken::Semicolon && peek(1).kind == SqlToken::End))
            return result;
        if (!startsQuery(0) && !peek().isWord("WITH")) {
            // Another kind of statement is kept as text; a word that starts no statement is
            // more likely a mistyped SELECT, which deserves an error with its place.
            if (peek().kind == SqlToken::Word && !startsOtherStatement(peek().text))
                failAt(peek(), QStringLiteral("Expected SELECT but found %1").arg(describe(peek())));
            result.isSelect = false;
            return result;
        }
        result.query = parseQuery(true);
        if (m_notSelect) {
            result.isSelect = false;
            result.query = Query();
            return result;
        }
        accept(SqlToken::Semicolon);
        if (peek().kind != SqlToken::End)
            unexpected();
        return result;
    }

    Expr runExpression()
    {
        Expr e = requireExpr(false);
        if (peek().kind != SqlToken::End)
            unexpected();
        return e;
    }

    ConditionGroup runCondition()
    {
        ConditionGroup g = parseConditions();
        if (peek().kind != SqlToken::End)
            unexpected();
        return g;
    }

private:
    // ---- tokens -------------------------------------------------------------------------------

    const SqlToken &peek(int ahead = 0) const
    {
        const int i = qMin(m_pos + ahead, int(m_tokens.size()) - 1);
        return m_tokens.at(i);
    }
    const SqlToken &take() { const SqlToken &t = peek(); if (t.kind != SqlToken::End) ++m_pos; return t; }
    bool accept(SqlToken::Kind kind)
    {
        if (peek().kind != kind)
            return false;
        ++m_pos;
        return true;
    }
    bool acceptWord(const char *upper)
    {
        if (!peek().isWord(upper))
            return false;
        ++m_pos;
        return true;
    }

    [[noreturn]] void failAt(const SqlToken &t, const QString &what) const
    {
        throw SqlParseError(what, t.offset, t.line, t.column);
    }
    [[noreturn]] void unexpected() const
    {
        const SqlToken &t = peek();
        if (t.kind == SqlToken::End)
            failAt(t, QStringLiteral("Unexpected end of the statement"));
        failAt(t, QStringLiteral("Unexpected '%1'").arg(t.kind == SqlToken::QuotedName ? t.text : t.text.left(40)));
    }
    void expect(SqlToken::Kind kind, const char *what)
    {
        if (!accept(kind))
            failAt(peek(), QStringLiteral("Expected %1 but found %2").arg(QLatin1String(what), describe(peek())));
    }
    void expectWord(const char *upper)
    {
        if (!acceptWord(upper))
            failAt(peek(), QStringLiteral("Expected %1 but found %2").arg(QLatin1String(upper), describe(peek())));
    }
    static QString describe(const SqlToken &t)
    {
        return t.kind == SqlToken::End ? QStringLiteral("the end of the statement")
                                       : QStringLiteral("'%1'").arg(t.text.left(40));
    }

    bool startsQuery(int ahead) const
    {
        int i = ahead;
        while (peek(i).kind == SqlToken::LParen)
            ++i;
        return peek(i).isWord("SELECT") || (i > ahead && peek(i).isWord("WITH"));
    }

    bool isValueStart(int ahead) const
    {
        const SqlToken::Kind k = peek(ahead).kind;
        return k == SqlToken::Number || k == SqlToken::Parameter || k == SqlToken::LParen;
    }

    // A limit keyword of the dialect followed by its value.
    bool startsLimitWord(int ahead = 0) const
    {
        const SqlToken &t = peek(ahead);
        if (t.kind != SqlToken::Word || !isValueStart(ahead + 1))
            return false;
        if (t.isWord("ROWS"))
            return SqlDialects::acceptsLimit(m_dialect, LimitForm::Rows);
        if (t.isWord("FIRST") || t.isWord("SKIP"))
            return SqlDialects::acceptsLimit(m_dialect, LimitForm::FirstSkip);
        if (t.isWord("TOP"))
            return SqlDialects::acceptsLimit(m_dialect, LimitForm::Top);
        return false;
    }

    bool isSetOperator(int ahead = 0) const
    {
        const SqlToken &t = peek(ahead);
        return t.isWord("UNION") || t.isWord("EXCEPT") || t.isWord("INTERSECT")
               || (t.isWord("MINUS") && (m_traits.minusForExcept || m_dialect == SqlDialect::Universal));
    }

    // A word or quoted name that may stand as an alias here.
    bool isAliasCandidate(int ahead = 0) const
    {
        const SqlToken &t = peek(ahead);
        if (t.kind == SqlToken::QuotedName)
            return true;
        return t.kind == SqlToken::Word && !isReservedWord(t.text) && !startsLimitWord(ahead) && !isSetOperator(ahead);
    }

    Identifier identifierFrom(const SqlToken &t) const
    {
        if (t.kind == SqlToken::QuotedName)
            return Identifier{t.text, true};
        return Identifier::of(t.text);
    }

    // A name; a reserved word only where it cannot be read otherwise (after a dot).
    Identifier parseIdentifier(const char *what, bool allowReserved = false)
    {
        const SqlToken &t = peek();
        if (t.kind != SqlToken::QuotedName && (t.kind != SqlToken::Word || (!allowReserved && isReservedWord(t.text))))
            failAt(t, QStringLiteral("Expected %1 but found %2").arg(QLatin1String(what), describe(t)));
        ++m_pos;
        return identifierFrom(t);
    }

    QVector<Identifier> parseIdentifierList()
    {
        QVector<Identifier> list;
        expect(SqlToken::LParen, "'('");
        do
            list.append(parseIdentifier("a column name"));
        while (accept(SqlToken::Comma));
        expect(SqlToken::RParen, "')'");
        return list;
    }

    // ---- queries ------------------------------------------------------------------------------

    struct DepthGuard
    {
        DepthGuard(Parser &p) : parser(p)
        {
            if (++parser.m_depth > MaxNesting)
                parser.failAt(parser.peek(), QStringLiteral("The statement is nested too deeply"));
        }
        ~DepthGuard() { --parser.m_depth; }
        Parser &parser;
    };

    Query parseQuery(bool statement = false)
    {
        DepthGuard guard(*this);
        Query query;
        if (acceptWord("WITH")) {
            query.recursive = acceptWord("RECURSIVE");
            do {
                WithQuery with;
                with.name = parseIdentifier("a query name");
                if (peek().kind == SqlToken::LParen)
                    with.columns = parseIdentifierList();
                expectWord("AS");
                expect(SqlToken::LParen, "'('");
                with.query = Box<Query>(parseQuery());
                expect(SqlToken::RParen, "')'");
                query.with.append(std::move(with));
            } while (accept(SqlToken::Comma));
            if (statement && !startsQuery(0)) {
                // WITH ... INSERT / UPDATE / DELETE: a statement the builder keeps as text.
                m_notSelect = true;
                return query;
            }
        }
        query.parts.append(parsePart());
        while (isSetOperator()) {
            const SqlToken &op = take();
            SelectPart::SetOperator setOp = SelectPart::Union;
            if (op.isWord("EXCEPT"))
                setOp = SelectPart::Except;
            else if (op.isWord("INTERSECT"))
                setOp = SelectPart::Intersect;
            else if (op.isWord("MINUS"))
                setOp = SelectPart::Minus;
            const bool all = acceptWord("ALL");
            const bool distinctKeyword = !all && acceptWord("DISTINCT");
            SelectPart part = parsePart();
            part.setOperator = setOp;
            part.all = all;
            part.distinctKeyword = distinctKeyword;
            query.parts.append(std::move(part));
        }
        if (peek().isWord("ORDER")) {
            take();
            expectWord("BY");
            do
                query.orderBy.append(parseSortItem());
            while (accept(SqlToken::Comma));
        }
        parseTrailingLimit(query.limit);
        return query;
    }

    SelectPart parsePart()
    {
        SelectPart part;
        if (peek().kind == SqlToken::LParen) {
            take();
            part.nested = Box<Query>(parseQuery());
            expect(SqlToken::RParen, "')'");
            return part;
        }
        expectWord("SELECT");
        parseHead(part);
        do
            part.items.append(parseSelectItem());
        while (accept(SqlToken::Comma));
        if (acceptWord("FROM"))
            parseFrom(part);
        if (acceptWord("WHERE"))
            part.where = parseConditions();
        if (peek().isWord("GROUP")) {
            take();
            expectWord("BY");
            do
                part.groupBy.append(requireExpr(false));
            while (accept(SqlToken::Comma));
        }
        if (acceptWord("HAVING"))
            part.having = parseConditions();
        return part;
    }

    // DISTINCT, TOP, FIRST and SKIP in the order the dialects write them.
    void parseHead(SelectPart &part)
    {
        for (;;) {
            if (acceptWord("DISTINCT")) {
                part.distinct = true;
            } else if (peek().isWord("ALL") && !part.distinct) {
                take();
            } else if (startsLimitWord() && peek().isWord("TOP") && part.headLimit.isEmpty()) {
                take();
                part.headLimit.form = LimitForm::Top;
                part.headLimit.count = parseLimitValue();
                part.headLimit.percent = acceptWord("PERCENT");
                if (peek().isWord("WITH") && peek(1).isWord("TIES")) {
                    m_pos += 2;
                    part.headLimit.withTies = true;
                }
            } else if (startsLimitWord() && peek().isWord("FIRST") && part.headLimit.count.isEmpty()
                       && part.headLimit.form != LimitForm::Top) {
                take();
                part.headLimit.form = LimitForm::FirstSkip;
                part.headLimit.skipFirst = !part.headLimit.offset.isEmpty();
                part.headLimit.count = parseLimitValue();
            } else if (startsLimitWord() && peek().isWord("SKIP") && part.headLimit.offset.isEmpty()
                       && part.headLimit.form != LimitForm::Top) {
                take();
                part.headLimit.form = LimitForm::FirstSkip;
                part.headLimit.offset = parseLimitValue();
            } else {
                return;
            }
        }
    }

    // A number, a parameter, or an expression in parentheses (kept with its parentheses).
    Expr parseLimitValue()
    {
        Expr e;
        const SqlToken &t = peek();
        if (t.kind == SqlToken::Number || t.kind == SqlToken::Parameter) {
            take();
            e.parts.append(ExprPart{partKind(t.kind), t.text, SubqueryKind::Scalar, {}});
            return e;
        }
        if (t.kind != SqlToken::LParen)
            failAt(t, QStringLiteral("Expected a row count but found %1").arg(describe(t)));
        take();
        e.parts.append(ExprPart{ExprPart::LParen, QStringLiteral("("), SubqueryKind::Scalar, {}});
        Expr inner = requireExpr(false);
        e.parts += inner.parts;
        expect(SqlToken::RParen, "')'");
        e.parts.append(ExprPart{ExprPart::RParen, QStringLiteral(")"), SubqueryKind::Scalar, {}});
        return e;
    }

    void parseTrailingLimit(RowLimit &limit)
    {
        const bool limitForm = SqlDialects::acceptsLimit(m_dialect, LimitForm::Limit);
        const bool fetchForm = SqlDialects::acceptsLimit(m_dialect, LimitForm::FetchFirst);
        if (limitForm && peek().isWord("LIMIT")) {
            take();
            limit.form = LimitForm::Limit;
            limit.count = parseLimitValue();
            if (accept(SqlToken::Comma)) {
                limit.offset = limit.count;
                limit.count = parseLimitValue();
                limit.skipFirst = true;
            } else if (acceptWord("OFFSET")) {
                limit.offset = parseLimitValue();
            }
            return;
        }
        if (startsLimitWord() && peek().isWord("ROWS")) {
            take();
            limit.form = LimitForm::Rows;
            limit.count = parseLimitValue();
            if (acceptWord("TO"))
                limit.offset = parseLimitValue();
            return;
        }
        // OFFSET m [ROWS] before FETCH FIRST (or alone, as PostgreSQL allows).
        if (fetchForm && peek().isWord("OFFSET") && isValueStart(1)) {
            take();
            limit.offset = parseLimitValue();
            limit.form = LimitForm::FetchFirst;
            if (!acceptWord("ROWS"))
                acceptWord("ROW");
        }
        if (fetchForm && peek().isWord("FETCH")) {
            take();
            if (!acceptWord("FIRST"))
                expectWord("NEXT");
            limit.form = LimitForm::FetchFirst;
            limit.count = parseLimitValue();
            if (!acceptWord("ROWS"))
                expectWord("ROW");
            if (peek().isWord("WITH")) {
                take();
                expectWord("TIES");
                limit.withTies = true;
            } else {
                expectWord("ONLY");
            }
        }
    }

    SelectItem parseSelectItem()
    {
        SelectItem item;
        item.expression = requireExpr(true);
        if (acceptWord("AS"))
            item.alias = parseIdentifier("an alias");
        else if (isAliasCandidate())
            item.alias = identifierFrom(take());
        return item;
    }

    SortItem parseSortItem()
    {
        SortItem item;
        item.expression = requireExpr(false);
        if (acceptWord("ASC"))
            item.direction = SortItem::Ascending;
        else if (acceptWord("DESC"))
            item.direction = SortItem::Descending;
        if (acceptWord("NULLS")) {
            if (acceptWord("FIRST"))
                item.nulls = SortItem::NullsFirst;
            else {
                expectWord("LAST");
                item.nulls = SortItem::NullsLast;
            }
        }
        return item;
    }

    // ---- FROM ---------------------------------------------------------------------------------

    void parseFrom(SelectPart &part)
    {
        do {
            parseFromItem(part, true);
            parseJoins(part);
        } while (accept(SqlToken::Comma));
    }

    bool startsJoin() const
    {
        int i = 0;
        if (peek(i).isWord("NATURAL"))
            ++i;
        const SqlToken &t = peek(i);
        return t.isWord("JOIN") || t.isWord("INNER") || t.isWord("LEFT") || t.isWord("RIGHT") || t.isWord("FULL")
               || t.isWord("CROSS");
    }

    void parseJoins(SelectPart &part)
    {
        while (startsJoin()) {
            Link link;
            link.natural = acceptWord("NATURAL");
            link.innerKeyword = false;
            const SqlToken &t = peek();
            if (acceptWord("INNER")) {
                link.innerKeyword = true;
            } else if (acceptWord("CROSS")) {
                link.type = Link::Cross;
            } else if (t.isWord("LEFT") || t.isWord("RIGHT") || t.isWord("FULL")) {
                take();
                link.type = t.isWord("LEFT") ? Link::Left : t.isWord("RIGHT") ? Link::Right : Link::Full;
                acceptWord("OUTER");
            }
            expectWord("JOIN");
            if (peek().kind == SqlToken::LParen && !startsQuery(1))
                failAt(peek(), QStringLiteral("Joins nested in parentheses after JOIN are not supported"));
            parseFromItem(part, false);
            link.right = int(part.objects.size()) - 1;
            if (link.type != Link::Cross && !link.natural) {
                if (acceptWord("ON"))
                    link.condition = parseConditions();
                else if (peek().isWord("USING")) {
                    take();
                    link.usingColumns = parseIdentifierList();
                }
            }
            link.left = leftObjectOf(part, link);
            part.links.append(std::move(link));
        }
    }

    // The object at the link's other end: the latest earlier object its condition names.
    static int leftObjectOf(const SelectPart &part, const Link &link)
    {
        int best = -1;
        const auto scan = [&](const Expr &e) {
            for (int i = 0; i + 1 < e.parts.size(); ++i) {
                const ExprPart &p = e.parts.at(i);
                if ((p.kind == ExprPart::Word || p.kind == ExprPart::QuotedName) && e.parts.at(i + 1).kind == ExprPart::Dot) {
                    for (int o = link.right - 1; o > best; --o) {
                        if (part.objects.at(o).referenceName().compare(p.text, Qt::CaseInsensitive) == 0) {
                            best = o;
                            break;
                        }
                    }
                }
            }
        };
        const auto walk = [&](const ConditionGroup &g, const auto &self) -> void {
            for (const ConditionItem &item : g.items) {
                if (item.group)
                    self(*item.group, self);
                else
                    scan(item.condition);
            }
        };
        walk(link.condition, walk);
        return best >= 0 ? best : qMax(0, link.right - 1);
    }

    void parseFromItem(SelectPart &part, bool allowJoinGroup)
    {
        DepthGuard guard(*this);
        SourceObject object;
        if ((m_dialect == SqlDialect::Informix || m_dialect == SqlDialect::Universal) && allowJoinGroup
            && peek().isWord("OUTER") && peek(1).kind != SqlToken::Dot)
            object.outer = acceptWord("OUTER");
        if (peek().kind == SqlToken::LParen) {
            if (!startsQuery(1)) {
                if (!allowJoinGroup || object.outer)
                    unexpected();
                // (a JOIN b ON ...) JOIN c ON ...: the parentheses only group joins from the left.
                take();
                parseFromItem(part, true);
                parseJoins(part);
                expect(SqlToken::RParen, "')'");
                return;
            }
            take();
            object.kind = SourceObject::Derived;
            object.derived = Box<Query>(parseQuery());
            expect(SqlToken::RParen, "')'");
        } else {
            object.name.append(parseIdentifier("a table name"));
            while (accept(SqlToken::Dot))
                object.name.append(parseIdentifier("a name after '.'", true));
            if (peek().kind == SqlToken::LParen) {
                take();
                object.kind = SourceObject::Function;
                if (peek().kind != SqlToken::RParen)
                    object.arguments = parseExpr(false, true);
                expect(SqlToken::RParen, "')'");
            }
        }
        if (acceptWord("AS"))
            object.alias = parseIdentifier("an alias");
        else if (isAliasCandidate())
            object.alias = identifierFrom(take());
        if (!object.alias.isEmpty() && object.kind != SourceObject::Table && peek().kind == SqlToken::LParen)
            object.columnAliases = parseIdentifierList();
        part.objects.append(std::move(object));
    }

    // ---- expressions --------------------------------------------------------------------------

    Expr requireExpr(bool allowAlias)
    {
        const SqlToken &start = peek();
        Expr e = parseExpr(allowAlias, false);
        if (e.isEmpty())
            failAt(start, QStringLiteral("Expected an expression but found %1").arg(describe(start)));
        return e;
    }

    static bool endsOperand(const Expr &e)
    {
        if (e.parts.isEmpty())
            return false;
        const ExprPart &p = e.parts.last();
        switch (p.kind) {
        case ExprPart::QuotedName: case ExprPart::String: case ExprPart::Number: case ExprPart::Parameter:
        case ExprPart::RParen: case ExprPart::Subquery:
            return true;
        case ExprPart::Word:
            return !isReservedWord(p.text) || p.text.compare(QLatin1String("END"), Qt::CaseInsensitive) == 0
                   || p.text.compare(QLatin1String("NULL"), Qt::CaseInsensitive) == 0
                   || p.text.compare(QLatin1String("TRUE"), Qt::CaseInsensitive) == 0
                   || p.text.compare(QLatin1String("FALSE"), Qt::CaseInsensitive) == 0;
        case ExprPart::Operator:
            // SELECT * and t.*: a star that is not a multiplication.
            return p.text == QLatin1String("*")
                   && (e.parts.size() == 1 || e.parts.at(e.parts.size() - 2).kind == ExprPart::Dot);
        default:
            return false;
        }
    }

    bool endsExpression(const Expr &e, bool allowAlias) const
    {
        const SqlToken &t = peek();
        switch (t.kind) {
        case SqlToken::End: case SqlToken::Semicolon: case SqlToken::RParen: case SqlToken::Comma:
            return true;
        case SqlToken::Word: {
            if (isClauseWord(t.text)) {
                if ((t.isWord("LEFT") || t.isWord("RIGHT")) && peek(1).kind == SqlToken::LParen)
                    return false;
                return !(t.isWord("GROUP") && !e.parts.isEmpty() && e.parts.last().kind == ExprPart::Word
                         && e.parts.last().text.compare(QLatin1String("WITHIN"), Qt::CaseInsensitive) == 0);
            }
            if (isSetOperator() || startsLimitWord())
                return true;
            break;
        }
        default:
            break;
        }
        // An alias never opens a parenthesis: FILTER (WHERE ...) and the like go on.
        if (t.isWord("WITHIN") && peek(1).isWord("GROUP"))
            return false;
        return allowAlias && isAliasCandidate() && peek(1).kind != SqlToken::LParen && endsOperand(e);
    }

    // The tokens of one expression up to the word, comma or parenthesis that ends it; with
    // allowCommas, commas at the outermost level belong to it (function arguments).
    Expr parseExpr(bool allowAlias, bool allowCommas)
    {
        Expr e;
        int depth = 0;
        for (;;) {
            const SqlToken &t = peek();
            if (t.kind == SqlToken::End || t.kind == SqlToken::Semicolon)
                break;
            if (depth == 0 && !(allowCommas && t.kind == SqlToken::Comma) && endsExpression(e, allowAlias))
                break;
            // A subquery starts right after its parenthesis; in ((SELECT ...)) the outer pair
            // belongs to the expression.
            if (t.kind == SqlToken::LParen && (peek(1).isWord("SELECT") || peek(1).isWord("WITH"))) {
                take();
                ExprPart part{ExprPart::Subquery, QString(), subqueryKindAfter(e), Box<Query>(parseQuery())};
                expect(SqlToken::RParen, "')'");
                e.parts.append(std::move(part));
                continue;
            }
            if (t.kind == SqlToken::LParen) {
                if (++depth > MaxNesting * 20)
                    failAt(t, QStringLiteral("The statement is nested too deeply"));
            } else if (t.kind == SqlToken::RParen) {
                --depth;
            }
            // A SELECT in an expression stands only in parentheses of its own; an expression that
            // opens with WITH would read back as a subquery once put in parentheses.
            if ((t.kind == SqlToken::Number && followsValue(e)) || t.isWord("SELECT")
                || (e.parts.isEmpty() && t.isWord("WITH")))
                unexpected();
            take();
            e.parts.append(ExprPart{partKind(t.kind), t.text, SubqueryKind::Scalar, {}});
        }
        if (depth > 0)
            failAt(peek(), QStringLiteral("Expected ')' but found %1").arg(describe(peek())));
        return e;
    }

    // Whether a number here would stand right after another value ("TOP 5" where TOP is no
    // keyword, "1 2"); words that take a literal (INTERVAL 5 DAY) are no such value.
    static bool followsValue(const Expr &e)
    {
        if (e.parts.isEmpty())
            return false;
        const ExprPart &p = e.parts.last();
        if (p.kind == ExprPart::Word) {
            static const QStringList literalWords = {QStringLiteral("INTERVAL"), QStringLiteral("DATE"),
                                                     QStringLiteral("TIME"), QStringLiteral("TIMESTAMP")};
            return !isReservedWord(p.text) && !literalWords.contains(p.text.toUpper());
        }
        return p.kind == ExprPart::Number || p.kind == ExprPart::String || p.kind == ExprPart::QuotedName
               || p.kind == ExprPart::Parameter;
    }

    static SubqueryKind subqueryKindAfter(const Expr &e)
    {
        if (e.parts.isEmpty() || e.parts.last().kind != ExprPart::Word)
            return SubqueryKind::Scalar;
        const QString w = e.parts.last().text.toUpper();
        if (w == QLatin1String("IN"))
            return SubqueryKind::In;
        if (w == QLatin1String("EXISTS"))
            return SubqueryKind::Exists;
        if (w == QLatin1String("ANY") || w == QLatin1String("ALL") || w == QLatin1String("SOME"))
            return SubqueryKind::Quantified;
        return SubqueryKind::Scalar;
    }

    ConditionGroup parseConditions()
    {
        const SqlToken &start = peek();
        Expr e = requireExpr(false);
        try {
            ConditionSplitter::DialectWords words;
            words.minus = m_traits.minusForExcept || m_dialect == SqlDialect::Universal;
            words.rows = SqlDialects::acceptsLimit(m_dialect, LimitForm::Rows);
            words.firstSkip = SqlDialects::acceptsLimit(m_dialect, LimitForm::FirstSkip);
            words.top = SqlDialects::acceptsLimit(m_dialect, LimitForm::Top);
            return ConditionSplitter::split(std::move(e), words);
        } catch (const ConditionSplitter::EmptyCondition &) {
            failAt(start, QStringLiteral("A condition is missing next to AND or OR"));
        } catch (const ConditionSplitter::UnclosedCase &) {
            failAt(start, QStringLiteral("A CASE in the condition has no END"));
        }
    }

    QVector<SqlToken> m_tokens;
    SqlDialect m_dialect;
    const SqlDialects::Traits &m_traits;
    int m_pos = 0;
    int m_depth = 0;
    bool m_notSelect = false;
};

} // namespace

Result parse(const QString &text, SqlDialect dialect)
{
    return Parser(text, dialect).run();
}

Expr parseExpression(const QString &text, SqlDialect dialect)
{
    return Parser(text, dialect).runExpression();
}

ConditionGroup parseCondition(const QString &text, SqlDialect dialect)
{
    return Parser(text, dialect).runCondition();
}

} // namespace SqlParser
