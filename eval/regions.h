// The regions of the four pattern tables, and how the men in one become a 12-bit number.
//
// A region is four rows of three squares. Bit i of an extract is the i-th square of the region, by rising
// number. Each region has a twin, its image on the board turned by 180 degrees, where white's men are looked
// up as if they were black's. Both ways of extraction give the same numbers.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "core/board.h"

constexpr std::array<uint64_t, 4> FORWARD_REGIONS{0x738e7, 0x1ce39c, 0xe39c70000, 0x738e7000};

// The board turned by 180 degrees: square s goes to 51 - s, which is bit b to bit 53 - b.
constexpr uint64_t turned(uint64_t set) {
    uint64_t result = 0;
    for (; set; set &= set - 1) result |= uint64_t{1} << (BOARD_BITS - 1 - std::countr_zero(set));
    return result;
}

constexpr std::array<uint64_t, 4> TURNED_REGIONS{turned(FORWARD_REGIONS[0]), turned(FORWARD_REGIONS[1]),
                                                 turned(FORWARD_REGIONS[2]), turned(FORWARD_REGIONS[3])};

// The lowest bit of one of the four rows of a region.
consteval int region_row(uint64_t region, int row) {
    for (int i = 0; i < 3 * row; ++i) region &= region - 1;
    return std::countr_zero(region);
}

// The extract by folding the rows of the region together with shifts.
template <uint64_t REGION>
inline uint32_t extract_by_shifts(uint64_t set) {
    const uint64_t folded =
        (set >> region_row(REGION, 0) & 0x007) | (set >> (region_row(REGION, 1) - 3) & 0x038) |
        (set >> (region_row(REGION, 2) - 6) & 0x1c0) | (set >> (region_row(REGION, 3) - 9) & 0xe00);
    return static_cast<uint32_t>(folded);
}

// The extract by the processor's instruction, which must be there.
template <uint64_t REGION>
inline uint32_t extract_by_instruction(uint64_t set) {
    uint64_t extract;
    __asm__("pextq %2, %1, %0" : "=r"(extract) : "r"(set), "r"(REGION));
    return static_cast<uint32_t>(extract);
}
