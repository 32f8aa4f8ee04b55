#include "gui/ui/DefPreviewFrmUn.h"

#include <QAction>
#include <QLabel>
#include <QMenu>
#include <QPrintPreviewWidget>
#include <QStatusBar>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

TDefPreviewFrm::TDefPreviewFrm(QPrinter *printer, QWidget *parent) : QDialog(parent), m_printer(printer)
{
    setWindowTitle(QStringLiteral("Print Preview"));
    setWindowFlags(windowFlags() | Qt::WindowMinMaxButtonsHint);
    resize(900, 700);

    tbMap = new QToolBar(this);
    tbMap->setObjectName(QStringLiteral("tbMap"));
    tbMap->setToolButtonStyle(Qt::ToolButtonTextOnly);
    auto add = [this](const char *name, const QString &caption, const QString &hint) {
        auto *b = new QToolButton(tbMap);
        b->setObjectName(QString::fromLatin1(name));
        b->setText(caption);
        b->setToolTip(hint);
        b->setAutoRaise(true);
        tbMap->addWidget(b);
        return b;
    };
    add("tbPrint", QStringLiteral("Print"), QStringLiteral("Print"));
    QToolButton *scale = add("tbScale", QStringLiteral("Scale"), QStringLiteral("Scale"));
    tbMap->addSeparator();
    add("tbPrinterSetupDialog", QStringLiteral("Setup"), QStringLiteral("Printer setup"));
    add("tbPrevPage", QStringLiteral("\u25c0"), QStringLiteral("Previous page"));
    add("tbNextPage", QStringLiteral("\u25b6"), QStringLiteral("Next page"));
    add("tbStop", QStringLiteral("Stop"), QStringLiteral("Stop"));
    QToolButton *close = add("tbClose", QStringLiteral("Close"), QStringLiteral("Close preview"));

    pmnScale = new QMenu(this);
    pmnScale->setObjectName(QStringLiteral("pmnScale"));
    for (int percent : {500, 200, 150, 100, 75, 50, 25, 10}) {
        QAction *item = pmnScale->addAction(QStringLiteral("%1%").arg(percent));
        item->setObjectName(QStringLiteral("mni%1").arg(percent));
        item->setData(percent);
        m_scaleItems << item;
    }
    pmnScale->addSeparator()->setObjectName(QStringLiteral("N2"));
    for (auto [name, caption, tag] : {std::tuple{"mniWidth", "Page Width", 8}, {"mniFull", "Whole Page", 9}}) {
        QAction *item = pmnScale->addAction(QString::fromLatin1(caption));
        item->setObjectName(QString::fromLatin1(name));
        item->setData(tag);
        m_scaleItems << item;
    }

    m_preview = new QPrintPreviewWidget(printer, this);
    auto *sp = new QStatusBar(this);
    sp->setObjectName(QStringLiteral("sp"));
    sp->setSizeGripEnabled(false);
    m_pageInfo = new QLabel(sp);
    m_pageInfo->setObjectName(QStringLiteral("spPage"));
    sp->addWidget(m_pageInfo, 1);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(tbMap);
    layout->addWidget(m_preview, 1);
    layout->addWidget(sp);

    connect(scale, &QToolButton::clicked, this, &TDefPreviewFrm::tbScaleClick);
    connect(close, &QToolButton::clicked, this, &TDefPreviewFrm::tbCloseClick);
}

QToolButton *TDefPreviewFrm::button(const char *name) const
{
    return tbMap->findChild<QToolButton *>(QString::fromLatin1(name));
}

void TDefPreviewFrm::tbScaleClick()
{
    QToolButton *scale = button("tbScale");
    pmnScale->popup(scale->mapToGlobal(QPoint(0, scale->height())));
}

void TDefPreviewFrm::tbCloseClick()
{
    close();
}

QString TDefPreviewFrm::pageInfo() const
{
    return m_pageInfo->text();
}

void TDefPreviewFrm::setPageInfo(const QString &text)
{
    m_pageInfo->setText(text);
}
