#include "tests/dxp/follower_fixture.h"

std::vector<AppendedGame> appended;
int stats_written = 0;

void FollowerTest::SetUp() {
    FlowTest::SetUp();
    appended.clear();
    stats_written = 0;
    match_hooks.append_match_game = [](const char* black, const char* white, const char* result) {
        appended.push_back({black, white, result, game.history_last});
    };
    match_hooks.write_match_stats = [] { ++stats_written; };
    script.think = answer_with("32-28");
}
