// The byte-code catalogues of the compressed data files.
//
// Each byte of a data file stands for the row of that number in the catalogue of its block: a list of runs of
// symbols, taken in order. Catalogues 0 to 29 use symbols 0, 1 and 2, the others 0 to 3; they differ by how
// long the runs of symbol 0 are. Which value a symbol stands for is told for each block by its vmap byte.
//
// The rows are part of the file format: builder and reader share this one table, which is made by
// `tessarin-cli egdb catalogues` from the run statistics of our own endings, but for catalogue 0.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "egdb/driver.h"

constexpr int CATALOGUES = 50;
constexpr int FIRST_FOUR_SYMBOL_CATALOGUE = 30;
constexpr int CATALOGUE_ROWS = 256;
constexpr uint8_t END_OF_ROW = 6;

// The runs of all rows: a symbol, then the length, low byte first; END_OF_ROW behind the last run of a row.
extern const uint8_t catalogue_entries[];

struct CatalogueTable {
    std::array<uint16_t, CATALOGUE_ROWS> totals;   // how many positions each row stands for, at least one
    std::array<uint32_t, CATALOGUE_ROWS> offsets;  // where each row begins in the entries
    const uint8_t* entries = catalogue_entries;
};
extern const std::array<CatalogueTable, CATALOGUES> catalogues;

inline const CatalogueTable& catalogue(int number) { return catalogues[static_cast<size_t>(number)]; }

// The symbol of position `place` of the row, which is less than the row's total.
inline int catalogue_symbol(const CatalogueTable& table, uint8_t row, int32_t place) {
    const uint8_t* entry = table.entries + table.offsets[row];
    while (true) {
        place -= entry[1] | entry[2] << 8;
        if (place < 0) return entry[0];
        entry += 3;
    }
}

// The value of a symbol by the vmap byte of its block: the field of two bits with its number. A byte in which
// two fields are equal gives 0 for every symbol.
using VmapRow = std::array<uint8_t, 4>;
constexpr std::array<VmapRow, 256> vmap_values = [] {
    std::array<VmapRow, 256> table{};
    for (size_t byte = 0; byte < 256; ++byte) {
        uint32_t seen = 0;
        VmapRow row{};
        for (size_t s = 0; s < 4; ++s) {
            row[s] = static_cast<uint8_t>(byte >> 2 * s & 3);
            seen |= 1u << row[s];
        }
        if (seen == 15) table[byte] = row;
    }
    return table;
}();
