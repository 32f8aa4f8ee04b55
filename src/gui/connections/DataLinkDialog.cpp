#include "gui/connections/DataLinkDialog.h"

#include "core/base/VantryError.h"
#include "core/connections/AdoSession.h"
#include "core/connections/DataLinkFile.h"
#include "gui/app/UserMessages.h"
#include "gui/connections/BackgroundCall.h"
#include "gui/connections/ODBCDlgUn.h"

#include <QComboBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QToolButton>

namespace {

// A line edit with a "..." button beside it, as one row of the form.
QWidget *withButton(QLineEdit *edit, QToolButton *button, QWidget *parent)
{
    auto *row = new QWidget(parent);
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(edit, 1);
    layout->addWidget(button);
    return row;
}

QLineEdit *lineEdit(const char *name, QWidget *parent)
{
    auto *edit = new QLineEdit(parent);
    edit->setObjectName(QString::fromLatin1(name));
    return edit;
}

QToolButton *toolButton(const char *name, const QString &text, QWidget *parent)
{
    auto *button = new QToolButton(parent);
    button->setObjectName(QString::fromLatin1(name));
    button->setText(text);
    return button;
}

const DataLinkProvider *providerNamed(const QString &name)
{
    for (const DataLinkProvider &p : dataLinkProviders())
        if (p.name.compare(name, Qt::CaseInsensitive) == 0)
            return &p;
    return nullptr;
}

} // namespace

DataLinkDialog::DataLinkDialog(QWidget *parent)
    : TDefDlgFrm(parent)
{
    setObjectName(QStringLiteral("DataLinkDialog"));
    setWindowTitle(QStringLiteral("Data Link Properties"));
    imageSquare()->parentWidget()->hide();
    QWidget *page = TabSheet1();

    ProviderCb = new QComboBox(page);
    ProviderCb->setObjectName(QStringLiteral("ProviderCb"));
    for (const DataLinkProvider &p : dataLinkProviders())
        ProviderCb->addItem(p.description, p.name);
    DataSourceEdt = lineEdit("DataSourceEdt", page);
    DataSourceBtn = toolButton("DataSourceBtn", QStringLiteral("..."), page);
    InitialCatalogEdt = lineEdit("InitialCatalogEdt", page);
    UserIdEdt = lineEdit("UserIdEdt", page);
    PasswordEdt = lineEdit("PasswordEdt", page);
    PasswordEdt->setEchoMode(QLineEdit::Password);
    ExtendedPropertiesEdt = lineEdit("ExtendedPropertiesEdt", page);
    ExtendedPropertiesBtn = toolButton("ExtendedPropertiesBtn", QStringLiteral("ODBC..."), page);
    ExtendedPropertiesBtn->setToolTip(QStringLiteral("Build the ODBC connection string"));

    auto *form = new QFormLayout(page);
    form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    form->addRow(QStringLiteral("&Provider:"), ProviderCb);
    form->addRow(QStringLiteral("&Data source:"), withButton(DataSourceEdt, DataSourceBtn, page));
    form->addRow(QStringLiteral("&Initial catalog:"), InitialCatalogEdt);
    form->addRow(QStringLiteral("&User name:"), UserIdEdt);
    form->addRow(QStringLiteral("Pass&word:"), PasswordEdt);
    form->addRow(QStringLiteral("&Extended properties:"), withButton(ExtendedPropertiesEdt, ExtendedPropertiesBtn, page));

    TestConnectionBtn = new QPushButton(QStringLiteral("&Test Connection"), leftButtonArea());
    TestConnectionBtn->setObjectName(QStringLiteral("TestConnectionBtn"));
    SaveAsBtn = new QPushButton(QStringLiteral("&Save As..."), leftButtonArea());
    SaveAsBtn->setObjectName(QStringLiteral("SaveAsBtn"));
    SaveAsBtn->setToolTip(QStringLiteral("Save the connection string as a data link file"));
    for (QPushButton *b : {TestConnectionBtn, SaveAsBtn}) {
        b->setAutoDefault(false);
        leftButtonArea()->layout()->addWidget(b);
    }

    connect(ProviderCb, qOverload<int>(&QComboBox::currentIndexChanged), this, &DataLinkDialog::ProviderCbChange);
    connect(DataSourceBtn, &QToolButton::clicked, this, &DataLinkDialog::DataSourceBtnClick);
    connect(ExtendedPropertiesBtn, &QToolButton::clicked, this, &DataLinkDialog::ExtendedPropertiesBtnClick);
    connect(TestConnectionBtn, &QPushButton::clicked, this, &DataLinkDialog::TestConnectionBtnClick);
    connect(SaveAsBtn, &QPushButton::clicked, this, &DataLinkDialog::SaveAsBtnClick);

    ProviderCbChange();
    setSizeable(true);
    resize(560, sizeHint().height());
}

