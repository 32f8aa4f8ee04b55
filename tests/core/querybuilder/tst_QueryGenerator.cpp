// The generator's layout keys, quoting, row-limit forms by dialect, and word wrap.

#include "core/querybuilder/SqlGenerator.h"
#include "core/querybuilder/SqlParser.h"

#include <QtTest>

namespace {

const char *const Sample =
    "SELECT a, b AS x, (SELECT MAX(y) FROM u WHERE u.k = t.k AND u.z = 1) m FROM t JOIN v ON v.id = t.id AND v.q = 2, w "
    "WHERE a = 1 AND (b = 2 OR c = 3) OR d = 4 GROUP BY a, b HAVING COUNT(*) > 1 AND SUM(b) < 9 ORDER BY a";

QString generate(const QString &sql, const GeneratorOptions &options = {}, SqlDialect from = SqlDialect::Universal,
                 SqlDialect to = SqlDialect::Universal)
{
    return SqlGenerator({to, {}}, options).generate(SqlParser::parse(sql, from).query);
}

} // namespace

class tst_QueryGenerator : public QObject
{
    Q_OBJECT

private slots:
    void layoutKeys_data()
    {
        QTest::addColumn<GeneratorOptions>("options");
        QTest::addColumn<QString>("expected");

        QTest::newRow("defaults") << GeneratorOptions()
            << "SELECT a, b AS x, (SELECT MAX(y) FROM u WHERE u.k = t.k AND u.z = 1) AS m\n"
               "FROM t\n"
               "  JOIN v ON v.id = t.id AND v.q = 2, w\n"
               "WHERE a = 1 AND (b = 2 OR c = 3) OR d = 4\n"
               "GROUP BY a, b\n"
               "HAVING COUNT(*) > 1 AND SUM(b) < 9\n"
               "ORDER BY a";

        GeneratorOptions oneLine;
        oneLine.mainQuery.mainPartNewLine = oneLine.mainQuery.fromJoinNewLine = false;
        QTest::newRow("one line") << oneLine
            << "SELECT a, b AS x, (SELECT MAX(y) FROM u WHERE u.k = t.k AND u.z = 1) AS m FROM t JOIN v ON v.id = t.id "
               "AND v.q = 2, w WHERE a = 1 AND (b = 2 OR c = 3) OR d = 4 GROUP BY a, b HAVING COUNT(*) > 1 AND SUM(b) < 9 "
               "ORDER BY a";

        GeneratorOptions items;
        SqlFormat &f = items.mainQuery;
        f.keywordsNewLine = f.selectItemNewLine = f.fromObjectNewLine = f.groupItemNewLine = true;
        f.fromJoinNewLine = false;
        f.partIndent = 3;
        QTest::newRow("keywords and items on their own lines") << items
            << "SELECT\n"
               "   a,\n"
               "   b AS x,\n"
               "   (SELECT MAX(y) FROM u WHERE u.k = t.k AND u.z = 1) AS m\n"
               "FROM\n"
               "   t JOIN v ON v.id = t.id AND v.q = 2,\n"
               "   w\n"
               "WHERE\n"
               "   a = 1 AND (b = 2 OR c = 3) OR d = 4\n"
               "GROUP BY\n"
               "   a,\n"
               "   b\n"
               "HAVING\n"
               "   COUNT(*) > 1 AND SUM(b) < 9\n"
               "ORDER BY\n"
               "   a";

        GeneratorOptions leading;
        leading.mainQuery.whereNewLine = leading.mainQuery.havingNewLine = 1;
        leading.mainQuery.fromJoinNewLine = false;
        QTest::newRow("criteria lead with their operator") << leading
            << "SELECT a, b AS x, (SELECT MAX(y) FROM u WHERE u.k = t.k AND u.z = 1) AS m\n"
               "FROM t JOIN v ON v.id = t.id AND v.q = 2, w\n"
               "WHERE a = 1 AND (b = 2 OR c = 3)\n"
               "  OR d = 4\n"
               "GROUP BY a, b\n"
               "HAVING COUNT(*) > 1\n"
               "  AND SUM(b) < 9\n"
               "ORDER BY a";

        GeneratorOptions trailing;
        trailing.mainQuery.whereNewLine = 2;
        trailing.mainQuery.fromJoinNewLine = false;
        trailing.parenthesizeAndGroups = true;
        QTest::newRow("criteria end with their operator, AND groups parenthesized") << trailing
            << "SELECT a, b AS x, (SELECT MAX(y) FROM u WHERE u.k = t.k AND u.z = 1) AS m\n"
               "FROM t JOIN v ON v.id = t.id AND v.q = 2, w\n"
               "WHERE (a = 1 AND (b = 2 OR c = 3)) OR\n"
               "  d = 4\n"
               "GROUP BY a, b\n"
               "HAVING COUNT(*) > 1 AND SUM(b) < 9\n"
               "ORDER BY a";

        GeneratorOptions nested;
        nested.mainQuery.whereNewLine = 3;
        nested.mainQuery.whereIndent = 4;
        nested.mainQuery.fromJoinNewLine = false;
        QTest::newRow("nested groups opened and indented") << nested
            << "SELECT a, b AS x, (SELECT MAX(y) FROM u WHERE u.k = t.k AND u.z = 1) AS m\n"
               "FROM t JOIN v ON v.id = t.id AND v.q = 2, w\n"
               "WHERE\n"
               "  (\n"
               "      a = 1\n"
               "      AND (\n"
               "          b = 2\n"
               "          OR c = 3\n"
               "      )\n"
               "  )\n"
               "  OR d = 4\n"
               "GROUP BY a, b\n"
               "HAVING COUNT(*) > 1 AND SUM(b) < 9\n"
               "ORDER BY a";

        GeneratorOptions single;
        single.parenthesizeSingleCriterion = true;
        single.mainQuery.globalIndent = 2;
        single.subqueries.mainPartNewLine = true;
        single.subqueries.globalIndent = 4;
        QTest::newRow("single criteria parenthesized, indented query and subquery") << single
            << "  SELECT a, b AS x, (SELECT MAX(y)\n"
               "        FROM u\n"
               "        WHERE (u.k = t.k) AND (u.z = 1)) AS m\n"
               "  FROM t\n"
               "    JOIN v ON (v.id = t.id) AND (v.q = 2), w\n"
               "  WHERE (a = 1) AND ((b = 2) OR (c = 3)) OR (d = 4)\n"
               "  GROUP BY a, b\n"
               "  HAVING (COUNT(*) > 1) AND (SUM(b) < 9)\n"
               "  ORDER BY a";
    }

