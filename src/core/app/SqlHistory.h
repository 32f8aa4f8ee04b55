#pragma once
#include "core/app/CatalogueRows.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QSqlDatabase>
#include <functional>
#include <optional>

// The history of executed statements (adsSqlBuffer): all rows in key order with one current row,
// shared by every tab, the previous/next buttons and the history picker.
//
// The history may hold a million rows, so nothing reads them all: the current row is read by its
// key, a step reads its neighbour by key, the picker reads pages of rows as it shows them, and
// the number of rows and the current row's position are counted only when first asked for.
class SqlHistory : public QObject
{
    Q_OBJECT
public:
    using IdSource = std::function<int()>;
    SqlHistory(QSqlDatabase db, IdSource nextId, QObject *parent = nullptr);

    // Reads the history again (after changes made elsewhere), keeping the current row when it is
    // still there, else the first.
    void reload();

    int count() const;
    bool isEmpty() const { return !m_current; }
    // The row at `index` in key order; an empty row out of range.
    HistoryRow row(int index) const;
    // The current row's position; -1 for an empty history.
    int currentIndex() const;
    // The current row, or nullptr for an empty history.
    const HistoryRow *current() const { return m_current ? &*m_current : nullptr; }

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
    void currentChanged();

private:
    static constexpr int Unknown = -2;

    std::optional<HistoryRow> readOne(const QString &condition, std::initializer_list<QVariant> binds) const;
    void setCurrent(std::optional<HistoryRow> row, int index);
    void forgetPages() const { m_pages.clear(); }

    mutable QSqlDatabase m_db;
    IdSource m_nextId;
    std::optional<HistoryRow> m_current;
    mutable int m_currentIndex = -1;         // Unknown until counted
    mutable int m_count = Unknown;
    mutable QHash<int, QList<HistoryRow>> m_pages; // rows by page of PageRows, as the picker reads them
};
