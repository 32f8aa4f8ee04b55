#include "core/app/SqlHistory.h"

#include "core/app/SqlExec.h"
#include "core/app/StampColumns.h"

#include <QSqlQuery>

namespace {

// Rows read at a time for the picker, and the pages kept before the oldest are dropped.
constexpr int PageRows = 200;
constexpr int KeptPages = 64;

const QString Select = QStringLiteral("select * from SQL_EXECUTION_HISTORY ");

HistoryRow readRow(const QSqlQuery &q)
{
    HistoryRow row;
    row.id = q.value(0).toLongLong();
    row.executedSql = q.value(1).toString();
    row.stamps = StampColumns::read(q);
    return row;
}

} // namespace

SqlHistory::SqlHistory(QSqlDatabase db, IdSource nextId, QObject *parent)
    : QObject(parent), m_db(std::move(db)), m_nextId(std::move(nextId))
{
    // The first row by key is one look-up in the key's index, however long the history.
    setCurrent(readOne(QStringLiteral("order by 1 limit 1"), {}), 0);
}

std::optional<HistoryRow> SqlHistory::readOne(const QString &condition, std::initializer_list<QVariant> binds) const
{
    QSqlQuery q = SqlExec::run(m_db, Select + condition, binds);
    if (!q.next())
        return std::nullopt;
    return readRow(q);
}

void SqlHistory::setCurrent(std::optional<HistoryRow> row, int index)
{
    m_current = std::move(row);
    m_currentIndex = m_current ? index : -1;
}

void SqlHistory::reload()
{
    forgetPages();
    m_count = Unknown;
    std::optional<HistoryRow> kept;
    if (m_current)
        kept = readOne(QStringLiteral("where SQL_EXECUTION_HISTORY_ID = ?"), {m_current->id});
    if (kept)
        setCurrent(std::move(kept), Unknown);
    else
        setCurrent(readOne(QStringLiteral("order by 1 limit 1"), {}), 0);
    emit changed();
    emit currentChanged();
}

int SqlHistory::count() const
{
    if (m_count == Unknown) {
        QSqlQuery q = SqlExec::run(m_db, QStringLiteral("select count(*) from SQL_EXECUTION_HISTORY"));
        m_count = q.next() ? q.value(0).toInt() : 0;
    }
    return m_count;
}

int SqlHistory::currentIndex() const
{
    if (m_currentIndex == Unknown) {
        QSqlQuery q = SqlExec::run(
            m_db, QStringLiteral("select count(*) from SQL_EXECUTION_HISTORY where SQL_EXECUTION_HISTORY_ID < ?"),
            {m_current->id});
        m_currentIndex = q.next() ? q.value(0).toInt() : 0;
    }
    return m_currentIndex;
}

HistoryRow SqlHistory::row(int index) const
{
    if (index < 0)
        return {};
    const int page = index / PageRows;
    auto found = m_pages.constFind(page);
    if (found == m_pages.constEnd()) {
        if (m_pages.size() >= KeptPages)
            forgetPages();
        QList<HistoryRow> rows;
        QSqlQuery q = SqlExec::run(m_db, Select + QStringLiteral("order by 1 limit ? offset ?"),
                                   {PageRows, qint64(page) * PageRows});
        while (q.next())
            rows.append(readRow(q));
        found = m_pages.insert(page, rows);
    }
    const int offset = index % PageRows;
    return offset < found->size() ? found->at(offset) : HistoryRow();
}

void SqlHistory::setCurrentIndex(int index)
{
    if (index < 0 || !m_current || index == currentIndex())
        return;
    HistoryRow picked = row(index);
    if (picked.id == 0 && index >= count())
        return;
    setCurrent(std::move(picked), index);
    emit currentChanged();
}

bool SqlHistory::prior()
{
    if (!m_current)
        return false;
    std::optional<HistoryRow> before =
        readOne(QStringLiteral("where SQL_EXECUTION_HISTORY_ID < ? order by 1 desc limit 1"), {m_current->id});
    if (!before)
        return false;
    setCurrent(std::move(before), m_currentIndex == Unknown ? Unknown : m_currentIndex - 1);
    emit currentChanged();
    return true;
}

bool SqlHistory::next()
{
    if (!m_current)
        return false;
    std::optional<HistoryRow> after =
        readOne(QStringLiteral("where SQL_EXECUTION_HISTORY_ID > ? order by 1 limit 1"), {m_current->id});
    if (!after)
        return false;
    setCurrent(std::move(after), m_currentIndex == Unknown ? Unknown : m_currentIndex + 1);
    emit currentChanged();
    return true;
}

void SqlHistory::first()
{
    setCurrent(readOne(QStringLiteral("order by 1 limit 1"), {}), 0);
    emit currentChanged();
}

void SqlHistory::append(const QString &sql)
{
    HistoryRow row;
    stampCreated(row.stamps);
    row.id = m_nextId();
    row.executedSql = sql;
    stampChanged(row.stamps);
    SqlExec::run(m_db,
                 QStringLiteral("insert into SQL_EXECUTION_HISTORY (SQL_EXECUTION_HISTORY_ID, EXECUTED_SQL, CREATED, "
                                "CREATED_BY, CHANGED, CHANGED_BY) values (?, ?, ?, ?, ?, ?)"),
                 {row.id, row.executedSql, StampColumns::toColumn(row.stamps.created), row.stamps.createdBy,
                  StampColumns::toColumn(row.stamps.changed), row.stamps.changedBy});
    // The sequence may hand out a key below rows written by other means; the position is counted
    // when asked for.
    if (m_count != Unknown)
        ++m_count;
    forgetPages();
    setCurrent(std::move(row), Unknown);
    emit changed();
    emit currentChanged();
}

void SqlHistory::setExecutedSql(int index, const QString &sql)
{
    HistoryRow stored = row(index);
    if (stored.id == 0 || stored.executedSql == sql)
        return;
    RowStamps stamps = stored.stamps;
    stampChanged(stamps);
    SqlExec::run(m_db,
                 QStringLiteral("update SQL_EXECUTION_HISTORY set EXECUTED_SQL = ?, CHANGED = ?, CHANGED_BY = ? "
                                "where SQL_EXECUTION_HISTORY_ID = ?"),
                 {sql, StampColumns::toColumn(stamps.changed), stamps.changedBy, stored.id});
    forgetPages();
    if (m_current && m_current->id == stored.id) {
        m_current->executedSql = sql;
        m_current->stamps = stamps;
    }
    emit changed();
}

void SqlHistory::deleteCurrent()
{
    if (!m_current)
        return;
    const qint64 id = m_current->id;
    SqlExec::run(m_db, QStringLiteral("delete from SQL_EXECUTION_HISTORY where SQL_EXECUTION_HISTORY_ID = ?"), {id});
    if (m_count != Unknown)
        --m_count;
    forgetPages();
    // The row after the deleted one takes its place; at the end, the row before it.
    if (auto after = readOne(QStringLiteral("where SQL_EXECUTION_HISTORY_ID > ? order by 1 limit 1"), {id}))
        setCurrent(std::move(after), m_currentIndex);
    else
        setCurrent(readOne(QStringLiteral("where SQL_EXECUTION_HISTORY_ID < ? order by 1 desc limit 1"), {id}),
                   m_currentIndex == Unknown ? Unknown : m_currentIndex - 1);
    emit changed();
    emit currentChanged();
}

void SqlHistory::deleteAll()
{
    first();
    while (!isEmpty())
        deleteCurrent();
}
