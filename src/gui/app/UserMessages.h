#pragma once
#include <QString>
#include <functional>

class QWidget;

// The few explicit refusals the program shows in a message box with an OK button ("Nothing to
// execute!" and the like). Tests install a handler so no modal box blocks them.
namespace UserMessages {

void information(QWidget *parent, const QString &text);

using Handler = std::function<void(const QString &text)>;
void setHandler(Handler handler);  // an empty handler restores the message box

} // namespace UserMessages
