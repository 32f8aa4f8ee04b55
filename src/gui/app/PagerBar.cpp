#include "gui/app/PagerBar.h"

#include <QHBoxLayout>
#include <QMenu>
#include <QTabBar>
#include <QToolButton>

#include <algorithm>

PagerBar::PagerBar(QTabWidget *pager, QWidget *parent)
    : QWidget(parent)
    , m_pager(pager)
{
    setObjectName(QStringLiteral("PCButtons"));
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);

    connect(addButton(QStringLiteral("PCInsertPage"), QStringLiteral("+"), QStringLiteral("Insert new page")),
            &QToolButton::clicked, this, &PagerBar::insertRequested);

    QToolButton *list = addButton(QStringLiteral("PCPageList"), QStringLiteral("\u2261"), QStringLiteral("Page List"));
    m_pageList = new QMenu(list);
    m_pageList->setObjectName(QStringLiteral("PCPageListMenu"));
    connect(m_pageList, &QMenu::aboutToShow, this, &PagerBar::fillPageList);
    list->setMenu(m_pageList);
    list->setPopupMode(QToolButton::InstantPopup);

    connect(addButton(QStringLiteral("PCPrevious"), QStringLiteral("\u2039"), QStringLiteral("Previous")),
            &QToolButton::clicked, this, [this] { step(-1); });
    connect(addButton(QStringLiteral("PCNext"), QStringLiteral("\u203A"), QStringLiteral("Next")),
            &QToolButton::clicked, this, [this] { step(1); });
    connect(addButton(QStringLiteral("PCFirst"), QStringLiteral("\u00AB"), QStringLiteral("First")),
            &QToolButton::clicked, this, [this] {
                if (m_pager->count() > 0)
                    m_pager->setCurrentIndex(0);
            });
    connect(addButton(QStringLiteral("PCLast"), QStringLiteral("\u00BB"), QStringLiteral("Last")),
            &QToolButton::clicked, this, [this] {
                if (m_pager->count() > 0)
                    m_pager->setCurrentIndex(m_pager->count() - 1);
            });

    QToolButton *closed = addButton(QStringLiteral("PCClosedPages"), QStringLiteral("\u21B6"), QStringLiteral("Closed Pages"));
    m_closedPages = new QMenu(closed);
    m_closedPages->setObjectName(QStringLiteral("PCClosedPagesMenu"));
    connect(m_closedPages, &QMenu::aboutToShow, this, &PagerBar::fillClosedPages);
    closed->setMenu(m_closedPages);
    closed->setPopupMode(QToolButton::InstantPopup);
}

QToolButton *PagerBar::addButton(const QString &name, const QString &text, const QString &hint)
{
    auto *button = new QToolButton(this);
    button->setObjectName(name);
    button->setText(text);
    button->setToolTip(hint);
    button->setAutoRaise(true);
    layout()->addWidget(button);
    return button;
}

void PagerBar::recordClosed(const QString &caption, const QString &text)
{
    m_closed.insert(m_closed.begin(), ClosedPage{caption, text});
    if (m_closed.size() > MaxClosedPages)
        m_closed.pop_back();
}

void PagerBar::step(int delta)
{
    const int count = m_pager->count();
    if (count == 0)
        return;
    m_pager->setCurrentIndex((m_pager->currentIndex() + delta + count) % count);
}

void PagerBar::fillPageList()
{
    m_pageList->clear();
    for (int i = 0; i < m_pager->count(); ++i) {
        QAction *item = m_pageList->addAction(m_pager->tabText(i), this, [this, i] {
            if (i < m_pager->count())
                m_pager->setCurrentIndex(i);
        });
        item->setCheckable(true);
        item->setChecked(i == m_pager->currentIndex());
    }
}

void PagerBar::fillClosedPages()
{
    m_closedPages->clear();
    for (int i = 0; i < closedCount(); ++i) {
        // The first line of the text tells tabs of the same caption apart.
        const QString firstLine = m_closed[i].text.section(QLatin1Char('\n'), 0, 0).trimmed().left(40);
        const QString label = firstLine.isEmpty() ? m_closed[i].caption
                                                  : m_closed[i].caption + QStringLiteral(": ") + firstLine;
        m_closedPages->addAction(label, this, [this, i] { reopen(i); });
    }
    if (m_closed.empty())
        m_closedPages->addAction(QStringLiteral("(none)"))->setEnabled(false);
}

void PagerBar::reopen(int index)
{
    if (index < 0 || index >= closedCount())
        return;
    const QString text = m_closed[index].text;
    m_closed.erase(m_closed.begin() + index);
    emit reopenRequested(text);
}

namespace {

class PagerTabBar : public QTabBar
{
public:
    using QTabBar::QTabBar;

    QSize sizeHint() const override
    {
        QSize size = QTabBar::sizeHint();
        if (const QWidget *corner = cornerOf())
            size.setHeight(std::max(size.height(), corner->sizeHint().height()));
        return size;
    }

private:
    const QWidget *cornerOf() const
    {
        auto *pager = qobject_cast<const QTabWidget *>(parentWidget());
        return pager ? pager->cornerWidget(Qt::TopRightCorner) : nullptr;
    }
};

} // namespace

PagerTabWidget::PagerTabWidget(QWidget *parent) : QTabWidget(parent)
{
    setTabBar(new PagerTabBar(this));
}
