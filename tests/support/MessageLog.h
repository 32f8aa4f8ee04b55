#pragma once
#include "gui/app/UserMessages.h"

#include <QStringList>

// Collects the message boxes a test's windows would show while it lives: every one in order, and
// errors apart from the rest.
struct MessageLog
{
    QStringList all;
    QStringList errors;
    QStringList infos;
    MessageLog()
    {
        UserMessages::setHandler([this](UserMessages::Kind kind, const QString &text) {
            all << text;
            (kind == UserMessages::Kind::Error ? errors : infos) << text;
        });
    }
    ~MessageLog() { UserMessages::setHandler({}); }
    void clear()
    {
        all.clear();
        errors.clear();
        infos.clear();
    }
};
