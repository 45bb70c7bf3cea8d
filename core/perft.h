// The count of positions that legal moves lead to: the proof of a move generator and the measure of its
// speed.
#pragma once

#include <cstdint>

#include "core/movegen.h"

// The number of lines of `depth` plies, at least 1. Every last position is generated and counted by itself,
// so the time is that of generating all moves.
uint64_t perft(const Position& position, int depth);
