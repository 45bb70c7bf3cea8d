// Four pieces, every position.
#include <gtest/gtest.h>

#include "core/movegen.h"
#include "egdb/mtc_codes.h"
#include "egdb/mtc_open.h"
#include "egdb/position_walk.h"
#include "egdb/wld_lookup.h"
#include "tests/base/scratch_folder.h"
#include "tests/tools/egdb_fixture.h"
#include "tools/egdb_build.h"
#include "tools/egdb_mtc_blocks.h"
#include "tools/egdb_mtc_solver.h"
#include "tools/egdb_planes.h"
#include "tools/egdb_whole.h"

namespace {

TEST(EgdbDeep, ValuesOfFourPiecesFollowFromTheirMovesAndAreInTheFiles) {
    const ScratchFolder folder;
    const std::atomic<bool> stop = false;
    EgdbBuildProgress progress;
    EgdbBuildResult result;
    ASSERT_EQ(build_database({folder.path, 4, 2}, stop, progress, result), EGDB_BUILT);
    const auto database = open_whole_database(folder.path, 4, nullptr);
    ASSERT_NE(database, nullptr);
    const SolvedSet& set = solved_up_to(4);
    for (const Material& m : solving_order(4)) {
        const SolvedMaterial& solved = *find_solved(set, m);
        for (int side = 0; side < (is_symmetric(m) ? 1 : 2); ++side) {
            PositionWalk walk(m, 0);
            for (int64_t i = 0; i < slice_size(m); ++i) {
                MoveList list;
                generate_moves(walk.position, list, side);
                bool wins = false, draws = false;
                for (const Move& move : list) {
                    const EgdbValue reply = solved_value(set, position_after(move, side ^ 1), side ^ 1);
                    wins |= reply == EGDB_LOSS;
                    draws |= reply == EGDB_DRAW;
                }
                const EgdbValue value = packed_value(solved.values[static_cast<size_t>(side)], i);
                ASSERT_EQ(value, wins ? EGDB_WIN : draws ? EGDB_DRAW : EGDB_LOSS);
                if (!has_capture(walk.position, side)) {
                    ASSERT_EQ(wld_lookup(*database, walk.position, side, true), value);
                }
                if (i + 1 < slice_size(m)) walk.advance();
            }
        }
    }
}

// As well as those of fewer pieces; the files are those that come with the program.
TEST(EgdbDeep, DistancesFollowFromTheirMovesAndAreInTheFiles) {
    EgdbOpenRequest request;
    request.folder = PROJECT_FOLDER "/data/mtc_database";
    request.pieces = 4;
    const OpenEgdb driver = open_mtc(request);
    ASSERT_TRUE(driver);
    const SolvedSet& set = solved_up_to(4);
    int64_t told = 0;
    for (int pieces = 2; pieces <= 4; ++pieces) {
        for (const Material& m : solving_order(pieces)) {
            SolvedDistances solved;
            ASSERT_EQ(solve_distances(m, set, SolveControl{2, nullptr, nullptr}, solved), 0);
            for (int side = 0; side < (is_symmetric(m) ? 1 : 2); ++side) {
                PositionWalk walk(m, 0);
                for (int64_t i = 0; i < slice_size(m); ++i) {
                    const int distance = solved.distances[static_cast<size_t>(side)][static_cast<size_t>(i)];
                    ASSERT_EQ(distance, distance_by_moves(set, solved, walk.position, side));
                    const int32_t number = driver->lookup(driver->handle, walk.position, side, false);
                    ASSERT_EQ(number, stored_mtc(distance));
                    told += number != NO_MTC;
                    if (i + 1 < slice_size(m)) walk.advance();
                }
            }
        }
    }
    EXPECT_EQ(told, 1447);
}

}  // namespace
