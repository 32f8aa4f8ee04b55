#pragma once
#include <QByteArray>
#include <QSaveFile>
#include <QString>

// Finishes a QSaveFile: flushes its buffer first and then commits. QSaveFile's commit flushes the
// buffer itself but loses the failure of that flush (a full disk) and renames the short file over
// the target; flushing first makes that failure discard the file instead. Returns the cause of a
// failure, empty when the file replaced its target.
inline QString commitSaved(QSaveFile &file)
{
    if (!file.flush()) {
        const QString cause = file.errorString();
        file.cancelWriting();
        file.commit(); // refused after cancelWriting: discards the temporary file
        return cause;
    }
    return file.commit() ? QString() : file.errorString();
}

// Writes bytes as the whole new content of fileName, or leaves the old file as it was. Returns the
// cause of a failure, empty on success.
inline QString saveWholeFile(const QString &fileName, const QByteArray &bytes)
{
    QSaveFile file(fileName);
    if (!file.open(QIODevice::WriteOnly))
        return file.errorString();
    if (file.write(bytes) != bytes.size()) {
        const QString cause = file.errorString();
        file.cancelWriting();
        file.commit();
        return cause;
    }
    return commitSaved(file);
}
