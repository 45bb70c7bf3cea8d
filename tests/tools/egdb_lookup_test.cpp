// The cache of blocks and the lookup's answers, on a small database.
#include "egdb/wld_lookup.h"

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <thread>

#include "egdb/block_cache.h"
#include "egdb/position_walk.h"
#include "tests/egdb/database_folder.h"
#include "tests/egdb/positions.h"
#include "tests/tools/egdb_fixture.h"
#include "tools/egdb_planes.h"

namespace {

// Three pieces, read by blocks through a cache of that many.
struct SmallDatabase {
    std::unique_ptr<EgdbDatabase> opened;
    EgdbDatabase& database;
    DbFile& file;  // db3

    explicit SmallDatabase(int32_t blocks)
        : opened(database_by_blocks(EGDB_WLD, built_up_to_three(), 3, blocks)),
          database(*opened),
          file(database.files[1]) {}

    // The ring from the head on.
    std::vector<int32_t> ring() const {
        std::vector<int32_t> order;
        int32_t at = database.lru_head;
        do {
            order.push_back(at);
            const CacheBlock& block = database.ccbs[static_cast<size_t>(at)];
            EXPECT_EQ(database.ccbs[static_cast<size_t>(block.next)].prev, at);
            at = block.next;
        } while (at != database.lru_head);
        return order;
    }
};

using Order = std::vector<int32_t>;

TEST(EgdbCache, TheRingKeepsTheOrderOfUse) {
    SmallDatabase small(4);
    EgdbDatabase& database = small.database;
    EXPECT_EQ(small.ring(), (Order{0, 1, 2, 3}));
    touch_cache_block(database, 3);  // the one used last: nothing changes
    EXPECT_EQ(small.ring(), (Order{0, 1, 2, 3}));
    touch_cache_block(database, 0);  // the head moves on
    EXPECT_EQ(small.ring(), (Order{1, 2, 3, 0}));
    touch_cache_block(database, 2);
    EXPECT_EQ(small.ring(), (Order{1, 3, 0, 2}));
    touch_cache_block(database, 3);
    EXPECT_EQ(small.ring(), (Order{1, 0, 2, 3}));
    EXPECT_EQ(database.statistics.lru_cache_hits, 4u);
}

TEST(EgdbCache, TheRingAgainstAPlainList) {
    std::mt19937 random(1);
    for (const int32_t blocks : {1, 2, 3, 7}) {
        SmallDatabase small(blocks);
        std::vector<int32_t> list = small.ring();
        for (int i = 0; i < 2000; ++i) {
            const auto used = static_cast<int32_t>(random() % static_cast<uint32_t>(blocks));
            touch_cache_block(small.database, used);
            list.erase(std::find(list.begin(), list.end(), used));
            list.push_back(used);
            ASSERT_EQ(small.ring(), list);
        }
    }
}

TEST(EgdbCache, LoadedBlocksTakeThePlaceOfTheOldest) {
    SmallDatabase small(2);
    ASSERT_GE(small.file.num_cache_blocks, 4);
    for (uint32_t block = 0; block < 4; ++block) {
        const Subslice* const subslice = find_subdb_of_block(small.database, small.file, block);
        ASSERT_NE(subslice, nullptr);
        const int32_t cached = get_block_for(small.database, *subslice, block);
        EXPECT_EQ(cached, static_cast<int32_t>(block % 2));
        EXPECT_EQ(small.file.cache_bufferi[block], cached);
        EXPECT_EQ(small.ring().back(), cached);
        if (block >= 2) {
            EXPECT_EQ(small.file.cache_bufferi[block - 2], -1);
        }
    }
    EXPECT_EQ(small.database.statistics.lru_cache_loads, 4u);
    EXPECT_EQ(find_subdb_of_block(small.database, small.file, 10000), nullptr);
}

// In sub-blocks of one Subslice the numbers rise; each is one that the slow sum gives.
TEST(EgdbCache, SubblocksAreNumberedInEverySubslice) {
    SmallDatabase small(1);
    std::set<uint32_t> starts;
    for (uint32_t block = 0; block < static_cast<uint32_t>(small.file.num_cache_blocks); ++block) {
        const Subslice* const subslice = find_subdb_of_block(small.database, small.file, block);
        const auto cached = static_cast<size_t>(get_block_for(small.database, *subslice, block));
        EXPECT_TRUE(small.database.ccbs[cached].is_sound);
        starts.insert(small.database.ccbs[cached].subindices[0]);
    }
    EXPECT_EQ(starts.size(), static_cast<size_t>(small.file.num_cache_blocks));
    EXPECT_EQ(database_log.find("agree"), std::string::npos);
}

TEST(EgdbLookup, ConditionalOnesDoNotRead) {
    SmallDatabase small(2);
    const Material m{2, 0, 1, 0};
    PositionWalk walk(m, 20000);
    while (has_capture(walk.position, WHITE)) walk.advance();
    EXPECT_EQ(wld_lookup(small.database, walk.position, WHITE, true), EGDB_NOT_IN_CACHE);
    const EgdbValue value = wld_lookup(small.database, walk.position, WHITE, false);
    EXPECT_EQ(value, solved_value(solved_up_to(3), walk.position, WHITE));
    EXPECT_EQ(wld_lookup(small.database, walk.position, WHITE, true), value);
    EXPECT_EQ(small.database.statistics.lru_cache_loads, 1u);
    EXPECT_EQ(small.database.statistics.db_requests, 3u);
    EXPECT_EQ(small.database.statistics.db_returns, 2u);
}

TEST(EgdbLookup, WhatIsNotInTheFiles) {
    SmallDatabase small(1);
    EgdbDatabase& database = small.database;
    EXPECT_EQ(wld_lookup(database, kings({}, {1}), BLACK, true), EGDB_LOSS);
    EXPECT_EQ(wld_lookup(database, kings({}, {1}), WHITE, true), EGDB_WIN);
    EXPECT_EQ(wld_lookup(database, kings({1}, {}), BLACK, true), EGDB_WIN);
    EXPECT_EQ(wld_lookup(database, kings({1}, {}), WHITE, true), EGDB_LOSS);
    EXPECT_EQ(database.statistics.db_returns, 4u);
    EXPECT_EQ(wld_lookup(database, kings({1, 2, 3, 4, 5}, {46, 47, 48, 49, 50}), BLACK, true),
              EGDB_SUBDB_UNAVAILABLE);
    EXPECT_EQ(wld_lookup(database, kings({1, 2, 3, 4, 5, 6}, {50}), BLACK, true), EGDB_SUBDB_UNAVAILABLE);
    for (const int side : {BLACK, WHITE})
        EXPECT_EQ(wld_lookup(database, kings({1, 2, 3}, {50}), side, true), EGDB_SUBDB_UNAVAILABLE);
    EXPECT_EQ(database.statistics.db_not_present_requests, 4u);
    // One side to move is there, the other not.
    (*database.cprsubdatabase)[static_cast<size_t>(egdb_slot({0, 2, 0, 1}, WHITE))].subslices.reset();
    EXPECT_EQ(wld_lookup(database, kings({1, 2}, {50}), WHITE, true), EGDB_UNKNOWN);
    EXPECT_EQ(wld_lookup(database, kings({50}, {1, 2}), BLACK, true), EGDB_UNKNOWN);
}

TEST(EgdbLookup, SingleValuesNeedNoBlock) {
    SmallDatabase small(1);
    Subslice& subslice = *find_subslice(small.database, {0, 2, 0, 1}, BLACK, 0);
    subslice.singlevalue = EGDB_DRAW;
    EXPECT_EQ(wld_lookup(small.database, kings({1, 2}, {50}), BLACK, true), EGDB_DRAW);
    EXPECT_EQ(small.database.statistics.lru_cache_loads, 0u);
}

// Each of these is one byte, of the first catalogue, that stands for more positions than there are; the value
// is told by the map.
TEST(EgdbLookup, InsideOneSubblockNoNumbersAreAsked) {
    const ScratchFolder folder;
    constexpr char RUN = 49;  // 2479 positions of symbol 0
    write_content(folder.file("db2.cpr1"), {RUN, RUN, RUN});
    write_content(folder.file("db2.idx1"),
                  "BASE0,1,0,1,0,b:0/0,0,225\nBASE1,0,1,0,0,b:0/1,0,198\nBASE0,1,1,0,0,b:0/2,0,147\n");
    const auto opened = database_by_blocks(EGDB_WLD, folder.path, 2, 1);
    struct Row {
        Material material;
        EgdbValue value;
        bool marked;
    };
    for (const Row& row : {Row{{0, 1, 0, 1}, EGDB_WIN, true}, Row{{1, 0, 1, 0}, EGDB_LOSS, true},
                           Row{{0, 1, 1, 0}, EGDB_DRAW, false}}) {
        ASSERT_LE(slice_size(row.material), 2479);
        EXPECT_EQ(find_subslice(*opened, row.material, BLACK, 0)->same_subidx, row.marked);
        const auto ask = [&](int64_t index) {
            return wld_lookup(*opened, position_from_index(index, row.material), BLACK, false);
        };
        EXPECT_EQ(ask(0), row.value);
        opened->ccbs[0].subindices.fill(0);
        EXPECT_EQ(ask(slice_size(row.material) - 1), row.value);
        opened->ccbs[0].subindices.fill(UINT32_MAX);
        EXPECT_EQ(ask(slice_size(row.material) / 2), row.value);
    }
    EXPECT_EQ(opened->statistics.lru_cache_loads, 1u);
}

TEST(EgdbLookup, BlocksThatDisagreeGiveNoValue) {
    SmallDatabase small(1);
    Subslice& subslice = *find_subslice(small.database, {2, 0, 1, 0}, BLACK, 0);
    subslice.catalogidx[0] = static_cast<uint8_t>(subslice.catalogidx[0] ^ 1);
    const Position position = position_from_index(0, {2, 0, 1, 0});
    EXPECT_EQ(wld_lookup(small.database, position, BLACK, false), EGDB_UNKNOWN);
    EXPECT_NE(database_log.find("db3.cpr1: block"), std::string::npos);
    EXPECT_NE(database_log.find("does not agree with the index"), std::string::npos);
}

TEST(EgdbLookup, TheSearchInSortedNumbers) {
    const std::vector<uint32_t> numbers{0, 5, 5, 9, 100};
    for (uint32_t key = 0; key < 120; ++key) {
        uint32_t expected = 0;
        for (uint32_t i = 0; i < numbers.size(); ++i)
            if (numbers[i] <= key) expected = i;
        EXPECT_EQ(greatest_not_above(0, 5, numbers.data(), key), expected);
    }
    EXPECT_EQ(greatest_not_above(3, 5, numbers.data(), 0), 3u);
    EXPECT_EQ(greatest_not_above(3, 4, numbers.data(), 200), 3u);
    EXPECT_EQ(greatest_not_above(4, 3, numbers.data(), 200), 4u);
}

TEST(EgdbLookup, ManyThreadsShareASmallCache) {
    SmallDatabase small(2);
    const SolvedSet& set = solved_up_to(3);
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    for (uint64_t t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            std::mt19937_64 random(t);
            const std::vector<Material> materials = solving_order(3);
            for (int i = 0; i < 4000; ++i) {
                const Material& m = materials[random() % materials.size()];
                const auto index = static_cast<int64_t>(random() % static_cast<uint64_t>(slice_size(m)));
                const Position position = position_from_index(index, m);
                const int side = static_cast<int>(random() % 2);
                if (has_capture(position, side)) continue;
                const EgdbValue value = wld_lookup(small.database, position, side, i % 4 == 0);
                if (value != EGDB_NOT_IN_CACHE && value != solved_value(set, position, side)) ++wrong;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong, 0);
}

}  // namespace
