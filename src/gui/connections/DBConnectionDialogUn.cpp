#include "gui/connections/DBConnectionDialogUn.h"

#include "core/base/SettingsStore.h"
#include "core/base/VantryError.h"
#include "gui/connections/ConnectionTypeLayout.h"
#include "core/connections/ConnectionTypes.h"
#include "gui/app/UserMessages.h"
#include "gui/connections/FileNameEdit.h"
#include "gui/connections/ODBCDlgUn.h"
#include "gui/connections/ODBCUn.h"
#include "gui/connections/OdbcAdministrator.h"
#include "gui/connections/ServerComboBox.h"
#include "core/connections/impDMun.h"
#include "gui/workspace/TableBrowserUn.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QShowEvent>
#include <QSpinBox>
#include <QTabWidget>
#include <QThread>
#include <QTimer>
#include <QToolButton>

namespace {

const QString kPlacementPath = QStringLiteral("Connection Properties\\");

// The wait cursor while the dialog blocks on a driver.
class BusyCursor
{
public:
    BusyCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }
    ~BusyCursor() { QApplication::restoreOverrideCursor(); }
    BusyCursor(const BusyCursor &) = delete;
    BusyCursor &operator=(const BusyCursor &) = delete;
};

QString messageOf(const std::exception &e)
{
    if (const auto *ve = dynamic_cast<const VantryError *>(&e))
        return ve->message();
    return QString::fromUtf8(e.what());
}

// Types whose database is a file: the file box holds DataBase as well as SourceFile.
bool isFileDatabase(TDataSourceType type)
{
    return type == dsInterbase || type == dsSqLite || type == dsSqlServerCE;
}

// The OLE DB connection-string editor run on the dialog's own OLE DB connection object; the
// string comes back unchanged when the editor is cancelled.
QString editedOleDbString(const QString &current, QWidget *parent)
{
    OleDbConnection connection{QStringLiteral("adcOleDb"), current};
    EditConnectionString(connection, parent);
    return connection.ConnectionString;
}

} // namespace

TDBConnectionDlgFrm::TDBConnectionDlgFrm(const AppServices &services, QWidget *parent)
    : TDefDlgFrm(parent), m_services(services)
{
    setObjectName(QStringLiteral("DBConnectionDlgFrm"));
    createControls();
    fixSizeToLargestLayout();
    ConnectionTypeCombo->setCurrentIndex(0);
    const ConnectionTypeLayout first = connectionTypeLayout(0);
    applyVisibility(first);
    placePassword(first.passwordInUserCells);
    setWindowTitle(first.caption);
    restorePosition();

    connect(ConnectionTypeCombo, qOverload<int>(&QComboBox::activated), this,
            &TDBConnectionDlgFrm::ConnectionTypeComboCloseUp);
    connect(sbRefreshDatabases, &QToolButton::clicked, this, &TDBConnectionDlgFrm::cbServerExit);
    DatabaseEd->lineEdit()->installEventFilter(this);
    connect(tbTestConnection, &QToolButton::clicked, this, &TDBConnectionDlgFrm::tbTestConnectionClick);
    connect(tbBuildConnectionString, &QToolButton::clicked, this, &TDBConnectionDlgFrm::tbBuildConnectionStringClick);
    connect(btnBrowseData, &QPushButton::clicked, this, &TDBConnectionDlgFrm::btnBrowseDataClick);
    connect(btnOdbcAdmin, &QPushButton::clicked, this, &TDBConnectionDlgFrm::btnOdbcAdminClick);
}

int TDBConnectionDlgFrm::typeIndex() const { return ConnectionTypeCombo->currentIndex(); }

bool TDBConnectionDlgFrm::shown(const QWidget *w) const
{
    // Visible on the parameters page, whichever page is in front and whether or not the dialog is shown.
    return w->isVisibleTo(tsParameters);
}

// ---------------------------------------------------------------- record <-> controls

