#include "core/capture_lines.h"

#include <gtest/gtest.h>

#include <memory>

#include "tests/core/slow_generator.h"
#include "tests/core/test_positions.h"

namespace {

// The moves of a position with their lines.
struct Generated {
    Position position;
    MoveList list;
    std::unique_ptr<CaptureLines> lines = std::make_unique<CaptureLines>();
    int jumps = 0;

    explicit Generated(std::string_view text) : Generated(position_of(text)) {}
    explicit Generated(const Position& p) : position(p) {
        generate_moves_with_lines(position, list, position.side, *lines, jumps);
    }
    const CaptureLine& line(int i) const { return (*lines)[static_cast<size_t>(i)]; }
    // The line of the capture that ends on a square.
    const CaptureLine& line_to(int square) const {
        for (int i = 0; i < list.count; ++i)
            if (pieces_of(list[i], position.side) & ~pieces_of(position, position.side) &
                set_of_square(square))
                return line(i);
        ADD_FAILURE() << "no capture ends on " << square;
        return line(0);
    }
};

std::vector<int> accepted_squares(const CaptureLine& line, int jump, int side) {
    std::vector<int> squares;
    for (int square = 1; square <= SQUARES; ++square)
        if (square_fits_jump(line, jump, side, square)) squares.push_back(square);
    return squares;
}

using Squares = std::vector<int>;

// A king's capture of 19 pieces, the most that a line has room for.
constexpr const char* NINETEEN = "W:WK50:B1,3,7,8,9,10,17,18,19,20,21,23,28,29,30,31,32,34,39,40,41,42,43";

}  // namespace

TEST(CaptureLines, BothKindsOfMovesByOneCall) {
    const Generated quiet("W:W32:B1");
    EXPECT_EQ(quiet.list.count, 2);
    EXPECT_EQ(quiet.jumps, 0);
    const Generated capture("W:W32:B28,19");
    EXPECT_EQ(capture.list.count, 1);
    EXPECT_EQ(capture.jumps, 2);
    const Generated none("W:W:B1");
    EXPECT_EQ(none.list.count, 0);
    EXPECT_EQ(none.jumps, 0);
}

TEST(CaptureLines, StepsShowTakenPiecesAsGone) {
    const Generated g("W:W32:B28,19,9");
    ASSERT_EQ(g.list.count, 1);
    const CaptureLine& line = g.line(0);
    ASSERT_EQ(line.length, 3);
    EXPECT_EQ(line.step(0), move_to(g.position));
    EXPECT_EQ(line.step(1), (Move{set_of_square(19) | set_of_square(9), set_of_square(23), 0}));
    EXPECT_EQ(line.step(2), (Move{set_of_square(9), set_of_square(14), 0}));
    EXPECT_EQ(line.step(3), (Move{0, set_of_square(3), set_of_square(3)}));
    EXPECT_EQ(line.step(3), g.list[0]);
}

// A man that passes its last row, with another line of the same list that ends there.
TEST(CaptureLines, PromotionOnlyInTheLastStep) {
    const Generated g("W:W12:B8,9");
    ASSERT_EQ(g.list.count, 1);
    for (int step = 0; step <= 2; ++step) EXPECT_EQ(g.line(0).step(step).king, 0u);
    const Generated two("W:W22:B18,9,17,7");
    ASSERT_EQ(two.list.count, 2);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(two.line(i).step(1).king, 0u);
        EXPECT_EQ(two.line(i).step(2), two.list[i]);
        EXPECT_EQ(bit_count(two.line(i).step(2).king), 1);
    }
}

TEST(CaptureLines, ALineHoldsNineteenJumps) {
    const Generated g(NINETEEN);
    MoveList list;
    EXPECT_EQ(generate_captures(g.position, list, WHITE), g.list.count);
    ASSERT_EQ(g.list.count, 3);
    EXPECT_EQ(g.jumps, MAX_JUMPS);
    for (int i = 0; i < g.list.count; ++i) {
        EXPECT_EQ(g.line(i).length, MAX_JUMPS);
        EXPECT_EQ(g.line(i).step(MAX_JUMPS), g.list[i]);
        EXPECT_EQ(list[i], g.list[i]);
    }
}

