// What a match has come to, told game by game: the score from this side's point of view with the difference
// in Elo that it makes likely. Games count in pairs, as each start position is played with both colours; a
// game that reached its limit of moves without a result counts half for each side, as a draw does.
#pragma once

#include <cstdint>
#include <map>
#include <string>

// The half points of games, 0 to 2, by their number from 0.
using GamePoints = std::map<int32_t, int>;

// Half points of a result, a code of records/game_headers.h, for a side.
int half_points(int32_t result, int side);

// Those of the games in a match's file that come before number `games`, where this side is the initiator,
// white in even games.
GamePoints points_in_file(const std::string& path, int32_t games);

// "score 61.2%, Elo +79.2 +- 44.1 (12 pairs)"; what is not known yet is left out.
std::string score_text(const GamePoints& points);
