// Memory that runs out while the tools work.
#include <gtest/gtest.h>

#include <fstream>
#include <memory>

#include "tests/base/scratch_folder.h"
#include "tests/egdb/failing_new.h"
#include "tests/tools/egdb_fixture.h"
#include "tools/egdb_build.h"
#include "tools/egdb_mtc_build.h"
#include "tools/egdb_mtc_solver.h"
#include "tools/egdb_whole.h"
#include "tools/seed_weights.h"
#include "tools/train.h"

namespace {

// Runs the work with ever more memory until it has all that it wants; it must say each time that there is too
// little. Returns how often it did.
template <typename Work>
int fail_until_enough(int wanted_status, const Work& work) {
    int failed = 0, just_enough = 0;
    for (int allocations = 0; !testing::Test::HasFailure(); allocations += 1 + allocations / 6) {
        allocations_left = allocations;
        const int status = work();
        const int left = allocations_left;
        allocations_left = -1;
        if (left > 0) {
            EXPECT_EQ(status, 0);
            EXPECT_LE(just_enough, 1);
            return failed;
        }
        if (status == 0) {
            ++just_enough;
            continue;
        }
        EXPECT_EQ(status, wanted_status) << allocations;
        ++failed;
    }
    return failed;
}

std::vector<GameRecord> few_records() {
    std::vector<GameRecord> records;
    for (uint32_t i = 0; i < 40; ++i)
        records.push_back({mask_of_square[1 + i % 5], mask_of_square[40 + i % 7] | mask_of_square[33], 0, i,
                           static_cast<int16_t>(i), static_cast<int8_t>(i % 3 - 1), WHITE});
    return records;
}

TEST(ToolsMemory, Training) {
    TrainingSet set;
    set.learned = few_records();
    set.held_out = few_records();
    TrainOptions options;
    options.epochs = 1;
    const auto record = std::make_unique<Weights>();
    TrainReport report;
    EXPECT_GT(fail_until_enough(TRAIN_NO_MEMORY,
                                [&] {
                                    record->params.men_opening = 77;
                                    const int status = train(
                                        set, SEED_PARAMS, options, [](const TrainProgress&) { return true; },
                                        *record, report);
                                    if (status != TRAINED) {
                                        EXPECT_EQ(record->params.men_opening, 77);
                                    }
                                    return status;
                                }),
              20);
}

TEST(ToolsMemory, ReadingGames) {
    const ScratchFolder folder;
    const std::string path = folder.path + "/games";
    const std::vector<GameRecord> records = few_records();
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(records.data()),
               static_cast<std::streamsize>(records.size() * sizeof(GameRecord)));
    EXPECT_GT(fail_until_enough(SET_NO_MEMORY,
                                [&] {
                                    TrainingSet set;
                                    return read_games(path, {}, set);
                                }),
              3);
}

TEST(ToolsMemory, BuildingDatabases) {
    const std::atomic<bool> never = false;
    for (const auto build : {build_database, build_mtc_database}) {
        const ScratchFolder folder;
        const EgdbBuildOptions options{folder.path, 2, 1};
        EXPECT_GT(fail_until_enough(EGDB_BUILD_NO_MEMORY,
                                    [&] {
                                        EgdbBuildProgress progress;
                                        EgdbBuildResult result;
                                        return build(options, never, progress, result);
                                    }),
                  20);
    }
}

TEST(ToolsMemory, SolvingAndReadingBack) {
    const SolvedSet& set = solved_up_to(3);
    const auto database = open_whole_database(built_up_to_three(), 3, nullptr);
    ASSERT_TRUE(database);
    const Material m{2, 0, 1, 0};
    EXPECT_GT(fail_until_enough(2,
                                [&] {
                                    SolvedDistances solved;
                                    return solve_distances(m, set, SolveControl{1, nullptr, nullptr}, solved);
                                }),
              1);
    EXPECT_GT(fail_until_enough(2,
                                [&] {
                                    SolvedMaterial solved;
                                    return values_from_database(*database, set, m, 1, solved);
                                }),
              1);
}

}  // namespace
