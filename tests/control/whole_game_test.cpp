// Whole games through the timer alone: the engine against itself, and a user against the engine.
#include <chrono>
#include <random>

#include "core/notation.h"
#include "tests/control/game_fixture.h"

namespace {

class WholeGame : public GameTest {};

}  // namespace

TEST_F(WholeGame, TheEnginePlaysItselfToTheEnd) {
    script.think = search_really;
    script.predict = search_really;
    autoplay_command();
    EXPECT_EQ(game.gui_mode, AUTOPLAY_MODE);
    int moves = 0;
    while (game.gui_mode == AUTOPLAY_MODE && moves < 400) {
        const int count = game.history_count;
        finish_search();
        ASSERT_TRUE(game.history_count == count + 1 || game.gui_mode != AUTOPLAY_MODE ||
                    count == MAX_HISTORY);
        ++moves;
    }
    EXPECT_GT(moves, 20);
}
