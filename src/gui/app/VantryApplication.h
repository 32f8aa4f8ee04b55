#pragma once
#include <QApplication>

// The application object. An exception that escapes an event handler is shown in one error box
// with its message, and the program goes on.
class VantryApplication : public QApplication
{
    Q_OBJECT
public:
    VantryApplication(int &argc, char **argv);
    bool notify(QObject *receiver, QEvent *event) override;

    // Shows the program's error box; tests replace it so no modal box blocks them.
    using ErrorReporter = void (*)(const QString &message);
    static void setErrorReporter(ErrorReporter reporter);
    static void reportError(const QString &message);
};
