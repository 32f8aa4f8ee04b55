#include "core/workspace/ResultSortKeys.h"

#include <algorithm>
#include <array>
#include <utility>
#include <cstring>
#include <string_view>

namespace {

struct Keyed
{
    quint64 key; // order-preserving image of the value (or of a text's first 8 bytes)
    qint64 row;
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

// Least-significant-digit radix sort of the keys, a byte per pass: stable, and linear in the
// number of rows, where a comparison sort of a million rows spends most of its time in cache
// misses. A pass whose byte is the same in every key (the high bytes of small integers, a prefix
// every text shares) is skipped.
void radixSort(std::vector<Keyed> &items)
{
    const size_t n = items.size();
    if (n < 2)
        return;
    std::array<std::array<size_t, 256>, 8> counts{};
    for (const Keyed &k : items)
        for (int b = 0; b < 8; ++b)
            ++counts[size_t(b)][(k.key >> (8 * b)) & 0xFF];
    std::vector<Keyed> scratch(n);
    for (int b = 0; b < 8; ++b) {
        std::array<size_t, 256> &starts = counts[size_t(b)];
        if (starts[(items[0].key >> (8 * b)) & 0xFF] == n)
            continue;
        size_t sum = 0;
        for (size_t &count : starts)
            sum += std::exchange(count, sum);
        for (const Keyed &k : items)
            scratch[starts[(k.key >> (8 * b)) & 0xFF]++] = k;
        items.swap(scratch);
    }
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
    // NULLs keep their order and go first (last when descending); a descending sort sorts the
    // complemented keys, so equal values still keep their order.
    std::vector<qint64> nulls;
    std::vector<Keyed> keyed;
    keyed.reserve(rows.size());
    for (qint64 row : rows) {
        if (column.isNull(row)) {
            nulls.push_back(row);
            continue;
        }
        quint64 key = 0;
        if (storage == ResultStorage::Integer)
            key = integerKey(column.intAt(row));
        else if (storage == ResultStorage::Real)
            key = realKey(column.realAt(row));
        else if (text)
            key = textKey(column.bytesAt(row));
        keyed.push_back({ascending ? key : ~key, row});
    }
    radixSort(keyed);
    // Texts whose first 8 bytes tie are put in order by the whole text, each run on its own.
    for (size_t first = 0; text && first < keyed.size();) {
        size_t end = first + 1;
        while (end < keyed.size() && keyed[end].key == keyed[first].key)
            ++end;
        if (end - first > 1)
            std::stable_sort(keyed.begin() + qsizetype(first), keyed.begin() + qsizetype(end),
                             [&](const Keyed &a, const Keyed &b) {
                                 const int c = compareBytes(column.bytesAt(a.row), column.bytesAt(b.row));
                                 return ascending ? c < 0 : c > 0;
                             });
        first = end;
    }
    auto out = rows.begin();
    if (ascending)
        out = std::copy(nulls.begin(), nulls.end(), out);
    for (const Keyed &k : keyed)
        *out++ = k.row;
    if (!ascending)
        std::copy(nulls.begin(), nulls.end(), out);
    return true;
}

int ResultSortKeys::compareBytes(std::string_view a, std::string_view b)
{
    // An empty view may have no data pointer at all, which memcmp must not be given.
    const size_t common = std::min(a.size(), b.size());
    const int c = common == 0 ? 0 : std::memcmp(a.data(), b.data(), common);
    if (c != 0)
        return c < 0 ? -1 : 1;
    return a.size() < b.size() ? -1 : (a.size() > b.size() ? 1 : 0);
}
