// Four pieces, every position.
#include <gtest/gtest.h>

#include "egdb/mtc_codes.h"
#include "egdb/mtc_open.h"
#include "tests/egdb/database_folder.h"
#include "tests/tools/egdb_fixture.h"
#include "tests/tools/egdb_forms.h"
#include "tests/tools/older_writer.h"
#include "tools/egdb_build.h"
#include "tools/egdb_mtc_blocks.h"
#include "tools/egdb_mtc_solver.h"

namespace {

TEST(EgdbDeep, ValuesOfFourPiecesFollowFromTheirMoves) {
    const SolvedSet& set = solved_up_to(4);
    for (const Material& m : solving_order(4)) {
        for_positions(m, [&](const Position& position, int side, int64_t i) {
            ASSERT_EQ(packed_value(values_of(set, m, side), i), value_by_rules(set, position, side));
        });
    }
}

TEST(EgdbDeep, TheNewestFormHasThem) {
    const ScratchFolder folder;
    const std::atomic<bool> stop = false;
    EgdbBuildProgress progress;
    EgdbBuildResult result;
    ASSERT_EQ(build_database({folder.path, 4, 2}, stop, progress, result), EGDB_BUILT);
    for (const Way& way : {Way{EGDB_WLD, true, 0, 1}, Way{EGDB_WLD, false, 64, 1}}) {
        const OpenEgdb driver = open_form(way, folder.path, 4);
        ASSERT_TRUE(driver) << database_log;
        expect_as_solved(*driver, way, 4);
    }
}

TEST(EgdbDeep, TheOlderFormsHaveThemWithThoseThatCapture) {
    for (const EgdbType type : OLDER) {
        const ScratchFolder folder;
        write_older_database(folder.path, type, solved_up_to(4), 4);
        for (const Way& way : {Way{type, true, 0, 1}, Way{type, false, 64, 1}}) {
            const OpenEgdb driver = open_form(way, folder.path, 4);
            ASSERT_TRUE(driver) << database_log;
            expect_as_solved(*driver, way, 4);
        }
    }
}

// As well as those of fewer pieces; the files are those that come with the program.
TEST(EgdbDeep, DistancesFollowFromTheirMovesAndAreInTheFiles) {
    EgdbOpenRequest request;
    request.folder = shipped_distances();
    request.pieces = 4;
    const OpenEgdb driver = open_mtc(request);
    ASSERT_TRUE(driver);
    const SolvedSet& set = solved_up_to(4);
    int64_t told = 0;
    for (int pieces = 2; pieces <= 4; ++pieces) {
        for (const Material& m : solving_order(pieces)) {
            SolvedDistances solved;
            ASSERT_EQ(solve_distances(m, set, SolveControl{2, nullptr, nullptr}, solved), 0);
            for_positions(m, [&](const Position& position, int side, int64_t i) {
                const int distance = solved.distances[static_cast<size_t>(side)][static_cast<size_t>(i)];
                ASSERT_EQ(distance, distance_by_moves(set, solved, position, side));
                const int32_t number = driver->lookup(driver->handle, position, side, false);
                ASSERT_EQ(number, stored_mtc(distance));
                // Only what is won or lost has one.
                ASSERT_TRUE(number == NO_MTC || packed_value(values_of(set, m, side), i) != EGDB_DRAW);
                told += number != NO_MTC;
            });
        }
    }
    EXPECT_EQ(told, 1447);
}

}  // namespace
