#include "gui/app/VantryApplication.h"

#include <QMessageBox>
#include <exception>

namespace {
VantryApplication::ErrorReporter g_reporter = nullptr;
}

VantryApplication::VantryApplication(int &argc, char **argv)
    : QApplication(argc, argv)
{
    setApplicationName(QStringLiteral("Vantry"));
}

bool VantryApplication::notify(QObject *receiver, QEvent *event)
{
    try {
        return QApplication::notify(receiver, event);
    } catch (const std::exception &e) {
        reportError(QString::fromUtf8(e.what()));
    } catch (...) {
        reportError(QStringLiteral("An unknown error occurred."));
    }
    return false;
}

void VantryApplication::setErrorReporter(ErrorReporter reporter) { g_reporter = reporter; }

void VantryApplication::reportError(const QString &message)
{
    if (g_reporter) {
        g_reporter(message);
        return;
    }
    QMessageBox::critical(QApplication::activeWindow(), QStringLiteral("Error"), message);
}
