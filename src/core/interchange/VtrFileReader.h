#pragma once
// TvtrFileReader: the buffered line reader of text files. It detects a byte-order mark, ends
// lines at a chosen set of terminators, counts the lines it has read and knows which lines are
// header and footer lines. The QVX reader uses it for its byte reads and zero-terminated strings.

#include "core/interchange/VtrTypes.h"

#include <QString>

// Encodings StartReading detects from the byte-order mark.
enum TvtrEncoding : quint8 {
    encNone = 0,      // not detected yet; lines read as ANSI
    encAnsi = 1,      // no mark
    encUtf8 = 2,      // EF BB BF
    encUtf16LE = 3,   // FF FE
    encUtf16BE = 4,   // FE FF
    encUtf32LE = 5,   // FF FE 00 00
    encUtf32BE = 6,   // 00 00 FE FF
};

class TvtrFileReader : public TBufferedFileReader
{
public:
    // The stretch by which the search for the last lines grows backwards from the end.
    static constexpr qint64 TailStretch = 65536;

    TvtrFileReader(const QString &fileName, qint64 bufferSize);
    // Reads an open device the caller keeps alive (in-memory data).
    TvtrFileReader(QIODevice *device, qint64 bufferSize);

    // A comma-separated list of "{EOF}", "{CR}", "{LF}", "{CR}+{LF}", "{LF}+{CR}" and the single
    // zero character; any other item stands for CR LF. An empty list means kinds 0 to 5, and a
    // non-empty mask always includes end of file.
    void SetLineTerminator(const QString &terminators);
    TLineTerminators LineTerminators() const { return m_terminators; }
    static TLineTerminators LineTerminatorMask(const QString &terminators);

    // Finds the last-line and footer positions, then moves to the start of the data just past
    // the byte-order mark.
    void StartReading();

    // One line of bytes without the terminator; counts it.
    QByteArray ReadLn();
    // The same into `line`, reusing its memory: the loop form for reading a whole file.
    void ReadLn(QByteArray &line);
    // The same line decoded by the encoding; counts it.
    QString ReadWideLn();
    // One 16-bit character: high byte first in big-endian UTF-16, otherwise low byte first.
    char16_t ReadChar();

    bool IsHeaderLine() const { return m_linesRead <= m_headerLineCount; }
    bool IsFooterLine() const { return m_footerLineCount > 0 && Position() > m_footerStart; }
    bool IsLastLine() const { return Position() > m_lastLineStart; }

    // Where the line lines places before the last line start begins: with lines = 0 it is the
    // start of what follows the last terminator; with 1, the start of the last line. Collects
    // line ends in stretches that grow backwards from the end of the file by stretch bytes.
    qint64 LineStartFromEnd(int lines, qint64 stretch = TailStretch);

    int FooterLineCount() const { return m_footerLineCount; }
    void SetFooterLineCount(int count) { m_footerLineCount = count; }
    int HeaderLineCount() const { return m_headerLineCount; }
    void SetHeaderLineCount(int count) { m_headerLineCount = count; }
    int LinesRead() const { return m_linesRead; }
    qint64 FooterStart() const { return m_footerStart; }
    qint64 LastLineStart() const { return m_lastLineStart; }
    TvtrEncoding Encoding() const { return m_encoding; }
    TvtrEncoding ForcedEncoding() const { return m_forcedEncoding; }
    // encNone lets StartReading keep what it detects.
    void SetForcedEncoding(TvtrEncoding encoding) { m_forcedEncoding = encoding; }

private:
    void DetectByteOrderMark();
    // The line ends (positions just past each terminator) from position from to the end of the
    // file, appended to ends. Stops early, returning true, when the scan reaches position sync
    // at the start of a line or inside one: from there on it would repeat the line ends already
    // collected from sync.
    bool CollectLineEnds(qint64 from, qint64 sync, std::vector<qint64> &ends);
    QString ReadUtf16Line();
    bool PeekChar(char16_t &character);

    int m_footerLineCount = 0;
    TLineTerminators m_terminators = AllLineTerminators;
    int m_linesRead = 0;
    int m_headerLineCount = 0;
    qint64 m_footerStart = 0;
    qint64 m_lastLineStart = 0;
    TvtrEncoding m_encoding = encNone;
    TvtrEncoding m_forcedEncoding = encNone;
};
