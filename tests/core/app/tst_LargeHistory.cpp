#include "TempHome.h"
#include "core/app/MdmUn.h"
#include "core/app/SqlHistory.h"
#include "core/workspace/SqlRun.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QtTest>

// A history of a million rows: opening it keeps none of them, and the steps, the picker's rows,
// its edits and the rule that skips a repeated statement behave as with a short one.
class TestLargeHistory : public QObject
{
    Q_OBJECT

    static constexpr int Rows = 1000000;

    static QString textOf(qint64 id) { return QStringLiteral("select %1 from t").arg(id); }

private slots:
    void millionRows()
    {
        TempHome home;
        const QString file = home.file(QStringLiteral("db.sqlite"));
        {
            TMdm seed(file);
            QSqlQuery q(seed.database());
            // Keys 10, 20, ... leave gaps, as deletions do.
            QVERIFY2(q.exec(QStringLiteral(
                         "with recursive n(i) as (select 1 union all select i + 1 from n where i < %1) "
                         "insert into SQL_EXECUTION_HISTORY (SQL_EXECUTION_HISTORY_ID, EXECUTED_SQL, CREATED, CREATED_BY, "
                         "CHANGED, CHANGED_BY) select i * 10, 'select ' || (i * 10) || ' from t', "
                         "'2024-01-02T03:04:05.000', 'someone', '2024-01-02T03:04:05.000', 'someone' from n").arg(Rows)),
                     qPrintable(q.lastError().text()));
        }
        TMdm mdm(file);
        SqlHistory &h = mdm.history();
        {
            // Rows changed behind the history's back after it opened show up when read: opening
            // kept no copy of them.
            QSqlDatabase other = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("behind"));
            other.setDatabaseName(file);
            QVERIFY(other.open());
            QSqlQuery q(other);
            QVERIFY2(q.exec(QStringLiteral("update SQL_EXECUTION_HISTORY set EXECUTED_SQL = 'changed behind' "
                                           "where SQL_EXECUTION_HISTORY_ID = 7777770")),
                     qPrintable(q.lastError().text()));
        }
        QSqlDatabase::removeDatabase(QStringLiteral("behind"));
        QCOMPARE(h.row(777776).executedSql, QStringLiteral("changed behind"));

        // Steps from the first row by key.
        QCOMPARE(h.current()->executedSql, textOf(10));
        QCOMPARE(h.current()->stamps.createdBy, QStringLiteral("someone"));
        QVERIFY(!h.prior());
        QVERIFY(h.next() && h.next());
        QCOMPARE(h.current()->id, 30);
        QCOMPARE(h.currentIndex(), 2);

        // The picker: the count, rows anywhere, a pick that moves the steps along.
        QCOMPARE(h.count(), Rows);
        QCOMPARE(h.row(0).executedSql, textOf(10));
        QCOMPARE(h.row(654321).executedSql, textOf(6543220));
        QCOMPARE(h.row(Rows - 1).id, qint64(Rows) * 10);
        QCOMPARE(h.row(Rows).id, 0);
        h.setCurrentIndex(Rows - 2);
        QCOMPARE(h.current()->id, qint64(Rows - 1) * 10);
        QVERIFY(h.next());
        QVERIFY(!h.next());
        QCOMPARE(h.currentIndex(), Rows - 1);
        QVERIFY(h.prior());
        QCOMPARE(h.current()->executedSql, textOf(qint64(Rows - 1) * 10));

        // The picker's memo edits a row in place.
        h.setExecutedSql(500000, QStringLiteral("edited"));
        QCOMPARE(h.row(500000).executedSql, QStringLiteral("edited"));
        QCOMPARE(h.row(500001).executedSql, textOf(5000020));

        // The rule: the current statement again is not recorded; another one is, and becomes current.
        QVERIFY(!SqlRun::shouldRecord(h, h.current()->executedSql));
        QVERIFY(SqlRun::shouldRecord(h, QStringLiteral("select new")));
        h.append(QStringLiteral("select new"));
        QCOMPARE(h.count(), Rows + 1);
        QCOMPARE(h.current()->executedSql, QStringLiteral("select new"));
        QCOMPARE(h.row(h.currentIndex()).id, h.current()->id);
        QVERIFY(!SqlRun::shouldRecord(h, QStringLiteral("select new")));

        // Deleting the last row makes the one before it current.
        h.setCurrentIndex(h.count() - 1);
        const qint64 before = h.row(h.count() - 2).id;
        h.deleteCurrent();
        QCOMPARE(h.count(), Rows);
        QCOMPARE(h.current()->id, before);
        QCOMPARE(h.currentIndex(), Rows - 1);

        // A reload keeps the current row and finds its position again.
        h.setCurrentIndex(1234);
        const qint64 kept = h.current()->id;
        h.reload();
        QCOMPARE(h.current()->id, kept);
        QCOMPARE(h.currentIndex(), 1234);
    }
};

QTEST_GUILESS_MAIN(TestLargeHistory)
#include "tst_LargeHistory.moc"
