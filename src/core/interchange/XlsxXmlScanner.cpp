#include "core/interchange/XlsxXmlScanner.h"

#include <QIODevice>

#include <algorithm>
#include <charconv>
#include <cstring>

namespace {

// No tag or text of a sheet comes near this: a cell holds at most 32,767 characters.
constexpr qsizetype kMaxToken = 64 * 1024 * 1024;

bool isSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

bool endsName(char c)
{
    return isSpace(c) || c == '>' || c == '/' || c == '=' || c == '<' || c == '"' || c == '\'';
}

QByteArrayView localPart(QByteArrayView name)
{
    for (qsizetype i = name.size() - 1; i >= 0; --i)
        if (name[i] == ':')
            return name.sliced(i + 1);
    return name;
}

const char *find(const char *from, const char *end, char c)
{
    return from < end ? static_cast<const char *>(std::memchr(from, c, size_t(end - from))) : nullptr;
}

const char *find(const char *from, const char *end, const char *text)
{
    const size_t length = std::strlen(text);
    const char *found = std::search(from, end, text, text + length);
    return found == end ? nullptr : found;
}

void appendUtf8(QByteArray &out, char32_t code)
{
    if (code < 0x80) {
        out += char(code);
    } else if (code < 0x800) {
        out += char(0xC0 | (code >> 6));
        out += char(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        out += char(0xE0 | (code >> 12));
        out += char(0x80 | ((code >> 6) & 0x3F));
        out += char(0x80 | (code & 0x3F));
    } else {
        out += char(0xF0 | (code >> 18));
        out += char(0x80 | ((code >> 12) & 0x3F));
        out += char(0x80 | ((code >> 6) & 0x3F));
        out += char(0x80 | (code & 0x3F));
    }
}

} // namespace

XlsxXmlScanner::XlsxXmlScanner(QIODevice *device, qsizetype blockSize) : m_device(device), m_blockSize(qMax<qsizetype>(blockSize, 16))
{
}

XlsxXmlScanner::Token XlsxXmlScanner::fail(const QString &error)
{
    if (m_error.isEmpty())
        m_error = error;
    return Invalid;
}

qint64 XlsxXmlScanner::lineNumber() const
{
    return m_linesBefore + std::count(m_buffer.constData(), m_buffer.constData() + m_pos, '\n') + 1;
}

bool XlsxXmlScanner::fill()
{
    if (m_deviceAtEnd || hasError())
        return false;
    if (m_pos > 0) {
        m_linesBefore += std::count(m_buffer.constData(), m_buffer.constData() + m_pos, '\n');
        std::memmove(m_buffer.data(), m_buffer.constData() + m_pos, size_t(m_size - m_pos));
        m_size -= m_pos;
        m_pos = 0;
    }
    if (m_size == m_buffer.size()) {
        // A token fills the whole buffer: it doubles, so a long token is scanned again only as
        // often as the buffer doubles, however little the device gives a read.
        if (m_buffer.size() >= kMaxToken) {
            fail(QStringLiteral("a tag or text is longer than %1 MB").arg(kMaxToken >> 20));
            return false;
        }
        m_buffer.resize(qMax(m_blockSize, m_buffer.size() * 2));
    }
    const bool first = !m_started;
    const qsizetype before = m_size;
    while (m_size < m_buffer.size()) {
        const qint64 read = m_device->read(m_buffer.data() + m_size, m_buffer.size() - m_size);
        if (read <= 0) {
            m_deviceAtEnd = true;
            break;
        }
        m_size += read;
    }
    if (m_size == before)
        return false;
    m_started = true;
    // A byte order mark before the document says UTF-8 and is no part of it.
    if (first && m_size >= 3 && std::memcmp(m_buffer.constData(), "\xEF\xBB\xBF", 3) == 0)
        m_pos = 3;
    return true;
}

XlsxXmlScanner::Token XlsxXmlScanner::next()
{
    if (hasError())
        return Invalid;
    if (m_closeSelf) {
        // The end of "<x/>", whose name views still stand on the tag.
        m_closeSelf = false;
        m_openNames.resize(m_openNames.size() - size_t(m_openLengths.back()));
        m_openLengths.pop_back();
        m_rootClosed = m_openLengths.empty();
        return EndElement;
    }
    for (;;) {
        if (m_pos == m_size && !fill()) {
            if (hasError())
                return Invalid;
            if (!m_openLengths.empty())
                return fail(QStringLiteral("the document ends inside the element <%1>")
                                .arg(QString::fromUtf8(m_openNames.data() + m_openNames.size() - m_openLengths.back(),
                                                       m_openLengths.back())));
            if (!m_rootClosed)
                return fail(QStringLiteral("the document holds no element"));
            return EndOfDocument;
        }
        Token token = Invalid;
        const Step step = m_buffer[m_pos] == '<' ? scanTag(token) : scanText(token);
        if (step == Step::Done)
            return token;
        if (step == Step::Failed)
            return Invalid;
        // A skipped comment or declaration goes round again, and a token cut by the buffer's end
        // is scanned again once more is read (at the device's end, the scan reports what is cut).
        if (step == Step::NeedMore && !fill() && hasError())
            return Invalid;
    }
}

XlsxXmlScanner::Step XlsxXmlScanner::scanText(Token &token)
{
    const char *begin = m_buffer.constData() + m_pos;
    const char *end = m_buffer.constData() + m_size;
    const char *lt = find(begin, end, '<');
    if (!lt && !m_deviceAtEnd)
        return Step::NeedMore;
    const QByteArrayView raw(begin, (lt ? lt : end) - begin);
    m_pos += raw.size();
    if (m_openLengths.empty()) {
        if (!std::all_of(raw.begin(), raw.end(), isSpace)) {
            fail(QStringLiteral("there is text outside the document element"));
            return Step::Failed;
        }
        return Step::Skipped;
    }
    if (find(raw.data(), raw.data() + raw.size(), '&')) {
        if (!decode(raw, m_decoded))
            return Step::Failed;
        m_text = m_decoded;
    } else {
        m_text = raw;
    }
    token = Text;
    return Step::Done;
}

XlsxXmlScanner::Step XlsxXmlScanner::skipPast(const char *terminator, qsizetype from)
{
    const char *begin = m_buffer.constData() + m_pos;
    const char *found = find(begin + from, m_buffer.constData() + m_size, terminator);
    if (!found) {
        if (!m_deviceAtEnd)
            return Step::NeedMore;
        fail(QStringLiteral("the document ends inside a comment or declaration"));
        return Step::Failed;
    }
    m_pos = found + std::strlen(terminator) - m_buffer.constData();
    return Step::Skipped;
}

XlsxXmlScanner::Step XlsxXmlScanner::scanTag(Token &token)
{
    const char *begin = m_buffer.constData() + m_pos;
    const char *end = m_buffer.constData() + m_size;
    auto cut = [this] {
        if (!m_deviceAtEnd)
            return Step::NeedMore;
        fail(QStringLiteral("the document ends inside a tag"));
        return Step::Failed;
    };
    auto failed = [this](const QString &error) {
        fail(error);
        return Step::Failed;
    };
    if (end - begin < 9 && !m_deviceAtEnd)
        return Step::NeedMore;  // enough to tell every kind of tag apart
    if (end - begin < 2)
        return cut();

    if (begin[1] == '?')
        return skipPast("?>", 2);
    if (begin[1] == '!') {
        if (end - begin >= 4 && std::memcmp(begin, "<!--", 4) == 0)
            return skipPast("-->", 4);
        if (end - begin >= 9 && std::memcmp(begin, "<![CDATA[", 9) == 0) {
            const char *close = find(begin + 9, end, "]]>");
            if (!close)
                return cut();
            if (m_openLengths.empty())
                return failed(QStringLiteral("there is text outside the document element"));
            m_text = QByteArrayView(begin + 9, close - begin - 9);
            m_pos = close + 3 - m_buffer.constData();
            token = Text;
            return Step::Done;
        }
        return failed(QStringLiteral("document type declarations are not supported"));
    }

    if (begin[1] == '/') {
        const char *gt = find(begin + 2, end, '>');
        if (!gt)
            return cut();
        const char *nameEnd = gt;
        while (nameEnd > begin + 2 && isSpace(nameEnd[-1]))
            --nameEnd;
        const QByteArrayView name(begin + 2, nameEnd - begin - 2);
        const bool matches = !m_openLengths.empty() && m_openLengths.back() == name.size()
                             && std::memcmp(m_openNames.data() + m_openNames.size() - name.size(), name.data(), size_t(name.size())) == 0;
        if (!matches)
            return failed(QStringLiteral("the end tag </%1> does not close the element open there").arg(QString::fromUtf8(name)));
        m_openNames.resize(m_openNames.size() - size_t(name.size()));
        m_openLengths.pop_back();
        m_rootClosed = m_openLengths.empty();
        m_localName = localPart(name);
        m_pos = gt + 1 - m_buffer.constData();
        token = EndElement;
        return Step::Done;
    }

    const char *p = begin + 1;
    while (p < end && !endsName(*p))
        ++p;
    if (p == end)
        return cut();
    if (p == begin + 1)
        return failed(QStringLiteral("a tag has no name"));
    const QByteArrayView name(begin + 1, p - begin - 1);
    m_attributes.clear();
    bool selfClosing = false;
    for (;;) {
        while (p < end && isSpace(*p))
            ++p;
        if (p == end)
            return cut();
        if (*p == '>') {
            ++p;
            break;
        }
        if (*p == '/') {
            if (p + 1 == end)
                return cut();
            if (p[1] != '>')
                return failed(QStringLiteral("the tag <%1> is not closed").arg(QString::fromUtf8(name)));
            selfClosing = true;
            p += 2;
            break;
        }
        const char *attributeStart = p;
        while (p < end && !endsName(*p))
            ++p;
        if (p == end)
            return cut();
        if (p == attributeStart)
            return failed(QStringLiteral("the tag <%1> is not closed").arg(QString::fromUtf8(name)));
        const QByteArrayView attributeName(attributeStart, p - attributeStart);
        while (p < end && isSpace(*p))
            ++p;
        if (p == end)
            return cut();
        if (*p != '=')
            return failed(QStringLiteral("the attribute %1 has no value").arg(QString::fromUtf8(attributeName)));
        ++p;
        while (p < end && isSpace(*p))
            ++p;
        if (p == end)
            return cut();
        const char quote = *p;
        if (quote != '"' && quote != '\'')
            return failed(QStringLiteral("the value of the attribute %1 is not quoted").arg(QString::fromUtf8(attributeName)));
        const char *close = find(p + 1, end, quote);
        if (!close)
            return cut();
        const QByteArrayView value(p + 1, close - p - 1);
        if (find(value.data(), close, '<'))
            return failed(QStringLiteral("the value of the attribute %1 holds a \"<\"").arg(QString::fromUtf8(attributeName)));
        m_attributes.push_back({attributeName, value});
        p = close + 1;
        if (p < end && !isSpace(*p) && *p != '>' && *p != '/')
            return failed(QStringLiteral("the attributes of <%1> are not separated").arg(QString::fromUtf8(name)));
    }
    if (m_rootClosed)
        return failed(QStringLiteral("there is more after the document element"));
    m_openNames.append(name.data(), size_t(name.size()));
    m_openLengths.push_back(int(name.size()));
    m_closeSelf = selfClosing;
    m_localName = localPart(name);
    m_pos = p - m_buffer.constData();
    token = StartElement;
    return Step::Done;
}

QByteArrayView XlsxXmlScanner::attribute(QByteArrayView name)
{
    for (const Attribute &attribute : m_attributes) {
        if (attribute.name != name)
            continue;
        if (!find(attribute.value.data(), attribute.value.data() + attribute.value.size(), '&'))
            return attribute.value;
        return decode(attribute.value, m_decoded) ? QByteArrayView(m_decoded) : QByteArrayView();
    }
    return {};
}

bool XlsxXmlScanner::decode(QByteArrayView raw, QByteArray &out)
{
    out.clear();
    const char *p = raw.data();
    const char *end = p + raw.size();
    while (p < end) {
        const char *amp = find(p, end, '&');
        if (!amp) {
            out.append(p, end - p);
            break;
        }
        out.append(p, amp - p);
        const char *semicolon = find(amp, qMin(end, amp + 12), ';');
        if (!semicolon) {
            fail(QStringLiteral("an entity reference is not closed"));
            return false;
        }
        const QByteArrayView entity(amp + 1, semicolon - amp - 1);
        if (entity == "lt") {
            out += '<';
        } else if (entity == "gt") {
            out += '>';
        } else if (entity == "amp") {
            out += '&';
        } else if (entity == "quot") {
            out += '"';
        } else if (entity == "apos") {
            out += '\'';
        } else if (entity.size() > 1 && entity[0] == '#') {
            const bool hex = entity[1] == 'x';
            const char *digits = entity.data() + (hex ? 2 : 1);
            quint32 code = 0;
            const auto parsed = std::from_chars(digits, semicolon, code, hex ? 16 : 10);
            if (parsed.ec != std::errc() || parsed.ptr != semicolon || code == 0 || code > 0x10FFFF
                || (code >= 0xD800 && code <= 0xDFFF)) {
                fail(QStringLiteral("the character reference &%1; is not valid").arg(QString::fromUtf8(entity)));
                return false;
            }
            appendUtf8(out, char32_t(code));
        } else {
            fail(QStringLiteral("the entity &%1; is not known").arg(QString::fromUtf8(entity)));
            return false;
        }
        p = semicolon + 1;
    }
    return true;
}
