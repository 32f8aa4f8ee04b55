#pragma once
#include <QEvent>
#include <QString>

class QObject;

// The status text a workspace posts to the main window (message 1125). It is posted, not sent, so
// it shows once the current handler has returned to the event loop.
class StatusMessageEvent : public QEvent
{
public:
    static constexpr QEvent::Type kType = static_cast<QEvent::Type>(1125);
    static constexpr int kMaxLength = 255;

    explicit StatusMessageEvent(const QString &text);
    QString text() const { return m_text; }

private:
    QString m_text;
};

// Posts `text`, cut to 255 characters, to `mainWindow`. Does nothing without a target.
void postStatusMessage(QObject *mainWindow, const QString &text);
