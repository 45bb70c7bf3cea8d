#include "core/notation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "core/capture_lines.h"
#include "tests/core/test_positions.h"

namespace {

// A text buffer of the told size with a mark behind it.
struct Text {
    char text[MOVE_TEXT_SIZE];
    char guard = 'g';
};

std::string short_text(const Position& position, const Move& move) {
    Text buffer;
    move_text(buffer.text, position, move);
    EXPECT_EQ(buffer.guard, 'g');
    return buffer.text;
}

std::string full_text(const Position& position, const Move& move, int side) {
    Text buffer;
    const int length = full_move_text(position, move, side, buffer.text);
    EXPECT_EQ(buffer.guard, 'g');
    const std::string text = buffer.text;
    EXPECT_EQ(length, static_cast<int>(text.size()));
    return text;
}

std::vector<std::string> full_texts(const char* text) {
    const Position position = position_of(text);
    MoveList list;
    generate_moves(position, list, position.side);
    std::vector<std::string> texts;
    for (const Move& move : list) texts.push_back(full_text(position, move, position.side));
    return texts;
}

using Texts = std::vector<std::string>;

}  // namespace

TEST(MoveText, QuietMovesAndCaptures) {
    MoveList list;
    generate_moves(START_POSITION, list, WHITE);
    EXPECT_EQ(short_text(START_POSITION, list[1]), "32-28");
    const Position black = position_of("B:W28:B22");
    generate_moves(black, list, BLACK);
    EXPECT_EQ(short_text(black, list[0]), "22x33");
    const Position one_digit = position_of("B:W50:B4");
    generate_moves(one_digit, list, BLACK);
    EXPECT_EQ(short_text(one_digit, list[0]), "4-10");
}

TEST(MoveText, RoundTrips) {
    const Position white = position_of("W:WK28:B32,33,42,43");
    EXPECT_EQ(short_text(white, {0, white.white, white.king}), "28x28");
    EXPECT_EQ(full_text(white, {0, white.white, white.king}, WHITE), "28x28");
    const Position man = position_of("B:W11,12,21,22:B16,1");
    EXPECT_EQ(short_text(man, {man.black, 0, 0}), "16x16");
    EXPECT_EQ(full_text(man, {man.black, 0, 0}, BLACK), "16x16");
}

TEST(MoveText, WhatFitsNoMove) {
    const Position position = position_of("W:W32,40:B1,2");
    const Move more_white{position.black, position.white | set_of_square(50), 0};
    EXPECT_EQ(short_text(position, more_white), "???");
    const Move more_black{position.black | set_of_square(20), position.white, 0};
    EXPECT_EQ(short_text(position, more_black), "???");
    EXPECT_EQ(short_text(position, move_to(position)), "???");
    // Two pieces where one was, or one taken and one come: neither side has moved so.
    const Move doubled{position.black, set_of_square(28) | set_of_square(40) | set_of_square(50), 0};
    EXPECT_EQ(short_text(position, doubled), "???");
    const Move black_doubled{set_of_square(2) | set_of_square(7) | set_of_square(6), position.white, 0};
    EXPECT_EQ(short_text(position, black_doubled), "???");
    const Move exchanged{set_of_square(1), set_of_square(28) | set_of_square(40) | set_of_square(50), 0};
    EXPECT_EQ(short_text(position, exchanged), "???");
    const Move gone{set_of_square(1), position.white, 0};  // a piece gone without a capture that takes it
    EXPECT_EQ(short_text(position, gone), "???");
    const Move vanished{position.black, set_of_square(32), 0};
    EXPECT_EQ(short_text(position, vanished), "???");
    const Move both_lost{set_of_square(1), set_of_square(32), 0};
    EXPECT_EQ(short_text(position, both_lost), "???");
    for (const Move& move : {more_white, more_black, move_to(position), gone, vanished, both_lost}) {
        EXPECT_EQ(full_text(position, move, WHITE), "");
        EXPECT_EQ(full_text(position, move, BLACK), "");
    }
}

TEST(FullMoveText, OnlyLegalMoves) {
    const Position position = position_of("W:W32,40:B28");
    MoveList list;
    generate_noncaptures(position, list, WHITE);
    ASSERT_GT(list.count, 0);
    for (const Move& quiet : list)
        EXPECT_EQ(full_text(position, quiet, WHITE), "");  // the capture is compulsory
    generate_captures(position, list, WHITE);
    EXPECT_EQ(full_text(position, list[0], WHITE), "32x23");
    EXPECT_EQ(full_text(position, list[0], BLACK), "");
}

TEST(FullMoveText, AmbiguousCapturesTellTheirPath) {
    const Position position = position_of("B:WK11,K13,K18,K32,K38,K43:BK41");
    EXPECT_EQ(full_texts("B:WK11,K13,K18,K32,K38,K43:BK41"), (Texts{"41x23x7x16", "41x19x2x16"}));
    MoveList list;
    generate_moves(position, list, BLACK);
    EXPECT_EQ(texts_of(position, list), (Texts{"41x16", "41x16"}));
    EXPECT_NE(list[0], list[1]);
    EXPECT_EQ(full_texts("W:WK48:BK10,K20,K24,K29,K34"), (Texts{"48x30x19x5", "48x25x14x5"}));
}

TEST(FullMoveText, AgreesWithTheLinesOnRandomPositions) {
    std::mt19937_64 random(41);
    const auto lines = std::make_unique<CaptureLines>();
    int ambiguous = 0;
    for (int i = 0; i < 20000; ++i) {
        const Position position = random_position(random, {1, 4, 2, 12, 40, 90});
        MoveList list;
        int jumps = 0;
        generate_moves_with_lines(position, list, position.side, *lines, jumps);
        std::vector<std::string> shorts, fulls;
        for (const Move& move : list) {
            shorts.push_back(short_text(position, move));
            fulls.push_back(full_text(position, move, position.side));
        }
        for (size_t k = 0; k < shorts.size(); ++k) {
            const auto same = std::count(shorts.begin(), shorts.end(), shorts[k]);
            if (same == 1) {
                EXPECT_EQ(fulls[k], shorts[k]);
                continue;
            }
            ++ambiguous;
            std::string path;
            for (int step = 1; step <= jumps; ++step) {
                uint64_t from = 0, to = 0;
                move_step_squares(step, static_cast<int>(k), position.side, position, list, *lines, from, to);
                if (step == 1)
                    path += std::to_string(square_of_bit[static_cast<size_t>(lowest_bit(from))] + 1);
                path.append("x").append(
                    std::to_string(square_of_bit[static_cast<size_t>(lowest_bit(to))] + 1));
            }
            EXPECT_EQ(fulls[k], path) << letters_of(position);
        }
    }
    EXPECT_GT(ambiguous, 100);
}

TEST(FullMoveText, ALongPathFitsTheBuffer) {
    const Position position =
        position_of("W:WK38:B3,7,8,9,10,12,17,18,19,20,21,28,29,30,31,32,34,39,40,41,42,43,45");
    MoveList list;
    generate_moves(position, list, WHITE);
    ASSERT_GT(list.count, 0);
    EXPECT_EQ(full_text(position, list[0], WHITE), "38x49x35x24x33x22x36x47x38x27x16x2x13x4x15x24x13x22x11");
}
