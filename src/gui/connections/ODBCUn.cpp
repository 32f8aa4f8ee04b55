#include "gui/connections/ODBCUn.h"

#include "core/connections/DataLinkFile.h"
#include "gui/app/UserMessages.h"
#include "gui/connections/DataLinkDialog.h"

#include <QComboBox>
#include <QFileDialog>
#include <QGridLayout>
#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace {

template <typename W>
W *named(W *widget, const char *name)
{
    widget->setObjectName(QString::fromLatin1(name));
    return widget;
}

// A box that can't be used shows the face colour of buttons; one that can, the window colour.
void paintBox(QWidget *box, bool enabled)
{
    // The colours come from the group around the box: the box's own palette holds the last paint.
    const QPalette &around = box->parentWidget()->palette();
    const QColor colour = enabled ? around.color(QPalette::Active, QPalette::Base)
                                  : around.color(QPalette::Disabled, QPalette::Button);
    QPalette palette = box->palette();
    palette.setColor(QPalette::Base, colour);
    // The style paints an editable drop-down box in the button colour, edit field included.
    if (qobject_cast<QComboBox *>(box))
        palette.setColor(QPalette::Button, colour);
    box->setPalette(palette);
    box->setEnabled(enabled);
}

} // namespace

TConnEditForm::TConnEditForm(QWidget *parent)
    : TDefDlgFrm(parent)
{
    setObjectName(QStringLiteral("ConnEditForm"));
    imageSquare()->parentWidget()->hide();

    auto *page = new QVBoxLayout(TabSheet1());
    SourceGroup = named(new QGroupBox(QStringLiteral(" Source of Connection "), TabSheet1()), "SourceGroup");
    page->addWidget(SourceGroup);
    page->addStretch();

    auto *grid = new QGridLayout(SourceGroup);
    DataLinkButton = named(new QRadioButton(QStringLiteral("Use Data &Link File"), SourceGroup), "DataLinkButton");
    DataLinkFile = named(new QComboBox(SourceGroup), "DataLinkFile");
    DataLinkFile->setEditable(true);
    DataLinkFile->setInsertPolicy(QComboBox::NoInsert);
    Browse = named(new QPushButton(QStringLiteral("&Browse..."), SourceGroup), "Browse");
    ConnectionStringButton =
        named(new QRadioButton(QStringLiteral("Use &Connection String"), SourceGroup), "ConnectionStringButton");
    ConnectionString = named(new QLineEdit(SourceGroup), "ConnectionString");
    Build = named(new QPushButton(QStringLiteral("B&uild..."), SourceGroup), "Build");
    grid->addWidget(DataLinkButton, 0, 0, 1, 2);
    grid->addWidget(DataLinkFile, 1, 0);
    grid->addWidget(Browse, 1, 1);
    grid->addWidget(ConnectionStringButton, 2, 0, 1, 2);
    grid->addWidget(ConnectionString, 3, 0);
    grid->addWidget(Build, 3, 1);
    grid->setColumnStretch(0, 1);
    grid->setColumnMinimumWidth(0, 380);

    HelpButton = named(new QPushButton(QStringLiteral("&Help"), leftButtonArea()), "HelpButton");
    HelpButton->setAutoDefault(false);
    leftButtonArea()->layout()->addWidget(HelpButton);
    for (QPushButton *b : {Browse, Build})
        b->setAutoDefault(false);

    connect(DataLinkButton, &QRadioButton::clicked, this, &TConnEditForm::SourceButtonClick);
    connect(ConnectionStringButton, &QRadioButton::clicked, this, &TConnEditForm::SourceButtonClick);
    connect(Browse, &QPushButton::clicked, this, &TConnEditForm::BrowseClick);
    connect(Build, &QPushButton::clicked, this, &TConnEditForm::BuildClick);
    connect(HelpButton, &QPushButton::clicked, this, &TConnEditForm::HelpButtonClick);

    refreshDataLinkFiles();
    ConnectionStringButton->setChecked(true);
    SourceButtonClick();
    resize(sizeHint().width(), sizeHint().height());
}

void TConnEditForm::refreshDataLinkFiles()
{
    const QString text = DataLinkFile->currentText();
    DataLinkFile->clear();
    DataLinkFile->addItems(::DataLinkFile::fileNames());
    DataLinkFile->setEditText(text);
}

void TConnEditForm::setDataLinkText(const QString &fileName) { DataLinkFile->setEditText(fileName); }

void TConnEditForm::Edit(const QString &current)
{
    const ::DataLinkFile::EditorChoice choice = ::DataLinkFile::editorChoice(current);
    if (choice.useDataLink) {
        DataLinkButton->setChecked(true);
        setDataLinkText(choice.text);
    } else {
        ConnectionStringButton->setChecked(true);
        ConnectionString->setText(choice.text);
        ConnectionString->setCursorPosition(0); // a long string shows its provider first
    }
    SourceButtonClick();
}

QString TConnEditForm::result() const
{
    if (ConnectionStringButton->isChecked())
        return ConnectionString->text();
    return ::DataLinkFile::fileNameString(DataLinkFile->currentText().trimmed());
}

void TConnEditForm::SourceButtonClick()
{
    const bool dataLink = DataLinkButton->isChecked();
    paintBox(DataLinkFile, dataLink);
    Browse->setEnabled(dataLink);
    paintBox(ConnectionString, !dataLink);
    Build->setEnabled(!dataLink);
    if (dataLink)
        DataLinkFile->setFocus();
    else
        ConnectionString->setFocus();
}

void TConnEditForm::BrowseClick()
{
    const QString path = QFileDialog::getOpenFileName(this, QStringLiteral("Select Data Link File"), ::DataLinkFile::folder(),
                                                      QStringLiteral("Data Link Files (*.udl);;All files (*)"));
    if (path.isEmpty())
        return;
    // A file in the data link folder is shown by its name alone, as Edit shows it.
    setDataLinkText(::DataLinkFile::editorChoice(::DataLinkFile::fileNameString(path)).text);
}

void TConnEditForm::BuildClick()
{
    DataLinkDialog dialog(this);
    dialog.setFreeOnClose(false);
    dialog.setConnectionString(ConnectionString->text());
    connect(&dialog, &DataLinkDialog::dataLinkSaved, this, &TConnEditForm::refreshDataLinkFiles);
    if (dialog.exec() == QDialog::Accepted) {
        ConnectionString->setText(dialog.connectionString());
        ConnectionString->setCursorPosition(0);
    }
}

void TConnEditForm::HelpButtonClick()
{
    UserMessages::information(
        this, QStringLiteral("Use Data Link File: the connection string is kept in a data link file (.udl). The list "
                             "shows the files of the data link folder\n%1\n\"Browse...\" picks a file elsewhere.\n\n"
                             "Use Connection String: the string is written out. \"Build...\" makes it from a "
                             "provider and its properties, tests it and saves it as a data link file.")
                      .arg(::DataLinkFile::folder()));
}

bool EditConnectionString(OleDbConnection &connection, QWidget *parent)
{
    // Kept until its result has been read: a dialog that frees itself is gone when exec() returns.
    TConnEditForm form(parent);
    form.setFreeOnClose(false);
    form.setWindowTitle(connection.name + QStringLiteral(".ConnectionString"));
    form.Edit(connection.ConnectionString);
    if (form.exec() != QDialog::Accepted)
        return false;
    const QString edited = form.result();
    if (edited == connection.ConnectionString)
        return false;
    connection.ConnectionString = edited;
    return true;
}

void TConnEditForm::OKBtnClick()
{
    TDefDlgFrm::OKBtnClick();
    setPendingResult(QDialog::Accepted);
}
