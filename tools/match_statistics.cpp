#include "tools/match_statistics.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace {

constexpr double INFINITE = std::numeric_limits<double>::infinity();
constexpr double WIDTH_95 = 1.959963984540054;  // of the normal distribution, in standard deviations
constexpr double SPRT_ERROR = 0.05;
// Pairs of each score that the test takes as seen before the first, when it estimates their spread: a few
// equal pairs are no certainty.
constexpr double EARLIER_PAIRS = 0.5;

struct Moments {
    double pairs = 0;
    double mean = 0;
    double variance = 0;
};

// Of the pair scores, with so many pairs of each score more.
Moments pair_moments(const MatchResults& results, double more) {
    Moments m;
    double sum = 0, squares = 0;
    for (size_t i = 0; i < PAIR_SCORES; ++i) {
        const double count = static_cast<double>(results.pairs[i]) + more;
        const double score = static_cast<double>(i) / (PAIR_SCORES - 1);
        m.pairs += count;
        sum += count * score;
        squares += count * score * score;
    }
    if (m.pairs > 0) {
        m.mean = sum / m.pairs;
        m.variance = std::max(squares / m.pairs - m.mean * m.mean, 0.0);
    }
    return m;
}

}  // namespace

const double SPRT_BOUND = std::log((1 - SPRT_ERROR) / SPRT_ERROR);

void add_pair(MatchResults& results, int first, int second) {
    for (const int game : {first, second})
        ++(game == 2 ? results.wins : game == 1 ? results.draws : results.losses);
    ++results.pairs[static_cast<size_t>(first + second)];
}

int64_t match_games(const MatchResults& results) { return results.wins + results.draws + results.losses; }

int64_t match_pairs(const MatchResults& results) {
    return std::accumulate(results.pairs.begin(), results.pairs.end(), int64_t{0});
}

double match_score(const MatchResults& results) {
    const int64_t games = match_games(results);
    if (games == 0) return 0.5;
    return static_cast<double>(2 * results.wins + results.draws) / static_cast<double>(2 * games);
}

double elo_of_score(double score) {
    if (score <= 0) return -INFINITE;
    if (score >= 1) return INFINITE;
    return 400 * std::log10(score / (1 - score));
}

double score_of_elo(double elo) { return 1 / (1 + std::pow(10, -elo / 400)); }

double score_error(const MatchResults& results) {
    const Moments m = pair_moments(results, 0);
    return m.pairs < 2 ? INFINITE : std::sqrt(m.variance / (m.pairs - 1));
}

double elo_error(const MatchResults& results) {
    const double score = match_score(results);
    const double reach = WIDTH_95 * score_error(results);
    if (!(score - reach > 0 && score + reach < 1)) return INFINITE;
    return (elo_of_score(score + reach) - elo_of_score(score - reach)) / 2;
}

double likelihood_of_superiority(const MatchResults& results) {
    const double lead = match_score(results) - 0.5;
    const double error = score_error(results);
    if (lead == 0 || std::isinf(error)) return 0.5;
    return 0.5 * std::erfc(-lead / error / std::sqrt(2.0));
}

double sprt_log_likelihood(const MatchResults& results, const SprtTest& test) {
    const double pairs = static_cast<double>(match_pairs(results));
    const double score0 = score_of_elo(test.elo0), score1 = score_of_elo(test.elo1);
    const double variance = pair_moments(results, EARLIER_PAIRS).variance;
    return pairs * (score1 - score0) * (2 * match_score(results) - score0 - score1) / (2 * variance);
}

SprtVerdict sprt_verdict(const MatchResults& results, const SprtTest& test) {
    const double likelihood = sprt_log_likelihood(results, test);
    return likelihood >= SPRT_BOUND ? SPRT_ELO1 : likelihood <= -SPRT_BOUND ? SPRT_ELO0 : SPRT_OPEN;
}
