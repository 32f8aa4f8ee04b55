// Writes that cannot land: the data folder on a small file system that is full, then read-only.
// The catalogue, the settings file and an export each refuse with an error naming the cause, and
// nothing already stored is damaged. The file system is a private tmpfs mount, so the test needs
// the right to mount (root in CI); without it the test is skipped.
#include "ErrorOf.h"
#include "FilledTable.h"
#include "core/app/MdmUn.h"
#include "core/app/SqlHistory.h"
#include "core/base/SettingsStore.h"
#include "core/interchange/GridExport.h"
#include "core/workspace/ResultExportSource.h"

#include <QDir>
#include <QProcess>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QtTest>

namespace {

bool run(const QString &program, const QStringList &args)
{
    QProcess p;
    p.start(program, args);
    return p.waitForFinished(10000) && p.exitStatus() == QProcess::NormalExit && p.exitCode() == 0;
}

// Fills the file system up to its last byte (again, when called again).
void fill(const QString &folder)
{
    QFile filler(folder + QStringLiteral("/filler"));
    QVERIFY(filler.open(QIODevice::WriteOnly | QIODevice::Append));
    const QByteArray block(4096, 'x');
    while (filler.write(block) == block.size() && filler.flush()) {
    }
    // Whatever fits in single bytes goes in too.
    while (filler.write("x", 1) == 1 && filler.flush()) {
    }
}

} // namespace

class tst_FullDisk : public QObject
{
    Q_OBJECT

    QTemporaryDir m_mountPoint;
    bool m_mounted = false;
    QString m_catalogue;
    QString m_settings;
    QList<qint64> m_storedIds;
    QByteArray m_settingsBefore;

    void checkNothingDamaged()
    {
        {
            QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("check"));
            db.setDatabaseName(m_catalogue);
            db.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY"));
            QVERIFY(db.open());
            QSqlQuery q(db);
            QVERIFY(q.exec(QStringLiteral("PRAGMA integrity_check")) && q.next());
            QCOMPARE(q.value(0).toString(), QStringLiteral("ok"));
            QList<qint64> ids;
            QVERIFY(q.exec(QStringLiteral("select CONNECTION_ID from CONNECTIONS order by CONNECTION_ID")));
            while (q.next())
                ids << q.value(0).toLongLong();
            QCOMPARE(ids, m_storedIds);
        }
        QSqlDatabase::removeDatabase(QStringLiteral("check"));
        QFile settings(m_settings);
        QVERIFY(settings.open(QIODevice::ReadOnly));
        QCOMPARE(settings.readAll(), m_settingsBefore);
    }

    void checkExportRefused(const QString &cause)
    {
        const auto table = filledTable({{"ID", "INTEGER"}, {"NAME", "TEXT"}},
                                       {{1, QString(5000, 'a')}, {2, QString(5000, 'b')}});
        const ResultExportSource source(*table);
        const QString target = m_mountPoint.path() + QStringLiteral("/export.csv");
        const QString message = errorOf([&] { GridExport::write(source, ExportFormat::Csv, target); });
        QVERIFY2(message.contains(cause, Qt::CaseInsensitive), qPrintable(message));
        QVERIFY(!QFile::exists(target));
    }

private slots:
    void initTestCase()
    {
        const QString point = m_mountPoint.path();
        if (!run(QStringLiteral("mount"), {"-t", "tmpfs", "-o", "size=1m", "tmpfs", point}))
            QSKIP("cannot mount a private file system here (needs root)");
        m_mounted = true;
        m_catalogue = point + QStringLiteral("/db.sqlite");
        m_settings = point + QStringLiteral("/Vantry.ini");
        {
            TMdm mdm(m_catalogue);
            for (int i = 0; i < 5; ++i) {
                ConnectionRow row;
                row.connectionName = QStringLiteral("stored %1").arg(i);
                row.connectionType = 349;
                mdm.postConnection(row);
            }
            for (const ConnectionRow &row : mdm.connections())
                m_storedIds << row.connectionId;
            SettingsStore settings(m_settings);
            settings.writeString(QStringLiteral("SQL\\"), QStringLiteral("Kept"), QStringLiteral("yes"));
            settings.sync();
        }
        QFile settings(m_settings);
        QVERIFY(settings.open(QIODevice::ReadOnly));
        m_settingsBefore = settings.readAll();
    }

    void cleanupTestCase()
    {
        if (m_mounted)
            run(QStringLiteral("umount"), {"-l", m_mountPoint.path()});
    }

    void fullDiskRefusesEveryWrite()
    {
        fill(m_mountPoint.path());
        {
            TMdm mdm(m_catalogue);
            const QString connection = errorOf([&] {
                ConnectionRow row;
                row.connectionName = QStringLiteral("does not fit");
                row.connectionParameters = QByteArray(256 * 1024, 'p');
                row.connectionType = 349;
                mdm.postConnection(row);
            });
            QVERIFY2(connection.contains(QLatin1String("full"), Qt::CaseInsensitive), qPrintable(connection));
            const QString history = errorOf([&] { mdm.history().append(QString(256 * 1024, 's')); });
            QVERIFY2(history.contains(QLatin1String("full"), Qt::CaseInsensitive), qPrintable(history));
        }
        const QString settings = errorOf([&] {
            SettingsStore store(m_settings);
            store.writeString(QStringLiteral("SQL\\"), QStringLiteral("Large"), QString(256 * 1024, 'v'));
            store.sync();
        });
        QVERIFY2(settings.contains(QLatin1String("disk is full")), qPrintable(settings));
        fill(m_mountPoint.path()); // the refused writes above gave their scratch space back
        checkExportRefused(QStringLiteral("space"));
        checkNothingDamaged();
        QFile::remove(m_mountPoint.path() + QStringLiteral("/filler"));
    }

    void readOnlyFolderRefusesEveryWrite()
    {
        QVERIFY(run(QStringLiteral("mount"), {"-o", "remount,ro", m_mountPoint.path()}));
        const QString catalogue = errorOf([&] {
            TMdm mdm(m_catalogue);
            ConnectionRow row;
            row.connectionName = QStringLiteral("read-only");
            row.connectionType = 349;
            mdm.postConnection(row);
        });
        QVERIFY2(catalogue.contains(QLatin1String("read"), Qt::CaseInsensitive), qPrintable(catalogue));
        const QString settings = errorOf([&] {
            SettingsStore store(m_settings);
            store.writeString(QStringLiteral("SQL\\"), QStringLiteral("Changed"), QStringLiteral("1"));
            store.sync();
        });
        QVERIFY2(settings.contains(QLatin1String("cannot be written")), qPrintable(settings));
        checkExportRefused(QStringLiteral("read-only"));
        checkNothingDamaged();
        QVERIFY(run(QStringLiteral("mount"), {"-o", "remount,rw", m_mountPoint.path()}));
    }
};

QTEST_GUILESS_MAIN(tst_FullDisk)
#include "tst_FullDisk.moc"
