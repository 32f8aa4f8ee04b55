#include "core/interchange/WorkbookCell.h"

#include <QDateTime>

namespace {

const QDate kEpoch(1899, 12, 30);
const QDate kFirstExact(1900, 3, 1);

double dayFraction(const QTime &time)
{
    return time.msecsSinceStartOfDay() / 86400000.0;
}

} // namespace

WorkbookCell WorkbookCell::from(const QVariant &value)
{
    WorkbookCell cell;
    if (!value.isValid() || value.isNull())
        return cell;
    switch (value.metaType().id()) {
    case QMetaType::LongLong:
    case QMetaType::ULongLong: {
        // A spreadsheet number is a double: integers past 2^53 would silently change their last
        // digits, so they are written as text.
        constexpr qint64 exact = qint64(1) << 53;
        const bool fits = value.metaType().id() == QMetaType::LongLong
                              ? value.toLongLong() >= -exact && value.toLongLong() <= exact
                              : value.toULongLong() <= quint64(exact);
        if (!fits)
            break;
        cell.kind = Number;
        cell.number = value.toDouble();
        return cell;
    }
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Double:
    case QMetaType::Float:
        cell.kind = Number;
        cell.number = value.toDouble();
        return cell;
    case QMetaType::Bool:
        cell.kind = Bool;
        cell.flag = value.toBool();
        return cell;
    case QMetaType::QDate: {
        const QDate date = value.toDate();
        if (date < kFirstExact)
            break;
        cell.kind = Date;
        cell.number = double(kEpoch.daysTo(date));
        return cell;
    }
    case QMetaType::QDateTime: {
        const QDateTime stamp = value.toDateTime();
        if (stamp.date() < kFirstExact) {
            cell.kind = Text;
            cell.text = stamp.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz"));
            return cell;
        }
        cell.kind = DateTime;
        cell.number = double(kEpoch.daysTo(stamp.date())) + dayFraction(stamp.time());
        return cell;
    }
    case QMetaType::QTime:
        cell.kind = Time;
        cell.number = dayFraction(value.toTime());
        return cell;
    case QMetaType::QByteArray:
        cell.kind = Text;
        cell.text = QStringLiteral("0x") + QString::fromLatin1(value.toByteArray().toHex());
        return cell;
    default:
        break;
    }
    cell.text = value.metaType().id() == QMetaType::QDate ? value.toDate().toString(Qt::ISODate) : value.toString();
    // An empty text is an empty cell: workbooks do not tell the two apart.
    cell.kind = cell.text.isEmpty() ? Empty : Text;
    return cell;
}
