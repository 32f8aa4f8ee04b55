// The controls of the connection properties dialog and where each type puts them.

#include "gui/connections/DBConnectionDialogUn.h"

#include "gui/components/ConnectionTypeIcons.h"
#include "gui/connections/ConnectionTypeLayout.h"
#include "core/connections/ConnectionTypes.h"
#include "gui/connections/FileNameEdit.h"
#include "gui/connections/ServerComboBox.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QStyle>
#include <QTabWidget>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

// Rows of the parameters grid. Columns: 0 label, 1 field, 2 label, 3 field.
enum Row {
    RowType,
    RowName,
    RowServer,
    RowMemo,
    RowFile,
    RowDatabase,
    RowUser,
    RowConnectAs,
    RowOptions,
    RowSslKey,
    RowSslCert,
    RowSslCa,
    RowStretch,
    RowCreated,
    RowUpdated
};

template <typename W>
W *named(W *widget, const char *name)
{
    widget->setObjectName(QString::fromLatin1(name));
    return widget;
}

} // namespace

QLabel *TDBConnectionDlgFrm::addLabel(const char *name, const QString &text)
{
    return named(new QLabel(text, tsParameters), name);
}

void TDBConnectionDlgFrm::createControls()
{
    auto *pageLayout = new QVBoxLayout(TabSheet1());
    pageLayout->setContentsMargins(8, 8, 8, 0);
    PageControl = named(new QTabWidget(TabSheet1()), "PageControl");
    pageLayout->addWidget(PageControl);

    tsParameters = named(new QWidget, "tsParameters");
    tsComments = named(new QWidget, "tsComments");
    PageControl->addTab(tsParameters, QStringLiteral("Parameters"));
    PageControl->addTab(tsComments, QStringLiteral("Comments"));

    // Comments page
    auto *commentsLayout = new QVBoxLayout(tsComments);
    commentsLayout->setContentsMargins(4, 4, 4, 4);
    c = named(new TTextEditorFrame(tsComments), "c");
    c->setTools(m_services.tools);
    commentsLayout->addWidget(c);

    // Parameters page: a tool bar over the grid of fields
    auto *paramsLayout = new QVBoxLayout(tsParameters);
    paramsLayout->setContentsMargins(8, 4, 8, 8);
    auto *toolBar = named(new QToolBar(tsParameters), "ToolBar1");
    toolBar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    toolBar->setIconSize(QSize(16, 16));
    tbTestConnection = named(new QToolButton(toolBar), "tbTestConnection");
    tbTestConnection->setText(QStringLiteral("Test Connection"));
    tbTestConnection->setIcon(style()->standardIcon(QStyle::SP_DialogApplyButton));
    tbTestConnection->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    tbBuildConnectionString = named(new QToolButton(toolBar), "tbBuildConnectionString");
    tbBuildConnectionString->setText(QStringLiteral("Build Connection String"));
    tbBuildConnectionString->setIcon(style()->standardIcon(QStyle::SP_FileDialogDetailedView));
    tbBuildConnectionString->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    toolBar->addWidget(tbTestConnection);
    toolBar->addWidget(tbBuildConnectionString);
    paramsLayout->addWidget(toolBar);

    m_grid = new QGridLayout;
    m_grid->setHorizontalSpacing(8);
    m_grid->setColumnStretch(1, 1);
    m_grid->setColumnStretch(3, 1);
    paramsLayout->addLayout(m_grid, 1);

    ConnectionTypeCombo = named(new QComboBox(tsParameters), "ConnectionTypeCombo");
    ConnectionTypeCombo->setIconSize(QSize(16, 16));
    for (int i = 0; i < ConnectionTypes::count(); ++i)
        ConnectionTypeCombo->addItem(ConnectionTypeIcons::forIndex(i), ConnectionTypes::entryText(i));
    m_grid->addWidget(addLabel("ConnectionTypeLbl", QStringLiteral("Connection Type:")), RowType, 0);
    m_grid->addWidget(ConnectionTypeCombo, RowType, 1, 1, 3);

    NameEdt = named(new QLineEdit(tsParameters), "NameEdt");
    m_grid->addWidget(addLabel("NameLbl", QStringLiteral("Connection Name:")), RowName, 0);
    m_grid->addWidget(NameEdt, RowName, 1, 1, 3);

    cbServer = named(new TServerComboBox(tsParameters), "cbServer");
    ServerLbl = addLabel("ServerLbl", QStringLiteral("Server Name:"));
    m_grid->addWidget(ServerLbl, RowServer, 0);
    m_grid->addWidget(cbServer, RowServer, 1, 1, 3);

    StringLbl = addLabel("StringLbl", QStringLiteral("Connection String:"));
    mOleDbConnection = named(new QPlainTextEdit(tsParameters), "mOleDbConnection");
    mOleDbConnection->setTabChangesFocus(true);
    mOleDbConnection->setFixedHeight(mOleDbConnection->fontMetrics().lineSpacing() * 5 + 12);
    m_grid->addWidget(mOleDbConnection, RowMemo, 1, 1, 3);
    fe = named(new TFileNameEdit(tsParameters), "fe");
    m_grid->addWidget(fe, RowFile, 1, 1, 3);

    DatabaseLbl = addLabel("DatabaseLbl", QStringLiteral("Database:"));
    m_databaseBox = named(new QWidget(tsParameters), "DatabasePanel");
    auto *databaseLayout = new QHBoxLayout(m_databaseBox);
    databaseLayout->setContentsMargins(0, 0, 0, 0);
    databaseLayout->setSpacing(2);
    DatabaseEd = named(new TServerComboBox(m_databaseBox), "DatabaseEd");
    DatabaseEd->setToolTip(QStringLiteral("Double click to list the databases of the server"));
    sbRefreshDatabases = named(new QToolButton(m_databaseBox), "sbRefreshDatabases");
    sbRefreshDatabases->setIcon(style()->standardIcon(QStyle::SP_BrowserReload));
    sbRefreshDatabases->setToolTip(QStringLiteral("Refresh the list of databases"));
    databaseLayout->addWidget(DatabaseEd, 1);
    databaseLayout->addWidget(sbRefreshDatabases);
    m_grid->addWidget(DatabaseLbl, RowDatabase, 0);
    m_grid->addWidget(m_databaseBox, RowDatabase, 1);
    PortLbl = addLabel("PortLbl", QStringLiteral("Port:"));
    sePort = named(new QSpinBox(tsParameters), "sePort");
    sePort->setRange(0, 65535);
    m_grid->addWidget(PortLbl, RowDatabase, 2);
    m_grid->addWidget(sePort, RowDatabase, 3);

    UserLbl = addLabel("UserLbl", QStringLiteral("User Name:"));
    UserEdt = named(new QLineEdit(tsParameters), "UserEdt");
    PasswordLbl = addLabel("PasswordLbl", QStringLiteral("Password:"));
    PasswordEdt = named(new QLineEdit(tsParameters), "PasswordEdt");
    PasswordEdt->setEchoMode(QLineEdit::Password);
    m_grid->addWidget(UserLbl, RowUser, 0);
    m_grid->addWidget(UserEdt, RowUser, 1);
    placePassword(false);

    ConnectAsLbl = addLabel("ConnectAsLbl", QStringLiteral("Connect as:"));
    cbConnectAs = named(new QComboBox(tsParameters), "cbConnectAs");
    cbConnectAs->addItems({QStringLiteral("Normal"), QStringLiteral("SYSDBA"), QStringLiteral("SYSOPER")});
    cbConnectAs->installEventFilter(this);
    m_grid->addWidget(ConnectAsLbl, RowConnectAs, 0);
    m_grid->addWidget(cbConnectAs, RowConnectAs, 1);

    cbUseUnicode = named(new QCheckBox(QStringLiteral("Use Unicode"), tsParameters), "cbUseUnicode");
    cbUseSSL = named(new QCheckBox(QStringLiteral("Use SSL"), tsParameters), "cbUseSSL");
    cbUseCompression = named(new QCheckBox(QStringLiteral("Use Compression"), tsParameters), "cbUseCompression");
    m_grid->addWidget(cbUseUnicode, RowOptions, 1);
    m_grid->addWidget(cbUseSSL, RowOptions, 2);
    m_grid->addWidget(cbUseCompression, RowOptions, 3);

    SSLKeyLbl = addLabel("SSLKeyLbl", QStringLiteral("SSL Key:"));
    feSSLKey = named(new TFileNameEdit(tsParameters), "feSSLKey");
    SSLCertLbl = addLabel("SSLCertLbl", QStringLiteral("SSL Certificate:"));
    feSSLCert = named(new TFileNameEdit(tsParameters), "feSSLCert");
    SSLCACertLbl = addLabel("SSLCACertLbl", QStringLiteral("CA Certificate:"));
    SSLCASert = named(new TFileNameEdit(tsParameters), "SSLCASert");
    const struct { QLabel *label; TFileNameEdit *box; int row; } sslBoxes[] = {
        {SSLKeyLbl, feSSLKey, RowSslKey}, {SSLCertLbl, feSSLCert, RowSslCert}, {SSLCACertLbl, SSLCASert, RowSslCa}};
    for (const auto &b : sslBoxes) {
        b.box->setFilter(QString::fromLatin1(kAllFilesFilter));
        m_grid->addWidget(b.label, b.row, 0);
        m_grid->addWidget(b.box, b.row, 1, 1, 3);
    }

    m_grid->setRowStretch(RowStretch, 1);
    m_grid->setRowMinimumHeight(RowStretch, 8);

    CreatedLbl = named(new QLabel(tsParameters), "CreatedLbl");
    CreatedBy = named(new QLabel(tsParameters), "CreatedBy");
    UpdatedLbl = named(new QLabel(tsParameters), "UpdatedLbl");
    UpdatedBy = named(new QLabel(tsParameters), "UpdatedBy");
    m_grid->addWidget(addLabel("CreatedCaption", QStringLiteral("Created:")), RowCreated, 0);
    m_grid->addWidget(CreatedLbl, RowCreated, 1);
    m_grid->addWidget(CreatedBy, RowCreated, 2, 1, 2);
    m_grid->addWidget(addLabel("UpdatedCaption", QStringLiteral("Updated:")), RowUpdated, 0);
    m_grid->addWidget(UpdatedLbl, RowUpdated, 1);
    m_grid->addWidget(UpdatedBy, RowUpdated, 2, 1, 2);
    for (QLabel *stamp : {CreatedLbl, CreatedBy, UpdatedLbl, UpdatedBy})
        stamp->setTextInteractionFlags(Qt::TextSelectableByMouse);

    // The buttons that open other windows sit beside OK and Cancel.
    btnBrowseData = named(new QPushButton(QStringLiteral("Browse data"), leftButtonArea()), "btnBrowseData");
    btnOdbcAdmin = named(new QPushButton(QStringLiteral("ODBC Administrator"), leftButtonArea()), "btnOdbcAdmin");
    for (QPushButton *b : {btnBrowseData, btnOdbcAdmin}) {
        b->setAutoDefault(false);
        leftButtonArea()->layout()->addWidget(b);
    }
}

