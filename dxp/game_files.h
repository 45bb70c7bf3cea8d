// The file in the data folder that keeps every game of a match. Interface thread only.
#pragma once

#include <cstdint>
#include <string>

// The file of this copy.
std::string match_games_path();

// Appends the game on the board, as far as it has been played, as number `match_games`; with the first the
// file begins anew. On the initiator its event names the start position. Silent where it cannot be written.
// Names come from other programs: what would break a header is replaced.
void append_match_game(const char* black_name, const char* white_name, const char* result_text);

// Before a match goes on behind its first `games` games: takes away what the file has behind them, as where
// the program was ended between a game's writing and its counting. A file without such games stays as it is.
void trim_match_games(int32_t games);
