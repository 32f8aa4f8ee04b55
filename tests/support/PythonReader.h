#pragma once
#include <QJsonDocument>
#include <QProcess>
#include <QtTest>

// Runs a short Python script with the system's interpreter (where the Debian reader packages
// live) and returns what it prints as JSON. Files we write are checked by readers we did not write.
inline QJsonDocument runPythonReader(const QString &script, const QStringList &args)
{
    QProcess python;
    python.start(QStringLiteral("/usr/bin/python3"), QStringList{QStringLiteral("-c"), script} + args);
    if (!python.waitForFinished(120000) || python.exitCode() != 0) {
        qWarning().noquote() << python.readAllStandardError();
        return {};
    }
    return QJsonDocument::fromJson(python.readAllStandardOutput());
}
