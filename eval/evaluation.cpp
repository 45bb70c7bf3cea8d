// The sums below are made for speed, as the search calls `evaluate` at most of its leaves. The places in the
// pattern tables are computed first, so that their reads, which miss the caches most, run while the features
// are counted. Every combination of processor features has its own copy of the function, so that none is
// asked for twice.
#include "eval/evaluation.h"

#include <algorithm>
#include <cstdlib>

#include "eval/features.h"
#include "eval/regions.h"
#include "eval/weights.h"

namespace {

bool tables_built = false;

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
    add_term(sums, further_kings_difference(summary), params.kings_opening, params.kings_endgame);
    add_term(sums, has_king_difference(summary), params.has_kings_opening, params.has_kings_endgame);
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
    add_term(sums, balance_difference<COUNT>(summary), params.lr_bal_opening, params.lr_bal_endgame);
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
