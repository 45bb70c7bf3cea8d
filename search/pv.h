// The principal variation, read back out of the transposition table. On the searching thread, between passes,
// while no worker runs.
#pragma once

#include <cstddef>
#include <vector>

#include "core/board.h"
#include "search/table.h"

// Writes the label, the first move and the moves that the table has behind it, ten moves at most. `side` is
// to move in `position`. With `exact_only` the walk ends at an entry that is not exact.
void pv_text(int side, const Position& position, const Move& first_move, char* out, size_t size,
             bool exact_only, int length, const char* label);

// Sets `pv_mark` in the entries of the line behind the first move, over `length` plies at most.
void tt_mark_pv(int side, const Move& first_move, int length);

// Takes the line behind the first move out of the table, for a search that gives every move a line of its
// own: each entry is kept in `saved` with the mark, in place of one kept for the same position before, and
// loses its mark in the table. `tt_restore` writes such an entry back.
void tt_save_line(int side, const Move& first_move, int length, std::vector<SavedEntry>& saved);
