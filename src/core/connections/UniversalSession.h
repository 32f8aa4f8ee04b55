#pragma once
// The universal access path: MySQL/MariaDB, PostgreSQL, InterBase/Firebird and SQLite through the
// Qt SQL drivers. SQL Server Compact records are refused with "Microsoft SQL Server Compact is
// not available on this system".

#include "core/connections/DatabaseSession.h"
#include "core/connections/UniversalConfig.h"

class UniversalSession : public QtSqlSession
{
public:
    // Configures the connection from the record (UniversalConfig) and opens it.
    void open(const TReaderConnection &record) override;
    // Opens a configuration as it stands (the discovery service clears the database first).
    void openConfig(const UniversalConfig &config);

    // The driver of the open connection ("QPSQL", ...); empty when none is open.
    QString driverName() const;
};
