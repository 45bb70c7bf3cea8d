#include "tools/egdb_build.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <thread>

#include "base/files.h"
#include "egdb/wld_lookup.h"
#include "tests/egdb/database_folder.h"
#include "tests/tools/egdb_fixture.h"
#include "tools/egdb_planes.h"
#include "tools/egdb_solved_files.h"
#include "tools/egdb_whole.h"

namespace {

std::atomic<bool> never = false;

EgdbBuildStatus build(const std::string& folder, int pieces, int threads = 1,
                      const std::atomic<bool>& stop = never) {
    EgdbBuildProgress progress;
    EgdbBuildResult result;
    const EgdbBuildStatus status = build_database({folder, pieces, threads}, stop, progress, result);
    if (status == EGDB_BUILT) {
        EXPECT_EQ(progress.done, progress.all);
    }
    return status;
}

// Each position that is looked up, of both colours.
void check_all_values(EgdbDatabase& database, int pieces) {
    const SolvedSet& set = solved_up_to(pieces);
    for (const Material& m : solving_order(pieces)) {
        for_positions(m, [&](const Position& position, int side, int64_t index) {
            if (is_left_out(position, m, side)) return;
            const EgdbValue value = packed_value(values_of(set, m, side), index);
            ASSERT_EQ(wld_lookup(database, position, side, false), value) << side << " " << index;
            ASSERT_EQ(wld_lookup(database, mirror_position(position), side ^ 1, false), value);
        });
    }
}

TEST(EgdbBuild, EveryPositionOfTwoAndThreePiecesIsRead) {
    const auto database = open_whole_database(built_up_to_three(), 9, nullptr);
    ASSERT_NE(database, nullptr);
    check_all_values(*database, 2);
    check_all_values(*database, 3);
    EXPECT_EQ(database->statistics.lru_cache_loads, 0u);
    EXPECT_GT(database->statistics.autoload_hits, 0u);
    EXPECT_EQ(database->statistics.db_returns, database->statistics.db_requests);
}

TEST(EgdbBuild, WhatKilledBuildsLeftIsTakenAway) {
    const ScratchFolder folder;
    for (const char* const name : {"solved3-1101.part.new12918-7", "db2.cpr1.new1-0", "db2.idx1.new77-12",
                                   "notes.new1-0", "db2.cpr1.newer", "db2.new", "solved.txt"})
        write_content(folder.file(name), "half");
    ASSERT_EQ(build(folder.file(""), 2), EGDB_BUILT);
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path))
        names.insert(entry.path().filename().string());
    EXPECT_EQ(names, (std::set<std::string>{"db2.cpr1", "db2.cpr1.newer", "db2.idx1", "db2.new",
                                            "notes.new1-0", "solved.txt"}));
}

TEST(EgdbBuild, EveryPositionIsReadThroughASmallCache) {
    for (const int32_t blocks : {1, 3}) {
        const auto database = database_by_blocks(EGDB_WLD, built_up_to_three(), 3, blocks);
        check_all_values(*database, 2);
        check_all_values(*database, 3);
        EXPECT_GT(database->statistics.lru_cache_loads, 5u);
        EXPECT_GT(database->statistics.lru_cache_hits, 0u);
    }
}

TEST(EgdbBuild, TheNumberOfThreadsDoesNotMatter) {
    const ScratchFolder folder;
    ASSERT_EQ(build(folder.path, 3, 5), EGDB_BUILT);
    for (const char* name : {"db2.cpr1", "db2.idx1", "db3.cpr1", "db3.idx1"})
        EXPECT_EQ(content_of(folder.file(name)), content_of(built_up_to_three() + name)) << name;
}

TEST(EgdbBuild, NothingElseIsLeftInTheFolder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(built_up_to_three()))
        names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"db2.cpr1", "db2.idx1", "db3.cpr1", "db3.idx1"}));
}

// Each material is a file of its own until the end: a build that is stopped anywhere gives the same files.
TEST(EgdbBuild, GoesOnWhereItWasStopped) {
    const ScratchFolder folder;
    for (int round = 0; round < 8; ++round) {
        std::atomic<bool> stop = false;
        EgdbBuildStatus status = EGDB_BUILT;
        std::thread builder([&] { status = build(folder.path, 3, 1, stop); });
        std::this_thread::sleep_for(std::chrono::milliseconds(10 * round));
        stop = true;
        builder.join();
        if (status == EGDB_BUILT) break;
        EXPECT_EQ(status, EGDB_BUILD_STOPPED);
    }
    ASSERT_EQ(build(folder.path, 3), EGDB_BUILT);
    for (const char* name : {"db2.cpr1", "db2.idx1", "db3.cpr1", "db3.idx1"})
        EXPECT_EQ(content_of(folder.file(name)), content_of(built_up_to_three() + name)) << name;
}

