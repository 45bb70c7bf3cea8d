// What the printed forms of a game share: text in bounded room, and the number and the move of one step.
#pragma once

#include <cstddef>

#include "records/pdn_replay.h"

// A text that is printed piece by piece into `size` bytes, at least 1, and NUL-terminated behind each piece.
// What does not fit is cut.
struct BoundedText {
    char* out;
    size_t size;
    size_t length;
};

__attribute__((format(printf, 2, 3))) void print(BoundedText& text, const char* format, ...);

// Prints the step between two entries of a game, which is no set position: its number where it has one, and
// its move. `move_number` counts the moves of the game, from 0. No move is printed where no legal one leads
// from one entry to the other, as at the end of a game that broke.
void print_numbered_move(BoundedText& text, const ReplayState& before, const ReplayState& after,
                         int& move_number);
