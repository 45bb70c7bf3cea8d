// Counts that take many seconds each; run them with the label "deep".
#include <gtest/gtest.h>

#include "core/perft.h"
#include "tests/core/test_positions.h"

TEST(PerftDeep, Start) { EXPECT_EQ(perft(START_POSITION, 11), 1665861398u); }

TEST(PerftDeep, Middlegame) {
    const Position position = position_of("W:W25,27,28,30,32,33,34,35,37,38:B12,13,14,16,18,19,21,23,24,26");
    EXPECT_EQ(perft(position, 15), 346184885u);
}

TEST(PerftDeep, Kings) {
    const Position position = position_of("B:W6,9,10,11,20,21,22,23,30,K31,33,37,41,42,43,44,46:BK17,K24");
    EXPECT_EQ(perft(position, 9), 1216917193u);
}
