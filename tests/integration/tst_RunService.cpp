#include "RunRecorder.h"
#include "TestServers.h"
#include "core/workspace/ResultWriteBack.h"
#include "core/workspace/TableKeys.h"
#include "core/workspace/RunService.h"

#include <QElapsedTimer>
#include <QSqlError>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QtTest>

// The run service against a SQLite file and the servers of scripts/test-servers: cancel on every
// engine, several statements in one command, rows fetched on demand exactly once, Refresh after
// the table is gone, a write while rows remain unfetched, and a service destroyed mid-run.
class TestRunService : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    using Recorder = RunRecorder;

    static bool idle(const RunService &run, int ms = 30000) { return RunRecorder::idle(run, ms); }

    // A loopback port that completes the TCP handshake (the kernel does it) and never speaks.
    struct SilentPort
    {
        int fd = -1;
        int port = 0;
        SilentPort()
        {
            fd = ::socket(AF_INET, SOCK_STREAM, 0);
            sockaddr_in address{};
            address.sin_family = AF_INET;
            address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
            socklen_t size = sizeof address;
            if (fd < 0 || ::bind(fd, reinterpret_cast<sockaddr *>(&address), size) != 0 || ::listen(fd, 4) != 0
                || ::getsockname(fd, reinterpret_cast<sockaddr *>(&address), &size) != 0)
                return;
            port = ntohs(address.sin_port);
        }
        ~SilentPort() { close(); }
        void close()
        {
            if (fd >= 0)
                ::close(fd);
            fd = -1;
        }
    };

    QString sqliteFile() const { return m_dir.filePath(QStringLiteral("run.sqlite")); }

    // Opens the 100,000 numbered rows in batches of `batchRows` and waits for the first batch.
    void openNumbers(RunService &run, qint64 batchRows, const QString &statement = QStringLiteral("select * from RS_NUMBERS"))
    {
        RunService::Options options;
        options.batchRows = batchRows;
        run.openTable(TestServers::sqlite(sqliteFile()), statement, options);
        QVERIFY(idle(run));
    }

    static TReaderConnection server(const QString &name)
    {
        if (name == QLatin1String("postgres"))
            return TestServers::postgres();
        if (name == QLatin1String("mariadb"))
            return TestServers::mariadb();
        if (name == QLatin1String("firebird"))
            return TestServers::firebird();
        return TestServers::odbc(TestServers::env("VANTRY_ODBC_PG_DSN"), TestServers::env("VANTRY_PG_USER"),
                                 TestServers::env("VANTRY_PG_PASSWORD"));
    }

    TReaderConnection record(const QString &name) const
    {
        return name == QLatin1String("sqlite") ? TestServers::sqlite(sqliteFile()) : server(name);
    }

