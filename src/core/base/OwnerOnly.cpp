#include "core/base/OwnerOnly.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace OwnerOnly {

namespace {
constexpr QFile::Permissions kOwnerFile = QFile::ReadOwner | QFile::WriteOwner;
constexpr QFile::Permissions kOwnerFolder = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
} // namespace

bool makeFolder(const QString &folder)
{
    if (QFileInfo(folder).isDir())
        return true;
    if (!QDir().mkpath(folder))
        return false;
    QFile::setPermissions(folder, kOwnerFolder);
    return true;
}

void createFile(const QString &file)
{
    if (QFileInfo::exists(file))
        return;
    QFile f(file);
    // NewOnly: a file another process created meanwhile is left alone.
    if (f.open(QIODevice::WriteOnly | QIODevice::NewOnly))
        f.setPermissions(kOwnerFile);
}

void restrictFile(const QString &file)
{
    const QFile::Permissions now = QFile::permissions(file);
    if (now & ~(kOwnerFile | QFile::ReadUser | QFile::WriteUser | QFile::ExeOwner | QFile::ExeUser))
        QFile::setPermissions(file, now & (kOwnerFile | QFile::ExeOwner));
}

} // namespace OwnerOnly
