#include "core/workspace/TableKeys.h"

#include "core/workspace/SqlLiterals.h"
#include "core/base/SqlErrorText.h"
#include "core/base/VantryError.h"

#include <QSqlDriver>
#include <QSqlError>
#include <QSqlIndex>
#include <QSqlQuery>

namespace {

// One unique index of a table as the catalogue lists it.
struct Candidate
{
    QString index;
    QStringList columns;
    bool allNotNull = true;
};

// The schema (may be empty) and the table of a name as written, quotes removed.
QStringList nameParts(const QSqlDatabase &db, const QString &table)
{
    QStringList parts = table.split(QLatin1Char('.'));
    for (QString &part : parts)
        part = db.driver()->stripDelimiters(part.trimmed(), QSqlDriver::TableName);
    return parts;
}

// Runs a catalogue query whose rows are (index, column, NOT NULL), the primary key's rows first
// and each index's columns in order; returns the first index with only NOT NULL columns.
QStringList firstUsableKey(const QSqlDatabase &db, const QString &sql, const QVariantList &values)
{
    QSqlQuery query(db);
    query.setForwardOnly(true);
    // The names go in as the driver's literals: some ODBC drivers mangle bound texts.
    if (!query.exec(withLiterals(db, sql, values)))
        throw VantryError(sqlErrorText(query.lastError()));
    QList<Candidate> candidates;
    while (query.next()) {
        const QString index = query.value(0).toString().trimmed();
        if (candidates.isEmpty() || candidates.back().index != index)
            candidates.append({index, {}, true});
        candidates.back().columns << query.value(1).toString().trimmed();
        candidates.back().allNotNull = candidates.back().allNotNull && query.value(2).toInt() != 0;
    }
    for (const Candidate &candidate : candidates)
        if (candidate.allNotNull)
            return candidate.columns;
    return {};
}

QStringList postgresKey(const QSqlDatabase &db, const QString &table)
{
    // to_regclass reads the name as the statement wrote it: quotes, schema and search path.
    return firstUsableKey(db, QStringLiteral(
        "select i.indexrelid::text, a.attname, case when a.attnotnull or i.indisprimary then 1 else 0 end"
        " from pg_catalog.pg_index i"
        " cross join lateral unnest(i.indkey) with ordinality k(attnum, ord)"
        " join pg_catalog.pg_attribute a on a.attrelid = i.indrelid and a.attnum = k.attnum"
        " where i.indrelid = to_regclass(?) and i.indisunique and i.indexprs is null and i.indpred is null"
        " order by i.indisprimary desc, i.indexrelid, k.ord"), {table});
}

QStringList mariaDbKey(const QSqlDatabase &db, const QString &table)
{
    const QStringList parts = nameParts(db, table);
    const QString schema = parts.size() > 1 ? QStringLiteral("?") : QStringLiteral("database()");
    QVariantList values;
    if (parts.size() > 1)
        values << parts[parts.size() - 2];
    values << parts.back();
    return firstUsableKey(db, QStringLiteral(
        "select s.index_name, s.column_name, case when c.is_nullable = 'NO' then 1 else 0 end"
        " from information_schema.statistics s join information_schema.columns c"
        " on c.table_schema = s.table_schema and c.table_name = s.table_name and c.column_name = s.column_name"
        " where s.table_schema = %1 and s.table_name = ? and s.non_unique = 0"
        " order by s.index_name = 'PRIMARY' desc, s.index_name, s.seq_in_index").arg(schema), values);
}

QStringList sqliteKey(const QSqlDatabase &db, const QString &table)
{
    const QString name = nameParts(db, table).back();
    // An INTEGER PRIMARY KEY is the rowid and has no index, so the primary key comes from
    // table_info; unique indexes (and other primary keys) from index_list.
    return firstUsableKey(db, QStringLiteral(
        "select '', name, 1, pk from pragma_table_info(?) where pk > 0"
        " union all"
        " select l.name, i.name, t.\"notnull\", 1000 + i.seqno"
        " from pragma_index_list(?) l join pragma_index_info(l.name) i"
        " join pragma_table_info(?) t on t.name = i.name"
        " where l.\"unique\" and not l.partial and l.origin <> 'pk'"
        " order by 1, 4"), {name, name, name});
}

QStringList firebirdKey(const QSqlDatabase &db, const QString &table)
{
    const QString written = table.split(QLatin1Char('.')).back().trimmed();
    // Unquoted names are stored in upper case.
    const QString name = written.startsWith(QLatin1Char('"')) ? nameParts(db, written).back() : written.toUpper();
    return firstUsableKey(db, QStringLiteral(
        "select rc.rdb$index_name, s.rdb$field_name,"
        " case when rc.rdb$constraint_type = 'PRIMARY KEY' or f.rdb$null_flag = 1 then 1 else 0 end"
        " from rdb$relation_constraints rc"
        " join rdb$index_segments s on s.rdb$index_name = rc.rdb$index_name"
        " join rdb$relation_fields f on f.rdb$relation_name = rc.rdb$relation_name"
        " and f.rdb$field_name = s.rdb$field_name"
        " where rc.rdb$relation_name = ? and rc.rdb$constraint_type in ('PRIMARY KEY', 'UNIQUE')"
        " order by rc.rdb$constraint_type, rc.rdb$index_name, s.rdb$field_position"), {name});
}

QStringList driverKey(const QSqlDatabase &db, const QString &table)
{
    const QSqlIndex index = db.primaryIndex(nameParts(db, table).join(QLatin1Char('.')));
    QStringList columns;
    for (int i = 0; i < index.count(); ++i)
        columns << index.fieldName(i);
    return columns;
}

} // namespace

