#include "app/DataFolder.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace {

const char *const kCatalogueName = "db.sqlite";

QString executableDir()
{
    return QCoreApplication::instance() ? QCoreApplication::applicationDirPath() : QString();
}

QString chooseFolder()
{
    const QString home = qEnvironmentVariable("VANTRY_HOME");
    if (!home.isEmpty())
        return home;
    const QString exeDir = executableDir();
    if (!exeDir.isEmpty() && QFileInfo::exists(exeDir + QLatin1Char('/') + QLatin1String(kCatalogueName)))
        return exeDir;
    QString appData = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    if (appData.isEmpty())
        appData = QDir::homePath() + QStringLiteral("/.local/share");
    return appData + QStringLiteral("/Vantry");
}

} // namespace

namespace DataFolder {

QString path()
{
    // Chosen afresh on each call so tests (and a changed $VANTRY_HOME) see the current folder.
    const QString folder = QDir::cleanPath(chooseFolder());
    QDir().mkpath(folder);
    return folder;
}

QString catalogueFile() { return path() + QLatin1Char('/') + QLatin1String(kCatalogueName); }
QString settingsFile() { return path() + QStringLiteral("/Vantry.ini"); }
QString optionsFile() { return path() + QStringLiteral("/options.ini"); }

QString commonDocumentsDir()
{
    const QString fromEnv = qEnvironmentVariable("VANTRY_COMMON_DOCUMENTS");
    if (!fromEnv.isEmpty())
        return fromEnv;
    const QString docs = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return docs.isEmpty() ? QDir::homePath() : docs;
}

QString findBesideExecutable(const QString &fileName)
{
    for (const QString &dir : {executableDir(), path()}) {
        if (dir.isEmpty())
            continue;
        const QString candidate = dir + QLatin1Char('/') + fileName;
        if (QFileInfo::exists(candidate))
            return candidate;
    }
    return {};
}

} // namespace DataFolder
