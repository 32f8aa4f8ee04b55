// The execution log frame: what the table keeps, what the text view shows, and Save Log.
#include "TempHome.h"
#include "core/base/VantryError.h"
#include "gui/components/ResultFilterHeader.h"
#include "core/workspace/ExecutionLog.h"
#include "gui/workspace/LogTableModel.h"
#include "gui/workspace/SqlLogFrameUn.h"

#include <Qsci/qsciscintilla.h>

#include <QApplication>
#include <QHeaderView>
#include <QLineEdit>
#include <QTableView>
#include <QTimer>
#include <QtTest>

class tst_LogFrame : public QObject
{
    Q_OBJECT

private slots:
    void tableKeepsTheStatementTextViewTrimsIt()
    {
        TSqlLogFrame log;
        log.SetSQL(QStringLiteral("\n\n  select 1  \t"));
        log.SetMessage(QStringLiteral("  OK.\n"), 0);
        QCOMPARE(log.table()->row(0).sql, QStringLiteral("\n\n  select 1  \t"));
        QCOMPARE(log.textView()->text(), QStringLiteral("select 1\nOK.\n"));
        QVERIFY(log.table()->row(0).timeEnd >= log.table()->row(0).time);
    }

    void unfinishedAndFailedRows()
    {
        TSqlLogFrame log;
        log.SetSQL(QStringLiteral("select 1"));
        const LogEntry &open = log.table()->row(0);
        QCOMPARE(open.status, 0);
        QVERIFY(open.message.isEmpty());
        QCOMPARE(ExecutionLog::formatDuration(open.timeTakenMs()), QStringLiteral("00:00:00"));
        log.SetMessage(QStringLiteral("no such table"), 2);
        QCOMPARE(log.table()->row(0).status, 2);
        // The grid shows the picture of the status; values outside 0..2 show the first picture.
        QCOMPARE(LogTableModel::statusIcon(7).cacheKey(), LogTableModel::statusIcon(0).cacheKey());
        QVERIFY(LogTableModel::statusIcon(2).cacheKey() != LogTableModel::statusIcon(0).cacheKey());
    }

    void messageWithoutStatementFailsOnAnEmptyLog()
    {
        TSqlLogFrame log;
        QVERIFY_THROWS_EXCEPTION(VantryError, log.SetMessage(QStringLiteral("OK."), 0));
    }

    void durationsAcrossMidnightStayNegative()
    {
        LogEntry e;
        e.time = QTime(23, 59, 58);
        e.timeEnd = QTime(0, 0, 3);
        QVERIFY(e.timeTakenMs() < 0);
        QCOMPARE(ExecutionLog::formatDuration(e.timeTakenMs()), QStringLiteral("-23:59:55"));
        QCOMPARE(ExecutionLog::formatDuration(3723000), QStringLiteral("01:02:03"));
    }

    void bothPrintEntriesPreviewUnderTheirOwnTitles()
    {
        TSqlLogFrame log;
        log.SetSQL(QStringLiteral("select 1"));
        log.SetMessage(QStringLiteral("OK."), 0);
        QStringList titles;
        const auto closePreview = [&titles] {
            QWidget *preview = QApplication::activeModalWidget();
            titles << (preview ? preview->windowTitle() : QStringLiteral("no preview"));
            if (preview)
                preview->close();
        };
        QTimer::singleShot(0, this, closePreview);
        log.Print1Click();
        QTimer::singleShot(0, this, closePreview);
        log.PrintPreview1Click();
        QCOMPARE(titles, (QStringList{"Sql Script Error Log", "Execution Log"}));
    }

    void gridFiltersSearchesAndGivesTheStatementTheRoom()
    {
        TSqlLogFrame log;
        log.resize(900, 300);
        log.show();
        QVERIFY(QTest::qWaitForWindowExposed(&log));
        QVERIFY(log.findChild<QWidget *>(QStringLiteral("pTable"))->isAncestorOf(log.grid()));
        QVERIFY(log.findChild<QWidget *>(QStringLiteral("pLog"))->isAncestorOf(log.textView()));

        const QStringList statements = {"select * from orders", "update orders set x = 1", "select 2"};
        for (const QString &sql : statements) {
            log.SetSQL(sql);
            log.SetMessage(sql.startsWith(QLatin1String("update")) ? QStringLiteral("locked") : QStringLiteral("OK."),
                           sql.startsWith(QLatin1String("update")) ? 2 : 0);
        }
        QTableView *grid = log.grid();
        QHeaderView *header = grid->horizontalHeader();
        QVERIFY(header->sectionSize(LogTableModel::ColSql) > header->sectionSize(LogTableModel::ColMessage));
        int total = 0;
        for (int c = 0; c < LogTableModel::ColumnCount; ++c)
            total += header->sectionSize(c);
        QCOMPARE(total, grid->viewport()->width());

        // Incremental search in the statement column.
        grid->setCurrentIndex(grid->model()->index(0, LogTableModel::ColSql));
        grid->setFocus();
        QTest::keyClicks(grid, QStringLiteral("upd"));
        QCOMPARE(grid->currentIndex().row(), 1);

        // The filter row under the titles: a box per column, lined up with its column.
        auto *filters = qobject_cast<ResultFilterHeader *>(header);
        QVERIFY(filters);
        QTRY_VERIFY(filters->filterEditor(LogTableModel::ColSql));
        QLineEdit *sqlBox = filters->filterEditor(LogTableModel::ColSql);
        const int left = header->sectionViewportPosition(LogTableModel::ColSql);
        QVERIFY(sqlBox->x() >= left && sqlBox->geometry().right() < left + header->sectionSize(LogTableModel::ColSql));
        QVERIFY(sqlBox->width() > header->sectionSize(LogTableModel::ColSql) - 8);
        QTest::keyClicks(sqlBox, QStringLiteral("SELECT"));
        QTRY_COMPARE(grid->model()->rowCount(), 2);
        filters->filterEditor(LogTableModel::ColStatus)->setText(QStringLiteral("2"));
        QTRY_COMPARE(grid->model()->rowCount(), 0);
        sqlBox->clear();
        QTRY_COMPARE(grid->model()->rowCount(), 1);
        QCOMPARE(grid->model()->index(0, LogTableModel::ColMessage).data().toString(), QStringLiteral("locked"));
    }

    void saveLogWritesTheTextViewOnly()
    {
        TempHome home;
        TSqlLogFrame log;
        const QString empty = home.file(QStringLiteral("empty.log"));
        log.saveLogTo(empty);
        QCOMPARE(QFileInfo(empty).size(), 0);

        log.SetSQL(QStringLiteral("select 'ä'"));
        log.SetMessage(QStringLiteral("OK."), 0);
        const QString file = home.file(QStringLiteral("run.log"));
        log.saveLogTo(file);
        QFile saved(file);
        QVERIFY(saved.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(saved.readAll()), QStringLiteral("select 'ä'\nOK.\n"));

        QVERIFY_THROWS_EXCEPTION(VantryError, log.saveLogTo(home.file(QStringLiteral("no/such/folder/x.log"))));
    }
};

QTEST_MAIN(tst_LogFrame)
#include "tst_LogFrame.moc"
