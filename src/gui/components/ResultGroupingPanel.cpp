#include "gui/components/ResultGroupingPanel.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>

ResultGroupingPanel::ResultGroupingPanel(QWidget *parent) : QFrame(parent)
{
    setObjectName(QStringLiteral("GroupingPanel"));
    setFrameShape(QFrame::StyledPanel);
    setAutoFillBackground(true);
    m_layout = new QHBoxLayout(this);
    m_layout->setContentsMargins(6, 3, 6, 3);
    m_hint = new QLabel(QStringLiteral("Right-click a column title and choose \"Group by This Column\" to group the rows"), this);
    m_hint->setObjectName(QStringLiteral("lbGroupingHint"));
    m_hint->setEnabled(false);
    m_layout->addWidget(m_hint);
    m_layout->addStretch();
}

void ResultGroupingPanel::setColumns(const QVector<int> &columns, const QStringList &names)
{
    m_columns = columns;
    while (m_layout->count() > 2) {
        QLayoutItem *item = m_layout->takeAt(1);
        delete item->widget();
        delete item;
    }
    m_hint->setVisible(columns.isEmpty());
    for (int i = 0; i < columns.size(); ++i) {
        auto *chip = new QToolButton(this);
        chip->setObjectName(QStringLiteral("GroupBy%1").arg(columns[i]));
        chip->setText(QStringLiteral("%1%2  \u2715").arg(i ? QStringLiteral("\u25B8 ") : QString(), names.value(i)));
        chip->setToolTip(QStringLiteral("Stop grouping by %1").arg(names.value(i)));
        chip->setAutoRaise(false);
        connect(chip, &QToolButton::clicked, this, [this, column = columns[i]] {
            QVector<int> remaining = m_columns;
            remaining.removeAll(column);
            emit columnsChanged(remaining);
        });
        m_layout->insertWidget(1 + i, chip);
    }
}
