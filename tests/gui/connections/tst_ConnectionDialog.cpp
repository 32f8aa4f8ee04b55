// The connection properties dialog: what each type shows, validation on OK, the record built from
// the controls, and editing stored connections through a tab's connection list.

#include "DialogTestSupport.h"
#include "GuiFixture.h"
#include "HostileValues.h"

#include "gui/connections/ConnectionEditor.h"
#include "core/connections/ConnectionTypes.h"
#include "gui/connections/FileNameEdit.h"
#include "gui/connections/ServerComboBox.h"
#include "core/connections/impDMun.h"
#include "core/connections/vtrtools.h"
#include "core/workspace/ConnectionList.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSpinBox>
#include <QTabWidget>
#include <QToolButton>
#include <memory>

Q_DECLARE_METATYPE(TReaderConnection)

namespace {

const QStringList kLayoutControls = {
    "ServerLbl",   "cbServer",  "StringLbl",   "mOleDbConnection", "fe",           "DatabaseLbl", "DatabaseEd",
    "sbRefreshDatabases",       "PortLbl",     "sePort",           "UserLbl",      "UserEdt",     "PasswordLbl",
    "PasswordEdt", "ConnectAsLbl", "cbConnectAs", "cbUseUnicode",  "cbUseSSL",     "cbUseCompression",
    "SSLKeyLbl",   "feSSLKey",  "SSLCertLbl",  "feSSLCert",        "SSLCACertLbl", "SSLCASert"};

QStringList visibleControls(const TDBConnectionDlgFrm &dlg)
{
    QStringList names;
    for (const QString &name : kLayoutControls) {
        auto *w = dlg.findChild<QWidget *>(name);
        if (!w)
            return {QStringLiteral("missing control ") + name};
        if (w->isVisible())
            names << name;
    }
    return names;
}

QString labelText(const TDBConnectionDlgFrm &dlg, const char *name)
{
    auto *label = dlg.findChild<QLabel *>(QString::fromLatin1(name));
    return label ? label->text() : QStringLiteral("<no label>");
}

// Fills every control, shown or not, as if the user had typed into them under other types.
struct Typed
{
    QString name = QStringLiteral("Sales, \"EU\" \\ 2024");
    QString server = QStringLiteral("db.example.com");
    QString memo = QStringLiteral("Provider=MSDASQL.1;Extended Properties=\"DSN=sales;UID=a,b\"");
    QString file = QStringLiteral("/data/sales, 2024.fdb");
    QString database = QStringLiteral("sales");
    QString user = QStringLiteral("analyst");
    QString password = QStringLiteral("pa,ss\\w\xf6rd");
    int port = 5433;
    QString key = QStringLiteral("/keys/client.key");
    QString cert = QStringLiteral("/keys/client.pem");
    QString ca = QStringLiteral("/keys/ca.pem");
    QString comment = QStringLiteral("First line\nZweite Zeile mit \xdcmlaut");

    void fill(TDBConnectionDlgFrm &dlg) const
    {
        dlg.NameEdt->setText(name);
        dlg.cbServer->setEditText(server);
        dlg.mOleDbConnection->setPlainText(memo);
        dlg.fe->setText(file);
        dlg.DatabaseEd->setEditText(database);
        dlg.UserEdt->setText(user);
        dlg.PasswordEdt->setText(password);
        dlg.sePort->setValue(port);
        dlg.cbUseUnicode->setChecked(true);
        dlg.cbUseSSL->setChecked(true);
        dlg.cbUseCompression->setChecked(true);
        dlg.feSSLKey->setText(key);
        dlg.feSSLCert->setText(cert);
        dlg.SSLCASert->setText(ca);
        dlg.cbConnectAs->setCurrentIndex(1);
        dlg.c->setPlainText(comment);
    }

