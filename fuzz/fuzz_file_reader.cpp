// Fuzzes the text file reader: random bytes read line by line under a terminator text, buffer
// size, header and footer counts and forced encoding taken from the first input bytes. Checks
// that every line read moves the reader on (no endless loop) and that the stretch-by-stretch
// search for the last lines agrees with rescanning every stretch in full.

#include "core/base/VantryError.h"
#include "core/interchange/VtrFileReader.h"
#include "../tests/core/interchange/LineStartOracle.h"

#include <QBuffer>
#include <QStringList>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 4)
        return 0;
    static const QStringList terminators = {
        "", "{CR}", "{LF}", "{CR}+{LF}", "{LF}+{CR}", QString(QChar(0)), "{EOF}",
        "{CR},{LF}", "{CR}+{LF},{LF}+{CR}", "{TAB}", "{LF},{CR}+{LF}," + QString(QChar(0))};
    const QString terminator = terminators.at(data[0] % terminators.size());
    const qint64 bufferSize = 1 + data[1] % 64;
    const int footerLines = data[2] % 5;
    const int headerLines = data[3] % 4;
    const auto forced = TvtrEncoding((data[3] >> 4) % 7);
    const QByteArray content(reinterpret_cast<const char *>(data) + 4, qsizetype(size - 4));

    QBuffer device;
    device.setData(content);
    device.open(QIODevice::ReadOnly);
    try
    {
        TvtrFileReader reader(&device, bufferSize);
        reader.SetLineTerminator(terminator);
        reader.SetFooterLineCount(footerLines);
        reader.SetHeaderLineCount(headerLines);
        const qint64 stretch = 1 + data[1] % 7;
        for (int lines = 0; lines < 4; ++lines)
            if (reader.LineStartFromEnd(lines, stretch) !=
                NaiveLineStartFromEnd(content, reader.LineTerminators(), lines, stretch))
                abort();
        reader.SetForcedEncoding(forced);
        reader.StartReading();
        const bool wide = data[2] & 0x80;
        while (!reader.Eof())
        {
            const qint64 before = reader.Position();
            if (wide)
                reader.ReadWideLn();
            else
                reader.ReadLn();
            if (reader.Position() <= before)
                abort();
            (void)reader.IsHeaderLine();
            (void)reader.IsFooterLine();
            (void)reader.IsLastLine();
        }
    }
    catch (const VantryError &)
    {
    }
    return 0;
}
