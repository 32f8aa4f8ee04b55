#pragma once
#include <QByteArray>
#include <QHash>
#include <QIODevice>
#include <QString>

#include <memory>

// The ZIP package of an .xlsx, .xlsm or .xlsb workbook: its parts (ZIP entries, names compared
// without case) and the relationships between them. Every part is read with a cap on its
// decompressed size, so a small hostile file cannot expand into gigabytes; the sizes an entry's
// header claims are not trusted.
class WorkbookPackage
{
public:
    struct Relationship
    {
        QString type;    // the relationship type's URI
        QString target;  // the target part's name inside the package, without a leading "/"
    };

    // Opens the package read from an open device; file names the workbook in errors.
    WorkbookPackage(std::unique_ptr<QIODevice> device, const QString &file);
    ~WorkbookPackage();
    WorkbookPackage(const WorkbookPackage &) = delete;
    WorkbookPackage &operator=(const WorkbookPackage &) = delete;

    const QString &file() const { return m_file; }
    bool hasPart(const QString &name) const;
    // The whole part; throws when it is missing, damaged or larger than maxBytes.
    QByteArray readPart(const QString &name, qint64 maxBytes) const;
    // The part as a device that reads it as it decompresses; reading fails past maxBytes, and
    // partFailure() then says why. One part is open at a time.
    std::unique_ptr<QIODevice> openPart(const QString &name, qint64 maxBytes) const;
    // Why reading an opened part stopped early, or empty.
    static QString partFailure(const QIODevice *part);

    // The relationships of a part by id ("rId1"), read from its ".rels" part; empty when it has none.
    QHash<QString, Relationship> relationships(const QString &partName) const;
    // The part that the package's relationship of this type (URI ending) points at, or fallback.
    QString packageTarget(const QString &typeSuffix, const QString &fallback) const;

private:
    QString m_file;
    std::unique_ptr<QIODevice> m_device;
    void *m_zip = nullptr; // minizip's unzFile
};
