// Servers that fail under a running tab: a server stopped in the middle of a script and while a
// result is being fetched (a private PostgreSQL the test stops and starts), and a connection
// killed from the server's side between two runs (the shared servers). Every failure reaches the
// log with the driver's text, the tab stays usable, and the next run reconnects.
#include "PrivatePostgres.h"
#include "RunRecorder.h"
#include "TestServers.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QtTest>

class tst_ServerFaults : public QObject
{
    Q_OBJECT

    static bool idle(const RunService &run, int ms = 30000) { return RunRecorder::idle(run, ms); }

    static QString joined(const RunRecorder &seen)
    {
        QStringList lines;
        for (const auto &m : seen.messages)
            lines << QStringLiteral("%1: %2").arg(m.second).arg(m.first);
        return lines.join('\n');
    }

    // The next statement on the same tab works again.
    static void expectUsable(RunService &run, RunRecorder &seen, const TReaderConnection &rc)
    {
        run.runStatement(rc, QStringLiteral("select 1"), {});
        QVERIFY(idle(run));
        QVERIFY2(seen.last().second == 0, qPrintable(joined(seen)));
    }

private slots:
    void initTestCase() { VANTRY_REQUIRE_TEST_SERVERS(); }

    void serverStoppedInTheMiddleOfAScript()
    {
        PrivatePostgres pg;
        QVERIFY2(pg.isReady(), "cannot start a private PostgreSQL server");
        RunService run;
        RunRecorder seen(run);
        const QStringList chunks{QStringLiteral("create table SF_SCRIPT (ID integer)"),
                                 QStringLiteral("select pg_sleep(3)"),
                                 QStringLiteral("insert into SF_SCRIPT values (1)"),
                                 QStringLiteral("insert into SF_SCRIPT values (2)")};
        run.runScript(pg.record(), chunks);
        QVERIFY(QTest::qWaitFor([&seen] { return seen.statements.size() >= 2; }, 15000));
        QTest::qWait(300);
        QVERIFY(pg.stop());
        QVERIFY2(idle(run), "the script did not end after the server went away");
        // The sleeping chunk and both inserts fail, each with the driver's own text.
        QCOMPARE(seen.errorCount(), 3);
        for (const auto &m : seen.messages)
            if (m.second == 2)
                QVERIFY2(!m.first.trimmed().isEmpty(), qPrintable(joined(seen)));

        QVERIFY(pg.start());
        expectUsable(run, seen, pg.record());
    }

    void serverStoppedWhileAResultIsFetched()
    {
        PrivatePostgres pg;
        QVERIFY2(pg.isReady(), "cannot start a private PostgreSQL server");
        RunService run;
        RunRecorder seen(run);
        RunService::Options options;
        options.batchRows = 1000;
        run.runStatement(pg.record(), QStringLiteral("select g, repeat('x', 100) from generate_series(1, 3000000) g"),
                         options);
        QVERIFY(idle(run));
        QVERIFY2(seen.table && seen.more, qPrintable(joined(seen)));
        const qint64 shown = seen.table->rowCount();
        QVERIFY(pg.stop());
        // Rows already on their way may still arrive; then the fetch fails and says so.
        const int errorsBefore = seen.errorCount();
        for (int i = 0; i < 400 && seen.more && seen.stops.isEmpty() && seen.errorCount() == errorsBefore; ++i) {
            run.fetchMore(10000);
            QVERIFY(idle(run));
        }
        QVERIFY2(seen.errorCount() > errorsBefore || !seen.stops.isEmpty(), qPrintable(joined(seen)));
        QVERIFY(!seen.more);
        // The rows fetched before the failure stay.
        QVERIFY(seen.table->rowCount() >= shown);
        QVERIFY(seen.table->rowCount() < 3000000);

        QVERIFY(pg.start());
        expectUsable(run, seen, pg.record());
    }

    void connectionKilledByTheServerBetweenRuns_data()
    {
        QTest::addColumn<QString>("server");
        QTest::addColumn<QString>("whoAmI");
        QTest::addColumn<QString>("kill");
        QTest::newRow("postgres") << "postgres" << "select pg_backend_pid()" << "select pg_terminate_backend(%1)";
        QTest::newRow("mariadb") << "mariadb" << "select connection_id()" << "kill %1";
    }

    void connectionKilledByTheServerBetweenRuns()
    {
        QFETCH(QString, server);
        QFETCH(QString, whoAmI);
        QFETCH(QString, kill);
        const TReaderConnection rc = server == QLatin1String("postgres") ? TestServers::postgres() : TestServers::mariadb();
        RunService run;
        RunRecorder seen(run);
        run.runStatement(rc, whoAmI, {});
        QVERIFY(idle(run));
        QVERIFY2(seen.table && seen.table->rowCount() == 1, qPrintable(joined(seen)));
        const QString session = seen.table->column(0).value(0).toString();

        QSqlDatabase admin = TestServers::openServer(server, QStringLiteral("sf-admin-") + server);
        QSqlQuery killer(admin);
        QVERIFY2(killer.exec(kill.arg(session)), qPrintable(killer.lastError().text()));

        // The next run on the tab works: each run connects afresh, so the killed session is gone.
        expectUsable(run, seen, rc);
        QVERIFY2(seen.errorCount() == 0, qPrintable(joined(seen)));
    }
};

QTEST_GUILESS_MAIN(tst_ServerFaults)
#include "tst_ServerFaults.moc"
