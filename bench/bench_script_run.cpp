// Runs a 10,000-chunk script on SQLite through a workspace tab's Run as Script, and the same
// statements through the sqlite3 command-line tool, on the same kind of file; prints both times and
// the ratio. Then checks that the execution log stays linear: appending its 10,000th row costs what
// appending its 10th does.
#include "core/base/DataFolder.h"
#include "core/app/MdmUn.h"
#include "core/base/SettingsStore.h"
#include "core/connections/ConnectionTypes.h"
#include "core/connections/impDMun.h"
#include "core/connections/vtrtools.h"
#include "gui/interchange/DMToolsUn.h"
#include "core/workspace/ConnectionList.h"
#include "core/workspace/ExecutionLog.h"
#include "gui/workspace/SqlLogFrameUn.h"
#include "gui/workspace/SqlUn.h"

#include <Qsci/qsciscintilla.h>

#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTextStream>
#include <cstdio>

namespace {

constexpr int kChunks = 10000;

QString statement(int i)
{
    return QStringLiteral("insert into t values (%1, 'row number %1', %2)").arg(i).arg(i * 0.5);
}

void createTable(const QString &file)
{
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("bench-setup"));
        db.setDatabaseName(file);
        db.open();
        QSqlQuery(db).exec(QStringLiteral("create table t (a integer, b text, c real)"));
        db.close();
    }
    QSqlDatabase::removeDatabase(QStringLiteral("bench-setup"));
}

double runThroughTab(TSqlFrm &frame, const QString &dbFile)
{
    TReaderConnection record;
    record.ConnectionType = dsSqLite;
    record.Description = QStringLiteral("bench");
    record.DataBase = dbFile;
    record.SourceFile = dbFile;
    ConnectionRow &row = frame.mdsConnections()->insertRow();
    row.connectionName = record.Description;
    row.connectionParameters = PackParameters(ReaderConnectionToStr(record));
    row.connectionType = ConnectionTypes::codeOfType(dsSqLite);
    frame.mdsConnections()->post();

    QStringList lines;
    for (int i = 0; i < kChunks; ++i)
        lines << statement(i) << QStringLiteral("GO");
    frame.editor()->setText(lines.join(QLatin1Char('\n')));
    frame.findChild<QComboBox *>(QStringLiteral("peSeparator"))->setCurrentText(QStringLiteral("GO"));

    QElapsedTimer timer;
    timer.start();
    frame.tbRunScriptClick();
    return timer.nsecsElapsed() / 1e9;
}

double runThroughSqlite3(const QString &dbFile, const QString &scriptFile)
{
    QFile script(scriptFile);
    script.open(QIODevice::WriteOnly);
    QTextStream out(&script);
    for (int i = 0; i < kChunks; ++i)
        out << statement(i) << ";\n";
    out.flush();
    script.close();

    QProcess sqlite;
    sqlite.setStandardInputFile(scriptFile);
    QElapsedTimer timer;
    timer.start();
    sqlite.start(QStringLiteral("sqlite3"), {dbFile});
    sqlite.waitForFinished(-1);
    return timer.nsecsElapsed() / 1e9;
}

// Time of appending rows [from, from + count) to a log that already holds `from` rows.
double appendBatch(TSqlLogFrame &log, int count)
{
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < count; ++i) {
        log.SetSQL(QStringLiteral("insert into t values (1, 'x', 2)"));
        log.SetMessage(QStringLiteral("OK."), 0);
    }
    return timer.nsecsElapsed() / 1e9;
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    // Files in memory on both sides, so the figures compare the programs, not the disk's syncs.
    QTemporaryDir dir(QStringLiteral("/dev/shm/vantry-bench-XXXXXX"));
    qputenv("VANTRY_HOME", dir.path().toUtf8());

    TimpDM discovery;
    TMdm catalogue(DataFolder::catalogueFile());
    TdmTools tools;
    SettingsStore settings(DataFolder::settingsFile());
    AppServices services;
    services.discovery = &discovery;
    services.catalogue = &catalogue;
    services.tools = &tools;
    services.settings = &settings;
    TSqlFrm frame(services, nullptr);
    frame.resize(1000, 700);

    const QString tabDb = dir.filePath(QStringLiteral("tab.sqlite"));
    const QString cliDb = dir.filePath(QStringLiteral("cli.sqlite"));
    createTable(tabDb);
    createTable(cliDb);
    const double tab = runThroughTab(frame, tabDb);
    const double cli = runThroughSqlite3(cliDb, dir.filePath(QStringLiteral("script.sql")));
    const int logged = frame.log()->table()->count();
    std::printf("Run as Script, %d chunks on SQLite: %.3f s (%d log rows)\n", kChunks, tab, logged);
    std::printf("sqlite3 command-line tool, same statements: %.3f s\n", cli);
    std::printf("ratio (tab / sqlite3): %.2f\n", tab / cli);

    TSqlLogFrame log;
    const double first = appendBatch(log, 100);
    appendBatch(log, 9800);
    const double last = appendBatch(log, 100);
    std::printf("log: rows 1-100 took %.4f s, rows 9,901-10,000 took %.4f s (ratio %.2f)\n", first, last, last / first);
    return logged == kChunks ? 0 : 1;
}
