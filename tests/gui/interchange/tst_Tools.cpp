#include "gui/components/DBGridEh1.h"
#include "gui/interchange/DMToolsUn.h"
#include "core/interchange/GridExport.h"
#include "gui/ui/GridPrinter.h"
#include "gui/ui/SePrintPreviewUn.h"
#include "gui/ui/SynEditPrint.h"
#include "gui/ui/vtrPrvFrmEh.h"
#include "core/workspace/ResultExportSource.h"
#include "gui/workspace/ResultPanel.h"

#include "GuiFixture.h"
#include "ResultPanelHarness.h"
#include "PythonReader.h"
#include "WorkspaceDriver.h"

#include <Qsci/qsciscintilla.h>

#include <QAction>
#include <QJsonArray>
#include <QPrinter>
#include <QProgressDialog>
#include <QPushButton>
#include <QProcess>
#include <QSignalSpy>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QToolButton>
#include <QtTest>

// The tools service driven from the result panel over a real SQLite file: exports through the
// grid's buttons (worker thread, grid disabled meanwhile, errors in a box), and the grid and
// editor previews printed to PDF files read back with pdftotext. With VANTRY_PREVIEW_SCREENSHOT
// set, the grid preview is also saved to that file.
class TestTools : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QSqlDatabase m_db;
    TdmTools m_tools;
    std::unique_ptr<ResultPanelHarness> m_harness;
    ResultPanel *m_panel = nullptr;
    QStringList m_errors;

    static QString pdfText(const QString &pdf)
    {
        QProcess p;
        p.start(QStringLiteral("pdftotext"), {QStringLiteral("-layout"), pdf, QStringLiteral("-")});
        p.waitForFinished(60000);
        return QString::fromUtf8(p.readAllStandardOutput());
    }
    void answerSaveDialog(const QString &fileName, int entry, QStringList *asked = nullptr)
    {
        m_tools.setSaveDialog([=](QWidget *, const QString &caption, const QString &name, QString &out, int &chosen) {
            if (asked)
                *asked << caption << name;
            out = fileName;
            chosen = entry;
            return true;
        });
    }
    bool exportWith(const char *button)
    {
        QSignalSpy finished(&m_tools, &TdmTools::exportFinished);
        m_panel->findChild<QAction *>(QString::fromLatin1(button))->trigger();
        if (!m_tools.isExporting())
            return false;
        if (m_panel->isEnabled())
            qWarning("the panel stays enabled during the export");
        return finished.wait(30000) && !m_tools.isExporting();
    }

