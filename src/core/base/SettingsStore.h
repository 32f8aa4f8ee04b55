#pragma once
#include <QSettings>
#include <QString>
#include <QVariant>
#include <memory>

// The INI settings store ("Vantry.ini"). Storage paths such as "P\" or "SQL\" become INI groups;
// booleans are written "TRUE"/"FALSE" and read from "TRUE, YES, Y" / "FALSE, NO, N" in any case.
class SettingsStore
{
public:
    explicit SettingsStore(const QString &iniFile);

    QString fileName() const;

    bool contains(const QString &path, const QString &name) const;
    QString readString(const QString &path, const QString &name, const QString &fallback = {}) const;
    int readInt(const QString &path, const QString &name, int fallback) const;
    double readDouble(const QString &path, const QString &name, double fallback) const;
    bool readBool(const QString &path, const QString &name, bool fallback) const;

    void writeString(const QString &path, const QString &name, const QString &value);
    void writeInt(const QString &path, const QString &name, int value);
    void writeDouble(const QString &path, const QString &name, double value);
    void writeBool(const QString &path, const QString &name, bool value);

    // Writes the file now; throws VantryError when it cannot be written (disk full, read-only).
    void sync();

    // The boolean words of the store; returns false in *ok for a word that is neither.
    static bool parseBool(const QString &word, bool *ok);

private:
    QString key(const QString &path, const QString &name) const;
    std::unique_ptr<QSettings> m_settings;
};
