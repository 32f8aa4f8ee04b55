#pragma once
// Values a user should not type but can, as rows of a data-driven test with one QString column
// "value": over-long, control characters, line breaks, the separators and quotes of stored
// forms, bytes that are not UTF-8, and nothing at all.
#include <QtTest>

inline void addHostileValueRows()
{
    QTest::addColumn<QString>("value");
    QTest::newRow("over-long") << QString(100000, QLatin1Char('w'));
    QTest::newRow("control characters") << QStringLiteral("a\x01b\tc\x1b[31md\x7f");
    QTest::newRow("line breaks") << QStringLiteral("first\nsecond\r\nthird");
    QTest::newRow("separators of the stored form") << QStringLiteral("k=v;x,\"y\"\\z'{a}=;");
    // Bytes that are not UTF-8, as a file name from an old file system reaches the program.
    QTest::newRow("not UTF-8") << QString::fromLocal8Bit(QByteArray("caf\xe9 \xff\xfe"));
    QTest::newRow("empty") << QString();
}
