// The order of move lists, on which the transposition table and the opening book lean.
#include <gtest/gtest.h>

#include <memory>

#include "core/capture_lines.h"
#include "core/movegen.h"
#include "tests/core/test_positions.h"

namespace {

using Texts = std::vector<std::string>;

Texts moves_of(const char* text) {
    const Position position = position_of(text);
    MoveList list;
    generate_moves(position, list, position.side);
    return texts_of(position, list);
}

// The pieces taken in the course of each capture, and where it ends: "8 19 to 24".
Texts lines_of(const char* text) {
    const Position position = position_of(text);
    MoveList list;
    const auto lines = std::make_unique<CaptureLines>();
    generate_capture_lines(position, list, position.side, *lines);
    Texts texts;
    for (int i = 0; i < list.count; ++i) {
        const CaptureLine& line = (*lines)[static_cast<size_t>(i)];
        std::string told;
        const auto number = [](uint64_t set) {
            return std::to_string(square_of_bit[static_cast<size_t>(lowest_bit(set))] + 1);
        };
        for (int jump = 0; jump < line.length; ++jump)
            told += number(captured_at(line, jump, position.side)) + " ";
        uint64_t from = 0, to = 0;
        move_step_squares(line.length, i, position.side, position, list, *lines, from, to);
        texts.push_back(told + "to " + number(to));
    }
    return texts;
}

}  // namespace

TEST(GenerationOrder, WhiteMenStepRightBy5First) {
    EXPECT_EQ(moves_of("W:W31,32,33,34,35:B1"),
              (Texts{"31-27", "32-28", "33-29", "34-30", "31-26", "32-27", "33-28", "34-29", "35-30"}));
}

TEST(GenerationOrder, BlackMenStepLeftBy6First) {
    EXPECT_EQ(moves_of("B:W50:B16,17,18,19,20"),
              (Texts{"16-21", "17-22", "18-23", "19-24", "20-25", "17-21", "18-22", "19-23", "20-24"}));
}

TEST(GenerationOrder, KingSlidesByDirectionNearestFirst) {
    const Texts expected{"28-33", "28-39", "28-44", "28-50", "28-32", "28-37", "28-41", "28-46", "28-23",
                         "28-19", "28-14", "28-10", "28-5",  "28-22", "28-17", "28-11", "28-6"};
    EXPECT_EQ(moves_of("W:WK28:B1"), expected);
    EXPECT_EQ(moves_of("B:W50,49,48:BK28"), moves_of("B:W50:BK28"));
    EXPECT_EQ(moves_of("B:W45:BK28"), expected);
}

TEST(GenerationOrder, MenBeforeKingsAndKingsByFirstSquareReached) {
    // King 46 reaches its first square up and right behind that of king 36, and both come behind the man.
    EXPECT_EQ(moves_of("W:WK36,K46,10:BK1"),
              (Texts{"10-5", "10-4", "36-41", "36-47", "36-31", "36-27", "36-22", "36-18", "36-13", "36-9",
                     "36-4", "46-41", "46-37", "46-32", "46-28", "46-23", "46-19", "46-14"}));
}

TEST(GenerationOrder, CapturesOfMenGoByDirectionThenByLandingSquare) {
    EXPECT_EQ(moves_of("W:W27,29:B22,32,23,33,34,21,31,24"),
              (Texts{"27x38", "29x40", "27x36", "29x38", "27x18", "29x20", "27x16", "29x18"}));
    EXPECT_EQ(moves_of("B:W22,32,23,33,34,21,31,24:B27,29"),
              (Texts{"27x38", "29x40", "27x36", "29x38", "27x18", "29x20", "27x16", "29x18"}));
}

TEST(GenerationOrder, KingCapturesGoByKingThenDirectionThenNearestSquare) {
    EXPECT_EQ(moves_of("W:WK28:B33,32,23,22"),
              (Texts{"28x39", "28x44", "28x50", "28x37", "28x41", "28x46", "28x19", "28x14", "28x10", "28x5",
                     "28x17", "28x11", "28x6"}));
    EXPECT_EQ(moves_of("W:WK1,K46,45:B40,7,41"),
              (Texts{"45x34", "1x12", "1x18", "1x23", "1x29", "1x34", "46x37", "46x32", "46x28", "46x23",
                     "46x19", "46x14", "46x10", "46x5"}));
}

TEST(GenerationOrder, AManGoesOnByDirection) {
    EXPECT_EQ(lines_of("W:W28:B33,44,43,34"), (Texts{"33 44 to 50", "33 43 to 48", "33 34 to 30"}));
}

TEST(GenerationOrder, AKingTurnsBeforeItGoesStraightOn) {
    EXPECT_EQ(
        lines_of("W:WK6:B17,18,27,23,33"),
        (Texts{"17 27 to 31", "17 27 to 36", "17 18 to 13", "17 18 to 9", "17 18 to 4", "17 23 to 19",
               "17 23 to 14", "17 23 to 10", "17 23 to 5", "17 33 to 39", "17 33 to 44", "17 33 to 50"}));
    EXPECT_EQ(lines_of("B:BK46:W37,38,27,23"),
              (Texts{"37 38 to 43", "37 38 to 49", "37 27 to 21", "37 27 to 16", "37 23 to 19", "37 23 to 14",
                     "37 23 to 10", "37 23 to 5"}));
    EXPECT_EQ(moves_of("W:WK50:B33,32,23"),
              (Texts{"50x37", "50x41", "50x46", "50x19", "50x14", "50x10", "50x5"}));
    EXPECT_EQ(moves_of("W:WK5:B14,24,13"), (Texts{"5x30", "5x35", "5x8", "5x2"}));
}
