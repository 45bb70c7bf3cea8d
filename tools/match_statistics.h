// What the results of a match say about the strength of its two players.
//
// Games come in pairs: one start position, both colours. Both games of a pair share the fate of their start
// position, so a pair, not a game, is the unit that is counted: its score for player A is 0, 1/4, 1/2, 3/4
// or 1 of what could be had. Errors from pairs are smaller than from games, and right.
//
// All functions here are re-entrant.
#pragma once

#include <array>
#include <cstdint>

constexpr int PAIR_SCORES = 5;

struct MatchResults {
    // Single games, from player A's point of view.
    int64_t wins = 0;
    int64_t draws = 0;
    int64_t losses = 0;
    // Entry k: the pairs in which player A had k half points out of four.
    std::array<int64_t, PAIR_SCORES> pairs{};
};

// Adds the two games of a pair, each 2 for a win of A, 1 for a draw, 0 for a loss.
void add_pair(MatchResults& results, int first, int second);

int64_t match_games(const MatchResults& results);
int64_t match_pairs(const MatchResults& results);

// The part of the points that A has, from 0 to 1; 1/2 before the first pair.
double match_score(const MatchResults& results);

// The difference in Elo points that makes a score likely, and the reverse. Infinite for 0 and 1.
double elo_of_score(double score);
double score_of_elo(double elo);

// Standard error of the score, from the spread of the pairs; infinite for less than two.
double score_error(const MatchResults& results);

// Half the width of the interval around the Elo difference that holds the true one in 95 cases of 100.
// Infinite where the interval of the score reaches 0 or 1.
double elo_error(const MatchResults& results);

// The likelihood, from 0 to 1, that A is the better player.
double likelihood_of_superiority(const MatchResults& results);

// The test whether A is `elo1` points better than B or only `elo0`, with both errors 5 %.
struct SprtTest {
    double elo0;
    double elo1;
};
enum SprtVerdict { SPRT_OPEN, SPRT_ELO0, SPRT_ELO1 };

// The bound on both sides of 0 at which the test is decided.
extern const double SPRT_BOUND;

// The logarithm of how many times likelier the results are with `elo1` than with `elo0`. The spread of the
// pairs is estimated from the results, cautiously while there are few.
double sprt_log_likelihood(const MatchResults& results, const SprtTest& test);
SprtVerdict sprt_verdict(const MatchResults& results, const SprtTest& test);
