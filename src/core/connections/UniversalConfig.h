#pragma once
// How the universal access path is configured for a record, as plain data: the provider name,
// its options in order, and the connection's server, user, password, database and port. The
// session that opens a Qt SQL connection applies it.

#include "core/connections/vtrIL.h"

#include <QPair>
#include <QString>
#include <QVector>

struct UniversalConfig
{
    QString providerName; // "MYSQL", "POSTGRESQL", "INTERBASE", "SQLITE", "SQL SERVER"; empty for other types
    QVector<QPair<QString, QString>> options; // name, value text (booleans "True"/"False", numbers decimal)
    QString server;
    QString userName;
    QString password;
    QString database;
    int port = 0;

    // The value of an option, empty when it isn't set.
    QString option(const QString &name) const;

    // For dsMySql, dsPostgreSQL, dsInterbase, dsSqLite and dsSqlServerCE the provider and its
    // options; for every type the server, user, password, database and port.
    static UniversalConfig fromRecord(const TReaderConnection &rc);
};
