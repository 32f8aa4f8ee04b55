#include "core/connections/DataLinkFile.h"

#include "core/base/DataFolder.h"
#include "core/base/SavedFile.h"
#include "core/base/VantryError.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStringDecoder>
#include <QStringEncoder>

namespace DataLinkFile {

const char *const kFileNamePrefix = "FILE NAME=";

namespace {

const QLatin1String kHeader("[oledb]");
// A comment line below the header, as such files carry one; readers skip lines beginning with ";".
const QLatin1String kComment("; The OLE DB connection string follows");

QString decode(const QByteArray &bytes)
{
    // The byte-order mark decides; without one, a zero in the second byte means UTF-16 LE text.
    if (bytes.startsWith("\xFF\xFE"))
        return QStringDecoder(QStringConverter::Utf16LE).decode(bytes.mid(2));
    if (bytes.startsWith("\xFE\xFF"))
        return QStringDecoder(QStringConverter::Utf16BE).decode(bytes.mid(2));
    if (bytes.startsWith("\xEF\xBB\xBF"))
        return QString::fromUtf8(bytes.mid(3));
    if (bytes.size() >= 2 && bytes.at(0) != 0 && bytes.at(1) == 0)
        return QStringDecoder(QStringConverter::Utf16LE).decode(bytes);
    return QString::fromUtf8(bytes);
}

bool hasFolder(const QString &fileName)
{
    return fileName.contains(QLatin1Char('/')) || fileName.contains(QDir::separator());
}

} // namespace

QString folder()
{
    const QString dir = QDir(DataFolder::path()).filePath(QStringLiteral("Data Links"));
    QDir().mkpath(dir);
    return dir;
}

QStringList fileNames(const QString &dir)
{
    QStringList names = QDir(dir).entryList({QStringLiteral("*.udl")}, QDir::Files);
    names.sort(Qt::CaseInsensitive);
    return names;
}

QString parse(const QByteArray &bytes, const QString &nameForErrors)
{
    const QStringList lines = decode(bytes).split(QLatin1Char('\n'));
    bool headerSeen = false;
    for (const QString &raw : lines) {
        const QString line = raw.trimmed();
        if (line.isEmpty())
            continue;
        if (!headerSeen) {
            if (line.compare(kHeader, Qt::CaseInsensitive) != 0)
                break;
            headerSeen = true;
            continue;
        }
        if (!line.startsWith(QLatin1Char(';')))
            return line;
    }
    if (!headerSeen)
        throw VantryError(QStringLiteral("%1 is not a data link file: it has no \"[oledb]\" header.").arg(nameForErrors));
    return QString();
}

QString read(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw VantryError(QStringLiteral("The data link file %1 cannot be read: %2").arg(path, file.errorString()));
    return parse(file.readAll(), path);
}

QByteArray contents(const QString &connectionString)
{
    const QString text = kHeader + QLatin1String("\r\n") + kComment + QLatin1String("\r\n") + connectionString
                         + QLatin1String("\r\n");
    return QByteArray("\xFF\xFE", 2) + QStringEncoder(QStringConverter::Utf16LE).encode(text);
}

void write(const QString &path, const QString &connectionString)
{
    // The file holds the string on one line; a line break would cut it when read back.
    if (connectionString.contains(QLatin1Char('\n')) || connectionString.contains(QLatin1Char('\r')))
        throw VantryError(QStringLiteral("The data link file %1 cannot be written: its connection string holds a "
                                         "line break, which a data link file cannot keep.").arg(path));
    const QString cause = saveWholeFile(path, contents(connectionString));
    if (!cause.isEmpty())
        throw VantryError(QStringLiteral("The data link file %1 cannot be written: %2").arg(path, cause));
}

EditorChoice editorChoice(const QString &connectionString, const QString &linkFolder)
{
    const QLatin1String prefix(kFileNamePrefix);
    if (!connectionString.startsWith(prefix, Qt::CaseInsensitive))
        return {false, connectionString};
    const QString fileName = connectionString.mid(prefix.size());
    const QFileInfo info(fileName);
    const bool inLinkFolder = hasFolder(fileName)
                              && QDir::cleanPath(info.absolutePath()) == QDir::cleanPath(QFileInfo(linkFolder).absoluteFilePath());
    return {true, inLinkFolder ? info.fileName() : fileName};
}

QString pathOf(const QString &fileName, const QString &linkFolder)
{
    // The folder is joined with the system's own separator ("/" here).
    return hasFolder(fileName) ? fileName : QDir::cleanPath(linkFolder) + QDir::separator() + fileName;
}

QString fileNameString(const QString &fileName, const QString &linkFolder)
{
    return fileName.isEmpty() ? QString() : QLatin1String(kFileNamePrefix) + pathOf(fileName, linkFolder);
}

} // namespace DataLinkFile
