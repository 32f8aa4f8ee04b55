// The parser's model of SELECT statements, its positioned errors, and the statements it leaves
// to sleep mode.

#include "core/querybuilder/SqlLexer.h"
#include "core/querybuilder/SqlParser.h"

#include <QtTest>

namespace {

Query parse(const QString &sql, SqlDialect dialect = SqlDialect::Universal)
{
    return SqlParser::parse(sql, dialect).query;
}

QStringList texts(const Expr &e)
{
    QStringList out;
    for (const ExprPart &p : e.parts)
        out << (p.kind == ExprPart::Subquery ? QStringLiteral("<subquery>") : p.text);
    return out;
}

QString joined(const Expr &e)
{
    return texts(e).join(QLatin1Char(' '));
}

} // namespace

class tst_QueryParser : public QObject
{
    Q_OBJECT

private slots:
    void objectsLinksAndSelectList()
    {
        const Query q = parse(QStringLiteral(
            "SELECT c.name AS who, COUNT(*) n, SUM(o.amount) + 1 total FROM shop.customers c "
            "JOIN orders o ON o.customer_id = c.id LEFT OUTER JOIN items i ON i.order_id = o.id "
            "RIGHT JOIN notes ON notes.cid = c.id FULL JOIN tags t ON t.x = i.x CROSS JOIN extra, "
            "(SELECT 1 AS one) d NATURAL JOIN more"));
        QCOMPARE(q.parts.size(), 1);
        const SelectPart &p = q.parts.first();
        QCOMPARE(p.items.size(), 3);
        QCOMPARE(p.items.at(0).alias.name, QStringLiteral("who"));
        QCOMPARE(p.items.at(1).alias.name, QStringLiteral("n"));
        QCOMPARE(p.items.at(1).expression.aggregate(), QStringLiteral("COUNT"));
        QCOMPARE(p.items.at(2).expression.aggregate(), QString()); // SUM(..) + 1 is no plain aggregate
        QCOMPARE(p.objects.size(), 8);
        QCOMPARE(p.objects.at(0).name.size(), 2);
        QCOMPARE(p.objects.at(0).referenceName(), QStringLiteral("c"));
        QCOMPARE(p.objects.at(3).referenceName(), QStringLiteral("notes"));
        QCOMPARE(p.objects.at(6).kind, SourceObject::Derived);
        QCOMPARE(p.objects.at(6).derived->parts.first().items.first().alias.name, QStringLiteral("one"));

        // type, left, right: the left end is the earlier object the condition names.
        const QVector<std::tuple<Link::Type, int, int>> expected = {
            {Link::Inner, 0, 1}, {Link::Left, 1, 2}, {Link::Right, 0, 3}, {Link::Full, 2, 4},
            {Link::Cross, 4, 5}, {Link::Inner, 6, 7}};
        QCOMPARE(p.links.size(), expected.size());
        for (int i = 0; i < expected.size(); ++i) {
            QCOMPARE(p.links.at(i).type, std::get<0>(expected.at(i)));
            QCOMPARE(p.links.at(i).left, std::get<1>(expected.at(i)));
            QCOMPARE(p.links.at(i).right, std::get<2>(expected.at(i)));
        }
        QVERIFY(!p.links.at(0).innerKeyword);
        QVERIFY(p.links.at(5).natural);
        QCOMPARE(joined(p.links.at(1).condition.items.first().condition), QStringLiteral("i . order_id = o . id"));
    }

    void criteriaBecomeConditionGroups()
    {
        const Query q = parse(QStringLiteral(
            "SELECT a FROM t WHERE a = 1 AND b BETWEEN 2 AND 3 OR (c = 4 AND (d = 5 OR e = 6)) "
            "OR CASE WHEN f AND g THEN 1 END = 1 GROUP BY a, b HAVING (COUNT(*) > 1)"));
        const ConditionGroup &w = q.parts.first().where;
        QCOMPARE(w.op, ConditionGroup::Or);
        QCOMPARE(w.items.size(), 3);
        const ConditionGroup &first = *w.items.at(0).group;
        QCOMPARE(first.op, ConditionGroup::And);
        QCOMPARE(joined(first.items.at(1).condition), QStringLiteral("b BETWEEN 2 AND 3"));
        const ConditionGroup &second = *w.items.at(1).group;
        QCOMPARE(second.op, ConditionGroup::And);
        QCOMPARE(second.items.at(1).group->op, ConditionGroup::Or);
        QCOMPARE(second.items.at(1).group->items.size(), 2);
        QCOMPARE(joined(w.items.at(2).condition), QStringLiteral("CASE WHEN f AND g THEN 1 END = 1"));
        QCOMPARE(q.parts.first().groupBy.size(), 2);
        // Parentheses around a single condition are dropped.
        QCOMPARE(joined(q.parts.first().having.items.first().condition), QStringLiteral("COUNT ( * ) > 1"));
    }

