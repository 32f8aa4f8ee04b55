// .xls files built byte by byte for what xlwt does not write: shared strings split over CONTINUE
// records (a string changing from two bytes a character to one at the join, rich text runs and
// phonetic blocks skipped across joins), MULRK in its four number forms, formulas' cached
// results, booleans and errors, custom date formats in the 1904 system, BIFF5 texts in a code
// page, chart sheets and embedded charts left out, streams in the mini stream; and damaged and
// hostile compound files and records (chains in circles, sizes beyond the file, cut short),
// each refused with the file and the cause.

#include "core/interchange/WorkbookReader.h"

#include "SheetCells.h"
#include "WorkbookErrors.h"
#include "XlsBytes.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace xls;

namespace {

constexpr int kFormat = 0x041E, kXf = 0x00E0, kSst = 0x00FC, kContinue = 0x003C, kLabelSst = 0x00FD;
constexpr int kNumber = 0x0203, kRk = 0x027E, kMulRk = 0x00BD, kFormula = 0x0006, kString = 0x0207;
constexpr int kBoolErr = 0x0205, kLabel = 0x0204, kRichString = 0x00D6, kDateMode = 0x0022;

QByteArray xf(int format)
{
    return record(kXf, le16(0) + le16(format) + QByteArray(16, 0));
}

QByteArray labelSst(int row, int column, quint32 item)
{
    return record(kLabelSst, cell(row, column) + le32(item));
}

// A formula whose cached result is the 8 bytes given, with an empty expression.
QByteArray formula(int row, int column, const QByteArray &result, int xfIndex = 0)
{
    return record(kFormula, cell(row, column, xfIndex) + result + le16(0) + le32(0) + le16(0));
}

QByteArray specialResult(int kind, int value = 0)
{
    return QByteArray(1, char(kind)) + QByteArray(1, 0) + QByteArray(1, char(value)) + QByteArray(3, 0) + le16(0xFFFF);
}

} // namespace

class tst_WorkbookReaderXlsRecords : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(m_dir.isValid()); }
    void sharedStringsAcrossContinueRecords();
    void numbersFormulasAndBooleans();
    void biff5TextsInTheirCodePage();
    void damagedAndHostileFilesAreRefused_data();
    void damagedAndHostileFilesAreRefused();

private:
    QString write(const QString &name, const QByteArray &bytes)
    {
        const QString path = m_dir.filePath(name);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("cannot write %s", qPrintable(path));
        return path;
    }

    QTemporaryDir m_dir;
};

void tst_WorkbookReaderXlsRecords::sharedStringsAcrossContinueRecords()
{
    QString widePart, narrowPart;
    for (int i = 0; i < 2000; ++i)
        widePart += QChar(0x3B1 + i % 20);
    for (int i = 0; i < 1000; ++i)
        narrowPart += QChar('a' + i % 26);
    // The table's record ends inside the first string's characters: the CONTINUE record goes on
    // with a flags byte saying the rest is one byte a character. The second string's characters
    // end with the next record, so its rich text runs open the last CONTINUE record without a
    // flags byte; the third carries phonetic data, and the fourth is plain.
    const QByteArray table = record(kSst, le32(4) + le32(4) + le16(3000) + QByteArray(1, '\x01') + utf16(widePart))
                             + record(kContinue, QByteArray(1, '\x00') + latin1(narrowPart) + le16(5) + QByteArray(1, '\x08')
                                                     + le16(2) + latin1(QStringLiteral("Hello")))
                             + record(kContinue, le16(0) + le16(1) + le16(3) + le16(0)
                                                     + le16(3) + QByteArray(1, '\x05') + le32(6) + utf16(QStringLiteral("日本語"))
                                                     + QByteArray(6, '\x11') + le16(2) + QByteArray(1, '\x00') + "ok");
    const QByteArray sheet = labelSst(0, 0, 0) + labelSst(0, 1, 1) + labelSst(0, 2, 2) + labelSst(1, 0, 3);
    const QString path = write(QStringLiteral("continue.xls"),
                               compoundFile(QStringLiteral("Workbook"), workbookStream(table, {{QStringLiteral("Strings"), sheet}})));

    auto book = WorkbookReader::open(path);
    QCOMPARE(book->sheetNames(), QStringList{QStringLiteral("Strings")});
    QCOMPARE(cells(book->readSheet(0)), (QList<QStringList>{{widePart + narrowPart, QStringLiteral("Hello"), QStringLiteral("日本語")},
                                                            {QStringLiteral("ok"), QString(), QString()}}));
}

