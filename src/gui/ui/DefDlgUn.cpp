#include "gui/ui/DefDlgUn.h"

#include "core/base/SettingsStore.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QTabBar>
#include <QTabWidget>
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

    setPlacementPath(QStringLiteral("DefDlgFrm\\"));

    // One page whose tab never shows: the page control only frames the content.
    pc = new QTabWidget(this);
    pc->setObjectName(QStringLiteral("pc"));
    pc->setDocumentMode(true);
    pc->tabBar()->hide();
    m_page = new QWidget(pc);
    m_page->setObjectName(QStringLiteral("TabSheet1"));
    pc->addTab(m_page, QString());
    layout->addWidget(pc, 1);

    // The decorative image square in its panel. Descendants lay their content over it, or hide it.
    Panel6 = new QWidget(m_page);
    Panel6->setObjectName(QStringLiteral("Panel6"));
    Panel6->setGeometry(8, 8, 56, 56);
    auto *square = new QLabel(Panel6);
    square->setObjectName(QStringLiteral("JvImageSquare1"));
    square->setFrameShape(QFrame::Panel);
    square->setFrameShadow(QFrame::Raised);
    square->setAlignment(Qt::AlignCenter);
    square->setGeometry(0, 0, 56, 56);
    square->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxInformation).pixmap(32, 32));
    JvImageSquare1 = square;

    // The form's cancel button sits outside the page's visible area; Esc clicks it.
    ButtonCancel1 = new QPushButton(QStringLiteral("ButtonCancel1"), m_page);
    ButtonCancel1->setObjectName(QStringLiteral("ButtonCancel1"));
    ButtonCancel1->setAutoDefault(false);
    ButtonCancel1->setFocusPolicy(Qt::NoFocus);
    ButtonCancel1->setGeometry(-200, -200, 75, 25);
    connect(ButtonCancel1, &QPushButton::clicked, this, [this] {
        m_pendingResult = QDialog::Rejected;
        done(QDialog::Rejected);
    });

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

void TDefDlgFrm::setSizeable(bool on)
{
    m_sizeable = on;
    setSizeGripEnabled(on);
    if (on) {
        setMinimumSize(0, 0);
        setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
    }
}

void TDefDlgFrm::showEvent(QShowEvent *event)
{
    if (!m_placed) {
        m_placed = true;
        restorePlacement();
        if (!m_sizeable)
            setFixedSize(size());
    }
    QDialog::showEvent(event);
}

void TDefDlgFrm::restorePlacement()
{
    if (!m_store)
        return;
    const QByteArray geometry =
        QByteArray::fromBase64(m_store->readString(m_placementPath, QStringLiteral("Geometry")).toLatin1());
    if (geometry.isEmpty())
        return;
    const QSize designed = size();
    restoreGeometry(geometry);
    if (!m_sizeable)
        resize(designed); // a fixed border keeps its designed size; only the position comes back
}

void TDefDlgFrm::savePlacement()
{
    if (m_store)
        m_store->writeString(m_placementPath, QStringLiteral("Geometry"), QString::fromLatin1(saveGeometry().toBase64()));
}

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
    if (event->key() == Qt::Key_Escape) {
        ButtonCancel1->click();
        return;
    }
    QDialog::keyPressEvent(event);
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
    savePlacement();
    QDialog::done(result);
    m_closing = false;
}

void TDefDlgFrm::closeEvent(QCloseEvent *event)
{
    // The title bar's close button: the same path as Esc.
    event->ignore();
    done(QDialog::Rejected);
}