    void subqueriesAreParsedWithTheirKind()
    {
        const Query q = parse(QStringLiteral(
            "SELECT (SELECT MAX(x) FROM u) m FROM t WHERE a IN (SELECT a FROM v) AND EXISTS (SELECT 1 FROM w WHERE w.k = t.k) "
            "AND b > ALL (SELECT b FROM z) AND c IN (1, 2)"));
        const SelectPart &p = q.parts.first();
        QCOMPARE(p.items.first().expression.parts.first().subqueryKind, SubqueryKind::Scalar);
        const auto kindOf = [&](int i) { return p.where.items.at(i).condition.parts.last().subqueryKind; };
        QCOMPARE(kindOf(0), SubqueryKind::In);
        QCOMPARE(kindOf(1), SubqueryKind::Exists);
        QCOMPARE(kindOf(2), SubqueryKind::Quantified);
        QCOMPARE(p.where.items.at(3).condition.parts.last().kind, ExprPart::RParen); // a list, no subquery
        QCOMPARE(p.where.items.at(1).condition.parts.last().subquery->parts.first().objects.first().referenceName(),
                 QStringLiteral("w"));
    }

    void unionsWithAndSorting()
    {
        const Query q = parse(QStringLiteral(
            "WITH RECURSIVE a (x, y) AS (SELECT 1, 2), b AS (SELECT 3) "
            "SELECT x FROM a UNION ALL SELECT 3 FROM b EXCEPT (SELECT 4 FROM c) INTERSECT DISTINCT SELECT 5 "
            "ORDER BY 1 DESC NULLS FIRST, 2 ASC, 3"));
        QVERIFY(q.recursive);
        QCOMPARE(q.with.size(), 2);
        QCOMPARE(q.with.first().columns.size(), 2);
        QCOMPARE(q.parts.size(), 4);
        QVERIFY(q.parts.at(1).all);
        QCOMPARE(q.parts.at(2).setOperator, SelectPart::Except);
        QVERIFY(q.parts.at(2).nested);
        QCOMPARE(q.parts.at(3).setOperator, SelectPart::Intersect);
        QVERIFY(q.parts.at(3).distinctKeyword);
        QCOMPARE(q.orderBy.size(), 3);
        QCOMPARE(q.orderBy.at(0).direction, SortItem::Descending);
        QCOMPARE(q.orderBy.at(0).nulls, SortItem::NullsFirst);
        QCOMPARE(q.orderBy.at(1).direction, SortItem::Ascending);
        QCOMPARE(q.orderBy.at(2).direction, SortItem::Default);
    }

    void limitFormsByDialect_data()
    {
        QTest::addColumn<int>("dialect");
        QTest::addColumn<QString>("sql");
        QTest::addColumn<int>("form");
        QTest::addColumn<QString>("count");
        QTest::addColumn<QString>("offset");
        QTest::addColumn<bool>("head");
        using D = SqlDialect;
        using L = LimitForm;
        QTest::newRow("top") << int(D::MsSqlServer) << "SELECT TOP 5 a FROM t" << int(L::Top) << "5" << "" << true;
        QTest::newRow("top expr") << int(D::MsSqlServer) << "SELECT TOP (@n) a FROM t" << int(L::Top) << "( @n )" << "" << true;
        QTest::newRow("first skip") << int(D::Firebird) << "SELECT FIRST 5 SKIP 2 a FROM t" << int(L::FirstSkip) << "5" << "2" << true;
        QTest::newRow("skip first") << int(D::Informix) << "SELECT SKIP 2 FIRST 5 a FROM t" << int(L::FirstSkip) << "5" << "2" << true;
        QTest::newRow("rows to") << int(D::Interbase) << "SELECT a FROM t ROWS 2 TO 6" << int(L::Rows) << "2" << "6" << false;
        QTest::newRow("limit") << int(D::MySql) << "SELECT a FROM t LIMIT 5 OFFSET 2" << int(L::Limit) << "5" << "2" << false;
        QTest::newRow("limit comma") << int(D::Sqlite) << "SELECT a FROM t LIMIT 2, 5" << int(L::Limit) << "5" << "2" << false;
        QTest::newRow("fetch") << int(D::Db2) << "SELECT a FROM t OFFSET 2 ROWS FETCH NEXT 5 ROWS ONLY" << int(L::FetchFirst)
                               << "5" << "2" << false;
        QTest::newRow("pg offset only") << int(D::PostgreSql) << "SELECT a FROM t OFFSET 2" << int(L::FetchFirst) << "" << "2" << false;
        // A column named like a limit keyword is still a column.
        QTest::newRow("column first") << int(D::Firebird) << "SELECT first FROM t" << int(L::None) << "" << "" << true;
        QTest::newRow("column top") << int(D::Universal) << "SELECT top, rows FROM t" << int(L::None) << "" << "" << true;
    }

