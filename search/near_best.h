// The search for the best move and all moves that are nearly as good, to choose among them. The program
// itself has no use for it yet.
#pragma once

#include <atomic>
#include <cstdint>
#include <span>

#include "core/board.h"

enum NearBestStatus { NEAR_BEST_FOUND = 0, NEAR_BEST_ILLEGAL = 1, NEAR_BEST_NO_MOVES = 2 };

// Finds the moves of `side` whose value is within `msd`, the maximal score difference, of the best. Waits for
// its turn at the engine as `getmove` does and sets the time limits of the search itself.
//
//   time         seconds; the more moves come close, the more of it is used
//   text         SEARCH_TEXT_SIZE bytes: the status line, "No moves", or why there is no search: "Illegal
//                position", or no memory for the transposition table, which has the same status
//   stop_flag    set it from any thread to end the search, from iteration 5 on; cleared behind the last
//   depth_limit  0, or the iteration by which the search is to be deep enough: it has eight times the time
//                and ends one iteration before
//   count        how many moves were found
//   moves        they, the best first, as many as the span holds; and their values, relative to black
//   msd_out      the difference that was proved in the end, at least `msd`
//
// If the status is not NEAR_BEST_FOUND, count is 0 and the rest of the outputs is as it was.
int near_best_search(const Position& position, int side, double time, char* text,
                     std::atomic<int32_t>& stop_flag, int32_t msd, int32_t& count, std::span<Move> moves,
                     std::span<int32_t> values, int depth_limit, int32_t& msd_out);
