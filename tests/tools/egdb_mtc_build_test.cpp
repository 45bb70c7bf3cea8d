// The files of moves to conversion: written and read back.
#include "tools/egdb_mtc_build.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <thread>

#include "base/files.h"
#include "egdb/mtc_codes.h"
#include "egdb/mtc_open.h"
#include "egdb/position_walk.h"
#include "tests/base/scratch_folder.h"
#include "tests/tools/egdb_fixture.h"
#include "tools/egdb_mtc_blocks.h"
#include "tools/egdb_mtc_solver.h"

namespace {

std::atomic<bool> never = false;

const std::string SHIPPED = PROJECT_FOLDER "/data/mtc_database/";

EgdbBuildStatus build(const std::string& folder, int pieces, int threads = 1,
                      const std::atomic<bool>& stop = never) {
    EgdbBuildProgress progress;
    EgdbBuildResult result;
    const EgdbBuildStatus status = build_mtc_database({folder, pieces, threads}, stop, progress, result);
    if (status == EGDB_BUILT) {
        EXPECT_EQ(progress.done, progress.all);
    }
    return status;
}

TEST(MtcBuild, DistancesAreRoundedUpToEvenNumbersFromTenOn) {
    EXPECT_EQ(stored_mtc(NO_DISTANCE), NO_MTC);
    for (int distance = 0; distance <= 8; ++distance) EXPECT_EQ(stored_mtc(distance), NO_MTC);
    EXPECT_EQ(stored_mtc(9), 10);
    EXPECT_EQ(stored_mtc(10), 10);
    EXPECT_EQ(stored_mtc(11), 12);
    EXPECT_EQ(stored_mtc(LONGEST_DISTANCE), 254);
    EXPECT_LE(stored_mtc(LONGEST_DISTANCE), MTC_LARGEST);
}

TEST(MtcBuild, TheSmallFilesThatComeWithTheProgramWithAnyNumberOfThreads) {
    for (const int threads : {1, 3}) {
        const ScratchFolder folder;
        ASSERT_EQ(build(folder.path, 3, threads), EGDB_BUILT);
        int files = 0;
        for (const auto& entry : std::filesystem::directory_iterator(folder.path)) {
            const std::string name = entry.path().filename();
            EXPECT_EQ(content_of(entry.path()), content_of(SHIPPED + name)) << name;
            ++files;
        }
        EXPECT_EQ(files, 4);
    }
}

TEST(MtcBuild, WhatIsThereIsKeptAndTheRestIsMade) {
    const ScratchFolder folder;
    ASSERT_EQ(build(folder.path, 3), EGDB_BUILT);
    std::filesystem::remove(folder.file("db3.idx_mtc"));
    std::ofstream(folder.file("db2.idx_mtc")) << "kept";
    ASSERT_EQ(build(folder.path, 3), EGDB_BUILT);
    EXPECT_EQ(content_of(folder.file("db3.idx_mtc")), content_of(SHIPPED + "db3.idx_mtc"));
    EXPECT_EQ(content_of(folder.file("db2.idx_mtc")), "kept");
    EgdbBuildProgress progress;
    EgdbBuildResult result;
    ASSERT_EQ(build_mtc_database({folder.path, 3, 1}, never, progress, result), EGDB_BUILT);
    EXPECT_EQ(progress.all, 0) << "there is nothing to do";
    EXPECT_TRUE(result.files.empty());
}

TEST(MtcBuild, GoesOnWhereItWasStopped) {
    const ScratchFolder folder;
    for (int round = 0; round < 6; ++round) {
        std::atomic<bool> stop = false;
        EgdbBuildStatus status = EGDB_BUILT;
        std::thread builder([&] { status = build(folder.path, 3, 1, stop); });
        std::this_thread::sleep_for(std::chrono::milliseconds(15 * round));
        stop = true;
        builder.join();
        if (status == EGDB_BUILT) break;
        EXPECT_EQ(status, EGDB_BUILD_STOPPED);
    }
    ASSERT_EQ(build(folder.path, 3), EGDB_BUILT);
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path)) {
        const std::string name = entry.path().filename();
        EXPECT_EQ(content_of(entry.path()), content_of(SHIPPED + name)) << name;
        ++files;
    }
    EXPECT_EQ(files, 4);
}

// What an interrupted build solved is not solved again: here all positions are said to be won, and from most
// of them no way to a conversion is found.
TEST(MtcBuild, ValuesThatWereKeptAreTaken) {
    const ScratchFolder folder;
    for (const Material& m : solving_order(2)) {
        SolvedMaterial won{m, find_solved(solved_up_to(2), m)->values};
        for (PackedValues& values : won.values) std::fill(values.begin(), values.end(), uint8_t{0x55});
        const std::string name = "solved2-" + std::to_string(m.bm) + std::to_string(m.bk) +
                                 std::to_string(m.wm) + std::to_string(m.wk) + ".part";
        ASSERT_EQ(write_solved(folder.file(name), won), 0);
    }
    EgdbBuildProgress progress;
    EgdbBuildResult result;
    ASSERT_EQ(build_mtc_database({folder.path, 2, 1}, never, progress, result), EGDB_BUILT);
    ASSERT_EQ(result.files.size(), 1u);
    EXPECT_LT(result.files[0].free_positions, result.files[0].positions / 2);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path), {}), 2);
}

