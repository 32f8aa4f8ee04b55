// A workspace tab on the sample SQLite database: the connection panel, the table list, Run SQL,
// Run as Script, the log and the history.
#include "GuiFixture.h"
#include "MessageLog.h"
#include "WorkspaceDriver.h"
#include "core/app/SqlHistory.h"
#include "gui/workspace/ResultPanel.h"
#include "core/workspace/ResultQuery.h"
#include "gui/workspace/TSqlSelectDlgUn.h"

#include <QComboBox>
#include <QSqlQuery>
#include "gui/components/DBGridEh1.h"
#include "gui/components/ResultGridModel.h"
#include <QLineEdit>
#include <QAction>
#include <QTableView>
#include <QListWidget>
#include <QTabWidget>
#include <QTimer>
#include <QToolButton>

using namespace WorkspaceDriver;

namespace {

QStringList listed(QListWidget *list)
{
    QStringList names;
    for (int i = 0; i < list->count(); ++i)
        names << list->item(i)->text();
    return names;
}

void chooseTable(TSqlFrm *frame, const QString &name)
{
    const QList<QListWidgetItem *> items = frame->tablesList()->findItems(name, Qt::MatchExactly);
    QVERIFY2(!items.isEmpty(), qPrintable(name));
    frame->tablesList()->setCurrentItem(items.first());
}

} // namespace

class tst_Workspace : public QObject
{
    Q_OBJECT

    GuiFixture *fx = nullptr;
    TSqlFrm *frame = nullptr;

private slots:
    void init()
    {
        fx = new GuiFixture;
        fx->show();
        frame = fx->window->currentFrame();
        selectConnection(frame, QStringLiteral("Sample (SQLite)"));
    }

    void cleanup()
    {
        delete fx;
        fx = nullptr;
    }

    void connectionClickListsTablesAndRenamesTheTabOnly()
    {
        listTables(frame);
        const QStringList tables = listed(frame->tablesList());
        for (const char *t : {"CUSTOMERS", "ORDERS", "ORDER_ITEMS", "PRODUCTS", "OLD_ORDERS"})
            QVERIFY2(tables.contains(QString::fromLatin1(t)), qPrintable(tables.join(',')));
        QCOMPARE(fx->window->pager()->tabText(0), QStringLiteral("SQL Editor [Sample (SQLite)]"));
        QVERIFY(!frame->resultPanel()->isResultOpen());
    }

    void captionFollowsItsConnection()
    {
        TReaderConnection record = frame->GetConnection();
        record.Description = QStringLiteral("Renamed");
        addConnection(frame, record);
        listTables(frame);
        QCOMPARE(fx->window->pager()->tabText(0), QStringLiteral("SQL Editor [Renamed]"));

        ConnectionList *list = frame->mdsConnections();
        ConnectionRow &row = list->editCurrent();
        record.Description = QStringLiteral("Renamed again");
        row.connectionName = record.Description;
        row.connectionParameters = PackParameters(ReaderConnectionToStr(record));
        list->post();
        QCOMPARE(fx->window->pager()->tabText(0), QStringLiteral("SQL Editor [Renamed again]"));

        // Another tab does not follow a connection it never showed; this one loses a deleted one.
        fx->window->AddPage();
        QCOMPARE(fx->window->pager()->tabText(1), QStringLiteral("Sql Editior"));
        fx->window->pager()->setCurrentIndex(0);
        list->deleteCurrent();
        QCOMPARE(fx->window->pager()->tabText(0), QStringLiteral("Sql Editior"));
    }

    void searchBoxFiltersWithWildcards_data()
    {
        QTest::addColumn<QString>("search");
        QTest::addColumn<QStringList>("shown");
        QTest::addColumn<QStringList>("hidden");
        QTest::newRow("ord") << "ord" << QStringList{"ORDERS", "ORDER_ITEMS", "OLD_ORDERS"} << QStringList{"CUSTOMERS"};
        QTest::newRow("o?d") << "o?d" << QStringList{"OLD_ORDERS"} << QStringList{"CUSTOMERS", "PRODUCTS"};
        QTest::newRow("empty") << "" << QStringList{"CUSTOMERS", "ORDERS", "PRODUCTS"} << QStringList{};
        QTest::newRow("star") << "c*s" << QStringList{"CUSTOMERS", "PRODUCTS"} << QStringList{"ORDERS"};
    }

