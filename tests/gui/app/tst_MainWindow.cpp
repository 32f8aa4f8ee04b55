#include "GuiFixture.h"
#include "core/app/StatusMessage.h"
#include "core/workspace/ConnectionList.h"
#include "core/workspace/ExecutionLog.h"
#include "gui/workspace/SqlLogFrameUn.h"
#include "gui/workspace/SqlUn.h"

#include <Qsci/qsciscintilla.h>

#include <QAction>
#include <QComboBox>
#include <QMenu>
#include <QTabWidget>
#include <QToolButton>
#include <QtTest>

class tst_MainWindow : public QObject
{
    Q_OBJECT

private slots:
    void newTabsAreNumberedAndReloadConnectionsOnChange()
    {
        GuiFixture fx;
        TMFrm *w = fx.show();
        QCOMPARE(w->pager()->count(), 1);
        TSqlFrm *first = w->currentFrame();
        w->action(QStringLiteral("NewTabAct"))->trigger();
        QCOMPARE(w->pager()->count(), 2);
        TSqlFrm *second = w->currentFrame();
        QCOMPARE(second->objectName(), QStringLiteral("SqlFrm2"));
        const int before = second->mdsConnections()->count();

        w->pager()->setCurrentIndex(0);
        QCOMPARE(w->currentFrame(), first);
        ConnectionRow &row = first->mdsConnections()->insertRow();
        row.connectionName = QStringLiteral("added in the first tab");
        first->mdsConnections()->post();
        QCOMPARE(second->mdsConnections()->count(), before);

        w->pager()->setCurrentIndex(1);
        QCOMPARE(second->mdsConnections()->count(), before + 1);
        QCOMPARE(second->mdsConnections()->row(before).connectionName, QStringLiteral("added in the first tab"));
    }

    void closingTabsMovesTheSelectionLeft()
    {
        GuiFixture fx;
        TMFrm *w = fx.show();
        w->AddPage();
        QCOMPARE(w->pager()->currentIndex(), 1);
        w->PCClosePage(1);  // closing the active second tab makes the first active
        QCOMPARE(w->pager()->count(), 1);
        QCOMPARE(w->pager()->currentIndex(), 0);
        QCOMPARE(w->currentFrame(), w->pager()->widget(0));

        w->AddPage();
        w->AddPage();
        QCOMPARE(w->pager()->currentIndex(), 2);
        QWidget *last = w->pager()->widget(2);
        w->PCClosePage(0);  // an inactive tab: the rule still moves the selection one page left
        QCOMPARE(w->pager()->count(), 2);
        QCOMPARE(w->pager()->currentWidget(), w->pager()->widget(0));
        QVERIFY(w->pager()->currentWidget() != last);
    }

    void pagerButtonsMoveBetweenTabsAndReopenClosedOnes()
    {
        GuiFixture fx;
        TMFrm *w = fx.show();
        QTabWidget *pc = w->pager();
        auto click = [pc](const char *name) { pc->findChild<QToolButton *>(QString::fromLatin1(name))->click(); };

        click("PCInsertPage");
        click("PCInsertPage");
        QCOMPARE(pc->count(), 3);
        click("PCFirst");
        QCOMPARE(pc->currentIndex(), 0);
        click("PCPrevious"); // wraps round to the last page
        QCOMPARE(pc->currentIndex(), 2);
        click("PCNext");
        QCOMPARE(pc->currentIndex(), 0);
        click("PCLast");
        QCOMPARE(pc->currentIndex(), 2);

        auto *pageList = pc->findChild<QMenu *>(QStringLiteral("PCPageListMenu"));
        QVERIFY(pageList);
        emit pageList->aboutToShow();
        QCOMPARE(pageList->actions().size(), 3);
        pageList->actions().at(1)->trigger();
        QCOMPARE(pc->currentIndex(), 1);

        // Closing every tab leaves the buttons usable; a closed tab comes back with its text.
        w->currentFrame()->editor()->setText(QStringLiteral("select 2"));
        while (pc->count() > 0)
            w->PCClosePage(pc->count() - 1);
        auto *closedButton = pc->findChild<QToolButton *>(QStringLiteral("PCClosedPages"));
        QVERIFY(closedButton->isVisibleTo(w));
        QTRY_VERIFY(closedButton->height() > 10 && closedButton->mapTo(w, QPoint(0, 0)).y() >= 0);
        click("PCNext"); // nothing to move to, and nothing breaks
        auto *closed = pc->findChild<QMenu *>(QStringLiteral("PCClosedPagesMenu"));
        QVERIFY(closed);
        emit closed->aboutToShow();
        QCOMPARE(closed->actions().size(), 3);
        QAction *reopen = nullptr;
        for (QAction *a : closed->actions())
            if (a->text().contains(QStringLiteral("select 2")))
                reopen = a;
        QVERIFY(reopen);
        reopen->trigger();
        QCOMPARE(pc->count(), 1);
        QCOMPARE(w->currentFrame()->editor()->text(), QStringLiteral("select 2"));
        emit closed->aboutToShow();
        QCOMPARE(closed->actions().size(), 2);
    }

