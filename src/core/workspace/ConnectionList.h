#pragma once
#include "core/app/CatalogueRows.h"

#include <QList>
#include <QObject>
#include <optional>

class TMdm;

// A tab's in-memory copy of the stored connections (mdsConnections) with one current row.
// New rows are stamped created, every post is stamped changed, and the catalogue gives a new row
// its CONNECTION_ID when it is posted.
class ConnectionList : public QObject
{
    Q_OBJECT
public:
    explicit ConnectionList(TMdm *catalogue, QObject *parent = nullptr);

    TMdm *catalogue() const { return m_catalogue; }

    // Reloads from the catalogue and goes back to the row that was current (by its id), so
    // connections added or changed in another tab appear.
    void reopen();

    int count() const { return int(m_rows.size()); }
    const ConnectionRow &row(int index) const { return m_rows.at(index); }
    int currentIndex() const { return m_current; }
    const ConnectionRow *current() const;
    void setCurrentIndex(int index);

    enum class State { Browse, Edit, Insert };
    State state() const { return m_state; }

    // Appends a new row (stamped created) and makes it current, in insert state.
    ConnectionRow &insertRow();
    // Puts the current row in edit state; returns it for changing. Throws when there is none.
    ConnectionRow &editCurrent();
    // Writes the pending row to the catalogue (stamped changed) and returns to browsing.
    void post();
    // Drops a pending insert, or restores an edited row as it was.
    void cancel();
    // Deletes the current row from the catalogue at once.
    void deleteCurrent();

signals:
    void reset();
    void rowChanged(int index);
    void currentChanged(int index);

private:
    TMdm *m_catalogue;
    QList<ConnectionRow> m_rows;
    int m_current = -1;
    State m_state = State::Browse;
    std::optional<ConnectionRow> m_beforeEdit;
};
