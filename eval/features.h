// The scalar features of a position, all as black's less white's. "Men" are men only: a king's square counts
// as empty. COUNT is `bit_count` or what it stands for on the running processor.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>

#include "eval/node_summary.h"

using Counter = int32_t (*)(uint64_t);

namespace feature_detail {

// The squares whose number, of row or column, has a binary digit set.
constexpr uint64_t squares_with(int digit, int (*number_of)(int square)) {
    uint64_t set = 0;
    for (int square = 0; square < SQUARES; ++square)
        if (number_of(square) >> digit & 1) set |= mask_of_square[static_cast<size_t>(square)];
    return set;
}
using DigitMasks = std::array<uint64_t, 4>;
constexpr DigitMasks digit_masks(int (*number_of)(int square)) {
    return {squares_with(0, number_of), squares_with(1, number_of), squares_with(2, number_of),
            squares_with(3, number_of)};
}
constexpr int row_of(int square) { return square / 5; }
// Columns from left to right; every other row begins on the second.
constexpr int column_of(int square) { return square % 5 * 2 + (row_of(square) % 2 == 0 ? 1 : 0); }
inline constexpr DigitMasks ROW_DIGITS = digit_masks(row_of);
inline constexpr DigitMasks COLUMN_DIGITS = digit_masks(column_of);

// The squares of rows `first` to `last`.
constexpr uint64_t rows(int first, int last) {
    uint64_t set = 0;
    for (int square = first * 5; square < last * 5 + 5; ++square)
        set |= mask_of_square[static_cast<size_t>(square)];
    return set;
}

// The sum over the squares of a set of the numbers whose binary digits the masks tell.
template <Counter COUNT>
inline int32_t sum_of_numbers(uint64_t set, const DigitMasks& digits) {
    return COUNT(set & digits[0]) + 2 * COUNT(set & digits[1]) + 4 * COUNT(set & digits[2]) +
           8 * COUNT(set & digits[3]);
}

// Columns weigh -9, -7, ... +9 from left to right: twice their number minus 9.
template <Counter COUNT>
inline int32_t moment(uint64_t men_set, int32_t men) {
    return 2 * sum_of_numbers<COUNT>(men_set, COLUMN_DIGITS) - 9 * men;
}

}  // namespace feature_detail

// White's lean to one wing less black's: positive when it is better for black.
template <Counter COUNT>
inline int32_t balance_difference(const NodeSummary& summary) {
    using namespace feature_detail;
    return std::abs(moment<COUNT>(summary.white_men_set, summary.white_men)) -
           std::abs(moment<COUNT>(summary.black_men_set, summary.black_men));
}

// Black's rows less white's, each seen from its own side. A white man on row r is worth 9 - r, so that one
// count over the men of both sides does.
template <Counter COUNT>
inline int32_t tempo_difference(const NodeSummary& summary) {
    return feature_detail::sum_of_numbers<COUNT>(summary.black_men_set | summary.white_men_set,
                                                 feature_detail::ROW_DIGITS) -
           9 * summary.white_men;
}

// How far the game is from its end: 2 for each man on the first four rows of his side, 1 for each further on.
template <Counter COUNT>
inline int32_t phase_of(const NodeSummary& summary) {
    using feature_detail::rows;
    const uint64_t at_home = (summary.black_men_set & rows(0, 3)) | (summary.white_men_set & rows(6, 9));
    const uint64_t ahead = (summary.black_men_set & rows(4, 8)) | (summary.white_men_set & rows(1, 5));
    return 2 * COUNT(at_home) + COUNT(ahead);
}

// Kings behind the first of each side.
inline int32_t further_kings_difference(const NodeSummary& summary) {
    return std::max(0, summary.black_kings - 1) - std::max(0, summary.white_kings - 1);
}

inline int32_t has_king_difference(const NodeSummary& summary) {
    return (summary.black_kings > 0) - (summary.white_kings > 0);
}
