#include "egdb/catalogues.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace {

using Runs = std::vector<std::pair<int, int>>;  // symbol, length

Runs row(int number, int byte) {
    Runs runs;
    const CatalogueTable& table = catalogue(number);
    for (const uint8_t* e = catalogue_entries + table.offsets[static_cast<size_t>(byte)]; *e != END_OF_ROW;
         e += 3)
        runs.emplace_back(e[0], e[1] | e[2] << 8);
    return runs;
}

int longest(int number) {
    const auto& totals = catalogue(number).totals;
    return *std::max_element(totals.begin(), totals.end());
}

TEST(Catalogues, CatalogueZero) {
    for (int b = 0; b <= 30; ++b) EXPECT_EQ(row(0, b), (Runs{{0, 93 + b}}));
    for (int b = 31; b <= 61; ++b) EXPECT_EQ(row(0, b), (Runs{{0, 123 + 124 * (b - 30)}}));
    EXPECT_EQ(row(0, 62), (Runs{{0, 7935}}));
    EXPECT_EQ(row(0, 63), (Runs{{0, 15871}}));
    for (int j = 0; j <= 91; ++j) {
        EXPECT_EQ(row(0, 64 + 2 * j), (Runs{{0, 92 - j}, {1, 1}}));
        EXPECT_EQ(row(0, 65 + 2 * j), (Runs{{0, 92 - j}, {2, 1}}));
    }
    const int lengths[] = {1, 3, 7, 15};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(row(0, 248 + i), (Runs{{1, lengths[i]}}));
        EXPECT_EQ(row(0, 252 + i), (Runs{{2, lengths[i]}}));
    }
}

TEST(Catalogues, WhatIsToldOfTheOthers) {
    EXPECT_EQ(row(1, 0), (Runs{{0, 90}, {1, 1}}));
    EXPECT_EQ(longest(0), 15871);
    EXPECT_EQ(longest(1), 15127);
    EXPECT_EQ(longest(4), 7303);
    EXPECT_EQ(longest(29), 1259);
    EXPECT_EQ(longest(30), 6971);
    EXPECT_EQ(longest(49), 1287);
    for (int c = 1; c < CATALOGUES; ++c) {
        if (c == FIRST_FOUR_SYMBOL_CATALOGUE) continue;
        EXPECT_LT(longest(c), longest(c - 1));
    }
}

TEST(Catalogues, RowsAreWellFormed) {
    for (int c = 0; c < CATALOGUES; ++c) {
        const int symbols = c < FIRST_FOUR_SYMBOL_CATALOGUE ? 3 : 4;
        std::vector<Runs> rows;
        for (int b = 0; b < CATALOGUE_ROWS; ++b) {
            const Runs runs = row(c, b);
            ASSERT_GE(runs.size(), 1u);
            ASSERT_LE(runs.size(), 5u);
            int total = 0;
            for (const auto& [symbol, length] : runs) {
                ASSERT_LT(symbol, symbols);
                ASSERT_GE(length, 1);
                total += length;
            }
            ASSERT_EQ(catalogue(c).totals[static_cast<size_t>(b)], total);
            rows.push_back(runs);
        }
        std::sort(rows.begin(), rows.end());
        EXPECT_EQ(std::unique(rows.begin(), rows.end()), rows.end()) << "catalogue " << c;
    }
}

// Whatever the values are, there is always a row that fits. In catalogue 0 a lone symbol 0 needs another
// symbol behind it or the end of the data.
TEST(Catalogues, EverySymbolCanStandAlone) {
    for (int c = 1; c < CATALOGUES; ++c) {
        for (int s = 0; s < (c < FIRST_FOUR_SYMBOL_CATALOGUE ? 3 : 4); ++s) {
            bool found = false;
            for (int b = 0; b < CATALOGUE_ROWS; ++b) found |= row(c, b) == Runs{{s, 1}};
            EXPECT_TRUE(found) << c << " " << s;
        }
    }
}

TEST(Catalogues, SymbolsOfARow) {
    for (int c = 0; c < CATALOGUES; c += 7) {
        for (int b = 0; b < CATALOGUE_ROWS; ++b) {
            int place = 0;
            for (const auto& [symbol, length] : row(c, b)) {
                for (int i = 0; i < length; ++i, ++place)
                    ASSERT_EQ(catalogue_symbol(catalogue(c), static_cast<uint8_t>(b), place), symbol);
            }
        }
    }
}

TEST(Catalogues, ValueMaps) {
    EXPECT_EQ(vmap_values[228], (VmapRow{0, 1, 2, 3}));
    EXPECT_EQ(vmap_values[0x1b], (VmapRow{3, 2, 1, 0}));
    EXPECT_EQ(vmap_values[0], (VmapRow{0, 0, 0, 0}));
    EXPECT_EQ(vmap_values[229], (VmapRow{0, 0, 0, 0}));  // two fields are equal
    const auto used = std::count_if(vmap_values.begin(), vmap_values.end(),
                                    [](const VmapRow& values) { return values != VmapRow{}; });
    EXPECT_EQ(used, 24);
}

}  // namespace
