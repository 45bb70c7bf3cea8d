// The board as it is seen on the screen. Its place, the size of its squares and what stands on each are found
// by comparing the pixels of the screen with what the program's own drawing gives; a piece that is on its way
// is nothing that can be read.
#pragma once

#include <QImage>
#include <QPoint>
#include <optional>

#include "core/board.h"
#include "tests/gui/stories.h"

struct BoardPlaceOnScreen {
    QPoint corner;        // upper left pixel
    int square_size = 0;  // pixels of the program; 0: there is no board
    int scale = 1;        // pixels of the screen to one of the program's

    bool is_found() const { return square_size > 0; }
    bool operator==(const BoardPlaceOnScreen&) const = default;
};

// Looks for the light squares, which are the same in every position.
BoardPlaceOnScreen find_board(const Desk& desk, int scale = 1);

// What stands on the board; nothing if a square is covered or can't be told.
std::optional<Position> read_board(const Desk& desk, const BoardPlaceOnScreen& place, bool inverted = false);

// Waits until the board shows these pieces.
bool wait_for_position(const Desk& desk, const BoardPlaceOnScreen& place, const Position& wanted,
                       bool inverted = false);

// The middle of a square, 1 to 50, on the screen.
QPoint middle_of_square(const BoardPlaceOnScreen& place, int square, bool inverted = false);

// Clicks a square and takes the mouse away from the board.
void click_square(const Desk& desk, const BoardPlaceOnScreen& place, int square, int button = 1,
                  bool inverted = false);

// Puts the mouse where it hides nothing.
void take_mouse_away(const Desk& desk);
