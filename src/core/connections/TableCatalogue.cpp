#include "core/connections/TableCatalogue.h"

#include "core/base/VantryError.h"
#include "core/connections/DatabaseSession.h"

#include <QSqlDriver>
#include <QSqlError>
#include <QSqlQuery>

namespace {

// Every row of a catalogue query as (schema, name, type) from its first three columns.
QVector<CatalogueRow> queryRows(const QSqlDatabase &db, const QString &sql)
{
    QSqlQuery query(db);
    query.setForwardOnly(true);
    if (!query.exec(sql))
        throw VantryError(describeSqlError(query.lastError()));
    QVector<CatalogueRow> rows;
    while (query.next())
        rows << CatalogueRow{QString(), query.value(0).toString().trimmed(), query.value(1).toString().trimmed(),
                             query.value(2).toString()};
    return rows;
}

} // namespace

QVector<CatalogueRow> universalCatalogueRows(const QSqlDatabase &db)
{
    const QString driver = db.driverName();
    if (driver == QLatin1String("QPSQL"))
        return queryRows(db, QStringLiteral(
            "select n.nspname, c.relname,"
            " case when c.relkind in ('v','m') then 'VIEW'"
            "      when n.nspname in ('pg_catalog','information_schema') then 'SYSTEM TABLE' else 'TABLE' end"
            " from pg_catalog.pg_class c join pg_catalog.pg_namespace n on n.oid = c.relnamespace"
            " where c.relkind in ('r','p','v','m','f')"
            " and n.nspname not like 'pg\\_toast%' and n.nspname not like 'pg\\_temp\\_%'"
            " order by 1, 2"));
    if (driver == QLatin1String("QMYSQL"))
        return queryRows(db, QStringLiteral(
            "select case when table_schema = database() then '' else table_schema end, table_name,"
            " case table_type when 'BASE TABLE' then 'TABLE' when 'VIEW' then 'VIEW' else 'SYSTEM TABLE' end"
            " from information_schema.tables"
            " where table_schema = database() or table_schema = 'information_schema'"
            " order by table_schema = database() desc, table_name"));
    if (driver == QLatin1String("QSQLITE"))
        return queryRows(db, QStringLiteral(
            "select '', name, case when name like 'sqlite\\_%' escape '\\' then 'SYSTEM TABLE'"
            " when type = 'view' then 'VIEW' else 'TABLE' end"
            " from sqlite_master where type in ('table', 'view')"
            " union all select '', 'sqlite_master', 'SYSTEM TABLE'"
            " order by 2"));
    if (driver == QLatin1String("QIBASE"))
        return queryRows(db, QStringLiteral(
            "select '', rdb$relation_name,"
            " case when coalesce(rdb$system_flag, 0) <> 0 then 'SYSTEM TABLE'"
            "      when rdb$view_blr is not null then 'VIEW' else 'TABLE' end"
            " from rdb$relations order by 2"));
    throw VantryError(QStringLiteral("No table catalogue is known for the %1 driver.").arg(driver));
}

namespace {

bool admitted(const CatalogueRow &row, bool includeViews, bool includeSystemTables)
{
    const QString type = row.type.trimmed().toUpper();
    return type == QLatin1String("TABLE") || type == QLatin1String("BASE TABLE")
           || type == QLatin1String("ACCESS TABLE") || (includeViews && type == QLatin1String("VIEW"))
           || (includeSystemTables && (type == QLatin1String("SYSTEM TABLE") || type == QLatin1String("SYSTEM VIEW")));
}

} // namespace

QStringList tableNames(const QVector<CatalogueRow> &rows, bool includeViews, bool includeSystemTables,
                       SqlNames::QuoteStyle style, bool dropPostgreSqlSystemSchemas)
{
    QStringList names;
    for (const CatalogueRow &row : rows) {
        if (dropPostgreSqlSystemSchemas
            && (row.schema == QLatin1String("information_schema") || row.schema == QLatin1String("pg_catalog")))
            continue;
        if (admitted(row, includeViews, includeSystemTables))
            names << SqlNames::qualifiedName(row.catalog, row.schema, row.name, style);
    }
    return names;
}

QStringList odbcSourceTableNames(const QVector<CatalogueRow> &rows, bool includeViews, bool includeSystemTables,
                                 SqlNames::QuoteStyle style)
{
    static const QStringList systemSchemas{QStringLiteral("information_schema"), QStringLiteral("pg_catalog"),
                                           QStringLiteral("sys"), QStringLiteral("mysql"),
                                           QStringLiteral("performance_schema")};
    static const QStringList defaultSchemas{QStringLiteral("public"), QStringLiteral("dbo"), QStringLiteral("main")};
    QStringList names;
    for (const CatalogueRow &row : rows) {
        const bool system = systemSchemas.contains(row.schema, Qt::CaseInsensitive)
                            || row.schema.startsWith(QLatin1String("pg_toast"), Qt::CaseInsensitive);
        if (system ? !includeSystemTables : !admitted(row, includeViews, includeSystemTables))
            continue;
        const QString schema = defaultSchemas.contains(row.schema, Qt::CaseInsensitive) ? QString() : row.schema;
        names << SqlNames::qualifiedName(QString(), schema, row.name, style);
    }
    return names;
}
