#pragma once
#include <QSqlDatabase>
#include <QString>

namespace SqliteScript {

// Runs a text of one or more statements on a SQLite connection through sqlite3_exec, which runs
// them all in turn (the Qt driver runs only the first). Returns false when the connection is not
// SQLite, so the caller runs the text its own way. Throws VantryError with SQLite's message.
bool execute(const QSqlDatabase &db, const QString &statements);

} // namespace SqliteScript
