#pragma once
#include <QString>
#include <functional>

class QWidget;

// The message boxes the program shows on its own: the few explicit refusals ("Nothing to
// execute!"), the information of a dialog ("Connected!") and a dialog's errors, which go to the
// program's error box. All pass through here so a test can take them over and no modal box
// blocks it.
namespace UserMessages {

enum class Kind { Information, Error };

void information(QWidget *parent, const QString &text);
void error(QWidget *parent, const QString &text);

// Runs a user command; a VantryError it raises is shown in the error box instead of travelling
// through the toolkit's event dispatch.
void guarded(QWidget *parent, const std::function<void()> &command);

using Handler = std::function<void(Kind kind, const QString &text)>;
void setHandler(Handler handler);  // an empty handler brings the boxes back

} // namespace UserMessages
