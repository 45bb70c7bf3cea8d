// Small endings solved once for all tests of one program, and what such tests go over.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "egdb/position_walk.h"
#include "tools/egdb_values.h"

// All materials of up to that many pieces, solved. Kept until the program ends.
const SolvedSet& solved_up_to(int pieces);

// A folder with our own database of two and three pieces, built once.
const std::string& built_up_to_three();

inline const PackedValues& values_of(const SolvedSet& set, const Material& m, int side) {
    return find_solved(set, m)->values[static_cast<size_t>(side)];
}

// Calls `visit(position, side, index)` for every position of a canonical material, or for one of so many,
// with either side to move; where both sides are alike with black. Ends with the first failure of the test.
template <typename Visit>
void for_positions(const Material& m, const Visit& visit, int64_t stride = 1) {
    PositionWalk walk(m, 0);
    for (int64_t i = 0; i < slice_size(m); i += stride) {
        if (i > 0 && stride == 1)
            walk.advance();
        else if (i > 0)
            walk.position = position_from_index(i, m);
        for (int side = 0; side < (is_symmetric(m) ? 1 : 2); ++side) {
            visit(walk.position, side, i);
            if (testing::Test::HasFatalFailure()) return;
        }
    }
}

// What the side to move has by the rules of the game alone, from the values of the positions behind its
// moves.
EgdbValue value_by_rules(const SolvedSet& set, const Position& position, int side);
