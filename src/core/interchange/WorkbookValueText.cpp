#include "core/interchange/WorkbookValueText.h"

#include <QDate>

#include <charconv>
#include <cmath>
#include <cstring>

SerialKind builtInFormatKind(int formatId)
{
    if (formatId >= 14 && formatId <= 17)
        return SerialKind::Date;
    if ((formatId >= 18 && formatId <= 21) || (formatId >= 45 && formatId <= 47))
        return SerialKind::Time;
    if (formatId == 22)
        return SerialKind::DateTime;
    return SerialKind::Number;
}

SerialKind formatCodeKind(QStringView code)
{
    bool day = false, month = false, hour = false, second = false;
    for (qsizetype i = 0; i < code.size(); ++i) {
        const QChar c = code[i].toLower();
        if (c == u'"') {
            // Quoted literal text.
            const qsizetype end = code.indexOf(u'"', i + 1);
            if (end < 0)
                break;
            i = end;
        } else if (c == u'[') {
            // Colours, conditions, locales and elapsed-time brackets ("[h]") say nothing of dates.
            const qsizetype end = code.indexOf(u']', i + 1);
            if (end < 0)
                break;
            const QStringView inside = code.mid(i + 1, end - i - 1);
            if (!inside.isEmpty() && (inside[0].toLower() == u'h' || inside[0].toLower() == u's'))
                hour = true;  // "[h]:mm:ss" is a duration, read as a time
            i = end;
        } else if (c == u'\\' || c == u'_' || c == u'*') {
            ++i;  // an escaped, padding or fill character
        } else if (c == u'd' || c == u'y') {
            day = true;
        } else if (c == u'm') {
            month = true;
        } else if (c == u'h') {
            hour = true;
        } else if (c == u's') {
            second = true;
        } else if (c == u'a' && code.mid(i, 5).compare(u"am/pm", Qt::CaseInsensitive) == 0) {
            hour = true;
            i += 4;
        }
    }
    // An "m" among hours or seconds and without days or years is minutes.
    const bool date = day || (month && !hour && !second);
    const bool time = hour || second;
    if (date && time)
        return SerialKind::DateTime;
    if (date)
        return SerialKind::Date;
    return time ? SerialKind::Time : SerialKind::Number;
}

QString numberText(double value)
{
    if (std::isnan(value) || std::isinf(value))
        return QStringLiteral("#NUM!");
    if (value == 0)
        return QStringLiteral("0");
    // The shortest round-trip digits, in scientific form: "-d.ddde+XX".
    char buffer[64];
    const auto written = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::scientific);
    const char *p = buffer;
    const char *end = written.ptr;
    QString text;
    text.reserve(32);
    if (*p == '-') {
        text += u'-';
        ++p;
    }
    char digits[32];
    int count = 0;
    for (; p < end && *p != 'e'; ++p)
        if (*p != '.' && count < int(sizeof digits))
            digits[count++] = *p;
    int exponent = 0;
    std::from_chars(p + 1 + (p[1] == '+'), end, exponent);

    if (exponent >= 21 || exponent < -7) {
        text += QLatin1Char(digits[0]);
        if (count > 1) {
            text += u'.';
            text += QLatin1String(digits + 1, count - 1);
        }
        text += exponent < 0 ? QStringLiteral("E-") : QStringLiteral("E+");
        text += QString::number(std::abs(exponent));
    } else if (exponent < 0) {
        text += QStringLiteral("0.");
        text += QString(-exponent - 1, u'0');
        text += QLatin1String(digits, count);
    } else if (count <= exponent + 1) {
        text += QLatin1String(digits, count);
        text += QString(exponent + 1 - count, u'0');
    } else {
        text += QLatin1String(digits, exponent + 1);
        text += u'.';
        text += QLatin1String(digits + exponent + 1, count - exponent - 1);
    }
    return text;
}

namespace {

// Writes value as digits zero-padded to width; ISO text is built by hand because it is made for
// every date cell of a sheet and Qt's formatting goes through a general formatter.
char *digits(char *out, int value, int width)
{
    for (int i = width - 1; i >= 0; --i, value /= 10)
        out[i] = char('0' + value % 10);
    return out + width;
}

QString isoDate(const QDate &date)
{
    char text[10];
    char *p = digits(text, date.year(), 4);
    *p++ = '-';
    p = digits(p, date.month(), 2);
    *p++ = '-';
    digits(p, date.day(), 2);
    return QString::fromLatin1(text, 10);
}

QString isoTime(qint64 msecs)
{
    char text[12];
    const int ms = int(msecs % 1000);
    const int seconds = int(msecs / 1000);
    char *p = digits(text, seconds / 3600, 2);
    *p++ = ':';
    p = digits(p, seconds / 60 % 60, 2);
    *p++ = ':';
    p = digits(p, seconds % 60, 2);
    if (ms) {
        *p++ = '.';
        p = digits(p, ms, 3);
    }
    return QString::fromLatin1(text, int(p - text));
}

} // namespace

QString serialText(double serial, SerialKind kind, bool date1904)
{
    // Beyond 9999-12-31 or before the epoch there is no calendar date to show.
    if (kind == SerialKind::Number || !(serial >= 0) || serial >= 2958466)
        return numberText(serial);
    qint64 msecs = qint64(std::llround(serial * 86400000.0));
    qint64 days = msecs / 86400000;
    msecs %= 86400000;
    const QString timeText = isoTime(msecs);
    if (kind == SerialKind::Time && days == 0)
        return timeText;

    QString dateText;
    if (date1904) {
        dateText = isoDate(QDate(1904, 1, 1).addDays(days));
    } else if (days == 60) {
        // The 1900 system counts a 29 February 1900 that never was; it is shown as the system has it.
        dateText = QStringLiteral("1900-02-29");
    } else {
        // Days 1 to 59 run from 1900-01-01; from day 61 on the phantom leap day is skipped.
        dateText = isoDate((days < 60 ? QDate(1899, 12, 31) : QDate(1899, 12, 30)).addDays(days));
    }
    if (kind == SerialKind::Date && msecs == 0)
        return dateText;
    return dateText + u' ' + timeText;
}

double rkNumber(quint32 rk)
{
    double value;
    if (rk & 2) {
        value = double(qint32(rk) >> 2);
    } else {
        const quint64 bits = quint64(rk & 0xFFFFFFFCu) << 32;
        std::memcpy(&value, &bits, sizeof value);
    }
    return rk & 1 ? value / 100 : value;
}

QString cellErrorText(quint8 code)
{
    switch (code) {
    case 0x00: return QStringLiteral("#NULL!");
    case 0x07: return QStringLiteral("#DIV/0!");
    case 0x0F: return QStringLiteral("#VALUE!");
    case 0x17: return QStringLiteral("#REF!");
    case 0x1D: return QStringLiteral("#NAME?");
    case 0x24: return QStringLiteral("#NUM!");
    case 0x2A: return QStringLiteral("#N/A");
    case 0x2B: return QStringLiteral("#GETTING_DATA");
    default: return QStringLiteral("#ERROR!");
    }
}
