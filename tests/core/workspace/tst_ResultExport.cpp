#include "core/interchange/GridExport.h"
#include "core/workspace/ResultExportSource.h"

#include "PythonReader.h"
#include "ErrorOf.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

// Exports of a result in every format, read back by independent readers: Python's csv module,
// html.parser, openpyxl for .xlsx and xlrd for .xls.
class TestResultExport : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    ResultTable m_table;

    // Three rows covering each kind of value, with NULLs and awkward texts.
    void fill(ResultTable &table)
    {
        // Columns first: adding a column may move the others.
        table.addColumn(QStringLiteral("id"), QStringLiteral("INTEGER"));
        table.addColumn(QStringLiteral("name, \"quoted\""), QStringLiteral("TEXT"));
        table.addColumn(QStringLiteral("amount"), QStringLiteral("REAL"));
        table.addColumn(QStringLiteral("flag"), QStringLiteral("BOOLEAN"), QMetaType::Bool);
        table.addColumn(QStringLiteral("day"), QStringLiteral("DATE"), QMetaType::QDate);
        table.addColumn(QStringLiteral("stamp"), QStringLiteral("TIMESTAMP"), QMetaType::QDateTime);
        table.addColumn(QStringLiteral("data"), QStringLiteral("BLOB"));
        const QVariant null;
        for (auto [i, n, a, f, d, s, b] :
             {std::tuple{QVariant(1), QVariant(QStringLiteral("plain")), QVariant(2.5), QVariant(true),
                         QVariant(QDate(2024, 2, 29)), QVariant(QDateTime(QDate(2023, 12, 31), QTime(23, 59, 58))),
                         QVariant(QByteArray("\x01\xff", 2))},
              {QVariant(-7000000000LL), QVariant(QStringLiteral("a,b \"c\"\nline two ünï <&>")), QVariant(-0.125),
               QVariant(false), QVariant(QDate(1999, 1, 1)), QVariant(QDateTime(QDate(2000, 1, 1), QTime(0, 0))), null},
              {null, QVariant(QStringLiteral("")), null, null, null, null, null}}) {
            int col = 0;
            for (const QVariant &v : {i, n, a, f, d, s, b})
                table.column(col++).appendVariant(v);
        }
        table.finishFetch(false);
    }

    QString exportTo(ExportFormat format, const QString &name)
    {
        const QString path = m_dir.filePath(name);
        ResultExportSource source(m_table);
        GridExport::write(source, format, path);
        return path;
    }

    static QByteArray read(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    // The grid's texts: what the delimited and HTML exports must hold, row by row.
    static QJsonArray expectedTexts()
    {
        return QJsonArray{
            QJsonArray{"id", "name, \"quoted\"", "amount", "flag", "day", "stamp", "data"},
            QJsonArray{"1", "plain", "2.5", "true", "2024-02-29", "2023-12-31 23:59:58.000", "0x01ff"},
            QJsonArray{"-7000000000", "a,b \"c\"\nline two ünï <&>", "-0.125", "false", "1999-01-01",
                       "2000-01-01 00:00:00.000", ""},
            QJsonArray{"", "", "", "", "", "", ""},
        };
    }

private slots:
    void initTestCase() { fill(m_table); }

    void csvReadsBackWithPythonCsv()
    {
        const QString path = exportTo(ExportFormat::Csv, QStringLiteral("rows.csv"));
        const QJsonDocument rows = runPythonReader(
            QStringLiteral("import csv, json, sys\n"
                           "with open(sys.argv[1], newline='', encoding='utf-8') as f:\n"
                           "    print(json.dumps(list(csv.reader(f))))\n"),
            {path});
        QCOMPARE(rows.array(), expectedTexts());
    }

    // The "Tab delimited" entry separates fields by line feeds: each field is one line, and a
    // field holding a line feed is quoted.
    void tabEntrySeparatesByLineFeeds()
    {
        const QByteArray bytes = read(exportTo(ExportFormat::LineFeedDelimited, QStringLiteral("rows.tab")));
        QVERIFY(!bytes.contains('\t'));
        QVERIFY(bytes.startsWith("id\n\"name, \"\"quoted\"\"\"\namount\nflag\nday\nstamp\ndata\r\n1\nplain\n2.5\n"));
        QVERIFY(bytes.contains("\n\"a,b \"\"c\"\"\nline two"));
    }

    void xlsmEntryWritesNothing()
    {
        const QString path = exportTo(GridExport::formatForEntry(5), QStringLiteral("rows.xlsm"));
        QVERIFY(!QFile::exists(path));
    }

    void htmlIsEscapedUtf8()
    {
        const QString path = exportTo(ExportFormat::Html, QStringLiteral("rows.html"));
        const QJsonDocument rows = runPythonReader(
            QStringLiteral("import json, sys\nfrom html.parser import HTMLParser\n"
                           "class P(HTMLParser):\n"
                           "    rows = []; cell = False\n"
                           "    def handle_starttag(self, tag, attrs):\n"
                           "        if tag == 'tr': self.rows.append([])\n"
                           "        elif tag in ('td', 'th'): self.rows[-1].append(''); self.cell = True\n"
                           "        elif tag == 'br': self.rows[-1][-1] += '\\n'\n"
                           "    def handle_endtag(self, tag):\n"
                           "        if tag in ('td', 'th'): self.cell = False\n"
                           "    def handle_data(self, data):\n"
                           "        if self.cell: self.rows[-1][-1] += data\n"
                           "p = P(convert_charrefs=True)\n"
                           "p.feed(open(sys.argv[1], encoding='utf-8').read())\n"
                           "print(json.dumps(p.rows))\n"),
            {path});
        QCOMPARE(rows.array(), expectedTexts());
        QVERIFY(read(path).contains("&lt;&amp;&gt;"));
    }

    void xlsxKeepsTypes()
    {
        const QString path = exportTo(ExportFormat::Xlsx, QStringLiteral("rows.xlsx"));
        const QJsonDocument rows = runPythonReader(
            QStringLiteral("import json, sys, openpyxl\n"
                           "ws = openpyxl.load_workbook(sys.argv[1]).worksheets[0]\n"
                           "print(json.dumps([[None if c.value is None else [type(c.value).__name__, str(c.value)]"
                           " for c in r] for r in ws.iter_rows(min_row=1, max_row=4, max_col=7)]))\n"),
            {path});
        checkWorkbook(rows.array());
    }

    void xlsKeepsTypes()
    {
        const QString path = exportTo(ExportFormat::Xls, QStringLiteral("rows.xls"));
        const QJsonDocument rows = readXlsCells(path, QStringLiteral("range(4)"), 7);
        checkWorkbook(rows.array());
    }

    // Values a spreadsheet number cannot hold exactly are written as text rather than rounded.
    void digitsBeyondDoublePrecisionStayText()
    {
        ResultTable table;
        table.addColumn(QStringLiteral("big"), QStringLiteral("int8"));
        table.addColumn(QStringLiteral("dec"), QStringLiteral("numeric"));
        table.column(0).appendInt(9007199254740993LL);
        table.column(1).appendVariant(QStringLiteral("12345678901234567.25"));
        table.column(0).appendInt(42);
        table.column(1).appendVariant(QStringLiteral("-0.000125"));
        table.finishFetch(false);
        const QString path = m_dir.filePath(QStringLiteral("digits.xlsx"));
        GridExport::write(ResultExportSource(table), ExportFormat::Xlsx, path);
        const QJsonDocument rows = runPythonReader(
            QStringLiteral("import json, sys, openpyxl\n"
                           "ws = openpyxl.load_workbook(sys.argv[1]).worksheets[0]\n"
                           "print(json.dumps([[[type(c.value).__name__, str(c.value)] for c in r] for r in ws.iter_rows(min_row=2)]))\n"),
            {path});
        QCOMPARE(rows.array(), (QJsonArray{QJsonArray{QJsonArray{"str", "9007199254740993"}, QJsonArray{"str", "12345678901234567.25"}},
                                           QJsonArray{QJsonArray{"int", "42"}, QJsonArray{"float", "-0.000125"}}}));
    }

    void emptyResultGivesHeaderRowOnly()
    {
        ResultTable empty;
        empty.addColumn(QStringLiteral("a"), QStringLiteral("INTEGER"));
        empty.addColumn(QStringLiteral("b"), QStringLiteral("TEXT"));
        empty.finishFetch(false);
        ResultExportSource source(empty);
        for (auto [format, name, script] :
             {std::tuple{ExportFormat::Xlsx, "empty.xlsx",
                         "import json, sys, openpyxl\n"
                         "ws = openpyxl.load_workbook(sys.argv[1]).worksheets[0]\n"
                         "print(json.dumps([[c.value for c in r] for r in ws.iter_rows()]))\n"},
              {ExportFormat::Xls, "empty.xls",
               "import json, sys, xlrd\n"
               "s = xlrd.open_workbook(sys.argv[1]).sheet_by_index(0)\n"
               "print(json.dumps([s.row_values(r) for r in range(s.nrows)]))\n"}}) {
            const QString path = m_dir.filePath(QString::fromLatin1(name));
            GridExport::write(source, format, path);
            QCOMPARE(runPythonReader(QString::fromLatin1(script), {path}).array(), (QJsonArray{QJsonArray{"a", "b"}}));
        }
    }

    // An .xls workbook of over 7 MB, whose allocation table no longer fits the header's list.
    void largeXlsReadsBack()
    {
        ResultTable big;
        big.addColumn(QStringLiteral("n"), QStringLiteral("INTEGER"));
        big.addColumn(QStringLiteral("t"), QStringLiteral("TEXT"));
        ResultColumn &n = big.column(0);
        ResultColumn &t = big.column(1);
        for (int i = 0; i < 60000; ++i) {
            n.appendInt(i);
            const QByteArray text = "row " + QByteArray::number(i) + QByteArray(i % 100, 'x');
            t.appendText(text.constData(), size_t(text.size()));
        }
        big.finishFetch(false);
        const QString path = m_dir.filePath(QStringLiteral("big.xls"));
        GridExport::write(ResultExportSource(big), ExportFormat::Xls, path);
        QVERIFY(QFileInfo(path).size() > 109 * 128 * 512);
        const QJsonDocument summary = runPythonReader(
            QStringLiteral("import json, sys, xlrd\n"
                           "s = xlrd.open_workbook(sys.argv[1]).sheet_by_index(0)\n"
                           "print(json.dumps([s.nrows, s.cell_value(60000, 0), s.cell_value(59999, 1)]))\n"),
            {path});
        QCOMPARE(summary.array(), (QJsonArray{60001, 59999, QStringLiteral("row 59998") + QString(59998 % 100, 'x')}));
    }

    // Long texts run over several records of the shared string table; a cell keeps at most
    // 32,767 characters.
    void longTextsInXls()
    {
        ResultTable table;
        table.addColumn(QStringLiteral("t"), QStringLiteral("TEXT"));
        const QString pattern = QStringLiteral("äß€ab");
        QStringList texts;
        for (int size : {5000, 20000, 32767, 40000, 3})
            texts << pattern.repeated(size / pattern.size() + 1).left(size);
        for (const QString &text : texts)
            table.column(0).appendVariant(text);
        table.finishFetch(false);
        const QString path = m_dir.filePath(QStringLiteral("long.xls"));
        GridExport::write(ResultExportSource(table), ExportFormat::Xls, path);
        const QJsonDocument cells = runPythonReader(
            QStringLiteral("import json, sys, xlrd\n"
                           "s = xlrd.open_workbook(sys.argv[1]).sheet_by_index(0)\n"
                           "print(json.dumps([s.cell_value(r, 0) for r in range(1, s.nrows)]))\n"),
            {path});
        QCOMPARE(cells.array().size(), texts.size());
        for (int i = 0; i < texts.size(); ++i)
            QCOMPARE(cells.array()[i].toString(), texts[i].left(32767));
    }

    void tooManyRowsForXlsIsRefused()
    {
        ResultTable big;
        auto &n = big.addColumn(QStringLiteral("n"), QStringLiteral("INTEGER"));
        for (int i = 0; i < 65536; ++i)
            n.appendInt(i);
        big.finishFetch(false);
        const QString path = m_dir.filePath(QStringLiteral("toomany.xls"));
        const QString error = errorOf([&] { GridExport::write(ResultExportSource(big), ExportFormat::Xls, path); });
        QVERIFY2(error.contains(QStringLiteral("65535")), qPrintable(error));
        QVERIFY(!QFile::exists(path));
    }

    void unwritableTargetNamesCauseAndLeavesNoFile_data()
    {
        QTest::addColumn<int>("format");
        for (ExportFormat f : {ExportFormat::Csv, ExportFormat::Html, ExportFormat::Xls, ExportFormat::Xlsx})
            QTest::addRow("%d", int(f)) << int(f);
    }
    void unwritableTargetNamesCauseAndLeavesNoFile()
    {
        QFETCH(int, format);
        const QString path = m_dir.filePath(QStringLiteral("missing-folder/rows.out"));
        const QString error = errorOf([&] { GridExport::write(ResultExportSource(m_table), ExportFormat(format), path); });
        QVERIFY2(error.contains(QStringLiteral("missing-folder")), qPrintable(error));
        QVERIFY2(error.contains(QStringLiteral("No such file or directory"), Qt::CaseInsensitive), qPrintable(error));
        QVERIFY(!QFile::exists(path));
    }

    // Cancelling keeps an existing file as it was and leaves no temporary file beside it.
    void cancelLeavesTargetUntouched_data() { unwritableTargetNamesCauseAndLeavesNoFile_data(); }
    void cancelLeavesTargetUntouched()
    {
        QFETCH(int, format);
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("kept.out"));
        {
            QFile old(path);
            QVERIFY(old.open(QIODevice::WriteOnly));
            old.write("old contents");
        }
        ExportProgress progress;
        progress.cancel = true;
        const qsizetype openFiles = QDir(QStringLiteral("/proc/self/fd")).count();
        QVERIFY_THROWS_EXCEPTION(ExportCancelled,
                                 GridExport::write(ResultExportSource(m_table), ExportFormat(format), path, &progress));
        QCOMPARE(QDir(QStringLiteral("/proc/self/fd")).count(), openFiles);
        QCOMPARE(read(path), QByteArray("old contents"));
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList{QStringLiteral("kept.out")});
    }

