// The static evaluation of a quiet position: eight lookups in four learned pattern tables of men and five
// scalar features, each once for the opening and once for the endgame, blended by the phase of the game. All
// weights come from the weights file. Everything is read-only once the tables are built, so any thread may
// evaluate.
#pragma once

#include <cstdint>

#include "eval/node_summary.h"

// The phase of the starting position. Positions set up with more men can have more.
constexpr int32_t FULL_PHASE = 80;

// The score for `side`, positive when good for it; even, but for +1 and -1 of small king endings. Stores it
// in `summary.evaluation`, which is not looked at first. `summary` is that of `position`.
int32_t evaluate(const Position& position, int side, NodeSummary& summary);

// How far the game is from its end: 2 for each man on the first four rows of his side, 1 for each further on.
int32_t game_phase(const NodeSummary& summary);

// Builds the digit-sum tables. Does nothing the second time. Not for two threads at once.
void init_eval_tables();
