#include "core/interchange/VtrTypes.h"

#include "core/base/VantryError.h"

#include <QFile>
#include <QIODevice>

#include <algorithm>
#include <cstring>

namespace {

constexpr quint64 OnesBytes = 0x0101010101010101ULL;
constexpr quint64 HighBits = 0x8080808080808080ULL;

// Non-zero when one of the eight bytes of word equals the byte repeated in pattern.
inline quint64 WordHasByte(quint64 word, quint64 pattern)
{
    const quint64 v = word ^ pattern;
    return (v - OnesBytes) & ~v & HighBits;
}

constexpr int PackedRecordSize = 34;

} // namespace

// --- TByteSet ---------------------------------------------------------------------------------

void TByteSet::Add(uchar byte)
{
    if (m_table[byte])
        return;
    m_table[byte] = true;
    if (m_count < int(m_small.size()))
        m_small[m_count] = byte;
    ++m_count;
}

const uchar *TByteSet::FindFirst(const uchar *begin, const uchar *end) const
{
    if (m_count == 0)
        return end;
    if (m_count == 1)
    {
        const void *hit = std::memchr(begin, m_small[0], size_t(end - begin));
        return hit ? static_cast<const uchar *>(hit) : end;
    }
    const uchar *p = begin;
    if (m_count <= int(m_small.size()))
    {
        // Eight bytes at a time; a word with a hit is then searched byte by byte.
        quint64 patterns[3] = {};
        for (int i = 0; i < m_count; ++i)
            patterns[i] = OnesBytes * m_small[i];
        while (end - p >= 8)
        {
            quint64 word;
            std::memcpy(&word, p, 8);
            quint64 hit = WordHasByte(word, patterns[0]) | WordHasByte(word, patterns[1]);
            if (m_count == 3)
                hit |= WordHasByte(word, patterns[2]);
            if (hit)
                break;
            p += 8;
        }
    }
    while (p != end && !m_table[*p])
        ++p;
    return p;
}

const uchar *TByteSet::FindFirstNot(const uchar *begin, const uchar *end) const
{
    const uchar *p = begin;
    while (p != end && m_table[*p])
        ++p;
    return p;
}

// --- AReader / AReaderEx ----------------------------------------------------------------------

AReader::~AReader() = default;

qint64 AReaderEx::TakeFromWindow(void *buffer, qint64 count)
{
    const qint64 n = std::min<qint64>(count, m_end - m_cur);
    if (n > 0)
    {
        std::memcpy(buffer, m_cur, size_t(n));
        m_cur += n;
    }
    return n;
}

qint64 AReaderEx::Read(void *buffer, qint64 count)
{
    auto *out = static_cast<char *>(buffer);
    qint64 done = 0;
    while (done < count)
    {
        if (m_cur == m_end && !Underflow())
            break;
        done += TakeFromWindow(out + done, count - done);
    }
    return done;
}

void AReaderEx::ReadError() const
{
    throw VantryError(QStringLiteral("Unexpected end of file in \"%1\" at position %2")
                          .arg(SourceName())
                          .arg(Position()));
}

quint8 AReaderEx::ReadByte()
{
    if (m_cur == m_end && !Underflow())
        ReadError();
    return *m_cur++;
}

int AReaderEx::PeekByte()
{
    if (m_cur == m_end && !Underflow())
        return -1;
    return *m_cur;
}

void AReaderEx::ReadBuffer(void *buffer, qint64 count)
{
    if (count <= 0)
        return;
    if (Read(buffer, count) != count)
        ReadError();
}

QByteArray AReaderEx::ReadBytes(qint64 count)
{
    if (count <= 0)
        return QByteArray();
    if (count > Size() - Position())
        ReadError();
    QByteArray bytes(qsizetype(count), Qt::Uninitialized);
    ReadBuffer(bytes.data(), count);
    return bytes;
}

