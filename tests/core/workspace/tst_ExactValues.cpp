#include "core/base/VantryError.h"
#include "core/workspace/ResultTable.h"
#include "core/workspace/ResultView.h"
#include "core/workspace/ResultWriteBack.h"
#include "core/workspace/TableKeys.h"
#include "core/workspace/ValueTypes.h"

#include <QSqlQuery>
#include <QTemporaryDir>
#include "FilledTable.h"
#include "ErrorOf.h"

#include <QtTest>

// Exact decimals ordered and filtered as numbers, which columns may locate a row, and the edit
// buffer's side of the write-back: snapshots, accepting values read back, Set to NULL and the
// failure text of a row.
class TestExactValues : public QObject
{
    Q_OBJECT

    // id (integer, NOT NULL), amount (numeric text), note (text)
    static std::unique_ptr<ResultTable> sample()
    {
        auto table = filledTable({{"id", "int4"}, {"amount", "numeric"}, {"note", "text"}},
                                 {{1, "-3", "a"}, {2, "1.5", QVariant()}, {3, "10.25", "c"},
                                  {4, "2", "d"}, {5, QVariant(), "e"}, {6, "-0.000000001", "f"}});
        table->column(0).setNullable(false);
        return table;
    }
    static QList<qint64> order(const ResultView &view)
    {
        QList<qint64> rows;
        for (qint64 i = 0; i < view.size(); ++i)
            rows << view.entry(i).row;
        return rows;
    }

private slots:
    void decimalTextsCompareByValue_data()
    {
        QTest::addColumn<QString>("a");
        QTest::addColumn<QString>("b");
        QTest::addColumn<int>("expected");
        QTest::newRow("longer whole part") << "10.25" << "2" << 1;
        QTest::newRow("negative first") << "-3" << "1.5" << -1;
        QTest::newRow("both negative") << "-10" << "-9.5" << -1;
        QTest::newRow("trailing zeros") << "1.50" << "1.5" << 0;
        QTest::newRow("leading zeros") << "007" << "7.0" << 0;
        QTest::newRow("minus zero") << "-0.0" << "0" << 0;
        QTest::newRow("beyond doubles")
            << "12345678901234567890.0123456789" << "12345678901234567890.0123456788" << 1;
        QTest::newRow("fraction only") << "0.001" << ".01" << -1;
        QTest::newRow("NaN last") << "NaN" << "99999999999" << 1;
    }
    void decimalTextsCompareByValue()
    {
        QFETCH(QString, a);
        QFETCH(QString, b);
        QFETCH(int, expected);
        const QByteArray x = a.toLatin1(), y = b.toLatin1();
        QCOMPARE(ValueTypes::compareDecimal({x.constData(), size_t(x.size())}, {y.constData(), size_t(y.size())}), expected);
        QCOMPARE(ValueTypes::compareDecimal({y.constData(), size_t(y.size())}, {x.constData(), size_t(x.size())}), -expected);
    }

    void decimalColumnSortsAndFiltersAsNumbers()
    {
        auto table = sample();
        QVERIFY(table->column(1).isDecimal());
        ResultView view;
        view.setTable(table.get());
        view.setSort(1, true);
        view.rebuild();
        QCOMPARE(order(view), (QList<qint64>{4, 0, 5, 1, 3, 2}));
        view.setSort(-1, true);
        view.setFilter(1, ">= 2");
        view.rebuild();
        QCOMPARE(order(view), (QList<qint64>{2, 3}));
        // an edited cell takes part by value as well
        table->setValue(0, 1, QStringLiteral("100"));
        view.rebuild();
        QCOMPARE(order(view), (QList<qint64>{0, 2, 3}));
    }

    void locatingColumns()
    {
        QVERIFY(!ValueTypes::canLocate("QPSQL", "json"));
        QVERIFY(!ValueTypes::canLocate("QPSQL", "oid 142")); // xml as the native fetch names it
        QVERIFY(ValueTypes::canLocate("QPSQL", "jsonb"));
        QVERIFY(ValueTypes::canLocate("QPSQL", "numeric"));
        QVERIFY(!ValueTypes::canLocate("QMYSQL", "geometry"));
        QVERIFY(ValueTypes::canLocate("QMYSQL", "datetime"));
        QVERIFY(!ValueTypes::canLocate("QIBASE", "blob sub_type text"));
        QVERIFY(ValueTypes::canLocate("QIBASE", "timestamp"));
        QVERIFY(!ValueTypes::canLocate("QIBASE", "QDateTime")); // milliseconds only on the generic path
        QVERIFY(!ValueTypes::canLocate("QODBC", "double"));
        QVERIFY(!ValueTypes::canLocate("QODBC", "QDate")); // a zero date arrives as NULL
        QVERIFY(ValueTypes::canLocate("QODBC", "QString"));
    }

