#pragma once
// The live connection of one workspace tab: its three access paths (universal, Oracle, ADO), of
// which at most one is open, and the status texts of connecting.
//
// connect() disconnects all three paths, then opens the path the record's ConnectionType selects,
// reporting "Connecting" before and "Connected!" after; a path that was open reports
// "Disconnected" when it closes. The tab binds the callback to its status message.

#include "core/connections/AdoSession.h"
#include "core/connections/OracleSession.h"
#include "core/connections/UniversalSession.h"

#include <QByteArray>

#include <functional>

enum class AccessPath { None, Universal, Oracle, Ado };

// The path of a type: universal for MySQL, PostgreSQL, InterBase/Firebird, SQLite and SQL Server
// Compact; Oracle for Oracle; ADO for every other type.
AccessPath accessPathFor(TDataSourceType type);

class WorkspaceConnection
{
public:
    using StatusCallback = std::function<void(const QString &)>;

    explicit WorkspaceConnection(StatusCallback status = {});

    void setStatusCallback(StatusCallback status) { m_status = std::move(status); }

    // The record of a catalogue row's CONNECTION_PARAMETERS: unpacked, parsed, and with the path
    // macro expanded in SourceFile, Directory, Server, DataBase, UserName, Password and
    // SelectStatement. The stored value itself is not changed.
    static TReaderConnection recordFromStored(const QByteArray &connectionParameters);

    // Disconnects all paths, keeps the record (its path macros expanded) as the current record
    // and opens its path. Throws VantryError with the driver's text when it cannot connect.
    void connect(const TReaderConnection &record);

    // Disconnects the universal path, the Oracle session and the ADO path.
    void disconnectAll();

    // "Close Connection": the universal and ADO paths only. The Oracle session is deliberately
    // left as it is; the command has always closed just those two paths.
    void closeConnection();

    // The path that is open, None when none is.
    AccessPath openPath() const;

    // The open connection that statements run on (universal or ADO path). Throws VantryError
    // when neither is open.
    QSqlDatabase database() const;

    const TReaderConnection &current() const { return m_current; }

    UniversalSession &universal() { return m_universal; }
    OracleSession &oracle() { return m_oracle; }
    AdoSession &ado() { return m_ado; }

private:
    void report(const QString &text) const;
    void closeReporting(DatabaseSession &session);

    StatusCallback m_status;
    TReaderConnection m_current;
    UniversalSession m_universal; // uc
    OracleSession m_oracle;       // oc
    AdoSession m_ado;             // adc
};
