#pragma once
// Text and number conversions of the QVX header and values: the tag search that takes an
// element's text, the integer and boolean readings of element texts (with the conversion
// errors a caller sees for malformed headers), and the day numbers of dates.

#include <QDateTime>
#include <QString>

namespace QvxConvert {

// The text after the first "<name>" up to the first "</name>" after it; empty when either is
// missing. A plain tag search, not an XML parse: nothing is unescaped.
QString TakeElement(const QString &text, QStringView name);

// Decimal (or "$"/"0x" hexadecimal) text to a 32-bit integer; otherwise raises
// "'<text>' is not a valid integer value".
qint32 StrToInt(const QString &text);
// "true"/"false" in any case, or a number (0 is false); otherwise raises
// "'<text>' is not a valid boolean value".
bool StrToBool(const QString &text);
inline QString BoolToStr(bool value)
{
    return value ? QStringLiteral("true") : QStringLiteral("false");
}

// Days since 1899-12-30; the fraction is the time of day (for negative numbers too, where the
// whole part is the day and the fraction counts forward from its midnight).
QDateTime OleToDateTime(double days);
double DateTimeToOle(const QDateTime &value);

// The number a dual field writes for a date. It divides the seconds since 1970-01-01 by the
// milliseconds of a day, so every date lands within a few weeks of 25569 (1970-01-01). This is
// deliberate and must stay: files written so are read that way.
double DualDateNumber(const QDateTime &value);

// The header's date-time text "YYYY-MM-DD HH:NN:SS".
QString FormatHeaderDateTime(const QDateTime &value);
QDateTime ParseHeaderDateTime(const QString &text);

} // namespace QvxConvert
