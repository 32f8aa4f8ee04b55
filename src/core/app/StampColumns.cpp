#include "core/app/StampColumns.h"

#include <QSqlRecord>

namespace StampColumns {

QVariant toColumn(const QDateTime &time)
{
    return time.isValid() ? QVariant(time.toString(Qt::ISODateWithMs)) : QVariant(QMetaType(QMetaType::QString));
}

namespace {
QDateTime readTime(const QSqlQuery &q, const QSqlRecord &r, const char *column)
{
    const QVariant v = q.value(r.indexOf(QLatin1String(column)));
    return v.isNull() ? QDateTime() : QDateTime::fromString(v.toString(), Qt::ISODateWithMs);
}
} // namespace

RowStamps read(const QSqlQuery &q)
{
    const QSqlRecord r = q.record();
    RowStamps s;
    s.created = readTime(q, r, "CREATED");
    s.createdBy = q.value(r.indexOf(QStringLiteral("CREATED_BY"))).toString();
    s.changed = readTime(q, r, "CHANGED");
    s.changedBy = q.value(r.indexOf(QStringLiteral("CHANGED_BY"))).toString();
    return s;
}

} // namespace StampColumns
