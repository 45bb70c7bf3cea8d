// The way of a move over the board, for those who draw it. Re-entrant.
#pragma once

#include <array>

#include "core/capture_lines.h"

struct BoardMove {
    int side = WHITE;
    int jumps = 0;                             // pieces taken; 0 for a quiet move
    int stops = 0;                             // squares in `squares`
    std::array<int, MAX_JUMPS + 1> squares{};  // 1 to 50: where the piece was, then where it lands
    std::array<int, MAX_JUMPS> taken{};        // 1 to 50: the piece taken on the way to the next stop

    int from() const { return squares[0]; }
    int to() const { return squares[static_cast<size_t>(stops - 1)]; }
};

// The legal move of `side` that leads from one position to the other; false if there is none, and `move` is
// untouched.
bool move_between(const Position& before, const Position& after, int side, BoardMove& move);
