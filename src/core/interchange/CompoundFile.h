#pragma once
#include <QByteArray>
#include <QString>

#include <vector>

// A compound file, the container of Excel 97-2003 workbooks and the other Office documents of
// that time, read from its bytes. It is a small file system: the file is cut into sectors, an
// allocation table chains the sectors of each stream, small streams live in 64-byte mini sectors
// inside one "mini stream", and a directory names the streams.
//
//   CompoundFile compound(bytes, "/data/prices.xls");   // throws VantryError
//   if (compound.hasStream("Workbook"))
//       QByteArray workbook = compound.stream("Workbook");
//
// Every sector number, chain and size is checked against the file: a damaged or hostile file
// gives an error naming the file instead of reading outside it, following a chain in circles or
// allocating more than the file holds.
class CompoundFile
{
public:
    // Reads the header, the allocation tables and the directory. file names the file in errors.
    CompoundFile(const QByteArray &bytes, const QString &file);

    // Whether the file starts with the compound file signature.
    static bool hasSignature(const QByteArray &bytes);

    // Whether the root storage holds a stream of this name (names compare without case).
    bool hasStream(const QString &name) const { return findStream(name) >= 0; }
    // The bytes of a stream of the root storage; throws when it is missing or damaged.
    QByteArray stream(const QString &name) const;

private:
    struct Entry
    {
        QString name;
        quint8 type = 0;
        quint32 left = 0, right = 0, child = 0;
        quint32 start = 0;
        quint64 size = 0;
    };

    [[noreturn]] void damaged(const QString &what) const;
    void readAllocationTable();
    void readDirectory();
    int findStream(const QString &name) const;
    quint32 sectorCount() const;
    // The sectors of a chain up to its end, for the directory and the mini allocation table,
    // whose sizes the header does not give.
    QByteArray chainUntilEnd(quint32 start, const QString &what) const;
    // size bytes along a chain of sectors, or of mini sectors inside miniStream when given.
    QByteArray chain(quint32 start, quint64 size, const QByteArray *miniStream, const QString &what) const;

    QByteArray m_bytes;
    QString m_file;
    int m_sectorShift = 9;
    int m_miniSectorShift = 6;
    quint32 m_miniStreamCutoff = 4096;
    std::vector<quint32> m_fat;
    std::vector<quint32> m_miniFat;
    std::vector<Entry> m_entries;
};
