#include "TempHome.h"
#include "ErrorOf.h"
#include "core/app/CommandLine.h"
#include "core/base/DataFolder.h"
#include "core/base/VantryError.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <unistd.h>

namespace {

CommandLine parse(const QStringList &arguments)
{
    return CommandLine::parse(QStringList{QStringLiteral("vantry")} + arguments);
}

void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY2(file.open(QIODevice::WriteOnly), qPrintable(file.errorString()));
    file.write(bytes);
}

} // namespace

// The command line, the text of a file opened from it, and where the program keeps and finds its
// own files when it is installed or run from a copy.
class tst_CommandLine : public QObject
{
    Q_OBJECT

private slots:
    void actions_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("action");
        QTest::addColumn<bool>("hide");
        using A = CommandLine::Action;
        QTest::newRow("none") << QStringList{} << int(A::Run) << false;
        QTest::newRow("--help") << QStringList{"--help"} << int(A::Answer) << false;
        QTest::newRow("help wins over a file") << QStringList{"a.sql", "--help"} << int(A::Answer) << false;
        QTest::newRow("--version") << QStringList{"--version"} << int(A::Answer) << false;
        QTest::newRow("--help-all") << QStringList{"--help-all"} << int(A::Answer) << false;
        QTest::newRow("version despite a refused option") << QStringList{"--frobnicate", "--version"} << int(A::Answer) << false;
        QTest::newRow("--hide-connections") << QStringList{"--hide-connections"} << int(A::Run) << true;
        QTest::newRow("any other argument hides") << QStringList{"x"} << int(A::Run) << true;
        QTest::newRow("a .sql file does not hide") << QStringList{"new.SQL"} << int(A::Run) << false;
        QTest::newRow("a second file hides") << QStringList{"a.sql", "b.sql"} << int(A::Run) << true;
        QTest::newRow("unknown option") << QStringList{"--frobnicate"} << int(A::Fail) << false;
    }

    void actions()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, action);
        QFETCH(bool, hide);
        const CommandLine command = parse(arguments);
        QCOMPARE(int(command.action), action);
        QCOMPARE(command.hideConnectionGrid, hide);
        if (command.action == CommandLine::Action::Fail)
            QVERIFY2(command.error.contains(QLatin1String("frobnicate")), qPrintable(command.error));
    }

    void fileArgumentBecomesAbsolute()
    {
        QTemporaryDir dir;
        // Any existing file counts, whatever its name ends in.
        const QString script = dir.filePath(QStringLiteral("script.txt"));
        writeFile(script, "select 1");
        QVERIFY(QDir::setCurrent(dir.path()));
        const CommandLine command = parse({QStringLiteral("script.txt"), QStringLiteral("--hide-connections")});
        QCOMPARE(command.sqlFile, script);
        QVERIFY(command.hideConnectionGrid);
        QCOMPARE(parse({QStringLiteral("new.sql")}).sqlFile, dir.filePath(QStringLiteral("new.sql")));
    }

    void readsFileEncodings_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("text");
        const QString umlaut = QStringLiteral("select 'K\u00e4se' from t\r\n");
        QTest::newRow("UTF-8") << umlaut.toUtf8() << umlaut;
        QTest::newRow("UTF-8 with mark") << QByteArray("\xEF\xBB\xBF") + umlaut.toUtf8() << umlaut;
        QByteArray utf16("\xFF\xFE");
        for (const QChar c : umlaut)
            utf16 += char(c.unicode() & 0xFF), utf16 += char(c.unicode() >> 8);
        QTest::newRow("UTF-16 with mark") << utf16 << umlaut;
        QTest::newRow("Latin-1") << umlaut.toLatin1() << umlaut;
        QTest::newRow("empty") << QByteArray() << QString();
    }

    void readsFileEncodings()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, text);
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("q.sql"));
        writeFile(file, bytes);
        QCOMPARE(CommandLine::readSqlFile(file), text);
    }

    void unreadableFileNamesFileAndCause()
    {
        QTemporaryDir dir;
        const QString missing = dir.filePath(QStringLiteral("missing.sql"));
        const QString error = errorOf([&] { CommandLine::readSqlFile(missing); });
        QVERIFY2(error.contains(missing) && error.contains(QLatin1String("No such file")), qPrintable(error));
        QVERIFY_THROWS_EXCEPTION(VantryError, CommandLine::readSqlFile(dir.path()));
    }

    void dataFolderFallsBackFromReadOnlyExecutableFolder()
    {
        qunsetenv("VANTRY_HOME");
        QTemporaryDir exeDir;
        const QString perUser = DataFolder::chooseFor(QString());
        QVERIFY(perUser.endsWith(QLatin1String("/Vantry")));
        // No catalogue beside the program: the per-user folder.
        QCOMPARE(DataFolder::chooseFor(exeDir.path()), perUser);
        // A catalogue beside it that can be written: a portable copy keeps its files there.
        writeFile(exeDir.filePath(QStringLiteral("db.sqlite")), QByteArray());
        QCOMPARE(DataFolder::chooseFor(exeDir.path()), exeDir.path());
        // $VANTRY_HOME wins over both.
        {
            TempHome home;
            QCOMPARE(DataFolder::chooseFor(exeDir.path()), home.path());
            QCOMPARE(DataFolder::optionsFile(), home.file(QStringLiteral("options.ini")));
        }
        if (geteuid() == 0)
            QSKIP("root may write to any folder: the read-only case cannot be shown");
        QVERIFY(QFile::setPermissions(exeDir.path(), QFileDevice::ReadOwner | QFileDevice::ExeOwner));
        QCOMPARE(DataFolder::chooseFor(exeDir.path()), perUser);
        QFile::setPermissions(exeDir.path(), QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    }

    void runtimeFilesFromInstalledShareFolder()
    {
        TempHome home;
        // The test program stands in for the executable: its share folder is "../share/vantry".
        const QStringList folders = DataFolder::runtimeFolders();
        QCOMPARE(folders.size(), 3);
        QCOMPARE(folders.at(0), QCoreApplication::applicationDirPath());
        QCOMPARE(folders.at(1), QDir::cleanPath(QCoreApplication::applicationDirPath() + QStringLiteral("/../share/vantry")));
        QCOMPARE(folders.at(2), home.path());
        const QString name = QStringLiteral("tst_CommandLine_runtime_file.txt");
        const QString shared = folders.at(1) + QLatin1Char('/') + name;
        QFile::remove(shared);  // left by an interrupted run
        QVERIFY(DataFolder::findBesideExecutable(name).isEmpty());
        writeFile(home.file(name), "in the data folder");
        QCOMPARE(DataFolder::findBesideExecutable(name), home.file(name));
        QVERIFY(QDir().mkpath(folders.at(1)));
        writeFile(shared, "installed");
        QCOMPARE(DataFolder::findBesideExecutable(name), shared);
        QFile::remove(shared);
        QDir().rmdir(folders.at(1));
        QDir().rmdir(QFileInfo(folders.at(1)).path());
    }
};

QTEST_GUILESS_MAIN(tst_CommandLine)
#include "tst_CommandLine.moc"
