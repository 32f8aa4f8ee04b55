#pragma once
// The SQL Server driver of the process: chosen once at start-up from the installed ODBC drivers,
// before any window exists, and read by the ADO path and the discovery service afterwards.

#include <QString>
#include <QStringList>

struct SqlServerDriverChoice
{
    QString odbcDriverText;  // "DRIVER={...}", used for the ODBC connections to SQL Server
    QString bulkCopyLibrary; // library that holds the bulk-copy functions
    int version = 0;         // driver version number
    QString providerText;    // OLE DB provider text of the ADO path: always "Provider=SQLOLEDB.1"
};

class SqlServerDriver
{
public:
    // The choice for a list of installed ODBC driver names (as the driver manager reports them;
    // compared ignoring case and surrounding blanks). The first of these that is installed wins:
    // "SQL Server Native Client 10.0", "SQL Native Client", "SQL Server",
    // "ODBC Driver 18 for SQL Server", "ODBC Driver 17 for SQL Server", "FreeTDS";
    // with none of them the "DRIVER={SQL Server}" values are used all the same.
    static SqlServerDriverChoice choose(const QStringList &installedDriverNames);

    // Chooses from the list and makes the result the process-wide choice.
    static void chooseFrom(const QStringList &installedDriverNames);

    // The process-wide choice. Until chooseFrom() or set() runs it is the "DRIVER={SQL Server}" one.
    static SqlServerDriverChoice current();
    static void set(const SqlServerDriverChoice &choice);
};
