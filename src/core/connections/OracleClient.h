#pragma once
// The Oracle Call Interface of an installed Oracle Instant Client, loaded on first use.

#include <QString>
#include <QStringList>

namespace OracleClient {

// The names tried in order: $VANTRY_OCI_LIBRARY when set; "$ORACLE_HOME/lib/libclntsh.so" when
// ORACLE_HOME is set; then "libclntsh.so" (found through LD_LIBRARY_PATH and the loader's path).
QStringList libraryNames();

// Loads the client library once. Throws VantryError saying that the Oracle client is not
// installed, with the loader's text and how to install Oracle Instant Client, when none loads.
// Returns the file that was loaded.
QString load();

} // namespace OracleClient
