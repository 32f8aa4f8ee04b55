#pragma once
#include "core/workspace/ResultTable.h"

#include <string_view>
#include <vector>

namespace ResultSortKeys {

// Sorts `rows` by one column of the table, stable, NULLs first (last when descending), with the
// order ResultView::compare gives. Reads each cell once into a compact key (the integer, the
// real, or the first 8 bytes of a text), sorts the keys by radix, and orders only the texts whose
// first 8 bytes tie by their whole bytes. Returns false,
// leaving `rows` as they are, when the column needs the general comparison (pending edits in it,
// exact decimals, mixed kinds).
bool sort(const ResultTable &table, int col, bool ascending, std::vector<qint64> &rows);

// Orders two byte strings as memcmp does, a shorter one first where one begins the other:
// -1, 0 or 1.
int compareBytes(std::string_view a, std::string_view b);

} // namespace ResultSortKeys
