#pragma once
// The reader family: sources of bytes that the text file reader and the QVX reader are built on.
//
//   AReader              abstract source of bytes: read, end of file, position
//   AReaderEx            matching, skipping, locating and extracting over a window of bytes
//   AReaderProxy         forwards to another reader (owned or not) through its own window
//   TBufferedReader      a proxy whose window is a read buffer of a chosen size
//   TBufferedFileReader  a buffered reader over a file (or any QIODevice)
//   TFileReader          the unbuffered reader over a file (or any QIODevice)
//
// Every AReaderEx keeps a window [m_cur, m_end) of bytes already fetched. All scanning works on
// that window directly; the only virtual call is Underflow(), made when the window runs dry, so
// there is no virtual call per byte.

#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <array>
#include <memory>

class QIODevice;

// Kinds of line terminator. The number of each kind is its bit in a terminator mask.
enum TLineTerminatorKind : quint8 {
    ltEOF = 0,      // end of file
    ltReserved = 1, // in the mask only through the all-kinds default; ends no line
    ltCR = 2,       // CR
    ltLF = 3,       // LF
    ltCRLF = 4,     // CR followed by LF
    ltLFCR = 5,     // LF followed by CR
    ltZero = 6,     // the zero character
};

using TLineTerminators = quint8;

constexpr TLineTerminators LineTerminatorBit(TLineTerminatorKind kind)
{
    return TLineTerminators(1u << kind);
}

// Kinds 0 to 5: what an empty terminator list stands for.
constexpr TLineTerminators AllLineTerminators = 0x3F;

// Whether a terminator of one of the mask's kinds begins with the character first, which has
// just been consumed. matchNext(c) consumes c and returns true when c comes next. The two-character
// kinds are tried before the one-character kinds so that CR LF under a mask that allows both CR
// and CR LF ends one line, not two. Shared by the byte and the 16-bit line readers.
template <typename MatchNext>
bool EndsLine(char16_t first, TLineTerminators mask, MatchNext matchNext)
{
    switch (first)
    {
    case u'\r':
        if ((mask & LineTerminatorBit(ltCRLF)) && matchNext(u'\n'))
            return true;
        return (mask & LineTerminatorBit(ltCR)) != 0;
    case u'\n':
        if ((mask & LineTerminatorBit(ltLFCR)) && matchNext(u'\r'))
            return true;
        return (mask & LineTerminatorBit(ltLF)) != 0;
    case u'\0':
        return (mask & LineTerminatorBit(ltZero)) != 0;
    default:
        return false;
    }
}

// A set of byte values. Remembers up to three members separately so that the common small
// sets (CR, LF, zero) can be searched eight bytes at a time.
class TByteSet
{
public:
    TByteSet() { m_table.fill(false); }
    void Add(uchar byte);
    bool Contains(uchar byte) const { return m_table[byte]; }
    bool IsEmpty() const { return m_count == 0; }
    // First byte in [begin, end) that is in the set, or end.
    const uchar *FindFirst(const uchar *begin, const uchar *end) const;
    // First byte in [begin, end) that is not in the set, or end.
    const uchar *FindFirstNot(const uchar *begin, const uchar *end) const;

private:
    std::array<bool, 256> m_table;
    std::array<uchar, 3> m_small{};
    int m_count = 0;
};

class AReader
{
public:
    virtual ~AReader();
    // Reads up to count bytes; returns how many were read, 0 only at end of file.
    virtual qint64 Read(void *buffer, qint64 count) = 0;
    virtual bool Eof() = 0;
    virtual qint64 Position() const = 0;
    // Moves to a position; positions past the end are taken as the end.
    virtual void Seek(qint64 position) = 0;
    virtual qint64 Size() const = 0;
    // Names the source in error messages (the file name).
    virtual QString SourceName() const = 0;
};

class AReaderEx : public AReader
{
public:
    qint64 Read(void *buffer, qint64 count) override;
    bool Eof() override { return m_cur == m_end && !Underflow(); }

    // One byte; the read error at end of file.
    quint8 ReadByte();
    // The next byte without consuming it, or -1 at end of file.
    int PeekByte();
    // Exactly count bytes into buffer; the read error when the file ends first.
    void ReadBuffer(void *buffer, qint64 count);
    // Exactly count bytes. A count beyond what is left raises the read error before anything is
    // allocated, so a length taken from a hostile file cannot make a giant allocation.
    QByteArray ReadBytes(qint64 count);
    // A packed-decimal record of 34 bytes (precision, sign and places, 32 bytes of two digits
    // each) as decimal text.
    QString ReadPacked();

