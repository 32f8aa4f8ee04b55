#include "app/UserMessages.h"

#include "app/VantryApplication.h"

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

void setHandler(Handler h) { handler() = std::move(h); }

} // namespace UserMessages
