// Positions by the numbers of their squares.
#pragma once

#include <initializer_list>

#include "core/board.h"

inline uint64_t squares_mask(std::initializer_list<int> squares) {
    uint64_t mask = 0;
    for (const int square : squares) mask |= set_of_square(square);
    return mask;
}

// Kings alone; black is to move where that matters.
inline Position kings(std::initializer_list<int> black, std::initializer_list<int> white) {
    Position position{};
    position.black = squares_mask(black);
    position.white = squares_mask(white);
    position.king = position.black | position.white;
    return position;
}
