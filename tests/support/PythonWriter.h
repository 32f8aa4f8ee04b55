#pragma once
#include <QProcess>
#include <QtTest>

// Runs a short Python script with the system's interpreter (where the Debian writer packages
// live), which writes a file for a test: files we read are written by writers we did not write.
// Returns false, with Python's complaint in the test log, when the script fails.
inline bool runPythonWriter(const QString &script, const QStringList &args)
{
    QProcess python;
    python.start(QStringLiteral("/usr/bin/python3"), QStringList{QStringLiteral("-c"), script} + args);
    if (!python.waitForFinished(300000) || python.exitStatus() != QProcess::NormalExit || python.exitCode() != 0) {
        qWarning().noquote() << python.readAllStandardError();
        return false;
    }
    return true;
}

// Writes a ZIP package with Python's zipfile from part names and their bytes.
inline bool writeZipWithPython(const QString &path, const QMap<QString, QByteArray> &parts)
{
    QStringList args{path};
    for (auto it = parts.begin(); it != parts.end(); ++it)
        args << it.key() << QString::fromLatin1(it.value().toBase64());
    return runPythonWriter(QStringLiteral("import sys, base64, zipfile\n"
                                          "with zipfile.ZipFile(sys.argv[1], 'w', zipfile.ZIP_DEFLATED) as z:\n"
                                          "    for i in range(2, len(sys.argv), 2): z.writestr(sys.argv[i], base64.b64decode(sys.argv[i + 1]))\n"),
                           args);
}
