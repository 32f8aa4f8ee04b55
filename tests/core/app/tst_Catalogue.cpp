#include "TempHome.h"
#include "core/base/LogonUser.h"
#include "core/app/MdmUn.h"
#include "core/app/SqlHistory.h"
#include "core/base/VantryError.h"

#include <QCryptographicHash>
#include <QProcess>
#include <QSqlError>
#include <QSqlQuery>
#include <QtTest>

#include <set>

namespace {

QByteArray fileHash(const QString &path)
{
    QFile f(path);
    f.open(QIODevice::ReadOnly);
    return QCryptographicHash::hash(f.readAll(), QCryptographicHash::Sha256);
}

qint64 idGeneratorValue(TMdm &mdm, int idType)
{
    QSqlQuery q(mdm.database());
    q.exec(QStringLiteral("select ID from id_generator where ID_TYPE = %1").arg(idType));
    q.next();
    return q.value(0).toLongLong();
}

// Child mode: take `count` connection ids from the catalogue and print them, one per line.
int takeIds(const QString &file, int count)
{
    TMdm mdm(file);
    QTextStream out(stdout);
    for (int i = 0; i < count; ++i)
        out << mdm.GetID(1) << '\n';
    return 0;
}

} // namespace

class tst_Catalogue : public QObject
{
    Q_OBJECT

private slots:
    void newCatalogueHasTablesAndGenerators()
    {
        TempHome home;
        const QString file = home.file(QStringLiteral("db.sqlite"));
        TMdm mdm(file);
        QVERIFY(QFile::exists(file));
        // The one stored connection of a new catalogue points at the sample database beside it.
        const QList<ConnectionRow> rows = mdm.connections();
        QCOMPARE(rows.size(), 1);
        QCOMPARE(rows[0].connectionName, QStringLiteral("Sample (SQLite)"));
        QCOMPARE(rows[0].connectionId, 1);
        QCOMPARE(rows[0].connectionType, 349);
        QVERIFY(QFile::exists(home.file(QStringLiteral("sample.sqlite"))));
        QCOMPARE(idGeneratorValue(mdm, 1), 1);
        QCOMPARE(idGeneratorValue(mdm, 10), 0);
        QVERIFY(mdm.history().isEmpty());
    }

    void brokenCatalogueIsRefusedAndKept_data()
    {
        QTest::addColumn<QByteArray>("setup");
        QTest::addColumn<QString>("expected");
        QTest::newRow("not a database") << QByteArray("garbage") << QStringLiteral("cannot be read as a database");
        QTest::newRow("missing history table") << QByteArray("drop table SQL_EXECUTION_HISTORY")
                                               << QStringLiteral("no table SQL_EXECUTION_HISTORY");
        QTest::newRow("missing id row") << QByteArray("delete from id_generator where ID_TYPE = 10")
                                        << QStringLiteral("no id_generator row for id type 10");
        QTest::newRow("missing column") << QByteArray("alter table CONNECTIONS drop column CONNECTION_TYPE")
                                        << QStringLiteral("no column CONNECTION_TYPE");
    }

    void brokenCatalogueIsRefusedAndKept()
    {
        QFETCH(QByteArray, setup);
        QFETCH(QString, expected);
        TempHome home;
        const QString file = home.file(QStringLiteral("db.sqlite"));
        if (setup == "garbage") {
            QFile f(file);
            QVERIFY(f.open(QIODevice::WriteOnly));
            QByteArray junk(8192, '\0');
            for (int i = 0; i < junk.size(); ++i)
                junk[i] = char((i * 131 + 7) & 0xff);
            f.write(junk);
        } else {
            TMdm fresh(file);
            QSqlQuery q(fresh.database());
            QVERIFY2(q.exec(QString::fromLatin1(setup)), qPrintable(q.lastError().text()));
        }
        const QByteArray before = fileHash(file);
        try {
            TMdm broken(file);
            QFAIL("a broken catalogue was accepted");
        } catch (const VantryError &e) {
            QVERIFY2(e.message().contains(expected), qPrintable(e.message()));
            QVERIFY2(e.message().contains(file), "the error must name the file");
        }
        QCOMPARE(fileHash(file), before);
    }