private slots:
    void init()
    {
        QCoreApplication::setApplicationName(QStringLiteral("Vantry"));
        m_db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("t"));
        m_db.setDatabaseName(m_dir.filePath(QStringLiteral("t.db")));
        QVERIFY(m_db.open());
        QSqlQuery q(m_db);
        QVERIFY(q.exec("create table if not exists tl_city (id integer, name text, people real)"));
        QVERIFY(q.exec("delete from tl_city"));
        QVERIFY(q.exec("insert into tl_city values (1, 'Paris', 2.1e6), (2, 'Lyon, \"old\"', 520000.5), (3, null, null)"));
        m_errors.clear();
        m_tools.setErrorBox([this](QWidget *, const QString &message) { m_errors << message; });
        m_harness = std::make_unique<ResultPanelHarness>(m_dir.filePath(QStringLiteral("t.db")));
        m_panel = m_harness->panel.get();
        m_panel->setTools(&m_tools);
        m_panel->resize(800, 400);
        m_panel->show();
        QVERIFY(m_harness->open(QStringLiteral("select * from tl_city order by id")));
    }
    void cleanup()
    {
        m_harness.reset();
        m_panel = nullptr;
        m_db.close();
        m_db = QSqlDatabase();
        QSqlDatabase::removeDatabase(QStringLiteral("t"));
    }

    void exportReadsTheRowsNotFetchedYet()
    {
        QSqlQuery q(m_db);
        QVERIFY(q.exec("with recursive n(x) as (select 4 union all select x + 1 from n where x < 2503) "
                       "insert into tl_city select x, 'town ' || x, x from n"));
        QVERIFY(m_harness->open(QStringLiteral("select * from tl_city order by id")));
        QVERIFY(m_panel->query().moreRemain());  // batches of 1,000 rows: most are still on the server
        const QString file = m_dir.filePath(QStringLiteral("all.csv"));
        answerSaveDialog(file, 1);
        QSignalSpy finished(&m_tools, &TdmTools::exportFinished);
        m_panel->findChild<QAction *>(QStringLiteral("tbExport"))->trigger();
        QVERIFY(finished.wait(30000));
        QFile written(file);
        QVERIFY(written.open(QIODevice::ReadOnly));
        QCOMPARE(written.readAll().count('\n'), 1 + 2503);  // the title line and every row
    }

    void exportButtonWritesCsvOffTheWindowThread()
    {
        const QString file = m_dir.filePath(QStringLiteral("grid.csv"));
        answerSaveDialog(file, 1);
        QVERIFY(exportWith("tbExport"));
        QVERIFY(m_panel->isEnabled());
        QVERIFY(m_errors.isEmpty());
        const QJsonDocument rows = runPythonReader(
            QStringLiteral("import csv, json, sys\nprint(json.dumps(list(csv.reader(open(sys.argv[1], newline='')))))\n"), {file});
        QCOMPARE(rows.array(), (QJsonArray{QJsonArray{"id", "name", "people"}, QJsonArray{"1", "Paris", "2100000"},
                                           QJsonArray{"2", "Lyon, \"old\"", "520000.5"}, QJsonArray{"3", "", ""}}));
    }

    void excelButtonOffersVantryXls()
    {
        const QString file = m_dir.filePath(QStringLiteral("book"));
        QStringList asked;
        answerSaveDialog(file, 3, &asked);
        QVERIFY(exportWith("tbExcelExport"));
        QCOMPARE(asked, (QStringList{"Exporting to MS Excel...", "Vantry.xls"}));
        // A name without an extension gets the chosen entry's.
        const QJsonDocument rows = runPythonReader(
            QStringLiteral("import json, sys, xlrd\ns = xlrd.open_workbook(sys.argv[1]).sheet_by_index(0)\n"
                           "print(json.dumps([s.row_values(r) for r in range(s.nrows)]))\n"), {file + QStringLiteral(".xls")});
        QCOMPARE(rows.array(), (QJsonArray{QJsonArray{"id", "name", "people"}, QJsonArray{1, "Paris", 2100000},
                                           QJsonArray{2, "Lyon, \"old\"", 520000.5}, QJsonArray{3, "", ""}}));
    }

    void failedExportShowsCauseAndEnablesGridAgain()
    {
        const QString file = m_dir.filePath(QStringLiteral("no-such-folder/grid.xlsx"));
        answerSaveDialog(file, 4);
        QVERIFY(exportWith("tbExport"));
        QVERIFY(m_panel->isEnabled());
        QCOMPARE(m_errors.size(), 1);
        QVERIFY2(m_errors.first().contains(QStringLiteral("no-such-folder")), qPrintable(m_errors.first()));
        QVERIFY(!QFile::exists(file));
    }

    void xlsmEntryDoesNothing()
    {
        const QString file = m_dir.filePath(QStringLiteral("grid.xlsm"));
        answerSaveDialog(file, 5);
        QVERIFY(!exportWith("tbExport"));
        QVERIFY(m_panel->isEnabled());
        QVERIFY(!QFile::exists(file));
    }

    static void fillLong(ResultTable &table)
    {
        for (int c = 0; c < 5; ++c)
            table.addColumn(QStringLiteral("c%1").arg(c), QStringLiteral("TEXT"));
        for (int r = 0; r < 300000; ++r)
            for (int c = 0; c < 5; ++c)
                table.column(c).appendVariant(c % 2 ? QVariant(r * 0.5) : QVariant(QStringLiteral("text %1").arg(r)));
        table.finishFetch(false);
    }

    // A long export shows its progress after half a second; Cancel stops it and leaves no file.
    void cancelInProgressDialogLeavesNoFile()
    {
        ResultTable table;
        fillLong(table);
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("long.xlsx"));
        answerSaveDialog(file, 4);
        QWidget grid;
        grid.show();
        QSignalSpy finished(&m_tools, &TdmTools::exportFinished);
        m_tools.ExportGrid(&grid, std::make_shared<ResultExportSource>(table));
        QVERIFY(!grid.isEnabled());
        QProgressDialog *progress = grid.findChild<QProgressDialog *>(QStringLiteral("ExportProgress"));
        QVERIFY(progress);
        QTRY_VERIFY_WITH_TIMEOUT(progress->isVisible(), 5000);
        QVERIFY(finished.isEmpty());
        QTest::mouseClick(progress->findChild<QPushButton *>(), Qt::LeftButton);
        QVERIFY(finished.wait(30000));
        QCOMPARE(finished.first().at(0).toBool(), false);
        QVERIFY(m_errors.isEmpty());
        QVERIFY(grid.isEnabled());
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList());
    }

    // Dropping the rows of a running export (closing the result or the tab) stops it first.
    void cancelExportsStopsAndWaits()
    {
        auto table = std::make_unique<ResultTable>();
        fillLong(*table);
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("dropped.csv"));
        answerSaveDialog(file, 1);
        QWidget grid, other;
        QSignalSpy finished(&m_tools, &TdmTools::exportFinished);
        m_tools.ExportGrid(&grid, std::make_shared<ResultExportSource>(*table));
        m_tools.cancelExports(&other);  // another grid's exports only
        QVERIFY(m_tools.isExporting() || !finished.isEmpty());
        m_tools.cancelExports(&grid);
        table.reset();
        QVERIFY(finished.wait(10000) || !finished.isEmpty());
        QVERIFY(!m_tools.isExporting());
        QVERIFY(grid.isEnabled());
    }

    void gridPreviewPrintsTitleHeaderAndEveryRow()
    {
        m_panel->findChild<QAction *>(QStringLiteral("tbPreview"))->trigger();
        auto *preview = m_panel->window()->findChild<TvtrPreviewFormEh *>();
        if (!preview)
            for (QWidget *w : QApplication::topLevelWidgets())
                if ((preview = qobject_cast<TvtrPreviewFormEh *>(w)))
                    break;
        QVERIFY(preview);
        QTRY_COMPARE(preview->pageCount(), 1);
        // One page: both page buttons are off.
        QVERIFY(!preview->findChild<QToolButton *>(QStringLiteral("tbPrevPage"))->isEnabled());
        QVERIFY(!preview->findChild<QToolButton *>(QStringLiteral("tbNextPage"))->isEnabled());
        if (const QString shot = qEnvironmentVariable("VANTRY_PREVIEW_SCREENSHOT"); !shot.isEmpty()) {
            preview->resize(900, 650);
            QTest::qWait(200);
            QVERIFY(preview->grab().save(shot));
        }

        const QString pdf = m_dir.filePath(QStringLiteral("grid.pdf"));
        preview->printDialog = [pdf](QPrinter *printer) {
            printer->setOutputFormat(QPrinter::PdfFormat);
            printer->setOutputFileName(pdf);
            return true;
        };
        preview->tbtPrintClick();
        const QString text = pdfText(pdf);
        for (const char *expected : {"Sql Result", "id", "name", "people", "Paris", "Lyon, \"old\"", "520000.5", "Page 1 of 1"})
            QVERIFY2(text.contains(QString::fromLatin1(expected)), qPrintable(QStringLiteral("%1 missing in:\n%2").arg(expected, text)));
        // Esc closes a preview that is not generating.
        QTest::keyClick(preview, Qt::Key_Escape);
        QTRY_VERIFY(!preview->isVisible());
    }

    // Many rows run down several pages; many columns split each row block across pages; the
    // titles repeat on every page.
    void largeGridIsPaginatedAndSplit()
    {
        ResultTable table;
        for (int c = 0; c < 24; ++c)
            table.addColumn(QStringLiteral("column_%1").arg(c), QStringLiteral("TEXT"));
        for (int r = 0; r < 150; ++r)
            for (int c = 0; c < 24; ++c)
                table.column(c).appendVariant(QStringLiteral("r%1c%2").arg(r).arg(c));
        table.finishFetch(false);
        TvtrPreviewFormEh preview(PrintTable::from(ResultExportSource(table)), QStringLiteral("Wide"));
        preview.show();
        QTRY_VERIFY(preview.pageCount() >= 4);
        QVERIFY(preview.findChild<QToolButton *>(QStringLiteral("tbNextPage"))->isEnabled());
        auto *next = preview.findChild<QToolButton *>(QStringLiteral("tbNextPage"));
        QTest::mouseClick(next, Qt::LeftButton);
        QCOMPARE(preview.currentPage(), 2);
        QVERIFY(preview.findChild<QToolButton *>(QStringLiteral("tbPrevPage"))->isEnabled());
        // Held down, the button steps on by itself; releasing it adds no step.
        QTest::mousePress(next, Qt::LeftButton);
        QTRY_VERIFY_WITH_TIMEOUT(preview.currentPage() >= 4, 3000);
        const int held = preview.currentPage();
        QTest::mouseRelease(next, Qt::LeftButton);
        QCOMPARE(preview.currentPage(), held);

        const QString pdf = m_dir.filePath(QStringLiteral("wide.pdf"));
        QPrinter printer(QPrinter::HighResolution);
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(pdf);
        const int pages = GridPrinter::print(&printer, PrintTable::from(ResultExportSource(table)), QStringLiteral("Wide"));
        const QString text = pdfText(pdf);
        QCOMPARE(text.count(QStringLiteral("Wide")), pages);
        QVERIFY2(pages >= 4, qPrintable(QString::number(pages)));
        for (const char *expected : {"r0c0", "r149c0", "r0c23", "r149c23", "column_23"})
            QVERIFY2(text.contains(QString::fromLatin1(expected)), qPrintable(text.left(3000)));
    }

    void editorPreviewPrintsBands()
    {
        QsciScintilla editor;
        QString script;
        for (int i = 0; i < 120; ++i)
            script += QStringLiteral("select %1 from tl_city;\n").arg(i);
        editor.setText(script);
        TSynEditPrint printer(QPrinter::HighResolution);
        printer.setTitle(QStringLiteral("Sql Script"));
        const QString pdf = m_dir.filePath(QStringLiteral("editor.pdf"));
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(pdf);
        TSePrintPreviewFrm preview(&printer, &editor);
        preview.show();
        QTRY_VERIFY(preview.pageInfo().startsWith(QStringLiteral(" Page: ")));
        preview.PrintCmdExecute();
        const QString text = pdfText(pdf);
        const int pages = printer.pageCount();
        QVERIFY(pages >= 2);
        for (int page = 1; page <= pages; ++page) {
            QVERIFY2(text.contains(QStringLiteral("Page: %1 of %2").arg(page).arg(pages)), qPrintable(text));
            QVERIFY(text.contains(QStringLiteral("%1/%2").arg(page).arg(pages)));
        }
        QCOMPARE(text.count(QStringLiteral("Sql Script")), pages);
        QCOMPARE(text.count(QStringLiteral("Printed by Vantry")), pages);
        QCOMPARE(text.count(QStringLiteral("Print Date: ")), pages);
        QVERIFY(text.contains(QStringLiteral("select 0 from tl_city;")));
        QVERIFY(text.contains(QStringLiteral("select 119 from tl_city;")));
    }

    // The editor's Print and Preview buttons and the log grid's Print entry reach the tools
    // service with their titles.
    void workspaceCommandsPrint()
    {
        GuiFixture fx;
        fx.show();
        TSqlFrm *frame = fx.window->currentFrame();
        WorkspaceDriver::selectConnection(frame, QStringLiteral("Sample (SQLite)"));
        WorkspaceDriver::run(frame, QStringLiteral("select count(*) as n from CUSTOMERS"));
        QString pdf;
        fx.tools->setPrintDialog([&pdf](QWidget *, QPrinter *printer) {
            printer->setOutputFormat(QPrinter::PdfFormat);
            printer->setOutputFileName(pdf);
            return true;
        });

        pdf = m_dir.filePath(QStringLiteral("script.pdf"));
        auto *printSql = frame->findChild<QToolButton *>(QStringLiteral("tbPrintSQL"));
        QVERIFY(printSql->isEnabled());
        printSql->click();
        QString text = pdfText(pdf);
        QVERIFY2(text.contains(QStringLiteral("Sql Script")) && text.contains(QStringLiteral("from CUSTOMERS")), qPrintable(text));

        pdf = m_dir.filePath(QStringLiteral("log.pdf"));
        frame->log()->findChild<QAction *>(QStringLiteral("PrintGridMenuItem"))->trigger();
        text = pdfText(pdf);
        QVERIFY2(text.contains(QStringLiteral("Execution Log")) && text.contains(QStringLiteral("OK.")), qPrintable(text));

        QString title;
        QTimer::singleShot(0, this, [&title] {
            if (QWidget *preview = QApplication::activeModalWidget()) {
                title = preview->windowTitle();
                preview->close();
            }
        });
        frame->findChild<QToolButton *>(QStringLiteral("tbPrintPreview"))->click();
        QCOMPARE(title, QStringLiteral("Sql Script"));
    }

    void textPreviewMouseScales()
    {
        QsciScintilla editor;
        editor.setText(QStringLiteral("select 1"));
        TSynEditPrint printer;
        TSePrintPreviewFrm preview(&printer, &editor);
        preview.setScalePercent(30);
        preview.SynEditPrintPreviewMouseDown(Qt::RightButton);
        QCOMPARE(preview.scalePercent(), 25);
        preview.SynEditPrintPreviewMouseDown(Qt::RightButton);
        QCOMPARE(preview.scalePercent(), 25);
        preview.setScalePercent(300);
        preview.SynEditPrintPreviewMouseDown(Qt::LeftButton);
        QCOMPARE(preview.scalePercent(), 400);
        preview.ZoomCmdExecute();
        QVERIFY(preview.wholePage());
        preview.SynEditPrintPreviewMouseDown(Qt::LeftButton);
        QCOMPARE(preview.scalePercent(), 100);
        QVERIFY(!preview.wholePage());
        preview.Fitto1Click(preview.findChild<QAction *>(QStringLiteral("mniWidth")));
        QVERIFY(preview.pageWidth());
    }
};

QTEST_MAIN(TestTools)
#include "tst_Tools.moc"
