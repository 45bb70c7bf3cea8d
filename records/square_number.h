// Squares as game records number them.
#pragma once

#include "core/bits.h"
#include "core/board.h"

// The number, 1 to 50, of the square of a set of one; 0 for the empty set.
inline int square_number(uint64_t set) {
    return set ? square_of_bit[static_cast<size_t>(lowest_bit(set))] + 1 : 0;
}