TEST(MoveStepSquares, QuietMove) {
    const Generated g("W:W32:B1");
    uint64_t from = 0, to = 0;
    move_step_squares(0, 0, WHITE, g.position, g.list, *g.lines, from, to);
    EXPECT_EQ(from, set_of_square(32));
    EXPECT_EQ(to, set_of_square(28));
}

TEST(MoveStepSquares, EachStepOfACapture) {
    const Generated g("B:W11,12,21,22,41:B16");
    ASSERT_EQ(g.list.count, 1);
    ASSERT_EQ(g.jumps, 4);
    std::vector<int> landings;
    for (int step = 1; step <= g.jumps; ++step) {
        uint64_t from = 0, to = 0;
        move_step_squares(step, 0, BLACK, g.position, g.list, *g.lines, from, to);
        EXPECT_EQ(from, set_of_square(16));
        landings.push_back(square_of_bit[static_cast<size_t>(lowest_bit(to))] + 1);
    }
    EXPECT_EQ(landings, (Squares{27, 18, 7, 16}));  // round, back to where it started
}

TEST(MoveStepSquares, AgreesWithTheSlowPaths) {
    std::mt19937_64 random(31);
    for (int i = 0; i < 20000; ++i) {
        const Generated g(random_position(random, {1, 4, 1, 10, 50, 80}));
        if (!g.jumps || g.jumps > MAX_JUMPS) continue;
        const std::vector<SlowMove> slow = slow_captures(g.position, g.position.side);
        for (int k = 0; k < g.list.count; ++k) {
            std::vector<int> landings;
            uint64_t from = 0, to = 0;
            for (int step = 1; step <= g.jumps; ++step) {
                move_step_squares(step, k, g.position.side, g.position, g.list, *g.lines, from, to);
                ASSERT_EQ(bit_count(to), 1);
                landings.push_back(square_of_bit[static_cast<size_t>(lowest_bit(to))] + 1);
            }
            ASSERT_EQ(bit_count(from), 1);
            const int start = square_of_bit[static_cast<size_t>(lowest_bit(from))] + 1;
            bool found = false;
            for (const SlowMove& move : slow)
                found |= move.from == start && move.landings == landings && move.result == g.list[k];
            EXPECT_TRUE(found) << letters_of(g.position) << " capture " << k;
        }
    }
}

TEST(DirectionOf, EveryLine) {
    for (int from = 1; from <= SQUARES; ++from) {
        for (int to = 1; to <= SQUARES; ++to) {
            const int dx = column_of(to) - column_of(from), dy = row_of(to) - row_of(from);
            if (from == to || (dx != dy && dx != -dy)) continue;
            const int expected = dy > 0 ? (dx > 0 ? 0 : 1) : (dx > 0 ? 2 : 3);
            EXPECT_EQ(direction_of(from, to), expected) << from << " to " << to;
        }
    }
}

// What is on no line falls to the other direction of its half of the board, and nothing is read beyond a
// table.
TEST(DirectionOf, OddPairs) {
    EXPECT_EQ(direction_of(1, 50), 1);
    EXPECT_EQ(direction_of(50, 1), 3);
    EXPECT_EQ(direction_of(0, 50), 1);
    EXPECT_EQ(direction_of(51, 1), 3);
}

TEST(Captured, ByJumpAndByMask) {
    const Generated g("W:W32:B28,19,9,1");
    const CaptureLine& line = g.line(0);
    EXPECT_EQ(captured_at(line, 0, WHITE), set_of_square(28));
    EXPECT_EQ(captured_at(line, 1, WHITE), set_of_square(19));
    EXPECT_EQ(captured_at(line, 2, WHITE), set_of_square(9));
    EXPECT_TRUE(capture_takes(3, line, WHITE, set_of_square(9)));
    EXPECT_FALSE(capture_takes(2, line, WHITE, set_of_square(9)));
    EXPECT_TRUE(capture_takes(1, line, WHITE, set_of_square(28)));
    EXPECT_FALSE(capture_takes(0, line, WHITE, set_of_square(28)));
    EXPECT_FALSE(capture_takes(3, line, WHITE, set_of_square(1)));
    const Generated black("B:W28,38:B22");
    EXPECT_EQ(captured_at(black.line(0), 1, BLACK), set_of_square(38));
}

