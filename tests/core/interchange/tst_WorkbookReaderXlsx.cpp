// .xlsx and .xlsm workbooks: files written by openpyxl read cell for cell as it wrote them (every
// cell type, both date systems, sparse cells, several sheets, an empty sheet), hand-made packages
// for what openpyxl does not write (formulas' cached values, inline and rich strings, cells
// without references), and damaged, truncated and hostile files giving errors that name the file.

#include "core/base/VantryError.h"
#include "core/interchange/WorkbookReader.h"

#include "PythonWriter.h"
#include "ErrorOf.h"
#include "SheetCells.h"
#include "WorkbookErrors.h"

#include <QFile>
#include <QTemporaryDir>

#include <QtTest>

namespace {

bool writePackage(const QString &path, const QMap<QString, QString> &parts)
{
    QMap<QString, QByteArray> bytes;
    for (auto it = parts.begin(); it != parts.end(); ++it)
        bytes.insert(it.key(), it.value().toUtf8());
    return writeZipWithPython(path, bytes);
}

const char *kRels = R"(<?xml version="1.0"?><Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">
<Relationship Id="rId1" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/officeDocument" Target="xl/workbook.xml"/>
</Relationships>)";

// A one-sheet package around the given sheet data, shared strings and number formats.
QMap<QString, QString> handMadePackage(const QString &sheetData, const QString &sharedStrings = {}, const QString &numFmts = {},
                            const QString &cellXfs = QStringLiteral("<xf numFmtId=\"0\"/>"))
{
    const QString ns = QStringLiteral("xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\"");
    QMap<QString, QString> parts;
    parts[QStringLiteral("_rels/.rels")] = QString::fromLatin1(kRels);
    parts[QStringLiteral("xl/workbook.xml")] = QStringLiteral(
        "<workbook %1 xmlns:r=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships\">"
        "<sheets><sheet name=\"Hand\" sheetId=\"1\" r:id=\"rId7\"/></sheets></workbook>").arg(ns);
    parts[QStringLiteral("xl/_rels/workbook.xml.rels")] = QStringLiteral(
        "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">"
        "<Relationship Id=\"rId7\" Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/worksheet\" Target=\"sheets/../worksheets/data.xml\"/>"
        "<Relationship Id=\"rId8\" Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/sharedStrings\" Target=\"/xl/strings.xml\"/>"
        "<Relationship Id=\"rId9\" Type=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships/styles\" Target=\"styles.xml\"/>"
        "</Relationships>");
    parts[QStringLiteral("xl/worksheets/data.xml")] = QStringLiteral("<worksheet %1><sheetData>%2</sheetData></worksheet>").arg(ns, sheetData);
    parts[QStringLiteral("xl/strings.xml")] = QStringLiteral("<sst %1>%2</sst>").arg(ns, sharedStrings);
    parts[QStringLiteral("xl/styles.xml")] = QStringLiteral("<styleSheet %1><numFmts>%2</numFmts><cellXfs>%3</cellXfs></styleSheet>")
                                                 .arg(ns, numFmts, cellXfs);
    return parts;
}

} // namespace

class tst_WorkbookReaderXlsx : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(m_dir.isValid()); }
    void everyCellTypeAsOpenpyxlWroteIt_data();
    void everyCellTypeAsOpenpyxlWroteIt();
    void sheetsInOrderSparseAndEmpty();
    void handMadeCellsAndCachedFormulaValues();
    void xmlFormsOfSheets();
    void damagedFilesNameFileAndCause();
    void hostileSheetsAreBounded();
    void progressReportsAndCancels();

private:
    QTemporaryDir m_dir;
};

void tst_WorkbookReaderXlsx::everyCellTypeAsOpenpyxlWroteIt_data()
{
    QTest::addColumn<QString>("epoch");
    QTest::addColumn<QString>("suffix");
    QTest::newRow("1900 system") << QStringLiteral("CALENDAR_WINDOWS_1900") << QStringLiteral("xlsx");
    QTest::newRow("1904 system, .xlsm") << QStringLiteral("CALENDAR_MAC_1904") << QStringLiteral("xlsm");
}

