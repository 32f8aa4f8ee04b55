#pragma once
#include <QHeaderView>
#include <QVector>

class QLineEdit;

// Column header with a filter row: one line edit under each title. Typing filters the grid (the
// texts ResultView understands); the editors follow the sections when they move or resize.
class ResultFilterHeader : public QHeaderView
{
    Q_OBJECT
public:
    explicit ResultFilterHeader(QWidget *parent = nullptr);

    void setFilterVisible(bool visible);
    bool isFilterVisible() const { return m_filterVisible; }
    QLineEdit *filterEditor(int section) const { return m_editors.value(section); }
    void clearFilters();

    QSize sizeHint() const override;
    // Puts the editors under their sections again (after a scroll, move or resize).
    void placeEditors();

signals:
    void filterChanged(int section, const QString &text);
    // New editors were made (the columns changed); their texts are empty.
    void editorsRebuilt();

protected:
    void updateGeometries() override;

private:
    void rebuildEditors();

    QVector<QLineEdit *> m_editors;
    bool m_filterVisible = true;
};
