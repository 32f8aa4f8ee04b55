#pragma once
#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <string>
#include <vector>

class QIODevice;

// A streaming XML reader made for the largest parts of a workbook, its sheets. It reads UTF-8 from
// a device in blocks and hands out start tags with their attributes, end tags and text, with
// entities and character references decoded, checking what makes a sheet well formed: tags nest
// and close, attributes are quoted, one document element. It skips the XML declaration, comments
// and processing instructions, and refuses document type declarations. Views it returns stay valid
// until the next call of next().
//
//   XlsxXmlScanner xml(device);
//   while (xml.next() == XlsxXmlScanner::StartElement && xml.name() != "sheetData") {}
class XlsxXmlScanner
{
public:
    enum Token { StartElement, EndElement, Text, EndOfDocument, Invalid };

    // Reads the device in blocks of blockSize bytes (and more for a longer token).
    explicit XlsxXmlScanner(QIODevice *device, qsizetype blockSize = 256 * 1024);

    Token next();
    // The local name (without a namespace prefix) of the current start or end tag.
    QByteArrayView name() const { return m_localName; }
    // The value of an attribute of the current start tag by its name; empty when missing. A value
    // with entities is decoded into a buffer that the next decoded value reuses.
    QByteArrayView attribute(QByteArrayView name);
    // The current text, in UTF-8.
    QByteArrayView text() const { return m_text; }

    bool hasError() const { return !m_error.isEmpty(); }
    QString errorString() const { return m_error; }
    // The line the scanner stands on, counted from 1.
    qint64 lineNumber() const;

private:
    enum class Step { Done, Skipped, NeedMore, Failed };
    struct Attribute
    {
        QByteArrayView name;
        QByteArrayView value;
    };

    // Reads more of the device behind the current token, moving the token to the buffer's front;
    // false at the end of the device.
    bool fill();
    Step scanTag(Token &token);
    Step scanText(Token &token);
    Step skipPast(const char *terminator, qsizetype from);
    bool decode(QByteArrayView raw, QByteArray &out);
    Token fail(const QString &error);

    QIODevice *m_device;
    qsizetype m_blockSize;
    QByteArray m_buffer;
    qsizetype m_size = 0;   // bytes of the buffer that hold data
    qsizetype m_pos = 0;    // where the next token starts
    bool m_deviceAtEnd = false;
    bool m_started = false;  // the first block has been read
    qint64 m_linesBefore = 0;  // lines in the bytes read before the buffer's start

    std::string m_openNames;  // the names of the open elements, one after the other
    std::vector<int> m_openLengths;
    bool m_rootClosed = false;
    bool m_closeSelf = false;  // the current start tag was "<x/>": its end comes next

    QByteArrayView m_localName;
    std::vector<Attribute> m_attributes;
    QByteArrayView m_text;
    QByteArray m_decoded;  // text or an attribute value with entities decoded
    QString m_error;
};
