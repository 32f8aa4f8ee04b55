#include "core/connections/WorkspaceConnection.h"

#include "core/base/VantryError.h"
#include "core/connections/vtrtools.h"

AccessPath accessPathFor(TDataSourceType type)
{
    switch (type) {
    case dsMySql:
    case dsPostgreSQL:
    case dsInterbase:
    case dsSqLite:
    case dsSqlServerCE:
        return AccessPath::Universal;
    case dsOracle:
        return AccessPath::Oracle;
    default:
        return AccessPath::Ado;
    }
}

WorkspaceConnection::WorkspaceConnection(StatusCallback status)
    : m_status(std::move(status))
{
}

TReaderConnection WorkspaceConnection::recordFromStored(const QByteArray &connectionParameters)
{
    TReaderConnection record;
    StrToReaderConnection(UnpackParameters(connectionParameters), record);
    ExpandConnectionPathMacros(record);
    return record;
}

void WorkspaceConnection::report(const QString &text) const
{
    if (m_status)
        m_status(text);
}

void WorkspaceConnection::closeReporting(DatabaseSession &session)
{
    if (!session.isOpen())
        return;
    session.close();
    report(QStringLiteral("Disconnected"));
}

void WorkspaceConnection::disconnectAll()
{
    closeReporting(m_universal);
    closeReporting(m_oracle);
    closeReporting(m_ado);
}

void WorkspaceConnection::closeConnection()
{
    closeReporting(m_universal);
    closeReporting(m_ado);
}

void WorkspaceConnection::connect(const TReaderConnection &record)
{
    m_current = record;
    ExpandConnectionPathMacros(m_current);
    disconnectAll();
    DatabaseSession *session = nullptr;
    switch (accessPathFor(m_current.ConnectionType)) {
    case AccessPath::Universal:
        session = &m_universal;
        break;
    case AccessPath::Oracle:
        session = &m_oracle;
        break;
    case AccessPath::Ado:
    case AccessPath::None:
        session = &m_ado;
        break;
    }
    report(QStringLiteral("Connecting"));
    session->open(m_current);
    report(QStringLiteral("Connected!"));
}

AccessPath WorkspaceConnection::openPath() const
{
    if (m_universal.isOpen())
        return AccessPath::Universal;
    if (m_oracle.isOpen())
        return AccessPath::Oracle;
    if (m_ado.isOpen())
        return AccessPath::Ado;
    return AccessPath::None;
}

QSqlDatabase WorkspaceConnection::database() const
{
    if (m_universal.isOpen())
        return m_universal.database();
    if (m_ado.isOpen())
        return m_ado.database();
    throw VantryError(QStringLiteral("Not connected."));
}
