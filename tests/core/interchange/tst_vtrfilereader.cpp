// The text file reader: terminator masks, line splitting at every buffer size, byte-order marks,
// header, footer and last lines (also past one 64 KiB stretch), and the read errors.

#include "core/base/VantryError.h"
#include "core/interchange/VtrFileReader.h"
#include "LineStartOracle.h"

#include "ErrorOf.h"

#include <QBuffer>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

#include <vector>

namespace {

using Lines = QList<QByteArray>;

// Every line of the reader until end of file.
Lines ReadAll(TvtrFileReader &reader)
{
    Lines lines;
    while (!reader.Eof())
        lines.append(reader.ReadLn());
    return lines;
}

// The same through one reused buffer: a shorter line must never keep bytes of a longer one.
Lines ReadAllIntoOneBuffer(TvtrFileReader &reader)
{
    Lines lines;
    QByteArray line;
    while (!reader.Eof())
    {
        reader.ReadLn(line);
        lines.append(line);
    }
    return lines;
}

} // namespace

class TestVtrFileReader : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    int m_files = 0;

    QString WriteFile(const QByteArray &content)
    {
        const QString name = m_dir.filePath(QStringLiteral("f%1.txt").arg(++m_files));
        QFile file(name);
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            qFatal("cannot write %s", qPrintable(name));
        return name;
    }

