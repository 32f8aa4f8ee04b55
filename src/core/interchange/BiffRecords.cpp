#include "core/interchange/BiffRecords.h"

#include <QStringDecoder>
#include <QtEndian>

#include <cstring>

BiffRecordStream::BiffRecordStream(const QByteArray &stream, qint64 offset)
    : m_begin(stream.constData()), m_end(m_begin + stream.size()),
      m_next(offset >= 0 && offset <= stream.size() ? m_begin + offset : m_end)
{
}

bool BiffRecordStream::next()
{
    if (m_end - m_next < 4) {
        m_cutShort = m_next != m_end;
        m_next = m_end;
        return false;
    }
    m_type = qFromLittleEndian<quint16>(m_next);
    m_size = qFromLittleEndian<quint16>(m_next + 2);
    if (m_end - m_next - 4 < m_size) {
        m_cutShort = true;
        m_next = m_end;
        return false;
    }
    m_data = m_next + 4;
    m_next = m_data + m_size;
    return true;
}

int BiffRecordStream::nextType() const
{
    return m_end - m_next >= 4 ? qFromLittleEndian<quint16>(m_next) : -1;
}

BiffFields::BiffFields(BiffRecordStream &records) : m_segments{{records.data(), records.size()}}
{
    while (records.nextType() == BiffRecord::Continue && records.next())
        m_segments.push_back({records.data(), records.size()});
}

bool BiffFields::atEnd() const
{
    for (size_t i = m_segment; i < m_segments.size(); ++i)
        if (m_segments[i].size > (i == m_segment ? m_pos : 0))
            return false;
    return true;
}

qint64 BiffFields::remaining() const
{
    qint64 bytes = 0;
    for (size_t i = m_segment; i < m_segments.size(); ++i)
        bytes += m_segments[i].size - (i == m_segment ? m_pos : 0);
    return bytes;
}

bool BiffFields::reachData()
{
    while (m_segment < m_segments.size() && m_pos == m_segments[m_segment].size) {
        ++m_segment;
        m_pos = 0;
    }
    return m_segment < m_segments.size();
}

bool BiffFields::read(void *out, int bytes)
{
    auto *to = static_cast<char *>(out);
    std::memset(to, 0, size_t(bytes));
    while (m_ok && bytes > 0) {
        if (!reachData()) {
            m_ok = false;
            break;
        }
        const Segment &segment = m_segments[m_segment];
        const int n = qMin(bytes, segment.size - m_pos);
        std::memcpy(to, segment.data + m_pos, size_t(n));
        m_pos += n;
        to += n;
        bytes -= n;
    }
    return m_ok;
}

quint8 BiffFields::u8()
{
    quint8 value;
    read(&value, 1);
    return value;
}

quint16 BiffFields::u16()
{
    char bytes[2];
    read(bytes, 2);
    return qFromLittleEndian<quint16>(bytes);
}

quint32 BiffFields::u32()
{
    char bytes[4];
    read(bytes, 4);
    return qFromLittleEndian<quint32>(bytes);
}

void BiffFields::skip(qint64 bytes)
{
    while (m_ok && bytes > 0) {
        if (!reachData()) {
            m_ok = false;
            break;
        }
        const int n = int(qMin<qint64>(bytes, m_segments[m_segment].size - m_pos));
        m_pos += n;
        bytes -= n;
    }
}

QString BiffFields::characters(int count, bool wide)
{
    QString text(count, Qt::Uninitialized);
    auto *out = reinterpret_cast<char16_t *>(text.data());
    int done = 0;
    while (done < count && m_ok) {
        if (m_segment < m_segments.size() && m_pos == m_segments[m_segment].size) {
            // The characters go on in the next CONTINUE record, which starts with a flags byte of
            // its own: the rest of the string may be stored one byte or two a character.
            ++m_segment;
            m_pos = 0;
            wide = u8() & 0x01;
            continue;
        }
        if (m_segment >= m_segments.size()) {
            m_ok = false;
            break;
        }
        const Segment &segment = m_segments[m_segment];
        const int width = wide ? 2 : 1;
        const int n = qMin(count - done, (segment.size - m_pos) / width);
        if (n == 0) {
            m_ok = false;  // half a character before the join
            break;
        }
        const char *in = segment.data + m_pos;
        if (wide) {
            qFromLittleEndian<quint16>(in, n, out + done);
        } else {
            for (int i = 0; i < n; ++i)
                out[done + i] = char16_t(quint8(in[i]));
        }
        done += n;
        m_pos += n * width;
    }
    return m_ok ? text : QString();
}

QString BiffFields::unicodeString(int countBytes)
{
    const int count = countBytes == 1 ? u8() : u16();
    const quint8 flags = u8();
    const int runs = flags & 0x08 ? u16() : 0;
    const quint32 phonetic = flags & 0x04 ? u32() : 0;
    QString text = characters(count, flags & 0x01);
    skip(qint64(runs) * 4);  // each run: a character position and a font
    skip(phonetic);
    return m_ok ? text : QString();
}

QString BiffFields::byteString(int countBytes, QStringDecoder &decoder)
{
    const int count = countBytes == 1 ? u8() : u16();
    QByteArray bytes(count, Qt::Uninitialized);
    if (!read(bytes.data(), count))
        return {};
    decoder.resetState();
    return decoder.decode(bytes);
}
