#pragma once
#include "gui/app/UserMessages.h"

#include <QStringList>

// Collects the message boxes a test's windows would show, errors apart from the rest, while it
// lives.
struct MessageLog
{
    QStringList errors;
    QStringList infos;
    MessageLog()
    {
        UserMessages::setHandler([this](UserMessages::Kind kind, const QString &text) {
            (kind == UserMessages::Kind::Error ? errors : infos) << text;
        });
    }
    ~MessageLog() { UserMessages::setHandler({}); }
    void clear()
    {
        errors.clear();
        infos.clear();
    }
};
