// The book at the engine's side: asked at the root, with the memory of the transposition table.
#include <algorithm>
#include <atomic>
#include <cstring>

#include "base/log.h"
#include "book_fixture.h"
#include "search/ask_book.h"
#include "search/engine_settings.h"
#include "search/getmove.h"
#include "search/search_state.h"
#include "search/table.h"

namespace {

class BookEngine : public BookTest {
  protected:
    void SetUp() override {
        BookTest::SetUp();
        engine_settings = EngineSettings{};
        engine_settings.hash_size_mb = 1;
        ASSERT_EQ(tt_allocate(), 0);
        set_fixed_time(NO_TIME_LIMIT);
        search_state.depth_limit = 6;
    }
    void TearDown() override {
        search_state.depth_limit = MAX_DEPTH;
        engine_settings = EngineSettings{};
        BookTest::TearDown();
    }
};

struct Found {
    int32_t value = 0;
    Move move{};
    std::string text;
};

Found think(const Position& position, uint32_t flags = SEARCH_QUIET) {
    std::atomic<int32_t> stop = 0;
    char text[SEARCH_TEXT_SIZE];
    int32_t searched = 0;
    Found found;
    found.value = getmove(position, position.side, text, stop, flags, found.move, searched);
    found.text = text;
    return found;
}

size_t memo_bytes() { return static_cast<size_t>(book_slots(opening_book)) * BOOK_MEMO_BYTES; }

bool table_begins_with(size_t bytes, int byte) {
    const auto* const memory = static_cast<const unsigned char*>(transposition_table.memory.get());
    return std::all_of(memory, memory + bytes, [byte](unsigned char b) { return b == byte; });
}

}  // namespace

TEST_F(BookEngine, PlaysFromTheBookInEachMode) {
    const int best = move_index(START_POSITION, "32-28");
    ASSERT_EQ(load_positions({{START_POSITION, best, 127, -4}}), 0);
    MoveList list;
    generate_moves(START_POSITION, list, WHITE);
    for (const uint32_t flags : {uint32_t{SEARCH_QUIET}, SEARCH_QUIET | SEARCH_ALL_SCORES})
        for (const int mode : {1, 2, 3}) {
            engine_settings.book_mode = mode;
            logged.clear();
            const Found found = think(START_POSITION, flags);
            EXPECT_EQ(found.move, list[best]);
            EXPECT_EQ(found.value, -4);
            EXPECT_EQ(found.text, "32-28(-4/0)*");
            EXPECT_EQ(logged, "32-28(-4/0)*\n");
            EXPECT_EQ(searched_nodes(), 0u);
        }
    engine_settings.book_mode = 0;
    EXPECT_NE(think(START_POSITION).text.find("value"), std::string::npos);
    EXPECT_GT(searched_nodes(), 0u);
}

TEST_F(BookEngine, SearchesWhereTheBookEnds) {
    ASSERT_EQ(load_positions({{START_POSITION, 0, 127, -4}}), 0);
    engine_settings.book_mode = 3;
    think(after_moves(START_POSITION, "32-28"));
    EXPECT_GT(searched_nodes(), 0u);
}

TEST_F(BookEngine, BorrowsTheBeginningOfTheTable) {
    std::mt19937 random(41);
    const std::vector<BookPosition> positions = random_book(random, 500, false);
    ASSERT_EQ(load_positions(positions), 0);
    engine_settings.book_mode = 1;
    std::memset(transposition_table.memory.get(), 0x5a, 2 * memo_bytes());
    MoveList list;
    const Position& position = positions[7].position;
    generate_moves(position, list, position.side);
    int index = -1, value = 0;
    char text[SEARCH_TEXT_SIZE];
    logged.clear();
    ASSERT_TRUE(ask_book(position, position.side, list, index, value, text));
    EXPECT_EQ(logged, "");
    EXPECT_TRUE(table_begins_with(memo_bytes(), 0));
    EXPECT_FALSE(table_begins_with(memo_bytes() + 1, 0));
}

// The memory of a table of one megabyte, which comes in large pages, has room for the lines of 524288 slots.
TEST_F(BookEngine, ABookThatIsLargerThanTheTableLeavesItAlone) {
    std::mt19937 random(42);
    const std::vector<BookPosition> positions = random_book(random, 20, false);
    ASSERT_EQ(load_positions(positions, 600000), 0);
    engine_settings.book_mode = 3;
    const size_t table_bytes = transposition_table.memory.get_deleter().bytes;
    ASSERT_LT(table_bytes, memo_bytes());
    std::memset(transposition_table.memory.get(), 0x5a, table_bytes);
    MoveList list;
    const Position& position = positions[7].position;
    generate_moves(position, list, position.side);
    int index = -1, value = 0;
    char text[SEARCH_TEXT_SIZE];
    logged.clear();
    ASSERT_TRUE(ask_book(position, position.side, list, index, value, text));
    EXPECT_NE(logged.find("room was allocated\n"), std::string::npos) << logged;
    EXPECT_TRUE(table_begins_with(table_bytes, 0x5a));
}

TEST_F(BookEngine, WithoutATableTheBookHasRoomOfItsOwn) {
    ASSERT_EQ(load_positions({{START_POSITION, 0, 127, -4}}), 0);
    engine_settings.book_mode = 3;
    transposition_table = TranspositionTable{};
    MoveList list;
    generate_moves(START_POSITION, list, WHITE);
    int index = -1, value = 0;
    char text[SEARCH_TEXT_SIZE];
    EXPECT_TRUE(ask_book(START_POSITION, WHITE, list, index, value, text));
    EXPECT_EQ(value, -4);
}
