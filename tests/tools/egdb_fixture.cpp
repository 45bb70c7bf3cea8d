#include "tests/tools/egdb_fixture.h"

#include <gtest/gtest.h>

#include "tools/egdb_solver.h"

const SolvedSet& solved_up_to(int pieces) {
    static SolvedSet set;
    static int solved = 1;
    for (; solved < pieces; ++solved)
        for (const Material& m : solving_order(solved + 1))
            EXPECT_EQ(solve_material(m, set, SolveControl{2, nullptr, nullptr}), 0);
    return set;
}
