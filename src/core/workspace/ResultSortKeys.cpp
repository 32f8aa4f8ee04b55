#include "core/workspace/ResultSortKeys.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace {

struct Keyed
{
    quint64 key;   // order-preserving image of the value (or of a text's first 8 bytes)
    qint64 row;
    bool null;
};

quint64 integerKey(qint64 value)
{
    return quint64(value) ^ (quint64(1) << 63);
}

quint64 realKey(double value)
{
    quint64 bits;
    std::memcpy(&bits, &value, sizeof bits);
    // Negative numbers flip every bit, positive ones only the sign: unsigned order = numeric order.
    return (bits >> 63) ? ~bits : bits | (quint64(1) << 63);
}

quint64 textKey(std::string_view text)
{
    quint64 key = 0;
    for (size_t i = 0; i < 8; ++i)
        key = (key << 8) | (i < text.size() ? quint64(quint8(text[i])) : 0);
    return key;
}

int compareBytes(std::string_view a, std::string_view b)
{
    const int c = std::memcmp(a.data(), b.data(), std::min(a.size(), b.size()));
    if (c != 0)
        return c < 0 ? -1 : 1;
    return a.size() < b.size() ? -1 : (a.size() > b.size() ? 1 : 0);
}

} // namespace

bool ResultSortKeys::sort(const ResultTable &table, int col, bool ascending, std::vector<qint64> &rows)
{
    const ResultColumn &column = table.column(col);
    if (column.isDecimal() || column.hasMixedKinds())
        return false;
    for (qint64 row : rows)
        if (table.isOverridden(row, col))
            return false;
    const ResultStorage storage = column.storage();
    const bool text = storage == ResultStorage::Text || storage == ResultStorage::Bytes;
    std::vector<Keyed> keyed;
    keyed.reserve(rows.size());
    for (qint64 row : rows) {
        Keyed k{0, row, column.isNull(row)};
        if (!k.null) {
            if (storage == ResultStorage::Integer)
                k.key = integerKey(column.intAt(row));
            else if (storage == ResultStorage::Real)
                k.key = realKey(column.realAt(row));
            else if (text)
                k.key = textKey(column.bytesAt(row));
        }
        keyed.push_back(k);
    }
    // Three-way on (NULL first, key, then the whole text when the first 8 bytes tie).
    auto order = [&](const Keyed &a, const Keyed &b) {
        if (a.null || b.null)
            return a.null == b.null ? 0 : (a.null ? -1 : 1);
        if (a.key != b.key)
            return a.key < b.key ? -1 : 1;
        return text ? compareBytes(column.bytesAt(a.row), column.bytesAt(b.row)) : 0;
    };
    std::stable_sort(keyed.begin(), keyed.end(), [&](const Keyed &a, const Keyed &b) {
        const int c = order(a, b);
        return ascending ? c < 0 : c > 0;
    });
    for (size_t i = 0; i < keyed.size(); ++i)
        rows[i] = keyed[i].row;
    return true;
}
