#include "core/connections/OdbcConnectionBuilder.h"

#include "core/base/VantryError.h"
#include "core/connections/ODBCHUn.h"
#include "core/connections/OdbcInstIni.h"

namespace OdbcConnectionBuilder {

QString driverString(const QString &driverName)
{
    return QStringLiteral("DRIVER={") + driverName + QLatin1Char('}');
}

DriverKeywords keywordsFor(const QString &driverName)
{
    Odbc::Environment env;
    try {
        Odbc::Connection dbc(env);
        bool needsData = false;
        const QString answer = dbc.browseConnect(driverString(driverName), &needsData);
        if (!needsData)
            return {{}, KeywordSource::Driver, OdbcKeywords::tidyCompleted(answer, driverName)};
        const QVector<OdbcKeyword> asked = OdbcKeywords::fromBrowseResult(answer);
        if (!asked.isEmpty())
            return {asked, KeywordSource::Driver, QString()};
    } catch (const VantryError &) {
        // Most drivers don't browse ("not supported"): the table below stands in for them.
    }
    const QString library = OdbcInstIni::driverEntry(driverName).value(QStringLiteral("Driver"));
    return {OdbcKeywords::commonKeywords(driverName, library), KeywordSource::CommonTable, QString()};
}

QString complete(const QString &connectionString, const QString &driverName, int loginTimeoutSeconds)
{
    Odbc::Environment env;
    Odbc::Connection dbc(env);
    dbc.setLoginTimeout(loginTimeoutSeconds);
    const QString completed = dbc.driverConnect(connectionString);
    return OdbcKeywords::tidyCompleted(completed.isEmpty() ? connectionString : completed, driverName);
}

} // namespace OdbcConnectionBuilder