    // The record the dialog must build from fill() for a type.
    TReaderConnection expected(TDataSourceType type, const QString &expServer, const QString &expDatabase,
                               bool expUnicode) const
    {
        TReaderConnection rc;
        rc.ConnectionType = type;
        rc.Description = name;
        rc.SourceFile = file;
        rc.Server = expServer;
        rc.DataBase = expDatabase;
        rc.UserName = user;
        rc.Password = password;
        rc.Port = port;
        rc.UseUnicode = expUnicode;
        rc.TLS = 1;
        rc.Compress = true;
        rc.SSLKey = key;
        rc.SSLCert = cert;
        rc.SSLCACert = ca;
        rc.OraConnectAs = ocaSYSDBA;
        return rc;
    }
};

// A dialog that stays alive after closing, shown unless asked otherwise.
std::unique_ptr<TDBConnectionDlgFrm> newDialog(const AppServices &services, bool show = true)
{
    auto dlg = std::make_unique<TDBConnectionDlgFrm>(services);
    dlg->setFreeOnClose(false);
    if (show) {
        dlg->show();
        if (!QTest::qWaitForWindowExposed(dlg.get()))
            qWarning("the dialog was not exposed");
    }
    return dlg;
}

// The row of the catalogue named name, as another tab's connection list reads it.
ConnectionRow storedRow(TMdm *catalogue, const QString &name)
{
    ConnectionList other(catalogue);
    for (int i = 0; i < other.count(); ++i)
        if (other.row(i).connectionName == name)
            return other.row(i);
    return {};
}

} // namespace

class tst_ConnectionDialog : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void layoutOfEachType_data();
    void layoutOfEachType();
    void controlsFitWithoutOverlapping_data();
    void controlsFitWithoutOverlapping();
    void serverBoxTurnsPlainAndBack();
    void serverListComesFromOdbcAndKeepsTheTypedText();

    void validationMessagesInOrder_data();
    void validationMessagesInOrder();
    void enterValidatesLikeOk();

    void setParamsLeavesTheTypeForUnknownTypes();
    void connectAsTakesNoTypedKeys();

    void roundTripThroughTheCatalogue_data();
    void roundTripThroughTheCatalogue();
    void savingResetsFieldsTheDialogDoesNotShow();
    void cancelLeavesTheRowUntouched();
    void hostileValuesRoundTripOrAreRefused_data();
    void hostileValuesRoundTripOrAreRefused();
    void positionIsKept();

private:
    QTemporaryDir m_odbcDir;
};

void tst_ConnectionDialog::initTestCase()
{
    // A user data source file of our own: the ODBC server list must show its names.
    QVERIFY(m_odbcDir.isValid());
    QFile ini(m_odbcDir.filePath(QStringLiteral("odbc.ini")));
    QVERIFY(ini.open(QIODevice::WriteOnly));
    ini.write("[vantry_dialog_dsn]\nDriver=/nonexistent/driver.so\n\n[another_dsn]\nDriver=/nonexistent/driver.so\n");
    ini.close();
    QFile inst(m_odbcDir.filePath(QStringLiteral("odbcinst.ini")));
    QVERIFY(inst.open(QIODevice::WriteOnly));
    inst.close();
    qputenv("ODBCINI", ini.fileName().toUtf8());
    qputenv("ODBCSYSINI", m_odbcDir.path().toUtf8());
}

// ---------------------------------------------------------------- layout per type

