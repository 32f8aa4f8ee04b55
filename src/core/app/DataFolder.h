#pragma once
#include <QString>

// Where Vantry keeps its own files: the catalogue, "Vantry.ini" and "options.ini".
//
// $VANTRY_HOME when set; else the executable's folder when a catalogue already lies there (a
// portable install); else the per-user application data folder. The folder is created on first use.
namespace DataFolder {

QString path();
QString catalogueFile();   // db.sqlite
QString settingsFile();    // Vantry.ini
QString optionsFile();     // options.ini

// Expansion of "<CommonDocumentsDir>": $VANTRY_COMMON_DOCUMENTS when set, else the user's documents.
QString commonDocumentsDir();

// A file the program looks for beside the executable first, then in the data folder
// (for example "sql_reserved_words.txt"). Empty when found in neither.
QString findBesideExecutable(const QString &fileName);

} // namespace DataFolder
