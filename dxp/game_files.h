// The file in the data folder that keeps every game of a match. Interface thread only.
#pragma once

#include <cstdint>
#include <string>

// The file of this copy.
std::string match_games_path();

// One game of a match, as its headers have it.
struct MatchGameHeaders {
    int32_t number = 0;   // of the game, from 0; the file begins anew with 0
    std::string opening;  // name of the start position; empty on the follower, who knows none
    std::string black;    // names of the players
    std::string white;
    const char* result = "*";
};

// Appends the game on the board, as far as it has been played. Silent where it cannot be written. Names come
// from other programs: what would break a header is replaced.
void append_game_to_match_file(const MatchGameHeaders& headers);

// Before a match goes on behind its first `games` games: takes away what the file has behind them, the game
// that was being played when the match was broken off, if it was written and not counted. A file
// with no more than these games stays as it is.
void trim_match_games(int32_t games);
