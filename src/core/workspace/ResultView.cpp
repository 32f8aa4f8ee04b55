#include "core/workspace/ResultView.h"

#include "core/workspace/ResultSortKeys.h"
#include "core/workspace/ValueTypes.h"

#include <QDateTime>
#include <QLocale>
#include <algorithm>
#include <cstring>

namespace {

int compareVariants(const QVariant &a, const QVariant &b, bool decimal)
{
    const bool an = resultIsNull(a), bn = resultIsNull(b);
    if (an || bn)
        return an == bn ? 0 : (an ? -1 : 1);
    if (decimal) {
        const QByteArray x = a.toString().toLatin1(), y = b.toString().toLatin1();
        const std::string_view xs(x.constData(), size_t(x.size())), ys(y.constData(), size_t(y.size()));
        if (ValueTypes::isDecimalText(xs) && ValueTypes::isDecimalText(ys))
            return ValueTypes::compareDecimal(xs, ys);
    }
    bool aok = false, bok = false;
    const double ad = a.toDouble(&aok), bd = b.toDouble(&bok);
    if (aok && bok && a.metaType().id() != QMetaType::QString && b.metaType().id() != QMetaType::QString)
        return ad < bd ? -1 : (ad > bd ? 1 : 0);
    return a.toString().compare(b.toString());
}

char lowerAscii(char c)
{
    return c >= 'A' && c <= 'Z' ? char(c + 32) : c;
}

bool containsAscii(std::string_view haystack, const QByteArray &lowerNeedle)
{
    const auto it = std::search(haystack.begin(), haystack.end(), lowerNeedle.begin(), lowerNeedle.end(),
                                [](char h, char n) { return lowerAscii(h) == n; });
    return it != haystack.end() || lowerNeedle.isEmpty();
}

struct Filter
{
    enum Op { Contains, Eq, Ne, Lt, Le, Gt, Ge, IsNull, NotNull } op = Contains;
    int col = 0;
    QString operand;
    QByteArray asciiNeedle; // lower-case, set when the operand is plain ASCII
    double number = 0;
    bool numeric = false;
};

Filter compile(int col, const QString &raw)
{
    Filter f;
    f.col = col;
    QString text = raw.trimmed();
    if (text.compare(QLatin1String("(null)"), Qt::CaseInsensitive) == 0) {
        f.op = Filter::IsNull;
        return f;
    }
    if (text.compare(QLatin1String("(not null)"), Qt::CaseInsensitive) == 0) {
        f.op = Filter::NotNull;
        return f;
    }
    static const struct { const char *prefix; Filter::Op op; } ops[] = {
        {"<=", Filter::Le}, {">=", Filter::Ge}, {"<>", Filter::Ne}, {"=", Filter::Eq},
        {"<", Filter::Lt}, {">", Filter::Gt}};
    for (const auto &op : ops) {
        if (text.startsWith(QLatin1String(op.prefix))) {
            f.op = op.op;
            text = text.mid(int(std::strlen(op.prefix))).trimmed();
            break;
        }
    }
    f.operand = text;
    f.number = text.toDouble(&f.numeric);
    bool ascii = true;
    for (QChar c : text)
        ascii = ascii && c.unicode() < 128;
    if (ascii)
        f.asciiNeedle = text.toLatin1().toLower();
    return f;
}

bool matches(const ResultTable &table, const Filter &f, qint64 row)
{
    const bool null = table.isNull(row, f.col);
    if (f.op == Filter::IsNull || f.op == Filter::NotNull)
        return null == (f.op == Filter::IsNull);
    if (null)
        return false;
    const ResultColumn &column = table.column(f.col);
    const bool direct = !table.hasOverrides() || !table.isOverridden(row, f.col);
    const bool numericColumn = column.storage() == ResultStorage::Integer || column.storage() == ResultStorage::Real;
    if (f.op == Filter::Contains) {
        if (direct && !f.asciiNeedle.isNull() && column.storage() == ResultStorage::Text)
            return containsAscii(column.bytesAt(row), f.asciiNeedle);
        if (direct && !f.asciiNeedle.isNull() && column.storage() == ResultStorage::Integer) {
            const QByteArray digits = QByteArray::number(column.intAt(row));
            return containsAscii(std::string_view(digits.constData(), size_t(digits.size())), f.asciiNeedle);
        }
        return ResultView::text(table, row, f.col).contains(f.operand, Qt::CaseInsensitive);
    }
    int c;
    if (column.isDecimal() && column.storage() == ResultStorage::Text && f.numeric) {
        const QByteArray own = direct ? QByteArray() : table.value(row, f.col).toString().toLatin1();
        const std::string_view value = direct ? column.bytesAt(row) : std::string_view(own.constData(), size_t(own.size()));
        const QByteArray operand = f.operand.toLatin1();
        c = ValueTypes::compareDecimal(value, std::string_view(operand.constData(), size_t(operand.size())));
    } else if (numericColumn && f.numeric) {
        const double v = direct ? column.realAt(row) : table.value(row, f.col).toDouble();
        c = v < f.number ? -1 : (v > f.number ? 1 : 0);
    } else {
        c = ResultView::text(table, row, f.col).compare(f.operand, Qt::CaseInsensitive);
    }
    switch (f.op) {
    case Filter::Eq: return c == 0;
    case Filter::Ne: return c != 0;
    case Filter::Lt: return c < 0;
    case Filter::Le: return c <= 0;
    case Filter::Gt: return c > 0;
    case Filter::Ge: return c >= 0;
    default: return true;
    }
}

} // namespace