    void limitFormsByDialect()
    {
        QFETCH(int, dialect);
        QFETCH(QString, sql);
        QFETCH(int, form);
        QFETCH(QString, count);
        QFETCH(QString, offset);
        QFETCH(bool, head);
        const Query q = parse(sql, SqlDialect(dialect));
        const RowLimit &l = head ? q.parts.first().headLimit : q.limit;
        QCOMPARE(int(l.form), form);
        QCOMPARE(joined(l.count), count);
        QCOMPARE(joined(l.offset), offset);
    }

    // A dialect reads only its own limit forms and quotes.
    void dialectRefusesForeignForms_data()
    {
        QTest::addColumn<int>("dialect");
        QTest::addColumn<QString>("sql");
        QTest::newRow("top in postgres") << int(SqlDialect::PostgreSql) << "SELECT TOP 5 a FROM t";
        QTest::newRow("limit in sql server") << int(SqlDialect::MsSqlServer) << "SELECT a FROM t LIMIT 5";
        QTest::newRow("brackets in mysql") << int(SqlDialect::MySql) << "SELECT [a] FROM t";
        QTest::newRow("backticks in oracle") << int(SqlDialect::Oracle) << "SELECT `a` FROM t";
        QTest::newRow("first in mysql") << int(SqlDialect::MySql) << "SELECT FIRST 5 a FROM t";
    }

    void dialectRefusesForeignForms()
    {
        QFETCH(int, dialect);
        QFETCH(QString, sql);
        QVERIFY_THROWS_EXCEPTION(SqlParseError, SqlParser::parse(sql, SqlDialect(dialect)));
    }

    void lexerFollowsTheDialect()
    {
        // MySQL: "..." is a string, # a comment, backslash escapes.
        auto tokens = SqlLexer::tokenize(QStringLiteral("SELECT \"x\", 'a\\'b' # note\n, `c d`"), SqlDialect::MySql);
        QCOMPARE(tokens.at(1).kind, SqlToken::String);
        QCOMPARE(tokens.at(3).text, QStringLiteral("'a\\'b'"));
        QCOMPARE(tokens.at(5).kind, SqlToken::QuotedName);
        QCOMPARE(tokens.at(5).text, QStringLiteral("c d"));
        QCOMPARE(tokens.at(5).line, 2);
        QCOMPARE(tokens.at(5).column, 3);
        // PostgreSQL: nested comments, dollar quotes, casts, parameters; [ is an operator.
        tokens = SqlLexer::tokenize(QStringLiteral("/* a /* b */ c */ $t$x'y$t$ ::int $1 a[1]"), SqlDialect::PostgreSql);
        QCOMPARE(tokens.at(0).kind, SqlToken::String);
        QCOMPARE(tokens.at(0).text, QStringLiteral("$t$x'y$t$"));
        QCOMPARE(tokens.at(1).text, QStringLiteral("::"));
        QCOMPARE(tokens.at(3).kind, SqlToken::Parameter);
        QCOMPARE(tokens.at(5).kind, SqlToken::Operator);
        // SQL Server: brackets with a doubled closing bracket, N'' strings, @variables.
        tokens = SqlLexer::tokenize(QStringLiteral("[a]]b] N'x' @v 1.5e3 .5 0x1F"), SqlDialect::MsSqlServer);
        QCOMPARE(tokens.at(0).text, QStringLiteral("a]b"));
        QCOMPARE(tokens.at(1).kind, SqlToken::String);
        QCOMPARE(tokens.at(2).kind, SqlToken::Parameter);
        for (int i = 3; i < 6; ++i)
            QCOMPARE(tokens.at(i).kind, SqlToken::Number);
    }

