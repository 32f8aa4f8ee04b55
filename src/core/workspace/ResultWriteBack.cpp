#include "core/workspace/ResultWriteBack.h"

#include "core/workspace/ResultFetcher.h"
#include "core/workspace/SqlLiterals.h"
#include "core/workspace/ValueTypes.h"
#include "core/base/SqlErrorText.h"
#include "core/base/VantryError.h"

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

// Texts bound as their UTF-8 bytes, for a driver that cannot bind texts (see TableKeyCache).
QVariantList textAsBytes(QVariantList values)
{
    for (QVariant &value : values)
        if (value.metaType().id() == QMetaType::QString && !value.isNull())
            value = value.toString().toUtf8();
    return values;
}

QSqlQuery run(const QSqlDatabase &db, const QString &sql, const QVariantList &values)
{
    QSqlQuery query(db);
    // Decimals come back as the server's text, not as doubles.
    query.setNumericalPrecisionPolicy(QSql::HighPrecision);
    if (!query.prepare(sql))
        throw VantryError(sqlErrorText(query.lastError()));
    for (const QVariant &value : values)
        query.addBindValue(value);
    if (!query.exec())
        throw VantryError(sqlErrorText(query.lastError()));
    return query;
}

const char *verb(RowChange::Kind kind)
{
    switch (kind) {
    case RowChange::Kind::Update: return "update";
    case RowChange::Kind::Insert: return "insert";
    case RowChange::Kind::Delete: return "delete";
    }
    return "write";
}

// A WHERE clause with its values, either for binding or written out as literals.
struct Where
{
    QString sql;
    QVariantList values;
};

// Writes one RowChange through one connection.
class RowWriter
{
public:
    RowWriter(const QSqlDatabase &db, const RowChange &change, TableKeyCache &keys)
        : m_db(db), m_change(change), m_driver(db.driverName()), m_textAsBytes(keys.bindsTextAsBytes(db)),
          m_incomparable(keys.incomparableOf(db, change.table))
    {
        const QStringList key = keys.keyOf(db, change.table);
        for (const QString &name : key) {
            int col = int(change.columns.size()) - 1;
            while (col >= 0 && change.columns[col].compare(name, Qt::CaseInsensitive) != 0)
                --col;
            if (col < 0) {
                m_key.clear(); // a key column the result does not show cannot locate the row
                break;
            }
            m_key << col;
        }
    }

    RowOutcome apply()
    {
        RowOutcome outcome;
        outcome.change = m_change;
        switch (m_change.kind) {
        case RowChange::Kind::Delete:
            write(QStringLiteral("DELETE FROM ") + m_change.table, {});
            return outcome;
        case RowChange::Kind::Update:
            update();
            break;
        case RowChange::Kind::Insert:
            insert();
            break;
        }
        outcome.values = m_change.values;
        outcome.readBack = readBack(outcome.values);
        return outcome;
    }

private:
    QString field(int col) const
    {
        return m_db.driver()->escapeIdentifier(m_change.columns[col], QSqlDriver::FieldName);
    }
    bool postgres() const { return m_driver == QLatin1String("QPSQL"); }

    // The parameter marker for a value of a column. Firebird's driver converts a bound text to
    // the column's type itself, times to the millisecond; passed as text, the server converts it
    // exactly. BLOBs and texts too long for a VARCHAR parameter go as they are.
    QString marker(int col, const QVariant &value) const
    {
        if (m_driver == QLatin1String("QIBASE") && value.metaType().id() == QMetaType::QString
            && value.toString().size() <= 8191 && !m_change.types.value(col).startsWith(QLatin1String("blob")))
            return QStringLiteral("CAST(? AS VARCHAR(8191))");
        return QStringLiteral("?");
    }

    // The key columns when every one of them has a value in `values`.
    bool keyUsable(const QVariantList &values) const
    {
        if (m_key.isEmpty())
            return false;
        for (int col : m_key)
            if (resultIsNull(values[col]))
                return false;
        return true;
    }

    // Locates the row holding `values`: by the key when it is usable, else by every field that
    // can locate a row. A row just inserted is found by the values written (NULLs were left to
    // the table's defaults).
    Where locate(const QVariantList &values, bool writtenOnly = false) const
    {
        QList<int> cols = m_key;
        if (!keyUsable(values)) {
            cols.clear();
            for (int col = 0; col < m_change.columns.size(); ++col)
                if (ValueTypes::canLocate(m_driver, m_change.types.value(col))
                    && !m_incomparable.contains(m_change.columns[col], Qt::CaseInsensitive)
                    && !(writtenOnly && resultIsNull(values[col])))
                    cols << col;
        }
        Where where;
        QStringList terms;
        for (int col : cols) {
            if (resultIsNull(values[col])) {
                terms << field(col) + QStringLiteral(" IS NULL");
            } else {
                terms << field(col) + QStringLiteral(" = ") + marker(col, values[col]);
                where.values << values[col];
            }
        }
        if (!terms.isEmpty())
            where.sql = QStringLiteral(" WHERE ") + terms.join(QStringLiteral(" AND "));
        return where;
    }