void tst_WorkbookReaderXlsx::everyCellTypeAsOpenpyxlWroteIt()
{
    QFETCH(QString, epoch);
    QFETCH(QString, suffix);
    const QString path = m_dir.filePath(QStringLiteral("types-%1.%2").arg(epoch, suffix));
    QVERIFY(runPythonWriter(
        QStringLiteral("import sys, datetime, openpyxl\n"
                       "from openpyxl.utils import datetime as xd\n"
                       "wb = openpyxl.Workbook(); wb.epoch = getattr(xd, sys.argv[2]); ws = wb.active; ws.title = 'Types'\n"
                       "ws.append([42, -7, 3.25, -1e-300, 1e21, 0.1, 123456789012345, 2**53])\n"
                       "ws.append(['text', 'ünï ☃', ' padded ', True, False, '=1+1'])\n"
                       "ws.append([datetime.date(2024, 2, 29), datetime.datetime(2024, 3, 15, 13, 45, 30),\n"
                       "           datetime.datetime(1999, 12, 31, 23, 59, 59, 250000), datetime.time(7, 5, 9),\n"
                       "           datetime.datetime(2024, 1, 1), datetime.date(1904, 1, 2)])\n"
                       "ws.cell(4, 1, 0.5).number_format = '0.00%'\n"
                       "ws.cell(4, 2, datetime.date(2023, 3, 15)).number_format = '[$-409]d mmm yyyy;@'\n"
                       "ws.cell(4, 3, 0.75).number_format = '\"d\" mm:ss'\n"
                       "wb.save(sys.argv[1])\n"),
        {path, epoch}));

    auto book = WorkbookReader::open(path);
    QCOMPARE(book->sheetNames(), QStringList{QStringLiteral("Types")});
    const WorkbookSheet sheet = book->readSheet(0);
    QCOMPARE(sheet.name, QStringLiteral("Types"));
    QCOMPARE(sheet.rowCount(), 4);
    QCOMPARE(sheet.columnCount(), 8);
    const QList<QStringList> expected{
        {"42", "-7", "3.25", "-1E-300", "1E+21", "0.1", "123456789012345", "9007199254740992"},
        // openpyxl writes no cached value for a formula, so its cell reads empty.
        {"text", "ünï ☃", " padded ", "TRUE", "FALSE", "", "", ""},
        {"2024-02-29", "2024-03-15 13:45:30", "1999-12-31 23:59:59.250", "07:05:09", "2024-01-01 00:00:00", "1904-01-02", "", ""},
        // A percentage is a number; a locale-tagged date format is a date; "d" in quotes is no day.
        {"0.5", "2023-03-15", "18:00:00", "", "", "", "", ""},
    };
    QCOMPARE(cells(sheet), expected);
}

void tst_WorkbookReaderXlsx::sheetsInOrderSparseAndEmpty()
{
    const QString path = m_dir.filePath(QStringLiteral("sheets.xlsx"));
    QVERIFY(runPythonWriter(QStringLiteral("import sys, openpyxl\n"
                                           "wb = openpyxl.Workbook(); wb.active.title = 'Zeta'\n"
                                           "wb.create_sheet('Empty'); s = wb.create_sheet('Sparse \"quoted\"')\n"
                                           "wb.active['A1'] = 'first'\n"
                                           "s['C5'] = 'c5'; s['Z100'] = 100; s['B2'] = 'b2'\n"
                                           "wb.save(sys.argv[1])\n"),
                            {path}));
    auto book = WorkbookReader::open(path);
    QCOMPARE(book->sheetNames(), (QStringList{"Zeta", "Empty", "Sparse \"quoted\""}));
    QCOMPARE(book->sheetIndex(QStringLiteral("Sparse \"quoted\"")), 2);
    QCOMPARE(book->sheetIndex(QStringLiteral("Missing")), -1);

    const WorkbookSheet empty = book->readSheet(1);
    QCOMPARE(empty.rowCount(), 0);
    QCOMPARE(empty.columnCount(), 0);

    // Sheets are read in any order and more than once.
    const WorkbookSheet sparse = book->readSheet(2);
    QCOMPARE(sparse.rowCount(), 100);
    QCOMPARE(sparse.columnCount(), 26);
    QCOMPARE(sparse.cellText(2, 2), QStringLiteral("b2"));
    QCOMPARE(sparse.cellText(5, 3), QStringLiteral("c5"));
    QCOMPARE(sparse.cellText(100, 26), QStringLiteral("100"));
    QCOMPARE(sparse.cellText(100, 25), QString());
    QCOMPARE(sparse.cellText(50, 3), QString());
    QCOMPARE(book->readSheet(0).cellText(1, 1), QStringLiteral("first"));
    QCOMPARE(book->readSheet(2).cellText(5, 3), QStringLiteral("c5"));
}

