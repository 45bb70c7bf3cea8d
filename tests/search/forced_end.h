// A search of every line to the end of the game, for short forced ends.
#pragma once

#include <utility>
#include <vector>

#include "tests/search/fixtures.h"

// Plies to the end of the game with best play within `plies`: positive where the side to move wins, negative
// where it loses, 0 where nothing is forced. A side without a move has lost at once, which is -1; each ply
// more adds one.
int forced_end(const Position& p, int plies);

// As many random positions as asked for whose end is forced within five plies, and their ends.
std::vector<std::pair<Position, int>> decided_positions(uint64_t seed, int count);
