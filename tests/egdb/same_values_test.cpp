// One database read in different ways gives the same values: whole in memory, by blocks through caches of all
// sizes, from one thread or many, conditional or not.
#include <gtest/gtest.h>

#include <random>
#include <thread>

#include "core/movegen.h"
#include "egdb/position_walk.h"
#include "egdb/wld_open.h"
#include "tests/egdb/database_folder.h"

namespace {

constexpr int LOOKUPS = 6000;  // of each thread

// Two materials of each number of pieces, some symmetric, some of which the mirrored form is canonical.
constexpr std::array<Material, 8> MATERIALS{{{0, 1, 0, 1},
                                             {1, 0, 0, 1},
                                             {1, 1, 1, 0},
                                             {0, 1, 2, 0},
                                             {2, 0, 2, 0},
                                             {1, 1, 1, 1},
                                             {0, 1, 2, 1},
                                             {1, 2, 1, 0}}};

struct Question {
    Position position;
    int side = BLACK;
};

Question question(std::mt19937_64& random) {
    for (;;) {
        const Material& m = MATERIALS[random() % MATERIALS.size()];
        const auto index = static_cast<int64_t>(random() % static_cast<uint64_t>(slice_size(m)));
        Question q{position_from_index(index, m), static_cast<int>(random() % 2)};
        if (!has_capture(q.position, q.side)) return q;
    }
}

struct Way {
    const char* name;
    bool autoload;
    int32_t blocks, megabytes;
};

struct Counts {
    std::atomic<uint32_t> asked = 0, answered = 0, not_in_cache = 0;
    std::atomic<int> wrong = 0;
};

// Half of the lookups are conditional; one that finds nothing in memory is made again.
void ask(const EgdbDriver& driver, const EgdbDriver& whole, uint64_t seed, Counts& counts) {
    std::mt19937_64 random(seed);
    for (int i = 0; i < LOOKUPS; ++i) {
        const Question q = question(random);
        const EgdbValue expected = whole.lookup(whole.handle, q.position, q.side, false);
        EgdbValue value = driver.lookup(driver.handle, q.position, q.side, i % 2 == 0);
        ++counts.asked;
        if (value == EGDB_NOT_IN_CACHE) {
            ++counts.not_in_cache;
            ++counts.asked;
            value = driver.lookup(driver.handle, q.position, q.side, false);
        }
        ++counts.answered;
        if (value != expected || value < EGDB_WIN || value > EGDB_DRAW) ++counts.wrong;
    }
}

TEST(SameValues, HoweverTheDatabaseIsRead) {
    const EgdbOpenRequest request{shipped_database(), 4, -1, 64, nullptr, true, 0};
    const OpenEgdb whole = open_wld(request);
    ASSERT_TRUE(whole);
    const std::vector<Way> ways = {{"whole files", true, 0, 64},
                                   {"one block", false, 1, 64},
                                   {"few blocks", false, 5, 64},
                                   {"the least cache", false, 0, 0},
                                   {"half of the blocks", false, 116, 64}};
    for (const Way& way : ways) {
        for (const int threads : {1, 2, 8}) {
            EgdbOpenRequest by = request;
            by.autoload = way.autoload;
            by.cache_blocks = way.blocks;
            by.cache_megabytes = way.megabytes;
            const OpenEgdb driver = open_wld(by);
            ASSERT_TRUE(driver);
            EgdbStatistics& s = *driver->get_stats(driver->handle);
            driver->reset_stats(driver->handle);
            Counts counts;
            std::vector<std::thread> askers;
            for (int t = 0; t < threads; ++t)
                askers.emplace_back([&, t] { ask(*driver, *whole, static_cast<uint64_t>(t) + 1, counts); });
            for (std::thread& asker : askers) asker.join();
            SCOPED_TRACE(std::string(way.name) + ", threads " + std::to_string(threads));
            EXPECT_EQ(counts.wrong, 0);
            if (way.autoload) {
                EXPECT_EQ(counts.not_in_cache, 0u);
                EXPECT_EQ(s.lru_cache_loads + s.lru_cache_hits, 0u);
            }
            if (threads > 1) continue;
            // With one thread the counters are exact, and every lookup is in one of them.
            EXPECT_EQ(s.db_requests, counts.asked);
            EXPECT_EQ(s.db_returns, counts.answered);
            EXPECT_EQ(s.db_not_present_requests, 0u);
            uint32_t stored = s.autoload_hits + s.lru_cache_loads + s.lru_cache_hits + counts.not_in_cache;
            EXPECT_LE(stored, counts.asked);  // the others have one value for the whole Slice
            EXPECT_GE(stored, counts.asked / 2);
            if (way.blocks == 0 && !way.autoload) {
                EXPECT_EQ(s.lru_cache_loads, 0u);  // all preloaded
            }
        }
    }
}

}  // namespace
