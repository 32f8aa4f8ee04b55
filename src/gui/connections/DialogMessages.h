#pragma once
#include <QString>
#include <functional>

class QWidget;

// The message boxes of the connection dialogs, in one place so that a test can take them over and
// no modal box blocks it. Errors go to the program's error box (VantryApplication::reportError),
// information to an information box with an OK button.
namespace DialogMessages {

enum class Kind { Information, Error };

using Handler = std::function<void(Kind kind, const QString &text)>;

// Replaces the boxes by `handler`; an empty handler brings the boxes back.
void setHandler(Handler handler);

void information(QWidget *parent, const QString &text);
void error(QWidget *parent, const QString &text);

} // namespace DialogMessages
