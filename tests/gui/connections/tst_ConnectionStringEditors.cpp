// The OLE DB connection-string editor, the data link dialog and the ODBC builder's window without
// servers: which choice shows a string, what each choice gives back, enabling and colours, the
// fixed texts, and Cancel leaving the caller's string alone.

#include "DialogTestSupport.h"
#include "GuiFixture.h"
#include "HostileValues.h"

#include "core/connections/DataLinkFile.h"
#include "core/connections/OdbcKeywords.h"
#include "gui/connections/DataLinkDialog.h"
#include "gui/connections/ODBCDlgUn.h"
#include "gui/connections/ODBCUn.h"
#include "gui/connections/OdbcKeywordForm.h"
#include "gui/connections/ServerComboBox.h"

#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QToolButton>

namespace {

QColor baseOf(const QWidget *w) { return w->palette().color(QPalette::Base); }

// A radio button takes clicks on its circle and caption only, not on the rest of its row.
void clickRadio(QRadioButton *button)
{
    QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(6, button->height() / 2));
}

} // namespace

class tst_ConnectionStringEditors : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_home = std::make_unique<TempHome>(); }
    void cleanup() { m_home.reset(); }

    void editorShowsTheChoiceOfTheString()
    {
        const QString folder = DataLinkFile::folder();
        DataLinkFile::write(QDir(folder).filePath("Sales.udl"), "Provider=SQLOLEDB.1;Data Source=s");
        TConnEditForm form;
        form.setFreeOnClose(false);
        QVERIFY(form.DataLinkFile->findText("Sales.udl") >= 0);

        form.Edit("FILE NAME=" + QDir(folder).filePath("Sales.udl"));
        QVERIFY(form.DataLinkButton->isChecked());
        QCOMPARE(form.DataLinkFile->currentText(), QStringLiteral("Sales.udl"));
        QCOMPARE(form.result(), "FILE NAME=" + QDir(folder).filePath("Sales.udl"));

        form.Edit("FILE NAME=/elsewhere/Other.udl");
        QCOMPARE(form.DataLinkFile->currentText(), QStringLiteral("/elsewhere/Other.udl"));
        QCOMPARE(form.result(), QStringLiteral("FILE NAME=/elsewhere/Other.udl"));
        form.DataLinkFile->setEditText("Typed.udl");
        QCOMPARE(form.result(), "FILE NAME=" + QDir(folder).filePath("Typed.udl"));
        form.DataLinkFile->setEditText("");
        QCOMPARE(form.result(), QString());

        form.Edit("Provider=MSDASQL.1;Data Source=Sales");
        QVERIFY(form.ConnectionStringButton->isChecked());
        QCOMPARE(form.ConnectionString->text(), QStringLiteral("Provider=MSDASQL.1;Data Source=Sales"));
        QCOMPARE(form.result(), QStringLiteral("Provider=MSDASQL.1;Data Source=Sales"));
    }

    void sourceButtonsEnableOnePairAndPaintIt()
    {
        TConnEditForm form;
        form.setFreeOnClose(false);
        form.show();
        QVERIFY(QTest::qWaitForWindowActive(&form));
        const QColor window = form.palette().color(QPalette::Active, QPalette::Base);
        const QColor face = form.palette().color(QPalette::Disabled, QPalette::Button);

        clickRadio(form.DataLinkButton);
        QVERIFY(form.DataLinkFile->isEnabled() && form.Browse->isEnabled());
        QVERIFY(!form.ConnectionString->isEnabled() && !form.Build->isEnabled());
        QCOMPARE(baseOf(form.DataLinkFile), window);
        QCOMPARE(baseOf(form.ConnectionString), face);
        QVERIFY(form.DataLinkFile->hasFocus());

        clickRadio(form.ConnectionStringButton);
        QVERIFY(!form.DataLinkFile->isEnabled() && !form.Browse->isEnabled());
        QVERIFY(form.ConnectionString->isEnabled() && form.Build->isEnabled());
        QCOMPARE(baseOf(form.ConnectionString), window);
        QCOMPARE(baseOf(form.DataLinkFile), face);
        QVERIFY(form.ConnectionString->hasFocus());
        form.ConnectionString->setText("Provider=SQLOLEDB.1;Data Source=db1;Initial Catalog=sales");
        shoot(form, "ConnEditForm.png");
    }

    void editingWritesBackOnlyAChange()
    {
        OleDbConnection connection{"adcOleDb", "Provider=SQLOLEDB.1;Data Source=s"};
        QString caption;
        whenModal<TConnEditForm>([&](TConnEditForm &form) {
            caption = form.windowTitle();
            form.ConnectionString->setText("changed but cancelled");
            QTest::mouseClick(form.cancelButton(), Qt::LeftButton);
        });
        QVERIFY(!EditConnectionString(connection));
        QCOMPARE(caption, QStringLiteral("adcOleDb.ConnectionString"));
        QCOMPARE(connection.ConnectionString, QStringLiteral("Provider=SQLOLEDB.1;Data Source=s"));

        whenModal<TConnEditForm>([](TConnEditForm &form) { QTest::mouseClick(form.okButton(), Qt::LeftButton); });
        QVERIFY(!EditConnectionString(connection));

        whenModal<TConnEditForm>([](TConnEditForm &form) {
            clickRadio(form.DataLinkButton);
            form.DataLinkFile->setEditText("Sales.udl");
            QTest::mouseClick(form.okButton(), Qt::LeftButton);
        });
        QVERIFY(EditConnectionString(connection));
        QCOMPARE(connection.ConnectionString, "FILE NAME=" + QDir(DataLinkFile::folder()).filePath("Sales.udl"));
    }

    void dataLinkDialogOffersTheProvidersOfTheAdoPath()
    {
        DataLinkDialog dlg;
        dlg.setFreeOnClose(false);
        QStringList names;
        for (int i = 0; i < dlg.ProviderCb->count(); ++i)
            names << dlg.ProviderCb->itemData(i).toString();
        QCOMPARE(names, QStringList({"MSDASQL.1", "SQLOLEDB.1", "SQLNCLI11", "Microsoft.Jet.OLEDB.4.0",
                                     "Microsoft.ACE.OLEDB.12.0"}));

        dlg.setConnectionString("Provider=Microsoft.Jet.OLEDB.4.0;Data Source=/data/a.mdb");
        QCOMPARE(dlg.DataSourceEdt->text(), QStringLiteral("/data/a.mdb"));
        QVERIFY(dlg.DataSourceBtn->isEnabled());
        QVERIFY(!dlg.ExtendedPropertiesBtn->isEnabled());

        dlg.setConnectionString("Provider=MSDASQL.1;Data Source=Sales;User ID=ann;Password=x;Mode=Read");
        QVERIFY(!dlg.DataSourceBtn->isEnabled());
        QVERIFY(dlg.ExtendedPropertiesBtn->isEnabled());
        dlg.InitialCatalogEdt->setText("sales");
        QCOMPARE(dlg.connectionString(), QStringLiteral("Provider=MSDASQL.1;Password=x;Persist Security Info=True;"
                                                        "User ID=ann;Initial Catalog=sales;Data Source=Sales;Mode=Read"));
        dlg.show();
        shoot(dlg, "DataLinkDialog.png");

        // A provider not in the list is kept as it is.
        dlg.setConnectionString("Provider=OraOLEDB.Oracle.1;Data Source=orcl");
        QCOMPARE(dlg.ProviderCb->currentText(), QStringLiteral("OraOLEDB.Oracle.1"));
        QCOMPARE(dlg.connectionString(), QStringLiteral("Provider=OraOLEDB.Oracle.1;Data Source=orcl"));
    }

    // Whatever a user types in the data link dialog comes back field for field from its string
    // and from the data link file it saves (values are trimmed, the password is not), or the
    // dialog says why it cannot be saved.
    void hostileValuesRoundTripThroughTheDataLink_data() { addHostileValueRows(); }
    void hostileValuesRoundTripThroughTheDataLink()
    {
        QFETCH(QString, value);
        MessageLog log;
        DataLinkDialog typed;
        typed.setFreeOnClose(false);
        typed.setConnectionString("Provider=SQLOLEDB.1");
        const QList<QLineEdit *> fields = {typed.DataSourceEdt, typed.InitialCatalogEdt, typed.UserIdEdt,
                                           typed.PasswordEdt, typed.ExtendedPropertiesEdt};
        for (QLineEdit *field : fields)
            field->setText(value);
        QStringList expected;
        for (QLineEdit *field : fields)
            expected << (field == typed.PasswordEdt ? field->text() : field->text().trimmed());

        const auto fieldsAfter = [&](const QString &connectionString) {
            DataLinkDialog read;
            read.setFreeOnClose(false);
            read.setConnectionString(connectionString);
            return QStringList{read.DataSourceEdt->text(), read.InitialCatalogEdt->text(), read.UserIdEdt->text(),
                               read.PasswordEdt->text(), read.ExtendedPropertiesEdt->text()};
        };
        QCOMPARE(fieldsAfter(typed.connectionString()), expected);

        const QString file = QDir(DataLinkFile::folder()).filePath("Hostile.udl");
        typed.saveDataLink(file);
        if (!log.errors.isEmpty()) {
            QVERIFY2(!QFile::exists(file), "a refused data link must not be written");
            return;
        }
        QCOMPARE(fieldsAfter(DataLinkFile::read(file)), expected);
    }

    // The ODBC keyword form puts what a user types into the string so that the form reads it
    // back unchanged: separators and braces inside values are quoted, not taken as the string's.
    void hostileValuesRoundTripThroughTheOdbcKeywordForm_data() { addHostileValueRows(); }
    void hostileValuesRoundTripThroughTheOdbcKeywordForm()
    {
        QFETCH(QString, value);
        if (value.isEmpty())
            return; // an empty box leaves its keyword out, and the form shows the default again
        const QString driver = QStringLiteral("PostgreSQL Unicode");
        const OdbcConnectionBuilder::DriverKeywords keywords{OdbcKeywords::commonKeywords(driver), {}, {}};
        const QStringList names = {"Server", "Database", "UID", "PWD"};
        OdbcKeywordForm typed(driver, keywords, QString());
        typed.setFreeOnClose(false);
        for (const QString &name : names)
            typed.setValue(name, value);
        OdbcKeywordForm read(driver, keywords, typed.connectionString());
        read.setFreeOnClose(false);
        for (const QString &name : names) {
            const auto *before = qobject_cast<QLineEdit *>(typed.editorOf(name));
            const auto *after = qobject_cast<QLineEdit *>(read.editorOf(name));
            QVERIFY2(before && after, qPrintable(name));
            QCOMPARE(after->text(), before->text());
        }
    }

    void odbcBuilderWindowAndCancel()
    {
        bool listedOrSaidWhy = false;
        QString memoAtStart;
        whenModal<TODBCDlgFrm>([&](TODBCDlgFrm &dlg) {
            listedOrSaidWhy = QTest::qWaitFor([&] { return dlg.DriversLb->count() > 0 || dlg.ErrorLbl->isVisible(); });
            memoAtStart = dlg.ConnectionMemo->toPlainText();
            dlg.ConnectionMemo->setPlainText("edited, then cancelled");
            shoot(dlg, "ODBCDlgFrm.png");
            QTest::mouseClick(dlg.cancelButton(), Qt::LeftButton);
        });
        QCOMPARE(TODBCDlgFrm::Execute("DSN=Sales"), QStringLiteral("DSN=Sales"));
        QVERIFY(listedOrSaidWhy);
        QCOMPARE(memoAtStart, QStringLiteral("DSN=Sales"));

        whenModal<TODBCDlgFrm>([](TODBCDlgFrm &dlg) {
            dlg.ConnectionMemo->setPlainText("DSN=Edited");
            QTest::mouseClick(dlg.okButton(), Qt::LeftButton);
        });
        QCOMPARE(TODBCDlgFrm::Execute("DSN=Sales"), QStringLiteral("DSN=Edited"));
    }

    void keywordFormWantsAFileBeforeAskingTheDriver()
    {
        // Without a file the SQLite3 driver would make one named after the whole string.
        MessageLog log;
        const QDir before(QDir::currentPath());
        const QStringList filesBefore = before.entryList(QDir::Files);
        OdbcKeywordForm form("SQLite3", {OdbcKeywords::commonKeywords("SQLite3"), {}, {}}, "DSN=Other");
        form.setFreeOnClose(false);
        form.show();
        QVERIFY(QTest::qWaitForWindowActive(&form));
        QTest::mouseClick(form.okButton(), Qt::LeftButton);
        QCOMPARE(log.errors, QStringList({"\"Database file\" is empty: choose the file the driver is to open."}));
        QVERIFY(form.isVisible());
        QVERIFY(form.completedString().isEmpty());
        QCOMPARE(before.entryList(QDir::Files), filesBefore);
        shoot(form, "OdbcKeywordForm-SQLite3.png");
    }

    void connectionDialogKeepsTheStringWhenABuilderIsCancelled()
    {
        GuiFixture fx;
        TDBConnectionDlgFrm dlg(fx.services());
        dlg.setFreeOnClose(false);
        TReaderConnection rc;
        rc.ConnectionType = dsOleDb;
        rc.Server = "Provider=SQLOLEDB.1;Data Source=s";
        dlg.SetConnectionParams(rc);
        dlg.show();
        whenModal<TConnEditForm>([](TConnEditForm &form) {
            form.ConnectionString->setText("something else");
            QTest::mouseClick(form.cancelButton(), Qt::LeftButton);
        });
        QTest::mouseClick(dlg.tbBuildConnectionString, Qt::LeftButton);
        QCOMPARE(dlg.mOleDbConnection->toPlainText(), rc.Server);

        whenModal<TConnEditForm>([](TConnEditForm &form) {
            form.ConnectionString->setText("Provider=SQLOLEDB.1;Data Source=t");
            QTest::mouseClick(form.okButton(), Qt::LeftButton);
        });
        QTest::mouseClick(dlg.tbBuildConnectionString, Qt::LeftButton);
        QCOMPARE(dlg.mOleDbConnection->toPlainText(), QStringLiteral("Provider=SQLOLEDB.1;Data Source=t"));

        chooseType(dlg, 2); // ODBC
        dlg.cbServer->setEditText("VantrySales");
        whenModal<TODBCDlgFrm>([](TODBCDlgFrm &builder) {
            builder.ConnectionMemo->setPlainText("DRIVER={Nothing};X=1");
            QTest::mouseClick(builder.cancelButton(), Qt::LeftButton);
        });
        QTest::mouseClick(dlg.tbBuildConnectionString, Qt::LeftButton);
        QCOMPARE(dlg.cbServer->currentText(), QStringLiteral("VantrySales"));
        QCOMPARE(dlg.connectionParams().Server, QStringLiteral("VantrySales"));
    }

private:
    std::unique_ptr<TempHome> m_home;
};

QTEST_MAIN(tst_ConnectionStringEditors)
#include "tst_ConnectionStringEditors.moc"
