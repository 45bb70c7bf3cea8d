// Sequences of values as a test writes them down, and the rows of catalogues laid upon them.
#pragma once

#include <cstdint>
#include <random>
#include <vector>

#include "tools/egdb_coder.h"

using Random = std::mt19937_64;

// A random sequence: -1 for a free position, else a value.
std::vector<int> random_sequence(Random& random, size_t length);

ValuePlanes planes_of_sequence(const std::vector<int>& sequence);

// Whether the row fits from there on, where a free position and what is behind the end fit anything.
bool row_fits(const std::vector<int>& sequence, const CodeRow& row, const SymbolValues& values, size_t at);

// The positions that the row stands for.
int64_t row_length(const CodeRow& row);
