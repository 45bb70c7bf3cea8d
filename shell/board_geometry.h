// Where squares stand on the drawn board. Squares of `square_size` pixels in ten rows of ten; row 0 is at the
// top and column 0 at the left unless the board is inverted.
#pragma once

#include <cstdint>

constexpr int BOARD_ROWS = 10;

// What a window may make of the size of a square, in pixels; the largest board fills any screen.
constexpr int MIN_SQUARE_SIZE = 20;
constexpr int MAX_SQUARE_SIZE = 400;

struct BoardPlace {
    int column;
    int row;

    bool operator==(const BoardPlace&) const = default;
};

// The index of the dark square at the pixel, 0 to 49, which is the player's number less 1; -1 for a light
// square and beside the board.
int square_at_pixel(int x, int y, int square_size, bool inverted);

// Where the square of the index, 0 to 49, is drawn.
BoardPlace place_of_square(int square, bool inverted);

// The dark square of the index at that place of the board, or -1.
int square_at_place(BoardPlace place, bool inverted);

// The size of the squares of a board that is `extent` pixels wide or high: the nearest whole one that may be.
int square_size_for(int extent);

// A stored size of squares brought into the range.
int usable_square_size(int32_t stored);

// The height of the squares' numbers in pixels.
int number_height(int square_size);

// A window's place in its frame, in pixels.
struct WindowPlace {
    int left, top, width, height;

    bool operator==(const WindowPlace&) const = default;
};

// The place that the window gets when a border was dragged from `before` to `dragged`: what it holds inside a
// frame of the given extents is square, of a size that may be. The other edge of a corner, or the width or
// height that was not dragged, follows.
WindowPlace squared_window(const WindowPlace& dragged, const WindowPlace& before, int frame_width,
                           int frame_height);
