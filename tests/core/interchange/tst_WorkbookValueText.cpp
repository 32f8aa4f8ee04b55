// Cell text of workbook numbers: the shortest exact form with the switch to exponents at its
// edges, serial days of both date systems around the 1900 system's phantom leap day, and which
// number formats make a number a date, a time or both.

#include "core/interchange/WorkbookValueText.h"

#include <QtTest>

class tst_WorkbookValueText : public QObject
{
    Q_OBJECT

private slots:
    void numbers()
    {
        const QList<QPair<double, QString>> cases{
            {0, "0"}, {-0.0, "0"}, {42, "42"}, {-7.5, "-7.5"}, {0.1, "0.1"}, {1.0 / 3, "0.3333333333333333"},
            {1e20, "100000000000000000000"}, {1e21, "1E+21"}, {1.5e300, "1.5E+300"}, {1e-7, "0.0000001"}, {1e-8, "1E-8"},
            {1.25e-6, "0.00000125"}, {-1e-300, "-1E-300"}, {123456789012345678.0, "123456789012345680"},
            {5e-324, "5E-324"}};
        for (const auto &c : cases)
            QCOMPARE(numberText(c.first), c.second);
    }

    void serialDays()
    {
        QCOMPARE(serialText(1, SerialKind::Date, false), QStringLiteral("1900-01-01"));
        QCOMPARE(serialText(59, SerialKind::Date, false), QStringLiteral("1900-02-28"));
        QCOMPARE(serialText(60, SerialKind::Date, false), QStringLiteral("1900-02-29"));
        QCOMPARE(serialText(61, SerialKind::Date, false), QStringLiteral("1900-03-01"));
        QCOMPARE(serialText(0, SerialKind::Date, true), QStringLiteral("1904-01-01"));
        QCOMPARE(serialText(45366.75, SerialKind::Date, false), QStringLiteral("2024-03-15 18:00:00"));
        QCOMPARE(serialText(45366, SerialKind::DateTime, false), QStringLiteral("2024-03-15 00:00:00"));
        QCOMPARE(serialText(0.5 + 1.0 / 86400000, SerialKind::Time, false), QStringLiteral("12:00:00.001"));
        QCOMPARE(serialText(0.9999999999, SerialKind::Time, false), QStringLiteral("1900-01-01 00:00:00"));
        QCOMPARE(serialText(2958465.5, SerialKind::DateTime, false), QStringLiteral("9999-12-31 12:00:00"));
        // Outside the calendar a date format shows the number.
        QCOMPARE(serialText(-1, SerialKind::Date, false), QStringLiteral("-1"));
        QCOMPARE(serialText(2958466, SerialKind::Date, false), QStringLiteral("2958466"));
    }

    void formatKinds()
    {
        QCOMPARE(builtInFormatKind(0), SerialKind::Number);
        QCOMPARE(builtInFormatKind(14), SerialKind::Date);
        QCOMPARE(builtInFormatKind(20), SerialKind::Time);
        QCOMPARE(builtInFormatKind(22), SerialKind::DateTime);
        QCOMPARE(builtInFormatKind(47), SerialKind::Time);
        QCOMPARE(builtInFormatKind(49), SerialKind::Number);
        const QList<QPair<QString, SerialKind>> codes{
            {"General", SerialKind::Number},        {"0.00E+00", SerialKind::Number},
            {"#,##0 \"days\"", SerialKind::Number}, {"[Red]0.00", SerialKind::Number},
            {"0\\h", SerialKind::Number},           {"_-* #,##0_-;_-@_-", SerialKind::Number},
            {"dd/mm/yyyy", SerialKind::Date},       {"mmm yy", SerialKind::Date},
            {"[$-409]d-mmm;@", SerialKind::Date},   {"mm:ss", SerialKind::Time},
            {"[h]:mm", SerialKind::Time},           {"h AM/PM", SerialKind::Time},
            {"yyyy-mm-dd hh:mm", SerialKind::DateTime}};
        for (const auto &c : codes)
            QVERIFY2(formatCodeKind(c.first) == c.second, qPrintable(c.first));
    }
};

QTEST_APPLESS_MAIN(tst_WorkbookValueText)
#include "tst_WorkbookValueText.moc"
