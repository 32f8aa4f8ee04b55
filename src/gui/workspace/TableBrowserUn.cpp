#include "gui/workspace/TableBrowserUn.h"

#include "gui/workspace/SqlUn.h"

#include <QLayout>
#include <QPushButton>
#include <QVBoxLayout>

TTableBrowserFrm::TTableBrowserFrm(const AppServices &services, QWidget *parent)
    : TDefDlgFrm(parent)
{
    setObjectName(QStringLiteral("TableBrowserFrm"));
    setWindowTitle(QStringLiteral("Table Browser"));
    setSizeable(true);
    setWindowFlag(Qt::WindowMaximizeButtonHint);
    // The status texts of the embedded frame go to the main window behind the browser.
    QObject *statusTarget = parent ? parent->window() : nullptr;
    m_sql = new TSqlFrm(services, statusTarget, TabSheet1());
    m_sql->setObjectName(QStringLiteral("sql"));
    auto *layout = new QVBoxLayout(TabSheet1());
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_sql);
    okButton()->hide();
    cancelButton()->setText(QStringLiteral("Close"));
    resize(965, 707 + buttonPanel()->height());
}

void TTableBrowserFrm::setConnection(const TReaderConnection &record, const QStringList &tables)
{
    m_sql->setFixedConnection(record);
    m_sql->setTableNames(tables);
}

void TTableBrowserFrm::showEvent(QShowEvent *event)
{
    TDefDlgFrm::showEvent(event);
    if (m_restore) {
        m_restore = false;
        m_sql->restoreSettings();
    }
}

void TTableBrowserFrm::done(int result)
{
    TDefDlgFrm::done(result);
    m_sql->saveSettings();
}

void TTableBrowserFrm::browse(const AppServices &services, const TReaderConnection &record, const QStringList &tables,
                              QWidget *parent)
{
    auto *browser = new TTableBrowserFrm(services, parent);
    browser->setConnection(record, tables);
    browser->exec();
}
