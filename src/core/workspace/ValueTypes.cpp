#include "core/workspace/ValueTypes.h"

#include <QSet>

namespace {

// PostgreSQL types without an "=" operator, by name and by the oid the fetch may show instead.
const QSet<QString> &postgresWithoutEquality()
{
    static const QSet<QString> names{
        QStringLiteral("json"),    QStringLiteral("xml"),     QStringLiteral("point"),
        QStringLiteral("lseg"),    QStringLiteral("path"),    QStringLiteral("box"),
        QStringLiteral("polygon"), QStringLiteral("line"),    QStringLiteral("circle"),
        QStringLiteral("oid 114"), QStringLiteral("oid 142"), QStringLiteral("oid 600"),
        QStringLiteral("oid 601"), QStringLiteral("oid 602"), QStringLiteral("oid 603"),
        QStringLiteral("oid 604"), QStringLiteral("oid 628"), QStringLiteral("oid 718")};
    return names;
}

struct Decimal
{
    bool negative = false;
    bool nan = false;
    std::string_view whole;    // without leading zeros
    std::string_view fraction; // without trailing zeros
};

Decimal parse(std::string_view text)
{
    Decimal d;
    while (!text.empty() && text.front() == ' ')
        text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ')
        text.remove_suffix(1);
    if (text == "NaN" || text == "nan") {
        d.nan = true;
        return d;
    }
    if (!text.empty() && (text.front() == '-' || text.front() == '+')) {
        d.negative = text.front() == '-';
        text.remove_prefix(1);
    }
    const size_t dot = text.find('.');
    d.whole = text.substr(0, dot);
    d.fraction = dot == std::string_view::npos ? std::string_view() : text.substr(dot + 1);
    while (!d.whole.empty() && d.whole.front() == '0')
        d.whole.remove_prefix(1);
    while (!d.fraction.empty() && d.fraction.back() == '0')
        d.fraction.remove_suffix(1);
    if (d.whole.empty() && d.fraction.empty())
        d.negative = false; // -0 equals 0
    return d;
}

int sign(int c)
{
    return c < 0 ? -1 : (c > 0 ? 1 : 0);
}

// Compares the magnitudes of two parsed decimals.
int compareMagnitude(const Decimal &a, const Decimal &b)
{
    if (a.whole.size() != b.whole.size())
        return a.whole.size() < b.whole.size() ? -1 : 1;
    if (const int c = a.whole.compare(b.whole))
        return sign(c);
    return sign(a.fraction.compare(b.fraction));
}

} // namespace

namespace ValueTypes {

bool canLocate(const QString &driverName, const QString &typeName)
{
    const QString type = typeName.trimmed().toLower();
    if (driverName == QLatin1String("QPSQL") || type.startsWith(QLatin1String("oid ")))
        return !postgresWithoutEquality().contains(type);
    if (driverName == QLatin1String("QMYSQL"))
        return type != QLatin1String("geometry");
    // Firebird compares no BLOB with "=" reliably (the generic path shows BLOBs as byte arrays);
    // its driver hands times over with milliseconds of its 1/10000 s, numerics as doubles.
    if (driverName == QLatin1String("QIBASE"))
        return type != QLatin1String("qbytearray") && !type.startsWith(QLatin1String("blob"))
               && type != QLatin1String("qtime") && type != QLatin1String("qdatetime")
               && type != QLatin1String("double");
    // Through ODBC long data cannot be compared on most drivers, and drivers differ in how they
    // compare a bound text with a date, a time or a double: those stay out of an all-fields match.
    if (driverName == QLatin1String("QODBC"))
        return type != QLatin1String("qbytearray") && type != QLatin1String("qtime")
               && type != QLatin1String("qdatetime") && type != QLatin1String("double")
               && type != QLatin1String("qdate");
    return true;
}

bool isDecimal(const QString &typeName)
{
    const QString type = typeName.trimmed().toLower();
    return type.startsWith(QLatin1String("numeric")) || type.startsWith(QLatin1String("decimal"));
}

bool isDecimalText(std::string_view text)
{
    const Decimal d = parse(text);
    if (d.nan)
        return true;
    if (d.whole.empty() && d.fraction.empty()) {
        // Only zeros (or nothing): a number when at least one digit was there.
        return text.find('0') != std::string_view::npos;
    }
    for (std::string_view part : {d.whole, d.fraction})
        for (char c : part)
            if (c < '0' || c > '9')
                return false;
    return true;
}

int compareDecimal(std::string_view a, std::string_view b)
{
    const Decimal x = parse(a), y = parse(b);
    if (x.nan || y.nan)
        return x.nan == y.nan ? 0 : (x.nan ? 1 : -1);
    if (x.negative != y.negative)
        return x.negative ? -1 : 1;
    const int c = compareMagnitude(x, y);
    return x.negative ? -c : c;
}

} // namespace ValueTypes
