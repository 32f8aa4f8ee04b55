#pragma once
// Work that may wait on a driver or a server, run off the window's thread while a modal progress
// box with a Cancel button shows what is happening.

#include <QString>

#include <functional>
#include <memory>
#include <optional>

class QWidget;

namespace BackgroundCall {

// Runs `work` on a thread of its own and waits for it in the progress box's own event loop.
// Returns true when it finished and false when the user cancelled: the work then runs out on its
// thread and whatever it produces is dropped. Throws VantryError with the work's own message when
// the work threw.
bool run(QWidget *parent, const QString &label, const std::function<void()> &work);

// The same for work with a result; empty when cancelled.
template <typename T>
std::optional<T> call(QWidget *parent, const QString &label, std::function<T()> work)
{
    // Shared with the thread, which may outlive this call after a cancel.
    auto result = std::make_shared<T>();
    if (!run(parent, label, [result, work] { *result = work(); }))
        return std::nullopt;
    return *result;
}

} // namespace BackgroundCall
