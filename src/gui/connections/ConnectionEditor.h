#pragma once
#include "gui/app/AppServices.h"

class ConnectionList;
class QWidget;

// Edits the current row of a tab's connection list in the connection properties dialog. The
// caller has put the row in edit state (ConnectionList::editCurrent) or created it
// (ConnectionList::insertRow).
namespace ConnectionEditor {

// Shows the dialog modally on the current row; typeLocked disables the type box. OK writes the
// name, the comment, the packed parameters and the type code into the row and posts it (a failing
// post is shown and keeps the dialog open); returns true. Cancel cancels the row's pending edit
// or insert; returns false.
bool run(QWidget *parent, const AppServices &services, ConnectionList &list, bool typeLocked);

} // namespace ConnectionEditor