    void layoutKeys()
    {
        QFETCH(GeneratorOptions, options);
        QFETCH(QString, expected);
        QCOMPARE(generate(QString::fromLatin1(Sample), options), expected);
    }

    void quotingByDialect()
    {
        const QString sql = QStringLiteral("SELECT \"a b\", c FROM \"s\".\"t\" \"x y\"");
        QCOMPARE(generate(sql, {}, SqlDialect::Universal, SqlDialect::MsSqlServer), QStringLiteral("SELECT [a b], c\nFROM [s].[t] [x y]"));
        QCOMPARE(generate(sql, {}, SqlDialect::Universal, SqlDialect::MySql), QStringLiteral("SELECT `a b`, c\nFROM `s`.`t` `x y`"));
        QCOMPARE(generate(sql, {}, SqlDialect::Universal, SqlDialect::Oracle), QStringLiteral("SELECT \"a b\", c\nFROM \"s\".\"t\" \"x y\""));
        // Quote characters inside a name are doubled.
        QCOMPARE(generate(QStringLiteral("SELECT [a]]b], \"c\"\"d\" FROM t"), {}, SqlDialect::Sqlite, SqlDialect::MsSqlServer),
                 QStringLiteral("SELECT [a]]b], [c\"d]\nFROM t"));
    }

    // Excel sources: every name quoted, keywords, functions and types left alone.
    void quotingEveryIdentifier()
    {
        GeneratorOptions options;
        options.quoteAllIdentifiers = true;
        QCOMPARE(generate(QStringLiteral("SELECT s.a, CAST(b AS INTEGER) AS c, COUNT(*) FROM Sheet1$ s WHERE s.d IS NOT NULL"),
                          options, SqlDialect::AnsiSql92, SqlDialect::AnsiSql92),
                 QStringLiteral("SELECT \"s\".\"a\", CAST(\"b\" AS INTEGER) AS \"c\", COUNT(*)\nFROM \"Sheet1$\" \"s\"\n"
                                "WHERE \"s\".\"d\" IS NOT NULL"));
    }

