#include "gui/app/About.h"

#include "VersionInfo.h"

#include <QApplication>
#include <QDesktopServices>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QStyle>
#include <QUrl>
#include <QVBoxLayout>

namespace {

QLabel *linkLabel(const QString &name, const QString &text, const QString &url, QWidget *parent)
{
    auto *label = new QLabel(QStringLiteral("<a href=\"%1\">%2</a>").arg(url, text), parent);
    label->setObjectName(name);
    label->setAlignment(Qt::AlignCenter);
    label->setCursor(Qt::PointingHandCursor);
    QObject::connect(label, &QLabel::linkActivated, [](const QString &link) { QDesktopServices::openUrl(QUrl(link)); });
    return label;
}

} // namespace

QString TAboutFrm::homePageUrl() { return QStringLiteral("https://vantry.dev/"); }
QString TAboutFrm::supportUrl() { return QStringLiteral("https://vantry.dev/support/"); }
QString TAboutFrm::supportMailUrl() { return QStringLiteral("mailto:support@vantry.dev"); }

TAboutFrm::TAboutFrm(QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint)
{
    setObjectName(QStringLiteral("AboutFrm"));
    setWindowTitle(QStringLiteral("About Box"));
    setFixedSize(396, 274);

    auto *frame = new QFrame(this);
    frame->setFrameShape(QFrame::Box);
    auto *outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->addWidget(frame);

    auto *layout = new QVBoxLayout(frame);
    auto *product = new QLabel(QStringLiteral(VANTRY_FILE_DESCRIPTION), frame);
    product->setObjectName(QStringLiteral("PrLbl"));
    product->setAlignment(Qt::AlignCenter);
    QFont big = product->font();
    big.setPointSize(big.pointSize() + 4);
    big.setBold(true);
    product->setFont(big);

    auto *picture = new QLabel(frame);
    picture->setObjectName(QStringLiteral("ProgramIcon"));
    picture->setAlignment(Qt::AlignCenter);
    picture->setPixmap(style()->standardIcon(QStyle::SP_DriveNetIcon).pixmap(48, 48));

    auto *version = new QLabel(QStringLiteral("Version: ") + QStringLiteral(VANTRY_FILE_VERSION), frame);
    version->setObjectName(QStringLiteral("VerLbl"));
    version->setAlignment(Qt::AlignCenter);

    auto *fixed = new QLabel(QStringLiteral("One fast, light tool for all your databases."), frame);
    fixed->setAlignment(Qt::AlignCenter);

    layout->addWidget(product);
    layout->addWidget(picture);
    layout->addWidget(version);
    layout->addWidget(fixed);
    layout->addWidget(linkLabel(QStringLiteral("ll"), homePageUrl(), homePageUrl(), frame));
    layout->addWidget(linkLabel(QStringLiteral("Label1"), QStringLiteral("support@vantry.dev"), supportMailUrl(), frame));
    layout->addStretch();

    auto *bottom = new QHBoxLayout;
    bottom->addStretch();
    auto *close = new QPushButton(QStringLiteral("Close"), frame);
    close->setObjectName(QStringLiteral("CloseBtn"));
    close->setDefault(true);
    connect(close, &QPushButton::clicked, this, &QDialog::accept);
    bottom->addWidget(close);
    bottom->addStretch();
    layout->addLayout(bottom);

    if (const QScreen *screen = QApplication::primaryScreen())
        move(screen->availableGeometry().center() - rect().center());
}
