// The common OK/Cancel dialog: its parts, Esc, the fixed border and the kept placement.
#include "TempHome.h"
#include "core/base/DataFolder.h"
#include "core/app/MdmUn.h"
#include "core/base/SettingsStore.h"
#include "gui/ui/DefDlgUn.h"
#include "gui/workspace/TSqlSelectDlgUn.h"

#include <QPushButton>
#include <QTabBar>
#include <QTabWidget>
#include <QtTest>

namespace {

// Counts the cancel handler's runs, so the Esc path can be checked to run it exactly once.
class CountingDlg : public TDefDlgFrm
{
public:
    using TDefDlgFrm::TDefDlgFrm;
    int cancels = 0;
    void CancelBtnClick() override
    {
        ++cancels;
        TDefDlgFrm::CancelBtnClick();
    }
};

} // namespace

class tst_DefDlg : public QObject
{
    Q_OBJECT

private slots:
    void tabAndEscButtonAreHiddenAndTheBorderFixed()
    {
        TDefDlgFrm dlg;
        dlg.setFreeOnClose(false);
        auto *pc = dlg.findChild<QTabWidget *>(QStringLiteral("pc"));
        QVERIFY(pc);
        dlg.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dlg));
        QVERIFY(!pc->tabBar()->isVisible());
        auto *escButton = dlg.findChild<QPushButton *>(QStringLiteral("ButtonCancel1"));
        QVERIFY(escButton);
        // Present but placed where it cannot be seen.
        QVERIFY(!dlg.TabSheet1()->rect().intersects(escButton->geometry()));
        // A fixed border: the size cannot change.
        QCOMPARE(dlg.minimumSize(), dlg.maximumSize());
        QVERIFY(!dlg.isSizeGripEnabled());
    }

    void escRunsTheCancelPathOnce()
    {
        CountingDlg dlg;
        dlg.setFreeOnClose(false);
        dlg.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dlg));
        QTest::keyClick(&dlg, Qt::Key_Escape);
        QVERIFY(!dlg.isVisible());
        QCOMPARE(dlg.result(), int(QDialog::Rejected));
        QCOMPARE(dlg.cancels, 1);
        QVERIFY(dlg.closedByButton());
    }

    void placementIsKeptUnderItsPath()
    {
        TempHome home;
        SettingsStore store(DataFolder::settingsFile());
        {
            TDefDlgFrm dlg;
            dlg.setFreeOnClose(false);
            dlg.setPlacementStore(&store);
            dlg.show();
            QVERIFY(QTest::qWaitForWindowExposed(&dlg));
            dlg.cancelButton()->click();
        }
        QVERIFY(!store.readString(QStringLiteral("DefDlgFrm\\"), QStringLiteral("Geometry")).isEmpty());
    }

    void pickerIsSizeableAtItsClientSize()
    {
        TempHome home;
        TMdm catalogue(DataFolder::catalogueFile());
        TSqlSelectFrm picker(catalogue.history());
        picker.setFreeOnClose(false);
        picker.show();
        QVERIFY(QTest::qWaitForWindowExposed(&picker));
        QVERIFY(picker.isSizeable());
        QVERIFY(picker.isSizeGripEnabled());
        QVERIFY(picker.minimumSize() != picker.maximumSize());
        QVERIFY(!picker.imageSquare()->isVisible());
    }
};

QTEST_MAIN(tst_DefDlg)
#include "tst_DefDlg.moc"
