#include "core/connections/SqlServerDriver.h"

#include <algorithm>

namespace {

struct Candidate
{
    const char *driverName; // as installed
    const char *bulkCopyLibrary;
    int version;
    const char *providerText;
};

// In order of preference: the three Windows drivers first, then the Linux ones.
const Candidate kCandidates[] = {
    {"SQL Server Native Client 10.0", "Sqlncli10.dll", 8, "Provider=SQLNCLI10.1"},
    {"SQL Native Client", "Sqlncli.dll", 8, "Provider=SQLNCLI.1"},
    {"SQL Server", "ODBCBCP.DLL", 4, "Provider=SQLOLEDB.1"},
    {"ODBC Driver 18 for SQL Server", "libmsodbcsql-18.so", 8, "Provider=SQLOLEDB.1"},
    {"ODBC Driver 17 for SQL Server", "libmsodbcsql-17.so", 8, "Provider=SQLOLEDB.1"},
    {"FreeTDS", "libtdsodbc.so", 4, "Provider=SQLOLEDB.1"},
};
// Nothing installed: the plain "SQL Server" values.
const Candidate &kFallback = kCandidates[2];

const QLatin1String kAdoProvider("Provider=SQLOLEDB.1");

SqlServerDriverChoice choiceOf(const Candidate &c)
{
    SqlServerDriverChoice choice;
    choice.odbcDriverText = QStringLiteral("DRIVER={%1}").arg(QLatin1String(c.driverName));
    choice.bulkCopyLibrary = QLatin1String(c.bulkCopyLibrary);
    choice.version = c.version;
    choice.providerText = QLatin1String(c.providerText);
    return choice;
}

SqlServerDriverChoice &processChoice()
{
    static SqlServerDriverChoice choice = SqlServerDriver::choose({});
    return choice;
}

} // namespace

SqlServerDriverChoice SqlServerDriver::choose(const QStringList &installedDriverNames)
{
    const Candidate *found = &kFallback;
    for (const Candidate &candidate : kCandidates) {
        const QLatin1String name(candidate.driverName);
        const bool installed = std::any_of(
            installedDriverNames.begin(), installedDriverNames.end(),
            [&](const QString &d) { return d.trimmed().compare(name, Qt::CaseInsensitive) == 0; });
        if (installed) {
            found = &candidate;
            break;
        }
    }
    SqlServerDriverChoice choice = choiceOf(*found);
    // Whatever driver was found, the ADO path always uses the SQLOLEDB provider. The rest of the
    // program is built on this override; it must stay.
    choice.providerText = kAdoProvider;
    return choice;
}

void SqlServerDriver::chooseFrom(const QStringList &installedDriverNames)
{
    set(choose(installedDriverNames));
}

SqlServerDriverChoice SqlServerDriver::current() { return processChoice(); }

void SqlServerDriver::set(const SqlServerDriverChoice &choice) { processChoice() = choice; }