void tst_ConnectionDialog::layoutOfEachType_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("visible");
    QTest::addColumn<QString>("label");     // the server label, or the string label where the server box is hidden
    QTest::addColumn<bool>("dropDown");
    QTest::addColumn<bool>("build");
    QTest::addColumn<QString>("filter");

    const QString user = "UserLbl UserEdt ";
    const QString pass = "PasswordLbl PasswordEdt ";
    const QString ssl = "SSLKeyLbl feSSLKey SSLCertLbl feSSLCert SSLCACertLbl SSLCASert";
    const QString db = "DatabaseLbl DatabaseEd sbRefreshDatabases ";
    const QString fb = "Interbase and Firebird Databases|*.gdb;*.ib;*.fdb|All files (*.*)|*.*";
    const QString all = "All files (*.*)|*.*";

    QTest::newRow("Oracle") << 0 << "ServerLbl cbServer " + user + pass + "ConnectAsLbl cbConnectAs" << "TNS Name:"
                            << true << false << fb;
    QTest::newRow("SQL Server") << 1 << "ServerLbl cbServer " + db + user + pass << "Server Name:" << true << false
                                << fb;
    QTest::newRow("ODBC") << 2 << "ServerLbl cbServer " + user + pass << "ODBC DSN:" << true << true << fb;
    QTest::newRow("MySQL") << 3
                           << "ServerLbl cbServer " + db + "PortLbl sePort " + user + pass +
                                  "cbUseUnicode cbUseSSL cbUseCompression " + ssl
                           << "Host Name:" << false << false << fb;
    QTest::newRow("PostgreSQL") << 4
                                << "ServerLbl cbServer " + db + "PortLbl sePort " + user + pass +
                                       "cbUseUnicode cbUseSSL " + ssl
                                << "Host Name:" << false << false << fb;
    QTest::newRow("Firebird") << 5 << "StringLbl fe " + user + pass + "cbUseUnicode" << "Database:" << true << false
                              << fb;
    QTest::newRow("OLE DB") << 6 << "StringLbl mOleDbConnection" << "Connection String:" << true << true << fb;
    QTest::newRow("SQLite") << 7 << "StringLbl fe cbUseUnicode" << "Database:" << true << false << all;
    QTest::newRow("SQL Server CE") << 8 << "StringLbl fe " + pass << "Database:" << true << false << all;
}

void tst_ConnectionDialog::layoutOfEachType()
{
    QFETCH(int, index);
    QFETCH(QString, visible);
    QFETCH(QString, label);
    QFETCH(bool, dropDown);
    QFETCH(bool, build);
    QFETCH(QString, filter);

    GuiFixture fx;
    auto owner = newDialog(fx.services());
    TDBConnectionDlgFrm &dlg = *owner;
    // Reach each type from a different one, so nothing is left from the first layout.
    chooseType(dlg, index == 6 ? 3 : 6);
    chooseType(dlg, index);

    QCOMPARE(visibleControls(dlg), visible.split(' ', Qt::SkipEmptyParts));
    QCOMPARE(labelText(dlg, dlg.cbServer->isVisible() ? "ServerLbl" : "StringLbl"), label);
    QCOMPARE(dlg.cbServer->hasDropDown(), dropDown);
    QCOMPARE(dlg.tbBuildConnectionString->isEnabled(), build);
    QCOMPARE(dlg.fe->filter(), filter);
    QVERIFY(dlg.windowTitle().startsWith(dlg.ConnectionTypeCombo->itemText(index) + " connection"));

    // The password sits right of the user box, except for SQL Server CE, where it takes the user's place.
    auto *password = dlg.PasswordEdt;
    if (password->isVisible()) {
        if (index == 8)
            QCOMPARE(password->x(), dlg.NameEdt->x());
        else
            QVERIFY(password->x() > dlg.UserEdt->geometry().right());
    }
}

void tst_ConnectionDialog::controlsFitWithoutOverlapping_data()
{
    QTest::addColumn<int>("index");
    for (int i = 0; i < 9; ++i)
        QTest::newRow(qPrintable(ConnectionTypes::entryText(i))) << i;
}