void tst_WorkbookReaderXlsx::handMadeCellsAndCachedFormulaValues()
{
    const QString path = m_dir.filePath(QStringLiteral("hand.xlsx"));
    const QString sharedStrings = QStringLiteral(
        "<si><t>plain</t></si>"
        "<si><r><t>rich </t></r><r><rPr><b/></rPr><t xml:space=\"preserve\">text</t></r><rPh><t>guide</t></rPh></si>"
        "<si><t>line_x000D_break</t></si>");
    const QString sheetData = QStringLiteral(
        "<row r=\"1\"><c r=\"A1\" t=\"s\"><v>0</v></c><c r=\"B1\" t=\"s\"><v>1</v></c><c r=\"C1\" t=\"s\"><v>2</v></c></row>"
        "<row r=\"2\"><c r=\"A2\"><f>1/3</f><v>0.33333333333333331</v></c>"
        "<c r=\"B2\" t=\"str\"><f>\"a\"&amp;\"b\"</f><v>ab</v></c>"
        "<c r=\"C2\" t=\"e\"><f>1/0</f><v>#DIV/0!</v></c>"
        "<c r=\"D2\" t=\"b\"><f>TRUE()</f><v>1</v></c>"
        "<c r=\"E2\" s=\"1\"><f>TODAY()</f><v>45366.5</v></c></row>"
        "<row r=\"3\"><c r=\"A3\" t=\"inlineStr\"><is><t>inline</t></is></c>"
        "<c r=\"B3\" t=\"d\"><v>2024-05-06T07:08:09</v></c>"
        "<c r=\"C3\" s=\"2\"><v>1.5</v></c><c r=\"D3\" s=\"3\"><v>0.0000123</v></c></row>"
        // A row and its cells without references follow the ones before them.
        "<row><c t=\"inlineStr\"><is><t>next</t></is></c><c><v>2</v></c></row>");
    // Style 1 uses a custom date format, 2 the built-in elapsed-time format 46, 3 the built-in number 0.
    QVERIFY(writePackage(path, handMadePackage(sheetData, sharedStrings,
                                               QStringLiteral("<numFmt numFmtId=\"170\" formatCode=\"dd/mm/yyyy\\ hh:mm\"/>"),
                                               QStringLiteral("<xf numFmtId=\"0\"/><xf numFmtId=\"170\"/><xf numFmtId=\"46\"/><xf numFmtId=\"0\"/>"))));
    auto book = WorkbookReader::open(path);
    QCOMPARE(book->sheetNames(), QStringList{QStringLiteral("Hand")});
    const QList<QStringList> expected{
        {"plain", "rich text", "line\rbreak", "", ""},
        {"0.3333333333333333", "ab", "#DIV/0!", "TRUE", "2024-03-15 12:00:00"},
        {"inline", "2024-05-06 07:08:09", "1900-01-01 12:00:00", "0.0000123", ""},
        {"next", "2", "", "", ""},
    };
    QCOMPARE(cells(book->readSheet(0)), expected);
}

