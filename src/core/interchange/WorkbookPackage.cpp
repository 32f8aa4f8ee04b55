#include "core/interchange/WorkbookPackage.h"

#include "core/interchange/WorkbookSheetBuilder.h"

#include <quazip.h>
#include <quazipfile.h>

#include <QXmlStreamReader>

namespace {

// Reads a ZIP entry as it decompresses and fails once it passes its byte cap.
class BoundedPart : public QIODevice
{
public:
    BoundedPart(QuaZip *zip, qint64 maxBytes) : m_entry(zip), m_left(maxBytes) {}

    bool start()
    {
        if (!m_entry.open(QIODevice::ReadOnly))
            return false;
        return open(QIODevice::ReadOnly);
    }
    bool isSequential() const override { return true; }
    bool atEnd() const override { return m_finished || !failure.isEmpty(); }
    QString failure;

protected:
    qint64 readData(char *data, qint64 maxSize) override
    {
        if (!failure.isEmpty() || m_finished)
            return -1;
        if (maxSize <= 0)
            return 0;
        // One byte more than the cap is asked for, to tell a part that ends at the cap from one that goes on.
        const qint64 got = m_entry.read(data, qMin(maxSize, m_left + 1));
        if (got < 0) {
            failure = QStringLiteral("its compressed data is damaged");
            return -1;
        }
        if (got > m_left) {
            failure = QStringLiteral("it is larger than this program reads (%1 MB)").arg(m_cap / (1024 * 1024));
            return -1;
        }
        m_left -= got;
        if (got == 0) {
            // The end of the entry: a wrong checksum shows as an error when it is closed.
            m_finished = true;
            m_entry.close();
            if (m_entry.getZipError() != UNZ_OK)
                failure = QStringLiteral("its data does not match its checksum");
            return -1;
        }
        return got;
    }
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    QuaZipFile m_entry;
    qint64 m_left;
    qint64 m_cap = m_left;
    bool m_finished = false;
};

QString folderOf(const QString &partName)
{
    const int slash = partName.lastIndexOf(u'/');
    return slash < 0 ? QString() : partName.left(slash + 1);
}

// A relationship target resolved against the folder of the part that names it.
QString resolveTarget(const QString &base, const QString &target)
{
    QString path = target.startsWith(u'/') ? target.mid(1) : folderOf(base) + target;
    QStringList kept;
    for (const QString &segment : path.split(u'/')) {
        if (segment == QLatin1String(".."))
        {
            if (!kept.isEmpty())
                kept.removeLast();
        } else if (!segment.isEmpty() && segment != QLatin1String(".")) {
            kept.append(segment);
        }
    }
    return kept.join(u'/');
}

} // namespace

WorkbookPackage::WorkbookPackage(std::unique_ptr<QIODevice> device, const QString &file)
    : m_file(file), m_device(std::move(device)), m_zip(std::make_unique<QuaZip>(m_device.get()))
{
    if (!m_zip->open(QuaZip::mdUnzip))
        throwWorkbookError(m_file, QStringLiteral("it is not a ZIP package (the file is damaged or of another kind)"));
}

WorkbookPackage::~WorkbookPackage() = default;

bool WorkbookPackage::hasPart(const QString &name) const
{
    return m_zip->setCurrentFile(name, QuaZip::csInsensitive);
}

std::unique_ptr<QIODevice> WorkbookPackage::openPart(const QString &name, qint64 maxBytes) const
{
    if (!m_zip->setCurrentFile(name, QuaZip::csInsensitive))
        throwWorkbookError(m_file, QStringLiteral("the part \"%1\" is missing").arg(name));
    auto part = std::make_unique<BoundedPart>(m_zip.get(), maxBytes);
    if (!part->start())
        throwWorkbookError(m_file, QStringLiteral("the part \"%1\" cannot be opened (it is damaged or encrypted)").arg(name));
    return part;
}

QString WorkbookPackage::partFailure(const QIODevice *part)
{
    const auto *bounded = dynamic_cast<const BoundedPart *>(part);
    return bounded ? bounded->failure : QString();
}

QByteArray WorkbookPackage::readPart(const QString &name, qint64 maxBytes) const
{
    auto part = openPart(name, maxBytes);
    QByteArray bytes;
    char chunk[65536];
    for (;;) {
        const qint64 got = part->read(chunk, sizeof chunk);
        if (got <= 0)
            break;
        bytes.append(chunk, got);
    }
    const QString failure = partFailure(part.get());
    if (!failure.isEmpty())
        throwWorkbookError(m_file, QStringLiteral("the part \"%1\" cannot be read: %2").arg(name, failure));
    return bytes;
}

QHash<QString, WorkbookPackage::Relationship> WorkbookPackage::relationships(const QString &partName) const
{
    QHash<QString, Relationship> result;
    const int slash = partName.lastIndexOf(u'/');
    const QString relsName = partName.left(slash + 1) + QStringLiteral("_rels/") + partName.mid(slash + 1) + QStringLiteral(".rels");
    if (!hasPart(relsName))
        return result;
    QXmlStreamReader xml(readPart(relsName, 16 * 1024 * 1024));
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement || xml.name() != QLatin1String("Relationship"))
            continue;
        const QXmlStreamAttributes attributes = xml.attributes();
        if (attributes.value(QLatin1String("TargetMode")) == QLatin1String("External"))
            continue;
        result.insert(attributes.value(QLatin1String("Id")).toString(),
                      {attributes.value(QLatin1String("Type")).toString(),
                       resolveTarget(partName, attributes.value(QLatin1String("Target")).toString())});
    }
    if (xml.hasError())
        throwWorkbookError(m_file, QStringLiteral("the part \"%1\" is not valid XML (%2)").arg(relsName, xml.errorString()));
    return result;
}

QString WorkbookPackage::packageTarget(const QString &typeSuffix, const QString &fallback) const
{
    const auto rels = relationships(QString());
    for (const Relationship &rel : rels)
        if (rel.type.endsWith(typeSuffix) && hasPart(rel.target))
            return rel.target;
    return fallback;
}
