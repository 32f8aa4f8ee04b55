#pragma once
// The data link dialog: an OLE DB connection string made from a provider and its properties
// (data source, initial catalog, user, password, extended properties). The providers are those
// the ADO path can open here. It tests the string through the ADO path and saves it as a data
// link file.

#include "core/connections/DataLinkProperties.h"
#include "gui/ui/DefDlgUn.h"

class QComboBox;
class QLineEdit;
class QPushButton;
class QToolButton;

class DataLinkDialog : public TDefDlgFrm
{
    Q_OBJECT
public:
    explicit DataLinkDialog(QWidget *parent = nullptr);

    // Shows the dialog on `current`; the new string after OK, `current` after Cancel.
    static QString Execute(const QString &current, QWidget *parent = nullptr);

    void setConnectionString(const QString &connectionString);
    QString connectionString() const;
    // Writes the string into a data link file (".udl" added when missing); errors are shown.
    void saveDataLink(QString path);

    QComboBox *ProviderCb;
    QLineEdit *DataSourceEdt;
    QToolButton *DataSourceBtn;   // picks the database file of a file provider
    QLineEdit *InitialCatalogEdt;
    QLineEdit *UserIdEdt;
    QLineEdit *PasswordEdt;
    QLineEdit *ExtendedPropertiesEdt;
    QToolButton *ExtendedPropertiesBtn; // the ODBC connection builder, for the ODBC provider
    QPushButton *TestConnectionBtn;
    QPushButton *SaveAsBtn;

signals:
    // A data link file was written.
    void dataLinkSaved(const QString &path);

public slots:
    // Enter confirms the dialog as the OK button does.
    void OKBtnClick() override;
    void ProviderCbChange();
    void DataSourceBtnClick();
    void ExtendedPropertiesBtnClick();
    void TestConnectionBtnClick();
    void SaveAsBtnClick();

private:
    QVector<AdoToOdbc::Pair> m_others; // pieces of the string without a box, kept
};