void TDBConnectionDlgFrm::SetConnectionParams(const TReaderConnection &rc)
{
    const int index = ConnectionTypes::indexOfType(rc.ConnectionType);
    if (index >= 0)
        ConnectionTypeCombo->setCurrentIndex(index);
    fe->setText(rc.SourceFile);
    mOleDbConnection->setPlainText(rc.Server);
    cbServer->setEditText(rc.Server);
    if (isFileDatabase(rc.ConnectionType))
        fe->setText(rc.DataBase);
    else
        DatabaseEd->setEditText(rc.DataBase);
    UserEdt->setText(rc.UserName);
    PasswordEdt->setText(rc.Password);
    NameEdt->setText(rc.Description);
    sePort->setValue(rc.Port);
    cbUseUnicode->setChecked(rc.UseUnicode);
    cbUseSSL->setChecked(rc.TLS == 1);
    cbUseCompression->setChecked(rc.Compress);
    feSSLKey->setText(rc.SSLKey);
    feSSLCert->setText(rc.SSLCert);
    SSLCASert->setText(rc.SSLCACert);
    cbConnectAs->setCurrentIndex(int(rc.OraConnectAs));
}

void TDBConnectionDlgFrm::GetConnectionParams(TReaderConnection &rc) const
{
    // Deliberately built on the empty base record, not on the record that was loaded: fields the
    // dialog doesn't show go back to their defaults on every save. That must stay.
    rc = m_base;
    if (typeIndex() >= 0)
        rc.ConnectionType = ConnectionTypes::typeOfIndex(typeIndex());
    rc.SourceFile = fe->text();
    if (rc.ConnectionType == dsOleDb)
        rc.Server = mOleDbConnection->toPlainText();
    else if (rc.ConnectionType == dsInterbase)
        rc.Server.clear();
    else
        rc.Server = cbServer->currentText();
    rc.DataBase = isFileDatabase(rc.ConnectionType) ? fe->text() : DatabaseEd->currentText();
    rc.UserName = UserEdt->text();
    rc.Password = PasswordEdt->text();
    rc.Description = NameEdt->text();
    rc.Port = sePort->value();
    rc.UseUnicode = shown(cbUseUnicode) && cbUseUnicode->isChecked();
    rc.TLS = cbUseSSL->isChecked() ? 1 : 0;
    rc.Compress = cbUseCompression->isChecked(); // whether the box is shown or not
    rc.SSLKey = feSSLKey->text();
    rc.SSLCert = feSSLCert->text();
    rc.SSLCACert = SSLCASert->text();
    rc.OraConnectAs = ToraConnectAs(qBound(0, cbConnectAs->currentIndex(), int(ocaSYSOPER)));
}

TReaderConnection TDBConnectionDlgFrm::connectionParams() const
{
    TReaderConnection rc;
    GetConnectionParams(rc);
    return rc;
}

// ---------------------------------------------------------------- layout

void TDBConnectionDlgFrm::showEvent(QShowEvent *event)
{
    TDefDlgFrm::showEvent(event);
    if (!event->spontaneous()) // not when the window comes back from being minimised
        FormShow();
}

void TDBConnectionDlgFrm::FormShow()
{
    if (ConnectionTypeCombo->currentText().isEmpty())
        return;
    const ConnectionTypeLayout l = connectionTypeLayout(typeIndex());
    applyTypeLayout(l);
    // The server list can take seconds (SQL Server instances are found by browse-connect): fill it
    // once the dialog is on the screen.
    QTimer::singleShot(0, this, [this, kind = l.serversKind] { refillServerList(kind); });
}

void TDBConnectionDlgFrm::ConnectionTypeComboCloseUp()
{
    if (ConnectionTypeCombo->currentText().isEmpty())
        return;
    const ConnectionTypeLayout l = connectionTypeLayout(typeIndex());
    applyTypeLayout(l);
    refillServerList(l.serversKind);
}

