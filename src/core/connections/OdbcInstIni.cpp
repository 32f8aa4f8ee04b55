#include "core/connections/OdbcInstIni.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace OdbcInstIni {

QStringList files()
{
    const QString name = qEnvironmentVariable("ODBCINSTINI", QStringLiteral("odbcinst.ini"));
    QString system = name;
    if (QFileInfo(name).isRelative())
        system = QDir(qEnvironmentVariable("ODBCSYSINI", QStringLiteral("/etc"))).filePath(name);
    return {system, QDir::home().filePath(QStringLiteral(".odbcinst.ini"))};
}

QMap<QString, QString> section(const QString &iniText, const QString &sectionName)
{
    QMap<QString, QString> entries;
    bool inside = false;
    for (const QString &rawLine : iniText.split(QLatin1Char('\n'))) {
        const QString line = rawLine.trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char(';')) || line.startsWith(QLatin1Char('#')))
            continue;
        if (line.startsWith(QLatin1Char('[')) && line.endsWith(QLatin1Char(']'))) {
            if (inside)
                break;
            inside = line.mid(1, line.size() - 2).trimmed().compare(sectionName, Qt::CaseInsensitive) == 0;
            continue;
        }
        const int equals = int(line.indexOf(QLatin1Char('=')));
        if (inside && equals > 0)
            entries.insert(line.left(equals).trimmed(), line.mid(equals + 1).trimmed());
    }
    return entries;
}

QMap<QString, QString> driverEntry(const QString &driverName)
{
    for (const QString &path : files()) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
            continue;
        const QMap<QString, QString> entries = section(QString::fromUtf8(file.readAll()), driverName);
        if (!entries.isEmpty())
            return entries;
    }
    return {};
}

} // namespace OdbcInstIni
