// Play by the moves to conversion, with the databases that come with the program, against the solver's own
// distances.
#include "egdb/mtc_choice.h"

#include <cstring>

#include "core/board_text.h"
#include "core/notation.h"
#include "egdb/mtc_codes.h"
#include "egdb/mtc_open.h"
#include "tests/search/endings.h"
#include "tools/egdb_mtc_blocks.h"

namespace {

// The endings in which a conversion can be far away: of the positions of up to four pieces that have a number
// all but five.
constexpr std::array<Material, 2> FAR_ONES{{{1, 2, 0, 1}, {0, 3, 0, 1}}};
constexpr int TOLD_POSITIONS = 1442;
constexpr int LEAST_TOLD = 9;  // plies, rounded up to the threshold

class EndingsMtcTest : public EndingsTest {
  protected:
    void SetUp() override {
        EndingsTest::SetUp();
        EgdbOpenRequest request;
        request.folder = PROJECT_FOLDER "/data/mtc_database";
        request.pieces = 4;
        request.cache_megabytes = 1;
        static const OpenEgdb opened = open_mtc(request);
        ASSERT_TRUE(opened);
        egdb_engine.mtc = opened.get();
        mtc = opened.get();
    }

    const EgdbDriver* mtc = nullptr;
};

int distance(const Position& position) {
    const Material m = canonical_position(position, position.side).material;
    return distance_of(real_distances(m), position, position.side);
}

struct Answer {
    int chosen = 0;
    MoveList list;
    int best = -1;
    int mtc = -1;
    char text[MTC_TEXT_SIZE] = "untouched";

    explicit Answer(const Position& position) {
        generate_moves(position, list, position.side);
        chosen = mtc_choose_move(position, position.side, list, best, mtc, text);
    }
};

// All positions of the smaller one that have a number in the files, of both colours.
std::vector<Position> told_positions() {
    const Material& m = FAR_ONES[1];
    const EgdbDriver& mtc = *egdb_engine.mtc;
    std::vector<Position> told;
    for (int side = 0; side < 2; ++side) {
        for (PositionWalk walk(m, 0);; walk.advance()) {
            if (mtc.lookup(mtc.handle, walk.position, side, false) != NO_MTC) {
                Position position = walk.position;
                position.side = side;
                told.push_back(position);
                told.push_back(mirror_position(position));
            }
            if (walk.index + 1 == slice_size(m)) break;
        }
    }
    return told;
}

bool converts(const Position& position, const Move& move) {
    return is_conversion(position, position_after(move, position.side ^ 1));
}

// The moves of the other side that keep exactly to the distance.
Move exact_move(const Position& position, Random& random) {
    MoveList list;
    generate_moves(position, list, position.side);
    std::vector<Move> exact;
    for (const Move& move : list)
        if (!converts(position, move) &&
            distance(position_after(move, position.side ^ 1)) == distance(position) - 1)
            exact.push_back(move);
    EXPECT_FALSE(exact.empty());
    return exact[random() % exact.size()];
}

}  // namespace

// The stored number of the position is the solver's, rounded up.
void check_number(const EgdbDriver& mtc, const Position& position, int side, int distance) {
    ASSERT_EQ(mtc.lookup(mtc.handle, position, side, false), stored_mtc(distance));
}

// From each position with a number the engine plays one side, the solver's distances the other: the distance
// falls by one with every move as long as there is a number.
TEST_F(EndingsMtcTest, EveryMoveKeepsToTheDistance) {
    constexpr int64_t STRIDE = 61;  // of positions without a number
    std::vector<Position> starts;
    for (const Material& m : FAR_ONES) {
        const SolvedDistances& solved = real_distances(m);
        for (int side = 0; side < 2; ++side) {
            for (int64_t i = 0; i < slice_size(m); ++i) {
                const int d = solved.distances[static_cast<size_t>(side)][static_cast<size_t>(i)];
                const bool told = stored_mtc(d) != NO_MTC;
                if (!told && i % STRIDE != 0) continue;
                Position position = position_from_index(i, m);
                position.side = side;
                check_number(*mtc, position, side, d);
                if (told) starts.insert(starts.end(), {position, mirror_position(position)});
            }
        }
    }
    Random random(5);
    int games = 0, won = 0, moves = 0;
    for (const Position& start : starts) {
        Position position = start;
        ++games;
        won += value_of(position) == EGDB_WIN;
        for (;;) {
            const int before = distance(position);
            const Answer answer(position);
            if (!answer.chosen) {
                // All that can be reached is below the threshold.
                ASSERT_LE(before, LEAST_TOLD) << board_diagram(start);
                break;
            }
            const Position reached = position_after(answer.list[answer.best], position.side ^ 1);
            ASSERT_EQ(distance(reached), before - 1) << board_diagram(start) << answer.text;
            ASSERT_EQ(answer.mtc, before - 1) << answer.text;
            ++moves;
            position = position_after(exact_move(reached, random), position.side);
        }
    }
    EXPECT_EQ(games, 2 * TOLD_POSITIONS);
    EXPECT_GT(won, 500);
    EXPECT_GT(games - won, 500);
    EXPECT_GT(moves, 2000);
}

