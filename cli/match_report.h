// What a match has come to, told game by game: the score from this side's point of view with the difference
// in Elo that it makes likely. Games count in pairs, as each start position is played with both colours; a
// game that reached its limit of moves without a result counts half for each side, as a draw does.
#pragma once

#include <cstdint>
#include <string>

#include "tools/match_statistics.h"

struct MatchScore {
    int64_t games = 0;
    int64_t half_points = 0;  // of all games
    MatchResults pairs;       // of games 2k and 2k + 1, counted from 0, that came one behind the other
    int32_t first_game = -1;  // the last game, if its partner is still to come
    int first_points = 0;
};

// Half points of a result, a code of records/game_headers.h, for a side.
int half_points(int32_t result, int side);

// Adds a game by its number from 0. Each game is added once, in their order.
void add_game(MatchScore& score, int32_t number, int points);

// The score of the games in a match's file that come before number `games`, where this side is the initiator,
// white in even games.
MatchScore score_in_file(const std::string& path, int32_t games);

// "score 61.2%, Elo +79.2 +- 44.1 (12 pairs)"; what is not known yet is left out.
std::string score_text(const MatchScore& score);