    void statusTextArrivesPostedAndCut()
    {
        GuiFixture fx;
        TMFrm *w = fx.show();
        const QString longText(300, QLatin1Char('x'));
        postStatusMessage(w, longText);
        QCOMPARE(w->statusText(), QStringLiteral("Disconnected"));  // posted, not yet delivered
        QCoreApplication::processEvents();
        QCOMPARE(w->statusText(), QString(255, QLatin1Char('x')));
    }

    void runCommandsGoToTheCurrentTabOnly()
    {
        GuiFixture fx;
        TMFrm *w = fx.show();
        TSqlFrm *first = w->currentFrame();
        w->AddPage();
        TSqlFrm *second = w->currentFrame();
        for (TSqlFrm *f : {first, second}) {
            f->mdsConnections()->setCurrentIndex(0);
            f->editor()->setText(QStringLiteral("select 1"));
        }
        // A tab refuses a second run while one is under way: each run is let finish.
        const auto idle = [](TSqlFrm *f) { return QTest::qWaitFor([f] { return !f->isRunning(); }, 10000); };
        w->action(QStringLiteral("Action2"))->trigger();   // F3
        QVERIFY(idle(second));
        w->action(QStringLiteral("Action10"))->trigger();  // F4
        QVERIFY(idle(second));
        QCOMPARE(second->log()->table()->count(), 2);
        QCOMPARE(first->log()->table()->count(), 0);
        w->pager()->setCurrentIndex(0);
        w->action(QStringLiteral("Action2"))->trigger();
        QVERIFY(idle(first));
        QCOMPARE(first->log()->table()->count(), 1);
        QCOMPARE(second->log()->table()->count(), 2);
    }

    void settingsOfTheCurrentTabAreSavedAtExitAndRestored()
    {
        GuiFixture fx;
        TMFrm *w = fx.show();
        TSqlFrm *first = w->currentFrame();
        first->cbStyle()->setCurrentIndex(3);
        first->cbStyleChange();  // a style change saves the shared settings at once
        w->AddPage();
        TSqlFrm *second = w->currentFrame();
        QCOMPARE(second->cbStyle()->currentIndex(), 3);
        second->editor()->setText(QStringLiteral("select 42\nfrom dual"));
        w->close();  // the tab that is current at exit decides what the next start restores
        fx.window.reset();

        SettingsStore reread(DataFolder::settingsFile());
        QCOMPARE(reread.readInt(QStringLiteral("SQL\\"), QStringLiteral("cbStyle.ItemIndex"), -1), 3);
        QCOMPARE(reread.readString(QStringLiteral("SQL\\"), QStringLiteral("se.Lines")), QStringLiteral("select 42\nfrom dual"));
        QCOMPARE(reread.readString(QStringLiteral("SQL\\"), QStringLiteral("tbShowLog.Down")), QStringLiteral("TRUE"));
        // The View items' marks are those of the tab that was current: log shown, system tables not.
        QCOMPARE(reread.readString(QStringLiteral("P\\"), QStringLiteral("Log1.Checked")), QStringLiteral("TRUE"));
        QCOMPARE(reread.readString(QStringLiteral("P\\"), QStringLiteral("SystemTables1.Checked")), QStringLiteral("FALSE"));

        TMFrm *again = fx.show();
        QCOMPARE(again->currentFrame()->cbStyle()->currentIndex(), 3);
        QCOMPARE(again->currentFrame()->editor()->text(), QStringLiteral("select 42\nfrom dual"));
    }

    void fileTextReplacesTheSavedTextInTheFirstTabOnly()
    {
        GuiFixture fx;
        fx.settings->writeString(QStringLiteral("SQL\\"), QStringLiteral("se.Lines"), QStringLiteral("select saved"));
        fx.window = std::make_unique<TMFrm>(fx.services());
        fx.window->setFirstTabText(QStringLiteral("select 'from the file'\n"));
        fx.window->show();
        QCOMPARE(fx.window->currentFrame()->editor()->text(), QStringLiteral("select 'from the file'\n"));
        fx.window->AddPage();
        QCOMPARE(fx.window->currentFrame()->editor()->text(), QStringLiteral("select saved"));

        // An empty file still empties the first tab's editor.
        fx.window = std::make_unique<TMFrm>(fx.services());
        fx.window->setFirstTabText(QLatin1String(""));
        fx.window->show();
        QCOMPARE(fx.window->currentFrame()->editor()->text(), QString());
    }
};

QTEST_MAIN(tst_MainWindow)
#include "tst_MainWindow.moc"