    void searchBoxFiltersWithWildcards()
    {
        QFETCH(QString, search);
        QFETCH(QStringList, shown);
        QFETCH(QStringList, hidden);
        listTables(frame);
        frame->findChild<QLineEdit *>(QStringLiteral("JvIncSearch"))->setText(search);
        const QStringList names = listed(frame->tablesList());
        for (const QString &t : shown)
            QVERIFY2(names.contains(t), qPrintable(t));
        for (const QString &t : hidden)
            QVERIFY2(!names.contains(t), qPrintable(t));
    }

    void tableClickShowsRowsWithoutTouchingEditorOrHistory()
    {
        listTables(frame);
        frame->editor()->setText(QStringLiteral("-- my work"));
        const int historyRows = fx->catalogue->history().count();
        chooseTable(frame, QStringLiteral("ORDERS"));
        clickTable(frame);
        QVERIFY(frame->resultPanel()->isResultOpen());
        QCOMPARE(frame->resultPanel()->query().table()->rowCount(), 150);
        QCOMPARE(frame->editor()->text(), QStringLiteral("-- my work"));
        QCOMPARE(fx->catalogue->history().count(), historyRows);
        QCOMPARE(lastLog(frame).sql, QStringLiteral("select * from ORDERS"));
        QCOMPARE(lastLog(frame).message, QStringLiteral("OK."));
    }

