#include "core/querybuilder/SessionMetadataProvider.h"

#include "core/connections/AdoSession.h"
#include "core/connections/ODBCHUn.h"
#include "core/connections/UniversalSession.h"

#include <QHash>
#include <QLibrary>
#include <QSqlDriver>
#include <QSqlError>
#include <QSqlField>
#include <QSqlIndex>
#include <QSqlRecord>

namespace {

std::unique_ptr<DatabaseSession> sessionFor(const TReaderConnection &record)
{
    switch (record.ConnectionType) {
    case dsMySql: case dsPostgreSQL: case dsInterbase: case dsSqLite:
        return std::make_unique<UniversalSession>();
    default:
        return std::make_unique<AdoSession>();
    }
}

// Runs a catalogue query; a failure means the catalogue is not readable this way, which leaves
// the keys out rather than the whole catalogue.
QVector<QStringList> rows(const QSqlDatabase &db, const QString &sql, int columns)
{
    QVector<QStringList> out;
    QSqlQuery q(db);
    q.setForwardOnly(true);
    if (!q.exec(sql))
        return out;
    while (q.next()) {
        QStringList row;
        for (int c = 0; c < columns; ++c)
            row << q.value(c).toString().trimmed();
        out << row;
    }
    return out;
}

// Rows of (key name, table, referenced table, column, referenced column), in key order.
QVector<MetadataForeignKey> groupKeys(const QVector<QStringList> &keyRows)
{
    QVector<MetadataForeignKey> keys;
    QString current;
    for (const QStringList &r : keyRows) {
        const QString id = r.at(0) + QLatin1Char('\x1f') + r.at(1);
        if (keys.isEmpty() || id != current) {
            keys.append(MetadataForeignKey{r.at(1), {}, r.at(2), {}});
            current = id;
        }
        keys.last().columns << r.at(3);
        keys.last().referencedColumns << r.at(4);
    }
    return keys;
}

QString sqliteName(const QString &name)
{
    return QLatin1Char('"') + QString(name).replace(QLatin1Char('"'), QStringLiteral("\"\"")) + QLatin1Char('"');
}

// SQLForeignKeysW is not among the entry points the ODBC layer resolves; take it from the same
// driver manager library.
QVector<MetadataForeignKey> odbcForeignKeys(const QSqlDatabase &db, const QStringList &tables)
{
    using ForeignKeysW = SQLRETURN (*)(SQLHSTMT, SQLWCHAR *, SQLSMALLINT, SQLWCHAR *, SQLSMALLINT, SQLWCHAR *,
                                       SQLSMALLINT, SQLWCHAR *, SQLSMALLINT, SQLWCHAR *, SQLSMALLINT, SQLWCHAR *,
                                       SQLSMALLINT);
    QVector<MetadataForeignKey> keys;
    const QVariant handle = db.driver()->handle();
    // The Qt ODBC driver hands out its connection handle (an SQLHANDLE, a pointer).
    if (!handle.isValid() || handle.metaType().sizeOf() != qsizetype(sizeof(SQLHANDLE)))
        return keys;
    SQLHANDLE dbc = *static_cast<const SQLHANDLE *>(handle.data());
    const Odbc::Api &api = Odbc::api();
    QLibrary library(api.libraryFile);
    const auto foreignKeys = reinterpret_cast<ForeignKeysW>(library.resolve("SQLForeignKeysW"));
    if (!foreignKeys || !dbc)
        return keys;
    for (const QString &table : tables) {
        SQLHSTMT stmt = SQL_NULL_HSTMT;
        if (!Odbc::succeeded(api.SQLAllocHandle(SQL_HANDLE_STMT, dbc, &stmt)))
            return keys;
        auto name = Odbc::toSqlW(table);
        QVector<QStringList> keyRows;
        if (Odbc::succeeded(foreignKeys(stmt, nullptr, 0, nullptr, 0, nullptr, 0, nullptr, 0, nullptr, 0, name.get(),
                                        SQLSMALLINT(table.size())))) {
            // Columns: 3 PKTABLE_NAME, 4 PKCOLUMN_NAME, 7 FKTABLE_NAME, 8 FKCOLUMN_NAME, 9 KEY_SEQ, 12 FK_NAME.
            while (Odbc::succeeded(api.SQLFetch(stmt))) {
                QStringList values;
                for (int column : {12, 7, 3, 8, 4}) {
                    SQLWCHAR buffer[512];
                    SQLLEN length = 0;
                    if (!Odbc::succeeded(api.SQLGetData(stmt, SQLUSMALLINT(column), SQL_C_WCHAR, buffer, sizeof buffer, &length))
                        || length == SQL_NULL_DATA)
                        values << QString();
                    else
                        values << Odbc::fromSqlW(buffer, qsizetype(qMin<SQLLEN>(length, sizeof buffer - 2) / qsizetype(sizeof(SQLWCHAR))));
                }
                if (values.at(0).isEmpty())
                    values[0] = values.at(1) + QLatin1Char('>') + values.at(2);
                keyRows << values;
            }
        }
        api.SQLFreeHandle(SQL_HANDLE_STMT, stmt);
        keys += groupKeys(keyRows);
    }
    return keys;
}

// Declared column types by table, where the server's catalogue gives them in one query.
QHash<QString, QString> columnTypes(const QSqlDatabase &db)
{
    QHash<QString, QString> types;
    QString sql;
    const QString driver = db.driverName();
    if (driver == QLatin1String("QPSQL"))
        sql = QStringLiteral("SELECT table_name, column_name, data_type FROM information_schema.columns "
                             "WHERE table_schema = current_schema()");
    else if (driver == QLatin1String("QMYSQL") || driver == QLatin1String("QMARIADB"))
        sql = QStringLiteral("SELECT TABLE_NAME, COLUMN_NAME, COLUMN_TYPE FROM information_schema.COLUMNS "
                             "WHERE TABLE_SCHEMA = DATABASE()");
    else if (driver == QLatin1String("QIBASE"))
        sql = QStringLiteral("SELECT rf.RDB$RELATION_NAME, rf.RDB$FIELD_NAME, t.RDB$TYPE_NAME FROM RDB$RELATION_FIELDS rf "
                             "JOIN RDB$FIELDS f ON f.RDB$FIELD_NAME = rf.RDB$FIELD_SOURCE "
                             "JOIN RDB$TYPES t ON t.RDB$FIELD_NAME = 'RDB$FIELD_TYPE' AND t.RDB$TYPE = f.RDB$FIELD_TYPE");
    if (sql.isEmpty())
        return types;
    for (const QStringList &r : rows(db, sql, 3))
        types.insert(r.at(0).toLower() + QLatin1Char('.') + r.at(1).toLower(), r.at(2));
    return types;
}

} // namespace

