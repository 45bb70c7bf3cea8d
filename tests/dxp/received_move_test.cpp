// Which legal move a received one means.
#include "dxp/received_move.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "core/capture_lines.h"
#include "records/fen.h"

namespace {

DxpMove told(int from, int to, const std::vector<int>& jumped = {}) {
    DxpMove move;
    move.from = static_cast<int16_t>(from);
    move.to = static_cast<int16_t>(to);
    move.jumped_count = static_cast<int16_t>(jumped.size());
    for (size_t i = 0; i < jumped.size(); ++i) move.jumped[i] = static_cast<int16_t>(jumped[i]);
    return move;
}

struct Board {
    Position position{};
    int side = WHITE;

    explicit Board(const char* fen) { EXPECT_EQ(fen_to_position(fen, position, side), 0) << fen; }
    MoveMatch match(const DxpMove& move) const { return match_received_move(move, position, side); }
};

// Each move as its own squares tell it, the captured ones in the given order.
DxpMove own_words(const Position& position, int side, int index, std::mt19937& random) {
    MoveList list;
    CaptureLines lines;
    int jumps = 0;
    generate_moves_with_lines(position, list, side, lines, jumps);
    uint64_t from = 0, to = 0;
    move_step_squares(jumps, index, side, position, list, lines, from, to);
    std::vector<int> jumped;
    for (int jump = 0; jump < jumps; ++jump)
        jumped.push_back(square_number(captured_at(lines[static_cast<size_t>(index)], jump, side)));
    std::shuffle(jumped.begin(), jumped.end(), random);
    return told(square_number(from), square_number(to), jumped);
}

}  // namespace

TEST(ReceivedMove, AQuietMoveIsKnownByItsSquares) {
    const Board board("W:W31-50:B1-20");
    const MoveMatch match = board.match(told(32, 28));
    EXPECT_EQ(match.moves, 9);
    EXPECT_GE(match.index, 0);
    EXPECT_FALSE(match.wrong_count);
    EXPECT_EQ(match.move.white & mask_of_square[27], mask_of_square[27]);
    EXPECT_EQ(match.move.white & mask_of_square[31], 0u);
}

TEST(ReceivedMove, WhatNoMoveFitsIsTheFirstMove) {
    const Board board("W:W31-50:B1-20");
    MoveList list;
    generate_moves(board.position, list, WHITE);
    for (const DxpMove& move :
         {told(32, 27, {}), told(32, 29), told(0, 0), told(28, 32), told(-5, 99), told(20, 25)}) {
        const MoveMatch match = board.match(move);
        const bool legal = move.from == 32 && move.to == 27;
        EXPECT_EQ(match.index >= 0, legal) << move.from << "-" << move.to;
        if (!legal) {
            EXPECT_EQ(match.move, list[0]);
        }
    }
}

TEST(ReceivedMove, CapturedSquaresMayStandInAnyOrder) {
    // 28x10 over 23 and 14, or over none else.
    const Board board("W:W28:B23,14");
    ASSERT_EQ(board.match(told(28, 10, {23, 14})).moves, 1);
    EXPECT_GE(board.match(told(28, 10, {23, 14})).index, 0);
    EXPECT_GE(board.match(told(28, 10, {14, 23})).index, 0);
    EXPECT_LT(board.match(told(28, 10, {23})).index, 0);
    EXPECT_LT(board.match(told(28, 10, {23, 14, 9})).index, 0);
    EXPECT_LT(board.match(told(28, 10, {23, 23})).index, 0);
    EXPECT_LT(board.match(told(28, 10, {23, 13})).index, 0);
    EXPECT_LT(board.match(told(28, 19, {23, 14})).index, 0);
}

