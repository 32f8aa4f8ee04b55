#pragma once
// QVX files: a UTF-8 XML table header, one zero byte, then binary records.
//
// TQVXFile is one file: the header values, the list of fields (TQwField, QvxField.h), the
// streams, and the reading and writing of records. Reading goes through a TvtrFileReader with
// a 1024-byte buffer. Writing goes to a file (file mode) or, in streaming mode, to a sink that
// receives the output in blocks of 2048 records.
//
// The header is read by a tag search, not an XML parser, and written by plain text assembly,
// because files of this format are exchanged byte for byte with other programs that read and
// write them so: the quirks below (kept on purpose) are part of that exchange.

#include "core/interchange/QvxField.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

class QBuffer;
class QFile;
class QIODevice;
class TvtrFileReader;

class TQVXFile
{
public:
    // Receives one block of streamed output.
    using TWriteBlockEvent = std::function<void(TQVXFile &sender, const QByteArray &block)>;

    static constexpr int StreamBlockRecords = 2048;
    static constexpr qint64 ReadBufferSize = 1024;

    TQVXFile();
    ~TQVXFile();
    TQVXFile(const TQVXFile &) = delete;
    TQVXFile &operator=(const TQVXFile &) = delete;

    // Header values.
    QString MajorVersion = QStringLiteral("1");
    QString MinorVersion = QStringLiteral("0");
    // The local clock at construction, in spite of the element's name. Deliberate and must
    // stay: files written so carry local time there.
    QDateTime CreateUtcTime;
    QString TableName;
    bool UsesSeparatorByte = true;
    qint32 BlockSize = 0;
    QString FileName;
    // True: output goes to OnWriteBlock instead of FileName.
    bool Streaming = false;
    TWriteBlockEvent OnWriteBlock;

    int FieldCount() const { return int(m_fields.size()); }
    // Frees every field and makes count new default fields.
    void SetFieldCount(int count);
    TQwField &Field(int index) { return *m_fields.at(size_t(index)); }
    const TQwField &Field(int index) const { return *m_fields.at(size_t(index)); }

    bool AllDual() const { return m_allDual; }
    // Applies DualType with the flag to every field.
    void SetAllDual(bool allDual);

    // Opens FileName and parses its header; does nothing when the file does not exist.
    void ReadHeader();
    // Parses the header of an open device the caller keeps alive (in-memory data).
    void ReadHeader(QIODevice *device);
    // Reads one record into the fields' values. Returns whether the caller should read on: the
    // call that reads the last record returns false, so a caller must use the values it just
    // read before stopping. Deliberate and must stay.
    bool ReadRecord();

    void WriteHeader();
    void WriteRecord();
    void FinishWriting();
    void CloseStreams();

    // The header text WriteHeader writes (before its zero byte).
    QString HeaderText() const;
    // The reader's position as hundredths of a per cent of the file, 0 to 10000.
    qint64 SourceFilePosition() const;

    static constexpr quint8 RecordSeparator = 0x1E;
    static constexpr quint8 EndOfDataMark = 0x1C;
    static constexpr quint8 HeaderTerminator = 0;

private:
    void ParseHeader(std::unique_ptr<TvtrFileReader> reader);
    void ParseFields(const QString &fieldsText);
    void HandOutBlock();
    QIODevice &Output();

    std::unique_ptr<QBuffer> m_headerBuffer;
    std::unique_ptr<QFile> m_fileStream; // buffered: QFile keeps its own write buffer
    std::unique_ptr<TvtrFileReader> m_reader;
    qint32 m_recordsSinceFlush = 0;
    bool m_allDual = false;
    std::vector<std::unique_ptr<TQwField>> m_fields;
};

// The tables of a QVX file for discovery: its TableName as its one table. A missing or
// unreadable file gives one table with an empty name.
QStringList qvxTablesList(const QString &fileName);
