#include "core/base/LogonUser.h"

#include <QtGlobal>
#ifdef Q_OS_UNIX
#include <pwd.h>
#include <unistd.h>
#endif

namespace {

QString readAccountName()
{
#ifdef Q_OS_UNIX
    if (const passwd *pw = getpwuid(geteuid()); pw && pw->pw_name && *pw->pw_name)
        return QString::fromLocal8Bit(pw->pw_name);
#endif
    return qEnvironmentVariable("USER");
}

QString &processName()
{
    static QString name = LogonUser::normalise(readAccountName());
    return name;
}

} // namespace

namespace LogonUser {

QString normalise(const QString &raw)
{
    const QString cut = raw.left(32);
    return cut.isEmpty() ? QStringLiteral("Unknown") : cut;
}

QString name() { return processName(); }

void setName(const QString &raw) { processName() = normalise(raw); }

} // namespace LogonUser