void tst_WorkbookReaderXlsRecords::numbersFormulasAndBooleans()
{
    // Cell formats: 0 general, 1 a custom date and time, 2 the built-in date 14, 3 a custom
    // number whose "d" is quoted text, 4 the built-in time 20.
    const QByteArray globals = record(kDateMode, le16(1))
                               + record(kFormat, le16(164) + le16(16) + QByteArray(1, 0) + "dd/mm/yyyy hh:mm")
                               + record(kFormat, le16(165) + le16(8) + QByteArray(1, 0) + "0.0\"d\" ;")
                               + xf(0) + xf(164) + xf(14) + xf(165) + xf(20);
    // MULRK: an integer, an integer in hundredths, the high bits of a double, and those in hundredths.
    const quint32 onePointFive = 0x3FF80000;
    QByteArray numbers = record(kMulRk, cell(0, 0).left(4) + le16(0) + le32(42u << 2 | 2) + le16(0) + le32(quint32(-1234) << 2 | 3)
                                            + le16(0) + le32(0x40040000) + le16(0) + le32(onePointFive | 1) + le16(3));
    numbers += record(kNumber, cell(1, 0, 1) + f64(1.5)) + record(kRk, cell(1, 1, 2) + le32(366u << 2 | 2))
               + record(kNumber, cell(1, 2, 3) + f64(2.5)) + record(kNumber, cell(1, 3, 4) + f64(0.75));
    // Formulas' cached results: a number, a text in the STRING record that follows (after a
    // shared formula record, and going on in a CONTINUE record in two bytes a character), a
    // boolean, an error and an empty text.
    QByteArray formulas = formula(2, 0, f64(7)) + formula(2, 1, specialResult(0)) + record(0x04BC, QByteArray(10, 0))
                          + record(kString, le16(6) + QByteArray(1, 0) + "abc") + record(kContinue, QByteArray(1, 1) + utf16(QStringLiteral("ΔΕΖ")))
                          + formula(2, 2, specialResult(1, 1)) + formula(2, 3, specialResult(2, 0x07)) + formula(2, 4, specialResult(3));
    const QByteArray others = record(kBoolErr, cell(3, 0) + QByteArray(1, 0) + QByteArray(1, 0))
                              + record(kBoolErr, cell(3, 1) + QByteArray(1, 0x2A) + QByteArray(1, 1))
                              + record(kLabel, cell(3, 2) + le16(5) + QByteArray(1, 0) + "label")
                              + record(kRichString, cell(3, 3) + le16(4) + QByteArray(1, 1) + utf16(QStringLiteral("rich")) + le16(1) + le16(0) + le16(1));
    // An embedded chart's records nest inside the sheet's and hold no cells of it.
    const QByteArray chart = bof(0x0600, 0x20) + record(kNumber, cell(9, 0) + f64(99)) + eof();
    const QString path = write(QStringLiteral("cells.xls"), compoundFile(QStringLiteral("Workbook"),
        workbookStream(globals, {{QStringLiteral("Cells"), numbers + formulas + others + chart},
                                 {QStringLiteral("Chart"), {}, 2},
                                 {QStringLiteral("Second"), record(kNumber, cell(0, 0) + f64(-0.5))}})));

    auto book = WorkbookReader::open(path);
    QCOMPARE(book->sheetNames(), (QStringList{QStringLiteral("Cells"), QStringLiteral("Second")}));
    QCOMPARE(cells(book->readSheet(0)),
             (QList<QStringList>{{"42", "-12.34", "2.5", "0.015"},
                                 {"1904-01-02 12:00:00", "1905-01-01", "2.5", "18:00:00"},
                                 {"7", "abcΔΕΖ", "TRUE", "#DIV/0!"},
                                 {"FALSE", "#N/A", "label", "rich"}}));
    QCOMPARE(cells(book->readSheet(1)), (QList<QStringList>{{"-0.5"}}));
}

void tst_WorkbookReaderXlsRecords::biff5TextsInTheirCodePage()
{
    // Excel 95 keeps texts in 8 bits of the workbook's code page (here Cyrillic, 1251) and names its
    // stream "Book"; this one is small enough to live in the mini stream.
    const QByteArray cyrillic = QByteArray("\xCF\xF0\xE8\xE2\xE5\xF2");  // "Привет" in code page 1251
    const QByteArray globals = record(0x0042, le16(1251)) + record(kFormat, le16(164) + QByteArray(1, 10) + "yyyy-mm-dd") + xf(0) + xf(164);
    const QByteArray sheet = record(kLabel, cell(0, 0) + le16(6) + cyrillic) + record(kNumber, cell(0, 1, 1) + f64(45000))
                             + record(kRk, cell(1, 1) + le32(7u << 2 | 2));
    const QString path = write(QStringLiteral("biff5.xls"),
                               compoundFile(QStringLiteral("Book"), workbookStream(globals, {{QStringLiteral("Data"), sheet}}, false)));

    auto book = WorkbookReader::open(path);
    QCOMPARE(book->sheetNames(), QStringList{QStringLiteral("Data")});
    QCOMPARE(cells(book->readSheet(0)), (QList<QStringList>{{QStringLiteral("Привет"), "2023-03-15"}, {"", "7"}}));
}