void TDBConnectionDlgFrm::applyTypeLayout(const ConnectionTypeLayout &l)
{
    tbBuildConnectionString->setEnabled(l.buildConnectionString);
    applyVisibility(l);
    ServerLbl->setText(l.serverLabel);
    StringLbl->setText(l.stringLabelText);
    cbServer->setDropDown(l.serverDropDown);
    fe->setFilter(l.fileFilter);
    placePassword(l.passwordInUserCells);
    setWindowTitle(l.caption);
}

void TDBConnectionDlgFrm::refillServerList(const QString &kind)
{
    if (kind.isEmpty() || !m_services.discovery)
        return;
    // Browsing for servers may wait on the network (SQL Server instances): it runs on a thread of
    // its own with a discovery service of its own, and the list fills in when it is done. A
    // later layout's list wins over an earlier one still on its way.
    const quint64 request = ++m_serverListRequest;
    QPointer<TDBConnectionDlgFrm> dialog(this);
    QThread *browse = QThread::create([dialog, kind, request] {
        QStringList servers;
        try {
            TimpDM discovery;
            discovery.GetServersList(kind, servers);
        } catch (const std::exception &) {
            // No driver manager or no Oracle client: the list simply stays empty.
            servers.clear();
        }
        QMetaObject::invokeMethod(qApp, [dialog, servers, request] {
            if (dialog && dialog->m_serverListRequest == request)
                dialog->cbServer->replaceItems(servers);
        });
    });
    connect(browse, &QThread::finished, browse, &QObject::deleteLater);
    browse->start();
}

// ---------------------------------------------------------------- commands

void TDBConnectionDlgFrm::cbServerExit()
{
    QStringList items;
    for (int i = 0; i < DatabaseEd->count(); ++i)
        items << DatabaseEd->itemText(i);
    QString error;
    try {
        if (!m_services.discovery)
            throw VantryError(QStringLiteral("The discovery service is not available."));
        BusyCursor busy;
        m_services.discovery->GetListOfDataBasesR(connectionParams(), items, error);
    } catch (const std::exception &e) {
        UserMessages::error(this, messageOf(e));
        return;
    }
    items.sort(Qt::CaseInsensitive);
    DatabaseEd->replaceItems(items);
    if (!error.isEmpty())
        UserMessages::error(this, error);
}

void TDBConnectionDlgFrm::tbTestConnectionClick()
{
    try {
        if (!m_services.discovery)
            throw VantryError(QStringLiteral("The discovery service is not available."));
        BusyCursor busy;
        m_services.discovery->TestRConnection(connectionParams());
    } catch (const std::exception &e) {
        UserMessages::error(this, messageOf(e));
        return;
    }
    UserMessages::information(this, QStringLiteral("Connected!"));
}

void TDBConnectionDlgFrm::btnBrowseDataClick()
{
    const TReaderConnection rc = connectionParams();
    QStringList tables;
    try {
        if (!m_services.discovery)
            throw VantryError(QStringLiteral("The discovery service is not available."));
        {
            BusyCursor busy;
            m_services.discovery->GetTablesListR(rc, tables, true, true);
        }
        TTableBrowserFrm::browse(m_services, rc, tables, this);
    } catch (const std::exception &e) {
        UserMessages::error(this, messageOf(e));
    }
    PageControl->setCurrentWidget(tsParameters);
    tsParameters->setFocus();
}

void TDBConnectionDlgFrm::btnOdbcAdminClick()
{
    try {
        OdbcAdministrator::start(this);
    } catch (const std::exception &e) {
        UserMessages::error(this, messageOf(e));
    }
}

