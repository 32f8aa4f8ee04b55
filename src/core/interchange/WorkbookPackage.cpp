#include "core/interchange/WorkbookPackage.h"

#include "core/interchange/WorkbookSheetBuilder.h"

#include <QXmlStreamReader>

#include <minizip/unzip.h>

namespace {

// minizip reads the package through these callbacks from the QIODevice it is given as its "path".
// The system's minizip is the one libxlsxwriter writes with, so one ZIP library serves both.
voidpf openDevice(voidpf, const void *device, int)
{
    return const_cast<void *>(device);
}

uLong readDevice(voidpf, voidpf device, void *buffer, uLong size)
{
    const qint64 got = static_cast<QIODevice *>(device)->read(static_cast<char *>(buffer), qint64(size));
    return got < 0 ? 0 : uLong(got);
}

uLong writeNothing(voidpf, voidpf, const void *, uLong)
{
    return 0;
}

ZPOS64_T tellDevice(voidpf, voidpf device)
{
    return ZPOS64_T(static_cast<QIODevice *>(device)->pos());
}

long seekDevice(voidpf, voidpf device, ZPOS64_T offset, int origin)
{
    auto *io = static_cast<QIODevice *>(device);
    qint64 target = qint64(offset);
    if (origin == ZLIB_FILEFUNC_SEEK_CUR)
        target += io->pos();
    else if (origin == ZLIB_FILEFUNC_SEEK_END)
        target += io->size();
    return target >= 0 && target <= io->size() && io->seek(target) ? 0 : -1;
}

int closeNothing(voidpf, voidpf)
{
    return 0; // the package owns the device
}

int deviceError(voidpf, voidpf)
{
    return 0; // failures show as short reads and failed seeks
}

// Reads a ZIP entry as it decompresses and fails once it passes its byte cap.
class BoundedPart : public QIODevice
{
public:
    BoundedPart(unzFile zip, qint64 maxBytes) : m_zip(zip), m_left(maxBytes) {}
    ~BoundedPart() override
    {
        if (m_entryOpen)
            unzCloseCurrentFile(m_zip);
    }

    bool start()
    {
        m_entryOpen = unzOpenCurrentFile(m_zip) == UNZ_OK;
        return m_entryOpen && open(QIODevice::ReadOnly);
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
        const unsigned ask = unsigned(qMin<qint64>(qMin(maxSize, m_left + 1), 1 << 30));
        const int got = unzReadCurrentFile(m_zip, data, ask);
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
            m_entryOpen = false;
            if (unzCloseCurrentFile(m_zip) != UNZ_OK)
                failure = QStringLiteral("its data does not match its checksum");
            return -1;
        }
        return got;
    }
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    unzFile m_zip;
    qint64 m_left;
    qint64 m_cap = m_left;
    bool m_finished = false;
    bool m_entryOpen = false;
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
    : m_file(file), m_device(std::move(device))
{
    zlib_filefunc64_def io{openDevice, readDevice, writeNothing, tellDevice, seekDevice, closeNothing, deviceError, nullptr};
    m_zip = unzOpen2_64(m_device.get(), &io);
    if (!m_zip)
        throwWorkbookError(m_file, QStringLiteral("it is not a ZIP package (the file is damaged or of another kind)"));
}

WorkbookPackage::~WorkbookPackage()
{
    unzClose(m_zip);
}

bool WorkbookPackage::hasPart(const QString &name) const
{
    constexpr int caseInsensitive = 2;
    return unzLocateFile(m_zip, name.toUtf8().constData(), caseInsensitive) == UNZ_OK;
}

std::unique_ptr<QIODevice> WorkbookPackage::openPart(const QString &name, qint64 maxBytes) const
{
    if (!hasPart(name))
        throwWorkbookError(m_file, QStringLiteral("the part \"%1\" is missing").arg(name));
    auto part = std::make_unique<BoundedPart>(m_zip, maxBytes);
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
