// The search that gives every root move its own exact value, for an analysis that shows a score beside each
// move.
#pragma once

#include <cstdint>

#include "core/board.h"

// What `getmove` runs for SEARCH_ALL_SCORES, inside its turn at the engine. Each move is searched by itself,
// by the same bisection as a whole position, with its own line kept beside the table between its turns.
//
//   text       SEARCH_TEXT_SIZE bytes: depth, time, and every move with its value relative to black, the best
//              first; at the end also the line of the best move
//   flags      of SearchFlags, SEARCH_QUIET: no board and position in the log
//   best_move  the move with the best value, which is returned; the position itself where there is no move
//   searched   1 if an iteration deeper than 7 was begun, if the book or a database answered, or if there
//              is no move; else 0
//
// A stop brings back the values of the last whole iteration. The databases do not correct the move.
int32_t all_scores_search(const Position& position, int side, char* text, uint32_t flags, Move& best_move,
                          int32_t& searched);
