#include "core/workspace/ResultTable.h"
#include "core/workspace/ResultView.h"

#include "FilledTable.h"

#include <QtTest>

#include <limits>
#include <numeric>

// Filtering, sorting and grouping a result as a row permutation, and the columnar storage under
// it: NULL against empty text, widening of mixed columns, edits seen by sort and filter.
class TestResultView : public QObject
{
    Q_OBJECT

    // name (text), score (integer), ratio (real), with NULLs in every column
    static std::unique_ptr<ResultTable> sample()
    {
        return filledTable({{"name", "text"}, {"score", "integer"}, {"ratio", "real"}},
                           {{"Anna", 30, 0.5}, {"bob", QVariant(), 1.25}, {"", 10, QVariant()}, {QVariant(), 20, -2.0},
                            {"Carl", 10, 0.5}, {"anne", 40, 3.0}});
    }
    static QList<qint64> order(const ResultView &view)
    {
        QList<qint64> rows;
        for (qint64 i = 0; i < view.size(); ++i)
            rows << (view.entry(i).level < 0 ? view.entry(i).row : -1 - view.entry(i).level);
        return rows;
    }

private slots:
    // A filter or a sort on one column; sort is 1 ascending, -1 descending, 0 none.
    void filterAndSort_data()
    {
        QTest::addColumn<int>("column");
        QTest::addColumn<QString>("filter");
        QTest::addColumn<int>("sort");
        QTest::addColumn<QList<qint64>>("rows");
        QTest::newRow("contains any case") << 0 << "AN" << 0 << QList<qint64>{0, 5};
        QTest::newRow("equals text") << 0 << "=carl" << 0 << QList<qint64>{4};
        QTest::newRow("empty text is not null") << 0 << "(null)" << 0 << QList<qint64>{3};
        QTest::newRow("not null") << 1 << "(not null)" << 0 << QList<qint64>{0, 2, 3, 4, 5};
        QTest::newRow("integer >=") << 1 << ">= 20" << 0 << QList<qint64>{0, 3, 5};
        QTest::newRow("integer <>") << 1 << "<>10" << 0 << QList<qint64>{0, 3, 5};
        QTest::newRow("integer digits") << 1 << "0" << 0 << QList<qint64>{0, 2, 3, 4, 5};
        QTest::newRow("real <") << 2 << "<0.5" << 0 << QList<qint64>{3};
        QTest::newRow("real contains") << 2 << "25" << 0 << QList<qint64>{1};
        QTest::newRow("blank filters nothing") << 0 << "  " << 0 << QList<qint64>{0, 1, 2, 3, 4, 5};
        // NULL first, then values; equal values keep their order (stable)
        QTest::newRow("integer asc") << 1 << "" << 1 << QList<qint64>{1, 2, 4, 3, 0, 5};
        QTest::newRow("integer desc") << 1 << "" << -1 << QList<qint64>{5, 0, 3, 2, 4, 1};
        QTest::newRow("real asc") << 2 << "" << 1 << QList<qint64>{2, 3, 0, 4, 1, 5};
        QTest::newRow("text asc, bytes order") << 0 << "" << 1 << QList<qint64>{3, 2, 0, 4, 5, 1};
    }
    void filterAndSort()
    {
        QFETCH(int, column);
        QFETCH(QString, filter);
        QFETCH(int, sort);
        QFETCH(QList<qint64>, rows);
        auto table = sample();
        ResultView view;
        view.setTable(table.get());
        if (sort != 0)
            view.setSort(column, sort > 0);
        else
            view.setFilter(column, filter);
        view.rebuild();
        QCOMPARE(order(view), rows);
        QCOMPARE(view.dataRows(), rows.size());
    }

