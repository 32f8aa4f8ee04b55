#include "core/workspace/SqlLiterals.h"

#include <QSqlDriver>
#include <QSqlField>

QString withLiterals(const QSqlDatabase &db, QString sql, const QVariantList &values)
{
    int at = 0;
    for (const QVariant &value : values) {
        at = int(sql.indexOf(QLatin1Char('?'), at));
        if (at < 0)
            break;
        QSqlField literal(QString(), value.metaType());
        literal.setValue(value);
        const QString text = db.driver()->formatValue(literal);
        sql.replace(at, 1, text);
        at += int(text.size());
    }
    return sql;
}