    void snapshotCopiesTheRowsChange()
    {
        auto table = sample();
        QVERIFY(!ResultWriteBack::snapshotPost(*table, 0, "t").has_value()); // nothing to write
        table->setValue(2, 2, QStringLiteral("changed"));
        const std::optional<RowChange> change = ResultWriteBack::snapshotPost(*table, 2, "t");
        QVERIFY(change.has_value());
        QCOMPARE(change->kind, RowChange::Kind::Update);
        QCOMPARE(change->stored[2].toString(), QStringLiteral("c"));
        QCOMPARE(change->values[2].toString(), QStringLiteral("changed"));
        QCOMPARE(change->changed, (QList<int>{2}));

        const qint64 added = table->insertRow();
        table->setValue(added, 2, QStringLiteral("new"));
        QCOMPARE(ResultWriteBack::snapshotPost(*table, added, "t")->kind, RowChange::Kind::Insert);
        QCOMPARE(ResultWriteBack::snapshotDelete(*table, 3, "t").stored[1].toString(), QStringLiteral("2"));
    }

    void acceptKeepsValuesReadBackAndLaterEdits()
    {
        auto table = sample();
        table->setValue(2, 2, QStringLiteral("first"));
        const RowChange change = *ResultWriteBack::snapshotPost(*table, 2, "t");
        // the user types again while the write is under way
        table->setValue(2, 1, QStringLiteral("7"));
        RowOutcome outcome{change, {3, QStringLiteral("10.25"), QStringLiteral("first (trigger)")}, true};
        ResultWriteBack::accept(*table, outcome);
        QCOMPARE(table->storedValue(2, 2).toString(), QStringLiteral("first (trigger)"));
        QCOMPARE(table->rowState(2), ResultTable::RowState::Modified);
        QCOMPARE(table->changedColumns(2), (QList<int>{1}));

        // an inserted row takes its generated key
        const qint64 added = table->insertRow();
        table->setValue(added, 2, QStringLiteral("new"));
        const RowChange insert = *ResultWriteBack::snapshotPost(*table, added, "t");
        ResultWriteBack::accept(*table, {insert, {42, QVariant(), QStringLiteral("new")}, true});
        QCOMPARE(table->rowState(added), ResultTable::RowState::Unchanged);
        QCOMPARE(table->value(added, 0).toInt(), 42);
    }

    void setNullAndFailureText()
    {
        auto table = sample();
        table->setNull(0, 2);
        QVERIFY(table->isNull(0, 2));
        QCOMPARE(table->rowState(0), ResultTable::RowState::Modified);
        const QString error = errorOf([&] { table->setNull(0, 0); });
        QVERIFY2(error.contains(QLatin1String("id")) && error.contains(QLatin1String("NOT NULL")), qPrintable(error));
        table->setRowFailure(0, QStringLiteral("0 rows match"));
        QCOMPARE(table->rowFailure(0), QStringLiteral("0 rows match"));
        table->revertRow(0);
        QVERIFY(table->rowFailure(0).isEmpty());
        QVERIFY(!table->isNull(0, 2));
        table->setValue(1, 2, QStringLiteral("x"));
        table->setRowFailure(1, QStringLiteral("refused"));
        table->acceptRow(1);
        QVERIFY(table->rowFailure(1).isEmpty());
    }

    // The key a row is located by, from SQLite's catalogue: the primary key (the rowid alias
    // included), else a unique key of NOT NULL columns, else none.
    void keysFromTheCatalogue()
    {
        QTemporaryDir dir;
        {
            QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("keys"));
            db.setDatabaseName(dir.filePath(QStringLiteral("keys.db")));
            QVERIFY(db.open());
            QSqlQuery query(db);
            for (const char *sql : {"create table rowid_key (id integer primary key, a text)",
                                    "create table pair_key (a text, b int, c text, primary key (b, a))",
                                    "create table unique_key (a text unique, b int not null, c int not null, unique (c, b))",
                                    "create table no_key (a text unique, b int)"})
                QVERIFY(query.exec(QString::fromLatin1(sql)));
            QCOMPARE(findTableKey(db, "rowid_key"), QStringList{"id"});
            QCOMPARE(findTableKey(db, "pair_key"), (QStringList{"b", "a"}));
            QCOMPARE(findTableKey(db, "\"unique_key\""), (QStringList{"c", "b"}));
            QCOMPARE(findTableKey(db, "no_key"), QStringList());
            TableKeyCache cache;
            QCOMPARE(cache.keyOf(db, "pair_key"), (QStringList{"b", "a"}));
            QVERIFY(query.exec("drop table pair_key"));
            QCOMPARE(cache.keyOf(db, "pair_key"), (QStringList{"b", "a"})); // read once
            cache.clear();
            QCOMPARE(cache.keyOf(db, "pair_key"), QStringList());
        }
        QSqlDatabase::removeDatabase(QStringLiteral("keys"));
    }
};

QTEST_GUILESS_MAIN(TestExactValues)
#include "tst_ExactValues.moc"
