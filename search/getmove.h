// The engine's door: a position in, a move, its value and a line of text out. It asks the book, then the
// databases, then searches by iterative deepening, and lastly lets the databases correct the move.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "core/board.h"

enum SearchFlags : uint32_t {
    SEARCH_ALL_SCORES = 2,  // give every move its value, as search/all_scores.h tells
    SEARCH_FULL_DEPTH = 4,  // do not cut the depth of a forced move
    SEARCH_QUIET = 8,       // no board and position in the log at the start, no result at the end
};

constexpr size_t SEARCH_TEXT_SIZE = 2000;

// Searches `position` with `side` to move under the limits in `search_state`, on the calling thread, which is
// thread 0 of the search. Only one search runs at a time: a second waits. Returns the value, positive when
// good for black.
//
//   text        SEARCH_TEXT_SIZE bytes: the status line, rewritten as the search goes on; another thread that
//               is to see it listens to search/search_text.h
//   stop_flag   set it from any thread to end the search; honoured from iteration 5 on and cleared behind
//               the last; a search without iterations leaves it
//   flags       SearchFlags
//   best_move   the move chosen; the position itself where there is none
//   searched    1; 0 if the move was forced and so not really searched
int32_t getmove(const Position& position, int side, char* text, std::atomic<int32_t>& stop_flag,
                uint32_t flags, Move& best_move, int32_t& searched);

// Nodes of the last or running search, over all threads.
uint64_t searched_nodes();
