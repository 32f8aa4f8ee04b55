#include "core/connections/OracleClient.h"

#include "core/base/VantryError.h"

#include <QLibrary>
#include <QMutex>

namespace OracleClient {

QStringList libraryNames()
{
    const QString fromEnvironment = qEnvironmentVariable("VANTRY_OCI_LIBRARY");
    if (!fromEnvironment.isEmpty())
        return {fromEnvironment};
    QStringList names;
    const QString home = qEnvironmentVariable("ORACLE_HOME");
    if (!home.isEmpty())
        names << home + QStringLiteral("/lib/libclntsh.so");
    names << QStringLiteral("libclntsh.so");
    return names;
}

QString load()
{
    static QMutex mutex;
    static QString loadedFile;
    QMutexLocker lock(&mutex);
    if (!loadedFile.isEmpty())
        return loadedFile;
    QStringList failures;
    for (const QString &name : libraryNames()) {
        // Stays loaded for the rest of the process: sessions hold pointers into it.
        auto *library = new QLibrary(name);
        if (library->load()) {
            loadedFile = library->fileName();
            return loadedFile;
        }
        failures << library->errorString();
        delete library;
    }
    throw VantryError(QStringLiteral(
        "The Oracle client is not installed: the Oracle Call Interface library libclntsh.so could not be loaded "
        "(%1). Install Oracle Instant Client (the \"Basic\" or \"Basic Light\" package from "
        "https://www.oracle.com/database/technologies/instant-client.html), then put its folder on "
        "LD_LIBRARY_PATH or set ORACLE_HOME to it, and restart Vantry.")
                          .arg(failures.join(QStringLiteral("; "))));
}

} // namespace OracleClient
