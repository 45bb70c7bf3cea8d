#include "shell/board_geometry.h"

#include <algorithm>

#include "core/board.h"

namespace {

constexpr int LAST = BOARD_ROWS - 1;
constexpr int MIN_NUMBER_HEIGHT = 8;

BoardPlace turned(BoardPlace place, bool inverted) {
    return inverted ? BoardPlace{LAST - place.column, LAST - place.row} : place;
}

}  // namespace

int square_at_place(BoardPlace place, bool inverted) {
    const bool on_board = place.column >= 0 && place.column <= LAST && place.row >= 0 && place.row <= LAST;
    if (!on_board || (place.column + place.row) % 2 == 0) return -1;
    const auto [column, row] = turned(place, inverted);
    return (column + 10 * row) / 2;
}

int square_at_pixel(int x, int y, int square_size, bool inverted) {
    if (x < 0 || y < 0 || square_size <= 0) return -1;
    return square_at_place({x / square_size, y / square_size}, inverted);
}

BoardPlace place_of_square(int square, bool inverted) {
    const int row = square / 5;
    const int column = square % 5 * 2 + (row % 2 == 0 ? 1 : 0);
    return turned({column, row}, inverted);
}

int usable_square_size(int32_t stored) {
    return std::clamp<int32_t>(stored, MIN_SQUARE_SIZE, MAX_SQUARE_SIZE);
}

int square_size_for(int extent) { return usable_square_size((extent + BOARD_ROWS / 2) / BOARD_ROWS); }

int number_height(int square_size) {
    // The height that font sizes in printers' points once gave; one size came out too small to read.
    if (square_size == 36) return 9;
    return std::max((64 + 14 * square_size) / 64, MIN_NUMBER_HEIGHT);
}

WindowPlace squared_window(const WindowPlace& dragged, const WindowPlace& before, int frame_width,
                           int frame_height) {
    const bool left_moved = dragged.left != before.left;
    const bool top_moved = dragged.top != before.top;
    const bool sideways = dragged.width != before.width;
    const bool upright = dragged.height != before.height;
    const int by_width = dragged.width - frame_width;
    const int by_height = dragged.height - frame_height;
    const int wanted = sideways && upright ? std::max(by_width, by_height) : upright ? by_height : by_width;
    const int client = std::clamp(wanted, MIN_SQUARE_SIZE * BOARD_ROWS, MAX_SQUARE_SIZE * BOARD_ROWS);
    WindowPlace squared = {before.left, before.top, client + frame_width, client + frame_height};
    // The edges that are not dragged stay where they are.
    if (left_moved) squared.left = before.left + before.width - squared.width;
    if (top_moved) squared.top = before.top + before.height - squared.height;
    return squared;
}
