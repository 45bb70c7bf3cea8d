// The scale of scores. Inside the tree a score is relative to the side to move; at the root, and in
// everything that is returned or printed, it is relative to black.
#pragma once

#include <cstdint>

constexpr int32_t MATE_SCORE = 4000;            // minus the ply at which the opponent has no move
constexpr int32_t DECIDED_SCORE = 2000;         // of this size and beyond nothing is left to find out
constexpr int32_t REPETITION_SCORE = -7;        // for the side to move at a repeated position
constexpr int32_t SEARCH_CUT_OFF = 0x7fffffff;  // in place of a score: the pass was stopped
