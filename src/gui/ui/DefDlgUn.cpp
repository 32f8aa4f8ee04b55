#include "ui/DefDlgUn.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPushButton>
#include <QVBoxLayout>

TDefDlgFrm::TDefDlgFrm(QWidget *parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("DefDlgFrm"));
    setAttribute(Qt::WA_DeleteOnClose);
    setSizeGripEnabled(false);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);

    m_page = new QWidget(this);
    m_page->setObjectName(QStringLiteral("TabSheet1"));
    layout->addWidget(m_page, 1);

    Panel1 = new QWidget(this);
    Panel1->setObjectName(QStringLiteral("Panel1"));
    Panel1->setFixedHeight(41);
    auto *bottom = new QHBoxLayout(Panel1);
    bottom->setContentsMargins(8, 4, 8, 4);
    m_leftArea = new QWidget(Panel1);
    m_leftArea->setObjectName(QStringLiteral("Panel2"));
    auto *left = new QHBoxLayout(m_leftArea);
    left->setContentsMargins(0, 0, 0, 0);
    bottom->addWidget(m_leftArea);
    bottom->addStretch();
    auto *right = new QWidget(Panel1);
    right->setObjectName(QStringLiteral("Panel3"));
    auto *rightLayout = new QHBoxLayout(right);
    rightLayout->setContentsMargins(0, 0, 0, 0);
    OKBtn = new QPushButton(QStringLiteral("OK"), right);
    OKBtn->setObjectName(QStringLiteral("OKBtn"));
    OKBtn->setAutoDefault(false);
    CancelBtn = new QPushButton(QStringLiteral("Cancel"), right);
    CancelBtn->setObjectName(QStringLiteral("CancelBtn"));
    CancelBtn->setAutoDefault(false);
    rightLayout->addWidget(OKBtn);
    rightLayout->addWidget(CancelBtn);
    bottom->addWidget(right);
    layout->addWidget(Panel1);

    connect(OKBtn, &QPushButton::clicked, this, [this] {
        m_pendingResult = QDialog::Accepted;
        OKBtnClick();
        if (m_pendingResult == QDialog::Accepted)
            done(QDialog::Accepted);
    });
    connect(CancelBtn, &QPushButton::clicked, this, [this] {
        m_pendingResult = QDialog::Rejected;
        CancelBtnClick();
        done(QDialog::Rejected);
    });
}

void TDefDlgFrm::setFreeOnClose(bool on) { setAttribute(Qt::WA_DeleteOnClose, on); }

void TDefDlgFrm::OKBtnClick() { m_closedByButton = true; }

void TDefDlgFrm::CancelBtnClick() { m_closedByButton = true; }

void TDefDlgFrm::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        OKBtnClick();
        if (m_pendingResult == QDialog::Accepted)
            done(QDialog::Accepted);
        return;
    }
    QDialog::keyPressEvent(event);  // Esc cancels
}

void TDefDlgFrm::FormClose()
{
    if (!m_closedByButton)
        CancelBtnClick();
}

void TDefDlgFrm::done(int result)
{
    if (m_closing)
        return;
    m_closing = true;
    FormClose();
    QDialog::done(result);
    m_closing = false;
}

void TDefDlgFrm::closeEvent(QCloseEvent *event)
{
    // The title bar's close button: the same path as Esc.
    event->ignore();
    done(QDialog::Rejected);
}
