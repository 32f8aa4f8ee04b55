// The rules of a run that need no window: which text runs, query or command, script chunks, the
// history rule, and the table list's wildcard filter.
#include "TempHome.h"
#include "core/app/MdmUn.h"
#include "core/app/SqlHistory.h"
#include "core/workspace/SqlRun.h"
#include "core/workspace/TableFilter.h"

#include <QtTest>

class tst_SqlRun : public QObject
{
    Q_OBJECT

private slots:
    void selectionWinsAndIsTrimmed()
    {
        QCOMPARE(SqlRun::statementText(QString(), QStringLiteral("\r\n  select 1 \n")), QStringLiteral("select 1"));
        QCOMPARE(SqlRun::statementText(QStringLiteral(" update t set a=1 "), QStringLiteral("select 1")),
                 QStringLiteral("update t set a=1"));
    }

    void queryOrCommand_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("query");
        QTest::newRow("plain") << "select 1" << true;
        QTest::newRow("upper, blanks before") << "\n\t  SELECT *" << true;
        QTest::newRow("parenthesis") << "(select 1)" << false;
        QTest::newRow("with") << "with x as (select 1) select * from x" << false;
        QTest::newRow("comment first") << "-- all\nselect 1" << false;
        QTest::newRow("selector") << "selectx" << true;  // only six letters are compared
        QTest::newRow("short") << "sel" << false;
    }

    void queryOrCommand()
    {
        QFETCH(QString, text);
        QFETCH(bool, query);
        QCOMPARE(SqlRun::isQuery(text), query);
    }

    void scriptChunks_data()
    {
        QTest::addColumn<QString>("script");
        QTest::addColumn<QString>("delimiter");
        QTest::addColumn<QStringList>("chunks");
        QTest::newRow("go in any case and blanks") << "a\n  go \nb\nGo\r\nc" << "GO" << QStringList{"a", "b", "c"};
        QTest::newRow("semicolons at line ends do not split")
            << "insert 1;\ninsert 2;" << ";" << QStringList{"insert 1;\ninsert 2;"};
        QTest::newRow("semicolon alone splits") << "a\n ; \nb" << ";" << QStringList{"a", "b"};
        QTest::newRow("slash") << "begin x; end;\n/\nbegin y; end;\n/\n" << "/" << QStringList{"begin x; end;", "begin y; end;"};
        QTest::newRow("lines kept unchanged") << "  a\n\tb  \ngo" << "go" << QStringList{"  a\n\tb  "};
        QTest::newRow("blank chunks dropped") << "go\n\ngo\na\ngo\n\n" << "go" << QStringList{"a"};
        QTest::newRow("delimiter inside a line") << "select 'go'\ngo" << "go" << QStringList{"select 'go'"};
        QTest::newRow("delimiter trimmed too") << "a\nGO\nb" << " go " << QStringList{"a", "b"};
    }

    void scriptChunks()
    {
        QFETCH(QString, script);
        QFETCH(QString, delimiter);
        QFETCH(QStringList, chunks);
        QCOMPARE(SqlRun::scriptChunks(script, delimiter), chunks);
    }

    void historyRecordsOnlyChanges()
    {
        TempHome home;
        TMdm mdm(home.file(QStringLiteral("db.sqlite")));
        SqlHistory &h = mdm.history();
        QVERIFY(SqlRun::shouldRecord(h, QStringLiteral("A")));
        h.append(QStringLiteral("A"));
        QVERIFY(!SqlRun::shouldRecord(h, QStringLiteral("A")));
        QVERIFY(SqlRun::shouldRecord(h, QStringLiteral("a")));  // compared exactly
        h.append(QStringLiteral("B"));
        h.prior();
        QVERIFY(!SqlRun::shouldRecord(h, QStringLiteral("A")));  // the current row, not the last one
    }

    void wildcards_data()
    {
        QTest::addColumn<QString>("mask");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("match");
        QTest::newRow("star any run") << "*ORD*" << "OLD_ORDERS" << true;
        QTest::newRow("question one char") << "*O?D*" << "OLD_ORDERS" << true;
        QTest::newRow("question needs a char") << "*O?D*" << "OD" << false;
        QTest::newRow("backtracking") << "*A*B" << "AAAB" << true;
        QTest::newRow("backtracking fails") << "*A*B" << "AAABA" << false;
        QTest::newRow("two stars pass all") << "**" << "" << true;
        QTest::newRow("anchored end") << "*S" << "ORDERS_X" << false;
    }

    void wildcards()
    {
        QFETCH(QString, mask);
        QFETCH(QString, text);
        QFETCH(bool, match);
        QCOMPARE(TableFilter::wildcardMatch(mask, text), match);
    }

    void filterKeepsOrderAndIgnoresCase()
    {
        const QStringList names{"public.orders", "CUSTOMERS", "Order Items", "old_orders"};
        QCOMPARE(TableFilter::filter(names, QStringLiteral("ord")),
                 (QStringList{"public.orders", "Order Items", "old_orders"}));
        QCOMPARE(TableFilter::filter(names, QString()), names);
    }
};

QTEST_GUILESS_MAIN(tst_SqlRun)
#include "tst_SqlRun.moc"