private:
    // Both workbook readers report [type, text] per cell, or null for an empty cell.
    void checkWorkbook(const QJsonArray &rows)
    {
        const QString dateType = QStringLiteral("datetime");
        const QJsonArray expected{
            QJsonArray{QJsonArray{"str", "id"}, QJsonArray{"str", "name, \"quoted\""}, QJsonArray{"str", "amount"},
                       QJsonArray{"str", "flag"}, QJsonArray{"str", "day"}, QJsonArray{"str", "stamp"},
                       QJsonArray{"str", "data"}},
            QJsonArray{QJsonArray{"int", "1"}, QJsonArray{"str", "plain"}, QJsonArray{"float", "2.5"},
                       QJsonArray{"bool", "True"}, QJsonArray{dateType, "2024-02-29 00:00:00"},
                       QJsonArray{dateType, "2023-12-31 23:59:58"}, QJsonArray{"str", "0x01ff"}},
            QJsonArray{QJsonArray{"int", "-7000000000"}, QJsonArray{"str", "a,b \"c\"\nline two ünï <&>"},
                       QJsonArray{"float", "-0.125"}, QJsonArray{"bool", "False"},
                       QJsonArray{dateType, "1999-01-01 00:00:00"}, QJsonArray{dateType, "2000-01-01 00:00:00"},
                       QJsonValue::Null},
            QJsonArray{QJsonValue::Null, QJsonValue::Null, QJsonValue::Null, QJsonValue::Null,
                       QJsonValue::Null, QJsonValue::Null, QJsonValue::Null},
        };
        QCOMPARE(rows.size(), expected.size());
        for (int r = 0; r < rows.size(); ++r)
            QCOMPARE(rows[r].toArray(), expected[r].toArray());
    }
};

QTEST_GUILESS_MAIN(TestResultExport)
#include "tst_ResultExport.moc"