TEST_F(EndingsMtcTest, TheTextListsTheMovesWithTheirNumbers) {
    for (const Position& position : told_positions()) {
        const Answer answer(position);
        if (!answer.chosen) continue;
        const bool wins = value_of(position) == EGDB_WIN;
        std::string text = answer.text;
        const std::string first = text.substr(0, text.find("  "));
        char best[MOVE_TEXT_SIZE];
        move_text(best, position, answer.list[answer.best]);
        EXPECT_EQ(first, std::string(best) + "(" + std::to_string(answer.mtc) + ")*");
        int listed = 0, expected = 0;
        for (size_t at = 0; (at = text.find("  ", at)) != std::string::npos; at += 2) ++listed;
        for (const Move& move : answer.list) {
            const Position reached = position_after(move, position.side ^ 1);
            const bool counts = !wins || value_of(reached) == EGDB_LOSS;
            expected += counts;
            char one[MOVE_TEXT_SIZE];
            move_text(one, position, move);
            const size_t at = (" " + text).find(" " + std::string(one) + "(");
            EXPECT_EQ(at != std::string::npos, counts) << text << one;
            if (!counts) continue;
            const int32_t number = mtc->lookup(mtc->handle, reached, reached.side, false);
            const bool unknown = number < MTC_THRESHOLD;
            EXPECT_EQ(text.compare(at + std::strlen(one), 4, "(?) ") == 0, unknown) << text;
        }
        EXPECT_EQ(listed, expected) << text;
    }
}

TEST_F(EndingsMtcTest, NoMoveInAnyDoubt) {
    const std::vector<Position> told = told_positions();
    const auto number = [&](const Position& p) { return mtc->lookup(mtc->handle, p, p.side, false); };
    const auto won = std::find_if(told.begin(), told.end(), [&](const Position& p) {
        return value_of(p) == EGDB_WIN && number(p) >= 12;
    });
    ASSERT_NE(won, told.end());
    EXPECT_EQ(Answer(*won).chosen, 1);
    const EgdbEngine with = egdb_engine;
    const auto expect_none = [&](const Position& position) {
        const Answer answer(position);
        EXPECT_EQ(answer.chosen, 0);
        EXPECT_EQ(answer.best, -1);
        EXPECT_EQ(answer.mtc, -1);
        EXPECT_STREQ(answer.text, "untouched");
    };
    egdb_engine.mtc = nullptr;
    expect_none(*won);
    egdb_engine = with;
    egdb_engine.wld = nullptr;
    expect_none(*won);
    egdb_engine = with;
    egdb_engine.maxpieces = 3;
    expect_none(*won);
    egdb_engine = with;
    // Lost, and whatever is moved the end is near.
    int near_ends = 0;
    for (const Position& position : told) {
        if (value_of(position) != EGDB_LOSS) continue;
        MoveList list;
        generate_moves(position, list, position.side);
        const bool near = std::none_of(list.begin(), list.end(), [&](const Move& move) {
            return number(position_after(move, position.side ^ 1)) >= MTC_THRESHOLD;
        });
        if (!near) continue;
        expect_none(position);
        ++near_ends;
    }
    EXPECT_GT(near_ends, 0);
    Random random(6);
    for (int i = 0; i < 2000; ++i) {
        const Position position = random_ending(random, FAR_ONES[static_cast<size_t>(i % 2)]);
        if (number(position) == NO_MTC) expect_none(position);
    }
}

TEST_F(EndingsMtcTest, TheEnginePlaysByThem) {
    const std::vector<Position> told = told_positions();
    for (size_t i = 0; i < told.size(); i += 97) {
        const Answer answer(told[i]);
        if (!answer.chosen) continue;
        std::atomic<int32_t> stop{0};
        search_state.Mintime = search_state.max_time = LONG_TIME;
        search_state.game_line = &told[i];
        const Searched found = search_now(told[i], stop);
        EXPECT_EQ(found.move, answer.list[answer.best]);
        EXPECT_EQ(found.value, answer.mtc);
        EXPECT_EQ(found.text, answer.text);
    }
}

TEST(Conversion, CapturesAndMovesOfMen) {
    const auto after = [](Position p, int from, int to, int taken) {
        const uint64_t change = set_of_square(from) | set_of_square(to);
        p.white ^= change;
        if (p.king & set_of_square(from)) p.king ^= change;
        if (taken) p.black ^= set_of_square(taken);
        return p;
    };
    const Position p = position_of("W:W32,K40:B28,K7");
    EXPECT_TRUE(is_conversion(p, after(p, 32, 27, 0)));
    EXPECT_FALSE(is_conversion(p, after(p, 40, 35, 0)));
    EXPECT_TRUE(is_conversion(p, after(p, 32, 23, 28)));
    EXPECT_TRUE(is_conversion(p, after(p, 40, 23, 28)));
    // A man that becomes a king has moved as a man.
    const Position last = position_of("W:W7,K40:BK50");
    Position promoted = after(last, 7, 1, 0);
    promoted.king |= mask_of_square[0];
    EXPECT_TRUE(is_conversion(last, promoted));
}
