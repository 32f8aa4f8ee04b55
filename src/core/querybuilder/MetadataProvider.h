#pragma once
// Where the query builder learns which tables, views and columns a database has, and which
// foreign keys link them. A provider is connected once and then asked for the whole catalogue;
// it blocks on the database, so a window calls it from a worker thread (the thread that owns the
// provider's connection) and hands the catalogue to the engine. Without a provider the engine
// works offline: every query still parses and generates, only the catalogue is empty.

#include "core/base/VantryError.h"

#include <QSqlQuery>
#include <QString>
#include <QStringList>
#include <QVector>

struct MetadataColumn
{
    QString name;
    QString type;          // the database's type name where the source reports it
    bool primaryKey = false;
    bool operator==(const MetadataColumn &o) const { return name == o.name && type == o.type && primaryKey == o.primaryKey; }
};

struct MetadataObject
{
    enum Kind { Table, View, SystemTable };
    Kind kind = Table;
    QString schema;
    QString name;
    QVector<MetadataColumn> columns;
};

struct MetadataForeignKey
{
    QString table;               // the referencing table
    QStringList columns;
    QString referencedTable;
    QStringList referencedColumns;
};

struct MetadataCatalog
{
    QVector<MetadataObject> objects;
    QVector<MetadataForeignKey> foreignKeys;
    bool isEmpty() const { return objects.isEmpty(); }
    // The object of that name (case-insensitive, with or without its schema); null when none.
    const MetadataObject *find(const QString &name, const QString &schema = QString()) const;
};

class MetadataProvider
{
public:
    virtual ~MetadataProvider() = default;
    // Opens the connection; throws VantryError with the cause when it cannot.
    virtual void connect() = 0;
    virtual bool isConnected() const = 0;
    // Tables, views (and system tables) with their columns and primary keys, and the foreign keys.
    virtual MetadataCatalog loadCatalog() = 0;
    // A query on the provider's connection prepared with the statement, for the data preview.
    virtual QSqlQuery prepareDataset(const QString &sql) = 0;
};
