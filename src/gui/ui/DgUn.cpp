#include "gui/ui/DgUn.h"

#include "core/base/SettingsStore.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

namespace {

const QString kPlacementPath = QStringLiteral("DlgFrm\\");

} // namespace

TDlgFrm::TDlgFrm(SettingsStore *placement, QWidget *parent) : QDialog(parent), m_placement(placement)
{
    setObjectName(QStringLiteral("DlgFrm"));
    setAttribute(Qt::WA_DeleteOnClose);
    setSizeGripEnabled(false);
    auto *layout = new QVBoxLayout(this);
    layout->setSizeConstraint(QLayout::SetFixedSize);  // a fixed dialog border
    layout->setContentsMargins(0, 0, 0, 0);
    m_content = new QWidget(this);
    m_content->setObjectName(QStringLiteral("Panel2"));
    layout->addWidget(m_content, 1);
    auto *bottom = new QWidget(this);
    bottom->setObjectName(QStringLiteral("Panel1"));
    auto *buttons = new QHBoxLayout(bottom);
    buttons->addStretch();
    OKBtn = new QPushButton(QStringLiteral("OK"), bottom);
    OKBtn->setObjectName(QStringLiteral("OKBtn"));
    CancelBtn = new QPushButton(QStringLiteral("Cancel"), bottom);
    CancelBtn->setObjectName(QStringLiteral("CancelBtn"));
    for (QPushButton *b : {OKBtn, CancelBtn}) {
        b->setAutoDefault(false);
        buttons->addWidget(b);
    }
    layout->addWidget(bottom);
    connect(OKBtn, &QPushButton::clicked, this, [this] {
        if (m_onOk)
            m_onOk();
        done(QDialog::Accepted);
    });
    connect(CancelBtn, &QPushButton::clicked, this, &QDialog::reject);
}

QString TDlgFrm::placementKey(const char *what) const
{
    return objectName() + QLatin1Char('.') + QLatin1String(what);
}

void TDlgFrm::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        if (m_onOk)
            OKBtn->click();
        else
            done(QDialog::Accepted);
        return;
    }
    QDialog::keyPressEvent(event);  // Esc cancels
}

void TDlgFrm::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    const QRect screen = (parentWidget() ? parentWidget()->screen() : QGuiApplication::primaryScreen())->availableGeometry();
    QPoint at = screen.center() - rect().center();
    if (m_placement && m_placement->contains(kPlacementPath, placementKey("Left"))) {
        const QPoint stored(m_placement->readInt(kPlacementPath, placementKey("Left"), at.x()),
                            m_placement->readInt(kPlacementPath, placementKey("Top"), at.y()));
        // A position from a screen that is no longer there falls back to the centre.
        if (screen.contains(stored))
            at = stored;
    }
    move(at);
}

void TDlgFrm::done(int result)
{
    if (m_placement && isVisible()) {
        m_placement->writeInt(kPlacementPath, placementKey("Left"), pos().x());
        m_placement->writeInt(kPlacementPath, placementKey("Top"), pos().y());
    }
    QDialog::done(result);
}
