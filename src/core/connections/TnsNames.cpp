#include "core/connections/TnsNames.h"

#include <QFile>
#include <QFileInfo>

namespace TnsNames {

QString locateFile()
{
    const QString tnsAdmin = qEnvironmentVariable("TNS_ADMIN");
    if (!tnsAdmin.isEmpty() && QFileInfo::exists(tnsAdmin + QStringLiteral("/tnsnames.ora")))
        return tnsAdmin + QStringLiteral("/tnsnames.ora");
    const QString home = qEnvironmentVariable("ORACLE_HOME");
    if (home.isEmpty())
        return QString();
    for (const char *folder : {"network", "net8", "net80", "net81"}) {
        const QString candidate = home + QLatin1Char('/') + QLatin1String(folder) + QStringLiteral("/admin/tnsnames.ora");
        if (QFileInfo::exists(candidate))
            return candidate;
    }
    return QString();
}

QStringList parseAliases(const QString &text)
{
    QStringList aliases;
    QString pending; // text at the outer level since the last entry ended
    int depth = 0;
    bool inComment = false;
    for (const QChar c : text) {
        if (inComment) {
            inComment = c != QLatin1Char('\n');
            continue;
        }
        if (c == QLatin1Char('#')) {
            inComment = true;
        } else if (c == QLatin1Char('(')) {
            ++depth;
        } else if (c == QLatin1Char(')')) {
            depth = qMax(0, depth - 1);
        } else if (depth == 0) {
            if (c == QLatin1Char('=')) {
                for (const QString &name : pending.split(QLatin1Char(','), Qt::SkipEmptyParts))
                    if (!name.trimmed().isEmpty())
                        aliases << name.trimmed();
                pending.clear();
            } else {
                pending += c;
            }
        }
    }
    return aliases;
}

QStringList aliases()
{
    QFile file(locateFile());
    if (file.fileName().isEmpty() || !file.open(QIODevice::ReadOnly | QIODevice::Text))
        return {};
    return parseAliases(QString::fromLocal8Bit(file.readAll()));
}

} // namespace TnsNames
