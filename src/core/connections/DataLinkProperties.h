#pragma once
// The properties the data link dialog edits, and the OLE DB connection string they make. The
// providers offered are those the ADO path can open on this system (AdoToOdbc).

#include "core/connections/AdoToOdbc.h"

#include <QString>
#include <QVector>

struct DataLinkProvider
{
    QString name;        // the "Provider=" value
    QString description; // what the list shows
    bool fileSource;     // the data source is a database file
};

// The providers offered, in the order the dialog lists them.
const QVector<DataLinkProvider> &dataLinkProviders();

struct DataLinkProperties
{
    QString provider;
    QString dataSource;
    QString initialCatalog;
    QString userId;
    QString password;
    QString extendedProperties;
    // Pieces of the string the dialog has no box for, kept as they came.
    QVector<AdoToOdbc::Pair> others;

    // Read from an OLE DB connection string (keys compared ignoring case, aliases "Server",
    // "Database", "UID", "PWD" accepted).
    static DataLinkProperties fromConnectionString(const QString &connectionString);

    // "Provider=...;Password=...;Persist Security Info=True;User ID=...;Initial Catalog=...;
    // Data Source=...;Extended Properties=..." and then the other pieces. Empty properties are
    // left out; "Persist Security Info=True" goes with a password, so that the password stays
    // in the string the ADO path opens.
    QString connectionString() const;
};
