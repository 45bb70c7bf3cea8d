// The moves of a root, each with a value of its own. On thread 0 alone.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "core/movegen.h"
#include "search/table.h"

struct RootMove {
    Move move{};
    int32_t value = 0;           // of this iteration, relative to black
    int32_t previous_value = 0;  // of the last completed iteration
    int32_t index = 0;           // in the generated list
    std::vector<SavedEntry> pv_entries;
};
using RootMoves = std::vector<RootMove>;

// The moves of the list, in its order, all values 0.
RootMoves make_root_moves(const MoveList& list);

// Orders by value, the best for the side to move first; equal values keep their order.
void sort_root_moves(RootMoves& moves, int side);

// At the end of an iteration: keeps the values, or, if it was broken off, puts the kept ones back.
void keep_root_values(RootMoves& moves);
void restore_root_values(RootMoves& moves);

// Searches the one move on the window, both relative to black. SEARCH_CUT_OFF if the search was stopped.
int32_t search_root_move(const Position& root, const RootMove& move, int32_t alpha, int32_t beta);

// Room for about a hundred moves, and with it in the search's text, for labels and a line as well.
constexpr size_t ROOT_MOVES_TEXT_SIZE = 1400;

// Writes the first `count` moves with their values, each as "%s,%d  ". What does not fit is left out.
void root_moves_text(const Position& root, const RootMoves& moves, int count, char* out, size_t size);