QString AReaderEx::ReadPacked()
{
    uchar record[PackedRecordSize];
    const qint64 start = Position();
    ReadBuffer(record, PackedRecordSize);
    const int precision = std::min<int>(record[0], 64);
    const bool negative = (record[1] & 0x80) != 0;
    const int places = record[1] & 0x3F;

    QString digits;
    digits.reserve(precision + places + 1);
    for (int i = 0; i < precision; ++i)
    {
        const uchar pair = record[2 + i / 2];
        const int digit = (i % 2 == 0) ? pair >> 4 : pair & 0x0F;
        if (digit > 9)
            throw VantryError(QStringLiteral("The packed decimal at position %1 of \"%2\" holds "
                                             "the invalid digit %3")
                                  .arg(start)
                                  .arg(SourceName())
                                  .arg(digit));
        digits.append(QChar('0' + digit));
    }
    while (digits.size() <= places)
        digits.prepend(QLatin1Char('0'));

    QString whole = digits.left(digits.size() - places);
    QString fraction = digits.right(places);
    int firstNonZero = 0;
    while (firstNonZero < whole.size() - 1 && whole.at(firstNonZero) == QLatin1Char('0'))
        ++firstNonZero;
    whole.remove(0, firstNonZero);
    while (fraction.endsWith(QLatin1Char('0')))
        fraction.chop(1);

    QString text = whole;
    if (!fraction.isEmpty())
        text += QLatin1Char('.') + fraction;
    if (negative && text != QLatin1String("0"))
        text.prepend(QLatin1Char('-'));
    return text;
}

bool AReaderEx::MatchChar(char byte)
{
    if (PeekByte() != uchar(byte))
        return false;
    ++m_cur;
    return true;
}

bool AReaderEx::MatchStr(const QByteArray &text)
{
    if (text.isEmpty())
        return true;
    // Fast case: the whole text lies in the window.
    if (m_end - m_cur >= text.size())
    {
        if (std::memcmp(m_cur, text.constData(), size_t(text.size())) != 0)
            return false;
        m_cur += text.size();
        return true;
    }
    const qint64 start = Position();
    for (char c : text)
    {
        if (!MatchChar(c))
        {
            Seek(start);
            return false;
        }
    }
    return true;
}

void AReaderEx::Skip(qint64 count)
{
    while (count > 0)
    {
        if (m_cur == m_end && !Underflow())
            ReadError();
        const qint64 n = std::min<qint64>(count, m_end - m_cur);
        m_cur += n;
        count -= n;
    }
}

void AReaderEx::SkipByte()
{
    Skip(1);
}

qint64 AReaderEx::SkipAll(const TByteSet &set)
{
    qint64 skipped = 0;
    while (m_cur != m_end || Underflow())
    {
        const uchar *stop = set.FindFirstNot(m_cur, m_end);
        skipped += stop - m_cur;
        m_cur = stop;
        if (stop != m_end)
            break;
    }
    return skipped;
}

bool AReaderEx::Locate(char byte)
{
    TByteSet set;
    set.Add(uchar(byte));
    SkipTo(set);
    return m_cur != m_end;
}

bool AReaderEx::LocateBuffer(const char *data, qsizetype size)
{
    if (size <= 0)
        return true;
    while (Locate(data[0]))
    {
        const qint64 candidate = Position();
        if (MatchStr(QByteArray::fromRawData(data, size)))
        {
            Seek(candidate);
            return true;
        }
        Seek(candidate + 1);
    }
    return false;
}

bool AReaderEx::LocateStr(const QByteArray &text)
{
    return LocateBuffer(text.constData(), text.size());
}

void AReaderEx::ExtractAll(QByteArray &line, const TByteSet &stops)
{
    while (m_cur != m_end || Underflow())
    {
        const uchar *stop = stops.FindFirst(m_cur, m_end);
        line.append(reinterpret_cast<const char *>(m_cur), stop - m_cur);
        m_cur = stop;
        if (stop != m_end)
            return;
    }
}