void TDBConnectionDlgFrm::tbBuildConnectionStringClick()
{
    const TDataSourceType type = typeIndex() >= 0 ? ConnectionTypes::typeOfIndex(typeIndex()) : dsNone;
    if (type != dsODBC) {
        mOleDbConnection->setPlainText(editedOleDbString(mOleDbConnection->toPlainText(), this));
        return;
    }
    // The memo is hidden for ODBC and not saved, so a string built there alone would be lost.
    // The built string goes into the DSN box too: that box is saved, and the ODBC path opens a
    // "DRIVER=..." text there as a whole connection string. A string already in the box is the
    // one the builder starts from.
    const QString server = cbServer->currentText();
    const QString current = server.contains(QLatin1String("DRIVER="), Qt::CaseInsensitive) ? server
                                                                                           : mOleDbConnection->toPlainText();
    const QString built = TODBCDlgFrm::Execute(current, this);
    mOleDbConnection->setPlainText(built);
    if (built == current)
        return;
    cbServer->setEditText(built);
    if (QLineEdit *edit = cbServer->lineEdit())
        edit->setCursorPosition(0); // the driver's name first
}

// ---------------------------------------------------------------- OK

bool TDBConnectionDlgFrm::validate()
{
    const struct
    {
        bool failed;
        QWidget *field;
        const char *message;
    } checks[] = {
        {shown(fe) && fe->text().isEmpty(), fe, "Please Fill in the Database name"},
        {shown(mOleDbConnection) && mOleDbConnection->toPlainText().isEmpty(), mOleDbConnection,
         "Please Fill in Connection string"},
        {NameEdt->text().isEmpty(), NameEdt, "Please Fill in Connection Name"},
        {shown(cbServer) && cbServer->currentText().isEmpty(), cbServer, "Please Fill in server name"},
        {shown(DatabaseEd) && DatabaseEd->currentText().isEmpty(), DatabaseEd, "Please Fill in database name"},
    };
    for (const auto &check : checks) {
        if (check.failed) {
            UserMessages::error(this, QString::fromLatin1(check.message));
            PageControl->setCurrentWidget(tsParameters);
            check.field->setFocus();
            return false;
        }
    }
    return true;
}

void TDBConnectionDlgFrm::OKBtnClick()
{
    TDefDlgFrm::OKBtnClick();
    setPendingResult(-1);
    if (!validate())
        return;
    if (m_commit) {
        try {
            m_commit();
        } catch (const std::exception &e) {
            UserMessages::error(this, messageOf(e));
            return;
        }
    }
    setPendingResult(QDialog::Accepted);
}

// ---------------------------------------------------------------- keys, placement

bool TDBConnectionDlgFrm::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == cbConnectAs && event->type() == QEvent::KeyPress)
        return cbConnectAsKeyPress(static_cast<QKeyEvent *>(event));
    if (watched == DatabaseEd->lineEdit() && event->type() == QEvent::MouseButtonDblClick) {
        cbServerExit();
        return true;
    }
    return TDefDlgFrm::eventFilter(watched, event);
}

bool TDBConnectionDlgFrm::cbConnectAsKeyPress(QKeyEvent *event)
{
    // Typed characters would pick an entry by its first letter; the privilege is chosen from the
    // list only. Keys that move focus, confirm or cancel still reach the dialog.
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Escape:
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        return false;
    default:
        return !event->text().isEmpty();
    }
}

void TDBConnectionDlgFrm::restorePosition()
{
    if (!m_services.settings || !m_services.settings->contains(kPlacementPath, QStringLiteral("Left")))
        return;
    const QPoint at(m_services.settings->readInt(kPlacementPath, QStringLiteral("Left"), 0),
                    m_services.settings->readInt(kPlacementPath, QStringLiteral("Top"), 0));
    // A position on a screen that is gone would put the dialog out of reach.
    if (QGuiApplication::screenAt(at + QPoint(20, 20)))
        move(at);
}

void TDBConnectionDlgFrm::savePosition() const
{
    if (!m_services.settings)
        return;
    m_services.settings->writeInt(kPlacementPath, QStringLiteral("Left"), pos().x());
    m_services.settings->writeInt(kPlacementPath, QStringLiteral("Top"), pos().y());
}

void TDBConnectionDlgFrm::done(int result)
{
    if (isVisible())
        savePosition();
    TDefDlgFrm::done(result);
}