void ResultView::setTable(const ResultTable *table)
{
    m_table = table;
    m_entries.clear();
    m_filters.clear();
    m_sortColumn = -1;
    m_groups.clear();
}

void ResultView::setFilter(int col, const QString &text)
{
    if (m_filters.size() <= col)
        m_filters.resize(col + 1);
    m_filters[col] = text;
}

void ResultView::setSort(int col, bool ascending)
{
    m_sortColumn = col;
    m_ascending = ascending;
}

int ResultView::compare(const ResultTable &table, int col, qint64 a, qint64 b)
{
    if (table.hasOverrides() && (table.isOverridden(a, col) || table.isOverridden(b, col)))
        return compareVariants(table.value(a, col), table.value(b, col), table.column(col).isDecimal());
    const ResultColumn &column = table.column(col);
    const bool an = column.isNull(a), bn = column.isNull(b);
    if (an || bn)
        return an == bn ? 0 : (an ? -1 : 1);
    switch (column.storage()) {
    case ResultStorage::Integer: {
        const qint64 x = column.intAt(a), y = column.intAt(b);
        return x < y ? -1 : (x > y ? 1 : 0);
    }
    case ResultStorage::Real: {
        const double x = column.realAt(a), y = column.realAt(b);
        return x < y ? -1 : (x > y ? 1 : 0);
    }
    case ResultStorage::Text:
        if (column.isDecimal())
            return ValueTypes::compareDecimal(column.bytesAt(a), column.bytesAt(b));
        return ResultSortKeys::compareBytes(column.bytesAt(a), column.bytesAt(b));
    case ResultStorage::Bytes:
        return ResultSortKeys::compareBytes(column.bytesAt(a), column.bytesAt(b));
    case ResultStorage::Empty:
        break;
    }
    return 0;
}

QString ResultView::text(const ResultTable &table, qint64 row, int col)
{
    const QVariant value = table.value(row, col);
    if (resultIsNull(value))
        return QString();
    switch (value.metaType().id()) {
    case QMetaType::Double:
        return QString::number(value.toDouble(), 'g', QLocale::FloatingPointShortest);
    case QMetaType::Bool:
        return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    case QMetaType::QByteArray: {
        const QByteArray bytes = value.toByteArray();
        QString hex = QStringLiteral("0x") + QString::fromLatin1(bytes.left(64).toHex());
        return bytes.size() > 64 ? hex + QChar(0x2026) : hex;
    }
    case QMetaType::QDateTime:
        return value.toDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz"));
    case QMetaType::QDate:
        return value.toDate().toString(Qt::ISODate);
    default:
        return value.toString();
    }
}


