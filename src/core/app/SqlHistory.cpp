#include "core/app/SqlHistory.h"

#include "core/app/SqlExec.h"
#include "core/app/StampColumns.h"

#include <QSqlQuery>

SqlHistory::SqlHistory(QSqlDatabase db, IdSource nextId, QObject *parent)
    : QObject(parent), m_db(std::move(db)), m_nextId(std::move(nextId))
{
    reload();
}

void SqlHistory::reload()
{
    const qint64 keepId = current() ? current()->id : 0;
    m_rows.clear();
    QSqlQuery q = SqlExec::run(m_db, QStringLiteral("select * from SQL_EXECUTION_HISTORY order by 1"));
    while (q.next()) {
        HistoryRow row;
        row.id = q.value(0).toLongLong();
        row.executedSql = q.value(1).toString();
        row.stamps = StampColumns::read(q);
        m_rows.append(row);
    }
    m_current = m_rows.isEmpty() ? -1 : 0;
    for (int i = 0; i < m_rows.size(); ++i) {
        if (m_rows[i].id == keepId)
            m_current = i;
    }
    emit changed();
    emit currentChanged(m_current);
}

const HistoryRow *SqlHistory::current() const
{
    return m_current >= 0 && m_current < m_rows.size() ? &m_rows[m_current] : nullptr;
}

void SqlHistory::setCurrentIndex(int index)
{
    if (index < 0 || index >= m_rows.size() || index == m_current)
        return;
    m_current = index;
    emit currentChanged(m_current);
}

bool SqlHistory::prior()
{
    if (m_current <= 0)
        return false;
    setCurrentIndex(m_current - 1);
    return true;
}

bool SqlHistory::next()
{
    if (m_current < 0 || m_current + 1 >= m_rows.size())
        return false;
    setCurrentIndex(m_current + 1);
    return true;
}

void SqlHistory::first()
{
    setCurrentIndex(0);
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
    m_rows.append(row);
    m_current = int(m_rows.size()) - 1;
    emit changed();
    emit currentChanged(m_current);
}

void SqlHistory::setExecutedSql(int index, const QString &sql)
{
    if (index < 0 || index >= m_rows.size())
        return;
    HistoryRow &row = m_rows[index];
    if (row.executedSql == sql)
        return;
    RowStamps stamps = row.stamps;
    stampChanged(stamps);
    SqlExec::run(m_db,
                 QStringLiteral("update SQL_EXECUTION_HISTORY set EXECUTED_SQL = ?, CHANGED = ?, CHANGED_BY = ? "
                                "where SQL_EXECUTION_HISTORY_ID = ?"),
                 {sql, StampColumns::toColumn(stamps.changed), stamps.changedBy, row.id});
    row.executedSql = sql;
    row.stamps = stamps;
    emit changed();
}

void SqlHistory::deleteCurrent()
{
    const HistoryRow *row = current();
    if (!row)
        return;
    SqlExec::run(m_db, QStringLiteral("delete from SQL_EXECUTION_HISTORY where SQL_EXECUTION_HISTORY_ID = ?"), {row->id});
    m_rows.removeAt(m_current);
    if (m_current >= m_rows.size())
        m_current = int(m_rows.size()) - 1;
    emit changed();
    emit currentChanged(m_current);
}

void SqlHistory::deleteAll()
{
    first();
    while (!isEmpty())
        deleteCurrent();
}