TByteSet AReaderEx::TerminatorStarts(TLineTerminators mask)
{
    TByteSet set;
    if (mask & (LineTerminatorBit(ltCR) | LineTerminatorBit(ltCRLF)))
        set.Add('\r');
    if (mask & (LineTerminatorBit(ltLF) | LineTerminatorBit(ltLFCR)))
        set.Add('\n');
    if (mask & LineTerminatorBit(ltZero))
        set.Add('\0');
    return set;
}

const TByteSet &AReaderEx::StopsFor(TLineTerminators mask)
{
    if (m_stopsMask != mask)
    {
        m_stops = TerminatorStarts(mask);
        m_stopsMask = mask;
    }
    return m_stops;
}

bool AReaderEx::CompleteTerminator(uchar first, TLineTerminators mask)
{
    return EndsLine(first, mask, [this](char16_t next) { return MatchChar(char(next)); });
}

qint64 AReaderEx::SkipTo(const TByteSet &stops)
{
    qint64 skipped = 0;
    while (m_cur != m_end || Underflow())
    {
        const uchar *stop = stops.FindFirst(m_cur, m_end);
        skipped += stop - m_cur;
        m_cur = stop;
        if (stop != m_end)
            break;
    }
    return skipped;
}

void AReaderEx::ScanLine(QByteArray *line, qint64 limit, TLineTerminators mask)
{
    if (mask == 0)
        return;
    const TByteSet &stops = StopsFor(mask);
    qint64 skipped = 0; // bytes a SkipLine has passed, for the limit
    for (;;)
    {
        if (line)
            ExtractAll(*line, stops);
        else
            skipped += SkipTo(stops);
        if (m_cur == m_end && !Underflow())
        {
            if (mask & LineTerminatorBit(ltEOF))
                return;
            ReadError();
        }
        const qint64 length = line ? line->size() : skipped;
        if (limit >= 0 && length >= limit)
            return;
        const uchar first = *m_cur++;
        if (CompleteTerminator(first, mask))
            return;
        // Not a terminator of an allowed kind (a lone CR under CR LF): part of the line.
        if (line)
            line->append(char(first));
        else
            ++skipped;
    }
}

QByteArray AReaderEx::ExtractLine(qint64 limit, TLineTerminators mask)
{
    QByteArray line;
    ExtractLineInto(line, limit, mask);
    return line;
}

void AReaderEx::ExtractLineInto(QByteArray &line, qint64 limit, TLineTerminators mask)
{
    // Emptied, not released: a caller reading line after line into one buffer allocates only
    // when a line is longer than every line before it.
    line.resize(0);
    // Fast path: a line that ends inside the window is copied once.
    if (mask != 0 && limit < 0 && m_cur != m_end)
    {
        const TByteSet &stops = StopsFor(mask);
        const uchar *stop = stops.FindFirst(m_cur, m_end);
        if (stop != m_end && stop + 1 != m_end)
        {
            const uchar *begin = m_cur;
            m_cur = stop + 1;
            if (CompleteTerminator(*stop, mask))
            {
                line.append(reinterpret_cast<const char *>(begin), stop - begin);
                return;
            }
            m_cur = begin;
        }
    }
    ScanLine(&line, limit, mask);
}

void AReaderEx::SkipLine(TLineTerminators mask)
{
    ScanLine(nullptr, -1, mask);
}

// --- AReaderProxy -----------------------------------------------------------------------------

AReaderProxy::AReaderProxy(AReader *source, bool ownsSource)
    : AReaderProxy(source, ownsSource, 1)
{
}

AReaderProxy::AReaderProxy(AReader *source, bool ownsSource, qint64 bufferSize)
    : m_source(source), m_ownsSource(ownsSource)
{
    m_buffer.resize(qsizetype(std::max<qint64>(1, bufferSize)));
    m_bufferPosition = m_source->Position();
    m_cur = m_end = BufferBegin();
}

AReaderProxy::~AReaderProxy()
{
    if (m_ownsSource)
        delete m_source;
}

const uchar *AReaderProxy::BufferBegin() const
{
    return reinterpret_cast<const uchar *>(m_buffer.constData());
}

void AReaderProxy::ResetWindow(qint64 position)
{
    m_bufferPosition = position;
    m_cur = m_end = BufferBegin();
}