void ResultView::rebuild()
{
    m_entries.clear();
    m_dataRows = 0;
    if (!m_table)
        return;
    const ResultTable &table = *m_table;
    std::vector<Filter> filters;
    for (int col = 0; col < m_filters.size() && col < table.columnCount(); ++col)
        if (!m_filters[col].trimmed().isEmpty())
            filters.push_back(compile(col, m_filters[col]));

    std::vector<qint64> rows;
    rows.reserve(size_t(table.rowCount()));
    for (qint64 row = 0; row < table.rowCount(); ++row) {
        if (table.isDeleted(row))
            continue;
        bool keep = true;
        if (table.rowState(row) != ResultTable::RowState::Inserted)
            for (const Filter &f : filters)
                if (!(keep = matches(table, f, row)))
                    break;
        if (keep)
            rows.push_back(row);
    }

    m_dataRows = qint64(rows.size());
    QVector<int> keys = m_groups;
    QVector<bool> ascending(keys.size(), true);
    if (m_sortColumn >= 0 && m_sortColumn < table.columnCount()) {
        keys << m_sortColumn;
        ascending << m_ascending;
    }
    // One sort column and no grouping: sort on compact keys, read once per cell.
    const bool keyed = m_groups.isEmpty() && keys.size() == 1
                       && ResultSortKeys::sort(table, m_sortColumn, m_ascending, rows);
    if (!keys.isEmpty() && !keyed)
        std::stable_sort(rows.begin(), rows.end(), [&](qint64 a, qint64 b) {
            for (int k = 0; k < keys.size(); ++k) {
                const int c = compare(table, keys[k], a, b);
                if (c != 0)
                    return ascending[k] ? c < 0 : c > 0;
            }
            return false;
        });

    if (m_groups.isEmpty()) {
        m_entries.reserve(rows.size());
        for (qint64 row : rows)
            m_entries.push_back({row, -1, 0});
        return;
    }
    // Headers are emitted where the value of a grouping column changes; their counts are filled
    // in when the group ends.
    std::vector<size_t> open(size_t(m_groups.size()), 0);
    qint64 previous = -1;
    for (qint64 row : rows) {
        int changed = previous < 0 ? 0 : int(m_groups.size());
        for (int level = 0; previous >= 0 && level < m_groups.size(); ++level)
            if (compare(table, m_groups[level], previous, row) != 0) {
                changed = level;
                break;
            }
        for (int level = changed; level < m_groups.size(); ++level) {
            open[size_t(level)] = m_entries.size();
            m_entries.push_back({row, level, 0});
        }
        for (size_t level = 0; level < open.size(); ++level)
            ++m_entries[open[level]].count;
        m_entries.push_back({row, -1, 0});
        previous = row;
    }
}

bool ResultView::isIdentity() const
{
    if (m_sortColumn >= 0 || !m_groups.isEmpty())
        return false;
    for (const QString &filter : m_filters)
        if (!filter.trimmed().isEmpty())
            return false;
    return true;
}

void ResultView::rowsAppended(qint64 firstNew)
{
    if (!isIdentity() || !m_table) {
        rebuild();
        return;
    }
    for (qint64 row = firstNew; row < m_table->rowCount(); ++row) {
        if (m_table->isDeleted(row))
            continue;
        m_entries.push_back({row, -1, 0});
        ++m_dataRows;
    }
}

qint64 ResultView::indexOf(qint64 row) const
{
    for (size_t i = 0; i < m_entries.size(); ++i)
        if (m_entries[i].level < 0 && m_entries[i].row == row)
            return qint64(i);
    return -1;
}
