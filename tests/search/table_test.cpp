// The transposition table, field by field and rule by rule.
#include "search/table.h"

#include <bit>
#include <cmath>
#include <limits>
#include <map>

#include "base/memory.h"
#include "search/engine_settings.h"
#include "tests/search/fixtures.h"

namespace {

class TableTest : public SearchTest {
  protected:
    static uint64_t word_at(uint32_t index) { return transposition_table.slots_start[index].load(); }
    static TTEntry entry_at(uint32_t index) { return TTEntry::from_word(word_at(index)); }
    static bool found(uint32_t hash0, uint32_t hash1) {
        TTEntry entry;
        return tt_probe(hash0, hash1, entry) != nullptr;
    }
    static void mark(uint32_t index) {
        transposition_table.slots_start[index].fetch_xor(uint64_t{1} << 22 | uint64_t{1} << 54);
    }
};

TEST_F(TableTest, AWordMadeByHandIsRead) {
    // Value -2, depth field 481, no mark, move 5, lower bound.
    const uint32_t info = 0x1ffe | 481u << 13 | 5u << 23 | 2u << 30;
    const uint32_t hash1 = 0xdeadbeef;
    transposition_table.slots_start[10].store(uint64_t{info} << 32 | (hash1 ^ info));
    TTEntry entry;
    ASSERT_EQ(tt_probe(10, hash1, entry), transposition_table.slots_start + 10);
    EXPECT_EQ(entry.value(), -2);
    EXPECT_EQ(entry.depth_field(), 481);
    EXPECT_FALSE(entry.pv_mark());
    EXPECT_EQ(entry.move_index(), 5);
    EXPECT_EQ(entry.type(), BOUND_LOWER);
    EXPECT_FALSE(found(10, hash1 ^ 1));
    EXPECT_FALSE(found(11 + 131072, hash1));
}

TEST_F(TableTest, StoreMakesTheWordThatIsWrittenDown) {
    tt_store(77, 0x12345678, -3999, 481, BOUND_UPPER, 127);
    const uint32_t info = (static_cast<uint32_t>(-3999) & 0x1fff) | 481u << 13 | 127u << 23 | 1u << 30;
    EXPECT_EQ(word_at(77), uint64_t{info} << 32 | (0x12345678u ^ info));
}

TEST_F(TableTest, EveryFieldComesBack) {
    uint32_t key = 1;
    for (const int value : {-4096, -4000, -3940, -1, 0, 1, 3999, 4000, 4095}) {
        for (const int depth : {0, 1, 9, 481, 511}) {
            for (const int index : {0, 1, 64, 126, 127}) {
                for (const BoundType type : {BOUND_EXACT, BOUND_UPPER, BOUND_LOWER}) {
                    key = key * 2654435761u + 7;
                    tt_store(key >> 5, key, value, depth, type, index);
                    TTEntry entry;
                    ASSERT_NE(tt_probe(key >> 5, key, entry), nullptr);
                    EXPECT_EQ(entry.value(), value);
                    EXPECT_EQ(entry.depth_field(), depth);
                    EXPECT_EQ(entry.move_index(), index);
                    EXPECT_EQ(entry.type(), type);
                    EXPECT_FALSE(entry.pv_mark());
                }
            }
        }
    }
}

TEST_F(TableTest, TheSameKeyIsReplacedEvenByLessDepthAndKeepsItsMark) {
    tt_store(5, 99, 100, 80, BOUND_EXACT, 3);
    mark(5);
    ASSERT_TRUE(entry_at(5).pv_mark());
    tt_store(5, 99, -7, 9, BOUND_UPPER, 4);
    EXPECT_TRUE(entry_at(5).pv_mark());
    EXPECT_EQ(entry_at(5).depth_field(), 9);
    EXPECT_EQ(entry_at(5).value(), -7);
    EXPECT_EQ(entry_at(5).move_index(), 4);
    EXPECT_TRUE(entry_at(6).free());
}

TEST_F(TableTest, BucketsOverlapAndFillInOrder) {
    tt_store(20, 1, 0, 9, BOUND_EXACT, 0);
    tt_store(20, 2, 0, 9, BOUND_EXACT, 0);
    tt_store(20, 3, 0, 9, BOUND_EXACT, 0);
    for (uint32_t i = 0; i < 3; ++i) EXPECT_TRUE(entry_at(20 + i).belongs_to(i + 1));
    // The second and third stand in the bucket of the next index too.
    EXPECT_TRUE(found(21, 2));
    EXPECT_TRUE(found(22, 3));
    EXPECT_FALSE(found(21, 1));
    // The last bucket reaches into the spare slots.
    const uint32_t last = static_cast<uint32_t>(transposition_table.mask);
    for (uint32_t key = 1; key <= 3; ++key) tt_store(last, key, 0, 9, BOUND_EXACT, 0);
    EXPECT_TRUE(entry_at(last + 2).belongs_to(3));
}

TEST_F(TableTest, TheSearchEndsAtAFreeSlot) {
    tt_store(30, 1, 0, 9, BOUND_EXACT, 0);
    tt_store(30, 2, 0, 9, BOUND_EXACT, 0);
    transposition_table.slots_start[30].store(0);
    EXPECT_FALSE(found(30, 2));
}

TEST_F(TableTest, ACheckOfZeroByChanceIsFree) {
    const uint32_t info = 100u | 9u << 13 | 2u << 23;
    tt_store(40, info, 100, 9, BOUND_EXACT, 2);  // a key that equals its own info
    EXPECT_NE(word_at(40), 0u);
    EXPECT_TRUE(entry_at(40).free());
    EXPECT_FALSE(found(40, info));
    tt_store(40, 5, 1, 9, BOUND_EXACT, 2);
    EXPECT_TRUE(entry_at(40).belongs_to(5));
}

// Each way to fill a bucket: the victim is the first of the shallowest without a mark, and the first slot if
// all have it.
TEST_F(TableTest, TheShallowestWithoutAMarkIsReplaced) {
    for (uint32_t marks = 0; marks < 8; ++marks) {
        for (uint32_t depths = 0; depths < 27; ++depths) {
            uint32_t digits = depths;
            int victim = -1;
            std::array<int, 3> depth{};
            for (uint32_t i = 0; i < 3; ++i, digits /= 3) {
                transposition_table.slots_start[50 + i].store(0);
                depth[i] = static_cast<int>(digits % 3) * 8;
            }
            for (uint32_t i = 0; i < 3; ++i) tt_store(50, i + 1, 0, depth[i], BOUND_EXACT, 0);
            for (uint32_t i = 0; i < 3; ++i) {
                if (marks >> i & 1) {
                    mark(50 + i);
                } else if (victim < 0 || depth[i] < depth[static_cast<size_t>(victim)]) {
                    victim = static_cast<int>(i);
                }
            }
            tt_store(50, 9, 1, 100, BOUND_LOWER, 1);
            for (uint32_t i = 0; i < 3; ++i) {
                const bool replaced = static_cast<int>(i) == std::max(victim, 0);
                ASSERT_TRUE(entry_at(50 + i).belongs_to(replaced ? 9 : i + 1)) << marks << " " << depths;
                ASSERT_EQ(entry_at(50 + i).pv_mark(), !replaced && (marks >> i & 1));
            }
        }
    }
}

TEST_F(TableTest, SizesAreClampedAndRoundedDown) {
    const std::map<int, uint64_t> entries{{-5, 131072},       {0, 131072},      {1, 131072},
                                          {2, 2 * 131072},    {3, 2 * 131072},  {7, 4 * 131072},
                                          {64, 64 * 131072u}, {512, 67108864u}, {600, 67108864u}};
    for (const auto& [setting, count] : entries) {
        engine_settings.hash_size_mb = setting;
        ASSERT_EQ(tt_allocate(), 0);
        EXPECT_EQ(transposition_table.size_mb, std::clamp(setting, 1, 512));
        EXPECT_EQ(transposition_table.effective_mb, transposition_table.size_mb);
        EXPECT_EQ(transposition_table.entries, count) << setting;
        EXPECT_EQ(transposition_table.mask, count - 1);
        EXPECT_EQ(transposition_table.slots, count + 3);
    }
    engine_settings.hash_size_mb = 1;
    ASSERT_EQ(tt_allocate(), 0);
}

TEST_F(TableTest, ANewTableIsEmpty) {
    tt_store(60, 1, 0, 9, BOUND_EXACT, 0);
    ASSERT_EQ(tt_allocate(), 0);
    for (uint64_t i = 0; i < transposition_table.slots; ++i)
        ASSERT_EQ(transposition_table.slots_start[i].load(), 0u);
}

TEST_F(TableTest, ASmallerPartHidesEntriesAndAllOfItBringsThemBack) {
    engine_settings.hash_size_mb = 2;
    ASSERT_EQ(tt_allocate(), 0);
    const uint32_t beyond = 131072 + 500;
    tt_store(beyond, 8, 11, 9, BOUND_EXACT, 0);
    transposition_table.effective_mb = 1;
    tt_set_geometry();
    EXPECT_EQ(transposition_table.entries, 131072u);
    EXPECT_FALSE(found(beyond, 8));
    transposition_table.effective_mb = 2;
    tt_set_geometry();
    EXPECT_TRUE(found(beyond, 8));
}

TEST_F(TableTest, AgingLeavesKeyMoveValueAndTypeAndTakesDepthAndMark) {
    Random random(3);
    const uint32_t last = static_cast<uint32_t>(transposition_table.mask);
    for (uint32_t key = 1; key <= 3; ++key) tt_store(last, key, 0, 9, BOUND_EXACT, 0);
    for (int i = 0; i < 1000; ++i) {
        const uint32_t hash0 = static_cast<uint32_t>(i) * 100, hash1 = static_cast<uint32_t>(random());
        tt_store(hash0, hash1, i - 500, 1 + i % 500, static_cast<BoundType>(i % 3), i % 128);
        if (i % 4 == 0) mark(hash0);
        const TTEntry before = entry_at(hash0);
        const int64_t passes = transposition_table.age_count;
        if (i % 50 == 0) {
            tt_age();
            EXPECT_EQ(transposition_table.age_count, passes + 1);
            TTEntry after;
            ASSERT_NE(tt_probe(hash0, hash1, after), nullptr);
            EXPECT_EQ(after.value(), before.value());
            EXPECT_EQ(after.move_index(), before.move_index());
            EXPECT_EQ(after.type(), before.type());
            EXPECT_EQ(after.depth_field(), 0);
            EXPECT_FALSE(after.pv_mark());
            EXPECT_TRUE(entry_at(last + 2).belongs_to(3));
            EXPECT_EQ(entry_at(last + 2).depth_field(), 0);
            EXPECT_EQ(tt_count_usable(), 0);
            EXPECT_EQ(tt_count_marked(), 0);
        }
    }
}

TEST_F(TableTest, TheDurationsOfAgingAreARing) {
    for (int i = 0; i < AGE_TIMES; ++i) tt_age();
    for (const double ms : transposition_table.age_ms) EXPECT_GT(ms, 0);
    transposition_table.age_ms.fill(-1);
    const auto next = static_cast<size_t>(transposition_table.age_count % AGE_TIMES);
    tt_age();
    for (size_t i = 0; i < AGE_TIMES; ++i) EXPECT_EQ(transposition_table.age_ms[i] >= 0, i == next);
}

TEST_F(TableTest, CountsGoOverAllSlots) {
    EXPECT_EQ(tt_count_usable(), 0);
    const uint32_t last = static_cast<uint32_t>(transposition_table.mask);
    for (uint32_t key = 1; key <= 3; ++key) tt_store(last, key, 0, key == 2 ? 0 : 9, BOUND_EXACT, 0);
    mark(last + 1);
    mark(last + 2);
    EXPECT_EQ(tt_count_usable(), 2);
    EXPECT_EQ(tt_count_marked(), 2);
}

// The steps of the tuning with plain numbers, apart from the table's memory.
struct SlowTuning {
    double d = 1;
    int s;
    bool grew = false;
};

int64_t round_away(double x) { return static_cast<int64_t>(x < 0 ? x - 0.5 : x + 0.5); }

SlowTuning slow_tuning(double t, double f, double a, int s, int S) {
    SlowTuning result{1, s};
    const double w = t * f / 450;
    if (round_away(0.96 * w / a) > 1) {
        while (result.s < S) {
            result.d *= 2;
            result.s *= 2;
            if (round_away(0.96 * w / (result.d * a)) < 2) break;
        }
        result.grew = true;
    } else if (round_away(1.04 * w / a) < 1 && s > 8) {
        while (result.s > 8) {
            result.d *= 2;
            result.s /= 2;
            if (round_away(1.04 * w * result.d / a) >= 1) break;
        }
    }
    return result;
}

constexpr double FACTORS[] = {1.0, 1.97, 2.88, 3.73, 4.55, 5.26, 5.91, 6.39};

class TuningTest : public TableTest {
  protected:
    // A table of so many megabytes, with passes that took that long.
    static void table_of(int megabytes, double pass_seconds, int64_t passes = AGE_TIMES) {
        engine_settings.hash_size_mb = megabytes;
        ASSERT_EQ(tt_allocate(), 0);
        set_passes(pass_seconds, passes);
    }
    static void set_passes(double pass_seconds, int64_t passes = AGE_TIMES) {
        transposition_table.age_ms.fill(pass_seconds * 1000);
        transposition_table.age_count = passes;
    }
    static void use_size(int megabytes) {
        transposition_table.effective_mb = megabytes;
        tt_set_geometry();
    }
    static void expect_size(int megabytes) {
        const TranspositionTable& table = transposition_table;
        EXPECT_EQ(table.effective_mb, megabytes);
        EXPECT_EQ(table.entries, std::bit_floor(static_cast<uint64_t>(megabytes)) * 131072);
        EXPECT_EQ(table.mask, table.entries - 1);
        EXPECT_EQ(table.slots, table.entries + 3);
    }
    void TearDown() override {
        engine_settings.hash_size_mb = 1;
        ASSERT_EQ(tt_allocate(), 0);
        TableTest::TearDown();
    }
};

TEST_F(TuningTest, NothingHappensBeforeAPassIsTimed) {
    table_of(64, 0.001, 0);
    tune_hash_size(1e-6, 1);
    expect_size(64);
    tune_hash_size(1e6, 8);
    expect_size(64);
}

TEST_F(TuningTest, LittleTimeShrinksTheTableDownToEight) {
    // 64 MB in 16 ms; for 0.9 s a pass of 2 ms is wanted: 1.04 x 2 d / 16 rounds to 1 at d = 4.
    table_of(64, 0.016);
    TTSlot* const memory = transposition_table.slots_start;
    tune_hash_size(0.9, 1);
    expect_size(16);
    EXPECT_EQ(transposition_table.slots_start, memory);
    EXPECT_EQ(transposition_table.size_mb, 64);
    for (const double ms : transposition_table.age_ms) EXPECT_DOUBLE_EQ(ms, 4);
    EXPECT_EQ(transposition_table.age_count, AGE_TIMES);
    tune_hash_size(1e-6, 1);
    expect_size(8);
    for (const double ms : transposition_table.age_ms) EXPECT_DOUBLE_EQ(ms, 2);
    tune_hash_size(0, 1);
    tune_hash_size(-1, 1);
    expect_size(8);
}

TEST_F(TuningTest, MuchTimeGrowsTheTableUpToItsAllocation) {
    table_of(64, 0.001);
    use_size(8);
    // A pass of 3 ms is wanted: 0.96 x 3 rounds to 3, half of it to 1.
    tune_hash_size(1.35, 1);
    expect_size(16);
    for (const double ms : transposition_table.age_ms) EXPECT_DOUBLE_EQ(ms, 2);
    tune_hash_size(1e6, 1);
    expect_size(64);
    for (const double ms : transposition_table.age_ms) EXPECT_DOUBLE_EQ(ms, 8);
    tune_hash_size(1e6, 1);
    expect_size(64);
}

TEST_F(TuningTest, ASizeOfEightOrLessIsNotHalved) {
    for (const int size : {1, 2, 4, 7, 8}) {
        table_of(size, 1.0);
        tune_hash_size(0.001, 1);
        expect_size(size);
    }
    table_of(9, 1.0);
    tune_hash_size(0.001, 1);
    expect_size(4);
}

// The bounds between which nothing happens, by a pass of a second and exact halves.
TEST_F(TuningTest, HalvesAreRoundedAwayFromZero) {
    const double ms = 1000 * 0.96 * (450 * 1.0 / 450);
    table_of(64, 1.0);
    use_size(32);
    transposition_table.age_ms.fill(ms / 1.5);  // the quotient is 1.5: 2
    tune_hash_size(450, 1);
    expect_size(64);
    use_size(32);
    transposition_table.age_ms.fill(ms / 1.5 * (1 + 1e-12));
    tune_hash_size(450, 1);
    expect_size(32);

    const double shrink_ms = 1000 * 1.04 * (450 * 1.0 / 450);
    transposition_table.age_ms.fill(shrink_ms / 0.5);  // 0.5: 1
    tune_hash_size(450, 1);
    expect_size(32);
    transposition_table.age_ms.fill(shrink_ms / 0.5 * (1 + 1e-12));
    tune_hash_size(450, 1);
    expect_size(16);

    // On the way too: 3 is 1.5 after one doubling, which is 2 and goes on; 0.25 is 0.5 after one halving.
    use_size(8);
    transposition_table.age_ms.fill(ms / 3);
    tune_hash_size(450, 1);
    expect_size(32);
    transposition_table.age_ms.fill(shrink_ms / 0.25);
    tune_hash_size(450, 1);
    expect_size(16);
}

// Only the threads of a search decide here whether the table grows: each count has its own factor.
TEST_F(TuningTest, MoreThreadsAreWorthMoreTime) {
    for (int threads = 1; threads <= 8; ++threads) {
        const double f = FACTORS[threads - 1];
        table_of(16, 1.0);
        use_size(8);
        tune_hash_size(450 / 0.96 * 1.5 / f * 0.9999, threads);
        expect_size(8);
        tune_hash_size(450 / 0.96 * 1.5 / f * 1.0001, threads);
        expect_size(16);
        set_passes(1.0);
        tune_hash_size(450 / 1.04 * 0.5 / f * 1.0001, threads);
        expect_size(16);
        tune_hash_size(450 / 1.04 * 0.5 / f * 0.9999, threads);
        expect_size(8);
    }
}

TEST_F(TuningTest, ThreadCountsThatCannotBeAreClamped) {
    for (const int threads : {INT32_MIN, -1, 0, 1}) {
        table_of(16, 1.0);
        use_size(8);
        tune_hash_size(450 / 0.96 * 1.5001, threads);
        expect_size(16);
        use_size(8);
        set_passes(1.0);
        tune_hash_size(450 / 0.96 * 1.4999, threads);
        expect_size(8);
    }
    for (const int threads : {8, 9, INT32_MAX}) {
        table_of(16, 1.0);
        use_size(8);
        tune_hash_size(450 / 0.96 * 1.5001 / 6.39, threads);
        expect_size(16);
        use_size(8);
        set_passes(1.0);
        tune_hash_size(450 / 0.96 * 1.4999 / 6.39, threads);
        expect_size(8);
    }
}

TEST_F(TuningTest, OnlyTheTimedPassesAreAveraged) {
    table_of(64, 0);
    transposition_table.age_ms = {1000, 3000};  // 2 seconds of mean
    transposition_table.age_count = 2;
    use_size(32);
    tune_hash_size(450 / 0.96 * 3 * 0.999, 1);
    expect_size(32);
    tune_hash_size(450 / 0.96 * 3 * 1.001, 1);
    expect_size(64);
    EXPECT_DOUBLE_EQ(transposition_table.age_ms[0], 2000);
    EXPECT_DOUBLE_EQ(transposition_table.age_ms[1], 6000);
    // All sixteen count once there are more.
    use_size(32);
    transposition_table.age_ms.fill(1000);
    transposition_table.age_ms[15] = 17000;
    transposition_table.age_count = 1000;
    tune_hash_size(450 / 0.96 * 3 * 0.999, 1);
    expect_size(32);
}

// Sizes that are no power of two shrink and grow back without leaving the allocation.
TEST_F(TuningTest, TheSizeInUseStaysWithinTheAllocation) {
    for (const int size : {9, 12, 15, 17, 31, 33, 48, 63, 64, 65, 100, 127}) {
        table_of(size, 1.0);
        const uint64_t entries = transposition_table.entries;
        tune_hash_size(1e-9, 1);
        EXPECT_LE(transposition_table.effective_mb, 8);
        EXPECT_GT(transposition_table.effective_mb, 3);
        tune_hash_size(1e9, 1);
        EXPECT_LE(transposition_table.effective_mb, size);
        EXPECT_EQ(transposition_table.entries, entries) << size;
        EXPECT_LE(transposition_table.slots * sizeof(TTSlot), (uint64_t(size) << 20) + 24);
        EXPECT_NEAR(transposition_table.age_ms[3], 1000, 1e-9);
        tt_age();  // reads and writes all slots
    }
}

TEST_F(TuningTest, TimesThatAreNoneChangeNothingWrong) {
    table_of(32, 1.0);
    use_size(16);
    tune_hash_size(std::nan(""), 1);
    expect_size(16);
    tune_hash_size(std::numeric_limits<double>::infinity(), 1);
    expect_size(32);
    tune_hash_size(-std::numeric_limits<double>::infinity(), 1);
    expect_size(8);
    transposition_table = TranspositionTable{};  // as after a failed allocation
    tt_age();
    tune_hash_size(1e6, 1);
    EXPECT_EQ(transposition_table.effective_mb, 0);
    EXPECT_EQ(transposition_table.slots, 0u);
}

TEST_F(TuningTest, EveryTimeIsTunedAsTheSlowWay) {
    Random random(11);
    const auto spread = [&](double low, double high) {
        return low * std::pow(high / low, static_cast<double>(below(random, 1000000)) / 1e6);
    };
    table_of(128, 1.0);
    int grown = 0, shrunk = 0;
    for (int i = 0; i < 20000; ++i) {
        const int start = 1 << below(random, 8);
        const int threads = 1 + below(random, 8);
        const double a = spread(1e-5, 1), t = a * spread(1, 1e5);
        use_size(start);
        set_passes(a, 1 + below(random, 40));
        const double average = transposition_table.age_ms[0] / 1000;
        tune_hash_size(t, threads);
        const SlowTuning slow = slow_tuning(t, FACTORS[threads - 1], average, start, 128);
        ASSERT_EQ(transposition_table.effective_mb, slow.s) << t << " " << a << " " << start;
        ASSERT_DOUBLE_EQ(transposition_table.age_ms[0], 1000 * (slow.grew ? a * slow.d : a / slow.d));
        if (slow.d > 1) ++(slow.grew ? grown : shrunk);
    }
    EXPECT_GT(grown, 1000);
    EXPECT_GT(shrunk, 1000);
}

// A tuned size holds: asked again with the same time, nothing changes.
TEST_F(TuningTest, TheSameTimeTunesOnce) {
    table_of(128, 1.0);
    for (double t = 0.001; t < 1e5; t *= 1.3) {
        use_size(64);
        set_passes(0.030);
        tune_hash_size(t, 3);
        const int once = transposition_table.effective_mb;
        const double ms = transposition_table.age_ms[0];
        tune_hash_size(t, 3);
        EXPECT_EQ(transposition_table.effective_mb, once) << t;
        EXPECT_EQ(transposition_table.age_ms[0], ms) << t;
    }
}

SavedEntry saved_entry(uint32_t hash0, uint32_t hash1) {
    const uint32_t info = 33u | 41u << 13 | 1u << 22 | 6u << 23;
    return {{hash0, hash1}, {hash1 ^ info, info}};
}

TEST_F(TableTest, RestoringTakesAFreeSlotOrTheKeysOwn) {
    tt_store(70, 1, 0, 100, BOUND_EXACT, 0);
    tt_restore(saved_entry(70, 2));
    EXPECT_TRUE(entry_at(71).belongs_to(2));
    EXPECT_TRUE(entry_at(71).pv_mark());
    EXPECT_EQ(entry_at(71).value(), 33);
    EXPECT_EQ(entry_at(71).depth_field(), 41);
    tt_store(70, 3, 0, 0, BOUND_EXACT, 0);
    tt_restore(saved_entry(70, 1));  // not the shallower third
    EXPECT_EQ(entry_at(70).value(), 33);
    EXPECT_TRUE(entry_at(72).belongs_to(3));
}

TEST_F(TableTest, RestoringReplacesTheShallowestMarkedOrNot) {
    for (uint32_t victim = 0; victim < 3; ++victim) {
        const uint32_t start = 80 + 10 * victim;
        for (uint32_t i = 0; i < 3; ++i) tt_store(start, i + 1, 0, i == victim ? 5 : 6, BOUND_EXACT, 0);
        mark(start + victim);
        tt_restore(saved_entry(start, 9));
        for (uint32_t i = 0; i < 3; ++i) EXPECT_TRUE(entry_at(start + i).belongs_to(i == victim ? 9 : i + 1));
    }
}

TEST_F(TableTest, WithoutMemoryThereIsNoTable) {
    const auto usual = map_memory;
    map_memory = [](size_t) -> void* { return nullptr; };
    logged.clear();
    EXPECT_EQ(tt_allocate(), 1);
    map_memory = usual;
    EXPECT_EQ(logged.find("Cannot allocate hashtable\nThere are "), 0u) << logged;
    EXPECT_NE(logged.find(" kbytes of ram available.\n"), std::string::npos) << logged;
    EXPECT_EQ(transposition_table.slots_start, nullptr);
    EXPECT_EQ(transposition_table.slots, 0u);
    EXPECT_EQ(tt_allocate(), 0);
    EXPECT_NE(transposition_table.slots_start, nullptr);
}

}  // namespace
