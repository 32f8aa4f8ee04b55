#include "ResultNullability.h"

#include <QSqlDriver>
#include <QSqlField>
#include <QSqlRecord>

void ResultNullability::read(const QSqlDatabase &db, const QString &table, ResultTable &result)
{
    QStringList parts = table.split(QLatin1Char('.'));
    for (QString &part : parts)
        part = db.driver()->stripDelimiters(part, QSqlDriver::TableName);
    const QSqlRecord record = db.record(parts.join(QLatin1Char('.')));
    for (int col = 0; col < result.columnCount(); ++col) {
        const int index = record.indexOf(result.column(col).name());
        if (index >= 0 && record.field(index).requiredStatus() == QSqlField::Required)
            result.column(col).setNullable(false);
    }
}