void tst_ConnectionDialog::controlsFitWithoutOverlapping()
{
    QFETCH(int, index);
    GuiFixture fx;
    auto owner = newDialog(fx.services());
    TDBConnectionDlgFrm &dlg = *owner;
    chooseType(dlg, index);
    const QSize before = dlg.size();

    QWidget *page = dlg.findChild<QWidget *>("tsParameters");
    QVERIFY(page);
    QList<QWidget *> shown;
    for (QWidget *w : page->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly))
        if (w->isVisible())
            shown << w;
    for (QWidget *w : shown) {
        QVERIFY2(page->rect().contains(w->geometry()), qPrintable(w->objectName() + " is cut off by the page"));
        QVERIFY2(w->width() >= w->minimumSizeHint().width(), qPrintable(w->objectName() + " is too narrow"));
        QVERIFY2(w->height() >= w->minimumSizeHint().height(), qPrintable(w->objectName() + " is squashed"));
        if (auto *label = qobject_cast<QLabel *>(w); label && !label->text().isEmpty())
            QVERIFY2(label->width() >= label->sizeHint().width(), qPrintable(w->objectName() + " text is cut off"));
        for (QWidget *other : shown)
            if (other != w && w->geometry().intersects(other->geometry()))
                QFAIL(qPrintable(w->objectName() + " overlaps " + other->objectName()));
    }
    for (QPushButton *b : dlg.buttonPanel()->findChildren<QPushButton *>())
        QVERIFY2(b->width() >= b->sizeHint().width(), qPrintable(b->objectName() + " is cut off"));
    QCOMPARE(dlg.size(), before); // one size for every type

    const QString shots = qEnvironmentVariable("VANTRY_SCREENSHOT_DIR");
    if (!shots.isEmpty()) {
        Typed().fill(dlg);
        chooseType(dlg, index);
        QVERIFY(dlg.grab().save(QStringLiteral("%1/dlg-%2.png").arg(shots).arg(index)));
    }
}

void tst_ConnectionDialog::serverBoxTurnsPlainAndBack()
{
    GuiFixture fx;
    auto owner = newDialog(fx.services());
    TDBConnectionDlgFrm &dlg = *owner;
    chooseType(dlg, 1);
    dlg.cbServer->addItems({"alpha", "beta"});
    dlg.cbServer->setEditText("typed-host");

    chooseType(dlg, 3);
    QVERIFY(!dlg.cbServer->hasDropDown());
    // Neither the arrow keys nor the wheel step through the hidden list.
    dlg.cbServer->setFocus();
    QTest::keyClick(dlg.cbServer, Qt::Key_Down);
    QCOMPARE(dlg.cbServer->currentText(), QStringLiteral("typed-host"));
    dlg.cbServer->showPopup();
    QVERIFY(!dlg.cbServer->view()->isVisible());

    chooseType(dlg, 1);
    QVERIFY(dlg.cbServer->hasDropDown());
    QCOMPARE(dlg.cbServer->currentText(), QStringLiteral("typed-host"));
}

void tst_ConnectionDialog::serverListComesFromOdbcAndKeepsTheTypedText()
{
    GuiFixture fx;
    TimpDM discovery;
    AppServices services = fx.services();
    services.discovery = &discovery;
    auto owner = newDialog(services);
    TDBConnectionDlgFrm &dlg = *owner;
    dlg.cbServer->setEditText("my own dsn");
    chooseType(dlg, 2);
    // The list is read off the window's thread and fills in when it arrives.
    QTRY_VERIFY(dlg.cbServer->findText("another_dsn") >= 0);
    QStringList items;
    for (int i = 0; i < dlg.cbServer->count(); ++i)
        items << dlg.cbServer->itemText(i);
    QVERIFY2(items.contains("vantry_dialog_dsn") && items.contains("another_dsn"), qPrintable(items.join(", ")));
    QCOMPARE(dlg.cbServer->currentText(), QStringLiteral("my own dsn"));

    // The list is refilled on every layout: a new data source appears without reopening.
    QFile ini(qEnvironmentVariable("ODBCINI"));
    QVERIFY(ini.open(QIODevice::Append));
    ini.write("\n[third_dsn]\nDriver=/nonexistent/driver.so\n");
    ini.close();
    chooseType(dlg, 2);
    QTRY_VERIFY(dlg.cbServer->findText("third_dsn") >= 0);

    // MySQL has no server list: the one shown stays as it was.
    const int count = dlg.cbServer->count();
    chooseType(dlg, 3);
    QCOMPARE(dlg.cbServer->count(), count);
}

