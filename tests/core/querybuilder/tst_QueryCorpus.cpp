// Every statement of the corpus round-trips: the generated text parses back to the same model,
// and generating that model again gives the same text -- under the default layout and under a
// layout that breaks, indents, wraps and parenthesizes everything it can.

#include "SelectCorpus.h"

#include "core/querybuilder/SqlGenerator.h"
#include "core/querybuilder/SqlParser.h"

#include <QtTest>

class tst_QueryCorpus : public QObject
{
    Q_OBJECT

private:
    static GeneratorOptions everythingOnItsOwnLine()
    {
        GeneratorOptions o;
        for (SqlFormat *f : {&o.mainQuery, &o.subqueries, &o.derivedQueries}) {
            f->mainPartNewLine = f->keywordsNewLine = f->selectItemNewLine = true;
            f->fromObjectNewLine = f->fromJoinNewLine = f->groupItemNewLine = true;
            f->whereNewLine = f->havingNewLine = 3;
            f->partIndent = 4;
            f->globalIndent = 3;
        }
        o.mainQuery.whereNewLine = 2;
        o.wordWrap = true;
        o.rightMargin = 30;
        o.parenthesizeAndGroups = o.parenthesizeSingleCriterion = true;
        return o;
    }

    static void roundTrip(const SelectCorpus::Entry &entry, const GeneratorOptions &options)
    {
        const DialectChoice dialect{entry.dialect, {}};
        SqlParser::Result first;
        try {
            first = SqlParser::parse(entry.sql, entry.dialect);
        } catch (const SqlParseError &e) {
            QFAIL(qPrintable(QStringLiteral("%1: %2\n%3").arg(SqlDialects::name(entry.dialect), e.message(), entry.sql)));
        }
        QVERIFY2(first.isSelect && !first.query.isEmpty(), qPrintable(entry.sql));
        const SqlGenerator generator(dialect, options);
        const QString text = generator.generate(first.query);
        SqlParser::Result second;
        try {
            second = SqlParser::parse(text, entry.dialect);
        } catch (const SqlParseError &e) {
            QFAIL(qPrintable(QStringLiteral("generated text does not parse: %1\n%2").arg(e.message(), text)));
        }
        QVERIFY2(second.query == first.query, qPrintable(QStringLiteral("model changed:\n%1\n%2").arg(entry.sql, text)));
        QCOMPARE(generator.generate(second.query), text);
    }

private slots:
    void corpusIsLargeAndCoversEveryDialect()
    {
        const QVector<SelectCorpus::Entry> entries = SelectCorpus::all();
        QVERIFY2(entries.size() >= 300, qPrintable(QString::number(entries.size())));
        QSet<int> dialects;
        for (const SelectCorpus::Entry &e : entries)
            dialects.insert(int(e.dialect));
        QCOMPARE(dialects.size(), 16);
    }

    void roundTrips_data()
    {
        QTest::addColumn<int>("index");
        const QVector<SelectCorpus::Entry> entries = SelectCorpus::all();
        for (int i = 0; i < entries.size(); ++i)
            QTest::addRow("%d %s", i, qPrintable(SqlDialects::name(entries.at(i).dialect))) << i;
    }

    void roundTrips()
    {
        QFETCH(int, index);
        const SelectCorpus::Entry entry = SelectCorpus::all().at(index);
        roundTrip(entry, GeneratorOptions());
        if (QTest::currentTestFailed())
            return;
        roundTrip(entry, everythingOnItsOwnLine());
        if (QTest::currentTestFailed())
            return;
        GeneratorOptions quoteAll;
        quoteAll.quoteAllIdentifiers = true;
        // Quoting every name changes the model (names become quoted), so only its own second
        // round must hold: the quoted text is stable.
        const SqlGenerator generator({entry.dialect, {}}, quoteAll);
        const QString once = generator.generate(SqlParser::parse(entry.sql, entry.dialect).query);
        try {
            QCOMPARE(generator.generate(SqlParser::parse(once, entry.dialect).query), once);
        } catch (const SqlParseError &e) {
            QFAIL(qPrintable(QStringLiteral("quoted text does not parse: %1\n%2").arg(e.message(), once)));
        }
    }

    // Texts where a careless layout would change the statement: literals holding line breaks
    // and blanks, row values in parentheses, subqueries in extra parentheses, a word with $.
    void trickyTextsRoundTrip_data()
    {
        QTest::addColumn<int>("dialect");
        QTest::addColumn<QString>("sql");
        QTest::newRow("literal line breaks") << int(SqlDialect::Universal)
                                             << "SELECT 'a\n  b' AS s, \"x\ny\" FROM t WHERE c = 'd\ne' AND f IN (SELECT 'g\nh')";
        QTest::newRow("row value") << int(SqlDialect::PostgreSql) << "SELECT a FROM t WHERE (b, c) = (1, 2) AND (d) = 3";
        QTest::newRow("extra parentheses") << int(SqlDialect::Universal) << "SELECT a FROM t WHERE ((SELECT 1)) = 1 OR (())";
        QTest::newRow("dollar words") << int(SqlDialect::PostgreSql) << "SELECT v$x, $$ a  b $$ AS d, a$$b FROM t WHERE $1 > 0";
        QTest::newRow("casts and operators") << int(SqlDialect::PostgreSql) << "SELECT a::int, b - -1, c::text || 'x' FROM t";
        QTest::newRow("extract from") << int(SqlDialect::Universal) << "SELECT a FROM t WHERE (EXTRACT(YEAR FROM d)) = 2020";
        QTest::newRow("mysql escapes") << int(SqlDialect::MySql) << "SELECT 'it\\'s  here', \"a\\\"b\" FROM t";
    }

    void trickyTextsRoundTrip()
    {
        QFETCH(int, dialect);
        QFETCH(QString, sql);
        const SelectCorpus::Entry entry{SqlDialect(dialect), sql};
        roundTrip(entry, GeneratorOptions());
        if (QTest::currentTestFailed())
            return;
        roundTrip(entry, everythingOnItsOwnLine());
    }

    // The same statement written in another dialect's way is the same model.
    void dialectsAgreeOnTheModel()
    {
        const Query ms = SqlParser::parse(QStringLiteral("SELECT [a b] FROM [t] WHERE [x] = 1"), SqlDialect::MsSqlServer).query;
        const Query my = SqlParser::parse(QStringLiteral("SELECT `a b` FROM `t` WHERE `x` = 1"), SqlDialect::MySql).query;
        const Query pg = SqlParser::parse(QStringLiteral("SELECT \"a b\" FROM \"t\" WHERE \"x\" = 1"), SqlDialect::PostgreSql).query;
        QVERIFY(ms == my);
        QVERIFY(my == pg);
        QCOMPARE(SqlGenerator({SqlDialect::MySql, {}}).generate(ms), QStringLiteral("SELECT `a b`\nFROM `t`\nWHERE `x` = 1"));
    }
};

QTEST_GUILESS_MAIN(tst_QueryCorpus)
#include "tst_QueryCorpus.moc"
