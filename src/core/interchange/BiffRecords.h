#pragma once
// The records of an .xls workbook stream (BIFF5 of Excel 5 and 95, BIFF8 of Excel 97 to 2003):
// each record is a 16-bit type and a 16-bit size followed by its data. Data longer than one
// record goes on in CONTINUE records that follow it.

#include <QByteArray>
#include <QString>

#include <vector>

class QStringDecoder;

// Record types the .xls reader uses.
namespace BiffRecord {
enum : quint16 {
    Formula = 0x0006,
    Eof = 0x000A,
    DateMode = 0x0022,
    FilePass = 0x002F,
    Continue = 0x003C,
    CodePage = 0x0042,
    BoundSheet = 0x0085,
    MulRk = 0x00BD,
    RichString = 0x00D6,
    Xf = 0x00E0,
    SharedStrings = 0x00FC,
    LabelSst = 0x00FD,
    Number = 0x0203,
    Label = 0x0204,
    BoolErr = 0x0205,
    String = 0x0207,
    Rk = 0x027E,
    Format = 0x041E,
    Bof = 0x0809,
};
}

// Walks the records of a workbook stream from an offset. The stream's bytes must outlive it.
class BiffRecordStream
{
public:
    BiffRecordStream(const QByteArray &stream, qint64 offset);

    // Moves to the next record: false at the end of the stream, or at a record that the end of
    // the stream cuts short (then cutShort() is true).
    bool next();
    bool cutShort() const { return m_cutShort; }
    quint16 type() const { return m_type; }
    const char *data() const { return m_data; }
    int size() const { return m_size; }
    // The type of the record after the current one, or -1 at the end of the stream.
    int nextType() const;
    // Where the current record starts in the stream.
    qint64 offset() const { return m_data - 4 - m_begin; }

private:
    const char *m_begin;
    const char *m_end;
    const char *m_next;
    const char *m_data = nullptr;
    quint16 m_type = 0;
    int m_size = 0;
    bool m_cutShort = false;
};

// The fields of one record, or of a record and the CONTINUE records after it, read from the
// front across the joins. Reading past the end yields zeros and empty texts and clears ok(), so a
// short record from a damaged file never reads outside its bytes.
class BiffFields
{
public:
    BiffFields(const char *data, int size) : m_segments{{data, size}} {}
    // The current record of records and the CONTINUE records that follow it; records moves on
    // to the last of them.
    explicit BiffFields(BiffRecordStream &records);

    bool ok() const { return m_ok; }
    bool atEnd() const;
    quint8 u8();
    quint16 u16();
    quint32 u32();
    void skip(qint64 bytes);
    // A BIFF8 string: a character count of countBytes (1 or 2) bytes, a flags byte, the counts of
    // rich text runs and phonetic data when the flags say so, the characters in one byte (Latin-1)
    // or two (UTF-16), then the runs and phonetic data, which are skipped. Characters that run on
    // into a CONTINUE record start it with a new flags byte, so one string may change between one
    // and two bytes a character at the join.
    QString unicodeString(int countBytes);
    // A BIFF5 string: a byte count of countBytes (1 or 2) bytes, then bytes in the workbook's code
    // page.
    QString byteString(int countBytes, QStringDecoder &decoder);

protected:
    // The bytes left from the current position to the end of the last segment.
    qint64 remaining() const;
    void fail() { m_ok = false; }
    bool read(void *out, int bytes);
    QString characters(int count, bool wide);

private:
    struct Segment
    {
        const char *data;
        int size;
    };
    // The rest of the current segment, moving to the next when this one is used up; false at the end.
    bool reachData();

    std::vector<Segment> m_segments;
    size_t m_segment = 0;
    int m_pos = 0;
    bool m_ok = true;
};