void TDBConnectionDlgFrm::placePassword(bool inUserCells)
{
    m_grid->removeWidget(PasswordLbl);
    m_grid->removeWidget(PasswordEdt);
    const int column = inUserCells ? 0 : 2;
    m_grid->addWidget(PasswordLbl, RowUser, column);
    m_grid->addWidget(PasswordEdt, RowUser, column + 1);
}

void TDBConnectionDlgFrm::applyVisibility(const ConnectionTypeLayout &l)
{
    const struct { bool on; std::initializer_list<QWidget *> widgets; } groups[] = {
        {l.port, {PortLbl, sePort}},
        {l.database, {m_databaseBox, DatabaseLbl}},
        {l.user, {UserLbl, UserEdt}},
        {l.password, {PasswordLbl, PasswordEdt}},
        {l.memo, {mOleDbConnection}},
        {l.file, {fe}},
        {l.stringLabel, {StringLbl}},
        {l.server, {ServerLbl, cbServer}},
        {l.connectAs, {ConnectAsLbl, cbConnectAs}},
        {l.unicode, {cbUseUnicode}},
        {l.ssl, {SSLKeyLbl, feSSLKey, SSLCertLbl, feSSLCert, SSLCACertLbl, SSLCASert, cbUseSSL}},
        {l.compression, {cbUseCompression}},
    };
    for (const auto &g : groups)
        for (QWidget *w : g.widgets)
            w->setVisible(g.on);

    // The string label sits beside whichever of the memo and the file box is shown.
    m_grid->removeWidget(StringLbl);
    m_grid->addWidget(StringLbl, l.memo ? RowMemo : RowFile, 0, l.memo ? Qt::AlignTop : Qt::Alignment());
}

void TDBConnectionDlgFrm::fixSizeToLargestLayout()
{
    // The dialog keeps one size for every type: the parameters page is as large as the largest
    // layout needs, and the dialog is as large as its content.
    QSize page(520, 0);
    for (int i = 0; i < ConnectionTypes::count(); ++i) {
        const ConnectionTypeLayout l = connectionTypeLayout(i);
        applyVisibility(l);
        placePassword(l.passwordInUserCells);
        m_grid->invalidate();
        tsParameters->layout()->invalidate();
        page = page.expandedTo(tsParameters->layout()->sizeHint());
    }
    tsParameters->setMinimumSize(page);
    layout()->setSizeConstraint(QLayout::SetFixedSize);
}
