#pragma once
// The table catalogue of an open database as rows (catalogue, schema, name, type), and the table
// list built from those rows: which rows the two flags admit and how each name is written.

#include "core/connections/SqlNames.h"

#include <QSqlDatabase>
#include <QStringList>
#include <QVector>

struct CatalogueRow
{
    QString catalog;
    QString schema;
    QString name;
    QString type; // "TABLE", "VIEW", "SYSTEM TABLE", or what an ODBC driver reports
};

// The catalogue of a universal connection (QMYSQL, QPSQL, QIBASE, QSQLITE), read with the
// database's own catalogue query. Types are "TABLE", "VIEW" and "SYSTEM TABLE". MySQL and SQLite
// tables of the current database and Firebird relations carry no schema; PostgreSQL rows carry
// theirs. The system tables of MySQL are the views of information_schema, with that schema.
// Throws VantryError with the driver's text when the query fails.
QVector<CatalogueRow> universalCatalogueRows(const QSqlDatabase &db);

// The names of the rows the flags admit, in row order: tables ("TABLE", "BASE TABLE",
// "ACCESS TABLE") always, views ("VIEW") with includeViews, system tables and views
// ("SYSTEM TABLE", "SYSTEM VIEW") with includeSystemTables. Rows of the schemas
// "information_schema" and "pg_catalog" are left out when dropPostgreSqlSystemSchemas is set.
// Names are SqlNames::qualifiedName() of the row.
QStringList tableNames(const QVector<CatalogueRow> &rows, bool includeViews, bool includeSystemTables,
                       SqlNames::QuoteStyle style, bool dropPostgreSqlSystemSchemas = false);

// The table list of a source read through ODBC, with names a statement on that connection can
// use: without the catalogue (the connection's own database) and with the schema only for tables
// outside the default schema ("public", "dbo", "main"). Tables of the system schemas
// (information_schema, pg_catalog, sys, mysql, performance_schema) are listed only with
// includeSystemTables, whatever their type; other rows are admitted as by tableNames().
QStringList odbcSourceTableNames(const QVector<CatalogueRow> &rows, bool includeViews, bool includeSystemTables,
                                 SqlNames::QuoteStyle style);
