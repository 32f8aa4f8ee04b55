#include "core/workspace/CellText.h"

QVariant valueFromCellText(const ResultColumn &column, const QString &text, bool wasNull)
{
    if (text.isEmpty() && (wasNull || column.storage() == ResultStorage::Integer
                           || column.storage() == ResultStorage::Real || column.logicalType() != QMetaType::UnknownType))
        return QVariant(QMetaType(QMetaType::QString)); // NULL
    bool ok = false;
    if (column.logicalType() == QMetaType::Bool) {
        const QString t = text.trimmed().toLower();
        if (t == QLatin1String("true") || t == QLatin1String("1"))
            return true;
        if (t == QLatin1String("false") || t == QLatin1String("0"))
            return false;
    }
    if (column.storage() == ResultStorage::Integer) {
        const qint64 v = text.trimmed().toLongLong(&ok);
        if (ok)
            return v;
    }
    if (column.storage() == ResultStorage::Real) {
        const double v = text.trimmed().toDouble(&ok);
        if (ok)
            return v;
    }
    return text;
}