// ---------------------------------------------------------------- validation

void tst_ConnectionDialog::validationMessagesInOrder_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("emptyFields"); // controls left empty
    QTest::addColumn<QString>("message");     // empty: OK closes the dialog

    QTest::newRow("OLE DB memo before name") << 6 << "mOleDbConnection NameEdt" << "Please Fill in Connection string";
    QTest::newRow("file before name") << 7 << "fe NameEdt" << "Please Fill in the Database name";
    QTest::newRow("CE file") << 8 << "fe" << "Please Fill in the Database name";
    QTest::newRow("name before server") << 1 << "NameEdt cbServer DatabaseEd" << "Please Fill in Connection Name";
    QTest::newRow("server before database") << 1 << "cbServer DatabaseEd" << "Please Fill in server name";
    QTest::newRow("database") << 4 << "DatabaseEd" << "Please Fill in database name";
    QTest::newRow("Oracle has no database box") << 0 << "DatabaseEd fe mOleDbConnection" << "";
    QTest::newRow("SQLite ignores hidden server and database") << 7 << "cbServer DatabaseEd mOleDbConnection" << "";
    QTest::newRow("OLE DB ignores hidden file") << 6 << "fe cbServer DatabaseEd" << "";
    QTest::newRow("Firebird server is hidden") << 5 << "cbServer" << "";
}

void tst_ConnectionDialog::validationMessagesInOrder()
{
    QFETCH(int, index);
    QFETCH(QString, emptyFields);
    QFETCH(QString, message);

    MessageLog log;
    GuiFixture fx;
    auto owner = newDialog(fx.services());
    TDBConnectionDlgFrm &dlg = *owner;
    chooseType(dlg, index);
    Typed typed;
    typed.fill(dlg);
    const QStringList empty = emptyFields.split(' ');
    if (empty.contains("NameEdt"))
        dlg.NameEdt->clear();
    if (empty.contains("cbServer"))
        dlg.cbServer->setEditText(QString());
    if (empty.contains("mOleDbConnection"))
        dlg.mOleDbConnection->clear();
    if (empty.contains("fe"))
        dlg.fe->setText(QString());
    if (empty.contains("DatabaseEd"))
        dlg.DatabaseEd->setEditText(QString());
    // Validation must not depend on which page is in front.
    dlg.findChild<QTabWidget *>("PageControl")->setCurrentIndex(1);
    const TReaderConnection before = dlg.connectionParams();

    clickOk(dlg);
    if (message.isEmpty()) {
        QCOMPARE(log.errors, QStringList());
        QVERIFY(!dlg.isVisible());
        QCOMPARE(dlg.result(), int(QDialog::Accepted));
        return;
    }
    QCOMPARE(log.errors, QStringList{message});
    QVERIFY(dlg.isVisible());
    QCOMPARE(dlg.connectionParams(), before);
    QCOMPARE(dlg.c->toPlainText(), typed.comment);
    QCOMPARE(dlg.findChild<QTabWidget *>("PageControl")->currentIndex(), 0);

    // A second OK after the same failure shows the same single message again and still stays open.
    clickOk(dlg);
    QCOMPARE(log.errors.size(), 2);
    QVERIFY(dlg.isVisible());
}