// Kings among many pieces often have several captures between the same squares.
TEST(ReceivedMove, CapturesWithTheSameSquaresAreToldApartByWhatTheyTake) {
    std::mt19937 random(1);
    int pairs = 0;
    for (int n = 0; n < 20000; ++n) {
        Position position{};
        position.white = mask_of_square[random() % SQUARES];
        position.king = position.white;
        for (int i = 0; i < 14; ++i) position.black |= mask_of_square[random() % SQUARES];
        position.black &= ~(position.white | BLACK_PROMOTION_ROW);
        MoveList list;
        const int count = generate_captures(position, list, WHITE);
        for (int i = 0; i < count; ++i) {
            const DxpMove move = own_words(position, WHITE, i, random);
            ASSERT_EQ(match_received_move(move, position, WHITE).move, list[i]);
            for (int j = 0; j < i; ++j) {
                const DxpMove other = own_words(position, WHITE, j, random);
                if (other.from != move.from || other.to != move.to || list[i] == list[j]) continue;
                ++pairs;
                ASSERT_NE(match_received_move(move, position, WHITE).index,
                          match_received_move(other, position, WHITE).index);
            }
        }
    }
    EXPECT_GT(pairs, 10);
}

TEST(ReceivedMove, TheCountMustSayWhetherItIsACapture) {
    const Board capture("W:W28:B23,14");
    EXPECT_TRUE(capture.match(told(28, 10)).wrong_count);
    EXPECT_LT(capture.match(told(28, 10)).index, 0);
    EXPECT_FALSE(capture.match(told(28, 10, {23})).wrong_count) << "a wrong count, but a capture's";
    const Board quiet("W:W28:B1");
    EXPECT_FALSE(quiet.match(told(28, 22)).wrong_count);
    const MoveMatch match = quiet.match(told(28, 22, {17}));
    EXPECT_TRUE(match.wrong_count);
    EXPECT_GE(match.index, 0) << "start and end are enough";
    DxpMove negative = told(28, 22);
    negative.jumped_count = -3;
    EXPECT_TRUE(quiet.match(negative).wrong_count);
    negative.jumped_count = 99;
    EXPECT_TRUE(quiet.match(negative).wrong_count);
    DxpMove too_many = told(28, 10, {23, 14});
    too_many.jumped_count = 99;
    EXPECT_LT(capture.match(too_many).index, 0);
}

TEST(ReceivedMove, ACaptureMayEndWhereItBegan) {
    const Board board("W:WK26:B17,13,24,34,42,32");
    MoveList list;
    CaptureLines lines;
    const int count = generate_capture_lines(board.position, list, WHITE, lines);
    ASSERT_GT(count, 0);
    std::mt19937 random(1);
    for (int i = 0; i < count; ++i)
        EXPECT_EQ(board.match(own_words(board.position, WHITE, i, random)).move, list[i]);
}

TEST(ReceivedMove, ThereMayBeNoMove) {
    for (const char* const fen : {"W:W:B1", "W:W:B", "W:W6:B1", "B:W50:B"}) {
        const MoveMatch match = Board(fen).match(told(32, 28));
        if (match.moves > 0) continue;
        EXPECT_EQ(match.index, -1);
        EXPECT_FALSE(match.wrong_count);
    }
    EXPECT_EQ(Board("W:W:B1").match(told(32, 28)).moves, 0);
}

// Whatever the position, each of its moves is found by its own words, and any words find a legal move.
TEST(ReceivedMove, EveryMoveIsFoundByItsOwnWords) {
    std::mt19937 random(1);
    int captures = 0;
    for (int game = 0; game < 60; ++game) {
        Position position = START_POSITION;
        int side = WHITE;
        for (int ply = 0; ply < 120; ++ply, side ^= 1) {
            MoveList list;
            const int count = generate_moves(position, list, side);
            if (count == 0) break;
            for (int i = 0; i < count; ++i) {
                const DxpMove move = own_words(position, side, i, random);
                const MoveMatch match = match_received_move(move, position, side);
                ASSERT_GE(match.index, 0);
                ASSERT_EQ(match.move, list[i]) << "the same result, if not the same path";
                ASSERT_FALSE(match.wrong_count);
                captures += move.jumped_count > 0;
                DxpMove other = move;
                other.to = static_cast<int16_t>(random() % 60);
                other.jumped_count = static_cast<int16_t>(random() % 100);
                ASSERT_NE(
                    std::find(list.begin(), list.end(), match_received_move(other, position, side).move),
                    list.end());
            }
            position =
                position_after(list[static_cast<int>(random() % static_cast<unsigned>(count))], side ^ 1);
        }
    }
    EXPECT_GT(captures, 500);
}
