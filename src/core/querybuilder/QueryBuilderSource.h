#pragma once
// What a connection record means to the query builder when it opens: the dialect code it starts
// with (see SqlDialects::fromCode) and whether every name must be quoted.

#include "core/connections/vtrIL.h"

namespace QueryBuilderSource {

// MySQL 23, PostgreSQL 30, InterBase 90, SQLite 40, SQL Server Compact also 40 (the SQLite
// dialect, a pairing kept as it was), Oracle 53. Any other type goes through ADO: its provider
// decides (SQLOLEDB or SQLNCLI 12, JET 75, ORA 53, MYSQLPROV 23, else 4), then its connection
// string: ACCESS makes it 75, else FOXPRO or EXCEL 0.
int dialectCode(const TReaderConnection &record);

// Excel sources name their sheets "Sheet1$": an ADO connection string that mentions EXCEL asks
// for every identifier to be quoted.
bool quoteAllIdentifiers(const TReaderConnection &record);

} // namespace QueryBuilderSource
