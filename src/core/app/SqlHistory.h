#pragma once
#include "core/app/CatalogueRows.h"

#include <QList>
#include <QObject>
#include <QSqlDatabase>
#include <functional>

// The history of executed statements (adsSqlBuffer): all rows in key order with one current row,
// shared by every tab, the previous/next buttons and the history picker.
class SqlHistory : public QObject
{
    Q_OBJECT
public:
    using IdSource = std::function<int()>;
    SqlHistory(QSqlDatabase db, IdSource nextId, QObject *parent = nullptr);

    void reload();

    int count() const { return int(m_rows.size()); }
    bool isEmpty() const { return m_rows.isEmpty(); }
    const QList<HistoryRow> &rows() const { return m_rows; }
    int currentIndex() const { return m_current; }
    // The current row, or nullptr for an empty history.
    const HistoryRow *current() const;

    void setCurrentIndex(int index);
    bool prior();   // one row back; false (and no move) at the first row
    bool next();    // one row on; false (and no move) at the last row
    void first();

    // Inserts a row with `sql`: stamped created, keyed from sequence 10, stamped changed on post.
    // The new row becomes current.
    void append(const QString &sql);
    // Edits the text of a stored row (the picker's memo) and posts it.
    void setExecutedSql(int index, const QString &sql);
    void deleteCurrent();
    // Deletes every row, first to last, each a deletion in the catalogue.
    void deleteAll();

signals:
    void changed();
    void currentChanged(int index);

private:
    QSqlDatabase m_db;
    IdSource m_nextId;
    QList<HistoryRow> m_rows;
    int m_current = -1;
};