    void errorsCarryTheirPosition_data()
    {
        QTest::addColumn<QString>("sql");
        QTest::addColumn<int>("line");
        QTest::addColumn<int>("column");
        QTest::addColumn<QString>("what");
        QTest::newRow("missing expression") << "SELECT a,\n  FROM t" << 2 << 3 << "Expected an expression but found 'FROM'";
        QTest::newRow("open string") << "SELECT 'abc FROM t" << 1 << 8 << "Unterminated string";
        QTest::newRow("open quoted name") << "SELECT a\nFROM \"t" << 2 << 6 << "Unterminated quoted name";
        QTest::newRow("open comment") << "SELECT a /* no end" << 1 << 10 << "Unterminated comment";
        QTest::newRow("unbalanced") << "SELECT (a + b FROM t" << 1 << 21 << "Expected ')' but found the end of the statement";
        QTest::newRow("no table") << "SELECT a FROM WHERE x = 1" << 1 << 15 << "Expected a table name but found 'WHERE'";
        QTest::newRow("trailing words") << "SELECT a FROM t x y" << 1 << 19 << "Unexpected 'y'";
        QTest::newRow("dangling and") << "SELECT a FROM t WHERE a = 1 AND" << 1 << 23 << "A condition is missing next to AND or OR";
        QTest::newRow("join without join") << "SELECT a FROM t LEFT u ON 1 = 1" << 1 << 22 << "Expected JOIN but found 'u'";
        QTest::newRow("order without by") << "SELECT a FROM t ORDER a" << 1 << 23 << "Expected BY but found 'a'";
        QTest::newRow("for update") << "SELECT a FROM t FOR UPDATE" << 1 << 17 << "Unexpected 'FOR'";
        QTest::newRow("stray character") << "SELECT a\n\n   FROM t WHERE a = \\" << 3 << 21 << "Unexpected character '\\'";
        QTest::newRow("end") << "SELECT a FROM t WHERE a IN (" << 1 << 29 << "Expected ')' but found the end of the statement";
        QTest::newRow("mistyped select") << "SELCT a FROM t" << 1 << 1 << "Expected SELECT but found 'SELCT'";
        QTest::newRow("two values") << "SELECT a FROM t WHERE a = 1 2" << 1 << 29 << "Unexpected '2'";
        QTest::newRow("criterion opening with WITH") << "SELECT a FROM t WHERE WITH.x = 1" << 1 << 23 << "Unexpected 'WITH'";
        QTest::newRow("right-nested join") << "SELECT a FROM t JOIN (u JOIN v ON 1 = 1) ON 1 = 1" << 1 << 22
                                           << "Joins nested in parentheses after JOIN are not supported";
        QTest::newRow("too deep") << QStringLiteral("SELECT a FROM t WHERE x IN (").repeated(200)
                                  << 1 << 149 * 28 + 15 << "The statement is nested too deeply";
    }

    void errorsCarryTheirPosition()
    {
        QFETCH(QString, sql);
        QFETCH(int, line);
        QFETCH(int, column);
        QFETCH(QString, what);
        try {
            SqlParser::parse(sql, SqlDialect::Universal);
            QFAIL("no error");
        } catch (const SqlParseError &e) {
            QCOMPARE(e.reason(), what);
            QCOMPARE(e.line(), line);
            QCOMPARE(e.column(), column);
            QVERIFY(e.message().endsWith(QStringLiteral("(line %1, column %2)").arg(line).arg(column)));
        }
    }

    void nonSelectStatementsAreLeftAlone_data()
    {
        QTest::addColumn<QString>("sql");
        QTest::newRow("insert") << "INSERT INTO t VALUES (1, 'x')";
        QTest::newRow("update") << "update t set a = 1 where b = 2";
        QTest::newRow("exec") << "EXEC dbo.proc @a = 1";
        QTest::newRow("with delete") << "WITH x AS (SELECT 1 AS a) DELETE FROM t WHERE a IN (SELECT a FROM x)";
        QTest::newRow("comment first") << "-- load\nINSERT INTO t SELECT * FROM u";
        QTest::newRow("odbc call escape") << "{call proc(1)}";
    }

    void nonSelectStatementsAreLeftAlone()
    {
        QFETCH(QString, sql);
        const SqlParser::Result r = SqlParser::parse(sql, SqlDialect::Universal);
        QVERIFY(!r.isSelect);
        QVERIFY(r.query.isEmpty());
    }

    void emptyTextIsAnEmptySelect()
    {
        for (const QString &text : {QString(), QStringLiteral("  -- nothing\n"), QStringLiteral(";")}) {
            const SqlParser::Result r = SqlParser::parse(text, SqlDialect::Universal);
            QVERIFY(r.isSelect);
            QVERIFY(r.query.isEmpty());
        }
    }

    void namesNeedingQuotesAreMarkedQuoted()
    {
        const Query q = parse(QStringLiteral("SELECT a AS \"order\", b AS \"plain\", c AS x FROM t AS \"my t\""));
        const SelectPart &p = q.parts.first();
        QVERIFY(p.items.at(0).alias.quoted);
        QVERIFY(p.items.at(1).alias.quoted); // quoted as written
        QVERIFY(!p.items.at(2).alias.quoted);
        QCOMPARE(Identifier::of(QStringLiteral("select")).quoted, true);
        QCOMPARE(Identifier::of(QStringLiteral("a b")).quoted, true);
        QCOMPARE(Identifier::of(QStringLiteral("v$x_1")).quoted, false);
    }
};

QTEST_GUILESS_MAIN(tst_QueryParser)
#include "tst_QueryParser.moc"
