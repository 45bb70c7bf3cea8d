// The searches that value every root move once more, on top of the slow search, written out for each side.
#pragma once

#include <vector>

#include "tests/search/slow_search.h"

struct SlowSaved {
    PositionHash key;
    SlowEntry entry;
};

struct SlowRootMove {
    Move move{};
    int index = 0;
    int value = 0;
    std::vector<SlowSaved> saved;
};

// Every move's own value. Iterations go `step` deeper up to `depth_limit`. The moves come back sorted.
std::vector<SlowRootMove> slow_all_scores(SlowSearch& slow, const Position& position, int depth_limit,
                                          int step);

struct SlowNearBest {
    std::vector<SlowRootMove> moves;  // sorted, all of them
    int count = 0;                    // within `msd` of the first
    int msd = 0;
    int depth = 0;
};

// Iterations go two deeper until `depth_limit` - 1.
SlowNearBest slow_near_best(SlowSearch& slow, const Position& position, int msd, int depth_limit);
