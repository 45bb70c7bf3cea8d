// Where squares are drawn and which one a pixel is in, in both directions of the board.
#include "shell/board_geometry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

#include "core/board.h"

namespace {

TEST(BoardGeometry, CornersStandWherePlayersKnowThem) {
    EXPECT_EQ(place_of_square(0, false), (BoardPlace{1, 0}));   // 1: top row, second column
    EXPECT_EQ(place_of_square(4, false), (BoardPlace{9, 0}));   // 5
    EXPECT_EQ(place_of_square(5, false), (BoardPlace{0, 1}));   // 6
    EXPECT_EQ(place_of_square(45, false), (BoardPlace{0, 9}));  // 46: bottom row, first column
    EXPECT_EQ(place_of_square(49, false), (BoardPlace{8, 9}));  // 50
    EXPECT_EQ(place_of_square(0, true), (BoardPlace{8, 9}));
    EXPECT_EQ(place_of_square(45, true), (BoardPlace{9, 0}));
}

TEST(BoardGeometry, EveryPixelFindsTheSquareThatIsDrawnThere) {
    for (const int size : {20, 44, 45, 120})
        for (const bool inverted : {false, true}) {
            int dark = 0;
            for (int row = 0; row < 10; ++row)
                for (int column = 0; column < 10; ++column)
                    for (const int dx : {0, size / 2, size - 1})
                        for (const int dy : {0, size / 2, size - 1}) {
                            const int square =
                                square_at_pixel(column * size + dx, row * size + dy, size, inverted);
                            if ((column + row) % 2 == 0) {
                                ASSERT_EQ(square, -1) << column << " " << row;
                                continue;
                            }
                            ASSERT_GE(square, 0);
                            ASSERT_LT(square, SQUARES);
                            ASSERT_EQ(place_of_square(square, inverted), (BoardPlace{column, row}));
                            ++dark;
                        }
            EXPECT_EQ(dark, 50 * 9);
        }
}

TEST(BoardGeometry, PlacesAreAllDifferentAndComeBack) {
    for (const bool inverted : {false, true}) {
        std::set<int> seen;
        for (int square = 0; square < SQUARES; ++square) {
            const BoardPlace place = place_of_square(square, inverted);
            EXPECT_EQ(square_at_place(place, inverted), square);
            seen.insert(place.column + 10 * place.row);
        }
        EXPECT_EQ(seen.size(), 50u);
    }
}

TEST(BoardGeometry, TurnedBoardIsTheSameHalfATurnOn) {
    for (int square = 0; square < SQUARES; ++square) {
        const BoardPlace a = place_of_square(square, false);
        const BoardPlace b = place_of_square(square, true);
        EXPECT_EQ(a.column + b.column, 9);
        EXPECT_EQ(a.row + b.row, 9);
        EXPECT_EQ(place_of_square(49 - square, true), a);
    }
}

TEST(BoardGeometry, NothingIsBesideTheBoard) {
    for (const bool inverted : {false, true}) {
        EXPECT_EQ(square_at_pixel(-1, 50, 44, inverted), -1);
        EXPECT_EQ(square_at_pixel(50, -1, 44, inverted), -1);
        EXPECT_EQ(square_at_pixel(-44, 0, 44, inverted), -1);
        EXPECT_EQ(square_at_pixel(440, 50, 44, inverted), -1);
        EXPECT_EQ(square_at_pixel(50, 440, 44, inverted), -1);
        EXPECT_EQ(square_at_pixel(484, 0, 44, inverted), -1);
        EXPECT_EQ(square_at_pixel(50, 50, 0, inverted), -1);
        EXPECT_EQ(square_at_place({-1, 0}, inverted), -1);
        EXPECT_EQ(square_at_place({10, 1}, inverted), -1);
        EXPECT_EQ(square_at_place({1, 10}, inverted), -1);
        EXPECT_EQ(square_at_place({0, -1}, inverted), -1);
    }
}

TEST(BoardGeometry, SquareSizeIsTheNearestWhole) {
    EXPECT_EQ(square_size_for(440), 44);
    EXPECT_EQ(square_size_for(444), 44);
    EXPECT_EQ(square_size_for(445), 45);
    EXPECT_EQ(square_size_for(435), 44);
    EXPECT_EQ(square_size_for(434), 43);
    EXPECT_EQ(square_size_for(0), MIN_SQUARE_SIZE);
    EXPECT_EQ(square_size_for(100000), MAX_SQUARE_SIZE);
    EXPECT_EQ(usable_square_size(INT32_MIN), MIN_SQUARE_SIZE);
    EXPECT_EQ(usable_square_size(INT32_MAX), MAX_SQUARE_SIZE);
    EXPECT_EQ(usable_square_size(44), 44);
}

TEST(BoardGeometry, NumbersGrowWithTheSquares) {
    EXPECT_EQ(number_height(44), 10);
    EXPECT_EQ(number_height(36), 9);
    EXPECT_EQ(number_height(35), 8);
    EXPECT_EQ(number_height(37), 9);
    EXPECT_EQ(number_height(20), 8);
    EXPECT_EQ(number_height(50), 11);
    EXPECT_EQ(number_height(64), 15);
    EXPECT_EQ(number_height(120), 27);
}

TEST(SquaredWindow, OneBorderTakesTheOtherAlong) {
    const WindowPlace before = {100, 100, 448, 470};  // 440 pixels inside
    EXPECT_EQ(squared_window({100, 100, 508, 470}, before, 8, 30), (WindowPlace{100, 100, 508, 530}));
    EXPECT_EQ(squared_window({100, 100, 448, 420}, before, 8, 30), (WindowPlace{100, 100, 398, 420}));
    EXPECT_EQ(squared_window({60, 100, 488, 470}, before, 8, 30), (WindowPlace{60, 100, 488, 510}));
    EXPECT_EQ(squared_window({100, 90, 448, 480}, before, 8, 30), (WindowPlace{100, 90, 458, 480}));
}

TEST(SquaredWindow, AlwaysSquareAndHeldByTheOtherEdges) {
    std::mt19937 random(5);
    const auto between = [&](int low, int high) {
        return std::uniform_int_distribution<int>(low, high)(random);
    };
    for (int i = 0; i < 20000; ++i) {
        const int client = between(200, 1200);
        const int frame_width = between(0, 20), frame_height = between(0, 60);
        const WindowPlace before = {between(-50, 500), between(-50, 500), client + frame_width,
                                    client + frame_height};
        // Some edges of the window go to a new place.
        const bool left = random() & 1, top = random() & 1, sideways = random() & 1, upright = random() & 1;
        WindowPlace dragged = before;
        if (sideways) dragged.width = std::max(1, before.width + between(-600, 600));
        if (sideways && left) dragged.left = before.left + before.width - dragged.width;
        if (upright) dragged.height = std::max(1, before.height + between(-600, 600));
        if (upright && top) dragged.top = before.top + before.height - dragged.height;
        const WindowPlace after = squared_window(dragged, before, frame_width, frame_height);
        const int extent = after.width - frame_width;
        ASSERT_EQ(extent, after.height - frame_height);
        ASSERT_GE(extent, MIN_SQUARE_SIZE * 10);
        ASSERT_LE(extent, MAX_SQUARE_SIZE * 10);
        if (dragged.left == before.left)
            ASSERT_EQ(after.left, before.left);
        else
            ASSERT_EQ(after.left + after.width, before.left + before.width);
        if (dragged.top == before.top)
            ASSERT_EQ(after.top, before.top);
        else
            ASSERT_EQ(after.top + after.height, before.top + before.height);
    }
}

}  // namespace
