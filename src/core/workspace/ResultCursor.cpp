#include "core/workspace/ResultCursor.h"

#include "core/workspace/ResultFetchFirebird.h"
#include "core/workspace/ResultFetchMariaDb.h"
#include "core/workspace/ResultFetchNative.h"
#include "core/base/SqlErrorText.h"
#include "core/base/VantryError.h"

#include <QSqlError>
#include <QSqlField>
#include <QSqlQuery>
#include <QSqlRecord>

namespace {

QMetaType::Type logicalTypeOf(const QMetaType &type)
{
    switch (type.id()) {
    case QMetaType::Bool:
    case QMetaType::QDate:
    case QMetaType::QDateTime:
    case QMetaType::QTime:
        return QMetaType::Type(type.id());
    default:
        return QMetaType::UnknownType;
    }
}

// Any other Qt SQL driver: a forward-only query read one value at a time. (ODBC, whose cancel
// reaches a statement rather than the connection, has a cursor of its own.)
class GenericCursor : public ResultCursor
{
public:
    explicit GenericCursor(const QSqlDatabase &db) : m_query(db) { m_query.setForwardOnly(true); }
    ~GenericCursor() override { close(); }

    void exec(const QString &statement)
    {
        if (!m_query.exec(statement)) {
            const QSqlError error = m_query.lastError();
            close();
            throw VantryError(sqlErrorText(error));
        }
        const QSqlRecord record = m_query.record();
        for (int col = 0; col < record.count(); ++col) {
            const QSqlField field = record.field(col);
            addColumn(field.name(), QString::fromLatin1(field.metaType().name()),
                      logicalTypeOf(field.metaType()));
        }
        m_open = m_query.isActive() && m_query.isSelect();
    }

    bool fetch(ResultTable &batch, qint64 maxRows) override
    {
        if (!m_open)
            return false;
        const int columns = batch.columnCount();
        for (qint64 rows = 0; rows < maxRows; ++rows) {
            if (!m_query.next()) {
                const QSqlError error = m_query.lastError();
                close();
                if (error.isValid())
                    throw VantryError(sqlErrorText(error));
                return false;
            }
            for (int col = 0; col < columns; ++col)
                batch.column(col).appendVariant(m_query.value(col));
        }
        return true;
    }

    void close() override
    {
        m_open = false;
        m_query.finish();
    }

    QString path() const override { return QStringLiteral("generic"); }

private:
    QSqlQuery m_query;
    bool m_open = false;
};

} // namespace

std::unique_ptr<ResultTable> ResultCursor::emptyTable() const
{
    auto table = std::make_unique<ResultTable>();
    for (const ColumnDefinition &column : m_columns)
        table->addColumn(column.name, column.typeName, column.logicalType);
    return table;
}

std::unique_ptr<ResultCursor> ResultCursor::open(const QSqlDatabase &db, const QString &statement, Path path,
                                                  EngineCancel *cancel)
{
    if (!db.isOpen())
        throw VantryError(QStringLiteral("The connection is not open"));
    if (path == Path::Automatic) {
        if (auto cursor = ResultFetchNative::openSqlite(db, statement))
            return cursor;
        if (auto cursor = ResultFetchNative::openPostgres(db, statement))
            return cursor;
        if (auto cursor = ResultFetchNative::openOdbc(db, statement, cancel))
            return cursor;
        if (auto cursor = ResultFetchMariaDb::open(db, statement))
            return cursor;
        if (auto cursor = ResultFetchFirebird::open(db, statement))
            return cursor;
    }
    auto cursor = std::make_unique<GenericCursor>(db);
    cursor->exec(statement);
    return cursor;
}
