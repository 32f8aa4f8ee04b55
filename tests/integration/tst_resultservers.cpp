#include "ErrorOf.h"
#include "TestServers.h"
#include "core/base/VantryError.h"
#include "core/workspace/ResultFetcher.h"
#include "core/workspace/ResultQuery.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QtTest>

// The result table against the servers of scripts/test-servers: each fetch path honours the
// record limit, and edits, inserts, deletes and clones reach PostgreSQL and MariaDB, while a row
// that cannot be told apart from its twin is never touched.
class TestResultServers : public QObject
{
    Q_OBJECT

    static QSqlDatabase open(const QString &server)
    {
        return TestServers::openServer(server, QStringLiteral("result-") + server);
    }

    static void exec(const QSqlDatabase &db, const QString &sql)
    {
        QSqlQuery query(db);
        if (!query.exec(sql))
            QFAIL(qPrintable(sql + ": " + query.lastError().text()));
    }
    static QVariant scalar(const QSqlDatabase &db, const QString &sql)
    {
        QSqlQuery query(db);
        if (!query.exec(sql) || !query.next())
            return QVariant(QStringLiteral("error: ") + query.lastError().text());
        return query.value(0);
    }
    static void makeTable(const QSqlDatabase &db, const QString &table)
    {
        exec(db, QStringLiteral("drop table if exists %1").arg(table));
        exec(db, QStringLiteral("create table %1 (id integer, r double precision, s varchar(40), t text)").arg(table));
        for (int i = 1; i <= 25; ++i)
            exec(db, QStringLiteral("insert into %1 values (%2, %2.5, %3, 'row %2')")
                         .arg(table)
                         .arg(i)
                         .arg(i % 5 == 0 ? QStringLiteral("null") : i % 7 == 0 ? QStringLiteral("''") : QStringLiteral("'s%1'").arg(i)));
    }

private slots:
    // Through ODBC, decimals and fractions of a second reach the grid as the server wrote them.
    void odbcKeepsExactValues()
    {
        VANTRY_REQUIRE_TEST_SERVERS();
        const QSqlDatabase db = open(QStringLiteral("odbc-postgres"));
        const auto table = ResultFetcher::fetch(db, QStringLiteral("select timestamp '2024-01-02 03:04:05.123456' as ts, "
                                                                   "12345678901234567890.123456::numeric(38,10) as n, 5 as i"), 0);
        QCOMPARE(ResultFetcher::lastPath(), QStringLiteral("odbc"));
        QCOMPARE(table->value(0, 0).toString(), QStringLiteral("2024-01-02 03:04:05.123456"));
        QCOMPARE(table->value(0, 1).toString(), QStringLiteral("12345678901234567890.1234560000"));
        QCOMPARE(table->value(0, 2).toLongLong(), 5);
    }

    void initTestCase() { VANTRY_REQUIRE_TEST_SERVERS(); }

    void recordLimitOnEachPath_data()
    {
        QTest::addColumn<QString>("server");
        QTest::addColumn<QString>("path");
        QTest::newRow("postgres native") << "postgres" << "postgres";
        QTest::newRow("mariadb native") << "mariadb" << "mariadb";
        QTest::newRow("odbc sqlite") << "odbc-sqlite" << "odbc";
        QTest::newRow("odbc postgres") << "odbc-postgres" << "odbc";
        QTest::newRow("odbc mariadb") << "odbc-mariadb" << "odbc";
    }
    void recordLimitOnEachPath()
    {
        QFETCH(QString, server);
        QFETCH(QString, path);
        QSqlDatabase db = open(server);
        QVERIFY2(db.isOpen(), qPrintable(db.lastError().text()));
        const QString table = QStringLiteral("vantry_result_limit");
        makeTable(db, table);
        for (int limit : {10, 25, 0}) {
            auto result = ResultFetcher::fetch(db, QStringLiteral("select * from %1 order by id").arg(table), limit);
            QCOMPARE(ResultFetcher::lastPath(), path);
            QCOMPARE(result->rowCount(), limit ? qMin(limit, 25) : 25);
            QCOMPARE(result->truncated(), limit == 10);
            QCOMPARE(result->value(4, 0).toLongLong(), 5);
            QCOMPARE(result->value(1, 1).toDouble(), 2.5);
            QVERIFY(result->isNull(4, 2));
            QVERIFY(!result->isNull(6, 2));
            QCOMPARE(result->value(6, 2).toString(), QString(""));
        }
        // the native path leaves the connection usable and outside any transaction
        QCOMPARE(scalar(db, QStringLiteral("select count(*) from %1").arg(table)).toInt(), 25);
        // A failing statement gives the database's own message, which names what is wrong.
        const QString error = errorOf([&] { ResultFetcher::fetch(db, "select * from no_such_table", 10); });
        QVERIFY2(error.contains(QLatin1String("no_such_table"), Qt::CaseInsensitive), qPrintable(error));
        QCOMPARE(scalar(db, "select 1").toInt(), 1);
    }