void tst_WorkbookReaderXlsx::xmlFormsOfSheets()
{
    // Sheets as other writers spell them: a namespace prefix on every element, a declaration,
    // comments and processing instructions, single quotes, white space inside tags, entities and
    // character references in texts and attributes, CDATA, self-closing cells, and a text longer
    // than a read block (put in by Python: it would not pass on its command line).
    QMap<QString, QString> parts = handMadePackage({});
    parts[QStringLiteral("xl/worksheets/data.xml")] = QStringLiteral(
        "\uFEFF<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
        "<!-- written by hand -->\n"
        "<x:worksheet xmlns:x=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\"><x:sheetData>\n"
        "<x:row r='1'><x:c r = \"A1\" t=\"inlineStr\" ><x:is><x:t>a &lt;b&gt; &amp; &#233;&#x263A; &quot;q&apos;</x:t></x:is></x:c>"
        "<?pi ignored?><x:c r=\"B1\" t=\"str\"><x:v><![CDATA[<raw> & text]]></x:v></x:c><x:c r=\"C1\"/>"
        "<x:c r=\"D1\" t=\"inlineStr\"><x:is><x:t>@LONG@</x:t></x:is></x:c>"
        "</x:row>\n<x:row r=\"2\"><x:c r=\"A2\"><x:v>1<!-- inside -->5</x:v></x:c></x:row>"
        "</x:sheetData></x:worksheet>");
    const QString path = m_dir.filePath(QStringLiteral("forms.xlsx"));
    QStringList args{path};
    for (auto it = parts.begin(); it != parts.end(); ++it)
        args << it.key() << QString::fromLatin1(it.value().toUtf8().toBase64());
    QVERIFY(runPythonWriter(QStringLiteral("import sys, base64, zipfile\n"
                                           "with zipfile.ZipFile(sys.argv[1], 'w', zipfile.ZIP_DEFLATED) as z:\n"
                                           "    for i in range(2, len(sys.argv), 2):\n"
                                           "        z.writestr(sys.argv[i], base64.b64decode(sys.argv[i + 1]).replace(b'@LONG@', b'z' * 600000))\n"),
                            args));
    const QString longText(600000, u'z');
    QCOMPARE(cells(WorkbookReader::open(path)->readSheet(0)),
             (QList<QStringList>{{"a <b> & é☺ \"q'", "<raw> & text", "", longText}, {"15", "", "", ""}}));

    // A sheet read in many blocks, with tags and texts cut at their joins.
    const QString large = m_dir.filePath(QStringLiteral("large.xlsx"));
    QVERIFY(runPythonWriter(QStringLiteral("import sys, openpyxl\n"
                                           "wb = openpyxl.Workbook(write_only=True); ws = wb.create_sheet('Large')\n"
                                           "for i in range(20000): ws.append([i, 'row %d ' % i + 'y' * (i % 50), i * 0.5])\n"
                                           "wb.save(sys.argv[1])\n"),
                            {large}));
    const WorkbookSheet sheet = WorkbookReader::open(large)->readSheet(0);
    QCOMPARE(sheet.rowCount(), 20000);
    for (int i = 0; i < 20000; ++i) {
        QCOMPARE(sheet.cellText(i + 1, 1), QString::number(i));
        QCOMPARE(sheet.cellText(i + 1, 2), QStringLiteral("row %1 ").arg(i) + QString(i % 50, u'y'));
        QCOMPARE(sheet.cellText(i + 1, 3), QString::number(i * 0.5));
    }

    // Sheets that are not well formed name the part, the line and what is wrong.
    const QList<QPair<QString, QString>> broken{
        {"<row r=\"1\"><c r=\"A1\"><v>1</v></x></row>", "the end tag </x> does not close"},
        {"<row r=\"1\"><c r=\"A1\"><v>&nope;</v></c></row>", "the entity &nope; is not known"},
        {"<row r=\"1\"><c r=A1><v>1</v></c></row>", "is not quoted"},
        {"<row r=\"1\"><c r=\"A1\"><v>&#xD800;</v></c></row>", "is not valid"},
        {"<row r=\"1\"><c r=\"A1\"><v>1</v></c></row><row", "the tag <row> is not closed"},
    };
    for (const auto &brokenSheet : broken) {
        const QString brokenPath = m_dir.filePath(QStringLiteral("broken.xlsx"));
        QVERIFY(writePackage(brokenPath, handMadePackage(brokenSheet.first)));
        expectWorkbookError(brokenPath, QStringLiteral("is not valid XML (line 1: "));
        expectWorkbookError(brokenPath, brokenSheet.second);
    }
    QMap<QString, QString> doctype = handMadePackage({});
    doctype[QStringLiteral("xl/worksheets/data.xml")] = QStringLiteral("<!DOCTYPE worksheet [<!ENTITY a \"aaaa\">]><worksheet/>");
    QVERIFY(writePackage(path, doctype));
    expectWorkbookError(path, QStringLiteral("document type declarations are not supported"));
}

