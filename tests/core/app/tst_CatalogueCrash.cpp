// The catalogue under crashes: writer processes add connections and history rows in a loop and
// print each row once it is committed; they are killed (SIGKILL) at random points, and after each
// kill the catalogue must open, pass SQLite's integrity check and hold every row printed. Also:
// two writers at once lose nothing, and what Vantry stores is readable by its owner only.
#include "TempHome.h"
#include "core/app/MdmUn.h"
#include "core/app/SqlHistory.h"
#include "core/base/DataFolder.h"
#include "core/base/SettingsStore.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QRandomGenerator>
#include <QSet>
#include <QSqlQuery>
#include <QThread>
#include <QtTest>

namespace {

// Child mode: write rows until killed. "C <id>" follows a committed connection row, "H <text>" a
// committed history row. A writer that shares the file pauses between rows as a user does: in a
// tight loop one writer would hold the file's lock nearly all the time and starve the other.
int writeUntilKilled(const QString &file, const QString &tag, bool pause)
{
    TMdm mdm(file);
    QTextStream out(stdout);
    out << "R\n"; // the catalogue is open: rows follow
    out.flush();
    for (int i = 0;; ++i) {
        ConnectionRow row;
        row.connectionName = QStringLiteral("%1-%2").arg(tag).arg(i);
        row.connectionParameters = QByteArray(200 + i % 50, 'p');
        row.connectionType = 349;
        mdm.postConnection(row);
        out << "C " << row.connectionId << '\n';
        out.flush();
        const QString sql = QStringLiteral("select %1 /* %2 */").arg(i).arg(tag);
        mdm.history().append(sql);
        out << "H " << sql << '\n';
        out.flush();
        if (pause)
            QThread::msleep(3);
    }
}

struct Committed
{
    QSet<qint64> connectionIds;
    QSet<QString> historyTexts;
    void read(const QByteArray &output)
    {
        for (const QByteArray &line : output.split('\n')) {
            if (line.startsWith("C "))
                connectionIds.insert(line.mid(2).toLongLong());
            else if (line.startsWith("H "))
                historyTexts.insert(QString::fromUtf8(line.mid(2)));
        }
    }
};

QProcess *startWriter(const QString &file, const QString &tag, QObject *parent, bool pause = false)
{
    auto *p = new QProcess(parent);
    p->start(QCoreApplication::applicationFilePath(),
             {QStringLiteral("--write-until-killed"), file, tag, pause ? QStringLiteral("pause") : QString()});
    return p;
}

QByteArray killAndCollect(QProcess *p)
{
    p->kill(); // SIGKILL
    p->waitForFinished(10000);
    return p->readAllStandardOutput();
}

// Waits until a writer has opened the catalogue, collecting what it printed meanwhile.
QByteArray waitUntilOpen(QProcess *p)
{
    QByteArray out;
    QElapsedTimer clock;
    clock.start();
    while (!out.startsWith("R\n") && clock.elapsed() < 20000 && p->state() == QProcess::Running) {
        p->waitForReadyRead(100);
        out += p->readAllStandardOutput();
    }
    return out;
}

// Opens the catalogue as a plain SQLite file and checks it whole and holding every committed row.
void verifyCatalogue(const QString &file, const Committed &committed)
{
    const QString name = QStringLiteral("crash-check");
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        db.setDatabaseName(file);
        QVERIFY(db.open());
        QSqlQuery q(db);
        QVERIFY(q.exec(QStringLiteral("PRAGMA integrity_check")) && q.next());
        QCOMPARE(q.value(0).toString(), QStringLiteral("ok"));

        QSet<qint64> ids;
        QVERIFY(q.exec(QStringLiteral("select CONNECTION_ID from CONNECTIONS")));
        while (q.next())
            ids.insert(q.value(0).toLongLong());
        QSet<QString> texts;
        QVERIFY(q.exec(QStringLiteral("select EXECUTED_SQL from SQL_EXECUTION_HISTORY")));
        while (q.next())
            texts.insert(q.value(0).toString());
        for (qint64 id : committed.connectionIds)
            QVERIFY2(ids.contains(id), qPrintable(QStringLiteral("connection %1 was lost").arg(id)));
        for (const QString &text : committed.historyTexts)
            QVERIFY2(texts.contains(text), qPrintable(QStringLiteral("history row \"%1\" was lost").arg(text)));
    }
    QSqlDatabase::removeDatabase(name);
    // And Vantry itself still accepts it.
    TMdm reopened(file);
}

} // namespace

