#pragma once
// The OLE DB connection-string editor: a connection string either kept in a data link file
// ("FILE NAME=<file>") or written out, built with the data link dialog.

#include "gui/ui/DefDlgUn.h"

class QComboBox;
class QGroupBox;
class QLineEdit;
class QPushButton;
class QRadioButton;

// The OLE DB connection object the editor works on: its name (the editor's caption names it) and
// its connection string.
struct OleDbConnection
{
    QString name;
    QString ConnectionString;
};

class TConnEditForm : public TDefDlgFrm
{
    Q_OBJECT
public:
    explicit TConnEditForm(QWidget *parent = nullptr);

    // Shows `current`: a "FILE NAME=" string as the data link choice, anything else as the
    // connection string choice.
    void Edit(const QString &current);
    // The string the checked choice makes (what OK hands back).
    QString result() const;
    // The data link files offered, refreshed from the data link folder.
    void refreshDataLinkFiles();

    QGroupBox *SourceGroup;
    QRadioButton *DataLinkButton;
    QComboBox *DataLinkFile;
    QPushButton *Browse;
    QRadioButton *ConnectionStringButton;
    QLineEdit *ConnectionString;
    QPushButton *Build;
    QPushButton *HelpButton;

public slots:
    // Enter confirms the dialog as the OK button does.
    void OKBtnClick() override;
    void SourceButtonClick();
    void BrowseClick();
    void BuildClick();
    void HelpButtonClick();

private:
    void setDataLinkText(const QString &fileName);
};

// Edits the object's connection string in TConnEditForm; writes it back only when it changed,
// and says whether it did. Cancel changes nothing.
bool EditConnectionString(OleDbConnection &connection, QWidget *parent = nullptr);
