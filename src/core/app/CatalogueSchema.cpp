#include "core/app/CatalogueSchema.h"
#include "core/base/SqlErrorText.h"

#include "core/app/SqlExec.h"
#include "core/base/VantryError.h"

#include <QSqlQuery>
#include <QSqlRecord>
#include <QStringList>

namespace {

struct TableColumns
{
    const char *table;
    QStringList columns;
};

const QList<TableColumns> &expectedTables()
{
    static const QList<TableColumns> tables = {
        {"CONNECTIONS",
         {"CONNECTION_ID", "OBJECT_ID", "CONNECTION_NAME", "CONNECTION_PARAMETERS", "CONNECTION_COMMENTS",
          "CREATED", "CREATED_BY", "CHANGED", "CHANGED_BY", "CONNECTION_TYPE"}},
        {"id_generator", {"ID", "ID_TYPE"}},
        {"SQL_EXECUTION_HISTORY",
         {"SQL_EXECUTION_HISTORY_ID", "EXECUTED_SQL", "CREATED", "CREATED_BY", "CHANGED", "CHANGED_BY"}},
    };
    return tables;
}

} // namespace

namespace CatalogueSchema {

void create(QSqlDatabase &db)
{
    const char *const statements[] = {
        "create table CONNECTIONS ("
        " CONNECTION_ID decimal(28,0) not null primary key,"
        " OBJECT_ID decimal(28,0),"
        " CONNECTION_NAME varchar(80),"
        " CONNECTION_PARAMETERS blob,"
        " CONNECTION_COMMENTS blob,"
        " CREATED timestamp,"
        " CREATED_BY varchar(32),"
        " CHANGED timestamp,"
        " CHANGED_BY varchar(32),"
        " CONNECTION_TYPE decimal(28,0))",
        "create table id_generator (ID decimal(32,0) not null, ID_TYPE decimal(28,0) not null unique)",
        "create table SQL_EXECUTION_HISTORY ("
        " SQL_EXECUTION_HISTORY_ID integer not null primary key,"
        " EXECUTED_SQL text,"
        " CREATED timestamp,"
        " CREATED_BY varchar(32),"
        " CHANGED timestamp,"
        " CHANGED_BY varchar(32))",
        "insert into id_generator (ID, ID_TYPE) values (0, 1)",
        "insert into id_generator (ID, ID_TYPE) values (0, 10)",
    };
    SqlExec::transaction(db, [&] {
        for (const char *sql : statements)
            SqlExec::run(db, QString::fromLatin1(sql));
    });
}

void validate(QSqlDatabase &db, const QString &fileName)
{
    QSqlQuery probe(db);
    if (!probe.exec(QStringLiteral("select count(*) from sqlite_master")))
        throw VantryError(QStringLiteral("The catalogue \"%1\" cannot be read as a database: %2")
                              .arg(fileName, sqlErrorText(probe.lastError())));

    for (const TableColumns &t : expectedTables()) {
        const QString table = QString::fromLatin1(t.table);
        const QSqlRecord record = db.record(table);
        if (record.isEmpty())
            throw VantryError(QStringLiteral("The catalogue \"%1\" has no table %2.").arg(fileName, table));
        for (const QString &column : t.columns) {
            if (record.indexOf(column) < 0)
                throw VantryError(QStringLiteral("The catalogue \"%1\" has no column %2 in table %3.")
                                      .arg(fileName, column, table));
        }
    }
    for (int idType : {kConnectionIdType, kHistoryIdType}) {
        QSqlQuery q(db);
        q.prepare(QStringLiteral("select count(*) from id_generator where ID_TYPE = ?"));
        q.addBindValue(idType);
        if (!q.exec() || !q.next() || q.value(0).toInt() != 1)
            throw VantryError(QStringLiteral("The catalogue \"%1\" has no id_generator row for id type %2.")
                                  .arg(fileName)
                                  .arg(idType));
    }
}

} // namespace CatalogueSchema
