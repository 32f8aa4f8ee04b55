#pragma once
#include "ResultTable.h"

#include <QSqlDatabase>
#include <QString>
#include <memory>

// Fills a ResultTable from an open connection. Reads through the driver's native handle where it
// knows the client library (SQLite, PostgreSQL, MariaDB, Firebird), since one QVariant per value
// costs more than the rest of the work together, and since only the client's own values are
// exact; every other driver goes through a forward-only QSqlQuery.
class ResultFetcher
{
public:
    enum class Path { Automatic, Generic };

    // recordLimit <= 0 fetches every row. Throws VantryError with the database's message.
    static std::unique_ptr<ResultTable> fetch(const QSqlDatabase &db, const QString &statement,
                                              qint64 recordLimit, Path path = Path::Automatic);
    // The way the last fetch of this thread read its rows: "sqlite", "postgres", "mariadb",
    // "firebird" or "generic".
    static QString lastPath();

    static std::unique_ptr<ResultTable> fetchGeneric(const QSqlDatabase &db,
                                                     const QString &statement, qint64 recordLimit);
};
