#pragma once
// Data link files: an OLE DB connection string kept in a ".udl" file, UTF-16 text whose first
// line is "[oledb]", then comment lines beginning with ";", then the string on a line of its own.
// They live in the data folder's "Data Links" folder, and a connection string
// "FILE NAME=<file>" stands for the string inside the file.

#include <QString>
#include <QStringList>

namespace DataLinkFile {

// The prefix of a connection string that names a data link file.
extern const char *const kFileNamePrefix; // "FILE NAME="

// The data folder's "Data Links" folder, created when missing.
QString folder();

// The names (without folder) of the ".udl" files in a folder, sorted ignoring case.
QStringList fileNames(const QString &dir = folder());

// The connection string a data link file holds. Accepts UTF-16 of either byte order (with or
// without its byte-order mark) and UTF-8. Throws VantryError naming the file when it can't be
// read or has no "[oledb]" header.
QString read(const QString &path);
// The connection string of an in-memory data link file; throws like read().
QString parse(const QByteArray &bytes, const QString &nameForErrors);

// Writes a data link file: little-endian UTF-16 with its byte-order mark, lines ending in CR LF.
// Throws VantryError naming the file when it can't be written.
void write(const QString &path, const QString &connectionString);
QByteArray contents(const QString &connectionString);

// What the connection string editor shows for a string: the data link choice and the file name
// after "FILE NAME=" (compared ignoring case), without its folder when the file lies in
// `linkFolder`; otherwise the connection string choice and the string itself.
struct EditorChoice
{
    bool useDataLink = false;
    QString text;
};
EditorChoice editorChoice(const QString &connectionString, const QString &linkFolder = folder());

// The connection string for a chosen data link file: "FILE NAME=" and the name, with
// `linkFolder` and a separator in front when the name has no folder; empty for an empty name.
QString fileNameString(const QString &fileName, const QString &linkFolder = folder());

// The file a data link name stands for: a name without folder lies in `linkFolder`.
QString pathOf(const QString &fileName, const QString &linkFolder = folder());

} // namespace DataLinkFile