    QSqlQuery bound(const QString &sql, const QVariantList &values) const
    {
        return run(m_db, sql, m_textAsBytes ? textAsBytes(values) : values);
    }

    void checkSingleRow(const Where &where) const
    {
        QSqlQuery count = bound(QStringLiteral("SELECT COUNT(*) FROM ") + m_change.table + where.sql, where.values);
        const qint64 matched = count.next() ? count.value(0).toLongLong() : 0;
        if (matched == 1)
            return;
        const QString why = matched == 0 ? QStringLiteral("0 rows match (changed or deleted elsewhere)")
                                         : QStringLiteral("%1 rows match (cannot be told apart)").arg(matched);
        throw VantryError(QStringLiteral("Cannot %1 the row of %2: %3; nothing was changed")
                              .arg(QLatin1String(verb(m_change.kind)), m_change.table, why));
    }

    // Writes an UPDATE or DELETE whose head is `head` at the located row, after making sure
    // exactly one row is there.
    void write(const QString &head, const QVariantList &headValues)
    {
        const Where where = locate(m_change.stored);
        inTransaction(m_db, [&] {
            checkSingleRow(where);
            QSqlQuery query = bound(head + where.sql, headValues + where.values);
            if (query.numRowsAffected() > 1)
                throw VantryError(QStringLiteral("The %1 touched %2 rows of %3; it was undone")
                                      .arg(QLatin1String(verb(m_change.kind)))
                                      .arg(query.numRowsAffected())
                                      .arg(m_change.table));
        });
    }

    void update()
    {
        QStringList sets;
        QVariantList values;
        // Only the changed columns are written: the others keep their exact database values,
        // whatever a round trip through the grid would have done to them.
        for (int col : m_change.changed) {
            sets << field(col) + QStringLiteral(" = ") + marker(col, m_change.values[col]);
            values << m_change.values[col];
        }
        write(QStringLiteral("UPDATE ") + m_change.table + QStringLiteral(" SET ") + sets.join(QStringLiteral(", ")),
              values);
    }

    void insert()
    {
        QStringList fields;
        QStringList marks;
        QVariantList values;
        // NULL columns are left out so the table's defaults (serials, defaults) fill them.
        for (int col = 0; col < m_change.columns.size(); ++col) {
            if (resultIsNull(m_change.values[col]))
                continue;
            fields << field(col);
            marks << marker(col, m_change.values[col]);
            values << m_change.values[col];
        }
        QString sql = QStringLiteral("INSERT INTO ") + m_change.table;
        if (!fields.isEmpty())
            sql += QStringLiteral(" (") + fields.join(QStringLiteral(", ")) + QStringLiteral(") VALUES (")
                   + marks.join(QStringLiteral(", ")) + QLatin1Char(')');
        else if (m_driver == QLatin1String("QMYSQL"))
            sql += QStringLiteral(" () VALUES ()");
        else
            sql += QStringLiteral(" DEFAULT VALUES");
        // The key's generated values come back with the insert where the database can say so;
        // a PostgreSQL table without a key names the new row by its ctid.
        QStringList returned;
        if (m_driver == QLatin1String("QIBASE") || postgres())
            for (int col : m_key)
                returned << field(col);
        if (postgres() && returned.isEmpty())
            returned << QStringLiteral("ctid");
        try {
            insertReturning(sql, returned, values);
        } catch (const VantryError &) {
            if (!postgres() || !m_key.isEmpty())
                throw;
            insertReturning(sql, {}, values); // a view has no ctid; its row is found by its values
        }
    }

    void insertReturning(QString sql, const QStringList &returned, const QVariantList &values)
    {
        if (!returned.isEmpty())
            sql += QStringLiteral(" RETURNING ") + returned.join(QStringLiteral(", "));
        inTransaction(m_db, [&] {
            QSqlQuery query = bound(sql, values);
            if (query.numRowsAffected() > 1)
                throw VantryError(QStringLiteral("The insert added %1 rows to %2; it was undone")
                                      .arg(query.numRowsAffected())
                                      .arg(m_change.table));
            if (!returned.isEmpty() && query.next()) {
                if (m_key.isEmpty())
                    m_rowLocator = query.value(0);
                for (int i = 0; i < m_key.size(); ++i)
                    m_change.values[m_key[i]] = query.value(i);
            } else {
                const QVariant id = query.lastInsertId();
                if (m_driver == QLatin1String("QSQLITE"))
                    m_rowLocator = id;
                else if (id.isValid() && m_key.size() == 1 && resultIsNull(m_change.values[m_key[0]]))
                    m_change.values[m_key[0]] = id; // LAST_INSERT_ID() of an auto-increment key
            }
        });
    }