TEST(SquareFitsJump, MenExactly) {
    const Generated g("W:W32:B28,19,9");
    EXPECT_EQ(accepted_squares(g.line(0), 0, WHITE), (Squares{23}));
    EXPECT_EQ(accepted_squares(g.line(0), 1, WHITE), (Squares{14}));
    EXPECT_EQ(accepted_squares(g.line(0), 2, WHITE), (Squares{3}));
}

// The king takes 37, 19 and 10 on the long diagonal. Between the first two it may have stopped anywhere; the
// later jumps do not start where the king stood, and take the square of the line.
TEST(SquareFitsJump, TheFirstOfTwoJumpsOnOneLine) {
    const Generated g("W:WK46:B37,19,10");
    ASSERT_EQ(g.jumps, 3);
    const CaptureLine& line = g.line(0);
    EXPECT_EQ(accepted_squares(line, 0, WHITE), (Squares{23, 28, 32}));
    EXPECT_EQ(accepted_squares(line, 1, WHITE), (Squares{14}));
    EXPECT_EQ(accepted_squares(line, 2, WHITE), (Squares{5}));
    const Generated wide("W:WK46:B41,28,10");
    EXPECT_EQ(accepted_squares(wide.line(0), 0, WHITE), (Squares{32, 37}));
    EXPECT_EQ(accepted_squares(wide.line(0), 1, WHITE).size(), 1u);  // of 23, 19 and 14, which were as good
}

TEST(SquareFitsJump, TurningJumpsExactly) {
    const Generated g("W:WK6:B17,18");
    ASSERT_EQ(g.jumps, 2);
    EXPECT_EQ(accepted_squares(g.line_to(13), 0, WHITE), (Squares{22}));
    EXPECT_EQ(accepted_squares(g.line_to(13), 1, WHITE), (Squares{13}));
    EXPECT_EQ(accepted_squares(g.line_to(4), 1, WHITE), (Squares{4}));
}

TEST(SquareFitsJump, ALastJumpExactly) {
    const Generated g("W:WK46:B37");
    EXPECT_EQ(accepted_squares(g.line_to(23), 0, WHITE), (Squares{23}));
    EXPECT_EQ(accepted_squares(g.line_to(5), 0, WHITE), (Squares{5}));
    // What an earlier capture left behind the end of the line, here a jump straight on, plays no part.
    CaptureLine line = g.line_to(23);
    line.steps[2] = {line.step(1).black, set_of_square(5), set_of_square(5)};
    EXPECT_EQ(accepted_squares(line, 0, WHITE), (Squares{23}));
    EXPECT_FALSE(square_fits_jump(g.line(0), 0, WHITE, 0));
    EXPECT_FALSE(square_fits_jump(g.line(0), 0, WHITE, 51));
}

// The king comes back to its own square in mid-capture and goes on from there in one line: the wide test
// again.
TEST(SquareFitsJump, ALaterJumpFromTheKingsOwnSquare) {
    const Generated g("W:WK28:B32,33,42,43,23,10");
    int found = 0;
    for (int i = 0; i < g.list.count; ++i) {
        const CaptureLine& line = g.line(i);
        for (int jump = 1; jump + 1 < line.length; ++jump) {
            if (line.step(jump).white != set_of_square(28)) continue;
            ++found;
            EXPECT_EQ(accepted_squares(line, jump, WHITE), (Squares{14, 19}));
        }
    }
    EXPECT_EQ(found, 1);
}

TEST(SquareOnPath, AllLandingSquaresButTheLast) {
    const Generated g("W:W32:B28,19,9");
    const CaptureLine& line = g.line(0);
    std::vector<int> squares;
    for (int square = 1; square <= SQUARES; ++square)
        if (square_on_path(line.length, line, WHITE, square)) squares.push_back(square);
    EXPECT_EQ(squares, (Squares{14, 23}));
    const Generated one("W:W32:B28");
    for (int square = 1; square <= SQUARES; ++square)
        EXPECT_FALSE(square_on_path(1, one.line(0), WHITE, square)) << square;
}
