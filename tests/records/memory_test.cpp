// Every single allocation of the readers and list builders fails once, in turn; what they promise for that
// case must hold, and nothing may leak. The allocator of the whole test program is replaced to that end.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <string>

#include "positions.h"
#include "records/pdn_game.h"
#include "records/pdn_write.h"

namespace {

int64_t allocations = 0;
int64_t fail_at = -1;  // the allocation that fails, counted from 0; -1 for none

void* allocate(size_t bytes) {
    if (allocations++ == fail_at) throw std::bad_alloc();
    void* const memory = std::malloc(bytes ? bytes : 1);
    if (!memory) throw std::bad_alloc();
    return memory;
}

// Runs with the allocation of that number failing. Returns how many there were.
template <typename Function>
int64_t with_failure(int64_t number, Function function) {
    allocations = 0;
    fail_at = number;
    function();
    fail_at = -1;
    return allocations;
}

const char* const TEXT =
    "[Event \"a\"][FEN \"W:W31-50:B1-20\"] {comment} 1. 32-28 18-23 2. 28x19 {x} 14x23 /FEN \"B:W31:B1\"/ "
    "1-6 * "
    "[Event \"b\"] 12x23x34 1-0 33-28 *";

int length_of(const PdnNode* list) {
    int length = 0;
    for (; list; list = list->next) ++length;
    return length;
}

}  // namespace

void* operator new(size_t bytes) { return allocate(bytes); }
void* operator new[](size_t bytes) { return allocate(bytes); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, size_t) noexcept { std::free(memory); }

namespace {

TEST(Memory, IndexAllocatesForTheTableOnly) {
    std::string text;
    while (text.size() < 100000) text += TEXT;
    PdnOffsets offsets;
    const int64_t used = with_failure(-1, [&] { EXPECT_EQ(pdn_index_games(text.c_str(), offsets), 0); });
    EXPECT_GT(pdn_game_count(offsets), 1000);
    EXPECT_LE(used, 4);
    for (int64_t i = 0; i < used; ++i) {
        PdnOffsets untouched{5};
        with_failure(i, [&] { EXPECT_EQ(pdn_index_games(text.c_str(), untouched), 1); });
        EXPECT_EQ(untouched, PdnOffsets{5});
    }
}

TEST(Memory, ParsingAllGamesFailsWhole) {
    PdnTable table;
    const int64_t used = with_failure(-1, [&] { EXPECT_EQ(pdn_parse_games(TEXT, table), 0); });
    ASSERT_EQ(pdn_game_count(table), 3);
    EXPECT_GT(used, 20);
    for (int64_t i = 0; i < used; ++i) {
        with_failure(i, [&] { EXPECT_EQ(pdn_parse_games(TEXT, table), 1); });
        EXPECT_EQ(pdn_game_count(table), 3);
    }
}

TEST(Memory, ParsingOneGameKeepsWhatWasBuilt) {
    PdnGame whole;
    const int64_t used = with_failure(-1, [&] { whole = pdn_parse_game(TEXT); });
    int last = 0;
    for (int64_t i = 0; i < used; ++i) {
        PdnGame part;
        with_failure(i, [&] { part = pdn_parse_game(TEXT); });
        const int length = length_of(part.get());
        EXPECT_LT(length, length_of(whole.get()));
        EXPECT_GE(length, last);
        last = length;
    }
    EXPECT_EQ(last, length_of(whole.get()) - 1);
}

TEST(Memory, ListOfAGameKeepsWhatWasBuilt) {
    std::mt19937 random(1);
    const std::vector<ReplayState> history = random_game(random, 20, true);
    PdnGame whole;
    const int64_t used = with_failure(-1, [&] { whole = game_to_pdn_list(history, GameHeaders{}); });
    ASSERT_GT(length_of(whole.get()), 20);
    for (int64_t i = 0; i < used; ++i) {
        PdnGame part;
        with_failure(i, [&] { part = game_to_pdn_list(history, GameHeaders{}); });
        EXPECT_LT(length_of(part.get()), length_of(whole.get()));
    }
}

TEST(Memory, MoveNodeIsNullWithoutMemory) {
    const Position after = position_of("B:W31-50:B1-20");
    const Position before = position_of("W:W31-50:B1-20");
    Position moved = after;
    moved.white = (moved.white & ~mask_of_square[31]) | mask_of_square[27];
    EXPECT_TRUE(pdn_move_node_from_positions(before, moved, WHITE));
    with_failure(0, [&] { EXPECT_FALSE(pdn_move_node_from_positions(before, moved, WHITE)); });
}

}  // namespace
