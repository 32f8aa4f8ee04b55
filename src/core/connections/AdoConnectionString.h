#pragma once
// The ADO connection string of a record: what the ADO path (ODBC, SQL Server, OLE DB and every
// type without a path of its own) connects with.

#include "core/connections/vtrIL.h"

#include <QString>

namespace AdoConnectionString {

// Built from ConnectionType, Server, DataBase, UserName and Password, pieces joined without
// blanks. SQL Server connections take the process-wide provider text (SqlServerDriver).
QString fromRecord(const TReaderConnection &rc);

// The ODBC connection text used for types the connection dialog doesn't offer: OdbcDsnName,
// taken as a whole connection string when it holds a "=", else as a data source name
// ("DSN=" + name). Empty when OdbcDsnName is empty.
QString odbcConnectionText(const TReaderConnection &rc);

} // namespace AdoConnectionString
