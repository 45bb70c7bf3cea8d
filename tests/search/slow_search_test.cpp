// The engine against the slow search: the same value, move, nodes, leaves and lookups, and afterwards the
// same history and the same table, entry by entry; over searches that inherit the table from one another.
#include <algorithm>
#include <ostream>

#include "records/fen.h"
#include "search/forced.h"
#include "search/search_state.h"
#include "search/table.h"
#include "search/thread_record.h"
#include "tests/search/fixtures.h"
#include "tests/search/slow_search.h"

namespace {

class SlowSearchTest : public SearchTest {
  protected:
    // The same database for both. `salt` of 0 means none.
    void use_database(SlowSearch& slow, uint64_t salt, const SlowDatabase& limits) {
        slow.database = limits;
        database_answer = slow.database.lookup = [salt](const Position& p, int side, bool conditional) {
            EXPECT_EQ(p.side, side);
            EXPECT_FALSE(has_capture(p, side)) << fen_of(p);
            const uint64_t mix = mix_of(p, side, salt);
            // A third of the blocks is never in memory.
            if (conditional && mix >> 32 & 1 && mix >> 33 & 1) return EGDB_NOT_IN_CACHE;
            constexpr EgdbValue VALUES[] = {
                EGDB_UNKNOWN, EGDB_WIN,          EGDB_LOSS,        EGDB_DRAW,
                EGDB_DRAW,    EGDB_DRAW_OR_LOSS, EGDB_WIN_OR_DRAW, EGDB_SUBDB_UNAVAILABLE};
            return VALUES[mix >> 40 & 7];
        };
        open_database(limits.maxpieces, limits.maxpieces_1side, limits.maxkings_9pcs,
                      limits.maxkings_1side_8pcs, limits.no_side_captures);
    }
};

uint64_t engine_leaves() { return thread_records[0].leaf_count; }

// Every field of every entry.
void expect_same_table(const SlowSearch& slow) {
    ASSERT_EQ(slow.slots.size(), transposition_table.slots);
    int different = 0;
    for (size_t i = 0; i < slow.slots.size(); ++i) {
        const SlowEntry& a = slow.slots[i];
        const TTEntry b = TTEntry::from_word(transposition_table.slots_start[i].load());
        const bool same = a.used ? !b.free() && (b.check ^ b.info) == a.hash1 && b.value() == a.value &&
                                       b.depth_field() == a.depth_field && b.pv_mark() == a.mark &&
                                       b.move_index() == a.index && static_cast<int>(b.type()) == a.type
                                 : b.free();
        different += !same;
    }
    EXPECT_EQ(different, 0);
}

void expect_same_history(const SlowSearch& slow) {
    int different = 0;
    for (size_t from = 0; from < BOARD_BITS; ++from)
        for (size_t to = 0; to < BOARD_BITS; ++to)
            different += slow.history[from][to] != search_state.history[from * BOARD_BITS + to];
    EXPECT_EQ(different, 0);
}

struct Task {
    Position position;
    int depth;
    bool by_one = false;
    bool full_depth = true;
    const Position* line = nullptr;
};

void compare(SlowSearch& slow, const Task& task) {
    const Position& p = task.position;
    SCOPED_TRACE(fen_of(p) + " depth " + std::to_string(task.depth));
    search_state.game_line = task.line;
    const uint32_t flags = SEARCH_QUIET | (task.full_depth ? SEARCH_FULL_DEPTH : 0u);
    const Searched fast = search_to(p, task.depth, flags, task.by_one);
    const SlowResult want =
        slow.search(p, p.side, task.line, task.depth, task.by_one ? 1 : 2, task.full_depth);
    MoveList list;
    generate_moves(p, list, p.side);
    EXPECT_EQ(fast.value, want.value);
    EXPECT_EQ(find_move(list, fast.move), want.best_index);
    EXPECT_EQ(fast.searched, want.forced ? 0 : 1);
    EXPECT_EQ(search_state.completed_depth, want.completed_depth);
    EXPECT_EQ(searched_nodes(), want.nodes);
    EXPECT_EQ(engine_leaves(), want.leaves);
    EXPECT_EQ(thread_records[0].leaf_ply_sum, want.leaf_plies);
    EXPECT_EQ(search_state.highest_ply, want.highest_ply);
    EXPECT_EQ(search_state.egdb_lookups, want.lookups);
    expect_same_history(slow);
    expect_same_table(slow);
}

// Fails at the first position that differs: all that come after it inherit the difference.
#define COMPARE(slow, ...)          \
    do {                            \
        compare(slow, __VA_ARGS__); \
        if (HasFailure()) return;   \
    } while (false)

const SlowDatabase SIX_PIECES{nullptr, 6, 5, 0, 0, false};
const SlowDatabase SEVEN_PIECES{nullptr, 7, 4, 0, 0, true};
const SlowDatabase EIGHT_PIECES{nullptr, 8, 5, 0, 2, true};
const SlowDatabase NINE_PIECES{nullptr, 9, 5, 2, 3, true};

TEST_F(SlowSearchTest, RandomPlay) {
    Random random(11);
    SlowSearch slow(1);
    for (int i = 0; i < 150; ++i)
        COMPARE(slow, {random_play(random, below(random, 90)), 7, i % 3 == 0, i % 2 == 0});
    for (int i = 0; i < 30; ++i)
        COMPARE(slow, {random_play(random, below(random, 80)), 9 + i % 3, i % 2 == 0, true});
}

TEST_F(SlowSearchTest, RealGames) {
    Random random(12);
    SlowSearch slow(1);
    int i = 0;
    for (const Position& p : real_positions(random, 1)) COMPARE(slow, {p, ++i % 10 == 0 ? 10 : 7});
}

TEST_F(SlowSearchTest, Endings) {
    Random random(13);
    SlowSearch slow(1);
    for (int i = 0; i < 300; ++i) {
        const Position p = random_setup(random, 2 + i % 4, 20 * (i % 6));
        COMPARE(slow, {p, 8 + i % 4, i % 5 == 0, i % 2 == 0});
    }
}

TEST_F(SlowSearchTest, DatabaseOfSixPieces) {
    Random random(14);
    SlowSearch slow(1);
    for (int i = 0; i < 300; ++i) {
        use_database(slow, 1 + random() % 5, SIX_PIECES);
        COMPARE(slow, {random_setup(random, 3 + i % 4, 15 * (i % 5)), 8 + i % 4, i % 5 == 0, i % 2 == 0});
    }
}

TEST_F(SlowSearchTest, DatabasesOfMorePieces) {
    Random random(15);
    SlowSearch slow(1);
    for (int i = 0; i < 300; ++i) {
        use_database(slow, 1 + random() % 5,
                     i % 3 == 0   ? SEVEN_PIECES
                     : i % 3 == 1 ? EIGHT_PIECES
                                  : NINE_PIECES);
        COMPARE(slow, {random_setup(random, 3 + i % 6, 12 * (i % 5)), 7 + i % 5, i % 5 == 0, i % 2 == 0});
    }
}

TEST_F(SlowSearchTest, GameLinesThatRepeat) {
    Random random(16);
    SlowSearch slow(1);
    for (int i = 0; i < 200; ++i) {
        const Position start = random_setup(random, 2 + i % 2, 90);
        const std::vector<Position> line = king_line(random, start, 1 + i % 12);
        MoveList list;
        if (generate_moves(line[0], list, line[0].side) == 0) continue;
        use_database(slow, 7, i % 2 ? SIX_PIECES : SlowDatabase{});
        COMPARE(slow, {line[0], 8 + i % 4, i % 5 == 0, i % 2 == 0, line.data()});
    }
}

}  // namespace
