#include "ResultCursor.h"

#include "EngineCancel.h"
#include "ResultFetchFirebird.h"
#include "ResultFetchMariaDb.h"
#include "ResultFetchNative.h"
#include "app/SqlErrorText.h"
#include "app/VantryError.h"

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

// Any Qt SQL driver: a forward-only query read one value at a time.
class GenericCursor : public ResultCursor
{
public:
    GenericCursor(const QSqlDatabase &db, EngineCancel *cancel) : m_query(db)
    {
        m_query.setForwardOnly(true);
        // ODBC cancels a statement: prepare it first, so its handle is known while it runs.
        if (cancel && db.driverName() == QLatin1String("QODBC"))
            m_cancel = cancel;
    }
    ~GenericCursor() override { close(); }

    void exec(const QString &statement)
    {
        bool ok;
        if (m_cancel) {
            ok = m_query.prepare(statement);
            if (ok) {
                m_cancel->watchStatement(&m_query);
                ok = m_query.exec();
            }
        } else {
            ok = m_query.exec(statement);
        }
        if (!ok) {
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
        if (m_cancel)
            m_cancel->watchStatement(nullptr);
        m_cancel = nullptr;
        m_open = false;
        m_query.finish();
    }

    QString path() const override { return QStringLiteral("generic"); }

private:
    QSqlQuery m_query;
    EngineCancel *m_cancel = nullptr;
    bool m_open = false;
};

} // namespace

std::unique_ptr<ResultTable> ResultCursor::emptyTable() const
{
    auto table = std::make_unique<ResultTable>();
    for (const ColumnSpec &spec : m_columns)
        table->addColumn(spec.name, spec.typeName, spec.logicalType);
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
    auto cursor = std::make_unique<GenericCursor>(db, cancel);
    cursor->exec(statement);
    return cursor;
}
