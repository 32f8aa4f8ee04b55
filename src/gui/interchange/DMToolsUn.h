#pragma once
#include <QColor>
#include <QObject>
#include <QStringList>

// The tools service: the program-wide visual style (and, later, exports, printing and previews).
class TdmTools : public QObject
{
    Q_OBJECT
public:
    explicit TdmTools(QObject *parent = nullptr);

    // The style names as the workspace's style list shows them. Two end in a blank, as stored.
    static const QStringList &styleNames();

    int applicationStyle() const { return m_style; }
    // Restyles every window. Out-of-range indexes fall back to the first style.
    void setApplicationStyle(int index);
    // The grid title colour of the current style; invalid when the style sets none.
    QColor gridTitleColor() const;

signals:
    void applicationStyleChanged(int index);

private:
    int m_style = -1;
};
