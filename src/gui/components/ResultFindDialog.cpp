#include "gui/components/ResultFindDialog.h"

#include "gui/components/DBGridEh1.h"
#include "gui/components/ResultGridModel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

ResultFindDialog::ResultFindDialog(DBGridEh1 *grid, QWidget *parent) : QDialog(parent), m_grid(grid)
{
    setObjectName(QStringLiteral("ResultFindDialog"));
    setWindowTitle(QStringLiteral("Find"));
    m_text = new QLineEdit(this);
    m_text->setObjectName(QStringLiteral("edFindText"));
    m_column = new QComboBox(this);
    m_column->setObjectName(QStringLiteral("cbFindColumn"));
    m_matchCase = new QCheckBox(QStringLiteral("Match case"), this);
    m_matchCase->setObjectName(QStringLiteral("cbMatchCase"));
    m_wholeCell = new QCheckBox(QStringLiteral("Whole cell"), this);
    m_wholeCell->setObjectName(QStringLiteral("cbWholeCell"));
    m_backwards = new QCheckBox(QStringLiteral("Search backwards"), this);
    m_backwards->setObjectName(QStringLiteral("cbBackwards"));
    m_status = new QLabel(this);
    m_status->setObjectName(QStringLiteral("lbFindStatus"));

    auto *form = new QFormLayout;
    form->addRow(QStringLiteral("Text to find:"), m_text);
    form->addRow(QStringLiteral("In column:"), m_column);
    auto *buttons = new QDialogButtonBox(this);
    QPushButton *next = buttons->addButton(QStringLiteral("Find Next"), QDialogButtonBox::AcceptRole);
    next->setObjectName(QStringLiteral("btnFindNext"));
    next->setDefault(true);
    buttons->addButton(QDialogButtonBox::Close);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(m_matchCase);
    layout->addWidget(m_wholeCell);
    layout->addWidget(m_backwards);
    layout->addWidget(m_status);
    layout->addWidget(buttons);
    connect(next, &QPushButton::clicked, this, &ResultFindDialog::findNext);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::hide);
    setMinimumWidth(360);
}

void ResultFindDialog::prepare(int column)
{
    m_column->clear();
    m_column->addItem(QStringLiteral("(All columns)"), -1);
    ResultGridModel *model = m_grid->gridModel();
    for (int col = 0; col < model->columnCount(); ++col)
        m_column->addItem(model->table()->column(col).name(), col);
    m_column->setCurrentIndex(column + 1);
    m_status->clear();
    m_text->selectAll();
    m_text->setFocus();
}

bool ResultFindDialog::findNext()
{
    const bool found = m_grid->findNext(m_text->text(), m_column->currentData().toInt(), m_matchCase->isChecked(),
                                        m_wholeCell->isChecked(), m_backwards->isChecked());
    m_status->setText(found ? QString() : QStringLiteral("\"%1\" was not found.").arg(m_text->text()));
    return found;
}
