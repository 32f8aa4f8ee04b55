// .xlsb workbooks: no writer of the binary format is packaged for Debian, so the test writes its
// records itself, from the format's published record layouts (type and size as 7-bit groups,
// then little-endian fields), and Python's zipfile packs them. Every cell kind (RK, real, text,
// shared and rich strings, booleans, errors, formulas' cached values), dates of both systems,
// sparse rows, an empty sheet, and damaged records giving errors that name the file.

#include "core/base/VantryError.h"
#include "core/interchange/WorkbookReader.h"

#include "PythonWriter.h"
#include "WorkbookErrors.h"
#include "XlsBytes.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {

using xls::f64;
using xls::le16;
using xls::le32;

// A BIFF12 record writer, enough for the parts a reader needs.
class Records
{
public:
    Records &add(int type, const QByteArray &data = {})
    {
        varint(type);
        varint(int(data.size()));
        m_bytes.append(data);
        return *this;
    }
    QByteArray bytes() const { return m_bytes; }

private:
    void varint(int value)
    {
        do {
            quint8 byte = value & 0x7F;
            value >>= 7;
            m_bytes.append(char(value ? byte | 0x80 : byte));
        } while (value);
    }

    QByteArray m_bytes;
};

QByteArray u8(int v) { return QByteArray(1, char(v)); }
QByteArray wide(const QString &text) { return le32(quint32(text.size())) + xls::utf16(text); }
// The cell head of every cell record: column from 0 and the cell format's index.
QByteArray cell(int column, int style = 0) { return le32(quint32(column)) + le32(quint32(style)); }

QString rels(const QStringList &entries)
{
    QString text = QStringLiteral("<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">");
    for (const QString &entry : entries)
        text += entry;
    return text + QStringLiteral("</Relationships>");
}
QString rel(const QString &id, const QString &type, const QString &target)
{
    return QStringLiteral("<Relationship Id=\"%1\" Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/%2\" Target=\"%3\"/>")
        .arg(id, type, target);
}

// A two-sheet workbook ("Data", then "Nothing") around the given sheet records.
QMap<QString, QByteArray> package(const QByteArray &sheet, bool date1904)
{
    QMap<QString, QByteArray> parts;
    parts[QStringLiteral("_rels/.rels")] = rels({rel("rId1", "officeDocument", "xl/workbook.bin")}).toUtf8();
    parts[QStringLiteral("xl/_rels/workbook.bin.rels")] =
        rels({rel("rId1", "worksheet", "worksheets/sheet1.bin"), rel("rId2", "worksheet", "worksheets/sheet2.bin"),
              rel("rId3", "sharedStrings", "sharedStrings.bin"), rel("rId4", "styles", "styles.bin")})
            .toUtf8();
    parts[QStringLiteral("xl/workbook.bin")] = Records()
                                                   .add(131)                                        // begin book
                                                   .add(153, le32(date1904 ? 1 : 0) + le32(0) + wide({}))  // properties
                                                   .add(143)                                        // begin sheets
                                                   .add(156, le32(0) + le32(1) + wide("rId1") + wide("Data"))
                                                   .add(156, le32(0) + le32(2) + wide("rId2") + wide("Nothing"))
                                                   .add(144)
                                                   .add(132)
                                                   .bytes();
    const QByteArray xfTail(12, 0);
    parts[QStringLiteral("xl/styles.bin")] = Records()
                                                 .add(44, le16(164) + wide("yyyy\\-mm\\-dd"))
                                                 .add(47, le16(0xFFFF) + le16(0) + xfTail)  // a cell style format
                                                 .add(47, le16(0) + le16(0) + xfTail)       // cell formats 0 to 3
                                                 .add(47, le16(0) + le16(164) + xfTail)
                                                 .add(47, le16(0) + le16(21) + xfTail)
                                                 .add(47, le16(0) + le16(22) + xfTail)
                                                 .bytes();
    parts[QStringLiteral("xl/sharedStrings.bin")] = Records()
                                                        .add(159, le32(2) + le32(2))
                                                        .add(19, u8(0) + wide("first"))
                                                        .add(19, u8(1) + wide("second") + le32(0))
                                                        .add(160)
                                                        .bytes();
    parts[QStringLiteral("xl/worksheets/sheet1.bin")] = sheet;
    parts[QStringLiteral("xl/worksheets/sheet2.bin")] = Records().add(129).add(145).add(146).add(130).bytes();
    return parts;
}

QByteArray typesSheet(double dayOffset)
{
    return Records()
        .add(129)  // begin sheet
        .add(145)  // begin sheet data
        .add(0, le32(0) + QByteArray(13, 0))
        .add(2, cell(0) + le32((42u << 2) | 2))                  // RK integer
        .add(2, cell(1) + le32(0x400A0000u))                      // RK double 3.25
        .add(2, cell(2) + le32(quint32(-750 * 4) | 3))            // RK integer / 100
        .add(5, cell(3) + f64(-1e-300))
        .add(4, cell(4) + u8(1))
        .add(3, cell(5) + u8(0x07))
        .add(6, cell(6) + wide(QStringLiteral("ünï ☃")))
        .add(7, cell(7) + le32(1))
        .add(62, cell(8) + u8(0) + wide("rich"))
        .add(1, cell(9))                                          // blank
        .add(0, le32(1) + QByteArray(13, 0))
        .add(5, cell(0, 1) + f64(45351 - dayOffset))
        .add(5, cell(1, 2) + f64(0.25))
        .add(5, cell(2, 3) + f64(45366.5 - dayOffset))
        .add(9, cell(3) + f64(2) + le16(0) + le32(0))
        .add(8, cell(4) + wide("ab") + le16(0) + le32(0))
        .add(10, cell(5) + u8(0) + le16(0) + le32(0))
        .add(11, cell(6) + u8(0x2A) + le16(0) + le32(0))
        .add(0, le32(4) + QByteArray(13, 0))
        .add(5, cell(9) + f64(1e21))
        .add(146)
        .add(130)
        .bytes();
}

} // namespace

