#include "core/interchange/CompoundFile.h"

#include "core/interchange/WorkbookSheetBuilder.h"

#include <QtEndian>

#include <cstring>

namespace {

const char kSignature[] = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1";
constexpr int kHeaderSize = 512;
constexpr int kHeaderFatSlots = 109;
constexpr quint32 kLastRegularSector = 0xFFFFFFFA;
constexpr quint32 kEndOfChain = 0xFFFFFFFE;
constexpr int kEntrySize = 128;
constexpr quint8 kStreamEntry = 2;
constexpr quint8 kRootEntry = 5;

quint16 u16(const char *p)
{
    return qFromLittleEndian<quint16>(p);
}

quint32 u32(const char *p)
{
    return qFromLittleEndian<quint32>(p);
}

} // namespace

bool CompoundFile::hasSignature(const QByteArray &bytes)
{
    return bytes.startsWith(QByteArrayView(kSignature, 8));
}

CompoundFile::CompoundFile(const QByteArray &bytes, const QString &file) : m_bytes(bytes), m_file(file)
{
    if (!hasSignature(bytes) || bytes.size() < kHeaderSize)
        throwWorkbookError(file, QStringLiteral("it is not an .xls workbook (the file is damaged or of another kind)"));
    const char *header = bytes.constData();
    m_sectorShift = u16(header + 30);
    m_miniSectorShift = u16(header + 32);
    m_miniStreamCutoff = u32(header + 56);
    // Version 3 files have sectors of 512 bytes, version 4 files of 4,096; mini sectors are 64 bytes.
    if ((m_sectorShift != 9 && m_sectorShift != 12) || m_miniSectorShift != 6)
        damaged(QStringLiteral("its header gives sectors of 2^%1 and mini sectors of 2^%2 bytes")
                    .arg(m_sectorShift)
                    .arg(m_miniSectorShift));
    readAllocationTable();
    readDirectory();
    const QByteArray miniFat = chainUntilEnd(u32(header + 60), QStringLiteral("the mini allocation table"));
    m_miniFat.resize(size_t(miniFat.size() / 4));
    if (!m_miniFat.empty())
        qFromLittleEndian<quint32>(miniFat.constData(), qsizetype(m_miniFat.size()), m_miniFat.data());
}

void CompoundFile::damaged(const QString &what) const
{
    throwWorkbookError(m_file, QStringLiteral("it is damaged: %1").arg(what));
}

quint32 CompoundFile::sectorCount() const
{
    // Sector n starts at (n + 1) sectors: the header takes the place of sector -1.
    const qint64 sectorSize = qint64(1) << m_sectorShift;
    return m_bytes.size() <= sectorSize ? 0 : quint32((m_bytes.size() - 1) / sectorSize);
}

void CompoundFile::readAllocationTable()
{
    const char *header = m_bytes.constData();
    const quint32 total = sectorCount();
    const quint32 fatSectors = u32(header + 44);
    if (fatSectors > total)
        damaged(QStringLiteral("its header counts %1 allocation table sectors in a file of %2 sectors").arg(fatSectors).arg(total));

    // The first 109 allocation table sectors are listed in the header, the others in a chain of
    // sectors that each end with the number of the next one.
    std::vector<quint32> fatList;
    fatList.reserve(fatSectors);
    for (quint32 i = 0; i < fatSectors && i < quint32(kHeaderFatSlots); ++i)
        fatList.push_back(u32(header + 76 + 4 * i));
    const int sectorSize = 1 << m_sectorShift;
    const int slotsPerSector = sectorSize / 4 - 1;
    std::vector<bool> seen(total);
    for (quint32 next = u32(header + 68); fatList.size() < fatSectors;) {
        if (next >= total)
            damaged(QStringLiteral("the list of its allocation table sectors ends after %1 of %2").arg(fatList.size()).arg(fatSectors));
        if (seen[next])
            damaged(QStringLiteral("the list of its allocation table sectors runs in a circle"));
        seen[next] = true;
        const qint64 offset = (qint64(next) + 1) << m_sectorShift;
        if (offset + sectorSize > m_bytes.size())
            throwWorkbookError(m_file, QStringLiteral("it is cut short: the list of its allocation table sectors lies beyond the end of the file"));
        const char *sector = header + offset;
        for (int i = 0; i < slotsPerSector && fatList.size() < fatSectors; ++i)
            fatList.push_back(u32(sector + 4 * i));
        next = u32(sector + 4 * slotsPerSector);
    }

    m_fat.reserve(size_t(fatSectors) * size_t(sectorSize / 4));
    for (const quint32 sector : fatList) {
        if (sector >= total)
            damaged(QStringLiteral("an allocation table sector lies outside the file"));
        // A sector cut off at the end of the file holds fewer slots; chains through the missing
        // ones are reported where they are followed.
        const qint64 offset = (qint64(sector) + 1) << m_sectorShift;
        const qint64 slotCount = qMin<qint64>(sectorSize, m_bytes.size() - offset) / 4;
        if (slotCount <= 0)
            continue;
        const size_t at = m_fat.size();
        m_fat.resize(at + size_t(slotCount));
        qFromLittleEndian<quint32>(header + offset, slotCount, m_fat.data() + at);
    }
}