void tst_WorkbookReaderXlsRecords::damagedAndHostileFilesAreRefused_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("cause");

    // A workbook whose stream takes ten regular sectors, 3 to 12.
    const QByteArray padding = record(0x00E1, QByteArray(5000, 0));
    const QByteArray large = compoundFile(QStringLiteral("Workbook"),
                                          workbookStream(padding, {{QStringLiteral("S"), record(kNumber, cell(0, 0) + f64(1))}}));
    const auto patched = [](QByteArray bytes, int at, quint32 value) { return bytes.replace(at, 4, le32(value)); };
    const int fatSlot = 512;
    QTest::newRow("chain in a circle") << patched(large, fatSlot + 4 * 6, 4) << "the sector chain of the stream \"Workbook\" runs in a circle";
    QTest::newRow("chain out of the file") << patched(large, fatSlot + 4 * 4, 100000) << "points outside the file";
    QTest::newRow("chain ends early") << patched(large, fatSlot + 4 * 5, kEnd) << "ends before its";
    QTest::newRow("size beyond the file") << patched(large, 1024 + 128 + 120, 0x40000000) << "claims 1073741824 bytes";
    QTest::newRow("directory in a circle") << patched(large, fatSlot + 4 * 1, 1) << "the sector chain of the directory runs in a circle";
    QTest::newRow("allocation table larger than the file") << patched(large, 44, 0x7FFFFFFF) << "allocation table sectors in a file of";
    QTest::newRow("cut short") << large.left(large.size() - 700) << "it is cut short";

    // More allocation table sectors than the header lists: their list goes on in sector 3, whose
    // last slot names sector 3 again.
    QByteArray circle = patched(patched(large, 44, 250), 68, 3);
    circle.append(QByteArray(260 * 512 - circle.size(), 0));
    QTest::newRow("allocation table list in a circle") << patched(circle, 4 * 512 + 508, 3) << "list of its allocation table sectors runs in a circle";

    const QByteArray small = compoundFile(QStringLiteral("Workbook"), workbookStream({}, {{QStringLiteral("S"), labelSst(0, 0, 5)}}));
    QTest::newRow("mini chain in a circle") << patched(small, 3 * 512, 0) << "runs in a circle";
    QTest::newRow("missing shared string") << small << "the sheet \"S\" is damaged: the cell in row 1, column 1 refers to shared string 5";
    QTest::newRow("shared string cut short")
        << compoundFile(QStringLiteral("Workbook"), workbookStream(record(kSst, le32(1) + le32(1) + le16(100) + QByteArray(1, 0) + "short"), {}))
        << "its shared string 1 is cut short";
    // The mini stream starts in sector 3; the sheet's offset lies in the BOUNDSHEET record after the BOF.
    QTest::newRow("sheet outside the stream")
        << patched(small, 4 * 512 + 20 + 4, 0x10000) << "the sheet \"S\" is damaged: its records do not start where";
    QTest::newRow("cell record cut short")
        << compoundFile(QStringLiteral("Workbook"), workbookStream({}, {{QStringLiteral("S"), record(kNumber, cell(0, 0))}}))
        << "a cell record is cut short";
    QTest::newRow("password") << compoundFile(QStringLiteral("Workbook"), workbookStream(record(0x002F, QByteArray(6, 0)), {}))
                              << "it is protected by a password";
    QTest::newRow("encrypted package") << compoundFile(QStringLiteral("EncryptedPackage"), QByteArray(100, 'x'))
                                       << "it is protected by a password";
    QTest::newRow("another document") << compoundFile(QStringLiteral("WordDocument"), QByteArray(100, 'x'))
                                      << "it holds no workbook stream";
    QTest::newRow("Excel 4") << record(0x0409, le16(0) + le16(0x10) + le16(0)) + eof() << "Excel 2.x to 4.x, which is not supported";
}

void tst_WorkbookReaderXlsRecords::damagedAndHostileFilesAreRefused()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, cause);
    expectWorkbookError(write(QStringLiteral("%1.xls").arg(QTest::currentDataTag()), bytes), cause);
}

QTEST_GUILESS_MAIN(tst_WorkbookReaderXlsRecords)
#include "tst_WorkbookReaderXlsRecords.moc"
