#include "core/base/VantryError.h"
#include "core/workspace/ResultFetcher.h"
#include "core/workspace/ResultQuery.h"
#include "core/workspace/ResultSource.h"

#include "ErrorOf.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QtTest>

// The result table against real SQLite files: both fetch paths, the record limit, NULL against
// empty text, and write-back of edits, inserts, deletes and clones.
class TestResultTable : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QSqlDatabase m_db;

    void exec(const QString &sql)
    {
        QSqlQuery query(m_db);
        QVERIFY2(query.exec(sql), qPrintable(query.lastError().text()));
    }
    QVariantList column(const QString &sql)
    {
        QVariantList values;
        QSqlQuery query(m_db);
        if (!query.exec(sql))
            qWarning() << query.lastError().text();
        while (query.next())
            values << query.value(0);
        return values;
    }

private slots:
    void init()
    {
        m_db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("t"));
        m_db.setDatabaseName(m_dir.filePath(QStringLiteral("r.db")));
        QVERIFY(m_db.open());
        exec("create table t (id integer, r real, s text, b blob, m)");
        exec("insert into t values (1, 1.5, 'one', x'00ff00', 7)");
        exec("insert into t values (2, null, '', null, 2.5)");
        exec("insert into t values (3, -0.25, null, x'', 'text')");
        exec("insert into t values (4, 4, 'four', null, null)");
        exec("insert into t values (5, 5e300, 'fünf', null, x'01')");
    }
    void cleanup()
    {
        m_db.close();
        m_db = QSqlDatabase();
        QSqlDatabase::removeDatabase(QStringLiteral("t"));
        QFile::remove(m_dir.filePath(QStringLiteral("r.db")));
    }

    void fetchValues_data()
    {
        QTest::addColumn<int>("path");
        QTest::newRow("native") << int(ResultFetcher::Path::Automatic);
        QTest::newRow("generic") << int(ResultFetcher::Path::Generic);
    }
    void fetchValues()
    {
        QFETCH(int, path);
        auto table = ResultFetcher::fetch(m_db, "select * from t order by id", 0,
                                          ResultFetcher::Path(path));
        QCOMPARE(ResultFetcher::lastPath(), path == 0 ? QString("sqlite") : QString("generic"));
        QCOMPARE(table->columnNames(), QStringList({"id", "r", "s", "b", "m"}));
        QCOMPARE(table->rowCount(), 5);
        QVERIFY(!table->truncated());
        QCOMPARE(table->value(4, 0).toLongLong(), 5);
        QCOMPARE(table->value(0, 1).toDouble(), 1.5);
        QCOMPARE(table->value(4, 1).toDouble(), 5e300);
        QVERIFY(table->isNull(1, 1));
        // NULL and empty text stay apart
        QVERIFY(!table->isNull(1, 2));
        QCOMPARE(table->value(1, 2).toString(), QString(""));
        QVERIFY(table->isNull(2, 2));
        QCOMPARE(table->value(4, 2).toString(), QString("fünf"));
        // bytes keep embedded zeros; an empty blob is not NULL
        QCOMPARE(table->value(0, 3).toByteArray(), QByteArray("\x00\xff\x00", 3));
        if (path == 0) // QSQLITE hands an empty blob back as a null QByteArray
            QVERIFY(!table->isNull(2, 3));
        // a column of mixed values widens instead of losing any
        QCOMPARE(table->column(4).storage(), ResultStorage::Bytes);
        QCOMPARE(table->value(0, 4), QVariant(qint64(7)));
        QCOMPARE(table->value(4, 4), QVariant(QByteArray("\x01")));
        QCOMPARE(table->value(1, 4), QVariant(2.5));
        QCOMPARE(table->value(2, 4).toString(), QString("text"));
        QVERIFY(table->isNull(3, 4));
    }

    void recordLimit_data()
    {
        QTest::addColumn<int>("path");
        QTest::addColumn<int>("limit");
        QTest::addColumn<int>("rows");
        QTest::addColumn<bool>("truncated");
        for (int path : {0, 1}) {
            const char *name = path ? "generic" : "native";
            QTest::addRow("%s below", name) << path << 3 << 3 << true;
            QTest::addRow("%s exact", name) << path << 5 << 5 << false;
            QTest::addRow("%s none", name) << path << 0 << 5 << false;
        }
    }
    void recordLimit()
    {
        QFETCH(int, path);
        QFETCH(int, limit);
        QFETCH(int, rows);
        QFETCH(bool, truncated);
        auto table = ResultFetcher::fetch(m_db, "select * from t", limit, ResultFetcher::Path(path));
        QCOMPARE(table->rowCount(), rows);
        QCOMPARE(table->truncated(), truncated);
    }

    void fetchErrorNamesCause()
    {
        const QString error = errorOf([&] { ResultFetcher::fetch(m_db, "select * from missing_table", 10); });
        QVERIFY2(error.contains("missing_table"), qPrintable(error));
    }

    void analyse_data()
    {
        QTest::addColumn<QString>("sql");
        QTest::addColumn<QString>("table");
        QTest::newRow("star") << "select * from t" << "t";
        QTest::newRow("columns where order") << "SELECT a, b FROM s.t x WHERE a IN (select a from u, v) ORDER BY 1" << "s.t";
        QTest::newRow("quoted") << "select \"a b\", t.c from \"my t\" t limit 3;" << "\"my t\"";
        QTest::newRow("comments") << "select /* x */ * -- y\n from t" << "t";
        QTest::newRow("join") << "select * from t join u on t.a = u.a" << "";
        QTest::newRow("comma join") << "select * from t, u" << "";
        QTest::newRow("expression") << "select a + 1 from t" << "";
        QTest::newRow("function") << "select count(*) from t" << "";
        QTest::newRow("alias") << "select a as b from t" << "";
        QTest::newRow("distinct") << "select distinct a from t" << "";
        QTest::newRow("group") << "select a from t group by a" << "";
        QTest::newRow("union") << "select a from t union select a from u" << "";
        QTest::newRow("subquery") << "select * from (select * from t) x" << "";
        QTest::newRow("no from") << "select 1" << "";
        QTest::newRow("two statements") << "select * from t; delete from t" << "";
    }
    void analyse()
    {
        QFETCH(QString, sql);
        QFETCH(QString, table);
        const ResultSource source = ResultSource::analyse(sql);
        QCOMPARE(source.writable, !table.isEmpty());
        QCOMPARE(source.table, table);
        QVERIFY(source.writable || !source.reason.isEmpty());
    }

    void writeBackReachesDatabase()
    {
        ResultQuery query;
        query.open(m_db, "select * from t order by id", 100);
        ResultTable *table = query.table();
        QVERIFY(!query.isReadOnly());

        // edit row 2 (empty text in s, NULL in r): change m only
        table->setValue(1, 4, QVariant(QStringLiteral("changed")));
        QCOMPARE(table->rowState(1), ResultTable::RowState::Modified);
        query.post(1);
        QCOMPARE(table->rowState(1), ResultTable::RowState::Unchanged);
        QCOMPARE(column("select m from t where id = 2"), QVariantList({"changed"}));
        // the untouched columns keep NULL and empty text apart
        QCOMPARE(column("select count(*) from t where id = 2 and r is null and s = ''"), QVariantList({1}));
        // a second edit locates the row by the values just written
        table->setValue(1, 2, QVariant(QString()));
        query.post(1);
        QCOMPARE(column("select count(*) from t where id = 2 and s is null"), QVariantList({1}));

        const qint64 added = table->insertRow();
        table->setValue(added, 0, 10);
        table->setValue(added, 2, QStringLiteral("ten"));
        query.post(added);
        QCOMPARE(column("select s from t where id = 10"), QVariantList({"ten"}));

        const qint64 clone = table->cloneRow(0);
        QCOMPARE(table->value(clone, 3).toByteArray(), QByteArray("\x00\xff\x00", 3));
        query.postPending();
        QCOMPARE(column("select count(*) from t where id = 1 and b = x'00ff00'"), QVariantList({2}));

        query.remove(3);
        QCOMPARE(column("select count(*) from t where id = 4"), QVariantList({0}));
        QVERIFY(table->isDeleted(3));
        QCOMPARE(column("select count(*) from t"), QVariantList({6}));
    }

    void identicalRowsRefuseWrites()
    {
        exec("create table d (a integer, b text)");
        exec("insert into d values (1, null)");
        exec("insert into d values (1, null)");
        ResultQuery query;
        query.open(m_db, "select * from d", 100);
        query.table()->setValue(0, 1, QStringLiteral("x"));
        QString error = errorOf([&] { query.post(0); });
        QVERIFY2(error.contains("2 rows"), qPrintable(error));
        QCOMPARE(query.table()->rowState(0), ResultTable::RowState::Modified);
        QCOMPARE(column("select count(*) from d where a = 1 and b is null"), QVariantList({2}));
        QVERIFY_THROWS_EXCEPTION(VantryError, query.remove(1));
        QCOMPARE(column("select count(*) from d"), QVariantList({2}));

        // a row that changed under us matches nothing
        exec("create table g (a integer)");
        exec("insert into g values (1)");
        query.open(m_db, "select * from g", 100);
        exec("update g set a = 2");
        query.table()->setValue(0, 0, 3);
        error = errorOf([&] { query.post(0); });
        QVERIFY2(error.contains("0 rows"), qPrintable(error));
        QCOMPARE(column("select a from g"), QVariantList({2}));
    }

    void readOnlyRefusesEdits()
    {
        ResultQuery query;
        query.open(m_db, "select * from t", 100);
        query.setReadOnly(true);
        QVERIFY_THROWS_EXCEPTION(VantryError, query.table()->setValue(0, 0, 9));
        QVERIFY_THROWS_EXCEPTION(VantryError, query.table()->insertRow());
        QVERIFY_THROWS_EXCEPTION(VantryError, query.remove(0));
        query.setReadOnly(false);
        query.table()->setValue(0, 0, 9);

        query.open(m_db, "select t.id, u.s from t join t u using (id)", 100);
        QVERIFY(query.isReadOnly());
        QVERIFY(query.readOnlyReason().contains("join"));
        QVERIFY_THROWS_EXCEPTION(VantryError, query.table()->setValue(0, 0, 9));
        QCOMPARE(column("select count(*) from t where id = 9"), QVariantList({0}));
    }

    void refreshRerunsStatement()
    {
        ResultQuery query;
        query.open(m_db, "select * from t", 2);
        exec("delete from t where id > 1");
        query.refresh();
        QCOMPARE(query.table()->rowCount(), 1);
    }
};

QTEST_GUILESS_MAIN(TestResultTable)
#include "tst_resulttable.moc"
