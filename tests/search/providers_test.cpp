// What the engine asks around the search: the book, the databases before it and the databases after it.
#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "book/engine_book.h"
#include "core/board_text.h"
#include "search/engine_settings.h"
#include "search/getmove.h"
#include "search/search_state.h"
#include "tests/search/fixtures.h"

namespace {

// What the fakes answer and what they were asked; the tables hold plain functions.
struct Fakes {
    std::vector<std::string> asked;
    bool book = false, mtc = false, better = false;
    int index = 0, value = 0;
    int chosen = -1;
    std::string prepared_text;
    Position position;
    int side = -1;
    int moves = -1;
};
Fakes fakes;

void note(const char* what, const Position& position, int side, const MoveList& list) {
    fakes.asked.push_back(what);
    fakes.position = position;
    fakes.side = side;
    fakes.moves = list.count;
}

void fake_prepare(char* text) {
    fakes.asked.push_back("prepare");
    fakes.prepared_text = text;
}
int fake_book(const Position& position, int side, const MoveList& list, const BookTerms&, int& index,
              int& value, char* text) {
    note("book", position, side, list);
    if (!fakes.book) return 0;
    index = fakes.index;
    value = fakes.value;
    std::snprintf(text, SEARCH_TEXT_SIZE, "from the book");
    return 1;
}
int fake_mtc(const Position& position, int side, const MoveList& list, int& best, int& mtc, char* text) {
    note("mtc", position, side, list);
    if (!fakes.mtc) return 0;
    best = fakes.index;
    mtc = fakes.value;
    std::snprintf(text, SEARCH_TEXT_SIZE, "31-26(12)*  32-27(14)  ");
    return 1;
}
int fake_check(int side, const Position& position, const MoveList& list, int chosen, int& better) {
    note("check", position, side, list);
    fakes.chosen = chosen;
    if (!fakes.better) return 0;
    better = fakes.index;
    return 1;
}

class ProvidersTest : public SearchTest {
  protected:
    void SetUp() override {
        SearchTest::SetUp();
        fakes = Fakes{};
        egdb_engine.egdb_prepare = fake_prepare;
        egdb_engine.mtc_choose_move = fake_mtc;
        egdb_engine.egdb_move_check = fake_check;
        engine_book = {true, fake_book};
        engine_settings.book_mode = 1;
        generate_moves(position, list, position.side);
    }
    const Position position = position_of("W:W31,32,37,41,42:B6,8,12,13");
    MoveList list;
    const std::string diagram = "\n\n" + board_diagram(position);
};

using Asked = std::vector<std::string>;

TEST_F(ProvidersTest, AreAskedInTheirOrder) {
    search_to(position, 7, 0);
    EXPECT_EQ(fakes.asked, (Asked{"prepare", "book", "mtc", "check"}));
    EXPECT_EQ(fakes.prepared_text, "Thinking...");
    EXPECT_TRUE(same_pieces(fakes.position, position));
    EXPECT_EQ(fakes.side, WHITE);
    EXPECT_EQ(fakes.moves, list.count);
}

TEST_F(ProvidersTest, TheBookMoveIsPlayedWithoutASearch) {
    for (const uint32_t flags : {0u, static_cast<uint32_t>(SEARCH_QUIET)}) {
        fakes.asked.clear();
        fakes.book = true;
        fakes.index = 2;
        fakes.value = -17;
        logged.clear();
        const Searched found = search_to(position, 7, flags);
        EXPECT_EQ(found.value, -17);
        EXPECT_EQ(found.move, list[2]);
        EXPECT_EQ(found.searched, 1);
        EXPECT_EQ(found.text, "from the book");
        EXPECT_EQ(fakes.asked, (Asked{"prepare", "book"}));
        EXPECT_EQ(searched_nodes(), 0u);
        EXPECT_EQ(logged, (flags ? "" : diagram) + "from the book\n");
    }
}

TEST_F(ProvidersTest, TheBookIsAskedOnlyWhenLoadedAndSwitchedOn) {
    engine_settings.book_mode = 0;
    search_to(position, 5);
    EXPECT_EQ(std::count(fakes.asked.begin(), fakes.asked.end(), "book"), 0);
    engine_settings.book_mode = 1;
    engine_book.loaded = false;
    search_to(position, 5);
    EXPECT_EQ(std::count(fakes.asked.begin(), fakes.asked.end(), "book"), 0);
    EXPECT_EQ(std::count(fakes.asked.begin(), fakes.asked.end(), "mtc"), 2);
}

TEST_F(ProvidersTest, TheDistanceToConversionIsReturnedAsTheValue) {
    fakes.mtc = true;
    fakes.index = 1;
    fakes.value = 12;
    const Searched found = search_to(position, 7, 0);
    EXPECT_EQ(found.value, 12);
    EXPECT_EQ(found.move, list[1]);
    EXPECT_EQ(found.searched, 1);
    EXPECT_EQ(fakes.asked, (Asked{"prepare", "book", "mtc"}));
    EXPECT_EQ(logged, diagram + "31-26(12)*  32-27(14)  \n");
}

TEST_F(ProvidersTest, TheCheckSeesTheSearchedMoveAndMayLeaveIt) {
    const Searched found = search_to(position, 7, 0);
    EXPECT_EQ(find_move(list, found.move), fakes.chosen);
    EXPECT_EQ(logged.find("egdb move changed"), std::string::npos);
}

TEST_F(ProvidersTest, TheCheckChangesTheMoveButNotTheValue) {
    const Searched plain = search_to(position, 7, SEARCH_QUIET);
    const int chosen = fakes.chosen;
    fakes.better = true;
    fakes.index = (chosen + 1) % list.count;
    const std::string change = "egdb move changed from " + short_text(position, list[chosen]) + " to " +
                               short_text(position, list[fakes.index]) + "\n";
    for (const uint32_t flags : {0u, static_cast<uint32_t>(SEARCH_QUIET)}) {
        logged.clear();
        const Searched found = search_to(position, 7, flags);
        ASSERT_EQ(fakes.chosen, chosen);
        EXPECT_EQ(found.move, list[fakes.index]);
        EXPECT_EQ(found.value, plain.value);
        // The position stands in the log once, and the change is the last line.
        EXPECT_EQ(logged.substr(0, diagram.size()), diagram);
        EXPECT_EQ(logged.find(diagram, 1), std::string::npos);
        ASSERT_GE(logged.size(), change.size());
        EXPECT_EQ(logged.substr(logged.size() - change.size()), change);
        EXPECT_EQ(logged.find("best ") != std::string::npos, flags == 0);
        if (flags) {
            EXPECT_EQ(logged, diagram + change);
        }
    }
}

TEST_F(ProvidersTest, AShortQuietSearchIsNotChecked) {
    fakes.better = true;
    const auto checked = [&](double max_time, uint32_t flags) {
        fakes.asked.clear();
        search_state.Mintime = search_state.step_time = 0;
        search_state.max_time = max_time;
        std::atomic<int32_t> stop{0};
        search_now(position, stop, flags);
        return fakes.asked.back() == "check";
    };
    EXPECT_FALSE(checked(0.99, SEARCH_QUIET));
    EXPECT_TRUE(checked(1.0, SEARCH_QUIET));
    EXPECT_TRUE(checked(0.99, 0));
}

TEST_F(ProvidersTest, ALostPositionWithoutMovesIsOfferedAndThenNotSearched) {
    const Position lost = position_of("B:W11,17:B6");
    EXPECT_EQ(search_to(lost, 7).text, "no moves");
    EXPECT_EQ(fakes.moves, 0);
    EXPECT_EQ(fakes.asked, (Asked{"prepare", "book", "mtc"}));
}

}  // namespace
