#include "core/interchange/VtrFileReader.h"

#include <QStringList>

#include <algorithm>
#include <vector>

TvtrFileReader::TvtrFileReader(const QString &fileName, qint64 bufferSize)
    : TBufferedFileReader(fileName, bufferSize)
{
}

TvtrFileReader::TvtrFileReader(QIODevice *device, qint64 bufferSize)
    : TBufferedFileReader(device, bufferSize)
{
}

TLineTerminators TvtrFileReader::LineTerminatorMask(const QString &terminators)
{
    TLineTerminators mask = 0;
    const QStringList items = terminators.split(QLatin1Char(','), Qt::SkipEmptyParts);
    // Items are compared as they stand: " {CR}" with a blank is not "{CR}" and so means CR LF.
    for (const QString &item : items)
    {
        TLineTerminatorKind kind = ltCRLF; // any text not listed stands for CR LF
        if (item == QLatin1String("{EOF}"))
            kind = ltEOF;
        else if (item == QLatin1String("{CR}"))
            kind = ltCR;
        else if (item == QLatin1String("{LF}"))
            kind = ltLF;
        else if (item == QLatin1String("{CR}+{LF}"))
            kind = ltCRLF;
        else if (item == QLatin1String("{LF}+{CR}"))
            kind = ltLFCR;
        else if (item == QString(QChar(0)))
            kind = ltZero;
        mask |= LineTerminatorBit(kind);
    }
    if (mask == 0)
        return AllLineTerminators;
    return mask | LineTerminatorBit(ltEOF);
}

void TvtrFileReader::SetLineTerminator(const QString &terminators)
{
    m_terminators = LineTerminatorMask(terminators);
}

bool TvtrFileReader::CollectLineEnds(qint64 from, qint64 sync, std::vector<qint64> &ends)
{
    Seek(from);
    if (m_terminators == 0)
        return false;
    const TByteSet &stops = StopsFor(m_terminators);
    bool lineOpen = false; // bytes consumed since the last line end
    for (;;)
    {
        const qint64 position = Position();
        if (position == sync)
            return true;
        if (m_cur == m_end && !Underflow())
        {
            if (lineOpen)
            {
                if (!(m_terminators & LineTerminatorBit(ltEOF)))
                    ReadError();
                ends.push_back(position);
            }
            return false;
        }
        // Search the window, but never past sync, so the scan notices when it gets there.
        const uchar *limit = m_end;
        if (sync > position && sync - position < m_end - m_cur)
            limit = m_cur + (sync - position);
        const uchar *stop = stops.FindFirst(m_cur, limit);
        lineOpen = lineOpen || stop != m_cur;
        m_cur = stop;
        if (stop == limit)
            continue;
        const uchar first = *m_cur++;
        lineOpen = true;
        if (CompleteTerminator(first, m_terminators))
        {
            ends.push_back(Position());
            lineOpen = false;
        }
    }
}

qint64 TvtrFileReader::LineStartFromEnd(int lines, qint64 stretch)
{
    const qint64 size = Size();
    stretch = std::max<qint64>(1, stretch);
    std::vector<qint64> ends;
    qint64 start = -1;
    for (qint64 length = stretch;; length += stretch)
    {
        const qint64 newStart = std::max<qint64>(0, size - length);
        // Line ends are counted from the stretch's start, as if a line began there: a two-byte
        // terminator cut by that start counts as its second byte's own line end. Deliberate:
        // the result is the one a scan of exactly that stretch gives, whatever the stretch.
        // Each stretch is scanned once: the scan of the larger stretch stops where the previous
        // one began as soon as it is in step with it, and takes the line ends found before.
        std::vector<qint64> found;
        if (CollectLineEnds(newStart, start, found))
            found.insert(found.end(), ends.begin(), ends.end());
        ends.swap(found);
        start = newStart;
        if (lines >= 0 && qint64(ends.size()) > lines)
            return ends[ends.size() - 1 - size_t(lines)];
        if (newStart == 0)
            return 0;
    }
}

void TvtrFileReader::StartReading()
{
    // The last line is the one just before the footer lines; the same search finds both.
    m_lastLineStart = LineStartFromEnd(m_footerLineCount + 1);
    m_footerStart = m_footerLineCount < 1 ? Size() : LineStartFromEnd(m_footerLineCount);
    DetectByteOrderMark();
    if (m_forcedEncoding != encNone)
        m_encoding = m_forcedEncoding;
}

void TvtrFileReader::DetectByteOrderMark()
{
    Seek(0);
    uchar head[6] = {};
    const qint64 n = Read(head, sizeof head);
    auto starts = [&](std::initializer_list<uchar> mark) {
        return n >= qint64(mark.size()) && std::equal(mark.begin(), mark.end(), head);
    };
    // Later tests win: FF FE 00 00 is UTF-32, not UTF-16.
    m_encoding = encAnsi;
    qint64 skip = 0;
    if (starts({0xFF, 0xFE}))
        m_encoding = encUtf16LE, skip = 2;
    if (starts({0xFE, 0xFF}))
        m_encoding = encUtf16BE, skip = 2;
    if (starts({0xEF, 0xBB, 0xBF}))
        m_encoding = encUtf8, skip = 3;
    if (starts({0xFF, 0xFE, 0x00, 0x00}))
        m_encoding = encUtf32LE, skip = 4;
    if (starts({0x00, 0x00, 0xFE, 0xFF}))
        m_encoding = encUtf32BE, skip = 4;
    Seek(skip);
}

QByteArray TvtrFileReader::ReadLn()
{
    QByteArray line;
    ReadLn(line);
    return line;
}

void TvtrFileReader::ReadLn(QByteArray &line)
{
    ExtractLineInto(line, -1, m_terminators);
    ++m_linesRead;
}

char16_t TvtrFileReader::ReadChar()
{
    uchar bytes[2];
    ReadBuffer(bytes, 2);
    if (m_encoding == encUtf16BE)
        return char16_t((bytes[0] << 8) | bytes[1]);
    return char16_t(bytes[0] | (bytes[1] << 8));
}

bool TvtrFileReader::PeekChar(char16_t &character)
{
    const qint64 position = Position();
    if (Size() - position < 2)
        return false;
    character = ReadChar();
    Seek(position);
    return true;
}

QString TvtrFileReader::ReadUtf16Line()
{
    QString line;
    auto matchNext = [this](char16_t expected) {
        char16_t next;
        if (!PeekChar(next) || next != expected)
            return false;
        Skip(2);
        return true;
    };
    for (;;)
    {
        if (Eof())
        {
            if (m_terminators & LineTerminatorBit(ltEOF))
                return line;
            ReadError();
        }
        const char16_t c = ReadChar();
        if (EndsLine(c, m_terminators, matchNext))
            return line;
        line.append(QChar(c));
    }
}

QString TvtrFileReader::ReadWideLn()
{
    QString line;
    switch (m_encoding)
    {
    case encUtf16LE:
    case encUtf16BE:
        line = ReadUtf16Line();
        break;
    case encUtf8:
        line = QString::fromUtf8(ExtractLine(-1, m_terminators));
        break;
    default:
        // UTF-32 files only have their mark recognised; their lines are taken as ANSI like the rest.
        line = QString::fromLocal8Bit(ExtractLine(-1, m_terminators));
        break;
    }
    ++m_linesRead;
    return line;
}