    // The keyed sort of one column must give exactly the order of the general comparison, ties
    // kept in row order, in both directions: shared 8-byte prefixes, a text that is another's
    // prefix, texts beyond ASCII, negative numbers, zero, the extreme integers, NULLs and repeated
    // values.
    void keyedSortMatchesTheComparison_data()
    {
        QTest::addColumn<int>("column");
        QTest::addColumn<bool>("ascending");
        for (int column = 0; column < 3; ++column)
            for (bool ascending : {true, false})
                QTest::newRow(qPrintable(QStringLiteral("col %1 %2").arg(column).arg(ascending ? "asc" : "desc")))
                    << column << ascending;
    }
    void keyedSortMatchesTheComparison()
    {
        QFETCH(int, column);
        QFETCH(bool, ascending);
        ResultTable table;
        table.addColumn("text", "text");
        table.addColumn("integer", "integer");
        table.addColumn("real", "real");
        const QStringList texts = {"prefix-12345", "prefix-1234", "prefix-12", "prefix-123456789", "", "Zeta", "alpha",
                                   "prefix-12", QStringLiteral("\u00E9t\u00E9"), QStringLiteral("prefix-12\u00E9")};
        for (int i = 0; i < 400; ++i) {
            if (i % 13 == 0) {
                for (int c = 0; c < 3; ++c)
                    table.column(c).appendNull();
                continue;
            }
            table.column(0).appendVariant(texts[(i * 7) % texts.size()] + (i % 3 ? QString() : QString::number(i % 5)));
            const bool extreme = i % 37 == 0 || i % 41 == 0;
            table.column(1).appendInt(extreme ? (i % 37 ? std::numeric_limits<qint64>::max() : std::numeric_limits<qint64>::min())
                                              : (i * 7919) % 61 - 30);
            table.column(2).appendReal(extreme ? (i % 37 ? 1e300 : -1e300) : ((i * 31) % 23 - 11) * 0.5);
        }
        table.finishFetch(false);
        std::vector<qint64> expected(size_t(table.rowCount()));
        std::iota(expected.begin(), expected.end(), 0);
        std::stable_sort(expected.begin(), expected.end(), [&](qint64 a, qint64 b) {
            const int c = ResultView::compare(table, column, a, b);
            return ascending ? c < 0 : c > 0;
        });
        ResultView view;
        view.setTable(&table);
        view.setSort(column, ascending);
        view.rebuild();
        QList<qint64> got = order(view);
        QCOMPARE(got, QList<qint64>(expected.begin(), expected.end()));
    }

    void editsAndDeletesReachTheView()
    {
        auto table = sample();
        ResultView view;
        view.setTable(table.get());
        view.setSort(1, true);
        table->setValue(1, 1, 99);   // bob: NULL -> 99 sorts last now
        table->markDeleted(5);       // anne disappears
        const qint64 added = table->insertRow();
        view.setFilter(0, "zzz");    // a pending new row stays visible under any filter
        view.rebuild();
        QCOMPARE(order(view), QList<qint64>{added});
        view.setFilter(0, "");
        view.rebuild();
        QCOMPARE(order(view), (QList<qint64>{added, 2, 4, 3, 0, 1}));
    }

    void groupsCountTheirRows()
    {
        auto table = sample();
        ResultView view;
        view.setTable(table.get());
        view.setGroupColumns({2});
        view.setSort(0, true);
        view.rebuild();
        // headers (-1) for NULL, -2.0, 0.5 (two rows), 1.25, 3.0
        QCOMPARE(order(view), (QList<qint64>{-1, 2, -1, 3, -1, 0, 4, -1, 1, -1, 5}));
        QCOMPARE(view.entry(4).count, 2);
        QCOMPARE(view.dataRows(), 6);
        QCOMPARE(view.indexOf(4), 6);
    }

    void columnsWidenWithoutLoss()
    {
        ResultTable table;
        ResultColumn &c = table.addColumn("mixed", "");
        c.appendNull();
        c.appendInt(std::numeric_limits<qint64>::max());
        c.appendReal(0.1);   // integers become reals only while there are no texts
        QCOMPARE(c.storage(), ResultStorage::Real);
        c.appendText("x", 1);
        c.appendBytes("\0y", 2);
        c.appendInt(-5);
        QCOMPARE(c.storage(), ResultStorage::Bytes);
        QVERIFY(c.isNull(0));
        QCOMPARE(c.value(2), QVariant(0.1));
        QCOMPARE(c.value(3), QVariant(QString("x")));
        QCOMPARE(c.value(4), QVariant(QByteArray("\0y", 2)));
        QCOMPARE(c.value(5), QVariant(qint64(-5)));

        // texts spanning several arena blocks come back whole
        ResultColumn &t = table.addColumn("t", "text");
        QByteArray big(300000, 'b');
        for (int i = 0; i < 6; ++i) {
            t.appendText(big.constData(), size_t(big.size()) - size_t(i));
            t.appendText("", 0);
        }
        for (int i = 0; i < 6; ++i) {
            QCOMPARE(t.bytesAt(2 * i).size(), size_t(big.size()) - size_t(i));
            QCOMPARE(t.value(2 * i + 1), QVariant(QString("")));
            QVERIFY(!t.isNull(2 * i + 1));
        }
    }
};

QTEST_GUILESS_MAIN(TestResultView)
#include "tst_resultview.moc"
