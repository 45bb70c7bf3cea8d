// The search of the root's moves on one window, on thread 0 alone.
#pragma once

#include <cstdint>

#include "core/movegen.h"

// The position that a root search starts from, linked to the game's positions where there are any.
Position make_root(const Position& position, int side);

// Searches the moves of `list` on the window at the current iteration's depth, the move at `best_index`
// first. The window and the result are relative to black; `best_index` receives the best move's index.
// Returns SEARCH_CUT_OFF if the search was stopped; nothing of the pass may then be used. `root` is where the
// line of the game ends.
int32_t root_search(const Position& root, const MoveList& list, int32_t alpha, int32_t beta,
                    int32_t& best_index);
