// CONNECTION_PARAMETERS: the parameter text compressed with bzip2. Checked against the bzip2 tool
// itself, so stored values stay readable by (and from) any other bzip2 implementation.
#include "core/connections/vtrtools.h"

#include <QProcess>
#include <QStandardPaths>
#include <QtTest>

namespace {

const QString kText = QStringLiteral(
    "OP=16,0,,/home/ana/Dokumente/Umsätze 2024.db,,0,,,0,0,,,/home/ana/Dokumente/Umsätze 2024.db,"
    "ana,pa\\cß€\\n\\l,0,,,,0,Umsätze (SQLite),0,0,,0,0,0,0,,,{CR}+{LF},0,0,,,,0,0,0,-1,-1,0,0,,0,,,0,"
    "0,,0,0,0,0,-1,0,,,,0,0");

QByteArray runBzip2(const QStringList &arguments, const QByteArray &input)
{
    QProcess p;
    p.start(QStringLiteral("bzip2"), arguments);
    if (!p.waitForStarted())
        return {};
    p.write(input);
    p.closeWriteChannel();
    p.waitForFinished(30000);
    return p.exitCode() == 0 ? p.readAllStandardOutput() : QByteArray();
}

} // namespace

class tst_PackParameters : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        if (QStandardPaths::findExecutable(QStringLiteral("bzip2")).isEmpty())
            QSKIP("the bzip2 tool is not installed");
    }

    void packedIsBzip2BlockSize5()
    {
        const QByteArray packed = PackParameters(kText);
        QVERIFY(packed.startsWith("BZh5"));
        QCOMPARE(runBzip2({QStringLiteral("-dc")}, packed), kText.toUtf8());
        QVERIFY(PackParameters(QString()).isEmpty()); // an empty text is an empty column
    }

    void bzip2ToolOutputUnpacks()
    {
        const QByteArray packed = runBzip2({QStringLiteral("-5"), QStringLiteral("-c")}, kText.toUtf8());
        QVERIFY(packed.startsWith("BZh5"));
        QCOMPARE(UnpackParameters(packed), kText);
        // Concatenated streams read as one text, as the tool reads them.
        const QByteArray tail = runBzip2({QStringLiteral("-9"), QStringLiteral("-c")}, "tail");
        QCOMPARE(UnpackParameters(packed + tail), kText + QStringLiteral("tail"));
    }

    void columnValues_data()
    {
        QTest::addColumn<QByteArray>("column");
        QTest::addColumn<QString>("text");
        const QByteArray packed = PackParameters(kText);
        QByteArray damaged = packed;
        damaged[damaged.size() / 2] = char(damaged[damaged.size() / 2] ^ 0x55);
        const QByteArray emptyStream = runBzip2({QStringLiteral("-5"), QStringLiteral("-c")}, QByteArray());
        QVERIFY(emptyStream.startsWith("BZh"));

        QTest::newRow("empty column") << QByteArray() << QString();
        QTest::newRow("compressed") << packed << kText;
        QTest::newRow("stored uncompressed") << kText.toUtf8() << kText;
        QTest::newRow("damaged: read as it is") << damaged << QString::fromUtf8(damaged);
        QTest::newRow("truncated: read as it is") << packed.left(packed.size() - 6)
                                                  << QString::fromUtf8(packed.left(packed.size() - 6));
        QTest::newRow("decompresses to nothing") << emptyStream << QString::fromUtf8(emptyStream);
        QTest::newRow("header only") << QByteArray("BZh5") << QStringLiteral("BZh5");
        QTest::newRow("trailing bytes ignored") << packed + QByteArray("xyz") << kText;
    }
    void columnValues()
    {
        QFETCH(QByteArray, column);
        QFETCH(QString, text);
        QCOMPARE(UnpackParameters(column), text);
    }

    void oversizedStreamIsNotUnpacked()
    {
        // A few hundred bytes that would unpack past the cap: treated as not compressed.
        const QByteArray huge(kMaxUnpackedParameterBytes + 1024, 'A');
        const QByteArray bomb = runBzip2({QStringLiteral("-5"), QStringLiteral("-c")}, huge);
        QVERIFY(bomb.size() < 100000);
        QCOMPARE(UnpackParameters(bomb).size(), QString::fromUtf8(bomb).size());
        // Just below the cap still unpacks.
        const QByteArray large(kMaxUnpackedParameterBytes - 1024, 'A');
        QCOMPARE(UnpackParameters(runBzip2({QStringLiteral("-5"), QStringLiteral("-c")}, large)).size(),
                 large.size());
    }
};

QTEST_GUILESS_MAIN(tst_PackParameters)
#include "tst_PackParameters.moc"