private slots:
    void terminatorMask_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("mask");
        QTest::newRow("EOF") << "{EOF}" << 0x01;
        QTest::newRow("CR") << "{CR}" << 0x05;
        QTest::newRow("LF") << "{LF}" << 0x09;
        QTest::newRow("CR+LF") << "{CR}+{LF}" << 0x11;
        QTest::newRow("LF+CR") << "{LF}+{CR}" << 0x21;
        QTest::newRow("zero") << QString(QChar(0)) << 0x41;
        QTest::newRow("other text is CR LF") << "{TAB}" << 0x11;
        QTest::newRow("list") << "{CR},{LF}" << 0x0D;
        QTest::newRow("blank before an item is other text") << "{LF}, {CR}" << 0x19;
        QTest::newRow("blank after an item is other text") << "{CR} " << 0x11;
        QTest::newRow("empty is kinds 0-5") << "" << 0x3F;
        QTest::newRow("only commas") << ",," << 0x3F;
    }
    void terminatorMask()
    {
        QFETCH(QString, text);
        QFETCH(int, mask);
        QCOMPARE(int(TvtrFileReader::LineTerminatorMask(text)), mask);
    }

    void lines_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("terminators");
        QTest::addColumn<Lines>("expected");
        QTest::newRow("lone CR stays in the line")
            << QByteArray("a\rb\r\nc") << "{CR}+{LF}" << Lines{"a\rb", "c"};
        QTest::newRow("CR at end of file stays") << QByteArray("ab\r") << "{CR}+{LF}" << Lines{"ab\r"};
        QTest::newRow("last line without terminator")
            << QByteArray("one\ntwo") << "{LF}" << Lines{"one", "two"};
        QTest::newRow("CR LF is one terminator by default")
            << QByteArray("a\r\nb\rc\nd\n\re") << "" << Lines{"a", "b", "c", "d", "e"};
        QTest::newRow("CR only") << QByteArray("a\r\nb\r") << "{CR}" << Lines{"a", "\nb"};
        QTest::newRow("LF+CR") << QByteArray("a\n\rb\nc\r\n\r") << "{LF}+{CR}"
                               << Lines{"a", "b\nc\r"};
        QTest::newRow("zero character") << QByteArray("x\0y\r\n\0", 6) << QString(QChar(0))
                                        << Lines{"x", "y\r\n"};
        QTest::newRow("zero is not in the default")
            << QByteArray("x\0y", 3) << "" << Lines{QByteArray("x\0y", 3)};
        QTest::newRow("EOF only: the rest of the file")
            << QByteArray("a\nb\r\nc") << "{EOF}" << Lines{"a\nb\r\nc"};
        QTest::newRow("empty lines") << QByteArray("\n\n") << "{LF}" << Lines{"", ""};
        QTest::newRow("empty file") << QByteArray() << "{LF}" << Lines{};
        // Lines up to 3,000 bytes, far longer than any of the buffers.
        QByteArray content;
        Lines expected;
        for (int i = 0; i < 200; ++i)
        {
            expected.append(QByteArray(i * 37 % 3001, char('a' + i % 26)));
            content += expected.last() + (i % 2 ? "\r\n" : "\n");
        }
        QTest::newRow("long lines across buffers") << content << "" << expected;
    }
    void lines()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, terminators);
        QFETCH(Lines, expected);
        const QString name = WriteFile(content);
        // Small buffers put terminators and their halves on every window boundary.
        for (qint64 bufferSize : {1, 2, 3, 7, 1024})
        {
            TvtrFileReader reader(name, bufferSize);
            reader.SetLineTerminator(terminators);
            QCOMPARE(ReadAll(reader), expected);
            QCOMPARE(reader.LinesRead(), expected.size());
            TvtrFileReader reused(name, bufferSize);
            reused.SetLineTerminator(terminators);
            QCOMPARE(ReadAllIntoOneBuffer(reused), expected);
        }
    }

    void byteOrderMark_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<int>("encoding");
        QTest::addColumn<qint64>("dataStart");
        QTest::addColumn<QString>("firstLine");
        QTest::newRow("none") << QByteArray("h\xc3\xa9\n") << int(encAnsi) << qint64(0)
                              << QString::fromLocal8Bit("h\xc3\xa9");
        QTest::newRow("UTF-8") << QByteArray("\xEF\xBB\xBFh\xC3\xA9\r\nx") << int(encUtf8)
                               << qint64(3) << QStringLiteral("h\u00e9");
        QTest::newRow("UTF-16 LE") << QByteArray("\xFF\xFEh\0\xE9\0\r\0\n\0x\0", 12)
                                   << int(encUtf16LE) << qint64(2) << QStringLiteral("h\u00e9");
        QTest::newRow("UTF-16 BE") << QByteArray("\xFE\xFF\0h\x20\xAC\0\n", 8) << int(encUtf16BE)
                                   << qint64(2) << QStringLiteral("h\u20ac");
        QTest::newRow("FF FE 00 00 is UTF-32 LE")
            << QByteArray("\xFF\xFE\0\0a\0\0\0", 8) << int(encUtf32LE) << qint64(4)
            << QString::fromLatin1("a\0\0\0", 4);
        QTest::newRow("UTF-32 BE") << QByteArray("\0\0\xFE\xFF\0\0\0a", 8) << int(encUtf32BE)
                                   << qint64(4) << QString::fromLatin1("\0\0\0a", 4);
        QTest::newRow("one byte") << QByteArray("\xFF") << int(encAnsi) << qint64(0)
                                  << QString::fromLocal8Bit("\xFF");
        QTest::newRow("empty") << QByteArray() << int(encAnsi) << qint64(0) << QString();
    }
    void byteOrderMark()
    {
        QFETCH(QByteArray, content);
        QFETCH(int, encoding);
        QFETCH(qint64, dataStart);
        QFETCH(QString, firstLine);
        TvtrFileReader reader(WriteFile(content), 1024);
        reader.StartReading();
        QCOMPARE(int(reader.Encoding()), encoding);
        QCOMPARE(reader.Position(), dataStart);
        QCOMPARE(reader.ReadWideLn(), firstLine);
    }

    void forcedEncodingKeepsTheSkip()
    {
        TvtrFileReader reader(WriteFile("\xEF\xBB\xBFh\xC3\xA9"), 1024);
        reader.SetForcedEncoding(encAnsi);
        reader.StartReading();
        QCOMPARE(int(reader.Encoding()), int(encAnsi));
        QCOMPARE(reader.Position(), 3);
        QCOMPARE(reader.ReadWideLn(), QString::fromLocal8Bit("h\xC3\xA9"));
    }

    void utf16OddByteIsTheReadError()
    {
        TvtrFileReader reader(WriteFile(QByteArray("\xFF\xFEh\0i", 5)), 1024);
        reader.StartReading();
        QVERIFY_THROWS_EXCEPTION(VantryError, reader.ReadWideLn());
    }

    // Which lines of a file the reader marks as header, footer and last lines.
    void headerFooterAndLastLines_data()
    {
        QTest::addColumn<int>("lineCount");
        QTest::addColumn<int>("lineLength");
        QTest::addColumn<bool>("finalTerminator");
        QTest::addColumn<int>("headerLines");
        QTest::addColumn<int>("footerLines");
        QTest::newRow("small") << 10 << 5 << true << 2 << 3;
        QTest::newRow("no final terminator") << 10 << 5 << false << 0 << 1;
        QTest::newRow("no footer") << 6 << 3 << true << 1 << 0;
        QTest::newRow("footer of every line") << 4 << 3 << true << 0 << 4;
        QTest::newRow("footer beyond the file") << 4 << 3 << true << 0 << 9;
        QTest::newRow("many stretches") << 30000 << 20 << true << 5 << 4;
        QTest::newRow("footer lines longer than a stretch") << 12 << 40000 << false << 0 << 3;
    }
    void headerFooterAndLastLines()
    {
        QFETCH(int, lineCount);
        QFETCH(int, lineLength);
        QFETCH(bool, finalTerminator);
        QFETCH(int, headerLines);
        QFETCH(int, footerLines);
        QByteArray content;
        for (int i = 0; i < lineCount; ++i)
        {
            content += QByteArray::number(i).leftJustified(lineLength, '.');
            if (i + 1 < lineCount || finalTerminator)
                content += "\r\n";
        }
        TvtrFileReader reader(WriteFile(content), 4096);
        reader.SetLineTerminator(QStringLiteral("{CR}+{LF}"));
        reader.SetHeaderLineCount(headerLines);
        reader.SetFooterLineCount(footerLines);
        reader.StartReading();
        QCOMPARE(reader.FooterStart() == content.size(), footerLines == 0);
        for (int i = 0; i < lineCount; ++i)
        {
            const QByteArray line = reader.ReadLn();
            QCOMPARE(line.left(line.indexOf('.')).toInt(), i);
            QCOMPARE(reader.IsHeaderLine(), i < headerLines);
            QCOMPARE(reader.IsFooterLine(), i >= lineCount - footerLines);
            // The last line is the one before the footer.
            QCOMPARE(reader.IsLastLine(), i >= lineCount - footerLines - 1);
        }
        QVERIFY(reader.Eof());
    }

    // The stretch-by-stretch search agrees with a full rescan of every stretch, whatever bytes,
    // terminators and stretch sizes: catches the search losing step at a stretch boundary.
    void lineStartFromEndMatchesFullRescan()
    {
        QRandomGenerator random(20240611);
        const char alphabet[] = {'\r', '\n', '\0', 'x'};
        const QStringList terminators = {"", "{CR}", "{LF}", "{CR}+{LF}", "{LF}+{CR}",
                                          QString(QChar(0)), "{CR}+{LF},{LF}+{CR}", "{EOF}"};
        for (int round = 0; round < 1500; ++round)
        {
            QByteArray data;
            const int size = random.bounded(60);
            for (int i = 0; i < size; ++i)
                data.append(alphabet[random.bounded(4)]);
            const QString terminator = terminators.at(random.bounded(terminators.size()));
            const qint64 stretch = 1 + random.bounded(9);
            const int lines = random.bounded(5);
            QBuffer buffer;
            buffer.setData(data);
            buffer.open(QIODevice::ReadOnly);
            TvtrFileReader reader(&buffer, 1 + random.bounded(8));
            reader.SetLineTerminator(terminator);
            const qint64 expected =
                NaiveLineStartFromEnd(data, reader.LineTerminators(), lines, stretch);
            if (reader.LineStartFromEnd(lines, stretch) != expected)
                QFAIL(qPrintable(QStringLiteral("data %1, terminators %2, stretch %3, lines %4")
                                     .arg(QString::fromLatin1(data.toHex()), terminator)
                                     .arg(stretch)
                                     .arg(lines)));
        }
    }

    void readCharByEncoding()
    {
        const QString name = WriteFile(QByteArray("\xFE\xFF\x12\x34", 4));
        TvtrFileReader bigEndian(name, 1024);
        bigEndian.StartReading();
        QCOMPARE(bigEndian.ReadChar(), char16_t(0x1234));
        TvtrFileReader other(name, 1024);
        QCOMPARE(other.ReadChar(), char16_t(0xFFFE));
        QCOMPARE(other.ReadChar(), char16_t(0x3412));
        QVERIFY_THROWS_EXCEPTION(VantryError, other.ReadChar());
    }

    void readErrors()
    {
        QVERIFY_THROWS_EXCEPTION(VantryError,
                                 TvtrFileReader(m_dir.filePath("missing.txt"), 1024));
        TvtrFileReader reader(WriteFile("abc"), 2);
        QVERIFY(errorOf([&] { reader.Skip(4); }).contains(QLatin1String("Unexpected end of file")));
        reader.Seek(1);
        QCOMPARE(reader.ReadBytes(2), QByteArray("bc"));
        QVERIFY_THROWS_EXCEPTION(VantryError, reader.ReadByte());
        reader.Seek(0);
        QVERIFY_THROWS_EXCEPTION(VantryError, reader.ReadBytes(4));
        QCOMPARE(reader.Position(), 0); // refused before anything was read
    }

    void matchingAndLocatingAcrossBuffers()
    {
        TvtrFileReader reader(WriteFile("abcabdxyz"), 2);
        QVERIFY(reader.LocateStr("abd"));
        QCOMPARE(reader.Position(), 3);
        QVERIFY(!reader.MatchStr("abx"));
        QCOMPARE(reader.Position(), 3);
        QVERIFY(reader.MatchStr("abdx"));
        QVERIFY(!reader.LocateStr("q"));
        QVERIFY(reader.Eof());
    }
};

QTEST_GUILESS_MAIN(TestVtrFileReader)
#include "tst_vtrfilereader.moc"
