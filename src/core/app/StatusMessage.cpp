#include "core/app/StatusMessage.h"

#include <QCoreApplication>

StatusMessageEvent::StatusMessageEvent(const QString &text)
    : QEvent(kType), m_text(text.left(kMaxLength))
{
}

void postStatusMessage(QObject *mainWindow, const QString &text)
{
    if (mainWindow)
        QCoreApplication::postEvent(mainWindow, new StatusMessageEvent(text));
}
