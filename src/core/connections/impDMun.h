#pragma once
// The discovery service: from a connection record it lists servers, the databases of a server and
// the tables of a database, and tests whether a connection can be made. It keeps connections of
// its own (universal, Oracle, OLE DB) apart from the workspace tabs' connections. Created once at
// start-up and handed to whoever needs it.

#include "core/connections/AdoSession.h"
#include "core/connections/OracleSession.h"
#include "core/connections/UniversalSession.h"

#include <QStringList>

class TimpDM
{
public:
    TimpDM();
    ~TimpDM();
    TimpDM(const TimpDM &) = delete;
    TimpDM &operator=(const TimpDM &) = delete;

    // Server names for kind "ODBC" (data source names), "ORACLE" (TNS aliases) or "SQL SERVER"
    // (instances found by browse-connect); exact case. Any other kind leaves the list empty. The
    // list is always cleared first. A failing ODBC call leaves the list empty and, when error is
    // given, puts its text there; a driver manager that cannot be loaded raises its loader's text.
    void GetServersList(const QString &kind, QStringList &list, QString *error = nullptr);

    // The database names of a MySQL, PostgreSQL or SQL Server server, replacing the list. Other
    // types leave the list as it is. Always returns true. Errors of the SQL Server path go to
    // error; the others raise.
    bool GetListOfDataBasesR(TReaderConnection rc, QStringList &list, QString &error);

    // The table names of the record's database, replacing the list. includeViews adds views,
    // includeSystemTables system tables. Names are qualified and quoted (SqlNames); bracketStyle
    // quotes in square brackets.
    void GetTablesListR(TReaderConnection rc, QStringList &list, bool includeViews, bool includeSystemTables,
                        bool bracketStyle = false);

    // Connects with the record's parameters; raises VantryError with the driver's text when it cannot.
    void TestRConnection(TReaderConnection rc);

private:
    UniversalSession m_uc;    // universal layer
    OracleSession m_oc;       // Oracle session
    AdoSession m_oleDb;       // OLE DB connection
};