    void pendingEditsAreAskedAboutBeforeTableClickTabCloseAndQuit()
    {
        listTables(frame);
        chooseTable(frame, QStringLiteral("CUSTOMERS"));
        clickTable(frame);
        ResultPanel *panel = frame->resultPanel();
        ResultGridModel *model = panel->grid()->gridModel();
        QVERIFY(model->setData(model->index(0, 1), QStringLiteral("Changed")));
        auto answer = ResultPanel::PendingChoice::Cancel;
        int asked = 0;
        panel->setPendingEditsQuestion([&] {
            ++asked;
            return answer;
        });

        chooseTable(frame, QStringLiteral("ORDERS"));
        clickTable(frame);
        QCOMPARE(asked, 1);
        QCOMPARE(model->data(model->index(0, 1)).toString(), QStringLiteral("Changed"));

        const int tabs = fx->window->pager()->count();
        fx->window->PCClosePage(fx->window->pager()->indexOf(frame));
        QCOMPARE(asked, 2);
        QCOMPARE(fx->window->pager()->count(), tabs);

        QVERIFY(!fx->window->close());  // quitting asks too, and Cancel keeps the window
        QCOMPARE(asked, 3);
        QVERIFY(fx->window->isVisible());

        answer = ResultPanel::PendingChoice::Save;
        fx->window->PCClosePage(fx->window->pager()->indexOf(frame));
        // The tab closes once its edit is written.
        QTRY_COMPARE(fx->window->pager()->count(), tabs - 1);
        frame = nullptr;
        {
            QSqlDatabase check = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("check"));
            check.setDatabaseName(fx->home.file(QStringLiteral("sample.sqlite")));
            QVERIFY(check.open());
            QSqlQuery query(QStringLiteral("select count(*) from CUSTOMERS where COMPANY_NAME = 'Changed'"), check);
            QVERIFY(query.next());
            QCOMPARE(query.value(0).toInt(), 1);
        }
        QSqlDatabase::removeDatabase(QStringLiteral("check"));
    }

    void tableMenuWritesStatements()
    {
        listTables(frame);
        chooseTable(frame, QStringLiteral("PRODUCTS"));
        frame->Selectfromtable1Click();
        QCOMPARE(frame->editor()->text(), QStringLiteral("select PRODUCTS.* from PRODUCTS"));
        frame->Deletefromtable1Click();
        QCOMPARE(frame->editor()->text(), QStringLiteral("delete from PRODUCTS"));
        frame->runcatetable1Click();
        QCOMPARE(frame->editor()->text(), QStringLiteral("truncate table PRODUCTS"));
    }

    void queryOrCommandAndTheSelectionRule()
    {
        run(frame, QStringLiteral("  \n\n  select * from CUSTOMERS"));
        QVERIFY(frame->resultPanel()->isResultOpen());
        QCOMPARE(lastLog(frame).status, 0);

        run(frame, QStringLiteral("with x as (select 1 as a) select * from x"));
        QVERIFY2(!frame->resultPanel()->isResultOpen(), "a WITH statement runs as a command");
        QCOMPARE(lastLog(frame).message, QStringLiteral("OK."));

        frame->editor()->setText(QStringLiteral("select 1\nupdate PRODUCTS set PRICE = PRICE where 1 = 0"));
        frame->editor()->setSelection(1, 0, 1, 46);
        frame->ToolButton7Click();
        QVERIFY(waitIdle(frame));
        QCOMPARE(lastLog(frame).sql, QStringLiteral("update PRODUCTS set PRICE = PRICE where 1 = 0"));
        QVERIFY(!frame->resultPanel()->isResultOpen());
    }

    void historyGetsOnlyChangedStatements()
    {
        SqlHistory &history = fx->catalogue->history();
        const int start = history.count();
        run(frame, QStringLiteral("select 1"));
        run(frame, QStringLiteral("select 1"));
        QCOMPARE(history.count(), start + 1);
        run(frame, QStringLiteral("select 2"));
        run(frame, QStringLiteral("select 1"));
        QCOMPARE(history.count(), start + 3);

        frame->SBPreviosClick();
        QCOMPARE(frame->editor()->text(), QStringLiteral("select 2"));
        run(frame, frame->editor()->text());  // taken from the history: adds no row
        QCOMPARE(history.count(), start + 3);
        frame->SBNextClick();
        QCOMPARE(frame->editor()->text(), QStringLiteral("select 1"));
        frame->SBNextClick();  // at the last row nothing moves
        QCOMPARE(frame->editor()->text(), QStringLiteral("select 1"));
    }

    void failureIsLoggedAndTheTabStaysUsable()
    {
        StatusRecorder statuses(fx->window.get());
        const int historyRows = fx->catalogue->history().count();
        run(frame, QStringLiteral("select * from NO_SUCH_TABLE"));
        QCOMPARE(lastLog(frame).status, 2);
        QVERIFY2(lastLog(frame).message.contains(QStringLiteral("NO_SUCH_TABLE")), qPrintable(lastLog(frame).message));
        QCOMPARE(fx->catalogue->history().count(), historyRows);
        QCoreApplication::processEvents();
        QCOMPARE(statuses.texts.last(), QStringLiteral("Error"));

        statuses.texts.clear();
        run(frame, QStringLiteral("select count(*) from ORDERS"));
        QCOMPARE(lastLog(frame).status, 0);
        QCoreApplication::processEvents();
        QCOMPARE(statuses.texts.mid(statuses.texts.indexOf(QStringLiteral("Connecting"))),
                 (QStringList{"Connecting", "Connected!", "Executing", "OK."}));
    }

    void scriptChunksRunOnAndSplitOnlyAtDelimiterLines()
    {
        run(frame, QStringLiteral("create table T (A integer)"));
        frame->log()->Clear();
        runScript(frame, QStringLiteral("insert into T values (1)\n  go  \ninsert into NOPE values (2)\nGo\n"
                                        "insert into T values (3);\ninsert into T values (4);"));
        const ExecutionLog *log = frame->log()->table();
        QCOMPARE(log->count(), 3);
        QCOMPARE(log->row(0).status, 0);
        QCOMPARE(log->row(1).status, 2);
        QCOMPARE(log->row(2).status, 0);  // one chunk of two statements: both run
        QCOMPARE(log->row(2).sql, QStringLiteral("insert into T values (3);\ninsert into T values (4);"));

        frame->findChild<QComboBox *>(QStringLiteral("peSeparator"))->setCurrentText(QStringLiteral(";"));
        frame->log()->Clear();
        runScript(frame, QStringLiteral("insert into T values (5)\n;\ninsert into T values (6)"));
        QCOMPARE(log->count(), 2);
        run(frame, QStringLiteral("select * from T"));
        QCOMPARE(frame->resultPanel()->query().table()->rowCount(), 5);  // 1, 3, 4, 5 and 6
    }

    void refusalsShowTheirBox()
    {
        MessageLog boxes;
        run(frame, QStringLiteral("   \n "));
        frame->findChild<QComboBox *>(QStringLiteral("peSeparator"))->setCurrentText(QString());
        runScript(frame, QStringLiteral("select 1"));
        QCOMPARE(boxes.all, (QStringList{"Nothing to execute!", "Select Sql Statements Delimiter first!"}));
        QCOMPARE(frame->log()->table()->count(), 0);
    }

    void shortTextSelectsFromTheChosenTableOrLogsWhyNot()
    {
        run(frame, QStringLiteral("x"));
        QCOMPARE(lastLog(frame).status, 2);  // no table chosen
        listTables(frame);
        chooseTable(frame, QStringLiteral("CUSTOMERS"));
        run(frame, QStringLiteral("x"));
        QCOMPARE(frame->editor()->text(), QStringLiteral("select CUSTOMERS.* from CUSTOMERS"));
        QCOMPARE(lastLog(frame).status, 0);
        QVERIFY(frame->resultPanel()->isResultOpen());
    }

    void logNumberingRestartsOnlyWithTheGridClear()
    {
        for (int i = 0; i < 3; ++i)
            run(frame, QStringLiteral("select %1").arg(i));
        const ExecutionLog *log = frame->log()->table();
        QCOMPARE(log->row(2).number, 3);
        frame->log()->Clear1Click();  // the text view's Clear keeps the table
        QCOMPARE(log->count(), 3);
        QVERIFY(frame->log()->textView()->text().isEmpty());
        run(frame, QStringLiteral("select 9"));
        QCOMPARE(log->row(3).number, 4);
        frame->log()->MenuItem10Click();  // the grid's Clear empties both
        run(frame, QStringLiteral("select 10"));
        QCOMPARE(log->count(), 1);
        QCOMPARE(log->row(0).number, 1);
    }

    void pickerPutsTheChosenStatementIntoTheEditor()
    {
        SqlHistory &history = fx->catalogue->history();
        history.deleteAll();
        for (const char *sql : {"select 1", "select 2\nfrom ORDERS\nwhere 1 = 1", "select 3"})
            history.append(QString::fromLatin1(sql));
        QTimer::singleShot(0, this, [] {
            auto *picker = qobject_cast<TSqlSelectFrm *>(QApplication::activeModalWidget());
            QVERIFY(picker);
            picker->DBMemo1DblClick(picker->list()->model()->index(1, 0));
        });
        frame->sbSqlSelectClick();
        QCOMPARE(frame->editor()->text(), QStringLiteral("select 2\nfrom ORDERS\nwhere 1 = 1"));

        QTimer::singleShot(0, this, [] {
            auto *picker = qobject_cast<TSqlSelectFrm *>(QApplication::activeModalWidget());
            QVERIFY(picker);
            picker->ClearLogBtnClick();
            picker->reject();
        });
        frame->sbSqlSelectClick();
        QVERIFY(history.isEmpty());
        QCOMPARE(frame->editor()->text(), QStringLiteral("select 2\nfrom ORDERS\nwhere 1 = 1"));
    }

    void f2OnTheConnectionGridOpensTheDialog()
    {
        auto *grid = frame->findChild<QTableView *>(QStringLiteral("ConnectionsGrid"));
        fx->window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(fx->window.get()));
        grid->setFocus();
        QString caption;
        QTimer::singleShot(0, this, [&caption] {
            if (QWidget *dialog = QApplication::activeModalWidget()) {
                caption = dialog->windowTitle();
                dialog->close();
            }
        });
        QTest::keyClick(grid, Qt::Key_F2);
        QCOMPARE(caption, QStringLiteral("SQLite connection properties"));
    }

    void tableListErrorsGoToTheErrorBox()
    {
        MessageLog boxes;
        TReaderConnection missing;
        missing.ConnectionType = dsSqLite;
        missing.Description = QStringLiteral("gone");
        missing.DataBase = missing.SourceFile = fx->home.file(QStringLiteral("no-such.sqlite"));
        addConnection(frame, missing);
        selectConnection(frame, QStringLiteral("gone"));
        fx->window->action(QStringLiteral("Action6"))->trigger();  // System Tables: reloads the list
        QVERIFY(waitIdle(frame));
        QTRY_COMPARE(boxes.all.size(), 1);
        QVERIFY2(boxes.all.first().contains(QStringLiteral("no-such.sqlite")), qPrintable(boxes.all.first()));
        QVERIFY(!QFile::exists(missing.DataBase));
        QCOMPARE(frame->tablesList()->count(), 0);
    }

    void commandLineArgumentHidesTheConnectionGrid()
    {
        GuiFixture other;
        TMFrm *w = other.show(true);
        // The toolbar lays out its hidden action on the next turn of the event loop.
        QTRY_VERIFY(!w->currentFrame()->findChild<QToolButton *>(QStringLiteral("tbShowConnections"))->isVisible());
        QVERIFY(!w->currentFrame()->findChild<QTableView *>(QStringLiteral("ConnectionsGrid"))->isVisible());
    }
};

QTEST_MAIN(tst_Workspace)
#include "tst_Workspace.moc"