TEST(MtcBuild, StopsAndFails) {
    const ScratchFolder folder;
    const std::atomic<bool> stop = true;
    EXPECT_EQ(build(folder.path, 3, 1, stop), EGDB_BUILD_STOPPED);
    EXPECT_TRUE(std::filesystem::is_empty(folder.path));
    EXPECT_EQ(build("/dev/null/folder", 2), EGDB_BUILD_CANNOT_WRITE);
}

// Distances of whole Slices, as the writer is given them.
struct Slice {
    Material material;
    int side;
    std::vector<uint8_t> distances;
};

// Runs of all lengths beside stretches in which nearly every position has a number, so that the files have
// many blocks, some of which stand for far more positions than others.
std::vector<uint8_t> random_distances(int64_t size, std::mt19937& random) {
    std::vector<uint8_t> distances(static_cast<size_t>(size), NO_DISTANCE);
    for (size_t i = 0; i < distances.size();) {
        const size_t stretch = std::min<size_t>(distances.size() - i, 1u << random() % 18);
        const auto percent = random() % 3 * 45;
        for (size_t j = 0; j < stretch; ++j, ++i)
            if (random() % 100 < percent) distances[i] = static_cast<uint8_t>(random() % 254);
    }
    return distances;
}

// db3 with two Slices of many blocks, a small one and one that is a single run.
std::vector<Slice> random_slices() {
    std::mt19937 random(8);
    std::vector<Slice> slices;
    for (const Material& m : {Material{2, 0, 1, 0}, Material{0, 2, 0, 1}, Material{1, 1, 0, 1}})
        for (const int side : {BLACK, WHITE})
            slices.push_back({m, side, random_distances(slice_size(m), random)});
    std::fill(slices[2].distances.begin(), slices[2].distances.end(), uint8_t{8});
    return slices;
}

void write_slices(const ScratchFolder& folder, const std::vector<Slice>& slices, const char* name) {
    MtcFilePair pair;
    for (const Slice& slice : slices)
        append_mtc_subslice(pair, slice.distances, slice.material, 0, slice.side);
    std::ofstream(folder.file(name + std::string(".cpr_mtc")), std::ios::binary)
        << std::string(pair.data.begin(), pair.data.end());
    std::ofstream(folder.file(name + std::string(".idx_mtc")), std::ios::binary) << pair.index;
}

OpenEgdb open_slices(const ScratchFolder& folder, int32_t blocks) {
    EgdbOpenRequest request;
    request.folder = folder.path;
    request.pieces = 4;
    request.cache_megabytes = 1;
    request.cache_blocks = blocks;
    return open_mtc(request);
}

TEST(MtcBuild, PositionsOfManyBlocksAreReadFromBothEnds) {
    const ScratchFolder folder;
    const std::vector<Slice> slices = random_slices();
    write_slices(folder, slices, "db3");
    ASSERT_GT(file_size(folder.file("db3.cpr_mtc")), 6 * 16384);
    for (const int32_t blocks : {1, 1000}) {
        const OpenEgdb driver = open_slices(folder, blocks);
        ASSERT_TRUE(driver);
        for (const Slice& slice : slices) {
            for (int64_t i = 0; i < slice_size(slice.material); i += blocks == 1 ? 13 : 3) {
                const Position position = position_from_index(i, slice.material);
                ASSERT_EQ(driver->lookup(driver->handle, position, slice.side, false),
                          stored_mtc(slice.distances[static_cast<size_t>(i)]))
                    << i;
            }
        }
        EXPECT_EQ(driver->get_stats(driver->handle)->db_returns,
                  driver->get_stats(driver->handle)->db_requests);
    }
}

// One of them is the run of 800000.
TEST(MtcBuild, LongRunsTakeFewBytes) {
    const ScratchFolder folder;
    const Material m{0, 3, 0, 1};
    std::vector<uint8_t> distances(static_cast<size_t>(slice_size(m)), 1);
    ASSERT_GT(distances.size(), 800000u);
    distances[850001] = 20;
    write_slices(folder, {{m, BLACK, distances}}, "db4");
    const std::string data = content_of(folder.file("db4.cpr_mtc"));
    EXPECT_EQ(data.substr(0, 4),
              std::string({84, 81, 0, static_cast<char>(104)}));  // 800000, 50000, 1, a number
    const OpenEgdb driver = open_slices(folder, 0);
    ASSERT_TRUE(driver);
    for (const int64_t index : {0, 799999, 800000, 850000, 850001, 850002, 921199})
        EXPECT_EQ(driver->lookup(driver->handle, position_from_index(index, m), BLACK, false),
                  index == 850001 ? 20 : NO_MTC)
            << index;
}

}  // namespace
