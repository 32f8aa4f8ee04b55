#include "gui/app/UserMessages.h"

#include "gui/app/VantryApplication.h"
#include "core/base/VantryError.h"

#include <QMessageBox>

namespace {
UserMessages::Handler &handler()
{
    static UserMessages::Handler h;
    return h;
}
} // namespace

namespace UserMessages {

void information(QWidget *parent, const QString &text)
{
    if (handler()) {
        handler()(Kind::Information, text);
        return;
    }
    QMessageBox::information(parent, QStringLiteral("Vantry"), text, QMessageBox::Ok);
}

void error(QWidget *, const QString &text)
{
    if (handler()) {
        handler()(Kind::Error, text);
        return;
    }
    VantryApplication::reportError(text);
}

void guarded(QWidget *parent, const std::function<void()> &command)
{
    try {
        command();
    } catch (const VantryError &e) {
        error(parent, e.message());
    }
}

void setHandler(Handler h) { handler() = std::move(h); }

} // namespace UserMessages
