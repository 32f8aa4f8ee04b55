#include "core/workspace/ResultNullability.h"

#include <QSqlDriver>
#include <QSqlField>

QSqlRecord ResultNullability::tableRecord(const QSqlDatabase &db, const QString &table)
{
    QStringList parts = table.split(QLatin1Char('.'));
    for (QString &part : parts)
        part = db.driver()->stripDelimiters(part, QSqlDriver::TableName);
    return db.record(parts.join(QLatin1Char('.')));
}

void ResultNullability::apply(const QSqlRecord &record, ResultTable &result)
{
    for (int col = 0; col < result.columnCount(); ++col) {
        const int index = record.indexOf(result.column(col).name());
        if (index >= 0 && record.field(index).requiredStatus() == QSqlField::Required)
            result.column(col).setNullable(false);
    }
}