class tst_CatalogueCrash : public QObject
{
    Q_OBJECT

private slots:
    void killedWritersLoseNothingCommitted()
    {
        TempHome home;
        const QString file = home.file(QStringLiteral("db.sqlite"));
        Committed committed;
        int kills = 0;
        QElapsedTimer clock;
        clock.start();
        // Every other writer is killed at a random time from its start, so also while it opens or
        // creates the catalogue; the others at a random time after the catalogue is open, so that
        // rows are written even where starting takes long (a loaded machine, a sanitizer build).
        // Bounded by count and by time.
        while (kills < 60 && clock.elapsed() < 25000) {
            QProcess *writer = startWriter(file, QStringLiteral("k%1").arg(kills), this);
            QVERIFY(writer->waitForStarted());
            const QByteArray early = kills % 2 == 1 ? waitUntilOpen(writer) : QByteArray();
            QTest::qWait(int(QRandomGenerator::global()->bounded(kills == 0 ? 5 : 10, 250)));
            committed.read(early + killAndCollect(writer));
            delete writer;
            ++kills;
            // A catalogue killed before it was complete does not exist yet; nothing was committed.
            if (!QFileInfo::exists(file)) {
                QVERIFY(committed.connectionIds.isEmpty());
                continue;
            }
            verifyCatalogue(file, committed);
            if (QTest::currentTestFailed())
                return;
        }
        qInfo("kills tried: %d; rows checked: %lld connections, %lld history rows", kills,
              qint64(committed.connectionIds.size()), qint64(committed.historyTexts.size()));
        QVERIFY(kills >= 10);
        QVERIFY(!committed.connectionIds.isEmpty());
        // Nothing half-made is left beside the catalogue once it is opened again.
        { TMdm reopened(file); }
        const QStringList leftovers = QDir(home.path()).entryList({QStringLiteral("*.new*")}, QDir::Files);
        QVERIFY2(leftovers.isEmpty(), qPrintable(leftovers.join(',')));
    }

    void twoWritersAtOnceLoseNothing()
    {
        TempHome home;
        const QString file = home.file(QStringLiteral("db.sqlite"));
        { TMdm create(file); }
        QProcess *a = startWriter(file, QStringLiteral("a"), this, true);
        QProcess *b = startWriter(file, QStringLiteral("b"), this, true);
        QVERIFY(a->waitForStarted() && b->waitForStarted());
        // Both write for a while side by side: until each has committed some rows (a loaded
        // machine may take seconds for the first), then both are killed.
        QByteArray outA;
        QByteArray outB;
        QElapsedTimer clock;
        clock.start();
        while ((outA.count("C ") < 20 || outB.count("C ") < 20) && clock.elapsed() < 30000) {
            QTest::qWait(50);
            outA += a->readAllStandardOutput();
            outB += b->readAllStandardOutput();
        }
        outA += killAndCollect(a);
        outB += killAndCollect(b);
        Committed committed;
        committed.read(outA);
        const int fromA = int(committed.connectionIds.size());
        committed.read(outB);
        // Ids are never shared: the union holds every row of both writers.
        QVERIFY(fromA > 0 && committed.connectionIds.size() > fromA);
        QCOMPARE(outA.count("C ") + outB.count("C "), qsizetype(committed.connectionIds.size()));
        verifyCatalogue(file, committed);
    }

    void storedFilesAreTheOwnersOnly()
    {
        TempHome home;
        const QString folder = home.path() + QStringLiteral("/nested/data");
        qputenv("VANTRY_HOME", folder.toUtf8());
        const QString dataFolder = DataFolder::path();
        QCOMPARE(QFileInfo(dataFolder).permissions() & 0x0077, QFile::Permissions());
        { TMdm mdm(DataFolder::catalogueFile()); }
        {
            SettingsStore settings(DataFolder::settingsFile());
            settings.writeString(QStringLiteral("SQL\\"), QStringLiteral("Probe"), QStringLiteral("1"));
            settings.sync();
        }
        for (const QString &file : {DataFolder::catalogueFile(), DataFolder::settingsFile()}) {
            const QFile::Permissions p = QFileInfo(file).permissions();
            QVERIFY2(p & QFile::ReadOwner, qPrintable(file));
            QVERIFY2(!(p & (QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther)),
                     qPrintable(file));
        }
        // A catalogue left readable by others from an older version is tightened when opened.
        QFile::setPermissions(DataFolder::catalogueFile(), QFile::Permissions(0x6644));
        { TMdm mdm(DataFolder::catalogueFile()); }
        QVERIFY(!(QFileInfo(DataFolder::catalogueFile()).permissions() & QFile::ReadOther));
    }
};

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    if (argc == 5 && QByteArray(argv[1]) == "--write-until-killed")
        return writeUntilKilled(QString::fromLocal8Bit(argv[2]), QString::fromLocal8Bit(argv[3]),
                                QByteArray(argv[4]) == "pause");
    tst_CatalogueCrash test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_CatalogueCrash.moc"