void CompoundFile::readDirectory()
{
    const QByteArray directory = chainUntilEnd(u32(m_bytes.constData() + 48), QStringLiteral("the directory"));
    const qsizetype count = directory.size() / kEntrySize;
    m_entries.resize(size_t(count));
    for (qsizetype i = 0; i < count; ++i) {
        const char *p = directory.constData() + i * kEntrySize;
        Entry &entry = m_entries[size_t(i)];
        // The name is UTF-16 of up to 31 characters; its length in bytes counts the closing zero.
        const int chars = qBound(0, u16(p + 64) / 2 - 1, 31);
        if (chars > 0) {
            entry.name.resize(chars);
            qFromLittleEndian<quint16>(p, chars, entry.name.data());
        }
        entry.type = quint8(p[66]);
        entry.left = u32(p + 68);
        entry.right = u32(p + 72);
        entry.child = u32(p + 76);
        entry.start = u32(p + 116);
        // Version 3 files keep only the low 32 bits; writers leave anything in the high ones.
        entry.size = m_sectorShift == 9 ? u32(p + 120) : qFromLittleEndian<quint64>(p + 120);
    }
    if (m_entries.empty() || m_entries[0].type != kRootEntry)
        damaged(QStringLiteral("its directory has no root entry"));
}

int CompoundFile::findStream(const QString &name) const
{
    // The entries of a storage form a tree through their left and right links, entered at the
    // storage's child. Only the root storage is searched: embedded documents keep their own
    // streams in storages below it.
    std::vector<bool> seen(m_entries.size());
    std::vector<quint32> pending{m_entries[0].child};
    while (!pending.empty()) {
        const quint32 id = pending.back();
        pending.pop_back();
        if (id >= m_entries.size() || seen[id])
            continue;
        seen[id] = true;
        const Entry &entry = m_entries[id];
        if (entry.type == kStreamEntry && entry.name.compare(name, Qt::CaseInsensitive) == 0)
            return int(id);
        pending.push_back(entry.left);
        pending.push_back(entry.right);
    }
    return -1;
}

QByteArray CompoundFile::stream(const QString &name) const
{
    const int id = findStream(name);
    if (id < 0)
        damaged(QStringLiteral("it holds no stream \"%1\"").arg(name));
    const Entry &entry = m_entries[size_t(id)];
    const QString what = QStringLiteral("the stream \"%1\"").arg(entry.name);
    if (entry.size >= m_miniStreamCutoff)
        return chain(entry.start, entry.size, nullptr, what);
    // Streams below the cutoff live in mini sectors inside the mini stream, which the root
    // entry holds in regular sectors.
    const Entry &root = m_entries[0];
    const QByteArray miniStream = chain(root.start, root.size, nullptr, QStringLiteral("the mini stream"));
    return chain(entry.start, entry.size, &miniStream, what);
}

QByteArray CompoundFile::chainUntilEnd(quint32 start, const QString &what) const
{
    const int sectorSize = 1 << m_sectorShift;
    QByteArray bytes;
    std::vector<bool> seen(m_fat.size());
    for (quint32 sector = start; sector <= kLastRegularSector; sector = m_fat[sector]) {
        if (sector >= m_fat.size())
            damaged(QStringLiteral("the sector chain of %1 points outside the file").arg(what));
        if (seen[sector])
            damaged(QStringLiteral("the sector chain of %1 runs in a circle").arg(what));
        seen[sector] = true;
        const qint64 offset = (qint64(sector) + 1) << m_sectorShift;
        if (offset + sectorSize > m_bytes.size())
            throwWorkbookError(m_file, QStringLiteral("it is cut short: %1 lies beyond the end of the file").arg(what));
        bytes.append(m_bytes.constData() + offset, sectorSize);
    }
    return bytes;
}

QByteArray CompoundFile::chain(quint32 start, quint64 size, const QByteArray *miniStream, const QString &what) const
{
    const int shift = miniStream ? m_miniSectorShift : m_sectorShift;
    const qint64 unit = qint64(1) << shift;
    const std::vector<quint32> &table = miniStream ? m_miniFat : m_fat;
    const QByteArray &source = miniStream ? *miniStream : m_bytes;
    // No stream can be larger than what holds it: a size beyond that is a lie, not an allocation.
    if (size > quint64(source.size()))
        damaged(QStringLiteral("%1 claims %2 bytes, more than the file holds").arg(what).arg(size));

    QByteArray bytes(qsizetype(size), Qt::Uninitialized);
    std::vector<bool> seen(table.size());
    quint32 sector = start;
    for (qint64 done = 0; done < qint64(size); done += unit) {
        if (sector == kEndOfChain)
            damaged(QStringLiteral("the sector chain of %1 ends before its %2 bytes").arg(what).arg(size));
        if (sector >= table.size())
            damaged(QStringLiteral("the sector chain of %1 points outside the file").arg(what));
        if (seen[sector])
            damaged(QStringLiteral("the sector chain of %1 runs in a circle").arg(what));
        seen[sector] = true;
        const qint64 offset = miniStream ? qint64(sector) << shift : (qint64(sector) + 1) << shift;
        const qint64 length = qMin(unit, qint64(size) - done);
        if (offset + length > source.size())
            throwWorkbookError(m_file, QStringLiteral("it is cut short: %1 lies partly beyond the end of the file").arg(what));
        std::memcpy(bytes.data() + done, source.constData() + offset, size_t(length));
        sector = table[sector];
    }
    return bytes;
}
