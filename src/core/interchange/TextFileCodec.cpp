#include "core/interchange/TextFileCodec.h"

#include "core/base/SavedFile.h"
#include "core/base/VantryError.h"

#include <QFile>
#include <QStringDecoder>

namespace TextFileCodec {

namespace {

// Strict UTF-8: no stray continuation bytes, no overlong forms, no surrogates, nothing past U+10FFFF.
bool isValidUtf8(const QByteArray &bytes)
{
    const auto *p = reinterpret_cast<const unsigned char *>(bytes.constData());
    const auto *end = p + bytes.size();
    while (p < end) {
        const unsigned char c = *p;
        if (c < 0x80) {
            ++p;
            continue;
        }
        int extra = 0;
        unsigned min = 0;
        unsigned cp = 0;
        if ((c & 0xE0) == 0xC0) {
            extra = 1, min = 0x80, cp = c & 0x1F;
        } else if ((c & 0xF0) == 0xE0) {
            extra = 2, min = 0x800, cp = c & 0x0F;
        } else if ((c & 0xF8) == 0xF0) {
            extra = 3, min = 0x10000, cp = c & 0x07;
        } else {
            return false;
        }
        if (end - p <= extra)
            return false;
        for (int i = 1; i <= extra; ++i) {
            if ((p[i] & 0xC0) != 0x80)
                return false;
            cp = (cp << 6) | (p[i] & 0x3F);
        }
        if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF))
            return false;
        p += extra + 1;
    }
    return true;
}

bool fitsLatin1(const QString &text)
{
    for (QChar ch : text)
        if (ch.unicode() > 0xFF)
            return false;
    return true;
}

} // namespace

Decoded decode(const QByteArray &bytes)
{
    if (isValidUtf8(bytes))
        return {bytes, Encoding::Utf8};
    return {QString::fromLatin1(bytes).toUtf8(), Encoding::Latin1};
}

QByteArray encode(const QString &text, Encoding preferred)
{
    if (preferred == Encoding::Latin1 && fitsLatin1(text))
        return text.toLatin1();
    return text.toUtf8();
}

Decoded readFile(const QString &fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        throw VantryError(QStringLiteral("Cannot open \"%1\": %2").arg(fileName, file.errorString()));
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        throw VantryError(QStringLiteral("Cannot read \"%1\": %2").arg(fileName, file.errorString()));
    return decode(bytes);
}

void writeFile(const QString &fileName, const QString &text, Encoding preferred)
{
    const QString cause = saveWholeFile(fileName, encode(text, preferred));
    if (!cause.isEmpty())
        throw VantryError(QStringLiteral("Cannot save \"%1\": %2").arg(fileName, cause));
}

} // namespace TextFileCodec