class tst_WorkbookReaderXlsb : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(m_dir.isValid()); }
    void everyCellKind_data();
    void everyCellKind();
    void damagedRecordsNameFileAndCause();

private:
    QTemporaryDir m_dir;
};

void tst_WorkbookReaderXlsb::everyCellKind_data()
{
    QTest::addColumn<bool>("date1904");
    QTest::newRow("1900 system") << false;
    QTest::newRow("1904 system") << true;
}

void tst_WorkbookReaderXlsb::everyCellKind()
{
    QFETCH(bool, date1904);
    const QString path = m_dir.filePath(QStringLiteral("types-%1.xlsb").arg(date1904));
    // The 1904 system counts 1,462 days fewer to the same date.
    QVERIFY(writeZipWithPython(path, package(typesSheet(date1904 ? 1462 : 0), date1904)));

    auto book = WorkbookReader::open(path);
    QCOMPARE(book->sheetNames(), (QStringList{"Data", "Nothing"}));
    const WorkbookSheet sheet = book->readSheet(0);
    QCOMPARE(sheet.rowCount(), 5);
    QCOMPARE(sheet.columnCount(), 10);
    const QStringList first{"42", "3.25", "-7.5", "-1E-300", "TRUE", "#DIV/0!", "ünï ☃", "second", "rich", ""};
    const QStringList second{"2024-02-29", "06:00:00", "2024-03-15 12:00:00", "2", "ab", "FALSE", "#N/A", "", "", ""};
    for (int c = 1; c <= 10; ++c) {
        QCOMPARE(sheet.cellText(1, c), first[c - 1]);
        QCOMPARE(sheet.cellText(2, c), second[c - 1]);
        QCOMPARE(sheet.cellText(3, c), QString());
    }
    QCOMPARE(sheet.cellText(5, 10), QStringLiteral("1E+21"));

    const WorkbookSheet empty = book->readSheet(1);
    QCOMPARE(empty.name, QStringLiteral("Nothing"));
    QCOMPARE(empty.rowCount(), 0);
}

void tst_WorkbookReaderXlsb::damagedRecordsNameFileAndCause()
{
    const QByteArray good = typesSheet(0);
    struct Damage
    {
        const char *name;
        QByteArray sheet;
        const char *cause;
    };
    const QList<Damage> damages{
        {"cut.xlsb", good.left(good.size() - 20), "cut short"},
        {"huge.xlsb", Records().add(145).bytes() + QByteArray("\x05\xFF\xFF\xFF\x7F", 5), "more than a record holds"},
        {"header.xlsb", Records().add(145).bytes() + QByteArray("\xFF\xFF\xFF", 3), "record header"},
        {"short.xlsb", Records().add(145).add(5, cell(0) + le32(1)).bytes(), "cut short"},
        {"string.xlsb", Records().add(145).add(7, cell(0) + le32(9)).bytes(), "shared string 9"},
        {"row.xlsb", Records().add(0, le32(2000000)).add(5, cell(0) + f64(1)).bytes(), "row 2000001"},
    };
    for (const Damage &damage : damages) {
        const QString path = m_dir.filePath(QString::fromLatin1(damage.name));
        QVERIFY(writeZipWithPython(path, package(damage.sheet, false)));
        expectWorkbookError(path, QString::fromLatin1(damage.cause));
    }
}

QTEST_GUILESS_MAIN(tst_WorkbookReaderXlsb)
#include "tst_WorkbookReaderXlsb.moc"
