#include "tests/tools/egdb_fixture.h"

#include "core/movegen.h"
#include "tests/base/scratch_folder.h"
#include "tools/egdb_build.h"
#include "tools/egdb_solver.h"

const SolvedSet& solved_up_to(int pieces) {
    static SolvedSet set;
    static int solved = 1;
    for (; solved < pieces; ++solved)
        for (const Material& m : solving_order(solved + 1))
            EXPECT_EQ(solve_material(m, set, SolveControl{2, nullptr, nullptr}), 0);
    return set;
}

const std::string& built_up_to_three() {
    static const ScratchFolder folder;
    static const bool built = [] {
        const std::atomic<bool> never = false;
        EgdbBuildProgress progress;
        EgdbBuildResult result;
        return build_database({folder.path, 3, 2}, never, progress, result) == EGDB_BUILT;
    }();
    EXPECT_TRUE(built);
    return folder.path;
}

EgdbValue value_by_rules(const SolvedSet& set, const Position& position, int side) {
    MoveList list;
    generate_moves(position, list, side);
    bool wins = false, draws = false;
    for (const Move& move : list) {
        const EgdbValue reply = solved_value(set, position_after(move, side ^ 1), side ^ 1);
        wins |= reply == EGDB_LOSS;
        draws |= reply == EGDB_DRAW;
    }
    return wins ? EGDB_WIN : draws ? EGDB_DRAW : EGDB_LOSS;
}
