#pragma once
// Helpers for tests of the connection properties dialog: message capture, and running the
// modal connection editor with actions performed inside it.

#include "gui/connections/DBConnectionDialogUn.h"
#include "MessageLog.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QElapsedTimer>
#include <QPushButton>
#include <QTimer>
#include <QtTest>
#include <functional>

// Performs `act` on the first modal window of type T to come up, checking every 20 ms until
// `timeoutMs` has passed. Call it before the call that opens the window.
template <typename T>
void whenModal(const std::function<void(T &)> &act, int timeoutMs = 10000)
{
    auto *timer = new QTimer;
    auto *elapsed = new QElapsedTimer;
    elapsed->start();
    timer->setInterval(20);
    QObject::connect(timer, &QTimer::timeout, [timer, elapsed, act, timeoutMs] {
        auto *window = qobject_cast<T *>(QApplication::activeModalWidget());
        if (!window && elapsed->elapsed() < timeoutMs)
            return;
        timer->stop();
        timer->deleteLater();
        delete elapsed;
        if (window)
            act(*window);
    });
    timer->start();
}

// Runs `open` (which shows a modal connection dialog) and performs `act` on that dialog once it
// is up. A dialog that `act` leaves open is cancelled, so a failing check can't hang the test.
inline void withModalDialog(const std::function<void()> &open, const std::function<void(TDBConnectionDlgFrm &)> &act,
                            bool *leftOpen = nullptr)
{
    bool stillOpen = false;
    whenModal<TDBConnectionDlgFrm>([&](TDBConnectionDlgFrm &dlg) {
        act(dlg);
        if (dlg.isVisible()) {
            stillOpen = true;
            dlg.reject();
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

// Saves a picture of a window when $VANTRY_SHOT_DIR names a folder, for a look at the layout.
inline void shoot(QWidget &window, const QString &name)
{
    const QString dir = qEnvironmentVariable("VANTRY_SHOT_DIR");
    if (!dir.isEmpty())
        window.grab().save(QDir(dir).filePath(name));
}
