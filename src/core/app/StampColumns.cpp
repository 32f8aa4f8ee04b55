#include "core/app/StampColumns.h"

#include <QSqlRecord>

namespace StampColumns {

QVariant toColumn(const QDateTime &time)
{
    return time.isValid() ? QVariant(time.toString(Qt::ISODateWithMs)) : QVariant(QMetaType(QMetaType::QString));
}

namespace {
StampTime readTime(const QSqlQuery &q, int position)
{
    const QVariant v = q.value(position);
    return v.isNull() ? StampTime() : StampTime::fromText(v.toString());
}
} // namespace

Positions positionsIn(const QSqlRecord &record)
{
    return {record.indexOf(QStringLiteral("CREATED")), record.indexOf(QStringLiteral("CREATED_BY")),
            record.indexOf(QStringLiteral("CHANGED")), record.indexOf(QStringLiteral("CHANGED_BY"))};
}

RowStamps read(const QSqlQuery &q)
{
    return read(q, positionsIn(q.record()));
}

RowStamps read(const QSqlQuery &q, const Positions &at)
{
    RowStamps s;
    s.created = readTime(q, at.created);
    s.createdBy = q.value(at.createdBy).toString();
    s.changed = readTime(q, at.changed);
    s.changedBy = q.value(at.changedBy).toString();
    return s;
}

} // namespace StampColumns
