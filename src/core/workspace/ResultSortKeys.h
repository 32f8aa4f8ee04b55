#pragma once
#include "core/workspace/ResultTable.h"

#include <vector>

namespace ResultSortKeys {

// Sorts `rows` by one column of the table, stable, NULLs first (last when descending), with the
// order ResultView::compare gives. Reads each cell once into a compact key (the integer, the
// real, or the first 8 bytes of a text), sorts the keys by radix, and orders only the texts whose
// first 8 bytes tie by their whole bytes. Returns false,
// leaving `rows` as they are, when the column needs the general comparison (pending edits in it,
// exact decimals, mixed kinds).
bool sort(const ResultTable &table, int col, bool ascending, std::vector<qint64> &rows);

} // namespace ResultSortKeys
