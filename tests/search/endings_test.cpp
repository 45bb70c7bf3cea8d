// Endings that the books tell of, each by its value in the database and by play; and short forced ends, found
// by going through all lines without the database.
#include <algorithm>
#include <array>

#include "search/search_state.h"
#include "search/table.h"
#include "tests/search/endings.h"
#include "tests/search/forced_end.h"

namespace {

struct KnownEnding {
    const char* fen;
    EgdbValue value;
};

class KnownEndingTest : public EndingsTest, public testing::WithParamInterface<KnownEnding> {};

// What the side to move has in the game, by playing it out.
EgdbValue played_value(const Position& position) {
    Random random(1);
    const EgdbValue known = value_of(position);
    const PlayedGame game = play_ending(position, {}, 200, random);
    EXPECT_FALSE(game.slipped) << fen_of(game.slip);
    if (known == EGDB_WIN) return game.over ? EGDB_WIN : EGDB_UNKNOWN;
    return game.plies == 200 ? EGDB_DRAW : EGDB_UNKNOWN;
}

TEST_P(KnownEndingTest, HasItsValueInTheDatabaseAndInPlay) {
    const Position p = position_of(GetParam().fen);
    ASSERT_EQ(value_of(p), GetParam().value);
    if (!has_capture(p, p.side)) {
        ASSERT_EQ(egdb_engine.wld->lookup(egdb_engine.wld->handle, p, p.side, true), GetParam().value);
    }
    if (GetParam().value != EGDB_LOSS) {
        EXPECT_EQ(played_value(p), GetParam().value);
        return;
    }
    // Lost: whatever is played, the other side then wins.
    MoveList list;
    generate_moves(p, list, p.side);
    for (const Move& move : list) {
        const Position child = position_after(move, p.side ^ 1);
        ASSERT_EQ(value_of(child), EGDB_WIN);
        EXPECT_EQ(played_value(child), EGDB_WIN) << fen_of(child);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Books, KnownEndingTest,
    testing::Values(
        // The opposition: whoever is to move has to give his man.
        KnownEnding{"W:W33:B23", EGDB_LOSS}, KnownEnding{"B:W33:B23", EGDB_LOSS},
        // Kings at both ends of the main road: whoever is to move is taken.
        KnownEnding{"W:WK46:BK5", EGDB_LOSS}, KnownEnding{"B:WK46:BK5", EGDB_LOSS},
        // A man shut in before his promotion: to move he has lost, otherwise the king has to let him through.
        KnownEnding{"W:W6:BK1", EGDB_LOSS}, KnownEnding{"B:W6:BK1", EGDB_DRAW},
        // One king on the main road holds three, and also off it if nothing can be forced at once.
        KnownEnding{"B:WK47,K48,K49:BK28", EGDB_DRAW}, KnownEnding{"W:WK47,K48,K49:BK28", EGDB_DRAW},
        KnownEnding{"B:WK6,K16,K26:BK46", EGDB_DRAW},
        // And a king and two men.
        KnownEnding{"B:WK47,48,49:BK28", EGDB_DRAW},
        // Two kings against one in the open.
        KnownEnding{"W:WK47,K48:BK28", EGDB_DRAW}, KnownEnding{"B:WK47,K48:BK28", EGDB_DRAW},
        // Two kings and the move against a king in the corner of the long side road.
        KnownEnding{"W:WK1,K3:BK45", EGDB_WIN}));

struct Counts {
    int won = 0, drawn = 0, lost = 0;
    [[nodiscard]] double drawn_part() const { return static_cast<double>(drawn) / (won + drawn + lost); }
};

// Of random positions in which neither side can capture.
template <typename Wanted>
Counts count_values(const Material& m, int side, const Wanted& wanted) {
    Random random(3);
    Counts counts;
    while (counts.won + counts.drawn + counts.lost < 1500) {
        Position p =
            position_from_index(static_cast<int64_t>(random() % static_cast<uint64_t>(slice_size(m))), m);
        p.side = side;
        if (has_capture(p, BLACK) || has_capture(p, WHITE) || !wanted(p)) continue;
        const EgdbValue value = value_of(p);
        ++(value == EGDB_WIN ? counts.won : value == EGDB_DRAW ? counts.drawn : counts.lost);
    }
    return counts;
}

constexpr uint64_t MAIN_ROAD = [] {
    uint64_t road = 0;
    for (const int square : {5, 10, 14, 19, 23, 28, 32, 37, 41, 46}) road |= set_of_square(square);
    return road;
}();

TEST_F(EndingsTest, OneKingHoldsTwoAndThree) {
    const auto on_road = [](const Position& p) { return (p.white & MAIN_ROAD) != 0; };
    const auto off_road = [](const Position& p) { return (p.white & MAIN_ROAD) == 0; };
    for (const Material& m : {Material{0, 2, 0, 1}, {0, 3, 0, 1}}) {
        const Counts on = count_values(m, WHITE, on_road), off = count_values(m, WHITE, off_road);
        EXPECT_GT(on.drawn_part(), 0.95);
        EXPECT_GT(off.drawn_part(), 0.95);
        EXPECT_EQ(on.won + off.won, 0);
        // It can be lost, or the database would say too little.
        EXPECT_GT(off.lost, 0);
    }
    // With the move the three strike now and then.
    EXPECT_GT(count_values({0, 3, 0, 1}, BLACK, off_road).won, 50);
}

TEST_F(EndingsTest, ThreeKingsOnTheMainRoadWinOnlyByAStrikeAtOnce) {
    const auto three = [](const Position& p) {
        return bit_count(p.black & MAIN_ROAD) == 3 && !(p.white & MAIN_ROAD);
    };
    const Counts waiting = count_values({0, 3, 0, 1}, WHITE, three);
    EXPECT_EQ(waiting.won, 0);
    EXPECT_GT(waiting.drawn_part(), 0.99);
    const Counts striking = count_values({0, 3, 0, 1}, BLACK, three);
    EXPECT_GT(striking.won, 25);
    EXPECT_GT(striking.drawn_part(), 0.8);
}

// What is forced in a few plies by the rules of the game alone has that value.
TEST_F(EndingsTest, ForcedEndsAreInTheDatabase) {
    Random random(5);
    int wins = 0, losses = 0;
    for (int pieces = 2; pieces <= 4; ++pieces) {
        for (const Material& m : solving_order(pieces)) {
            const int plies = m.bk + m.wk > 1 ? 3 : 5;
            for (int i = 0; i < 120; ++i) {
                const Position p = random_ending(random, m);
                const int end = forced_end(p, plies);
                if (end == 0 || has_capture(p, p.side)) continue;
                ASSERT_EQ(egdb_engine.wld->lookup(egdb_engine.wld->handle, p, p.side, true),
                          end > 0 ? EGDB_WIN : EGDB_LOSS)
                    << fen_of(p);
                ++(end > 0 ? wins : losses);
            }
        }
    }
    EXPECT_GT(wins, 100);
    EXPECT_GT(losses, 5);
}

}  // namespace