    // Consumes the byte or the bytes when they come next; otherwise consumes nothing.
    bool MatchChar(char byte);
    bool MatchStr(const QByteArray &text);
    // Skips count bytes; the read error when the file ends first.
    void Skip(qint64 count);
    void SkipByte();
    // Skips every byte of the set; returns how many were skipped.
    qint64 SkipAll(const TByteSet &set);
    // Moves to the next occurrence (not consuming it). False, at end of file, when there is none.
    bool Locate(char byte);
    bool LocateBuffer(const char *data, qsizetype size);
    bool LocateStr(const QByteArray &text);
    // Appends to line every byte up to the next byte of the set (not consumed) or end of file.
    void ExtractAll(QByteArray &line, const TByteSet &stops);
    // One line ended by a terminator of the mask; the terminator is consumed but not returned.
    // limit < 0 means no limit; otherwise extraction stops once the line holds limit bytes or more
    // when a possible terminator byte is reached.
    QByteArray ExtractLine(qint64 limit, TLineTerminators mask);
    // The same into the caller's buffer, which keeps its capacity from line to line.
    void ExtractLineInto(QByteArray &line, qint64 limit, TLineTerminators mask);
    void SkipLine(TLineTerminators mask);

    // Raises the reader's read error: the file ended where more bytes were needed.
    [[noreturn]] void ReadError() const;

    // The bytes that can begin a terminator of one of the mask's kinds.
    static TByteSet TerminatorStarts(TLineTerminators mask);

protected:
    // Refills the window; false at end of file (the window then stays empty).
    virtual bool Underflow() = 0;
    // Moves up to count bytes from the window to buffer; returns how many.
    qint64 TakeFromWindow(void *buffer, qint64 count);
    // After the first byte of a possible terminator was consumed: consumes the rest of a
    // terminator of the mask that begins with it, and tells whether one did.
    bool CompleteTerminator(uchar first, TLineTerminators mask);

    const uchar *m_cur = nullptr;
    const uchar *m_end = nullptr;

    // TerminatorStarts(mask), kept for the last mask asked for: line reading asks once a line.
    const TByteSet &StopsFor(TLineTerminators mask);

private:
    // Moves to the next byte of the set or end of file; returns how many bytes were passed.
    qint64 SkipTo(const TByteSet &stops);
    void ScanLine(QByteArray *line, qint64 limit, TLineTerminators mask);

    TByteSet m_stops;
    int m_stopsMask = -1;
};

class AReaderProxy : public AReaderEx
{
public:
    // Forwards to source through a window of one byte. Deletes source when it owns it.
    AReaderProxy(AReader *source, bool ownsSource);
    ~AReaderProxy() override;
    AReaderProxy(const AReaderProxy &) = delete;
    AReaderProxy &operator=(const AReaderProxy &) = delete;

    qint64 Read(void *buffer, qint64 count) override;
    qint64 Position() const override;
    void Seek(qint64 position) override;
    qint64 Size() const override;
    QString SourceName() const override;
    AReader *Source() const { return m_source; }

protected:
    AReaderProxy(AReader *source, bool ownsSource, qint64 bufferSize);
    bool Underflow() override;

private:
    const uchar *BufferBegin() const;
    void ResetWindow(qint64 position);

    AReader *m_source;
    bool m_ownsSource;
    QByteArray m_buffer;
    qint64 m_bufferPosition = 0; // file position of the window's first byte
};

class TBufferedReader : public AReaderProxy
{
public:
    TBufferedReader(AReader *source, bool ownsSource, qint64 bufferSize);
};

class TFileReader : public AReaderEx
{
public:
    // Opens the file for reading; the file-open error when that fails.
    explicit TFileReader(const QString &fileName);
    // Reads an open device the caller keeps alive (used for in-memory data).
    explicit TFileReader(QIODevice *device);
    ~TFileReader() override;
    TFileReader(const TFileReader &) = delete;
    TFileReader &operator=(const TFileReader &) = delete;

    qint64 Read(void *buffer, qint64 count) override;
    qint64 Position() const override;
    void Seek(qint64 position) override;
    qint64 Size() const override;
    QString SourceName() const override { return m_name; }

protected:
    bool Underflow() override;

private:
    std::unique_ptr<QIODevice> m_ownedDevice;
    QIODevice *m_device;
    QString m_name;
    uchar m_byte = 0; // the unbuffered reader's one-byte window
};

class TBufferedFileReader : public TBufferedReader
{
public:
    TBufferedFileReader(const QString &fileName, qint64 bufferSize);
    TBufferedFileReader(QIODevice *device, qint64 bufferSize);
};
