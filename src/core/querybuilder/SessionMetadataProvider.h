#pragma once
// The metadata provider over one of our sessions: the universal path (SQLite, PostgreSQL,
// MySQL/MariaDB, InterBase/Firebird through Qt SQL) or the ODBC path. Tables, views and columns
// come from the Qt SQL driver; column types and foreign keys from each server's own catalogue
// (PRAGMA foreign_key_list, pg_constraint, information_schema, RDB$ tables), and for ODBC from
// SQLForeignKeys on the connection's handle.

#include "core/querybuilder/MetadataProvider.h"

#include "core/connections/DatabaseSession.h"
#include "core/connections/vtrIL.h"

#include <memory>

class SessionMetadataProvider : public MetadataProvider
{
public:
    // A provider that opens the record's connection on the path its type selects (universal for
    // MySQL, PostgreSQL, InterBase and SQLite; ODBC for the rest) when connect() is called.
    explicit SessionMetadataProvider(const TReaderConnection &record);
    // A provider over a session and record of the caller's choosing.
    SessionMetadataProvider(std::unique_ptr<DatabaseSession> session, const TReaderConnection &record);
    ~SessionMetadataProvider() override;

    void connect() override;
    bool isConnected() const override;
    MetadataCatalog loadCatalog() override;
    QSqlQuery prepareDataset(const QString &sql) override;

private:
    std::unique_ptr<DatabaseSession> m_session;
    TReaderConnection m_record;
};

// The foreign keys of the database behind a Qt SQL connection, read the driver's way.
QVector<MetadataForeignKey> readForeignKeys(const QSqlDatabase &db, const QStringList &tables);
