// Forced wins against a search of every line: the engine finds the fastest one and tells its length.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <utility>
#include <vector>

#include "search/search_state.h"
#include "search/table.h"
#include "tests/search/fixtures.h"

namespace {

// Plies to the end of the game with best play within `plies`: positive where the side to move wins, negative
// where it loses, 0 where nothing is forced. A side without a move has lost at once, which is -1; each ply
// more adds one.
int forced_end(const Position& p, int plies) {
    MoveList list;
    if (generate_moves(p, list, p.side) == 0) return -1;
    if (plies == 0) return 0;
    int fastest_win = 0, slowest_loss = 0;
    for (const Move& move : list) {
        const int end = forced_end(position_after(move, p.side ^ 1), plies - 1);
        if (end < 0 && (fastest_win == 0 || 1 - end < fastest_win)) fastest_win = 1 - end;
        if (end == 0) slowest_loss = 1;
        if (end > 0 && slowest_loss <= 0) slowest_loss = std::min(slowest_loss, -1 - end);
    }
    if (fastest_win > 0) return fastest_win;
    return slowest_loss > 0 ? 0 : slowest_loss;
}

class WinTest : public SearchTest {
  protected:
    // As many random positions as asked for whose end is forced within five plies.
    std::vector<std::pair<Position, int>> decided_positions(uint64_t seed, int count) {
        Random random(seed);
        std::vector<std::pair<Position, int>> found;
        std::array<int, 13> by_length{};
        while (static_cast<int>(found.size()) < count) {
            const Position p = random_setup(random, 4, 10 * below(random, 6));
            const int end = forced_end(p, 5);
            if (end == 0) continue;
            int& same = by_length[static_cast<size_t>(end + 6)];
            if (++same > count / 4) continue;  // there are five lengths
            found.push_back({p, end});
        }
        return found;
    }
};

TEST_F(WinTest, TheFastestWinIsFoundAndItsLengthTold) {
    int long_ones = 0;
    for (const auto& [p, end] : decided_positions(51, 60)) {
        ASSERT_EQ(tt_allocate(), 0);
        const Searched found = search_to(p, 11, SEARCH_QUIET | SEARCH_FULL_DEPTH);
        const int for_side = p.side == BLACK ? found.value : -found.value;
        const int plies = std::abs(end) - 1;  // to the position without a move
        EXPECT_EQ(for_side, end > 0 ? 4000 - plies : plies - 4000) << fen_of(p) << " end " << end;
        const int after = forced_end(position_after(found.move, p.side ^ 1), 4);
        if (end > 0) {
            EXPECT_EQ(1 - after, end) << fen_of(p);
        } else {
            EXPECT_EQ(-1 - after, end) << fen_of(p);
        }
        long_ones += plies >= 4;
    }
    EXPECT_GT(long_ones, 5);
}

}  // namespace
