#include "gui/connections/BackgroundCall.h"

#include "core/base/VantryError.h"

#include <QProgressDialog>
#include <QThread>

namespace BackgroundCall {

namespace {

struct Outcome
{
    bool failed = false;
    QString message;
};

} // namespace

bool run(QWidget *parent, const QString &label, const std::function<void()> &work)
{
    auto outcome = std::make_shared<Outcome>();
    QThread *thread = QThread::create([outcome, work] {
        try {
            work();
        } catch (const VantryError &e) {
            outcome->failed = true;
            outcome->message = e.message();
        } catch (const std::exception &e) {
            outcome->failed = true;
            outcome->message = QString::fromUtf8(e.what());
        }
    });

    QProgressDialog progress(label, QStringLiteral("Cancel"), 0, 0, parent);
    progress.setObjectName(QStringLiteral("BackgroundCallProgress"));
    progress.setWindowTitle(QStringLiteral("Please wait"));
    progress.setWindowModality(Qt::ApplicationModal);
    progress.setAutoReset(false);
    progress.setAutoClose(false);
    progress.setMinimumDuration(0);
    // The box closes with "accepted" when the work is done; Cancel (or Esc) closes it rejected.
    QObject::connect(thread, &QThread::finished, &progress, &QProgressDialog::accept);
    QObject::connect(thread, &QThread::finished, thread, &QObject::deleteLater);
    thread->start();
    const bool finished = progress.exec() == QDialog::Accepted;
    if (!finished)
        return false;
    if (outcome->failed)
        throw VantryError(outcome->message);
    return true;
}

} // namespace BackgroundCall
