// The way of a move over the board, and how it is shown in time.
#include "shell/board_move.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "shell/board_geometry.h"
#include "shell/board_slide.h"
#include "tests/core/test_positions.h"

namespace {

std::vector<int> stops_of(const BoardMove& move) {
    return {move.squares.begin(), move.squares.begin() + move.stops};
}

BoardMove move_by(const Position& before, const char* after, int side) {
    BoardMove move;
    EXPECT_TRUE(move_between(before, position_of(after), side, move)) << after;
    return move;
}

TEST(BoardMove, QuietMove) {
    const BoardMove move = move_by(position_of("W:W32:B1"), "B:W28:B1", WHITE);
    EXPECT_EQ(stops_of(move), (std::vector<int>{32, 28}));
    EXPECT_EQ(move.jumps, 0);
    EXPECT_EQ(move.from(), 32);
    EXPECT_EQ(move.to(), 28);
}

TEST(BoardMove, CaptureOfTwo) {
    const BoardMove move = move_by(position_of("W:W32:B28,19,1"), "B:W14:B1", WHITE);
    EXPECT_EQ(stops_of(move), (std::vector<int>{32, 23, 14}));
    EXPECT_EQ(move.jumps, 2);
    EXPECT_EQ(move.taken[0], 28);
    EXPECT_EQ(move.taken[1], 19);
}

TEST(BoardMove, NoMoveLeadsThere) {
    BoardMove move;
    move.stops = 7;
    const Position before = position_of("W:W32,33:B1");
    EXPECT_FALSE(move_between(before, before, WHITE, move));
    EXPECT_FALSE(move_between(before, position_of("B:W28,29:B1"), WHITE, move)) << "two moves";
    EXPECT_FALSE(move_between(before, position_of("B:W28,33:B1"), BLACK, move)) << "the other side's";
    EXPECT_FALSE(move_between(before, position_of("B:W23,33:B1"), WHITE, move)) << "too far";
    EXPECT_FALSE(move_between(before, position_of("B:W28,33:B1,2"), WHITE, move)) << "a piece more";
    EXPECT_EQ(move.stops, 7);
}

TEST(BoardMove, EveryMoveOfRandomPositionsIsFound) {
    std::mt19937_64 random(6);
    long captures = 0, rounds = 0;
    for (int i = 0; i < 4000; ++i) {
        const Position before = random_position(random, {1, 5, 2, 10, 40, 80});
        MoveList list;
        generate_moves(before, list, before.side);
        for (const Move& result : list) {
            BoardMove move;
            ASSERT_TRUE(move_between(before, position_after(result, before.side ^ 1), before.side, move));
            const uint64_t own = pieces_of(before, before.side);
            ASSERT_EQ((own & ~set_of_square(move.from())) | set_of_square(move.to()),
                      pieces_of(result, before.side));
            uint64_t taken = 0;
            for (int jump = 0; jump < move.jumps; ++jump)
                taken |= set_of_square(move.taken[static_cast<size_t>(jump)]);
            ASSERT_EQ(taken, pieces_of(before, before.side ^ 1) & ~pieces_of(result, before.side ^ 1));
            ASSERT_EQ(move.stops, std::max(move.jumps, 1) + 1);
            captures += move.jumps > 0;
            rounds += move.from() == move.to();
        }
    }
    EXPECT_GT(captures, 100);
    EXPECT_GT(rounds, 0);
}

TEST(BoardSlide, GoesFromStopToStop) {
    const BoardMove move = move_by(position_of("W:W32:B28,19,1"), "B:W14:B1", WHITE);
    const auto at = [](const SlideFrame& frame, int square) {
        const BoardPlace place = place_of_square(square - 1, false);
        return std::abs(frame.column - place.column) < 1e-9 && std::abs(frame.row - place.row) < 1e-9;
    };
    EXPECT_TRUE(at(slide_frame(move, 0), 32));
    EXPECT_TRUE(at(slide_frame(move, -5), 32));
    EXPECT_TRUE(at(slide_frame(move, (FIRST_SLIDE_MS + FURTHER_SLIDE_MS) / 2.0), 23));
    EXPECT_TRUE(at(slide_frame(move, FIRST_SLIDE_MS + FURTHER_SLIDE_MS), 14));
    EXPECT_TRUE(at(slide_frame(move, 1e6), 14));
    EXPECT_FALSE(slide_frame(move, FIRST_SLIDE_MS).arrived);
    EXPECT_TRUE(slide_frame(move, FIRST_SLIDE_MS + FURTHER_SLIDE_MS).arrived);
}

TEST(BoardSlide, TakenPiecesFadeOneAfterTheOther) {
    const BoardMove move = move_by(position_of("W:W32:B28,19,1"), "B:W14:B1", WHITE);
    SlideFrame last = slide_frame(move, 0);
    EXPECT_EQ(last.left[0], 1);
    EXPECT_EQ(last.left[1], 1);
    const int end = slide_duration(move);
    for (int ms = 1; ms <= end; ++ms) {
        const SlideFrame frame = slide_frame(move, ms);
        for (size_t jump : {0u, 1u}) EXPECT_LE(frame.left[jump], last.left[jump]);
        EXPECT_LE(frame.left[0], frame.left[1]);
        last = frame;
    }
    EXPECT_EQ(last.left[0], 0);
    EXPECT_EQ(last.left[1], 0);
    EXPECT_EQ(slide_duration(move_by(position_of("W:W32:B1"), "B:W28:B1", WHITE)), FIRST_SLIDE_MS);
}

TEST(BoardSlide, IsOverBeforeThePauseBehindAMoveOfTheEngine) {
    BoardMove move;
    move.jumps = MAX_JUMPS;
    move.stops = MAX_JUMPS + 1;
    move.squares.fill(1);
    EXPECT_TRUE(slide_frame(move, 500).arrived);
}

}  // namespace
