// Codes a sequence of values with the rows of one byte-code catalogue.
//
// A byte stands for the runs of its row, so coding is a search for the rows that fit one after the other and
// get furthest with the fewest bytes. The longest row that fits is not always the best one, as the next must
// fit behind it: a few of the best places are followed side by side.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "tools/egdb_planes.h"

// One run of a row.
struct SymbolRun {
    uint8_t symbol = 0;
    uint16_t length = 0;

    auto operator<=>(const SymbolRun&) const = default;  // NOLINT(modernize-use-nullptr): a false alarm
};
using CodeRow = std::vector<SymbolRun>;  // at least one run, none of length 0

// The rows as a tree of their common beginnings. A row's number is its place in the list that it came from.
struct CodeTree {
    struct Edge {
        int64_t length;
        int32_t row;    // that ends here, or -1
        int32_t child;  // where the rows go on that are longer, or -1
    };
    struct Branch {  // the edges of one symbol, from the longest to the shortest
        int32_t first = 0;
        int32_t last = 0;
        int64_t most_behind = 0;  // the most positions that a row has behind one of the edges
    };
    std::vector<std::array<Branch, 4>> nodes;
    std::vector<Edge> edges;
};
CodeTree code_tree(std::span<const CodeRow> rows);

// Which value each symbol stands for.
using SymbolValues = std::array<uint8_t, 4>;

// The vmap byte of the values, which are all different.
uint8_t vmap_byte(const SymbolValues& values);

// Codes from `start` on with the longest row each time, at most `bytes` of them. Returns the position behind
// the last one, and in `used` the bytes that it took: fewer only if the end of the sequence was reached,
// which the last row may pass. It returns -1 if no row fits somewhere.
int64_t code_quickly(const ValuePlanes& planes, const CodeTree& tree, const SymbolValues& values,
                     int64_t start, int64_t bytes, int64_t& used);

// The same by a careful search, with the numbers of the rows in `rows`.
int64_t code_well(const ValuePlanes& planes, const CodeTree& tree, const SymbolValues& values, int64_t start,
                  int64_t bytes, std::vector<int32_t>& rows);
