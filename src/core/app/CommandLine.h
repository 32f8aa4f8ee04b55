#pragma once
#include <QString>
#include <QStringList>

class QCoreApplication;

// What the program was asked to do on its command line.
//
//   vantry [--hide-connections] [FILE.sql]
//
// The first plain argument that ends in ".sql" or names an existing file is opened in the first
// tab. Any other plain argument hides the connection grid, as it always has; --hide-connections
// says so explicitly. --help, --help-all and --version print and end the program.
struct CommandLine
{
    enum class Action { Run, Answer, Fail };

    Action action = Action::Run;
    bool hideConnectionGrid = false;
    QString sqlFile;   // absolute path of the file for the first tab; empty for none
    QString error;     // why the arguments were refused (Action::Fail)

    // `arguments` as QCoreApplication::arguments() gives them: the program first. A request for
    // help or the version is an Answer even when other arguments are refused.
    static CommandLine parse(const QStringList &arguments);

    // Prints the help or the version that `app`'s arguments ask for and ends the process.
    [[noreturn]] static void answer(const QCoreApplication &app);

    // The text of a SQL file: UTF-8 unless a byte-order mark says otherwise, the mark dropped;
    // bytes that are not UTF-8 are read as Latin-1.
    // Throws VantryError naming the file and the cause when it cannot be read.
    static QString readSqlFile(const QString &fileName);
};
