#include "gui/components/QueryLinkDialog.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>

QueryLinkDialog::QueryLinkDialog(const Objects &objects, const QString &owner, const QString &column, QWidget *parent)
    : QDialog(parent), m_objects(objects)
{
    setObjectName(QStringLiteral("QueryLinkDialog"));
    setWindowTitle(QStringLiteral("Link Columns"));
    auto *form = new QFormLayout(this);
    const auto combo = [this](const char *name) {
        auto *c = new QComboBox(this);
        c->setObjectName(QString::fromLatin1(name));
        c->setMinimumContentsLength(16);
        return c;
    };
    m_leftObject = combo("cbLeftObject");
    m_leftColumn = combo("cbLeftColumn");
    m_rightObject = combo("cbRightObject");
    m_rightColumn = combo("cbRightColumn");
    for (const auto &o : objects) {
        m_leftObject->addItem(o.first);
        m_rightObject->addItem(o.first);
    }
    form->addRow(QStringLiteral("&Object:"), m_leftObject);
    form->addRow(QStringLiteral("&Column:"), m_leftColumn);
    form->addRow(QStringLiteral("Linked &to object:"), m_rightObject);
    form->addRow(QStringLiteral("Linked to co&lumn:"), m_rightColumn);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    m_ok = buttons->button(QDialogButtonBox::Ok);
    form->addRow(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_leftObject, &QComboBox::currentIndexChanged, this, [this] { fillColumns(m_leftObject, m_leftColumn); updateOk(); });
    connect(m_rightObject, &QComboBox::currentIndexChanged, this, [this] { fillColumns(m_rightObject, m_rightColumn); updateOk(); });

    m_leftObject->setCurrentIndex(qMax(0, m_leftObject->findText(owner, Qt::MatchFixedString)));
    fillColumns(m_leftObject, m_leftColumn);
    if (!column.isEmpty())
        m_leftColumn->setCurrentIndex(qMax(0, m_leftColumn->findText(column, Qt::MatchFixedString)));
    // The other side starts at the first other object.
    m_rightObject->setCurrentIndex(m_rightObject->count() > 1 && m_leftObject->currentIndex() == 0 ? 1 : 0);
    fillColumns(m_rightObject, m_rightColumn);
    updateOk();
    // The left side is usually given: start where the choice is.
    m_rightObject->setFocus();
}

void QueryLinkDialog::fillColumns(QComboBox *objects, QComboBox *columns)
{
    columns->clear();
    const int i = objects->currentIndex();
    if (i >= 0 && i < m_objects.size())
        columns->addItems(m_objects.at(i).second);
}

void QueryLinkDialog::updateOk()
{
    m_ok->setEnabled(m_leftObject->currentIndex() != m_rightObject->currentIndex() && m_leftColumn->count() > 0
                     && m_rightColumn->count() > 0);
}

QString QueryLinkDialog::leftOwner() const { return m_leftObject->currentText(); }
QString QueryLinkDialog::leftColumn() const { return m_leftColumn->currentText(); }
QString QueryLinkDialog::rightOwner() const { return m_rightObject->currentText(); }
QString QueryLinkDialog::rightColumn() const { return m_rightColumn->currentText(); }

bool QueryLinkDialog::setRight(const QString &owner, const QString &column)
{
    const int o = m_rightObject->findText(owner, Qt::MatchFixedString);
    if (o < 0)
        return false;
    m_rightObject->setCurrentIndex(o);
    const int c = m_rightColumn->findText(column, Qt::MatchFixedString);
    if (c < 0)
        return false;
    m_rightColumn->setCurrentIndex(c);
    return true;
}
