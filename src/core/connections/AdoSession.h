#pragma once
// The ADO access path: the record's ADO connection string, translated to an ODBC connection
// string (AdoToOdbc) and opened through Qt's ODBC driver on unixODBC. Used for ODBC, SQL Server,
// OLE DB and every type without a path of its own.

#include "core/connections/DatabaseSession.h"

// The connection time-out of the ADO path, in seconds, when the record gives none.
constexpr int kAdoConnectionTimeoutSeconds = 50;

// The database name to hand Qt's ODBC driver for an ODBC connection string. The driver passes a
// name holding "DRIVER=" or "SERVER=" on as it stands but puts "DSN=" (or "FILEDSN=" for a ".dsn"
// name) in front of anything else, so that keyword is taken off here. "UID=" and "PWD=" with
// empty values are dropped, so that a data source's stored login applies when the record has none.
QString qodbcDatabaseName(const QString &odbcConnectionString);

class AdoSession : public QtSqlSession
{
public:
    // Builds the record's ADO connection string and opens it.
    void open(const TReaderConnection &record) override;
    // Opens an ADO connection string as it stands (an OLE DB record's Server holds one).
    void openConnectionString(const QString &adoConnectionString, int timeoutSeconds = 0);

    // The ODBC connection string of the last open attempt.
    QString odbcConnectionString() const { return m_odbc; }

private:
    QString m_odbc;
};