void tst_WorkbookReaderXlsx::damagedFilesNameFileAndCause()
{
    const QString good = m_dir.filePath(QStringLiteral("good.xlsx"));
    QVERIFY(runPythonWriter(QStringLiteral("import sys, openpyxl\n"
                                           "wb = openpyxl.Workbook()\n"
                                           "for r in range(2000): wb.active.append([r, 'row %d' % r, r * 0.5])\n"
                                           "wb.save(sys.argv[1])\n"),
                            {good}));
    QFile file(good);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    // Writes `content` as a file of that name and expects reading it to fail naming `part`.
    auto expectBytesError = [&](const QString &name, const QByteArray &content, const QString &part) {
        QFile out(m_dir.filePath(name));
        QVERIFY(out.open(QIODevice::WriteOnly));
        out.write(content);
        out.close();
        expectWorkbookError(out.fileName(), part);
    };

    expectWorkbookError(m_dir.filePath(QStringLiteral("missing.xlsx")), QStringLiteral("does not exist"));
    expectBytesError(QStringLiteral("empty.xlsx"), {}, QStringLiteral("empty"));
    expectBytesError(QStringLiteral("text.xlsx"), "name,value\n1,2\n", QStringLiteral("not an Excel workbook"));
    expectBytesError(QStringLiteral("truncated.xlsx"), bytes.left(bytes.size() / 2), QStringLiteral("ZIP"));

    // A flipped byte inside the compressed sheet: the ZIP opens, the sheet does not read.
    const qsizetype sheetAt = bytes.indexOf("xl/worksheets/sheet1.xml");
    QVERIFY(sheetAt > 0);
    QByteArray flipped = bytes;
    for (qsizetype i = sheetAt + 40; i < sheetAt + 400; i += 7)
        flipped[i] = char(flipped[i] ^ 0x5A);
    expectBytesError(QStringLiteral("flipped.xlsx"), flipped, QStringLiteral("xl/worksheets/sheet1.xml"));

    const QString noWorkbook = m_dir.filePath(QStringLiteral("other.xlsx"));
    QVERIFY(writePackage(noWorkbook, {{"readme.txt", "not a workbook"}}));
    expectWorkbookError(noWorkbook, QStringLiteral("without a workbook part"));

    const QString badString = m_dir.filePath(QStringLiteral("badstring.xlsx"));
    QVERIFY(writePackage(badString, handMadePackage(QStringLiteral("<row r=\"1\"><c r=\"A1\" t=\"s\"><v>5</v></c></row>"))));
    expectWorkbookError(badString, QStringLiteral("row 1, column 1"));

    const QString badRef = m_dir.filePath(QStringLiteral("badref.xlsx"));
    QVERIFY(writePackage(badRef, handMadePackage(QStringLiteral("<row r=\"1\"><c r=\"1A\"><v>5</v></c></row>"))));
    expectWorkbookError(badRef, QStringLiteral("\"1A\""));
}

void tst_WorkbookReaderXlsx::hostileSheetsAreBounded()
{
    // One cell in the last row and column is a small sheet: rows hold cells only up to their last one.
    const QString corner = m_dir.filePath(QStringLiteral("corner.xlsx"));
    QVERIFY(writePackage(corner, handMadePackage(QStringLiteral("<row r=\"1048576\"><c r=\"XFD1048576\"><v>1</v></c></row>"))));
    const WorkbookSheet sheet = WorkbookReader::open(corner)->readSheet(0);
    QCOMPARE(sheet.rowCount(), 1048576);
    QCOMPARE(sheet.columnCount(), 16384);
    QCOMPARE(sheet.cellText(1048576, 16384), QStringLiteral("1"));

    const QString beyond = m_dir.filePath(QStringLiteral("beyond.xlsx"));
    QVERIFY(writePackage(beyond, handMadePackage(QStringLiteral("<row r=\"1\"><c r=\"XFE1\"><v>1</v></c></row>"))));
    expectWorkbookError(beyond, QStringLiteral("column 16385"));

    // Thousands of rows each reaching the last column would store tens of millions of cells.
    QString wide;
    for (int r = 1; r <= 1300; ++r)
        wide += QStringLiteral("<row r=\"%1\"><c r=\"XFD%1\"><v>1</v></c></row>").arg(r);
    const QString widePath = m_dir.filePath(QStringLiteral("wide.xlsx"));
    QVERIFY(writePackage(widePath, handMadePackage(wide)));
    expectWorkbookError(widePath, QStringLiteral("too many to load"));
}

void tst_WorkbookReaderXlsx::progressReportsAndCancels()
{
    const QString path = m_dir.filePath(QStringLiteral("rows.xlsx"));
    QVERIFY(runPythonWriter(QStringLiteral("import sys, openpyxl\n"
                                           "wb = openpyxl.Workbook()\n"
                                           "for r in range(5000): wb.active.append([r])\n"
                                           "wb.save(sys.argv[1])\n"),
                            {path}));
    auto book = WorkbookReader::open(path);
    QList<int> reported;
    const WorkbookSheet sheet = book->readSheet(0, [&](int rows) {
        reported << rows;
        return true;
    });
    QCOMPARE(sheet.rowCount(), 5000);
    QCOMPARE(sheet.cellText(5000, 1), QStringLiteral("4999"));
    QVERIFY(!reported.isEmpty());
    QVERIFY(std::is_sorted(reported.begin(), reported.end()));

    QCOMPARE(errorOf([&] { book->readSheet(0, [](int rows) { return rows < 2000; }); }), QStringLiteral("Cancelled"));
}

QTEST_GUILESS_MAIN(tst_WorkbookReaderXlsx)
#include "tst_WorkbookReaderXlsx.moc"