    // Reads the written row again through the same fetch the grid uses, so the values are as
    // exact as fetched ones. True when exactly one row came back.
    bool readBack(QVariantList &values) const
    {
        Where where;
        if (m_rowLocator.isValid() && !resultIsNull(m_rowLocator)) {
            // PostgreSQL's ctid, SQLite's rowid: the physical row just written.
            where.sql = postgres() ? QStringLiteral(" WHERE ctid = ?") : QStringLiteral(" WHERE rowid = ?");
            where.values << m_rowLocator;
        } else {
            where = locate(m_change.values, m_change.kind == RowChange::Kind::Insert);
        }
        QStringList fields;
        for (int col = 0; col < m_change.columns.size(); ++col)
            fields << field(col);
        QString sql = QStringLiteral("SELECT ") + fields.join(QStringLiteral(", ")) + QStringLiteral(" FROM ")
                      + m_change.table + withLiterals(m_db, where.sql, where.values);
        try {
            const auto table = ResultFetcher::fetch(m_db, sql, 2);
            if (table->rowCount() != 1 || table->columnCount() != m_change.columns.size())
                return false;
            for (int col = 0; col < table->columnCount(); ++col)
                values[col] = table->value(0, col);
            return true;
        } catch (const VantryError &) {
            return false; // the write itself succeeded; the grid keeps the values it wrote
        }
    }

    QSqlDatabase m_db;
    RowChange m_change;
    QString m_driver;
    bool m_textAsBytes;
    QStringList m_incomparable;
    QList<int> m_key;
    QVariant m_rowLocator;
};

} // namespace

std::optional<RowChange> ResultWriteBack::snapshotPost(const ResultTable &result, qint64 row, const QString &table)
{
    if (result.isReadOnly())
        throw VantryError(QStringLiteral("The result is read-only"));
    RowChange change = snapshotDelete(result, row, table);
    switch (result.rowState(row)) {
    case ResultTable::RowState::Modified:
        change.kind = RowChange::Kind::Update;
        break;
    case ResultTable::RowState::Inserted:
        change.kind = RowChange::Kind::Insert;
        break;
    case ResultTable::RowState::Unchanged:
    case ResultTable::RowState::Deleted:
        return std::nullopt;
    }
    change.changed = result.changedColumns(row);
    for (int col = 0; col < result.columnCount(); ++col)
        change.values[col] = result.value(row, col);
    return change;
}

RowChange ResultWriteBack::snapshotDelete(const ResultTable &result, qint64 row, const QString &table)
{
    RowChange change;
    change.kind = RowChange::Kind::Delete;
    change.row = row;
    change.table = table;
    for (int col = 0; col < result.columnCount(); ++col) {
        change.columns << result.column(col).name();
        change.types << result.column(col).typeName();
        change.stored << result.storedValue(row, col);
    }
    change.values = change.stored;
    return change;
}

RowOutcome ResultWriteBack::apply(const QSqlDatabase &db, const RowChange &change, TableKeyCache &keys)
{
    if (!db.isOpen())
        throw VantryError(QStringLiteral("The connection is not open"));
    return RowWriter(db, change, keys).apply();
}

void ResultWriteBack::accept(ResultTable &result, const RowOutcome &outcome)
{
    const qint64 row = outcome.change.row;
    if (outcome.change.kind == RowChange::Kind::Delete) {
        if (!result.isDeleted(row))
            result.markDeleted(row);
        return;
    }
    result.acceptStored(row, outcome.values, outcome.change.values);
}

ResultWriteBack::ResultWriteBack(const QSqlDatabase &db, const QString &table)
    : m_db(db), m_table(table)
{
}

void ResultWriteBack::run(ResultTable &result, const RowChange &change)
{
    try {
        accept(result, apply(m_db, change, m_keys));
    } catch (const VantryError &error) {
        result.setRowFailure(change.row, error.message());
        throw;
    }
}

void ResultWriteBack::postRow(ResultTable &result, qint64 row)
{
    if (const std::optional<RowChange> change = snapshotPost(result, row, m_table))
        run(result, *change);
}

void ResultWriteBack::deleteRow(ResultTable &result, qint64 row)
{
    if (result.rowState(row) == ResultTable::RowState::Inserted) {
        result.markDeleted(row);
        return;
    }
    if (result.isReadOnly())
        throw VantryError(QStringLiteral("The result is read-only"));
    run(result, snapshotDelete(result, row, m_table));
}

std::optional<RowOutcome> ResultWriteBack::writeToDatabase(const ResultTable &result, qint64 row)
{
    const std::optional<RowChange> change = snapshotPost(result, row, m_table);
    if (!change)
        return std::nullopt;
    return apply(m_db, *change, m_keys);
}

RowOutcome ResultWriteBack::deleteInDatabase(const ResultTable &result, qint64 row)
{
    if (result.isReadOnly())
        throw VantryError(QStringLiteral("The result is read-only"));
    return apply(m_db, snapshotDelete(result, row, m_table), m_keys);
}
