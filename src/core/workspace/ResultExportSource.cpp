#include "core/workspace/ResultExportSource.h"

#include <QDateTime>
#include <charconv>

ResultExportSource::ResultExportSource(const ResultTable &table, const ResultView &view)
    : m_table(table), m_direct(!table.hasOverrides())
{
    m_rows.reserve(size_t(view.dataRows()));
    for (qint64 i = 0; i < view.size(); ++i) {
        const ResultView::Entry &entry = view.entry(i);
        if (entry.level < 0)
            m_rows.push_back(entry.row);
    }
}

ResultExportSource::ResultExportSource(const ResultTable &table)
    : m_table(table), m_direct(!table.hasOverrides())
{
    m_rows.reserve(size_t(table.rowCount()));
    for (qint64 row = 0; row < table.rowCount(); ++row)
        if (!table.isDeleted(row))
            m_rows.push_back(row);
}

bool ResultExportSource::isNull(qint64 row, int col) const
{
    return m_table.isNull(m_rows[size_t(row)], col);
}

std::string_view ResultExportSource::text(qint64 row, int col, std::string &scratch) const
{
    const qint64 r = m_rows[size_t(row)];
    if (m_direct) {
        // The common case reads the columnar storage without building a QVariant per cell.
        const ResultColumn &column = m_table.column(col);
        const QMetaType::Type type = column.logicalType();
        switch (column.storage()) {
        case ResultStorage::Integer:
            if (type != QMetaType::Bool) {
                char digits[24];
                const auto end = std::to_chars(digits, digits + sizeof digits, column.intAt(r)).ptr;
                scratch.assign(digits, end);
                return scratch;
            }
            break;
        case ResultStorage::Real: {
            char digits[32];
            const auto end = std::to_chars(digits, digits + sizeof digits, column.realAt(r)).ptr;
            scratch.assign(digits, end);
            return scratch;
        }
        case ResultStorage::Text:
            // Dates are kept as ISO text; the grid shows them in its own form.
            if (type != QMetaType::QDate && type != QMetaType::QDateTime)
                return column.bytesAt(r);
            break;
        default:
            break;
        }
    }
    const QVariant v = m_table.value(r, col);
    if (v.metaType().id() == QMetaType::QByteArray)
        scratch = "0x" + v.toByteArray().toHex().toStdString();  // every byte, not the grid's first 64
    else
        scratch = ResultView::text(m_table, r, col).toStdString();
    return scratch;
}

namespace {

// Some fetch paths keep decimals, dates and times as the server's text so that no digit is lost
// in the grid; a workbook wants them as numbers and dates. The column's type name says which.
QVariant typedByName(const QString &typeName, const QString &text)
{
    const QString type = typeName.toLower();
    if (type == QLatin1String("numeric") || type == QLatin1String("decimal")) {
        // Decimals of more than 15 significant digits do not survive a double: they stay text.
        qsizetype digits = 0;
        for (QChar c : text)
            digits += c.isDigit();
        for (QChar c : text) {
            if (c != QLatin1Char('0') && c != QLatin1Char('-') && c != QLatin1Char('+') && c != QLatin1Char('.'))
                break;
            digits -= c == QLatin1Char('0');
        }
        bool ok = false;
        const double number = text.toDouble(&ok);
        return ok && digits <= 15 ? QVariant(number) : QVariant(text);
    }
    if (type == QLatin1String("date")) {
        const QDate date = QDate::fromString(text, Qt::ISODate);
        return date.isValid() ? QVariant(date) : QVariant(text);
    }
    if (type == QLatin1String("timestamp") || type == QLatin1String("datetime")) {
        const QDateTime stamp = QDateTime::fromString(QString(text).replace(QLatin1Char(' '), QLatin1Char('T')), Qt::ISODateWithMs);
        return stamp.isValid() ? QVariant(stamp) : QVariant(text);
    }
    if (type == QLatin1String("time")) {
        const QTime time = QTime::fromString(text, Qt::ISODateWithMs);
        return time.isValid() ? QVariant(time) : QVariant(text);
    }
    return text;
}

} // namespace

QVariant ResultExportSource::value(qint64 row, int col) const
{
    QVariant v = m_table.value(m_rows[size_t(row)], col);
    if (v.metaType().id() == QMetaType::QString && !v.toString().isEmpty())
        return typedByName(m_table.column(col).typeName(), v.toString());
    return v;
}
