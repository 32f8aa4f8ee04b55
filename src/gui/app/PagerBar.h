#pragma once
#include <QString>
#include <QTabWidget>
#include <QWidget>

#include <vector>

class QMenu;
class QToolButton;

// The pager's buttons beside its tabs: insert a page, the list of open pages, next, previous,
// first, last, and the recently closed pages. They stay usable when no tab is left.
class PagerBar : public QWidget
{
    Q_OBJECT
public:
    static constexpr int MaxClosedPages = 10;

    PagerBar(QTabWidget *pager, QWidget *parent);

    // Remembers a closed tab, newest first, so "Closed Pages" can bring back its editor text.
    void recordClosed(const QString &caption, const QString &text);
    int closedCount() const { return int(m_closed.size()); }

signals:
    void insertRequested();
    void reopenRequested(const QString &text);

private:
    struct ClosedPage
    {
        QString caption;
        QString text;
    };

    QToolButton *addButton(const QString &name, const QString &text, const QString &hint);
    void step(int delta);
    void fillPageList();
    void fillClosedPages();
    void reopen(int index);

    QTabWidget *m_pager;
    QMenu *m_pageList = nullptr;
    QMenu *m_closedPages = nullptr;
    std::vector<ClosedPage> m_closed;
};

// The main window's tab pager. Its tab bar keeps the height of a tab when no tab is left, so the
// buttons beside it (which the pager fits into the bar's height) stay on screen.
class PagerTabWidget : public QTabWidget
{
    Q_OBJECT
public:
    explicit PagerTabWidget(QWidget *parent);
};