QVector<MetadataForeignKey> readForeignKeys(const QSqlDatabase &db, const QStringList &tables)
{
    const QString driver = db.driverName();
    if (driver == QLatin1String("QSQLITE")) {
        QVector<MetadataForeignKey> keys;
        for (const QString &table : tables) {
            QVector<QStringList> keyRows;
            // id, seq, table, from, to
            for (const QStringList &r : rows(db, QStringLiteral("PRAGMA foreign_key_list(%1)").arg(sqliteName(table)), 5))
                keyRows << QStringList{r.at(0), table, r.at(2), r.at(3), r.at(4)};
            keys += groupKeys(keyRows);
        }
        return keys;
    }
    if (driver == QLatin1String("QPSQL"))
        return groupKeys(rows(db, QStringLiteral(
            "SELECT con.conname, cl.relname, fcl.relname, a.attname, fa.attname "
            "FROM pg_constraint con JOIN pg_class cl ON cl.oid = con.conrelid "
            "JOIN pg_class fcl ON fcl.oid = con.confrelid JOIN pg_namespace n ON n.oid = cl.relnamespace "
            "CROSS JOIN LATERAL unnest(con.conkey, con.confkey) WITH ORDINALITY AS k(col, fcol, ord) "
            "JOIN pg_attribute a ON a.attrelid = con.conrelid AND a.attnum = k.col "
            "JOIN pg_attribute fa ON fa.attrelid = con.confrelid AND fa.attnum = k.fcol "
            "WHERE con.contype = 'f' AND n.nspname = current_schema() ORDER BY con.conname, cl.relname, k.ord"), 5));
    if (driver == QLatin1String("QMYSQL") || driver == QLatin1String("QMARIADB"))
        return groupKeys(rows(db, QStringLiteral(
            "SELECT CONSTRAINT_NAME, TABLE_NAME, REFERENCED_TABLE_NAME, COLUMN_NAME, REFERENCED_COLUMN_NAME "
            "FROM information_schema.KEY_COLUMN_USAGE WHERE TABLE_SCHEMA = DATABASE() "
            "AND REFERENCED_TABLE_NAME IS NOT NULL ORDER BY CONSTRAINT_NAME, TABLE_NAME, ORDINAL_POSITION"), 5));
    if (driver == QLatin1String("QIBASE"))
        return groupKeys(rows(db, QStringLiteral(
            "SELECT rc.RDB$CONSTRAINT_NAME, rc.RDB$RELATION_NAME, uq.RDB$RELATION_NAME, s.RDB$FIELD_NAME, s2.RDB$FIELD_NAME "
            "FROM RDB$RELATION_CONSTRAINTS rc "
            "JOIN RDB$REF_CONSTRAINTS ref ON ref.RDB$CONSTRAINT_NAME = rc.RDB$CONSTRAINT_NAME "
            "JOIN RDB$RELATION_CONSTRAINTS uq ON uq.RDB$CONSTRAINT_NAME = ref.RDB$CONST_NAME_UQ "
            "JOIN RDB$INDEX_SEGMENTS s ON s.RDB$INDEX_NAME = rc.RDB$INDEX_NAME "
            "JOIN RDB$INDEX_SEGMENTS s2 ON s2.RDB$INDEX_NAME = uq.RDB$INDEX_NAME AND s2.RDB$FIELD_POSITION = s.RDB$FIELD_POSITION "
            "WHERE rc.RDB$CONSTRAINT_TYPE = 'FOREIGN KEY' ORDER BY 1, s.RDB$FIELD_POSITION"), 5));
    if (driver == QLatin1String("QODBC"))
        return odbcForeignKeys(db, tables);
    return {};
}

