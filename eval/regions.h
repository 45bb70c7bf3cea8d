// The places of a position in the four pattern tables.
//
// A table belongs to a region of four rows of three squares. The place is a ternary number, the first square
// of the region being its most significant digit: 2 for a man of the side that is looked up, 0 for one of the
// other side, 1 for an empty square or a king. Each region has a twin, its image on the board turned by 180
// degrees, where white's men are looked up as if they were black's.
//
// There are two ways to the places, which give the same numbers: the processor's bit extraction with tables
// of digit sums, and arithmetic on all rows at once, which takes few cycles more and no memory.
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

// The place of a region without men: all digits 1.
constexpr uint32_t EMPTY_REGION = 265720;

// Indexes into table t: of black's men in region t, and of white's in its twin.
struct RegionPlaces {
    std::array<uint32_t, 4> forward;
    std::array<uint32_t, 4> turned;

    bool operator==(const RegionPlaces&) const = default;
};

// Entry x is the sum of the powers of three of the bits of a 12-bit extract, whose bit i is the i-th square
// of its region by rising number: in `forward_sums` bit i counts 3^(11 - i), in `reverse_sums` 3^i. The
// squares of a twin stand in the opposite order, which `reverse_sums` puts right.
using DigitSums = std::array<uint32_t, 4096>;
extern DigitSums forward_sums;
extern DigitSums reverse_sums;

// Fills them. Not while another thread evaluates.
void build_digit_sums();

namespace region_detail {

// The bits of the region, packed, by the instruction.
template <uint64_t REGION>
inline size_t extract(uint64_t set) {
#if defined(__x86_64__)
    uint64_t packed;
    __asm__("pextq %2, %1, %0" : "=r"(packed) : "r"(set), "r"(REGION));
    return packed;
#else
    size_t packed = 0;
    int next = 0;
    for (uint64_t left = REGION; left; left &= left - 1) packed |= ((set & lowest_set(left)) != 0) << next++;
    return packed;
#endif
}

template <size_t TABLE>
inline void extract_places(uint64_t black, uint64_t white, RegionPlaces& places) {
    places.forward[TABLE] = forward_sums[extract<FORWARD_REGIONS[TABLE]>(black)] -
                            forward_sums[extract<FORWARD_REGIONS[TABLE]>(white)] + EMPTY_REGION;
    places.turned[TABLE] = reverse_sums[extract<TURNED_REGIONS[TABLE]>(white)] -
                           reverse_sums[extract<TURNED_REGIONS[TABLE]>(black)] + EMPTY_REGION;
}

// The lowest bit of a row, numbered from 0.
constexpr int row_bit(int row) { return row * 5 + row / 2; }

// The lowest bits of all rows. A row has five bits, room for a number of three ternary digits.
constexpr uint64_t ROW_STARTS = [] {
    uint64_t set = 0;
    for (int row = 0; row < 10; ++row) set |= uint64_t{1} << row_bit(row);
    return set;
}();

// Three digits of every row as one number.
constexpr uint64_t three_digits(uint64_t first, uint64_t second, uint64_t third) {
    return (first * 3 + second) * 3 + third;
}

// The number of the four rows from ROW, of three digits each, where the first row counts most, or the last
// one if TURNED. Two rows are put together in both halves at once, and then the halves.
template <int ROW, bool TURNED>
inline uint32_t join_rows(uint64_t rows) {
    constexpr uint64_t ONE_OF_TWO_ROWS = 0x1f | 0x1f << 11;
    const uint64_t upper = rows >> row_bit(ROW) & ONE_OF_TWO_ROWS;
    const uint64_t lower = rows >> row_bit(ROW + 1) & ONE_OF_TWO_ROWS;
    const uint64_t halves = TURNED ? upper + 27 * lower : 27 * upper + lower;
    const uint64_t first = halves & 0x7ff;
    const uint64_t second = halves >> 11;
    return static_cast<uint32_t>(TURNED ? first + 729 * second : 729 * first + second);
}

}  // namespace region_detail

// The places by the bit extraction of the processor, which must have it. The digit sums must be there.
inline RegionPlaces places_by_extraction(uint64_t black_men, uint64_t white_men) {
    using region_detail::extract_places;
    RegionPlaces places;
    extract_places<0>(black_men, white_men, places);
    extract_places<1>(black_men, white_men, places);
    extract_places<2>(black_men, white_men, places);
    extract_places<3>(black_men, white_men, places);
    return places;
}

// The places by arithmetic. Digit k of each row, -1, 0 or 1, is a multiple of the row's lowest bit in d[k].
// Three of them and 13 are a number from 0 to 26, so no row runs into the next, and the 13s of four rows are
// EMPTY_REGION.
inline RegionPlaces places_by_rows(uint64_t black_men, uint64_t white_men) {
    using namespace region_detail;
    constexpr uint64_t MIDDLE_OF_RANGE = 13 * ROW_STARTS;
    uint64_t d[5];
    for (int k = 0; k < 5; ++k) d[k] = (black_men >> k & ROW_STARTS) - (white_men >> k & ROW_STARTS);
    const uint64_t left = MIDDLE_OF_RANGE + three_digits(d[0], d[1], d[2]);
    const uint64_t middle = MIDDLE_OF_RANGE + three_digits(d[1], d[2], d[3]);
    const uint64_t right = MIDDLE_OF_RANGE + three_digits(d[2], d[3], d[4]);
    const uint64_t left_turned = MIDDLE_OF_RANGE - three_digits(d[2], d[1], d[0]);
    const uint64_t middle_turned = MIDDLE_OF_RANGE - three_digits(d[3], d[2], d[1]);
    const uint64_t right_turned = MIDDLE_OF_RANGE - three_digits(d[4], d[3], d[2]);
    return {{join_rows<0, false>(left), join_rows<0, false>(right), join_rows<3, false>(left),
             join_rows<2, false>(middle)},
            {join_rows<6, true>(right_turned), join_rows<6, true>(left_turned),
             join_rows<3, true>(right_turned), join_rows<4, true>(middle_turned)}};
}
