#pragma once
#include "core/workspace/ResultCursor.h"
#include "core/workspace/ResultTable.h"

#include <QSqlDatabase>
#include <QString>
#include <memory>

// Reads a whole result (or its first rows) into one ResultTable through a ResultCursor, for the
// callers that want every row at once.
class ResultFetcher
{
public:
    using Path = ResultCursor::Path;

    // recordLimit <= 0 fetches every row; otherwise at most recordLimit rows, and the table is
    // marked truncated when more were left. Throws VantryError with the database's message.
    static std::unique_ptr<ResultTable> fetch(const QSqlDatabase &db, const QString &statement,
                                              qint64 recordLimit, Path path = Path::Automatic);
    // The way the last fetch of this thread read its rows: "sqlite", "postgres", "mariadb",
    // "firebird", "odbc" or "generic".
    static QString lastPath();

    static std::unique_ptr<ResultTable> fetchGeneric(const QSqlDatabase &db,
                                                     const QString &statement, qint64 recordLimit)
    {
        return fetch(db, statement, recordLimit, Path::Generic);
    }
};
