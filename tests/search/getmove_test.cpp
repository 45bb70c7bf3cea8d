// The engine's door: which iterations run, what ends them, what is returned, shown and logged.
#include "search/getmove.h"

#include <cstdio>
#include <regex>
#include <set>

#include "core/board_text.h"
#include "search/engine_settings.h"
#include "search/forced.h"
#include "search/search_state.h"
#include "search/table.h"
#include "search/thread_record.h"
#include "tests/search/fixtures.h"
#include "tests/search/slow_search.h"

namespace {

class GetmoveTest : public SearchTest {
  protected:
    // Iterations in which the database was asked, in their order: a database that knows nothing.
    std::vector<int> iterations;
    void watch_iterations() {
        open_database(40, 20, 9, 8, false);
        database_answer = [this](const Position&, int, bool) {
            const int now = search_state.iteration;
            if (iterations.empty() || iterations.back() != now) iterations.push_back(now);
            return EGDB_UNKNOWN;
        };
    }
};

constexpr char ENDING[] = "W:W31,37,41,K48:B6,12,K5";
// White's only capture.
constexpr char ONE_CAPTURE[] = "W:W28,40,41,42:B22,1,2,8";
constexpr char ONE_QUIET_MOVE[] = "W:W46:B1,2";

// Iterations.

TEST_F(GetmoveTest, FastIterationsGoTwoDeeper) {
    watch_iterations();
    search_to(position_of(ENDING), 9);
    EXPECT_EQ(iterations, (std::vector<int>{1, 3, 5, 7, 9}));
}

TEST_F(GetmoveTest, AfterTheStepTimeTheyGoOneDeeper) {
    watch_iterations();
    search_to(position_of(ENDING), 9, SEARCH_QUIET, true);
    EXPECT_EQ(iterations, (std::vector<int>{1, 2, 3, 4, 5, 6, 7, 8, 9}));
}

TEST_F(GetmoveTest, TheFirstFiveIterationsRunWhateverTheTime) {
    watch_iterations();
    search_state.Mintime = search_state.step_time = search_state.max_time = 0;
    std::atomic<int32_t> stop{0};
    search_now(position_of(ENDING), stop);
    EXPECT_EQ(iterations, (std::vector<int>{1, 2, 3, 4, 5}));
    EXPECT_EQ(stop, 0);
}

TEST_F(GetmoveTest, NoIterationStartsAfterMintime) {
    watch_iterations();
    search_state.Mintime = 0;
    search_state.step_time = search_state.max_time = LONG_TIME;
    std::atomic<int32_t> stop{0};
    search_now(position_of(ENDING), stop);
    EXPECT_EQ(iterations, (std::vector<int>{1, 3, 5}));
    EXPECT_EQ(search_state.iteration, 7);  // announced, but not begun
    EXPECT_EQ(search_state.completed_depth, 5);
}

TEST_F(GetmoveTest, SixtyIterationsAreTheEnd) {
    // With a database that settles every reply nothing takes time.
    open_database(40, 20, 9, 8, false);
    std::set<int> seen;
    database_answer = [&](const Position&, int, bool) {
        seen.insert(search_state.iteration);
        return EGDB_DRAW;
    };
    search_to(position_of("W:WK48:BK5,K1"), MAX_DEPTH, SEARCH_QUIET, true);
    EXPECT_EQ(seen.size(), 60u);
    EXPECT_EQ(*seen.rbegin(), 60);
}

// Forced moves.

TEST_F(GetmoveTest, ASingleCaptureIsNotReallySearched) {
    const Position p = position_of(ONE_CAPTURE);
    MoveList list;
    ASSERT_EQ(generate_captures(p, list, WHITE), 1);
    watch_iterations();
    Searched forced = search_to(p, MAX_DEPTH);
    EXPECT_EQ(forced.searched, 0);
    EXPECT_EQ(forced.move, list[0]);
    EXPECT_EQ(search_state.completed_depth, 5);
    EXPECT_EQ(iterations.back(), 5);
    forced = search_to(p, MAX_DEPTH, SEARCH_QUIET, true);
    EXPECT_EQ(forced.searched, 0);
    EXPECT_EQ(search_state.completed_depth, 5);
}

TEST_F(GetmoveTest, FullDepthIsSearchedWhereItIsAskedFor) {
    const Searched full = search_to(position_of(ONE_CAPTURE), 9, SEARCH_QUIET | SEARCH_FULL_DEPTH);
    EXPECT_EQ(full.searched, 1);
    EXPECT_EQ(search_state.completed_depth, 9);
}

TEST_F(GetmoveTest, ASingleQuietMoveIsSearched) {
    const Position p = position_of(ONE_QUIET_MOVE);
    MoveList list;
    ASSERT_FALSE(has_capture(p, WHITE));
    ASSERT_EQ(generate_noncaptures(p, list, WHITE), 1);
    const Searched found = search_to(p, 9);
    EXPECT_EQ(found.searched, 1);
    EXPECT_EQ(search_state.completed_depth, 9);
    EXPECT_EQ(found.move, list[0]);
}

TEST_F(GetmoveTest, CapturesThatTransposeAreForced) {
    Random random(21);
    int several = 0, transposing = 0;
    for (int i = 0; i < 40000; ++i) {
        const Position p =
            i % 2 ? random_setup(random, 3 + i % 6, 10 * (i % 4)) : random_play(random, i % 60);
        MoveList list;
        const int count = generate_captures(p, list, p.side);
        const bool want = slow_forced(p, p.side);
        ASSERT_EQ(is_forced(p, p.side), want) << fen_of(p);
        several += count > 1;
        if (count > 1 && want && transposing++ < 5) {
            EXPECT_EQ(search_to(p, 9).searched, 0) << fen_of(p);
            EXPECT_EQ(search_state.completed_depth, 5);
            EXPECT_EQ(search_to(p, 9, SEARCH_QUIET | SEARCH_FULL_DEPTH).searched, 1);
        }
    }
    EXPECT_GT(several, 300);
    EXPECT_GT(transposing, 5);
}

// Nothing to search.

TEST_F(GetmoveTest, WithoutAMoveTheSideHasLost) {
    for (const char* fen : {"B:W11,17:B6", "B:W31:B", "W:W6:B1,11,17", "W:W:B1"}) {
        const Position p = position_of(fen);
        const Searched found = search_to(p, 9);
        EXPECT_EQ(found.value, p.side == WHITE ? 4000 : -4000) << fen;
        EXPECT_EQ(found.text, "no moves");
        EXPECT_EQ(found.move, move_to(p));
        EXPECT_EQ(searched_nodes(), 0u);
    }
}

TEST_F(GetmoveTest, IllegalPositionsAreHandedBack) {
    Position both = START_POSITION;
    both.black |= lowest_set(both.white);
    Position man = START_POSITION;
    man.black |= uint64_t{1} << 49;
    man.white &= ~man.black;
    Position outside = START_POSITION;
    outside.white |= uint64_t{1} << 10;
    for (const Position& p : {both, man, outside}) {
        logged.clear();
        bool prepared = false;
        static bool* flag;
        flag = &prepared;
        egdb_engine.egdb_prepare = [](char*) { *flag = true; };
        const Searched found = search_to(p, 9, 0);
        EXPECT_EQ(found.value, 0);
        EXPECT_EQ(found.text, "Illegal position");
        EXPECT_EQ(found.move, move_to(p));
        EXPECT_FALSE(prepared);
        EXPECT_EQ(logged, "");
        EXPECT_FALSE(search_state.busy);
    }
}

// Values.

TEST_F(GetmoveTest, ValuesAreRelativeToBlack) {
    for (const char* side : {"W:", "B:"}) {
        EXPECT_LT(search_to(position_of(side + std::string("W31,32,33,34,35:B1,2,6")), 7).value, -100);
        EXPECT_GT(search_to(position_of(side + std::string("W31,32:B1,2,6,7,8")), 7).value, 100);
    }
}

TEST_F(GetmoveTest, TheSameSearchTakesTheSameNodes) {
    Random random(22);
    for (int i = 0; i < 20; ++i) {
        const Position p = random_play(random, 20 + i);
        MoveList list;
        if (generate_moves(p, list, p.side) == 0) continue;
        ASSERT_EQ(tt_allocate(), 0);
        const Searched first = search_to(p, 11);
        const uint64_t nodes = searched_nodes();
        ASSERT_EQ(tt_allocate(), 0);
        const Searched second = search_to(p, 11);
        EXPECT_EQ(searched_nodes(), nodes);
        EXPECT_EQ(second.value, first.value);
        EXPECT_EQ(second.move, first.move);
    }
}

TEST_F(GetmoveTest, HistoryAndKillersStartAnew) {
    for (auto& entry : search_state.history) entry = 1;
    thread_records[0].killers.fill({3, 9});
    search_state.egdb_lookups = search_state.egdb_unknowns = 77;
    const Position p = position_of("B:W11,17:B6");
    search_to(p, 5);
    for (const auto& entry : search_state.history) ASSERT_EQ(entry, 4096);
    for (const KillerMove& killer : thread_records[0].killers) ASSERT_EQ(killer.from + killer.to, 0);
    EXPECT_EQ(search_state.egdb_lookups, 0u);
    EXPECT_EQ(search_state.egdb_unknowns, 0u);
}

// Texts.

const std::string NUMBER = "-?\\d+";
const std::string MOVES = "pv \\d+[-x]\\d+( \\d+[-x]\\d+){0,9}";

TEST_F(GetmoveTest, TheStatusTellsTheSearch) {
    const Searched found = search_to(position_of(ENDING), 9);
    const std::regex line("value=" + NUMBER + ",  depth 9/\\d+\\.\\d/\\d+,  \\d+\\.\\d sec,  \\d+ kN/s,  " +
                          MOVES);
    EXPECT_TRUE(std::regex_match(found.text, line)) << found.text;
    EXPECT_EQ(found.text.substr(0, found.text.find(',')),
              std::string("value=").append(std::to_string(found.value)));
    EXPECT_NE(
        found.text.find(std::string("/").append(std::to_string(search_state.highest_ply)).append(",  ")),
        std::string::npos);
    EXPECT_NE(found.text.find(std::string("pv ").append(short_text(position_of(ENDING), found.move))),
              std::string::npos);
}

TEST_F(GetmoveTest, PassesAreMarkedAndTheirLineIsShownFromSixOn) {
    char text[SEARCH_TEXT_SIZE];
    std::set<std::string> texts;
    open_database(40, 20, 9, 8, false);
    database_answer = [&](const Position&, int, bool) {
        texts.insert(text);
        return EGDB_UNKNOWN;
    };
    search_state.Mintime = search_state.max_time = LONG_TIME;
    search_state.step_time = 0;
    search_state.depth_limit = 8;
    std::atomic<int32_t> stop{0};
    Move move;
    int32_t searched;
    getmove(position_of(ENDING), WHITE, text, stop, SEARCH_QUIET, move, searched);
    EXPECT_EQ(texts.count("Thinking..."), 1u);
    texts.erase("Thinking...");
    const std::regex shape("value([<>=])" + NUMBER +
                           ",  depth (\\d)/\\d+\\.\\d/\\d+,  \\d+\\.\\d sec,  \\d+ kN/s,  (.*)");
    std::set<std::string> marks;
    for (const std::string& one : texts) {
        std::smatch match;
        ASSERT_TRUE(std::regex_match(one, match, shape)) << one;
        marks.insert(match[1]);
        const bool with_line = match[1] == "=" || match[2] >= "6";
        EXPECT_EQ(std::regex_match(match[3].str(), std::regex(MOVES)), with_line) << one;
        if (!with_line) {
            EXPECT_EQ(match[3], "") << one;
        }
    }
    EXPECT_EQ(marks, (std::set<std::string>{"<", ">", "="}));
}

TEST_F(GetmoveTest, TheLogHasTheBoardThePositionAndTheResult) {
    const Position p = position_of(ENDING);
    engine_settings.position_line = [](const Position&, int side, char* text) {
        std::snprintf(text, 300, "the position, side %d", side);
    };
    const Searched found = search_to(p, 9, 0);
    const std::string head = "\n\n" + board_diagram(p) + "the position, side 1\n\n";
    ASSERT_EQ(logged.substr(0, head.size()), head);
    const std::string line = logged.substr(head.size());
    const std::regex shape("best (\\d+-\\d+), value (" + NUMBER +
                           "), depth 9/\\d+\\.\\d/(\\d+), nodes (\\d+), " +
                           "time \\d+\\.\\d\\d, \\d+ kN/s, db (\\d+), " + MOVES + "\n");
    std::smatch match;
    ASSERT_TRUE(std::regex_match(line, match, shape)) << line;
    EXPECT_EQ(match[1], short_text(p, found.move));
    EXPECT_EQ(match[2], std::to_string(found.value));
    EXPECT_EQ(match[3], std::to_string(search_state.highest_ply));
    EXPECT_EQ(match[4], std::to_string(searched_nodes()));
    EXPECT_EQ(match[5], "0");
}

TEST_F(GetmoveTest, TheLogCountsDatabaseLookups) {
    watch_iterations();
    search_to(position_of(ENDING), 7, 0);
    EXPECT_GT(search_state.egdb_lookups, 0u);
    EXPECT_NE(
        logged.find(std::string(", db ").append(std::to_string(search_state.egdb_lookups)).append(", pv ")),
        std::string::npos);
}

TEST_F(GetmoveTest, AQuietSearchLogsNothing) {
    search_to(position_of(ENDING), 9, SEARCH_QUIET);
    search_to(position_of(ONE_CAPTURE), 9, SEARCH_QUIET);
    search_to(position_of("W:W:B1"), 9, SEARCH_QUIET);
    EXPECT_EQ(logged, "");
}

TEST_F(GetmoveTest, FixedTimeSetsTheThreeLimits) {
    set_fixed_time(8);
    EXPECT_DOUBLE_EQ(search_state.Mintime, 5.2);
    EXPECT_DOUBLE_EQ(search_state.step_time, 3.2);
    EXPECT_DOUBLE_EQ(search_state.max_time, 32);
}

}  // namespace