QStringList findTableKey(const QSqlDatabase &db, const QString &table)
{
    // By the database behind the driver, so an ODBC source of a known engine reads the same
    // catalogue as the native driver (the ODBC primary-key call misses unique keys, and some
    // drivers answer it for no table).
    switch (db.driver()->dbmsType()) {
    case QSqlDriver::PostgreSQL:
        return postgresKey(db, table);
    case QSqlDriver::MySqlServer:
        return mariaDbKey(db, table);
    case QSqlDriver::SQLite:
        return sqliteKey(db, table);
    case QSqlDriver::Interbase:
        return firebirdKey(db, table);
    default:
        break;
    }
    QStringList key = driverKey(db, table);
    // An ODBC source the driver does not recognise (MariaDB's own ODBC driver, say) may still
    // have the standard information schema.
    if (key.isEmpty() && db.driverName() == QLatin1String("QODBC")) {
        try {
            key = mariaDbKey(db, table);
        } catch (const VantryError &) {
        }
    }
    return key;
}

QStringList findIncomparableColumns(const QSqlDatabase &db, const QString &table)
{
    if (db.driver()->dbmsType() != QSqlDriver::PostgreSQL)
        return {};
    QSqlQuery query(db);
    query.setForwardOnly(true);
    const QString sql = QStringLiteral(
        "select a.attname from pg_catalog.pg_attribute a join pg_catalog.pg_type t on t.oid = a.atttypid"
        " where a.attrelid = to_regclass(?) and a.attnum > 0 and not a.attisdropped"
        " and t.typname in ('json', 'xml', 'point', 'lseg', 'path', 'box', 'polygon', 'line', 'circle')");
    if (!query.exec(withLiterals(db, sql, {table})))
        throw VantryError(sqlErrorText(query.lastError()));
    QStringList columns;
    while (query.next())
        columns << query.value(0).toString();
    return columns;
}

QStringList TableKeyCache::cached(QHash<QString, QStringList> &cache, const QSqlDatabase &db, const QString &table,
                                  QStringList (*find)(const QSqlDatabase &, const QString &))
{
    const QString id = db.connectionName() + QChar(0) + table;
    {
        QMutexLocker lock(&m_mutex);
        const auto found = cache.constFind(id);
        if (found != cache.constEnd())
            return *found;
    }
    QStringList columns;
    try {
        columns = find(db, table);
    } catch (const VantryError &) {
        // A catalogue the account may not read: rows are then found by all their fields, and
        // the exactly-one-row rule still guards every write.
    }
    QMutexLocker lock(&m_mutex);
    cache.insert(id, columns);
    return columns;
}

QStringList TableKeyCache::keyOf(const QSqlDatabase &db, const QString &table)
{
    return cached(m_keys, db, table, findTableKey);
}

QStringList TableKeyCache::incomparableOf(const QSqlDatabase &db, const QString &table)
{
    return cached(m_incomparable, db, table, findIncomparableColumns);
}

bool TableKeyCache::bindsTextAsBytes(const QSqlDatabase &db)
{
    if (db.driverName() != QLatin1String("QODBC"))
        return false;
    {
        QMutexLocker lock(&m_mutex);
        const auto found = m_textAsBytes.constFind(db.connectionName());
        if (found != m_textAsBytes.constEnd())
            return *found;
    }
    QSqlQuery query(db);
    const bool padded = query.prepare(QStringLiteral("SELECT LENGTH(?)"))
                        && (query.addBindValue(QStringLiteral("a")), query.exec()) && query.next()
                        && query.value(0).toInt() == 2;
    QMutexLocker lock(&m_mutex);
    m_textAsBytes.insert(db.connectionName(), padded);
    return padded;
}

void TableKeyCache::clear()
{
    QMutexLocker lock(&m_mutex);
    m_keys.clear();
    m_incomparable.clear();
    m_textAsBytes.clear();
}
