#pragma once
#include <QString>
#include <QStringView>

// How a cell's number is meant to be read, decided by its number format.
enum class SerialKind { Number, Date, Time, DateTime };

// The kind of a built-in number format id: 14-17 dates, 18-21 and 45-47 times, 22 date and time.
SerialKind builtInFormatKind(int formatId);
// The kind of a custom number format code: d, m, y, h and s outside quotes, brackets and escapes
// make it a date or time format ("mm:ss" is minutes; "mmm yyyy" is a month).
SerialKind formatCodeKind(QStringView code);

// A number as the text a user would type to get it back: the shortest text that reads back to the
// same double, plain for 1E-7 <= |v| < 1E21 and otherwise with an exponent ("-1E-300", "1E+21").
QString numberText(double value);

// A serial day number of the 1900 or the 1904 date system as ISO text: "yyyy-MM-dd",
// "yyyy-MM-dd HH:mm:ss" or "HH:mm:ss", with ".zzz" when the milliseconds are not zero. A date that
// carries a time of day keeps it, and a time of a day other than day 0 becomes a date and time, so
// no part of the value is lost. Returns the number's text for values outside the calendar.
QString serialText(double serial, SerialKind kind, bool date1904);

// An RK number of a BIFF record: 30 bits of either a signed integer or the high bits of a double,
// divided by 100 when the lowest bit says so.
double rkNumber(quint32 rk);

// The text of a cell's error code ("#DIV/0!", "#N/A", ...), as .xls and .xlsb store it.
QString cellErrorText(quint8 code);
