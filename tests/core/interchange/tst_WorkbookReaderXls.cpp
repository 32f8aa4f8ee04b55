// .xls workbooks written by xlwt read cell for cell (numbers, texts, booleans, dates of both date
// systems, sparse cells, several sheets and an empty one), and damaged or truncated files give
// errors that name the file.

#include "core/base/VantryError.h"
#include "core/interchange/WorkbookReader.h"

#include "PythonWriter.h"
#include "ErrorOf.h"
#include "SheetCells.h"
#include "WorkbookErrors.h"

#include <QFile>
#include <QtEndian>
#include <QTemporaryDir>

#include <QtTest>

class tst_WorkbookReaderXls : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(m_dir.isValid()); }
    void cellsAsXlwtWroteThem_data();
    void cellsAsXlwtWroteThem();
    void largeWorkbookOverManyAllocationSectors();
    void damagedFilesNameFileAndCause();

private:
    QTemporaryDir m_dir;
};

void tst_WorkbookReaderXls::cellsAsXlwtWroteThem_data()
{
    QTest::addColumn<bool>("dates1904");
    QTest::newRow("1900 system") << false;
    QTest::newRow("1904 system") << true;
}

void tst_WorkbookReaderXls::cellsAsXlwtWroteThem()
{
    QFETCH(bool, dates1904);
    const QString path = m_dir.filePath(QStringLiteral("types-%1.xls").arg(dates1904));
    QVERIFY(runPythonWriter(
        QStringLiteral("import sys, datetime, xlwt\n"
                       "wb = xlwt.Workbook(); wb.dates_1904 = sys.argv[2] == '1'\n"
                       "ws = wb.add_sheet('Types')\n"
                       "for c, v in enumerate([42, -7, 3.25, -1e-300, 1e21, 0.1, 123456789012345, 'text', 'ünï ☃', True]):\n"
                       "    ws.write(0, c, v)\n"
                       "fmt = lambda f: xlwt.easyxf(num_format_str=f)\n"
                       "ws.write(1, 0, datetime.date(2024, 2, 29), fmt('yyyy-mm-dd'))\n"
                       "ws.write(1, 1, datetime.datetime(2024, 3, 15, 13, 45, 30), fmt('yyyy-mm-dd hh:mm:ss'))\n"
                       "ws.write(1, 2, datetime.time(7, 5, 9), fmt('hh:mm:ss'))\n"
                       "ws.write(1, 3, 0.5, fmt('0.00%'))\n"
                       "ws.write(4, 5, 'sparse')\n"
                       "wb.add_sheet('Empty'); wb.add_sheet('Third')\n"
                       "wb.save(sys.argv[1])\n"),
        {path, dates1904 ? QStringLiteral("1") : QStringLiteral("0")}));

    auto book = WorkbookReader::open(path);
    QCOMPARE(book->sheetNames(), (QStringList{"Types", "Empty", "Third"}));
    const QStringList none(10, QString());
    QStringList dates = none, sparse = none;
    dates[0] = QStringLiteral("2024-02-29");
    dates[1] = QStringLiteral("2024-03-15 13:45:30");
    dates[2] = QStringLiteral("07:05:09");
    dates[3] = QStringLiteral("0.5");
    sparse[5] = QStringLiteral("sparse");
    const QStringList first{"42", "-7", "3.25", "-1E-300", "1E+21", "0.1", "123456789012345", "text", "ünï ☃", "TRUE"};
    QCOMPARE(cells(book->readSheet(0)), (QList<QStringList>{first, dates, none, none, sparse}));

    const WorkbookSheet empty = book->readSheet(1);
    QCOMPARE(empty.name, QStringLiteral("Empty"));
    QCOMPARE(empty.rowCount(), 0);
    QCOMPARE(empty.columnCount(), 0);
}

void tst_WorkbookReaderXls::largeWorkbookOverManyAllocationSectors()
{
    // Over 7 MB: the allocation table's sectors no longer fit the header's list and go on in a
    // chain of their own, and the shared strings run over many CONTINUE records.
    const QString path = m_dir.filePath(QStringLiteral("large.xls"));
    QVERIFY(runPythonWriter(QStringLiteral("import sys, xlwt\n"
                                           "wb = xlwt.Workbook(); ws = wb.add_sheet('Large')\n"
                                           "for r in range(25000): ws.write(r, 0, r * 1.5); ws.write(r, 1, 'row %d ' % r + 'x' * (150 + r % 300))\n"
                                           "wb.save(sys.argv[1])\n"),
                            {path}));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray header = file.read(76);
    QVERIFY2(qFromLittleEndian<quint32>(header.constData() + 72) > 0, "the file needs no extra allocation table list");

    auto book = WorkbookReader::open(path);
    const WorkbookSheet sheet = book->readSheet(0);
    QCOMPARE(sheet.rowCount(), 25000);
    for (int r = 0; r < 25000; ++r) {
        QCOMPARE(sheet.cellText(r + 1, 1), QString::number(r * 1.5, 'g', 17));
        QCOMPARE(sheet.cellText(r + 1, 2), QStringLiteral("row %1 ").arg(r) + QString(150 + r % 300, u'x'));
    }

    // Progress is told as rows are read, and refusing it cancels.
    int reports = 0;
    QCOMPARE(errorOf([&] { book->readSheet(0, [&](int rowsRead) { return ++reports < 3 && rowsRead > 0; }); }),
             QStringLiteral("Cancelled"));
    QCOMPARE(reports, 3);
}

void tst_WorkbookReaderXls::damagedFilesNameFileAndCause()
{
    const QString good = m_dir.filePath(QStringLiteral("good.xls"));
    QVERIFY(runPythonWriter(QStringLiteral("import sys, xlwt\n"
                                           "wb = xlwt.Workbook(); ws = wb.add_sheet('Rows')\n"
                                           "for r in range(3000): ws.write(r, 0, r); ws.write(r, 1, 'row %d' % r)\n"
                                           "wb.save(sys.argv[1])\n"),
                            {good}));
    QFile file(good);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();

    struct Damage
    {
        const char *name;
        QByteArray content;
    };
    QByteArray scrambledHeader = bytes;
    for (int i = 8; i < 512; ++i)
        scrambledHeader[i] = char(0xFF);
    const QList<Damage> damages{
        {"truncated.xls", bytes.left(bytes.size() / 3)},
        {"header.xls", scrambledHeader},
        {"signature-only.xls", bytes.left(8)},
        {"text.xls", "name,value\n1,2\n"},
    };
    for (const Damage &damage : damages) {
        const QString path = m_dir.filePath(QString::fromLatin1(damage.name));
        QFile out(path);
        QVERIFY(out.open(QIODevice::WriteOnly));
        out.write(damage.content);
        out.close();
        expectWorkbookError(path, QStringLiteral("Cannot read the workbook \"%1\": ").arg(path));
    }
}

QTEST_GUILESS_MAIN(tst_WorkbookReaderXls)
#include "tst_WorkbookReaderXls.moc"
