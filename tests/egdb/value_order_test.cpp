// The comparisons of values, entry by entry.
#include "egdb/value_order.h"

#include <gtest/gtest.h>

namespace {

constexpr EgdbValue VALUES[] = {
    EGDB_SUBDB_UNAVAILABLE, EGDB_NOT_IN_CACHE, EGDB_UNKNOWN, EGDB_WIN, EGDB_LOSS, EGDB_DRAW,
    EGDB_DRAW_OR_LOSS,      EGDB_WIN_OR_DRAW};
constexpr int COUNT = 8;

// Rows by the second argument and columns by the first, both from -2 to 5.
using Table = int[COUNT][COUNT];

TEST(ValueOrder, TheOtherSide) {
    constexpr int NEGATED[] = {-2, -1, 0, 2, 1, 3, 5, 4};
    for (int i = 0; i < COUNT; ++i) EXPECT_EQ(negated(VALUES[i]), NEGATED[i]);
}

TEST(ValueOrder, TheBestOfTwo) {
    //                        -2  -1   0   1   2   3   4   5
    constexpr Table BEST = {{-2, -2, -2, 1, -2, 5, -2, 5},     // unavailable
                            {-1, -1, -1, -1, -1, -1, -1, -1},  // not in cache
                            {0, 0, 0, 1, 0, 5, 0, 5},          // unknown
                            {1, 1, 1, 1, 1, 1, 1, 1},          // win
                            {-2, -1, 0, 1, 2, 3, 4, 5},        // loss
                            {5, 3, 5, 1, 3, 3, 3, 5},          // draw
                            {-2, -1, 0, 1, 4, 3, 4, 5},        // draw or loss
                            {5, 5, 5, 1, 5, 5, 5, 5}};         // win or draw
    for (int row = 0; row < COUNT; ++row)
        for (int i = 0; i < COUNT; ++i)
            EXPECT_EQ(best_of(VALUES[i], VALUES[row]), BEST[row][i]) << VALUES[i] << " " << VALUES[row];
}

TEST(ValueOrder, WhatRaisesAlpha) {
    constexpr Table BETTER = {{0, 1, 0, 1, 0, 1, 1, 1},   // unavailable
                              {0, 1, 0, 1, 0, 1, 1, 1},   // not in cache
                              {0, 1, 0, 1, 0, 1, 1, 1},   // unknown
                              {0, 0, 0, 0, 0, 0, 0, 0},   // win
                              {1, 1, 1, 1, 0, 1, 1, 1},   // loss
                              {0, 0, 0, 1, 0, 0, 0, 1},   // draw
                              {1, 1, 1, 1, 0, 1, 1, 1},   // draw or loss
                              {0, 0, 0, 1, 0, 0, 0, 0}};  // win or draw
    for (int row = 0; row < COUNT; ++row)
        for (int i = 0; i < COUNT; ++i)
            EXPECT_EQ(better(VALUES[i], VALUES[row]), BETTER[row][i] == 1) << VALUES[i] << " " << VALUES[row];
}

TEST(ValueOrder, WhatReachesBeta) {
    constexpr Table CUTS = {{1, 1, 1, 1, 0, 1, 1, 1},   // unavailable
                            {1, 1, 1, 1, 1, 1, 1, 1},   // not in cache
                            {1, 1, 1, 1, 0, 1, 1, 1},   // unknown
                            {0, 0, 0, 1, 0, 0, 0, 0},   // win
                            {1, 1, 1, 1, 1, 1, 1, 1},   // loss
                            {0, 0, 0, 1, 0, 1, 0, 1},   // draw
                            {0, 0, 0, 1, 0, 1, 1, 1},   // draw or loss
                            {0, 0, 0, 1, 0, 0, 0, 1}};  // win or draw
    for (int row = 0; row < COUNT; ++row)
        for (int i = 0; i < COUNT; ++i)
            EXPECT_EQ(cuts(VALUES[i], VALUES[row]), CUTS[row][i] == 1) << VALUES[i] << " " << VALUES[row];
}

}  // namespace
