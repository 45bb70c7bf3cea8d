// The sums below are made for speed, as the search calls `evaluate` at most of its leaves. The places in the
// pattern tables are computed first, so that their reads, which miss the caches most, run while the features
// are counted. Every combination of processor features has its own copy of the function, so that none is
// asked for twice.
#include "eval/evaluation.h"

#include <array>
#include <cstdlib>

#include "eval/regions.h"
#include "eval/weights.h"

namespace {

bool tables_built = false;

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
constexpr DigitMasks ROW_DIGITS = digit_masks(row_of);
constexpr DigitMasks COLUMN_DIGITS = digit_masks(column_of);

constexpr uint64_t rows(int first, int last) {
    uint64_t set = 0;
    for (int square = first * 5; square < last * 5 + 5; ++square)
        set |= mask_of_square[static_cast<size_t>(square)];
    return set;
}

using Counter = int32_t (*)(uint64_t);

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

// Black's rows less white's, each seen from its own side. A white man on row r is worth 9 - r, so that one
// count over the men of both sides does.
template <Counter COUNT>
inline int32_t tempo_difference(const NodeSummary& summary) {
    return sum_of_numbers<COUNT>(summary.black_men_set | summary.white_men_set, ROW_DIGITS) -
           9 * summary.white_men;
}

template <Counter COUNT>
inline int32_t phase_of(const NodeSummary& summary) {
    const uint64_t at_home = (summary.black_men_set & rows(0, 3)) | (summary.white_men_set & rows(6, 9));
    const uint64_t ahead = (summary.black_men_set & rows(4, 8)) | (summary.white_men_set & rows(1, 5));
    return 2 * COUNT(at_home) + COUNT(ahead);
}

// A value for each end of the game.
struct Blend {
    int32_t opening = 0;
    int32_t endgame = 0;
};

inline void add_term(Blend& sums, int32_t term, int16_t opening, int16_t endgame) {
    sums.opening += term * opening;
    sums.endgame += term * endgame;
}

inline void add_patterns(Blend& sums, const RegionPlaces& places) {
    for (size_t t = 0; t < PATTERN_TABLES; ++t) {
        const PatternEntry& black = weights.patterns[t][places.forward[t]];
        const PatternEntry& white = weights.patterns[t][places.turned[t]];
        sums.opening += black.opening - white.opening;
        sums.endgame += black.endgame - white.endgame;
    }
}

inline void add_king_terms(Blend& sums, const NodeSummary& summary) {
    const EvalParams& params = weights.params;
    const int32_t black = summary.black_kings;
    const int32_t white = summary.white_kings;
    const int32_t further = std::max(0, black - 1) - std::max(0, white - 1);
    add_term(sums, further, params.kings_opening, params.kings_endgame);
    add_term(sums, (black > 0) - (white > 0), params.has_kings_opening, params.has_kings_endgame);
}

// Large advantages count less, with a jump at the limit.
inline int32_t compressed(int32_t score) {
    constexpr int32_t LIMIT = 1500;
    if (score > LIMIT) return score / 8 + LIMIT;
    if (score < -LIMIT) return score / 8 - LIMIT;
    return score;
}

// Endings in which both sides have a king are mostly drawn. True if the ending is so small that the result is
// `score` = +1 or -1 for black, or for `side` if the sides are equal, and nothing more is done to it.
bool damp_king_ending(int32_t& score, int side, const NodeSummary& summary) {
    const int32_t fewer_kings = std::min(summary.black_kings, summary.white_kings);
    if (fewer_kings == 0) return false;
    score = 3 * score / (fewer_kings + 3);
    const int32_t lead = summary.black_total - summary.white_total;
    if (std::abs(lead) >= 3) return false;
    if (summary.larger_total <= 3) {
        score = lead > 0 || (lead == 0 && side == BLACK) ? 1 : -1;
        return true;
    }
    const int drawish = (fewer_kings >= 2) + (summary.black_kings == summary.white_kings);
    constexpr int32_t DIVISORS_OF_4[3] = {2, 4, 16};
    constexpr int32_t DIVISORS_OF_5[3] = {1, 2, 4};
    if (summary.larger_total == 4) score /= DIVISORS_OF_4[drawish];
    if (summary.larger_total == 5) score /= DIVISORS_OF_5[drawish];
    return false;
}

// The score for black before anything is done to large scores and to king endings.
inline int32_t blended(const Blend& sums, int32_t phase) {
    // Extreme weights can go beyond 32 bits.
    const int64_t value = static_cast<int64_t>(sums.opening - sums.endgame) * phase +
                          static_cast<int64_t>(sums.endgame) * FULL_PHASE;
    return static_cast<int32_t>((value + (value < 0 ? -2000 : 2000)) / 4000);
}

template <bool PEXT, Counter COUNT>
int32_t evaluate_with(const Position& position, int side, const NodeSummary& summary) {
    const uint64_t black = summary.black_men_set;
    const uint64_t white = summary.white_men_set;
    const RegionPlaces places = PEXT ? places_by_extraction(black, white) : places_by_rows(black, white);
    const EvalParams& params = weights.params;
    Blend sums;
    add_patterns(sums, places);
    const int32_t balance =
        std::abs(moment<COUNT>(white, summary.white_men)) - std::abs(moment<COUNT>(black, summary.black_men));
    add_term(sums, balance, params.lr_bal_opening, params.lr_bal_endgame);
    add_term(sums, tempo_difference<COUNT>(summary), params.tempo_opening, params.tempo_endgame);
    add_term(sums, summary.black_men - summary.white_men, params.men_opening, params.men_endgame);
    if (position.king) add_king_terms(sums, summary);

    const int32_t phase = phase_of<COUNT>(summary);
    int32_t score = compressed(blended(sums, phase));
    if (position.king && phase <= 40 && damp_king_ending(score, side, summary))
        return side == BLACK ? score : -score;
    // Even, as half the score is doubled again.
    return side == BLACK ? score / 2 * 2 : score / 2 * -2;
}

}  // namespace

void init_eval_tables() {
    if (tables_built) return;
    build_digit_sums();
    tables_built = true;
}

int32_t game_phase(const NodeSummary& summary) { return phase_of<bit_count>(summary); }

int32_t evaluate(const Position& position, int side, NodeSummary& summary) {
    int32_t score;
    if (!have_popcnt) {
        score = use_pext ? evaluate_with<true, bit_count_by_table>(position, side, summary)
                         : evaluate_with<false, bit_count_by_table>(position, side, summary);
    } else {
        score = use_pext ? evaluate_with<true, bit_count_by_instruction>(position, side, summary)
                         : evaluate_with<false, bit_count_by_instruction>(position, side, summary);
    }
    summary.evaluation = score;
    return score;
}
