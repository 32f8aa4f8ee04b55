#include "core/connections/OracleSession.h"

#include "core/base/VantryError.h"
#include "core/connections/OracleClient.h"

void OracleSession::open(const TReaderConnection &record)
{
    close();
    const QString library = OracleClient::load();
    throw VantryError(QStringLiteral("Cannot log on to the Oracle database \"%1\": the Oracle client %2 was found, "
                                     "but this build of Vantry has no Oracle session yet.")
                          .arg(record.Server, library));
}

void OracleSession::close()
{
    m_loggedOn = false;
}

QSqlDatabase OracleSession::database() const
{
    throw VantryError(QStringLiteral("Oracle sessions do not run on a Qt SQL connection."));
}

QString OracleSession::tableListQuery()
{
    return QStringLiteral(
        "select owner||'.'||Decode(INSTRB(table_name,' ', 1, 1),0,table_name,'\"'||table_name||'\"')  from all_tables where owner=user \n"
        "\n"
        "union all\n"
        "select owner||'.'||Decode(INSTRB(view_name,' ', 1, 1),0,view_name,'\"'||view_name||'\"')  from all_views where owner=user \n"
        "\n"
        "\n"
        "order by 1");
}