SessionMetadataProvider::SessionMetadataProvider(const TReaderConnection &record)
    : m_session(sessionFor(record)), m_record(record)
{
}

SessionMetadataProvider::SessionMetadataProvider(std::unique_ptr<DatabaseSession> session, const TReaderConnection &record)
    : m_session(std::move(session)), m_record(record)
{
}

SessionMetadataProvider::~SessionMetadataProvider() = default;

void SessionMetadataProvider::connect()
{
    m_session->open(m_record);
}

bool SessionMetadataProvider::isConnected() const
{
    return m_session->isOpen();
}

MetadataCatalog SessionMetadataProvider::loadCatalog()
{
    const QSqlDatabase db = m_session->database();
    const QHash<QString, QString> types = columnTypes(db);
    MetadataCatalog catalog;
    const auto add = [&](QSql::TableType type, MetadataObject::Kind kind) {
        for (const QString &table : db.tables(type)) {
            MetadataObject object;
            object.kind = kind;
            object.name = table;
            const int dot = table.indexOf(QLatin1Char('.'));
            if (dot > 0 && db.driverName() == QLatin1String("QPSQL")) {
                object.schema = table.left(dot);
                object.name = table.mid(dot + 1);
            }
            const QSqlRecord record = db.record(table);
            const QSqlIndex primary = db.primaryIndex(table);
            for (int i = 0; i < record.count(); ++i) {
                const QSqlField field = record.field(i);
                MetadataColumn column;
                column.name = field.name();
                column.type = types.value(object.name.toLower() + QLatin1Char('.') + column.name.toLower(),
                                          QString::fromLatin1(field.metaType().name()));
                column.primaryKey = primary.contains(field.name());
                object.columns.append(column);
            }
            catalog.objects.append(std::move(object));
        }
    };
    add(QSql::Tables, MetadataObject::Table);
    add(QSql::Views, MetadataObject::View);
    add(QSql::SystemTables, MetadataObject::SystemTable);
    QStringList tables;
    for (const MetadataObject &o : catalog.objects)
        if (o.kind == MetadataObject::Table)
            tables << o.name;
    catalog.foreignKeys = readForeignKeys(db, tables);
    return catalog;
}

QSqlQuery SessionMetadataProvider::prepareDataset(const QString &sql)
{
    QSqlQuery query(m_session->database());
    if (!query.prepare(sql))
        throw VantryError(query.lastError().text());
    return query;
}
