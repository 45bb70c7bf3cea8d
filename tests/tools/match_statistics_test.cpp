#include "tools/match_statistics.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace {

constexpr double EXACT = 1e-9;

// Results with so many pairs of each score, most of them made of two equal games or of neighbours.
MatchResults results_of(const std::array<int, PAIR_SCORES>& pairs) {
    MatchResults results;
    for (int score = 0; score < PAIR_SCORES; ++score)
        for (int i = 0; i < pairs[static_cast<size_t>(score)]; ++i)
            add_pair(results, score / 2, score - score / 2);
    return results;
}

MatchResults mirrored(MatchResults results) {
    std::swap(results.wins, results.losses);
    std::reverse(results.pairs.begin(), results.pairs.end());
    return results;
}

TEST(MatchStatistics, PairsAreCounted) {
    MatchResults results;
    add_pair(results, 2, 2);
    add_pair(results, 0, 2);
    add_pair(results, 1, 1);
    add_pair(results, 1, 0);
    add_pair(results, 2, 1);
    EXPECT_EQ(results.wins, 4);
    EXPECT_EQ(results.draws, 4);
    EXPECT_EQ(results.losses, 2);
    EXPECT_EQ(results.pairs, (std::array<int64_t, 5>{0, 1, 2, 1, 1}));
    EXPECT_EQ(match_games(results), 10);
    EXPECT_EQ(match_pairs(results), 5);
    EXPECT_DOUBLE_EQ(match_score(results), 0.6);
}

TEST(MatchStatistics, EloAndScore) {
    EXPECT_EQ(elo_of_score(0.5), 0);
    EXPECT_FALSE(std::signbit(elo_of_score(0.5)));
    EXPECT_NEAR(elo_of_score(0.75), 190.84850188786498, EXACT);
    EXPECT_NEAR(elo_of_score(10.0 / 11), 400, EXACT);
    EXPECT_NEAR(score_of_elo(10), 0.5143871841659987, EXACT);
    EXPECT_TRUE(std::isinf(elo_of_score(0)) && elo_of_score(0) < 0);
    EXPECT_TRUE(std::isinf(elo_of_score(1)) && elo_of_score(1) > 0);
    for (double elo = -900; elo <= 900; elo += 37) {
        EXPECT_NEAR(elo_of_score(score_of_elo(elo)), elo, 1e-6);
        EXPECT_NEAR(score_of_elo(elo) + score_of_elo(-elo), 1, EXACT);
    }
}

TEST(MatchStatistics, ErrorsComeFromThePairs) {
    // Scores 1/4, 1/2, 1/2, 3/4: variance 1/32, divided by 3.
    EXPECT_NEAR(score_error(results_of({0, 1, 2, 1, 0})), std::sqrt(1.0 / 96), EXACT);
    // Five of 1/2, four of 3/4, one of 1: mean 0.65, mean square 0.45.
    const MatchResults results = results_of({0, 0, 5, 4, 1});
    EXPECT_NEAR(match_score(results), 0.65, EXACT);
    EXPECT_NEAR(score_error(results), 0.055277079839256664, EXACT);
    EXPECT_NEAR(elo_error(results), 84.82493201349087, 1e-6);
    EXPECT_NEAR(likelihood_of_superiority(results), 0.9966721972585253, EXACT);
    // The same games paired otherwise: a win and a loss from one position say less than two draws.
    MatchResults split, even;
    for (int i = 0; i < 10; ++i) {
        add_pair(split, 2, 2);
        add_pair(split, 0, 0);
        add_pair(even, 2, 0);
        add_pair(even, 0, 2);
    }
    EXPECT_EQ(match_score(split), match_score(even));
    EXPECT_GT(score_error(split), 0.1);
    EXPECT_EQ(score_error(even), 0);
}

