#pragma once
#include "core/interchange/BiffRecords.h"

#include <QByteArray>
#include <QString>

class QIODevice;

// The fields of one BIFF12 record, read from the front as BIFF8 fields are (reading past the end
// yields zeros and clears ok()), with the field types BIFF12 adds.
class Biff12Fields : public BiffFields
{
public:
    using BiffFields::BiffFields;

    double f64();
    // An XLWideString: a character count, then UTF-16LE characters.
    QString wideString();
    // An XLNullableWideString, whose count 0xFFFFFFFF means no string.
    QString nullableWideString();

private:
    QString wideCharacters(quint32 count);
};

// Reads the records of a BIFF12 part from a device as it streams: each record is a type of one or
// two bytes and a size of one to four bytes, seven bits a byte, followed by its data.
class Biff12RecordReader
{
public:
    static constexpr int kMaxRecordSize = 16 * 1024 * 1024;

    explicit Biff12RecordReader(QIODevice *device) : m_device(device) {}

    // The next record; false at the end of the part or when it is damaged (then error() says why).
    bool next();
    int type() const { return m_type; }
    Biff12Fields fields() const { return Biff12Fields(m_data.constData(), m_size); }
    QString error() const { return m_error; }

private:
    bool readVarint(int maxBytes, int &value, bool &atEnd);

    QIODevice *m_device;
    QByteArray m_data;
    int m_type = 0;
    int m_size = 0;
    QString m_error;
};
