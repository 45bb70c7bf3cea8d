// Games in random endings of up to four pieces against a perfect opponent: the engine never gives a value
// away, and wins what is won.
#include "tests/search/endings.h"

namespace {

class EndingsPlayTest : public EndingsTest {};

TEST_F(EndingsPlayTest, UpToThreePieces) {
    Random random(21);
    Trials trials;
    for (int pieces = 2; pieces <= 3; ++pieces) {
        for (const Material& m : solving_order(pieces)) {
            add_games(trials, m, EGDB_WIN, 8, {2000}, random);
            add_games(trials, m, EGDB_DRAW, 3, {2000}, random);
        }
    }
    print_trials("2 and 3 pieces", trials);
    EXPECT_EQ(trials.wins, trials.won_positions);
    EXPECT_GT(trials.won_positions, 50);
    EXPECT_GT(trials.drawn_positions, 20);
}

TEST_F(EndingsPlayTest, FourKings) {
    Random random(22);
    Trials trials;
    for (const Material& m : {Material{0, 3, 0, 1}, {0, 2, 0, 2}}) {
        add_games(trials, m, EGDB_WIN, 15, {2000}, random);
        add_games(trials, m, EGDB_DRAW, 5, {2000}, random);
    }
    print_trials("4 kings", trials);
    EXPECT_EQ(trials.wins, trials.won_positions);
    EXPECT_GT(trials.won_positions, 15);
    EXPECT_EQ(trials.drawn_positions, 10);
}

}  // namespace