// What an earlier run has done is told apart, so that the time that is left can be foreseen.
TEST(EgdbBuild, KeptWorkIsNotThisRuns) {
    const ScratchFolder folder;
    SolvedSet set;
    EgdbBuildResult result;
    EgdbBuildProgress earlier;
    int64_t kept = 0;
    for (const Material& m : solving_order(2)) {
        ASSERT_EQ(solve_and_keep(folder.path, m, set, {1, &never, &earlier.done}, result), EGDB_BUILT);
        kept += solving_work(m);
    }
    EgdbBuildProgress progress;
    ASSERT_EQ(build_database({folder.path, 3, 1}, never, progress, result), EGDB_BUILT);
    EXPECT_EQ(progress.kept, kept);
    EXPECT_EQ(progress.done, progress.all);
    EXPECT_LT(progress.kept, progress.all);
}

// Values of fewer pieces come from the files of an earlier build.
TEST(EgdbBuild, TakesUpAnEarlierBuild) {
    const ScratchFolder folder;
    ASSERT_EQ(build(folder.path, 2), EGDB_BUILT);
    ASSERT_EQ(build(folder.path, 3), EGDB_BUILT);
    EXPECT_EQ(content_of(folder.file("db3.cpr1")), content_of(built_up_to_three() + "db3.cpr1"));
    std::filesystem::remove(folder.file("db2.idx1"));  // as if it had not been written
    ASSERT_EQ(build(folder.path, 3), EGDB_BUILT);
    EXPECT_EQ(content_of(folder.file("db2.idx1")), content_of(built_up_to_three() + "db2.idx1"));
}

TEST(EgdbBuild, ValuesComeBackFromTheFiles) {
    const auto database = open_whole_database(built_up_to_three(), 3, nullptr);
    ASSERT_NE(database, nullptr);
    const SolvedSet& set = solved_up_to(3);
    for (const Material& m : solving_order(3)) {
        SolvedMaterial solved{};
        ASSERT_EQ(values_from_database(*database, set, m, 2, solved), 0);
        EXPECT_EQ(solved.values, find_solved(set, m)->values);
    }
    SolvedMaterial none{};
    EXPECT_EQ(values_from_database(*database, set, {2, 0, 2, 0}, 1, none), 1);
}

TEST(EgdbBuild, AFolderThatCannotBeWritten) {
    const ScratchFolder folder;
    std::ofstream(folder.file("taken")) << "x";
    EgdbBuildProgress progress;
    EgdbBuildResult result;
    EXPECT_EQ(build_database({folder.file("taken"), 2, 1}, never, progress, result), EGDB_BUILD_CANNOT_WRITE);
    EXPECT_EQ(result.failed_file, folder.file("taken"));
}

TEST(EgdbBuild, DamageIsFoundAtTheOpening) {
    const ScratchFolder folder;
    for (const char* name : {"db2.cpr1", "db2.idx1", "db3.cpr1", "db3.idx1"})
        std::filesystem::copy(built_up_to_three() + name, folder.file(name));
    const std::string whole = content_of(folder.file("db3.cpr1"));
    int refused = 0;
    for (size_t at = 5; at < whole.size(); at += whole.size() / 20) {
        std::string damaged = whole;
        damaged[at] = static_cast<char>(damaged[at] + 77);
        ASSERT_EQ(replace_file(folder.file("db3.cpr1"), damaged.data(), damaged.size()), 0);
        database_log.clear();
        if (open_whole_database(folder.path, 3, keep_log)) continue;
        ++refused;
        EXPECT_NE(database_log.find("does not agree with the index"), std::string::npos) << database_log;
    }
    EXPECT_GT(refused, 8);  // near its end a Subslice has room for other rows
    ASSERT_EQ(replace_file(folder.file("db3.cpr1"), whole.data(), whole.size() - 1), 0);
    EXPECT_EQ(open_whole_database(folder.path, 3, nullptr), nullptr);
}

TEST(EgdbBuild, MemoryIsTold) {
    EXPECT_GT(build_memory(5), build_memory(4));
    EXPECT_LT(build_memory(5), int64_t{1} << 30);
}

}  // namespace