TEST(MatchStatistics, LittleOrNoKnowledge) {
    const MatchResults none;
    EXPECT_EQ(match_score(none), 0.5);
    EXPECT_TRUE(std::isinf(score_error(none)));
    EXPECT_TRUE(std::isinf(elo_error(none)));
    EXPECT_EQ(likelihood_of_superiority(none), 0.5);
    EXPECT_EQ(sprt_log_likelihood(none, {0, 5}), 0);
    const MatchResults one = results_of({0, 0, 0, 1, 0});
    EXPECT_TRUE(std::isinf(elo_error(one)));
    EXPECT_EQ(likelihood_of_superiority(one), 0.5);
    const MatchResults draws = results_of({0, 0, 50, 0, 0});
    EXPECT_EQ(elo_error(draws), 0);
    EXPECT_EQ(likelihood_of_superiority(draws), 0.5);
    const MatchResults wins = results_of({0, 0, 0, 0, 50});
    EXPECT_TRUE(std::isinf(elo_error(wins)));
    EXPECT_EQ(likelihood_of_superiority(wins), 1);
    EXPECT_EQ(likelihood_of_superiority(mirrored(wins)), 0);
}

TEST(MatchStatistics, LogLikelihoodByHand) {
    EXPECT_NEAR(SPRT_BOUND, 2.94443897916644, EXACT);
    // Ten pairs, mean 1/2; with half a pair of each score more the variance is 0.085.
    EXPECT_NEAR(sprt_log_likelihood(results_of({1, 2, 4, 2, 1}), {0, 10}), -0.012175945189786118, EXACT);
    EXPECT_NEAR(sprt_log_likelihood(results_of({10, 20, 100, 40, 15}), {-5, 15}), 3.323997324418027, EXACT);
    EXPECT_EQ(sprt_verdict(results_of({10, 20, 100, 40, 15}), {-5, 15}), SPRT_ELO1);
    EXPECT_EQ(sprt_verdict(results_of({15, 40, 100, 20, 10}), {-15, 5}), SPRT_ELO0);
    EXPECT_EQ(sprt_verdict(results_of({1, 2, 4, 2, 1}), {0, 10}), SPRT_OPEN);
    // Nothing is clear after a few equal pairs.
    EXPECT_EQ(sprt_verdict(results_of({0, 0, 0, 0, 3}), {0, 50}), SPRT_OPEN);
    EXPECT_EQ(sprt_verdict(results_of({0, 0, 3, 0, 0}), {0, 5}), SPRT_OPEN);
}

TEST(MatchStatistics, BothPlayersSeeTheSame) {
    std::mt19937 random(5);
    for (int i = 0; i < 200; ++i) {
        std::array<int, PAIR_SCORES> pairs;
        for (int& count : pairs) count = static_cast<int>(random() % 30);
        const MatchResults results = results_of(pairs), other = mirrored(results);
        EXPECT_NEAR(match_score(results) + match_score(other), 1, EXACT);
        EXPECT_NEAR(elo_of_score(match_score(results)), -elo_of_score(match_score(other)), 1e-6);
        EXPECT_NEAR(score_error(results), score_error(other), EXACT);
        EXPECT_NEAR(likelihood_of_superiority(results) + likelihood_of_superiority(other), 1, EXACT);
        EXPECT_NEAR(sprt_log_likelihood(results, {-3, 8}), -sprt_log_likelihood(other, {-8, 3}), 1e-6);
        EXPECT_NEAR(sprt_log_likelihood(results, {-3, 8}), -sprt_log_likelihood(results, {8, -3}), 1e-6);
    }
}

TEST(MatchStatistics, TheTestErrsAsSeldomAsItSays) {
    // Pairs of two independent games with 40 % draws, of players that are `elo1` or `elo0` apart.
    std::mt19937_64 random(11);
    const SprtTest test{0, 60};
    for (const double elo : {test.elo0, test.elo1}) {
        constexpr int RUNS = 400;
        const double win = score_of_elo(elo) - 0.2;
        const auto game = [&] {
            const double x = std::uniform_real_distribution<double>(0, 1)(random);
            return x < win ? 2 : x < win + 0.4 ? 1 : 0;
        };
        int wrong = 0;
        for (int run = 0; run < RUNS; ++run) {
            MatchResults results;
            SprtVerdict verdict = SPRT_OPEN;
            while (verdict == SPRT_OPEN) {
                add_pair(results, game(), game());
                verdict = sprt_verdict(results, test);
            }
            if (verdict != (elo == test.elo0 ? SPRT_ELO0 : SPRT_ELO1)) ++wrong;
        }
        EXPECT_LT(wrong, RUNS / 10) << elo;
        EXPECT_GT(wrong, 0) << elo;
    }
}

}  // namespace