    void rowLimitsFollowTheDialect_data()
    {
        QTest::addColumn<int>("from");
        QTest::addColumn<QString>("sql");
        QTest::addColumn<int>("to");
        QTest::addColumn<QString>("expected");
        using D = SqlDialect;
        QTest::newRow("top to limit") << int(D::MsSqlServer) << "SELECT TOP 5 a FROM t" << int(D::PostgreSql)
                                      << "SELECT a\nFROM t\nLIMIT 5";
        QTest::newRow("top to first") << int(D::MsSqlServer) << "SELECT DISTINCT TOP 5 a FROM t" << int(D::Firebird)
                                      << "SELECT FIRST 5 DISTINCT a\nFROM t";
        QTest::newRow("limit offset to first skip") << int(D::MySql) << "SELECT a FROM t LIMIT 2, 5" << int(D::Informix)
                                                    << "SELECT FIRST 5 SKIP 2 a\nFROM t";
        QTest::newRow("limit to top") << int(D::Sqlite) << "SELECT a FROM t LIMIT 5" << int(D::MsAccess)
                                      << "SELECT TOP 5 a\nFROM t";
        QTest::newRow("limit to fetch") << int(D::PostgreSql) << "SELECT a FROM t LIMIT 5 OFFSET 2" << int(D::Db2)
                                        << "SELECT a\nFROM t\nOFFSET 2 ROWS FETCH FIRST 5 ROWS ONLY";
        QTest::newRow("first to rows") << int(D::Firebird) << "SELECT FIRST 5 a FROM t" << int(D::Interbase)
                                       << "SELECT a\nFROM t\nROWS 5";
        // No equivalent: kept as written rather than changed in meaning.
        QTest::newRow("offset has no top") << int(D::MySql) << "SELECT a FROM t LIMIT 5 OFFSET 2" << int(D::Sybase)
                                           << "SELECT a\nFROM t\nLIMIT 5 OFFSET 2";
        QTest::newRow("rows to stays") << int(D::Firebird) << "SELECT a FROM t ROWS 2 TO 5" << int(D::Sqlite)
                                       << "SELECT a\nFROM t\nROWS 2 TO 5";
        QTest::newRow("percent stays") << int(D::MsSqlServer) << "SELECT TOP 5 PERCENT a FROM t" << int(D::MySql)
                                       << "SELECT TOP 5 PERCENT a\nFROM t";
        QTest::newRow("union limit has no top") << int(D::MySql) << "SELECT a FROM t UNION SELECT b FROM u LIMIT 3"
                                                << int(D::MsSqlServer) << "SELECT a\nFROM t\nUNION\nSELECT b\nFROM u\nLIMIT 3";
    }

    void rowLimitsFollowTheDialect()
    {
        QFETCH(int, from);
        QFETCH(QString, sql);
        QFETCH(int, to);
        QFETCH(QString, expected);
        QCOMPARE(generate(sql, {}, SqlDialect(from), SqlDialect(to)), expected);
    }

    void accessNestsItsJoins()
    {
        const QString text = generate(QStringLiteral("SELECT a FROM t1 JOIN t2 ON t2.a = t1.a LEFT JOIN t3 ON t3.b = t2.b "
                                                     "RIGHT JOIN t4 ON t4.c = t3.c, x"),
                                      {}, SqlDialect::Universal, SqlDialect::MsAccess);
        QCOMPARE(text, QStringLiteral("SELECT a\nFROM ((t1\n  JOIN t2 ON t2.a = t1.a)\n  LEFT JOIN t3 ON t3.b = t2.b)\n"
                                      "  RIGHT JOIN t4 ON t4.c = t3.c, x"));
        QVERIFY(SqlParser::parse(text, SqlDialect::MsAccess).query == SqlParser::parse(text, SqlDialect::Universal).query);
    }

    void wordWrapBreaksBetweenTokensOnly()
    {
        GeneratorOptions options;
        options.wordWrap = true;
        options.rightMargin = 20;
        const QString sql = QStringLiteral("SELECT aaaa, bbbb, 'a long string literal that must stay whole' AS s, "
                                           "\"a quoted name with blanks\" FROM t WHERE cccc = 1 AND dddd = 2");
        const QString text = generate(sql, options, SqlDialect::PostgreSql, SqlDialect::PostgreSql);
        QVERIFY(text.contains(QStringLiteral("'a long string literal that must stay whole'")));
        QVERIFY(text.contains(QStringLiteral("\"a quoted name with blanks\"")));
        for (const QString &line : text.split(QLatin1Char('\n')))
            QVERIFY2(line.size() <= 20 || !line.trimmed().contains(QLatin1Char(' ')) || line.contains(QLatin1Char('\'')) ||
                         line.contains(QLatin1Char('"')),
                     qPrintable(text));
        QVERIFY(SqlParser::parse(text, SqlDialect::PostgreSql).query == SqlParser::parse(sql, SqlDialect::PostgreSql).query);
    }

    void invisibleItemsAreNotWritten()
    {
        Query q = SqlParser::parse(QStringLiteral("SELECT a, b FROM t"), SqlDialect::Universal).query;
        q.parts[0].items[1].visible = false;
        QCOMPARE(SqlGenerator().generate(q), QStringLiteral("SELECT a\nFROM t"));
        q.parts[0].items[0].visible = false;
        QCOMPARE(SqlGenerator().generate(q), QStringLiteral("SELECT *\nFROM t"));
    }
};

QTEST_GUILESS_MAIN(tst_QueryGenerator)
#include "tst_QueryGenerator.moc"
