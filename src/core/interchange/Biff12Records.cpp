#include "core/interchange/Biff12Records.h"

#include <QIODevice>
#include <QtEndian>

#include <cstring>

bool Biff12Fields::take(int bytes)
{
    if (!m_ok || bytes < 0 || bytes > m_size - m_pos) {
        m_ok = false;
        return false;
    }
    return true;
}

quint8 Biff12Fields::u8()
{
    if (!take(1))
        return 0;
    return quint8(m_data[m_pos++]);
}

quint16 Biff12Fields::u16()
{
    if (!take(2))
        return 0;
    const quint16 value = qFromLittleEndian<quint16>(m_data + m_pos);
    m_pos += 2;
    return value;
}

quint32 Biff12Fields::u32()
{
    if (!take(4))
        return 0;
    const quint32 value = qFromLittleEndian<quint32>(m_data + m_pos);
    m_pos += 4;
    return value;
}

double Biff12Fields::f64()
{
    if (!take(8))
        return 0;
    const quint64 bits = qFromLittleEndian<quint64>(m_data + m_pos);
    m_pos += 8;
    double value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

QString Biff12Fields::wideString()
{
    const quint32 count = u32();
    // The count is checked against the bytes that are there before anything is allocated.
    if (!m_ok || count > quint32(m_size - m_pos) / 2) {
        m_ok = false;
        return {};
    }
    QString text(int(count), Qt::Uninitialized);
    for (quint32 i = 0; i < count; ++i)
        text[int(i)] = QChar(qFromLittleEndian<quint16>(m_data + m_pos + 2 * i));
    m_pos += int(count) * 2;
    return text;
}

QString Biff12Fields::nullableWideString()
{
    if (take(4) && qFromLittleEndian<quint32>(m_data + m_pos) == 0xFFFFFFFFu) {
        m_pos += 4;
        return {};
    }
    return wideString();
}

void Biff12Fields::skip(int bytes)
{
    if (take(bytes))
        m_pos += bytes;
}

bool Biff12RecordReader::readVarint(int maxBytes, int &value, bool &atEnd)
{
    value = 0;
    for (int i = 0; i < maxBytes; ++i) {
        char byte;
        if (!m_device->getChar(&byte)) {
            atEnd = i == 0;
            return false;
        }
        value |= (quint8(byte) & 0x7F) << (7 * i);
        if (!(quint8(byte) & 0x80))
            return true;
    }
    // A type of more than two bytes or a size of more than four is no record.
    return false;
}

bool Biff12RecordReader::next()
{
    bool atEnd = false;
    if (!readVarint(2, m_type, atEnd)) {
        if (!atEnd)
            m_error = QStringLiteral("a record header is damaged");
        return false;
    }
    if (!readVarint(4, m_size, atEnd)) {
        m_error = QStringLiteral("a record header is damaged");
        return false;
    }
    if (m_size > kMaxRecordSize) {
        m_error = QStringLiteral("a record claims %1 bytes, more than a record holds").arg(m_size);
        return false;
    }
    if (m_data.size() < m_size)
        m_data.resize(m_size);
    for (qint64 got = 0; got < m_size;) {
        const qint64 part = m_device->read(m_data.data() + got, m_size - got);
        if (part <= 0) {
            m_error = QStringLiteral("the last record is cut short");
            return false;
        }
        got += part;
    }
    return true;
}