bool AReaderProxy::Underflow()
{
    ResetWindow(Position());
    const qint64 n = m_source->Read(m_buffer.data(), m_buffer.size());
    if (n <= 0)
        return false;
    m_end = BufferBegin() + n;
    return true;
}

qint64 AReaderProxy::Read(void *buffer, qint64 count)
{
    auto *out = static_cast<char *>(buffer);
    qint64 done = TakeFromWindow(out, count);
    if (count - done >= m_buffer.size())
    {
        // A read larger than the buffer goes to the source directly.
        ResetWindow(Position());
        while (done < count)
        {
            const qint64 n = m_source->Read(out + done, count - done);
            if (n <= 0)
                break;
            done += n;
            m_bufferPosition += n;
        }
        return done;
    }
    return done + AReaderEx::Read(out + done, count - done);
}

qint64 AReaderProxy::Position() const
{
    return m_bufferPosition + (m_cur - BufferBegin());
}

void AReaderProxy::Seek(qint64 position)
{
    if (position < 0)
        ReadError();
    const qint64 windowLength = m_end - BufferBegin();
    if (position >= m_bufferPosition && position <= m_bufferPosition + windowLength)
    {
        m_cur = BufferBegin() + (position - m_bufferPosition);
        return;
    }
    m_source->Seek(position);
    ResetWindow(m_source->Position());
}

qint64 AReaderProxy::Size() const
{
    return m_source->Size();
}

QString AReaderProxy::SourceName() const
{
    return m_source->SourceName();
}

TBufferedReader::TBufferedReader(AReader *source, bool ownsSource, qint64 bufferSize)
    : AReaderProxy(source, ownsSource, bufferSize)
{
}

// --- TFileReader ------------------------------------------------------------------------------

TFileReader::TFileReader(const QString &fileName)
    : m_ownedDevice(std::make_unique<QFile>(fileName)), m_device(m_ownedDevice.get()),
      m_name(fileName)
{
    // QFile's own buffer is bypassed: the buffered readers above bring their own.
    if (!m_device->open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        throw VantryError(QStringLiteral("Cannot open file \"%1\": %2")
                              .arg(fileName, m_device->errorString()));
}

TFileReader::TFileReader(QIODevice *device) : m_device(device), m_name(QStringLiteral("(stream)"))
{
    if (!m_device || !m_device->isReadable())
        throw VantryError(QStringLiteral("Cannot read from a stream that is not open for reading"));
}

TFileReader::~TFileReader() = default;

bool TFileReader::Underflow()
{
    char byte;
    if (!m_device->getChar(&byte))
    {
        m_cur = m_end = nullptr;
        return false;
    }
    m_byte = uchar(byte);
    m_cur = &m_byte;
    m_end = m_cur + 1;
    return true;
}

qint64 TFileReader::Read(void *buffer, qint64 count)
{
    if (count <= 0)
        return 0;
    const qint64 fromWindow = TakeFromWindow(buffer, count);
    const qint64 n = m_device->read(static_cast<char *>(buffer) + fromWindow, count - fromWindow);
    return fromWindow + std::max<qint64>(0, n);
}

qint64 TFileReader::Position() const
{
    return m_device->pos() - (m_end - m_cur);
}

void TFileReader::Seek(qint64 position)
{
    if (position < 0)
        ReadError();
    m_cur = m_end = nullptr;
    if (!m_device->seek(std::min(position, m_device->size())))
        throw VantryError(QStringLiteral("Cannot seek to position %1 in \"%2\": %3")
                              .arg(position)
                              .arg(m_name, m_device->errorString()));
}

qint64 TFileReader::Size() const
{
    return m_device->size();
}

TBufferedFileReader::TBufferedFileReader(const QString &fileName, qint64 bufferSize)
    : TBufferedReader(new TFileReader(fileName), true, bufferSize)
{
}

TBufferedFileReader::TBufferedFileReader(QIODevice *device, qint64 bufferSize)
    : TBufferedReader(new TFileReader(device), true, bufferSize)
{
}