    void connectionIdsComeFromSequenceOneAndSurviveEdits()
    {
        TempHome home;
        TMdm mdm(home.file(QStringLiteral("db.sqlite")));
        mdm.GetID(1);  // the sample took 1, this call 2: the next row must get 3
        ConnectionRow row;
        row.connectionName = QStringLiteral("first");
        row.connectionParameters = QByteArray("\x00\x01packed", 8);
        mdm.postConnection(row);
        QCOMPARE(row.connectionId, 3);
        QCOMPARE(idGeneratorValue(mdm, 1), 3);

        row.connectionName = QStringLiteral("renamed");
        mdm.postConnection(row);
        QCOMPARE(row.connectionId, 3);
        QCOMPARE(idGeneratorValue(mdm, 1), 3);
        const auto stored = mdm.connection(3);
        QVERIFY(stored);
        QCOMPARE(stored->connectionName, QStringLiteral("renamed"));
        QCOMPARE(stored->connectionParameters, row.connectionParameters);
        QCOMPARE(idGeneratorValue(mdm, 10), 0);  // the history's sequence is untouched
    }

    void historyRowsAreKeyedStampedAndOrdered()
    {
        TempHome home;
        TMdm mdm(home.file(QStringLiteral("db.sqlite")));
        LogonUser::setName(QString());
        QCOMPARE(LogonUser::name(), QStringLiteral("Unknown"));
        mdm.GetID(10);
        mdm.history().append(QStringLiteral("select 1"));
        const HistoryRow *row = mdm.history().current();
        QVERIFY(row);
        QCOMPARE(row->id, 2);
        QCOMPARE(row->stamps.createdBy, QStringLiteral("Unknown"));
        QCOMPARE(row->stamps.changedBy, QStringLiteral("Unknown"));
        QVERIFY(row->stamps.created.isValid() && row->stamps.changed >= row->stamps.created);

        LogonUser::setName(QStringLiteral("a-very-long-account-name-that-goes-past-32"));
        QCOMPARE(LogonUser::name().size(), 32);

        // Rows written out of key order still read back oldest key first.
        QSqlQuery q(mdm.database());
        QVERIFY(q.exec(QStringLiteral("insert into SQL_EXECUTION_HISTORY (SQL_EXECUTION_HISTORY_ID, EXECUTED_SQL) "
                                      "values (100, 'later'), (1, 'earliest')")));
        mdm.history().reload();
        QStringList texts;
        for (int i = 0; i < mdm.history().count(); ++i)
            texts << mdm.history().row(i).executedSql;
        QCOMPARE(texts, (QStringList{QStringLiteral("earliest"), QStringLiteral("select 1"), QStringLiteral("later")}));
    }

    void historyCursorStopsAtBothEnds()
    {
        TempHome home;
        TMdm mdm(home.file(QStringLiteral("db.sqlite")));
        SqlHistory &h = mdm.history();
        QVERIFY(!h.prior() && !h.next());
        for (const char *sql : {"a", "b", "c"})
            h.append(QString::fromLatin1(sql));
        QCOMPARE(h.current()->executedSql, QStringLiteral("c"));
        QVERIFY(!h.next());
        QVERIFY(h.prior() && h.prior());
        QVERIFY(!h.prior());
        QCOMPARE(h.current()->executedSql, QStringLiteral("a"));
        h.deleteAll();
        QVERIFY(h.isEmpty());
        TMdm reopened(mdm.fileName());
        QVERIFY(reopened.history().isEmpty());
    }

    void twoProcessesNeverShareAnId()
    {
        TempHome home;
        const QString file = home.file(QStringLiteral("db.sqlite"));
        { TMdm create(file); }
        const int perProcess = 500;
        QProcess a, b;
        const QStringList args{QStringLiteral("--take-ids"), file, QString::number(perProcess)};
        a.start(QCoreApplication::applicationFilePath(), args);
        b.start(QCoreApplication::applicationFilePath(), args);
        QVERIFY(a.waitForFinished(120000) && b.waitForFinished(120000));
        QCOMPARE(a.exitCode(), 0);
        QCOMPARE(b.exitCode(), 0);
        std::set<int> ids;
        int total = 0;
        for (QProcess *p : {&a, &b}) {
            const QList<QByteArray> lines = p->readAllStandardOutput().split('\n');
            for (const QByteArray &line : lines) {
                if (line.isEmpty())
                    continue;
                ids.insert(line.toInt());
                ++total;
            }
        }
        QCOMPARE(total, 2 * perProcess);
        QCOMPARE(int(ids.size()), 2 * perProcess);
        QCOMPARE(*ids.begin(), 2);  // 1 went to the sample connection
        QCOMPARE(*ids.rbegin(), 2 * perProcess + 1);
    }
};

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    if (argc == 4 && QByteArray(argv[1]) == "--take-ids")
        return takeIds(QString::fromLocal8Bit(argv[2]), QByteArray(argv[3]).toInt());
    tst_Catalogue test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_Catalogue.moc"
