#include "app/UserMessages.h"

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
        handler()(text);
        return;
    }
    QMessageBox::information(parent, QStringLiteral("Vantry"), text, QMessageBox::Ok);
}

void setHandler(Handler h) { handler() = std::move(h); }

} // namespace UserMessages
