#pragma once
// The search for where a line near the end of a file begins, done the brute-force way: every
// stretch is scanned from its start to the end of the file. The reader's own search scans each
// stretch only once; the unit test and the fuzzer hold it to this one.

#include "core/interchange/VtrTypes.h"

#include <QBuffer>

#include <algorithm>
#include <vector>

inline qint64 NaiveLineStartFromEnd(const QByteArray &data, TLineTerminators mask, int lines,
                                    qint64 stretch)
{
    QBuffer buffer;
    buffer.setData(data);
    buffer.open(QIODevice::ReadOnly);
    TBufferedFileReader reader(&buffer, 5);
    for (qint64 length = stretch;; length += stretch)
    {
        const qint64 start = std::max<qint64>(0, data.size() - length);
        reader.Seek(start);
        std::vector<qint64> ends;
        while (!reader.Eof() && mask != 0)
        {
            reader.SkipLine(mask);
            ends.push_back(reader.Position());
        }
        if (qint64(ends.size()) > lines)
            return ends[ends.size() - 1 - size_t(lines)];
        if (start == 0)
            return 0;
    }
}
