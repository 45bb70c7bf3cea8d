// The way back from a number to its position, and a walk over all positions of a Slice in the order of their
// numbers, which is much cheaper than finding each anew. For those who make, list or check whole Slices.
//
// Not shared between threads; each has a walk of its own.
#pragma once

#include <array>
#include <cstdint>

#include "egdb/numbering.h"

// The canonical position with that number; its side to move is left at black. The number is below the size of
// the Slice.
Position position_from_index(int64_t index, const Material& m);

// Stands on one position. Read the public members, go on with the functions.
struct PositionWalk {
    Material material;
    int64_t index = 0;
    Position position;

    // Stands on the position with that number.
    PositionWalk(const Material& m, int64_t start);

    // Goes on to the next number. Behind the last one there is none: do not call it there.
    void advance();

  private:
    // Kings as sets over the numbered free squares: the order of the numbers is that of these sets as
    // numbers.
    uint64_t black_kings_ = 0;
    uint64_t white_kings_ = 0;
    int64_t men_ = 0;  // number of the men
    std::array<uint64_t, SQUARES> free_of_men_{};
    std::array<uint64_t, SQUARES> free_of_both_{};

    void place_men();
    void place_black_kings();
    void place_white_kings();
};