QString DataLinkDialog::Execute(const QString &current, QWidget *parent)
{
    DataLinkDialog dialog(parent);
    dialog.setFreeOnClose(false);
    dialog.setConnectionString(current);
    return dialog.exec() == QDialog::Accepted ? dialog.connectionString() : current;
}

void DataLinkDialog::setConnectionString(const QString &connectionString)
{
    const DataLinkProperties p = DataLinkProperties::fromConnectionString(connectionString);
    // A provider the list lacks is shown as it stands, so that OK doesn't change it unasked.
    const DataLinkProvider *known = providerNamed(p.provider);
    int index = known ? ProviderCb->findData(known->name) : -1;
    if (!known && !p.provider.isEmpty()) {
        ProviderCb->addItem(p.provider, p.provider);
        index = ProviderCb->count() - 1;
    }
    ProviderCb->setCurrentIndex(qMax(index, 0));
    DataSourceEdt->setText(p.dataSource);
    InitialCatalogEdt->setText(p.initialCatalog);
    UserIdEdt->setText(p.userId);
    PasswordEdt->setText(p.password);
    ExtendedPropertiesEdt->setText(p.extendedProperties);
    m_others = p.others;
}

QString DataLinkDialog::connectionString() const
{
    DataLinkProperties p;
    p.provider = ProviderCb->currentData().toString();
    p.dataSource = DataSourceEdt->text().trimmed();
    p.initialCatalog = InitialCatalogEdt->text().trimmed();
    p.userId = UserIdEdt->text().trimmed();
    p.password = PasswordEdt->text();
    p.extendedProperties = ExtendedPropertiesEdt->text().trimmed();
    p.others = m_others;
    return p.connectionString();
}

void DataLinkDialog::ProviderCbChange()
{
    const DataLinkProvider *p = providerNamed(ProviderCb->currentData().toString());
    DataSourceBtn->setEnabled(p && p->fileSource);
    ExtendedPropertiesBtn->setEnabled(p && p->name.startsWith(QLatin1String("MSDASQL")));
}

void DataLinkDialog::DataSourceBtnClick()
{
    const QString file = QFileDialog::getOpenFileName(this, QStringLiteral("Select Access Database"), DataSourceEdt->text(),
                                                      QStringLiteral("Access Databases (*.mdb *.accdb);;All files (*)"));
    if (!file.isEmpty())
        DataSourceEdt->setText(file);
}

void DataLinkDialog::ExtendedPropertiesBtnClick()
{
    ExtendedPropertiesEdt->setText(TODBCDlgFrm::Execute(ExtendedPropertiesEdt->text(), this));
}

void DataLinkDialog::TestConnectionBtnClick()
{
    const QString text = connectionString();
    try {
        // The session lives and dies on the worker thread: Qt SQL connections belong to theirs.
        if (BackgroundCall::run(this, QStringLiteral("Testing the connection..."), [text] {
                AdoSession session;
                session.openConnectionString(text, 20);
            }))
            UserMessages::information(this, QStringLiteral("Connected!"));
    } catch (const VantryError &e) {
        UserMessages::error(this, e.message());
    }
}

void DataLinkDialog::SaveAsBtnClick()
{
    const QString path = QFileDialog::getSaveFileName(this, QStringLiteral("Save Data Link File"), DataLinkFile::folder(),
                                                QStringLiteral("Data Link Files (*.udl)"));
    if (path.isEmpty())
        return;
    saveDataLink(path);
}

void DataLinkDialog::saveDataLink(QString path)
{
    if (!path.endsWith(QLatin1String(".udl"), Qt::CaseInsensitive))
        path += QLatin1String(".udl");
    try {
        DataLinkFile::write(path, connectionString());
        emit dataLinkSaved(path);
    } catch (const VantryError &e) {
        UserMessages::error(this, e.message());
    }
}

void DataLinkDialog::OKBtnClick()
{
    TDefDlgFrm::OKBtnClick();
    setPendingResult(QDialog::Accepted);
}
