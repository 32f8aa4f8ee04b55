#include "gui/ui/BackgroundWork.h"

#include "core/base/VantryError.h"

#include <QThread>
#include <exception>
#include <memory>

void runInBackground(QObject *receiver, std::function<void()> work, std::function<void(const QString &error)> done)
{
    auto error = std::make_shared<QString>();
    QThread *worker = QThread::create([work = std::move(work), error] {
        try {
            work();
        } catch (const VantryError &e) {
            *error = e.message();
        } catch (const std::exception &e) {
            *error = QString::fromUtf8(e.what());
        }
    });
    QObject::connect(worker, &QThread::finished, worker, &QObject::deleteLater);
    QObject::connect(worker, &QThread::finished, receiver, [error, done = std::move(done)] { done(*error); });
    worker->start();
}
