#pragma once
#include <QSqlDatabase>
#include <QString>
#include <QStringList>

class EngineCancel;
class SqlHistory;

// What a run does with the editor's text, free of widgets.
namespace SqlRun {

// The statement: the selection when there is one, else the whole text; trimmed of blanks and
// line breaks at both ends.
QString statementText(const QString &selectedText, const QString &wholeText);

// A query when the first six characters of the upper-cased, trimmed text are "SELECT". So a
// SELECT in parentheses, or one after a comment or a WITH, runs as a command and shows no rows.
bool isQuery(const QString &statement);

// Cuts a script into chunks: a line that, trimmed and upper-cased, equals the trimmed, upper-cased
// delimiter ends a chunk and belongs to none; other lines are kept unchanged. A ";" at the end of
// a line does not split, even with the delimiter ";": the delimiter stands alone on its line.
QStringList scriptChunks(const QString &script, const QString &delimiter);

// A statement goes into the history only when it differs from the history's current row.
bool shouldRecord(const SqlHistory &history, const QString &statement);

// The statement that a text shorter than 4 characters is replaced by: all rows of `table`.
QString shortTextQuery(const QString &table);

// All rows of `table` on the Oracle path, with each row's ROWID in front.
QString oracleTableQuery(const QString &table);

// Executes a statement that returns no rows; throws VantryError with the driver's text. A text of
// several statements separated by ";" runs whole where the engine takes several statements in one
// call (SQLite, PostgreSQL, MariaDB); elsewhere the engine's own error comes back. `cancel`, when
// given, learns the running statement (engines that cancel statements rather than connections).
void executeCommand(const QSqlDatabase &db, const QString &statement, EngineCancel *cancel = nullptr);

} // namespace SqlRun
