#include "gui/components/ResultFilterHeader.h"

#include <QLineEdit>
#include <QScrollBar>
#include <QTimer>

ResultFilterHeader::ResultFilterHeader(QWidget *parent) : QHeaderView(Qt::Horizontal, parent)
{
    setObjectName(QStringLiteral("FilterHeader"));
    setSectionsClickable(true);
    setSortIndicatorShown(false); // the model puts the marker into the title
    setHighlightSections(false);
    connect(this, &QHeaderView::sectionResized, this, &ResultFilterHeader::placeEditors);
    connect(this, &QHeaderView::sectionMoved, this, &ResultFilterHeader::placeEditors);
    // Queued: the count also changes while the view lays out or dies, when no child may be made.
    connect(this, &QHeaderView::sectionCountChanged, this, &ResultFilterHeader::rebuildEditors, Qt::QueuedConnection);
}

QSize ResultFilterHeader::sizeHint() const
{
    QSize size = QHeaderView::sizeHint();
    if (m_filterVisible && !m_editors.isEmpty())
        size.setHeight(size.height() + m_editors.first()->sizeHint().height() + 2);
    return size;
}

void ResultFilterHeader::setFilterVisible(bool visible)
{
    m_filterVisible = visible;
    for (QLineEdit *editor : m_editors)
        editor->setVisible(visible);
    updateGeometries();
}

void ResultFilterHeader::clearFilters()
{
    for (QLineEdit *editor : m_editors) {
        const QSignalBlocker block(editor);
        editor->clear();
    }
}

void ResultFilterHeader::rebuildEditors()
{
    if (m_editors.size() == count())
        return;
    qDeleteAll(m_editors);
    m_editors.clear();
    for (int section = 0; section < count(); ++section) {
        auto *editor = new QLineEdit(this);
        editor->setObjectName(QStringLiteral("Filter%1").arg(section));
        editor->setPlaceholderText(QStringLiteral("Filter"));
        editor->setClearButtonEnabled(true);
        editor->setVisible(m_filterVisible);
        // Filtering a large result takes a moment, so it waits for a pause in the typing.
        auto *timer = new QTimer(editor);
        timer->setSingleShot(true);
        timer->setInterval(250);
        connect(editor, &QLineEdit::textChanged, timer, qOverload<>(&QTimer::start));
        connect(timer, &QTimer::timeout, this, [this, section, editor] { emit filterChanged(section, editor->text()); });
        connect(editor, &QLineEdit::returnPressed, this, [this, section, editor, timer] {
            timer->stop();
            emit filterChanged(section, editor->text());
        });
        m_editors << editor;
    }
    updateGeometries();
    emit editorsRebuilt();
}

void ResultFilterHeader::updateGeometries()
{
    if (m_filterVisible && !m_editors.isEmpty())
        setViewportMargins(0, 0, 0, m_editors.first()->sizeHint().height() + 2);
    else
        setViewportMargins(0, 0, 0, 0);
    QHeaderView::updateGeometries();
    placeEditors();
}

void ResultFilterHeader::placeEditors()
{
    if (m_editors.isEmpty())
        return;
    const int editorHeight = m_editors.first()->sizeHint().height();
    const int top = height() - editorHeight - 1;
    for (int section = 0; section < m_editors.size(); ++section) {
        QLineEdit *editor = m_editors[section];
        if (isSectionHidden(section)) {
            editor->hide();
            continue;
        }
        editor->setGeometry(sectionViewportPosition(section) + 1, top, sectionSize(section) - 2, editorHeight);
        editor->setVisible(m_filterVisible);
    }
}