void tst_ConnectionDialog::enterValidatesLikeOk()
{
    MessageLog log;
    GuiFixture fx;
    auto owner = newDialog(fx.services());
    TDBConnectionDlgFrm &dlg = *owner;
    chooseType(dlg, 7);
    dlg.fe->setText("/tmp/x.db");
    QTest::keyClick(dlg.NameEdt, Qt::Key_Return);
    QCOMPARE(log.errors, QStringList{"Please Fill in Connection Name"});
    QVERIFY(dlg.isVisible());
    QTest::keyClicks(dlg.NameEdt, "local");
    QTest::keyClick(dlg.NameEdt, Qt::Key_Return);
    QVERIFY(!dlg.isVisible());
    QCOMPARE(dlg.result(), int(QDialog::Accepted));
}

// ---------------------------------------------------------------- the record

void tst_ConnectionDialog::roundTripThroughTheCatalogue_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<TReaderConnection>("expected");
    Typed t;
    QTest::newRow("Oracle") << 0 << t.expected(dsOracle, t.server, t.database, false);
    QTest::newRow("SQL Server") << 1 << t.expected(dsSqlServer, t.server, t.database, false);
    QTest::newRow("ODBC") << 2 << t.expected(dsODBC, t.server, t.database, false);
    QTest::newRow("MySQL") << 3 << t.expected(dsMySql, t.server, t.database, true);
    QTest::newRow("PostgreSQL") << 4 << t.expected(dsPostgreSQL, t.server, t.database, true);
    QTest::newRow("Firebird") << 5 << t.expected(dsInterbase, QString(), t.file, true);
    QTest::newRow("OLE DB") << 6 << t.expected(dsOleDb, t.memo, t.database, false);
    QTest::newRow("SQLite") << 7 << t.expected(dsSqLite, t.server, t.file, true);
    QTest::newRow("SQL Server CE") << 8 << t.expected(dsSqlServerCE, t.server, t.file, false);
}

void tst_ConnectionDialog::setParamsLeavesTheTypeForUnknownTypes()
{
    GuiFixture fx;
    auto owner = newDialog(fx.services(), false);
    TDBConnectionDlgFrm &dlg = *owner;
    chooseType(dlg, 4);
    TReaderConnection excel;
    excel.ConnectionType = dsExcel;
    excel.Server = "host";
    excel.DataBase = "book";
    excel.TLS = 2; // only 1 means SSL
    dlg.SetConnectionParams(excel);
    QCOMPARE(dlg.typeIndex(), 4);
    QCOMPARE(dlg.cbServer->currentText(), QStringLiteral("host"));
    QCOMPARE(dlg.DatabaseEd->currentText(), QStringLiteral("book"));
    QVERIFY(!dlg.cbUseSSL->isChecked());
}

void tst_ConnectionDialog::connectAsTakesNoTypedKeys()
{
    GuiFixture fx;
    auto owner = newDialog(fx.services());
    TDBConnectionDlgFrm &dlg = *owner;
    chooseType(dlg, 0);
    dlg.cbConnectAs->setFocus();
    QTest::keyClicks(dlg.cbConnectAs, "SsY");
    QCOMPARE(dlg.cbConnectAs->currentIndex(), 0);
    QTest::keyClick(dlg.cbConnectAs, Qt::Key_Down); // choosing from the list still works
    QCOMPARE(dlg.cbConnectAs->currentText(), QStringLiteral("SYSDBA"));
}

// ---------------------------------------------------------------- editing stored connections

