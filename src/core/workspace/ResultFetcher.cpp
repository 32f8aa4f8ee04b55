#include "ResultFetcher.h"
#include "app/SqlErrorText.h"

#include "ResultFetchFirebird.h"
#include "ResultFetchMariaDb.h"
#include "ResultFetchNative.h"
#include "app/VantryError.h"

#include <QSqlDriver>
#include <QSqlError>
#include <QSqlField>
#include <QSqlQuery>
#include <QSqlRecord>

namespace {

thread_local QString t_lastPath;

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

} // namespace

QString ResultFetcher::lastPath()
{
    return t_lastPath;
}

std::unique_ptr<ResultTable> ResultFetcher::fetch(const QSqlDatabase &db, const QString &statement,
                                                  qint64 recordLimit, Path path)
{
    if (!db.isOpen())
        throw VantryError(QStringLiteral("The connection is not open"));
    if (path == Path::Automatic) {
        if (auto table = ResultFetchNative::fetchSqlite(db, statement, recordLimit)) {
            t_lastPath = QStringLiteral("sqlite");
            return table;
        }
        if (auto table = ResultFetchNative::fetchPostgres(db, statement, recordLimit)) {
            t_lastPath = QStringLiteral("postgres");
            return table;
        }
        if (auto table = ResultFetchMariaDb::fetch(db, statement, recordLimit)) {
            t_lastPath = QStringLiteral("mariadb");
            return table;
        }
        if (auto table = ResultFetchFirebird::fetch(db, statement, recordLimit)) {
            t_lastPath = QStringLiteral("firebird");
            return table;
        }
    }
    t_lastPath = QStringLiteral("generic");
    return fetchGeneric(db, statement, recordLimit);
}

std::unique_ptr<ResultTable> ResultFetcher::fetchGeneric(const QSqlDatabase &db,
                                                         const QString &statement,
                                                         qint64 recordLimit)
{
    QSqlQuery query(db);
    query.setForwardOnly(true);
    if (!query.exec(statement))
        throw VantryError(sqlErrorText(query.lastError()));

    auto table = std::make_unique<ResultTable>();
    const QSqlRecord record = query.record();
    for (int col = 0; col < record.count(); ++col) {
        const QSqlField field = record.field(col);
        table->addColumn(field.name(), QString::fromLatin1(field.metaType().name()),
                         logicalTypeOf(field.metaType()));
    }
    const int columns = record.count();
    qint64 rows = 0;
    bool truncated = false;
    while (query.next()) {
        if (recordLimit > 0 && rows == recordLimit) {
            truncated = true;
            break;
        }
        for (int col = 0; col < columns; ++col)
            table->column(col).appendVariant(query.value(col));
        ++rows;
    }
    if (query.lastError().isValid())
        throw VantryError(sqlErrorText(query.lastError()));
    table->finishFetch(truncated);
    return table;
}
