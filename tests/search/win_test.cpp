// Forced wins against a search of every line: the engine finds the fastest one and tells its length.
#include <cstdlib>

#include "search/table.h"
#include "tests/search/fixtures.h"
#include "tests/search/forced_end.h"

namespace {

class WinTest : public SearchTest {};

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
