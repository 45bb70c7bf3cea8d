// The numbering of positions once more, written from its description with lists of squares and counting
// instead of tables and sets, to hold the fast one against.
#pragma once

#include <cstdint>
#include <random>
#include <vector>

#include "egdb/numbering.h"

using Random = std::mt19937_64;

// Ways to choose k things of n, by Pascal's triangle.
int64_t slow_choose(int n, int k);

// The number of a position inside its Slice.
int64_t slow_index(const Position& position);

// All positions of the material, in the order of their numbers. For small materials only.
std::vector<Position> all_positions(const Material& m);

// A position with exactly that material.
Position random_position_of(Random& random, const Material& m);