void tst_ConnectionDialog::roundTripThroughTheCatalogue()
{
    QFETCH(int, index);
    QFETCH(TReaderConnection, expected);
    static const int codes[] = {331, 321, 341, 343, 345, 347, 339, 349, 323};

    GuiFixture fx;
    ConnectionList list(fx.catalogue.get());
    list.insertRow();
    Typed typed;
    bool accepted = false;
    withModalDialog([&] { accepted = ConnectionEditor::run(nullptr, fx.services(), list, false); },
                    [&](TDBConnectionDlgFrm &dlg) {
                        chooseType(dlg, index);
                        typed.fill(dlg);
                        clickOk(dlg);
                    });
    QVERIFY(accepted);
    QCOMPARE(list.state(), ConnectionList::State::Browse);

    const ConnectionRow row = storedRow(fx.catalogue.get(), typed.name);
    QVERIFY(row.connectionId != 0);
    QCOMPARE(row.connectionType, codes[index]);
    QCOMPARE(row.connectionComments, typed.comment.toUtf8());
    QCOMPARE(UnpackParameters(row.connectionParameters), ReaderConnectionToStr(expected));
    QVERIFY(row.stamps.created.isValid() && row.stamps.changed.isValid());

    // Opened again, the dialog shows the same connection and the stamps of the row.
    ConnectionList other(fx.catalogue.get());
    for (int i = 0; i < other.count(); ++i)
        if (other.row(i).connectionId == row.connectionId)
            other.setCurrentIndex(i);
    other.editCurrent();
    TReaderConnection reread;
    QString comment, created, createdBy;
    withModalDialog([&] { ConnectionEditor::run(nullptr, fx.services(), other, false); },
                    [&](TDBConnectionDlgFrm &dlg) {
                        reread = dlg.connectionParams();
                        comment = dlg.c->toPlainText();
                        created = dlg.CreatedLbl->text();
                        createdBy = dlg.CreatedBy->text();
                        clickCancel(dlg);
                    });
    QCOMPARE(reread, expected);
    QCOMPARE(comment, typed.comment);
    QVERIFY(!created.isEmpty());
    QCOMPARE(createdBy, row.stamps.createdBy);
}

void tst_ConnectionDialog::savingResetsFieldsTheDialogDoesNotShow()
{
    GuiFixture fx;
    ConnectionList list(fx.catalogue.get());
    ConnectionRow &row = list.insertRow();
    TReaderConnection stored;
    stored.ConnectionType = dsOracle;
    stored.Description = "ora";
    stored.Server = "ORCL";
    stored.UserName = "scott";
    stored.ShowSystemTables = true;
    stored.TablesMask = "EMP%";
    stored.TimeOut = 30;
    row.connectionName = "ora";
    row.connectionParameters = PackParameters(ReaderConnectionToStr(stored));
    list.post();

    list.editCurrent();
    withModalDialog([&] { ConnectionEditor::run(nullptr, fx.services(), list, false); },
                    [&](TDBConnectionDlgFrm &dlg) {
                        QCOMPARE(dlg.UserEdt->text(), QStringLiteral("scott"));
                        clickOk(dlg);
                    });
    const TReaderConnection saved = ReaderConnectionFromStr(UnpackParameters(list.current()->connectionParameters));
    QCOMPARE(saved.ShowSystemTables, false);
    QCOMPARE(saved.TablesMask, QString());
    QCOMPARE(saved.TimeOut, 0);
    QCOMPARE(saved.Server, QStringLiteral("ORCL"));
    QCOMPARE(saved.UserName, QStringLiteral("scott"));
    QCOMPARE(list.current()->connectionType, 331);
}

