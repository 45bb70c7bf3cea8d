// Steps and rays of the two move generators. Directions are numbered 0 left by 6, 1 left by 5, 2 right by 5,
// 3 right by 6.
#pragma once

#include <cstdint>

#include "core/board.h"

template <int DIRECTION>
constexpr uint64_t step(uint64_t set) {
    if constexpr (DIRECTION == 0) return set << 6;
    if constexpr (DIRECTION == 1) return set << 5;
    if constexpr (DIRECTION == 2) return set >> 5;
    return set >> 6;
}

template <int DIRECTION>
constexpr uint64_t step_back(uint64_t set) {
    return step<3 - DIRECTION>(set);
}

// The first piece that a king on `bit` meets in the direction, as a set. `occupied` holds every bit that is
// not an empty square, ghost bits and the bits beyond the board too, so that rays end at the edge. A ray
// reaches eight steps: a piece on the ninth, at the end of the long diagonal, has no square behind it. Where
// the ray meets nothing the result has no square behind it either.
template <int DIRECTION>
inline uint64_t first_on_ray(int bit, uint64_t occupied) {
    if constexpr (DIRECTION == 0) return lowest_set((0x1041041041040ull << bit) & occupied);
    if constexpr (DIRECTION == 1) return lowest_set((0x10842108420ull << bit) & occupied);
    constexpr uint64_t RAY = DIRECTION == 2 ? 0x1084210842000ull : 0x820820820820ull;
    const uint64_t met = ((RAY >> (53 - bit)) & occupied) | 1;
    return uint64_t{1} << (63 - std::countl_zero(met));
}

// The two directions across: for a step of 6 the steps of 5 and the reverse, towards higher squares first.
template <int DIRECTION>
constexpr int FIRST_ACROSS = DIRECTION == 0 || DIRECTION == 3 ? 1 : 0;
template <int DIRECTION>
constexpr int SECOND_ACROSS = DIRECTION == 0 || DIRECTION == 3 ? 2 : 3;
