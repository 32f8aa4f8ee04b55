#include "core/interchange/QvxConvert.h"

#include "core/base/VantryError.h"

#include <cmath>

namespace QvxConvert {

namespace {

const QDate OleEpoch(1899, 12, 30);
constexpr qint64 MsecsPerDay = 86400000;
// 0001-01-01 and 9999-12-31 as day numbers: the range a date can take.
constexpr double MinOleDay = -693593.0;
constexpr double MaxOleDay = 2958466.0;
constexpr double UnixEpochDay = 25569.0;

const QString HeaderDateTimeFormat = QStringLiteral("yyyy-MM-dd HH:mm:ss");

} // namespace

QString TakeElement(const QString &text, QStringView name)
{
    const QString open = QLatin1Char('<') + name.toString() + QLatin1Char('>');
    const QString close = QLatin1String("</") + name.toString() + QLatin1Char('>');
    const qsizetype start = text.indexOf(open);
    if (start < 0)
        return QString();
    const qsizetype from = start + open.size();
    const qsizetype end = text.indexOf(close, from);
    if (end < 0)
        return QString();
    return text.mid(from, end - from);
}

qint32 StrToInt(const QString &text)
{
    QString digits = text;
    while (!digits.isEmpty() && digits.front().isSpace())
        digits.remove(0, 1);
    bool ok = false;
    qint32 value = digits.toInt(&ok, 10);
    if (!ok)
    {
        bool negative = digits.startsWith(QLatin1Char('-'));
        QString hex = negative ? digits.mid(1) : digits;
        if (hex.startsWith(QLatin1Char('$')))
            hex.remove(0, 1);
        else if (hex.startsWith(QLatin1String("0x"), Qt::CaseInsensitive))
            hex.remove(0, 2);
        else
            hex.clear();
        const uint magnitude = hex.toUInt(&ok, 16);
        value = negative ? qint32(0u - magnitude) : qint32(magnitude);
    }
    if (!ok)
        throw VantryError(QStringLiteral("'%1' is not a valid integer value").arg(text));
    return value;
}

bool StrToBool(const QString &text)
{
    if (text.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0)
        return true;
    if (text.compare(QLatin1String("false"), Qt::CaseInsensitive) == 0)
        return false;
    bool ok = false;
    const double number = text.trimmed().toDouble(&ok);
    if (!ok)
        throw VantryError(QStringLiteral("'%1' is not a valid boolean value").arg(text));
    return number != 0;
}

QDateTime OleToDateTime(double days)
{
    if (!std::isfinite(days) || days < MinOleDay || days >= MaxOleDay)
        return QDateTime();
    qint64 whole = qint64(days); // towards zero: the day of a negative number too
    qint64 msecs = std::llround(std::fabs(days - double(whole)) * MsecsPerDay);
    if (msecs >= MsecsPerDay)
    {
        whole += 1;
        msecs = 0;
    }
    return QDateTime(OleEpoch.addDays(whole), QTime::fromMSecsSinceStartOfDay(int(msecs)));
}

double DateTimeToOle(const QDateTime &value)
{
    const double days = double(OleEpoch.daysTo(value.date()));
    const double fraction = double(value.time().msecsSinceStartOfDay()) / MsecsPerDay;
    return days >= 0 ? days + fraction : days - fraction;
}

double DualDateNumber(const QDateTime &value)
{
    const QDate unixEpoch(1970, 1, 1);
    const qint64 msecs =
        unixEpoch.daysTo(value.date()) * MsecsPerDay + value.time().msecsSinceStartOfDay();
    // Whole seconds between the two, made negative for dates before 1970.
    qint64 seconds = (msecs < 0 ? -msecs : msecs) / 1000;
    if (msecs < 0)
        seconds = -seconds;
    // Seconds divided by milliseconds per day: deliberate, see the header.
    return double(seconds) / double(MsecsPerDay) + UnixEpochDay;
}

QString FormatHeaderDateTime(const QDateTime &value)
{
    return value.toString(HeaderDateTimeFormat);
}

QDateTime ParseHeaderDateTime(const QString &text)
{
    return QDateTime::fromString(text.trimmed(), HeaderDateTimeFormat);
}

} // namespace QvxConvert
