#include "core/base/DataFolder.h"
#include "core/base/OwnerOnly.h"

#include "InstallPaths.h"

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

// A catalogue beside the executable counts only where the program may write it: an installed
// program finds its folder read-only, and a catalogue it cannot write would fail on first use.
bool isPortableFolder(const QString &dir)
{
    if (dir.isEmpty())
        return false;
    const QFileInfo catalogue(dir + QLatin1Char('/') + QLatin1String(kCatalogueName));
    return catalogue.isFile() && catalogue.isWritable() && QFileInfo(dir).isWritable();
}

} // namespace

namespace DataFolder {

QString chooseFor(const QString &executableDir)
{
    const QString home = qEnvironmentVariable("VANTRY_HOME");
    if (!home.isEmpty())
        return QDir::cleanPath(home);
    if (isPortableFolder(executableDir))
        return QDir::cleanPath(executableDir);
    QString appData = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    if (appData.isEmpty())
        appData = QDir::homePath() + QStringLiteral("/.local/share");
    return QDir::cleanPath(appData + QStringLiteral("/Vantry"));
}

QString path()
{
    // Chosen afresh on each call so tests (and a changed $VANTRY_HOME) see the current folder.
    const QString folder = chooseFor(executableDir());
    OwnerOnly::makeFolder(folder);
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

QStringList runtimeFolders()
{
    QStringList folders;
    const QString exeDir = executableDir();
    if (!exeDir.isEmpty()) {
        folders << exeDir;
        folders << QDir::cleanPath(exeDir + QLatin1Char('/') + QStringLiteral(VANTRY_SHARE_FROM_BIN));
    }
    folders << path();
    return folders;
}

QString findBesideExecutable(const QString &fileName)
{
    for (const QString &dir : runtimeFolders()) {
        const QString candidate = dir + QLatin1Char('/') + fileName;
        if (QFileInfo::exists(candidate))
            return candidate;
    }
    return {};
}

} // namespace DataFolder
