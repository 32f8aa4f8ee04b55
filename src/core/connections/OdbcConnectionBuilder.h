#pragma once
// What the ODBC connection builder asks of the driver manager, without windows: the keywords a
// driver needs and the test of a finished connection string. Both may wait on a driver or a
// server, so callers run them off the window's thread.

#include "core/connections/OdbcKeywords.h"

namespace OdbcConnectionBuilder {

// Where a driver's keywords came from, for the form to say so.
enum class KeywordSource { Driver, CommonTable };

struct DriverKeywords
{
    QVector<OdbcKeyword> keywords;
    KeywordSource source = KeywordSource::CommonTable;
    // Set when the driver completed driverString() by itself (it browsed and connected at once):
    // there is nothing left to ask, and this is the string for the memo.
    QString completed;
};

// The input string for a driver: "DRIVER={" description "}".
QString driverString(const QString &driverName);

// The keywords of a driver: what SQLBrowseConnect on driverString() asks for where the driver
// supports it (or the completed string, when it needs nothing more), else the common keywords of its family (found by its name, then by the library
// of its odbcinst.ini entry). Throws VantryError only when the driver manager can't be set up.
DriverKeywords keywordsFor(const QString &driverName);

// Connects with the string (no driver can show a dialog here, so nothing is prompted), and
// returns the completed connection string the driver gave back, tidied so it connects again
// (OdbcKeywords::tidyCompleted). Failures throw VantryError: the set-up texts of the driver
// manager, or "SQLDriverConnect Failed:" followed by the driver's diagnostics.
QString complete(const QString &connectionString, const QString &driverName, int loginTimeoutSeconds = 20);

} // namespace OdbcConnectionBuilder
