#pragma once
#include "gui/app/AppServices.h"
#include "core/connections/vtrIL.h"
#include "gui/ui/DefDlgUn.h"
#include "gui/ui/TextEditorFrameUn.h"

#include <functional>

class QCheckBox;
class QComboBox;
class QGridLayout;
class QLabel;
class QPlainTextEdit;
class QPushButton;
class QSpinBox;
class QTabWidget;
class QToolButton;
class QLineEdit;
class TFileNameEdit;
class TServerComboBox;
struct ConnectionTypeLayout;

// The connection properties dialog: the type of a stored connection and its parameters, a test of
// the connection, the database list of a server, a table browser on the connection and, for ODBC
// and OLE DB, the connection string builder. Every control carries its name as objectName.
class TDBConnectionDlgFrm : public TDefDlgFrm
{
    Q_OBJECT
public:
    explicit TDBConnectionDlgFrm(const AppServices &services, QWidget *parent = nullptr);

    // Fills the controls from a record; a type the dialog doesn't offer leaves the type box as it is.
    void SetConnectionParams(const TReaderConnection &rc);
    // The record of the controls, built on the dialog's own empty base record: fields the dialog
    // doesn't show are always at their defaults.
    void GetConnectionParams(TReaderConnection &rc) const;
    TReaderConnection connectionParams() const;

    // The entry chosen in the type box (0..8), -1 for none.
    int typeIndex() const;

    // Runs after a successful validation on OK, before the dialog closes; an exception it throws
    // is shown and keeps the dialog open with everything typed.
    void setCommit(std::function<void()> commit) { m_commit = std::move(commit); }

    QComboBox *ConnectionTypeCombo;
    QLineEdit *NameEdt;
    TServerComboBox *cbServer;
    QPlainTextEdit *mOleDbConnection;
    TFileNameEdit *fe;
    TServerComboBox *DatabaseEd;
    QToolButton *sbRefreshDatabases;
    QSpinBox *sePort;
    QLineEdit *UserEdt;
    QLineEdit *PasswordEdt;
    QCheckBox *cbUseUnicode;
    QCheckBox *cbUseSSL;
    QCheckBox *cbUseCompression;
    TFileNameEdit *feSSLKey;
    TFileNameEdit *feSSLCert;
    TFileNameEdit *SSLCASert;
    QComboBox *cbConnectAs;
    QLabel *CreatedLbl;
    QLabel *CreatedBy;
    QLabel *UpdatedLbl;
    QLabel *UpdatedBy;
    QToolButton *tbTestConnection;
    QToolButton *tbBuildConnectionString;
    QPushButton *btnBrowseData;
    QPushButton *btnOdbcAdmin;
    TTextEditorFrame *c; // the connection's comment, on the "Comments" page

public slots:
    void FormShow();
    void ConnectionTypeComboCloseUp();
    void cbServerExit();
    void tbTestConnectionClick();
    void btnBrowseDataClick();
    void btnOdbcAdminClick();
    void tbBuildConnectionStringClick();
    void OKBtnClick() override;

protected:
    void showEvent(QShowEvent *event) override;
    void done(int result) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    // Building the controls (DBConnectionDialogForm.cpp).
    void createControls();
    QLabel *addLabel(const char *name, const QString &text);
    void applyVisibility(const ConnectionTypeLayout &layout);
    void applyTypeLayout(const ConnectionTypeLayout &layout);
    void placePassword(bool inUserCells);
    void fixSizeToLargestLayout();

    bool shown(const QWidget *w) const;
    void refillServerList(const QString &kind);
    bool validate();
    void restorePosition();
    void savePosition() const;
    bool cbConnectAsKeyPress(QKeyEvent *event);

    AppServices m_services;
    quint64 m_serverListRequest = 0;  // the latest server list asked for
    TReaderConnection m_base; // never filled: every record the dialog builds starts from it
    std::function<void()> m_commit;

    QTabWidget *PageControl;
    QWidget *tsParameters;
    QWidget *tsComments;
    QGridLayout *m_grid;
    QLabel *ServerLbl;
    QLabel *StringLbl;
    QLabel *DatabaseLbl;
    QLabel *PortLbl;
    QLabel *UserLbl;
    QLabel *PasswordLbl;
    QLabel *ConnectAsLbl;
    QLabel *SSLKeyLbl;
    QLabel *SSLCertLbl;
    QLabel *SSLCACertLbl;
    QWidget *m_databaseBox;
    bool m_positionRestored = false;
};
