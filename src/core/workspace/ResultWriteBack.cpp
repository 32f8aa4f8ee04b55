#include "ResultWriteBack.h"
#include "app/SqlErrorText.h"

#include "app/VantryError.h"

#include <QSqlDriver>
#include <QSqlError>
#include <QSqlQuery>

namespace {

// Runs the body in a transaction of its own; rolls back on any exception.
template<typename Body>
void inTransaction(QSqlDatabase &db, Body body)
{
    const bool own = db.transaction();
    try {
        body();
    } catch (...) {
        if (own)
            db.rollback();
        throw;
    }
    if (own && !db.commit())
        throw VantryError(sqlErrorText(db.lastError()));
}

QSqlQuery run(const QSqlDatabase &db, const QString &sql, const QVariantList &values)
{
    QSqlQuery query(db);
    if (!query.prepare(sql))
        throw VantryError(sqlErrorText(query.lastError()));
    for (const QVariant &value : values)
        query.addBindValue(value);
    if (!query.exec())
        throw VantryError(sqlErrorText(query.lastError()));
    return query;
}

} // namespace

ResultWriteBack::ResultWriteBack(const QSqlDatabase &db, const QString &table)
    : m_db(db), m_table(table)
{
}

QString ResultWriteBack::field(const ResultTable &result, int col) const
{
    return m_db.driver()->escapeIdentifier(result.column(col).name(), QSqlDriver::FieldName);
}

ResultWriteBack::Where ResultWriteBack::locate(const ResultTable &result, qint64 row) const
{
    Where where;
    QStringList terms;
    for (int col = 0; col < result.columnCount(); ++col) {
        const QVariant value = result.storedValue(row, col);
        if (resultIsNull(value)) {
            terms << field(result, col) + QStringLiteral(" IS NULL");
        } else {
            terms << field(result, col) + QStringLiteral(" = ?");
            where.values << value;
        }
    }
    where.sql = QStringLiteral(" WHERE ") + terms.join(QStringLiteral(" AND "));
    return where;
}

void ResultWriteBack::checkSingleRow(const Where &where, const char *action)
{
    QSqlQuery count = run(m_db, QStringLiteral("SELECT COUNT(*) FROM ") + m_table + where.sql,
                          where.values);
    const qint64 matched = count.next() ? count.value(0).toLongLong() : 0;
    if (matched != 1)
        throw VantryError(QStringLiteral("Cannot %1 the row: %2 rows of %3 match its values, "
                                         "so it cannot be told apart; nothing was changed")
                              .arg(QLatin1String(action))
                              .arg(matched)
                              .arg(m_table));
}

void ResultWriteBack::postRow(ResultTable &result, qint64 row)
{
    writeToDatabase(result, row);
    result.acceptRow(row);
}

void ResultWriteBack::writeToDatabase(const ResultTable &result, qint64 row)
{
    if (result.isReadOnly())
        throw VantryError(QStringLiteral("The result is read-only"));
    switch (result.rowState(row)) {
    case ResultTable::RowState::Modified:
        update(result, row);
        break;
    case ResultTable::RowState::Inserted:
        insert(result, row);
        break;
    case ResultTable::RowState::Unchanged:
    case ResultTable::RowState::Deleted:
        break;
    }
}

void ResultWriteBack::update(const ResultTable &result, qint64 row)
{
    const Where where = locate(result, row);
    QStringList sets;
    QVariantList values;
    // Only the changed columns are written: the others keep their exact database values,
    // whatever a round trip through the grid would have done to them.
    for (int col : result.changedColumns(row)) {
        sets << field(result, col) + QStringLiteral(" = ?");
        values << result.value(row, col);
    }
    inTransaction(m_db, [&] {
        checkSingleRow(where, "update");
        QSqlQuery query = run(m_db, QStringLiteral("UPDATE ") + m_table + QStringLiteral(" SET ")
                                        + sets.join(QStringLiteral(", ")) + where.sql,
                              values + where.values);
        // MySQL reports rows changed rather than matched, so 0 is fine after the count of 1.
        if (query.numRowsAffected() > 1)
            throw VantryError(QStringLiteral("The update touched %1 rows of %2; it was undone")
                                  .arg(query.numRowsAffected())
                                  .arg(m_table));
    });
}

void ResultWriteBack::insert(const ResultTable &result, qint64 row)
{
    QStringList fields;
    QStringList marks;
    QVariantList values;
    // NULL columns are left out so the table's defaults (serials, defaults) fill them.
    for (int col = 0; col < result.columnCount(); ++col) {
        const QVariant value = result.value(row, col);
        if (resultIsNull(value))
            continue;
        fields << field(result, col);
        marks << QStringLiteral("?");
        values << value;
    }
    QString sql = QStringLiteral("INSERT INTO ") + m_table;
    if (!fields.isEmpty())
        sql += QStringLiteral(" (") + fields.join(QStringLiteral(", ")) + QStringLiteral(") VALUES (")
               + marks.join(QStringLiteral(", ")) + QLatin1Char(')');
    else if (m_db.driverName() == QLatin1String("QMYSQL"))
        sql += QStringLiteral(" () VALUES ()");
    else
        sql += QStringLiteral(" DEFAULT VALUES");
    inTransaction(m_db, [&] {
        QSqlQuery query = run(m_db, sql, values);
        if (query.numRowsAffected() > 1)
            throw VantryError(QStringLiteral("The insert added %1 rows to %2; it was undone")
                                  .arg(query.numRowsAffected())
                                  .arg(m_table));
    });
}

void ResultWriteBack::deleteRow(ResultTable &result, qint64 row)
{
    if (result.rowState(row) != ResultTable::RowState::Inserted)
        deleteInDatabase(result, row);
    result.markDeleted(row);
}

void ResultWriteBack::deleteInDatabase(const ResultTable &result, qint64 row)
{
    if (result.isReadOnly())
        throw VantryError(QStringLiteral("The result is read-only"));
    const Where where = locate(result, row);
    inTransaction(m_db, [&] {
        checkSingleRow(where, "delete");
        QSqlQuery query = run(m_db, QStringLiteral("DELETE FROM ") + m_table + where.sql, where.values);
        if (query.numRowsAffected() > 1)
            throw VantryError(QStringLiteral("The delete touched %1 rows of %2; it was undone")
                                  .arg(query.numRowsAffected())
                                  .arg(m_table));
    });
}
