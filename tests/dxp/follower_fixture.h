// What the tests of the follower's games share: a game file that is only counted, and beginnings of games.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "tests/dxp/flow_fixture.h"

struct AppendedGame {
    std::string black, white, result;
    int positions;
};
extern std::vector<AppendedGame> appended;
extern int stats_written;

class FollowerTest : public FlowTest {
  protected:
    void SetUp() override;

    // The program plays white and has made its first move.
    void start_as_white() {
        serve({sends(request_from_start('W')), hears(ACCEPTED), hears(move_message_text(32, 28))});
    }
    // It plays black and waits for white's first move.
    void start_as_black() {
        serve({sends(request_from_start('Z')), hears(ACCEPTED)});
        ASSERT_TRUE(run_until([] { return game.gui_mode == DXP_MODE; }));
    }
    // A search that lasts until something ends it.
    static void wait_within_search() {
        ASSERT_TRUE(run_until([] { return script.within.load(); }));
    }
    static bool line_comes(const std::string& line) {
        return run_until([&] { return count_lines(line) > 0; });
    }
    // Lets the search go that begins behind the one that is held.
    static std::jthread release_next_search() {
        return std::jthread([before = script.searches.load()] {
            while (script.searches == before) std::this_thread::yield();
            script.hold = false;
        });
    }
    static void expect_counters(int wins, int draws, int losses, int unknowns) {
        EXPECT_EQ(dxp_state.match_wins, wins);
        EXPECT_EQ(dxp_state.match_draws, draws);
        EXPECT_EQ(dxp_state.match_losses, losses);
        EXPECT_EQ(dxp_state.match_unknowns, unknowns);
    }
    static void expect_filed(const std::string& black, const std::string& white, const std::string& result) {
        ASSERT_EQ(appended.size(), 1u);
        EXPECT_EQ(appended[0].black, black);
        EXPECT_EQ(appended[0].white, white);
        EXPECT_EQ(appended[0].result, result);
    }
};