void tst_ConnectionDialog::cancelLeavesTheRowUntouched()
{
    GuiFixture fx;
    ConnectionList list(fx.catalogue.get());
    QVERIFY(list.count() > 0); // the sample connection of a new catalogue
    list.setCurrentIndex(0);
    const ConnectionRow original = *list.current();
    // Esc on an edited row (with the type locked), Cancel on a new one.
    for (bool insert : {false, true}) {
        insert ? void(list.insertRow()) : void(list.editCurrent());
        bool accepted = true;
        bool typeBoxEnabled = true;
        withModalDialog([&] { accepted = ConnectionEditor::run(nullptr, fx.services(), list, !insert); },
                        [&](TDBConnectionDlgFrm &dlg) {
                            typeBoxEnabled = dlg.ConnectionTypeCombo->isEnabled();
                            chooseType(dlg, 3);
                            Typed().fill(dlg);
                            insert ? clickCancel(dlg) : QTest::keyClick(&dlg, Qt::Key_Escape);
                        });
        QVERIFY(!accepted);
        QCOMPARE(typeBoxEnabled, insert);
        QCOMPARE(list.state(), ConnectionList::State::Browse);
    }
    ConnectionList reloaded(fx.catalogue.get());
    for (const ConnectionList *l : {&list, &reloaded}) {
        QCOMPARE(l->count(), 1);
        const ConnectionRow &r = l->row(0);
        QCOMPARE(r.connectionId, original.connectionId);
        QCOMPARE(r.connectionName, original.connectionName);
        QCOMPARE(r.connectionParameters, original.connectionParameters);
        QCOMPARE(r.connectionComments, original.connectionComments);
        QCOMPARE(r.connectionType, original.connectionType);
        QCOMPARE(r.stamps.changed, original.stamps.changed);
    }
}

void tst_ConnectionDialog::positionIsKept()
{
    GuiFixture fx;
    {
        TDBConnectionDlgFrm dlg(fx.services());
        dlg.setFreeOnClose(false);
        dlg.show();
        QVERIFY(QTest::qWaitForWindowExposed(&dlg));
        dlg.move(37, 41);
        QTRY_COMPARE(dlg.pos(), QPoint(37, 41));
        clickCancel(dlg);
    }
    QCOMPARE(fx.settings->readInt("Connection Properties\\", "Left", -1), 37);
    QCOMPARE(fx.settings->readInt("Connection Properties\\", "Top", -1), 41);
    auto owner = newDialog(fx.services());
    TDBConnectionDlgFrm &dlg = *owner;
    QCOMPARE(dlg.pos(), QPoint(37, 41));
}

QTEST_MAIN(tst_ConnectionDialog)
#include "tst_ConnectionDialog.moc"

// ---------------------------------------------------------------- values a user should not type

void tst_ConnectionDialog::hostileValuesRoundTripOrAreRefused_data()
{
    addHostileValueRows();
}

void tst_ConnectionDialog::hostileValuesRoundTripOrAreRefused()
{
    QFETCH(QString, value);
    GuiFixture fx;
    MessageLog messages;
    ConnectionList list(fx.catalogue.get());
    list.insertRow();
    const QString name = QStringLiteral("hostile ") + QString::number(qHash(value));
    bool accepted = false;
    TReaderConnection typed;
    withModalDialog([&] { accepted = ConnectionEditor::run(nullptr, fx.services(), list, false); },
                    [&](TDBConnectionDlgFrm &dlg) {
                        chooseType(dlg, 4); // PostgreSQL: server, database, user, password
                        dlg.NameEdt->setText(name);
                        dlg.cbServer->setEditText(value);
                        dlg.DatabaseEd->setEditText(value);
                        dlg.UserEdt->setText(value);
                        dlg.PasswordEdt->setText(value);
                        dlg.c->setPlainText(value);
                        typed = dlg.connectionParams();
                        clickOk(dlg);
                        if (dlg.isVisible()) // refused: the dialog says why and stays open
                            clickCancel(dlg);
                    });
    if (!accepted) {
        QVERIFY2(!messages.errors.isEmpty(), "a refused value must come with a message");
        return;
    }
    // Accepted: the catalogue gives back exactly what was typed.
    const ConnectionRow row = storedRow(fx.catalogue.get(), name);
    QVERIFY(row.connectionId != 0);
    TReaderConnection stored;
    StrToReaderConnection(UnpackParameters(row.connectionParameters), stored);
    QCOMPARE(stored.Server, typed.Server);
    QCOMPARE(stored.DataBase, typed.DataBase);
    QCOMPARE(stored.UserName, typed.UserName);
    QCOMPARE(stored.Password, typed.Password);
    QCOMPARE(QString::fromUtf8(row.connectionComments), value);
}
