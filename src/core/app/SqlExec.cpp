#include "core/app/SqlExec.h"
#include "core/base/SqlErrorText.h"

#include "core/base/VantryError.h"

namespace SqlExec {

QSqlQuery run(QSqlDatabase &db, const QString &sql, std::initializer_list<QVariant> binds)
{
    QSqlQuery q(db);
    if (!q.prepare(sql))
        throw VantryError(QStringLiteral("Cannot prepare \"%1\": %2").arg(sql, sqlErrorText(q.lastError())));
    for (const QVariant &v : binds)
        q.addBindValue(v);
    if (!q.exec())
        throw VantryError(QStringLiteral("Cannot execute \"%1\": %2").arg(sql, sqlErrorText(q.lastError())));
    return q;
}

void transaction(QSqlDatabase &db, const std::function<void()> &work)
{
    QSqlQuery begin(db);
    if (!begin.exec(QStringLiteral("begin immediate")))
        throw VantryError(QStringLiteral("Cannot start a catalogue transaction: %1").arg(sqlErrorText(begin.lastError())));
    try {
        work();
    } catch (...) {
        QSqlQuery(db).exec(QStringLiteral("rollback"));
        throw;
    }
    QSqlQuery commit(db);
    if (!commit.exec(QStringLiteral("commit"))) {
        const QString why = sqlErrorText(commit.lastError());
        QSqlQuery(db).exec(QStringLiteral("rollback"));
        throw VantryError(QStringLiteral("Cannot commit a catalogue transaction: %1").arg(why));
    }
}

} // namespace SqlExec
