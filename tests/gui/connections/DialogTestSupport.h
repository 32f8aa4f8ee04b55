#pragma once
// Helpers for tests of the connection properties dialog: message capture, and running the
// modal connection editor with actions performed inside it.

#include "connections/DBConnectionDialogUn.h"
#include "connections/DialogMessages.h"

#include <QApplication>
#include <QComboBox>
#include <QPushButton>
#include <QTimer>
#include <QtTest>
#include <functional>

// Collects the dialog's message boxes instead of showing them.
struct MessageLog
{
    QStringList errors;
    QStringList infos;
    MessageLog()
    {
        DialogMessages::setHandler([this](DialogMessages::Kind kind, const QString &text) {
            (kind == DialogMessages::Kind::Error ? errors : infos) << text;
        });
    }
    ~MessageLog() { DialogMessages::setHandler({}); }
    void clear()
    {
        errors.clear();
        infos.clear();
    }
};

// Runs `open` (which shows a modal connection dialog) and performs `act` on that dialog once it
// is up. A dialog that `act` leaves open is cancelled, so a failing check can't hang the test.
inline void withModalDialog(const std::function<void()> &open, const std::function<void(TDBConnectionDlgFrm &)> &act,
                            bool *leftOpen = nullptr)
{
    bool stillOpen = false;
    QTimer::singleShot(0, [&] {
        auto *dlg = qobject_cast<TDBConnectionDlgFrm *>(QApplication::activeModalWidget());
        if (!dlg)
            return;
        act(*dlg);
        if (dlg->isVisible()) {
            stillOpen = true;
            dlg->reject();
        }
    });
    open();
    if (leftOpen)
        *leftOpen = stillOpen;
}

inline void clickOk(TDBConnectionDlgFrm &dlg) { QTest::mouseClick(dlg.okButton(), Qt::LeftButton); }
inline void clickCancel(TDBConnectionDlgFrm &dlg) { QTest::mouseClick(dlg.cancelButton(), Qt::LeftButton); }

// Chooses a type entry the way the user does: the entry is picked and the list closes.
inline void chooseType(TDBConnectionDlgFrm &dlg, int index)
{
    dlg.ConnectionTypeCombo->setCurrentIndex(index);
    emit dlg.ConnectionTypeCombo->activated(index);
    QCoreApplication::processEvents(); // let the layouts place the controls
}
