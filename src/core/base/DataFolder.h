#pragma once
#include <QString>
#include <QStringList>

// Where Vantry keeps its own files: the catalogue, "Vantry.ini" and "options.ini".
//
// $VANTRY_HOME when set; else the executable's folder when a catalogue already lies there and
// both can be written (a portable install); else the per-user application data folder. An
// installed program lives in a folder it may not write to, so it always lands on the per-user
// folder. The folder is created on first use.
namespace DataFolder {

QString path();
QString catalogueFile();   // db.sqlite
QString settingsFile();    // Vantry.ini
QString optionsFile();     // options.ini

// The rule above for an executable in `executableDir`; path() applies it to the running program.
QString chooseFor(const QString &executableDir);

// Expansion of "<CommonDocumentsDir>": $VANTRY_COMMON_DOCUMENTS when set, else the user's documents.
QString commonDocumentsDir();

// The folders searched for files the program reads at run time, in order: the executable's
// folder, the installed share folder ("../share/vantry" from the executable's folder) and the
// data folder.
QStringList runtimeFolders();

// A run-time file (for example "sql_reserved_words.txt") from the first of runtimeFolders()
// that holds it. Empty when none does.
QString findBesideExecutable(const QString &fileName);

} // namespace DataFolder
