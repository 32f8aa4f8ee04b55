#pragma once
#include "core/workspace/ResultTable.h"

#include <QSqlDatabase>

class EngineCancel;
#include <QString>
#include <memory>
#include <vector>

// An open query whose rows are read in batches, as the user asks for them. A cursor belongs to
// the thread that owns its connection; it is opened by ResultCursor::open and must be closed (or
// destroyed) before anything else runs on that connection, so the connection is never left in the
// middle of a result.
//
// Native cursors read through the driver's client handle where the client library is known
// (SQLite, PostgreSQL, MariaDB, Firebird), since one QVariant per value costs more than the rest
// of the work together and only the client's own values are exact; every other driver goes
// through a forward-only QSqlQuery.
class ResultCursor
{
public:
    virtual ~ResultCursor() = default;

    // A table with the result's columns and no rows; each batch is read into such a table.
    std::unique_ptr<ResultTable> emptyTable() const;
    int columnCount() const { return int(m_columns.size()); }

    // Appends up to maxRows rows (maxRows > 0) to `batch`, a table made by emptyTable(). Returns
    // true while more rows may follow. Throws VantryError with the database's message.
    virtual bool fetch(ResultTable &batch, qint64 maxRows) = 0;

    // Ends the result on the server (closes the statement, the server-side cursor and its
    // transaction). Safe to call twice; the destructor calls it and swallows errors.
    virtual void close() = 0;

    // "sqlite", "postgres", "mariadb", "firebird", "odbc" or "generic": how the cursor reads its rows.
    virtual QString path() const = 0;

    enum class Path { Automatic, Generic };

    // Runs a query and returns the cursor over its rows. Throws VantryError. `cancel`, when
    // given, learns the running statement (engines that cancel statements, not connections).
    static std::unique_ptr<ResultCursor> open(const QSqlDatabase &db, const QString &statement,
                                              Path path = Path::Automatic, EngineCancel *cancel = nullptr);

protected:
    struct ColumnDefinition
    {
        QString name;
        QString typeName;
        QMetaType::Type logicalType;
    };
    void addColumn(QString name, QString typeName, QMetaType::Type logicalType = QMetaType::UnknownType)
    {
        m_columns.push_back({std::move(name), std::move(typeName), logicalType});
    }

private:
    std::vector<ColumnDefinition> m_columns;
};
