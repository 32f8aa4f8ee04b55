#pragma once
#include <QString>
#include <functional>

class QObject;

// Runs `work` on a thread of its own and hands its outcome (an error text, empty on success) to
// `done` on the receiver's thread. When the receiver is gone by then, `done` does not run; the
// work must therefore keep what it uses alive itself (shared pointers, not the receiver's members).
void runInBackground(QObject *receiver, std::function<void()> work, std::function<void(const QString &error)> done);
