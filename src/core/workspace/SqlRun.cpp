#include "core/workspace/SqlRun.h"

#include "core/base/SqlErrorText.h"
#include "core/app/SqlHistory.h"
#include "core/base/VantryError.h"
#include "core/workspace/EngineCancel.h"
#include "core/workspace/SqliteScript.h"

#include <QSqlError>
#include <QSqlQuery>

namespace {

// A chunk of nothing but blank lines (two delimiter lines in a row, a trailing line break) is not
// sent to the server: it would only come back as an "empty statement" error.
void addChunk(QStringList &chunks, const QStringList &lines)
{
    const QString chunk = lines.join(QLatin1Char('\n'));
    if (!chunk.trimmed().isEmpty())
        chunks << chunk;
}

} // namespace

namespace SqlRun {

QString statementText(const QString &selectedText, const QString &wholeText)
{
    return (selectedText.isEmpty() ? wholeText : selectedText).trimmed();
}

bool isQuery(const QString &statement)
{
    return statement.toUpper().trimmed().left(6) == QLatin1String("SELECT");
}

QStringList scriptChunks(const QString &script, const QString &delimiter)
{
    const QString mark = delimiter.trimmed().toUpper();
    QStringList chunks;
    QStringList buffer;
    QString text = script;
    text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    text.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    const QStringList lines = text.split(QLatin1Char('\n'));
    for (const QString &line : lines) {
        if (line.trimmed().toUpper() == mark) {
            addChunk(chunks, buffer);
            buffer.clear();
        } else {
            buffer << line;
        }
    }
    addChunk(chunks, buffer);
    return chunks;
}

bool shouldRecord(const SqlHistory &history, const QString &statement)
{
    const HistoryRow *current = history.current();
    return !current || current->executedSql != statement;
}

QString shortTextQuery(const QString &table)
{
    return QStringLiteral("select ") + table + QStringLiteral(".* from ") + table;
}

QString oracleTableQuery(const QString &table)
{
    return QStringLiteral("select rowid,") + table + QStringLiteral(".* from ") + table;
}

void executeCommand(const QSqlDatabase &db, const QString &statement, EngineCancel *cancel)
{
    if (SqliteScript::execute(db, statement))
        return;
    QSqlQuery query(db);
    if (cancel && db.driverName() == QLatin1String("QODBC")) {
        // The statement handle exists once prepared; a cancel can reach it from then on.
        if (!query.prepare(statement))
            throw VantryError(sqlErrorText(query.lastError()));
        cancel->watchStatement(&query);
        const bool ok = query.exec();
        cancel->watchStatement(nullptr);
        if (!ok)
            throw VantryError(sqlErrorText(query.lastError()));
        return;
    }
    if (!query.exec(statement))
        throw VantryError(sqlErrorText(query.lastError()));
    // Later statements of a multi-statement text report their errors as their results are read.
    while (query.nextResult()) {
    }
    if (query.lastError().isValid())
        throw VantryError(sqlErrorText(query.lastError()));
}

} // namespace SqlRun
