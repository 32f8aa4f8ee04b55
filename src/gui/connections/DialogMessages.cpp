#include "connections/DialogMessages.h"

#include "app/VantryApplication.h"

#include <QMessageBox>

namespace DialogMessages {

namespace {
Handler &handler()
{
    static Handler h;
    return h;
}
} // namespace

void setHandler(Handler h) { handler() = std::move(h); }

void information(QWidget *parent, const QString &text)
{
    if (handler()) {
        handler()(Kind::Information, text);
        return;
    }
    QMessageBox::information(parent, QStringLiteral("Information"), text, QMessageBox::Ok);
}

void error(QWidget *parent, const QString &text)
{
    Q_UNUSED(parent)
    if (handler()) {
        handler()(Kind::Error, text);
        return;
    }
    VantryApplication::reportError(text);
}

} // namespace DialogMessages
