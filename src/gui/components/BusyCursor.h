#pragma once
#include <QCursor>
#include <QGuiApplication>

// The wait cursor for as long as the object lives: statements run on the UI thread, and the cursor
// tells the user the window is working, not dead.
class BusyCursor
{
public:
    BusyCursor() { QGuiApplication::setOverrideCursor(QCursor(Qt::WaitCursor)); }
    ~BusyCursor() { QGuiApplication::restoreOverrideCursor(); }
    BusyCursor(const BusyCursor &) = delete;
    BusyCursor &operator=(const BusyCursor &) = delete;
};
