// The transposition table, field by field and rule by rule.
#include "search/table.h"

#include <map>

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

}  // namespace