private slots:
    void initTestCase()
    {
        VANTRY_REQUIRE_TEST_SERVERS();
        QFile file(sqliteFile());
        QVERIFY(file.open(QIODevice::WriteOnly));  // an empty file is a new SQLite database
        file.close();
        RunService run;
        Recorder seen(run);
        QStringList chunks{QStringLiteral("create table RS_NUMBERS (ID integer primary key, NAME text)"),
                           QStringLiteral("with recursive n(x) as (select 1 union all select x + 1 from n where x < 100000) "
                                          "insert into RS_NUMBERS select x, 'row ' || x from n")};
        run.runScript(TestServers::sqlite(sqliteFile()), chunks);
        QVERIFY(idle(run));
        for (const auto &message : seen.messages)
            QVERIFY2(message.second == 0, qPrintable(message.first));
    }

    void cancelStopsALongStatement_data()
    {
        QTest::addColumn<QString>("engine");
        QTest::addColumn<QString>("statement");
        QTest::newRow("sqlite") << "sqlite"
                                << "with recursive c(x) as (select 1 union all select x + 1 from c) select count(*) from c";
        QTest::newRow("postgres") << "postgres" << "select pg_sleep(60)";
        QTest::newRow("mariadb") << "mariadb" << "select benchmark(5000000000, md5('vantry'))";
        QTest::newRow("firebird") << "firebird"
                                  << "select count(*) from rdb$relations a, rdb$relations b, rdb$relations c, "
                                     "rdb$relations d, rdb$relations e";
        QTest::newRow("odbc") << "odbc" << "select pg_sleep(60)";
    }

    void cancelStopsALongStatement()
    {
        QFETCH(QString, engine);
        QFETCH(QString, statement);
        RunService run;
        Recorder seen(run);
        run.runStatement(record(engine), statement, {});
        // Let the statement reach the server before cancelling it.
        QVERIFY(QTest::qWaitFor([&seen] { return !seen.statements.isEmpty(); }, 10000));
        QTest::qWait(300);
        QVERIFY(run.isBusy());
        QElapsedTimer clock;
        clock.start();
        run.cancel();
        QVERIFY2(idle(run, 10000), "the cancel did not stop the statement");
        qInfo("%s: idle %lld ms after Cancel", qPrintable(engine), clock.elapsed());
        QCOMPARE(seen.last().second, 2);
        QVERIFY2(seen.last().first.startsWith(QStringLiteral("Cancelled by the user")), qPrintable(seen.last().first));

        // The tab stays usable: the next run works.
        run.runStatement(record(engine), engine == QLatin1String("firebird") ? QStringLiteral("select 1 from rdb$database")
                                                                             : QStringLiteral("select 1"), {});
        QVERIFY(idle(run));
        QVERIFY2(seen.last().second == 0, qPrintable(seen.last().first));
    }

    void aCancelledScriptStopsBeforeItsNextChunk()
    {
        RunService run;
        Recorder seen(run);
        const TReaderConnection rc = TestServers::postgres();
        run.runScript(rc, {QStringLiteral("select pg_sleep(60)"), QStringLiteral("create table RS_NEVER (A integer)")});
        QVERIFY(QTest::qWaitFor([&seen] { return !seen.statements.isEmpty(); }, 10000));
        QTest::qWait(300);
        run.cancel();
        QVERIFY(idle(run, 10000));
        QCOMPARE(seen.statements.size(), 1);  // the second chunk never started
        QVERIFY2(seen.last().first.startsWith(QStringLiteral("Cancelled by the user")), qPrintable(seen.last().first));
        QSqlDatabase check = TestServers::openServer(QStringLiteral("postgres"), QStringLiteral("rs-check"));
        QSqlQuery query(QStringLiteral("select count(*) from information_schema.tables where table_name = 'rs_never'"), check);
        QVERIFY(query.next());
        QCOMPARE(query.value(0).toInt(), 0);
    }

    void aResultIsWrittenThroughTheConnectionOfTheLatestRun()
    {
        // Every run reconnects: a result shown before another run is written through the new
        // connection, never through the handle the reconnect closed.
        RunService run;
        Recorder seen(run);
        const TReaderConnection rc = TestServers::sqlite(sqliteFile());
        run.openTable(rc, QStringLiteral("select * from RS_NUMBERS where ID <= 5"), {});
        QVERIFY(idle(run));
        std::shared_ptr<ResultTable> shown = seen.table;
        run.runScript(rc, {QStringLiteral("select 1")});
        QVERIFY(idle(run));
        shown->setValue(1, 1, QStringLiteral("after a reconnect"));
        const std::optional<RowChange> change = ResultWriteBack::snapshotPost(*shown, 1, QStringLiteral("RS_NUMBERS"));
        QVERIFY(change);
        QString failure = QStringLiteral("not run");
        auto keys = std::make_shared<TableKeyCache>();
        run.onConnection([change, keys](const QSqlDatabase &db) { ResultWriteBack::apply(db, *change, *keys); },
                         [&failure](const QString &error) { failure = error; });
        QVERIFY(idle(run));
        QCOMPARE(failure, QString());
        run.runStatement(rc, QStringLiteral("select NAME from RS_NUMBERS where ID = 2"), {});
        QVERIFY(idle(run));
        QCOMPARE(seen.table->value(0, 0).toString(), QStringLiteral("after a reconnect"));
    }

    void severalStatementsInOneCommand_data()
    {
        QTest::addColumn<QString>("engine");
        QTest::newRow("sqlite") << "sqlite";
        QTest::newRow("postgres") << "postgres";
        QTest::newRow("mariadb") << "mariadb";
    }

    void severalStatementsInOneCommand()
    {
        QFETCH(QString, engine);
        RunService run;
        Recorder seen(run);
        const TReaderConnection rc = record(engine);
        run.runScript(rc, {QStringLiteral("drop table RS_MULTI")});
        run.runScript(rc, {QStringLiteral("create table RS_MULTI (A integer);\ninsert into RS_MULTI values (1);\n"
                                          "insert into RS_MULTI values (2);")});
        run.runStatement(rc, QStringLiteral("select count(*) from RS_MULTI"), {});
        QVERIFY(idle(run));
        QVERIFY2(seen.last().second == 0, qPrintable(seen.last().first));
        QCOMPARE(seen.table->value(0, 0).toInt(), 2);

        // A failing statement among them brings the engine's own message, never an empty one.
        run.runScript(rc, {QStringLiteral("insert into RS_MULTI values (3);\ninsert into RS_NOWHERE values (4);")});
        QVERIFY(idle(run));
        QCOMPARE(seen.last().second, 2);
        QVERIFY2(seen.last().first.contains(QStringLiteral("RS_NOWHERE"), Qt::CaseInsensitive), qPrintable(seen.last().first));
        run.runScript(rc, {QStringLiteral("drop table RS_MULTI")});
        QVERIFY(idle(run));
    }

    void scrollingToTheEndFetchesEveryRowOnce()
    {
        RunService run;
        Recorder seen(run);
        openNumbers(run, 1000, QStringLiteral("select * from RS_NUMBERS order by ID"));
        QCOMPARE(seen.table->fetchedRows(), 1000);
        QVERIFY(seen.more);
        while (seen.more) {
            run.fetchMore(1000);
            QVERIFY(idle(run));
        }
        QCOMPARE(seen.table->fetchedRows(), 100000);
        for (qint64 row = 0; row < seen.table->rowCount(); ++row)
            QCOMPARE(seen.table->value(row, 0).toLongLong(), row + 1);
        QCOMPARE(seen.table->value(99999, 1).toString(), QStringLiteral("row 100000"));
    }

    void fetchAllStopsAtTheMemoryLimit()
    {
        RunService run;
        Recorder seen(run);
        RunService::Options options;
        options.batchRows = 100;
        options.memoryBudget = 256 * 1024;
        run.openTable(TestServers::sqlite(sqliteFile()), QStringLiteral("select * from RS_NUMBERS"), options);
        run.fetchMore(0);
        QVERIFY(idle(run));
        QVERIFY(seen.table->fetchedRows() < 100000);
        QVERIFY(!seen.more);
        QCOMPARE(seen.stops.size(), 1);
        QVERIFY2(seen.stops.first().contains(QStringLiteral("memory limit")), qPrintable(seen.stops.first()));
    }

    void writeWhileRowsRemainEndsTheFetch()
    {
        RunService run;
        Recorder seen(run);
        openNumbers(run, 10);
        QVERIFY(seen.more);
        seen.table->setValue(3, 1, QStringLiteral("edited"));
        std::shared_ptr<ResultTable> table = seen.table;
        QString failure = QStringLiteral("not run");
        run.onConnection([table](const QSqlDatabase &db) { ResultWriteBack(db, QStringLiteral("RS_NUMBERS")).writeToDatabase(*table, 3); },
                         [&failure](const QString &error) { failure = error; });
        QVERIFY(idle(run));
        QCOMPARE(failure, QString());
        // The connection is never left mid-result: the cursor ended, later fetches bring nothing.
        run.fetchMore(10);
        QVERIFY(idle(run));
        QCOMPARE(seen.table->fetchedRows(), 10);
        run.runStatement(TestServers::sqlite(sqliteFile()), QStringLiteral("select NAME from RS_NUMBERS where ID = 4"), {});
        QVERIFY(idle(run));
        QCOMPARE(seen.table->value(0, 0).toString(), QStringLiteral("edited"));
    }

    void refreshAfterTheTableWasDropped()
    {
        RunService run;
        Recorder seen(run);
        const TReaderConnection rc = TestServers::sqlite(sqliteFile());
        run.runScript(rc, {QStringLiteral("create table RS_GONE (A integer)"), QStringLiteral("insert into RS_GONE values (1)")});
        run.openTable(rc, QStringLiteral("select * from RS_GONE"), {});
        QVERIFY(idle(run));
        std::shared_ptr<ResultTable> before = seen.table;
        run.runScript(rc, {QStringLiteral("drop table RS_GONE")});
        run.refresh({});
        QVERIFY(idle(run));
        QCOMPARE(seen.last().second, 2);
        QVERIFY2(seen.last().first.contains(QStringLiteral("RS_GONE")), qPrintable(seen.last().first));
        // The rows shown before are still whole: nothing refers to freed memory.
        QCOMPARE(before->value(0, 0).toInt(), 1);
    }

    void aConnectThatHangsCanBeCancelled()
    {
        // A port that accepts connections and never answers: the client would wait its own
        // time-out (minutes for Firebird).
        SilentPort silent;
        QVERIFY(silent.port > 0);
        TReaderConnection rc = TestServers::firebird();
        rc.Port = silent.port;
        RunService run;
        Recorder seen(run);
        run.runStatement(rc, QStringLiteral("select 1 from rdb$database"), {});
        QTest::qWait(500);
        QVERIFY(run.isBusy());
        QElapsedTimer clock;
        clock.start();
        run.cancel();
        QVERIFY(!run.isBusy());
        QVERIFY(clock.elapsed() < 1000);
        QCOMPARE(seen.last().second, 2);
        QVERIFY2(seen.last().first.contains(QStringLiteral("connecting")), qPrintable(seen.last().first));

        // The tab goes on at once with a fresh connection; the abandoned one ends on its own.
        run.runStatement(record(QStringLiteral("sqlite")), QStringLiteral("select 1"), {});
        QVERIFY(idle(run));
        QCOMPARE(seen.last().second, 0);
        silent.close();
    }

    void destroyingTheServiceMidRunCancelsAndWaits()
    {
        QElapsedTimer clock;
        {
            auto run = std::make_unique<RunService>();
            Recorder seen(*run);
            run->runStatement(TestServers::postgres(), QStringLiteral("select pg_sleep(60)"), {});
            QVERIFY(QTest::qWaitFor([&seen] { return !seen.statements.isEmpty(); }, 10000));
            QTest::qWait(200);
            clock.start();
        }
        QVERIFY2(clock.elapsed() < 5000, "closing a tab waited for the whole statement");
    }
};

QTEST_MAIN(TestRunService)
#include "tst_RunService.moc"
