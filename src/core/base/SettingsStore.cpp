#include "core/base/SettingsStore.h"
#include "core/base/OwnerOnly.h"
#include "core/base/VantryError.h"

SettingsStore::SettingsStore(const QString &iniFile)
{
    // QSettings saves through a new file that takes the old one's permissions: start private.
    OwnerOnly::createFile(iniFile);
    OwnerOnly::restrictFile(iniFile);
    m_settings = std::make_unique<QSettings>(iniFile, QSettings::IniFormat);
}

QString SettingsStore::fileName() const { return m_settings->fileName(); }

QString SettingsStore::key(const QString &path, const QString &name) const
{
    // "SQL\" is the group "SQL"; nested paths keep their levels ("A\B\" -> "A/B").
    QString group = path;
    while (group.endsWith(QLatin1Char('\\')))
        group.chop(1);
    group.replace(QLatin1Char('\\'), QLatin1Char('/'));
    if (group.isEmpty())
        group = QStringLiteral("Vantry");
    return group + QLatin1Char('/') + name;
}

bool SettingsStore::contains(const QString &path, const QString &name) const
{
    return m_settings->contains(key(path, name));
}

QString SettingsStore::readString(const QString &path, const QString &name, const QString &fallback) const
{
    return m_settings->value(key(path, name), fallback).toString();
}

int SettingsStore::readInt(const QString &path, const QString &name, int fallback) const
{
    bool ok = false;
    const int v = readString(path, name).trimmed().toInt(&ok);
    return ok ? v : fallback;
}

double SettingsStore::readDouble(const QString &path, const QString &name, double fallback) const
{
    bool ok = false;
    const double v = readString(path, name).trimmed().toDouble(&ok);
    return ok ? v : fallback;
}

bool SettingsStore::readBool(const QString &path, const QString &name, bool fallback) const
{
    bool ok = false;
    const bool v = parseBool(readString(path, name), &ok);
    return ok ? v : fallback;
}

void SettingsStore::writeString(const QString &path, const QString &name, const QString &value)
{
    m_settings->setValue(key(path, name), value);
}

void SettingsStore::writeInt(const QString &path, const QString &name, int value)
{
    writeString(path, name, QString::number(value));
}

void SettingsStore::writeDouble(const QString &path, const QString &name, double value)
{
    writeString(path, name, QString::number(value, 'g', 17));
}

void SettingsStore::writeBool(const QString &path, const QString &name, bool value)
{
    writeString(path, name, value ? QStringLiteral("TRUE") : QStringLiteral("FALSE"));
}

void SettingsStore::sync()
{
    m_settings->sync();
    if (m_settings->status() != QSettings::NoError)
        throw VantryError(QStringLiteral("Cannot save the settings file \"%1\": the disk is full, or the file or its "
                                         "folder cannot be written.")
                              .arg(m_settings->fileName()));
}

bool SettingsStore::parseBool(const QString &word, bool *ok)
{
    const QString w = word.trimmed().toUpper();
    const bool isTrue = w == QLatin1String("TRUE") || w == QLatin1String("YES") || w == QLatin1String("Y");
    const bool isFalse = w == QLatin1String("FALSE") || w == QLatin1String("NO") || w == QLatin1String("N");
    if (ok)
        *ok = isTrue || isFalse;
    return isTrue;
}
