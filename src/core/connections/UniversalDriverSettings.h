#pragma once
// How a universal configuration (provider name and provider options) becomes the settings of a
// Qt SQL driver: QMYSQL, QPSQL, QIBASE or QSQLITE, with each provider option mapped onto the
// driver's real connect options. An option or value the driver cannot honour is refused with an
// error naming it, never dropped.

#include "core/connections/UniversalConfig.h"

#include <QString>
#include <QStringList>

struct UniversalDriverSettings
{
    QString driver;      // "QMYSQL", "QPSQL", "QIBASE", "QSQLITE"
    QString hostName;
    int port = -1;       // -1: the driver's default port
    QString databaseName;
    QString userName;
    QString password;
    QStringList options; // joined with ";" into QSqlDatabase::setConnectOptions
    // Seconds a connection attempt may take. QMYSQL and QPSQL get it as their own connect time-out;
    // for QIBASE, whose client has none, the session checks that the server's port answers first.
    int connectTimeout = 0;
    // SQLite only: the database file, which must already exist.
    QString sqliteFile;
};

// The time-out used when the record's TimeOut is 0.
constexpr int kDefaultConnectTimeoutSeconds = 15;

// Throws VantryError for SQL Server Compact ("Microsoft SQL Server Compact is not available on
// this system"), for a type without a universal provider, and for options it cannot honour.
UniversalDriverSettings universalDriverSettings(const UniversalConfig &config);
