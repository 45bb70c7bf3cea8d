// The places that windows have when nobody has moved them: the board at the left, the game beside it with the
// status below, and under them a row for ponder information and the clock and one for the protocol. Nothing
// overlaps, and hidden panes have places too, behind those that are shown. Needs no window.
#pragma once

#include <QRect>
#include <array>
#include <span>

#include "control/settings.h"

struct ArrangementInput {
    QSize room;                                 // the largest size that the frame's inside can have
    int square_size = 0;                        // wanted
    QSize board_frame;                          // what the board's window is larger than the board
    int column_width = 0;                       // of game, status and clock
    std::array<int, CHILD_WINDOWS> heights{};   // of the panes; the game takes what is left of the column
    std::array<bool, CHILD_WINDOWS> visible{};  // panes
};

struct Arrangement {
    int square_size = 0;  // the wanted one, or the largest below it for which there is room; at least
                          // MIN_SQUARE_SIZE
    QRect board;          // its window
    std::array<QRect, CHILD_WINDOWS> panes;
    QSize area;  // what the frame's inside must hold for all that is visible to be seen
};

// Free space around windows and between them.
constexpr int WINDOW_GAP = 6;

Arrangement arrange_windows(const ArrangementInput& input);

// A place for one more window, beside or below the others and over none of them, for which the frame must
// grow least. The window may become narrower there, but not below `least_width`. Empty if there is no such
// place.
//
//   shown   what the frame's inside is now
//   room    the largest that it can be
QRect free_place(const QSize& wanted, int least_width, const QSize& shown, const QSize& room,
                 std::span<const QRect> others);
