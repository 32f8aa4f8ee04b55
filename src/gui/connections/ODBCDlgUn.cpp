#include "gui/connections/ODBCDlgUn.h"

#include "core/base/VantryError.h"
#include "core/connections/ODBCHUn.h"
#include "core/connections/OdbcConnectionBuilder.h"
#include "gui/app/UserMessages.h"
#include "gui/connections/BackgroundCall.h"
#include "gui/connections/OdbcKeywordForm.h"

#include <QApplication>
#include <QScopeGuard>
#include <QLabel>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPointer>
#include <QThread>
#include <QVBoxLayout>

TODBCDlgFrm::TODBCDlgFrm(QWidget *parent)
    : TDefDlgFrm(parent)
{
    setObjectName(QStringLiteral("ODBCDlgFrm"));
    setWindowTitle(QStringLiteral("ODBC Connection Builder"));
    imageSquare()->parentWidget()->hide();

    auto *layout = new QVBoxLayout(TabSheet1());
    // "Instaled" is the label's wording and stays as it is.
    auto *driversLbl = new QLabel(QStringLiteral("Instaled ODBC Drivers:"), TabSheet1());
    driversLbl->setObjectName(QStringLiteral("DriversLbl"));
    layout->addWidget(driversLbl);
    DriversLb = new QListWidget(TabSheet1());
    DriversLb->setObjectName(QStringLiteral("DriversLb"));
    DriversLb->setToolTip(QStringLiteral("Double click to create a connection string"));
    driversLbl->setBuddy(DriversLb);
    layout->addWidget(DriversLb, 1);
    ErrorLbl = new QLabel(TabSheet1());
    ErrorLbl->setObjectName(QStringLiteral("ErrorLbl"));
    ErrorLbl->setWordWrap(true);
    ErrorLbl->setStyleSheet(QStringLiteral("color: #b00000"));
    ErrorLbl->hide();
    layout->addWidget(ErrorLbl);
    auto *memoLbl = new QLabel(QStringLiteral("Connection String:"), TabSheet1());
    memoLbl->setObjectName(QStringLiteral("ConnectionLbl"));
    layout->addWidget(memoLbl);
    ConnectionMemo = new QPlainTextEdit(TabSheet1());
    ConnectionMemo->setObjectName(QStringLiteral("ConnectionMemo"));
    ConnectionMemo->setTabChangesFocus(true);
    ConnectionMemo->setFixedHeight(ConnectionMemo->fontMetrics().lineSpacing() * 5 + 12);
    memoLbl->setBuddy(ConnectionMemo);
    layout->addWidget(ConnectionMemo);

    // Queued: the keyword form opens after the list has finished changing its selection.
    connect(DriversLb, &QListWidget::currentRowChanged, this, &TODBCDlgFrm::DriversLbChange, Qt::QueuedConnection);
    // A double click asks again for the driver already chosen.
    connect(DriversLb, &QListWidget::itemDoubleClicked, this, &TODBCDlgFrm::DriversLbChange);

    setSizeable(true);
    resize(520, 440);
}

QString TODBCDlgFrm::Execute(const QString &current, QWidget *parent)
{
    // Kept until the memo has been read: a dialog that frees itself is gone when exec() returns.
    TODBCDlgFrm dialog(parent);
    dialog.setFreeOnClose(false);
    dialog.ConnectionMemo->setPlainText(current);
    return dialog.exec() == QDialog::Accepted ? dialog.ConnectionMemo->toPlainText() : current;
}

void TODBCDlgFrm::showEvent(QShowEvent *event)
{
    TDefDlgFrm::showEvent(event);
    if (!m_listed) {
        m_listed = true;
        FormShow();
    }
}

void TODBCDlgFrm::FormShow()
{
    // Loading the driver manager and reading its driver list runs on a thread of its own; the
    // list fills in when it is done. A failure is said under the list instead of leaving it
    // empty without a word.
    QPointer<TODBCDlgFrm> dialog(this);
    QThread *lister = QThread::create([dialog] {
        QStringList drivers;
        QString error;
        try {
            drivers = Odbc::drivers();
        } catch (const VantryError &e) {
            error = e.message();
        }
        QMetaObject::invokeMethod(qApp, [dialog, drivers, error] {
            if (!dialog)
                return;
            const QSignalBlocker quiet(dialog->DriversLb);
            dialog->DriversLb->clear();
            dialog->DriversLb->addItems(drivers);
            dialog->DriversLb->setCurrentRow(-1);
            dialog->ErrorLbl->setText(error);
            dialog->ErrorLbl->setVisible(!error.isEmpty());
        });
    });
    connect(lister, &QThread::finished, lister, &QObject::deleteLater);
    lister->start();
}

void TODBCDlgFrm::DriversLbChange()
{
    const QListWidgetItem *item = DriversLb->currentItem();
    if (!item || !item->isSelected() || m_building)
        return;
    m_building = true; // one driver at a time, however the selection moves meanwhile
    const auto done = qScopeGuard([this] { m_building = false; });
    const QString driver = item->text();
    try {
        const std::optional<OdbcConnectionBuilder::DriverKeywords> keywords =
            BackgroundCall::call<OdbcConnectionBuilder::DriverKeywords>(
                this, QStringLiteral("Asking the driver \"%1\" for its keywords...").arg(driver),
                [driver] { return OdbcConnectionBuilder::keywordsFor(driver); });
        if (!keywords)
            return;
        if (!keywords->completed.isEmpty()) {
            ConnectionMemo->setPlainText(keywords->completed);
            return;
        }
        OdbcKeywordForm form(driver, *keywords, ConnectionMemo->toPlainText(), this);
        form.setFreeOnClose(false);
        // The memo changes only when the driver accepted the string; it keeps its text otherwise.
        if (form.exec() == QDialog::Accepted)
            ConnectionMemo->setPlainText(form.completedString());
    } catch (const VantryError &e) {
        UserMessages::error(this, e.message());
    }
}
