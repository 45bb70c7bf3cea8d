// The results of a match as one line in a file of the data folder. A match that was broken off can be resumed
// from it, so it is at every moment that of the game before or of the last one. Interface thread only.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "dxp/match_hooks.h"

// The file of this copy.
std::string match_stats_path();

// Writes "US vs THEM:  W wins, L losses, D draws, U unknowns", as the title has it.
void write_match_stats();

// The results in the file and the number of games in it; 0 if they cannot be read, and then `results` is
// untouched. What stands in front of the first colon plays no part.
int32_t read_match_stats(MatchCounters& results);

// The same from the text of a file.
int32_t parse_match_stats(std::string_view text, MatchCounters& results);