    void writeBack_data()
    {
        QTest::addColumn<QString>("server");
        QTest::newRow("postgres") << "postgres";
        QTest::newRow("mariadb") << "mariadb";
    }
    void writeBack()
    {
        QFETCH(QString, server);
        QSqlDatabase db = open(server);
        QVERIFY(db.isOpen());
        const QString table = QStringLiteral("vantry_result_edit");
        makeTable(db, table);
        ResultQuery query;
        query.open(db, QStringLiteral("select * from %1 order by id").arg(table), 100);
        ResultTable *result = query.table();
        QVERIFY(!query.isReadOnly());

        // row id 5 has s NULL, row id 7 has s '': edit t and keep both as they were
        result->setValue(4, 3, QStringLiteral("five"));
        result->setValue(6, 3, QStringLiteral("seven"));
        query.postPending();
        QCOMPARE(scalar(db, QStringLiteral("select count(*) from %1 where id = 5 and s is null and t = 'five'").arg(table)).toInt(), 1);
        QCOMPARE(scalar(db, QStringLiteral("select count(*) from %1 where id = 7 and s = '' and t = 'seven'").arg(table)).toInt(), 1);
        // a real value located by equality after the round trip
        result->setValue(0, 1, 10.25);
        query.post(0);
        QCOMPARE(scalar(db, QStringLiteral("select r from %1 where id = 1").arg(table)).toDouble(), 10.25);

        const qint64 added = result->insertRow();
        result->setValue(added, 0, 100);
        result->setValue(added, 3, QStringLiteral("new"));
        query.post(added);
        const qint64 clone = result->cloneRow(added);
        query.post(clone);
        QCOMPARE(scalar(db, QStringLiteral("select count(*) from %1 where id = 100 and t = 'new'").arg(table)).toInt(), 2);

        // the two identical rows cannot be told apart: update and delete are refused
        result->setValue(clone, 3, QStringLiteral("changed"));
        try {
            query.post(clone);
            QFAIL("an update of one of two identical rows was accepted");
        } catch (const VantryError &e) {
            QVERIFY2(e.message().contains(QLatin1String("2 rows")), qPrintable(e.message()));
        }
        QVERIFY_THROWS_EXCEPTION(VantryError, query.remove(added));
        QCOMPARE(scalar(db, QStringLiteral("select count(*) from %1 where id = 100 and t = 'new'").arg(table)).toInt(), 2);

        query.remove(1);
        QCOMPARE(scalar(db, QStringLiteral("select count(*) from %1 where id = 2").arg(table)).toInt(), 0);
        QCOMPARE(scalar(db, QStringLiteral("select count(*) from %1").arg(table)).toInt(), 26);

        query.setReadOnly(true);
        QVERIFY_THROWS_EXCEPTION(VantryError, result->setValue(2, 3, QStringLiteral("x")));
        QVERIFY_THROWS_EXCEPTION(VantryError, query.remove(2));
        QCOMPARE(scalar(db, QStringLiteral("select count(*) from %1").arg(table)).toInt(), 26);
    }
};

QTEST_GUILESS_MAIN(TestResultServers)
#include "tst_resultservers.moc"
