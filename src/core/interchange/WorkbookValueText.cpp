#include "core/interchange/WorkbookValueText.h"

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

namespace {

// Appends text to a buffer that callers size for the longest text they make.
char *put(char *out, const char *text, size_t length)
{
    std::memcpy(out, text, length);
    return out + length;
}

char *putZeros(char *out, int count)
{
    std::memset(out, '0', size_t(qMax(count, 0)));
    return out + qMax(count, 0);
}

// Writes value as digits zero-padded to width.
char *digits(char *out, int value, int width)
{
    for (int i = width - 1; i >= 0; --i, value /= 10)
        out[i] = char('0' + value % 10);
    return out + width;
}

} // namespace

QString numberText(double value)
{
    if (std::isnan(value) || std::isinf(value))
        return QStringLiteral("#NUM!");
    if (value == 0)
        return QStringLiteral("0");
    // Most cells hold whole numbers: below 1E15 their digits are already the shortest exact form.
    if (std::abs(value) < 1e15 && value == std::trunc(value)) {
        char text[24];
        const auto written = std::to_chars(text, text + sizeof text, qint64(value));
        return QString::fromLatin1(text, written.ptr - text);
    }
    // The shortest round-trip digits, in scientific form: "-d.ddde+XX".
    char buffer[64];
    const auto written = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::scientific);
    const char *p = buffer;
    const char *end = written.ptr;
    // The plain form of 1E-7 has 9 characters before its up to 17 digits, that of 1E+20 up to 21
    // digits: the text fits in 48 bytes with its sign.
    char text[48];
    char *out = text;
    if (*p == '-')
        *out++ = *p++;
    char mantissa[32];
    int count = 0;
    for (; p < end && *p != 'e'; ++p)
        if (*p != '.' && count < int(sizeof mantissa))
            mantissa[count++] = *p;
    int exponent = 0;
    std::from_chars(p + 1 + (p[1] == '+'), end, exponent);

    if (exponent >= 21 || exponent < -7) {
        *out++ = mantissa[0];
        if (count > 1) {
            *out++ = '.';
            out = put(out, mantissa + 1, size_t(count - 1));
        }
        out = put(out, exponent < 0 ? "E-" : "E+", 2);
        out = std::to_chars(out, text + sizeof text, std::abs(exponent)).ptr;
    } else if (exponent < 0) {
        out = put(out, "0.", 2);
        out = putZeros(out, -exponent - 1);
        out = put(out, mantissa, size_t(count));
    } else if (count <= exponent + 1) {
        out = put(out, mantissa, size_t(count));
        out = putZeros(out, exponent + 1 - count);
    } else {
        out = put(out, mantissa, size_t(exponent + 1));
        *out++ = '.';
        out = put(out, mantissa + exponent + 1, size_t(count - exponent - 1));
    }
    return QString::fromLatin1(text, out - text);
}

namespace {

// Days since 1970-01-01 as year, month and day of the proleptic Gregorian calendar, by counting
// 400-year eras of 146,097 days from 0000-03-01, with years that start in March so that the leap
// day falls last. Built by hand because it runs for every date cell of a sheet.
char *isoDate(char *out, qint64 days)
{
    days += 719468;
    const qint64 era = (days >= 0 ? days : days - 146096) / 146097;
    const qint64 dayOfEra = days - era * 146097;
    const qint64 yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const qint64 dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const qint64 monthFromMarch = (5 * dayOfYear + 2) / 153;
    const int day = int(dayOfYear - (153 * monthFromMarch + 2) / 5 + 1);
    const int month = int(monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9);
    const int year = int(yearOfEra + era * 400 + (month <= 2 ? 1 : 0));
    out = digits(out, year, 4);
    *out++ = '-';
    out = digits(out, month, 2);
    *out++ = '-';
    return digits(out, day, 2);
}

char *isoTime(char *out, qint64 msecs)
{
    const int ms = int(msecs % 1000);
    const int seconds = int(msecs / 1000);
    out = digits(out, seconds / 3600, 2);
    *out++ = ':';
    out = digits(out, seconds / 60 % 60, 2);
    *out++ = ':';
    out = digits(out, seconds % 60, 2);
    if (ms) {
        *out++ = '.';
        out = digits(out, ms, 3);
    }
    return out;
}

// Where day 0 of each date system lies, in days since 1970-01-01.
constexpr qint64 k1904Epoch = -24107;      // 1904-01-01
constexpr qint64 k1900Epoch = -25568;      // 1899-12-31, for days 1 to 59
constexpr qint64 k1900EpochLate = -25569;  // 1899-12-30, from day 61 on

} // namespace

QString serialText(double serial, SerialKind kind, bool date1904)
{
    // Beyond 9999-12-31 or before the epoch there is no calendar date to show.
    if (kind == SerialKind::Number || !(serial >= 0) || serial >= 2958466)
        return numberText(serial);
    qint64 msecs = qint64(std::llround(serial * 86400000.0));
    const qint64 days = msecs / 86400000;
    msecs %= 86400000;
    char text[32];
    char *out = text;
    if (kind != SerialKind::Time || days != 0) {
        if (date1904)
            out = isoDate(out, k1904Epoch + days);
        else if (days == 60)
            out = put(out, "1900-02-29", 10);  // the 1900 system counts a 29 February 1900 that never was
        else
            out = isoDate(out, (days < 60 ? k1900Epoch : k1900EpochLate) + days);
        if (kind == SerialKind::Date && msecs == 0)
            return QString::fromLatin1(text, out - text);
        *out++ = ' ';
    }
    out = isoTime(out, msecs);
    return QString::fromLatin1(text, out - text);
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
