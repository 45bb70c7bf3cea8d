// The games of endings_play_test.cpp from many positions of every material, both as the search chooses and as
// the databases correct it.
#include <cstdio>
#include <string>

#include "tests/search/endings.h"

namespace {

// From each material, in both ways.
constexpr int WON_GAMES = 60;
constexpr int DRAWN_GAMES = 20;

class EndingsDeepTest : public EndingsTest {};

TEST_F(EndingsDeepTest, EveryMaterial) {
    Random random(31);
    std::array<Trials, 2> all;
    for (int pieces = 2; pieces <= 4; ++pieces) {
        for (const Material& m : solving_order(pieces)) {
            std::string name;
            for (const int count : {m.bm, m.bk, m.wm, m.wk}) name += std::to_string(count);
            for (const bool checked : {false, true}) {
                const Thinking thinking{5000, MAX_DEPTH, checked};
                Trials trials;
                add_games(trials, m, EGDB_WIN, WON_GAMES, thinking, random);
                add_games(trials, m, EGDB_DRAW, DRAWN_GAMES, thinking, random);
                print_trials((name + (checked ? " checked" : " unchecked")).c_str(), trials);
                std::fflush(stdout);
                add_trials(all[checked], trials);
            }
        }
    }
    print_trials("all unchecked", all[0]);
    print_trials("all checked", all[1]);
    for (const Trials& t : all) {
        EXPECT_EQ(t.slips, 0);
        EXPECT_EQ(t.wins, t.won_positions);
        EXPECT_GT(t.won_positions, 1000);
    }
}

}  // namespace
