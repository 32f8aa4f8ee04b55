#include "core/interchange/Biff12Records.h"

#include <QIODevice>
#include <QtEndian>

#include <cstring>

double Biff12Fields::f64()
{
    char bytes[8];
    read(bytes, 8);
    const quint64 bits = qFromLittleEndian<quint64>(bytes);
    double value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

QString Biff12Fields::wideString()
{
    return wideCharacters(u32());
}

QString Biff12Fields::nullableWideString()
{
    const quint32 count = u32();
    return count == 0xFFFFFFFFu ? QString() : wideCharacters(count);
}

QString Biff12Fields::wideCharacters(quint32 count)
{
    // The count is checked against the bytes that are there before anything is allocated.
    if (!ok() || count > quint64(remaining()) / 2) {
        fail();
        return {};
    }
    return characters(int(count), true);
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
