// The searches that value every root move: against a slow version of them, against the ends of games, and
// what they tell and keep.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "book/engine_book.h"
#include "core/board_text.h"
#include "search/all_scores.h"
#include "search/engine_settings.h"
#include "search/near_best.h"
#include "search/pv.h"
#include "search/root_moves.h"
#include "search/score.h"
#include "search/search_state.h"
#include "search/search_text.h"
#include "search/table.h"
#include "search/threads.h"
#include "tests/search/fixtures.h"
#include "tests/search/forced_end.h"
#include "tests/search/slow_analysis.h"

namespace {

class AllScoresTest : public SearchTest {
  protected:
    void SetUp() override {
        SearchTest::SetUp();
        search_state.Mintime = search_state.step_time = search_state.max_time = LONG_TIME;
    }
    const Position ending = position_of("W:W31,37,41,K48:B6,12,K5");
};

constexpr uint32_t ALL = SEARCH_QUIET | SEARCH_ALL_SCORES;

int count_of(const std::string& text, const std::string& part) {
    int count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
    return count;
}

struct Scored {
    std::string move;
    int value;
    bool operator==(const Scored&) const = default;
};

// "31-27,-118  32-28,-118  "
std::vector<Scored> scores_in(const std::string& text) {
    std::vector<Scored> scores;
    const std::regex one("(\\d+[-x]\\d+),(-?\\d+)  ");
    for (std::sregex_iterator i(text.begin(), text.end(), one), end; i != end; ++i)
        scores.push_back({(*i)[1], std::stoi((*i)[2])});
    return scores;
}

bool best_first(const std::vector<Scored>& scores, int side) {
    return std::is_sorted(scores.begin(), scores.end(), [side](const Scored& a, const Scored& b) {
        return side == BLACK ? a.value > b.value : a.value < b.value;
    });
}

void expect_tables_equal(const SlowSearch& slow) {
    ASSERT_EQ(slow.slots.size(), transposition_table.slots);
    int different = 0;
    for (size_t i = 0; i < slow.slots.size(); ++i) {
        const SlowEntry& a = slow.slots[i];
        const TTEntry b = TTEntry::from_word(transposition_table.slots_start[i].load());
        different += a.used ? b.free() || (b.check ^ b.info) != a.hash1 || b.value() != a.value ||
                                  b.depth_field() != a.depth_field || b.pv_mark() != a.mark
                            : !b.free();
    }
    EXPECT_EQ(different, 0);
}

// Values, order, nodes and table are those of the slow version, search after search on one table.
TEST_F(AllScoresTest, IsWhatTheSlowVersionFinds) {
    Random random(91);
    SlowSearch slow(1);
    for (int i = 0; i < 60; ++i) {
        const Position p =
            i % 2 ? random_play(random, 20 + i) : random_setup(random, 3 + i % 5, 10 * (i % 5));
        const bool by_one = i % 3 == 0;
        const int depth = 6 + i % 5;
        const Searched found = search_to(p, depth, ALL, by_one);
        const std::vector<SlowRootMove> want = slow_all_scores(slow, p, depth, by_one ? 1 : 2);
        SCOPED_TRACE(fen_of(p) + " depth " + std::to_string(depth));
        EXPECT_EQ(found.value, want[0].value);
        EXPECT_EQ(found.move, want[0].move);
        EXPECT_EQ(searched_nodes(), slow.result.nodes);
        EXPECT_EQ(search_state.completed_depth, slow.result.completed_depth);
        std::vector<Scored> scores;
        for (const SlowRootMove& move : want) scores.push_back({short_text(p, move.move), move.value});
        EXPECT_EQ(scores_in(found.text), scores) << found.text;
        expect_tables_equal(slow);
        if (HasFailure()) return;
    }
}

// Where the end is forced, each move's value is the length of its way there.
TEST_F(AllScoresTest, ForcedEndsGiveEveryMoveItsValue) {
    for (const auto& [p, end] : decided_positions(92, 30)) {
        ASSERT_EQ(tt_allocate(), 0);
        const Searched found = search_to(p, 11, ALL);
        if (search_state.completed_depth < 11) continue;  // forced
        MoveList list;
        generate_moves(p, list, p.side);
        const std::vector<Scored> scores = scores_in(found.text);
        ASSERT_EQ(static_cast<int>(scores.size()), list.count);
        EXPECT_TRUE(best_first(scores, p.side));
        for (const Move& move : list) {
            const int after = forced_end(position_after(move, p.side ^ 1), 4);
            if (after == 0) continue;
            // Positive where the opponent is lost after it. He stands at ply 1, so his end is one ply
            // further.
            const int length = std::abs(after) - 1 + 1;
            const int for_side = after < 0 ? MATE_SCORE - length : length - MATE_SCORE;
            const Scored want{short_text(p, move), p.side == BLACK ? for_side : -for_side};
            EXPECT_NE(std::find(scores.begin(), scores.end(), want), scores.end())
                << fen_of(p) << " " << want.move << " " << want.value << " in " << found.text;
        }
    }
}

TEST_F(AllScoresTest, ValuesAreRelativeToBlackForBothSides) {
    for (const std::string side : {"W:", "B:"}) {
        for (const Scored& score :
             scores_in(search_to(position_of(side + "W31,32,33,34,35:B1,2,6"), 7, ALL).text))
            EXPECT_LT(score.value, -100);
        const Searched black = search_to(position_of(side + "W31,32:B1,2,6,7,8"), 7, ALL);
        for (const Scored& score : scores_in(black.text)) EXPECT_GT(score.value, 100);
        EXPECT_EQ(scores_in(black.text)[0].value, black.value);
        EXPECT_TRUE(best_first(scores_in(black.text), side == "B:" ? BLACK : WHITE));
    }
}

TEST_F(AllScoresTest, TheTextsHaveTheirShape) {
    const Searched found = search_to(ending, 9, ALL);
    const std::string scores = "(\\d+[-x]\\d+,-?\\d+  )+";
    EXPECT_TRUE(std::regex_match(found.text, std::regex("depth 9,  \\d+\\.\\d sec,  " + scores +
                                                        "pv \\d+[-x]\\d+( \\d+[-x]\\d+){0,9}")))
        << found.text;
    EXPECT_NE(found.text.find("pv " + short_text(ending, found.move)), std::string::npos);
    std::string log_shape;
    for (const int depth : {1, 3, 5, 7, 9})
        log_shape += "time \\d+\\.\\d\\ds, depth " + std::to_string(depth) + ", nodes \\d+, " + scores + "\n";
    EXPECT_TRUE(std::regex_match(logged, std::regex(log_shape))) << logged;
    MoveList list;
    EXPECT_EQ(static_cast<int>(scores_in(found.text).size()), generate_moves(ending, list, WHITE));
}

// Times are whole milliseconds, of which each iteration takes at least one.
TEST_F(AllScoresTest, TheStepTimeItselfIsNoTimeForTwoDeeper) {
    search_state.step_time = 0.001;
    search_state.depth_limit = 6;
    std::atomic<int32_t> stop{0};
    search_now(position_of("W:W46:B36"), stop, ALL);
    for (int depth = 1; depth <= 6; ++depth)
        EXPECT_EQ(count_of(logged, "depth " + std::to_string(depth) + ","), 1) << depth;
}

TEST_F(AllScoresTest, TheBoardIsLoggedUnlessQuiet) {
    search_to(ending, 1, SEARCH_ALL_SCORES);
    const std::string head = "\n\n" + board_diagram(ending);
    EXPECT_EQ(logged.substr(0, head.size()), head);
}

TEST_F(AllScoresTest, OneMoveRunsAtLeastFiveIterations) {
    // A quiet move, and a capture, which is forced.
    for (const char* fen : {"W:W46:B1,2", "W:W28,40,41,42:B22,1,2,8"}) {
        const Position p = position_of(fen);
        MoveList list;
        ASSERT_EQ(generate_moves(p, list, p.side), 1);
        search_state.Mintime = search_state.step_time = search_state.max_time = 0;
        std::atomic<int32_t> stop{0};
        Searched found = search_now(p, stop, ALL);
        EXPECT_EQ(search_state.completed_depth, 5);
        EXPECT_EQ(found.move, list[0]);
        EXPECT_EQ(scores_in(found.text), (std::vector<Scored>{{short_text(p, list[0]), found.value}}));
        EXPECT_EQ(found.searched, 0);
    }
    // Without limits of time a forced move ends with the first iteration behind the fifth.
    const Searched forced = search_to(position_of("W:W28,40,41,42:B22,1,2,8"), MAX_DEPTH, ALL);
    EXPECT_EQ(search_state.completed_depth, 7);
    EXPECT_EQ(forced.searched, 0);
    search_to(position_of("W:W28,40,41,42:B22,1,2,8"), MAX_DEPTH, ALL, true);
    EXPECT_EQ(search_state.completed_depth, 6);
}

TEST_F(AllScoresTest, TheIterationBeyondTheSixtiethIsTheLast) {
    // One way only, so that none of them takes any time.
    const Position p = position_of("W:W46:B36");
    for (const bool by_one : {false, true}) {
        const Searched found = search_to(p, MAX_DEPTH, ALL, by_one);
        EXPECT_EQ(search_state.completed_depth, 61);
        EXPECT_EQ(found.value, MATE_SCORE - 2);
        EXPECT_EQ(found.text.substr(0, 9), "depth 61,");
    }
}

TEST_F(AllScoresTest, SearchedTellsWhetherItWentBeyondDepthSeven) {
    EXPECT_EQ(search_to(ending, 7, ALL).searched, 0);
    EXPECT_EQ(search_to(ending, 8, ALL).searched, 1);
    EXPECT_EQ(search_to(ending, 9, ALL).searched, 1);
}

TEST_F(AllScoresTest, WithoutAMoveTheSideHasLost) {
    const Searched white = search_to(position_of("W:W6:B1,11,17"), 9, ALL);
    EXPECT_EQ(white.value, 4000);
    EXPECT_EQ(white.searched, 1);
    EXPECT_EQ(white.text, "no moves");
    EXPECT_EQ(white.move, move_to(position_of("W:W6:B1,11,17")));
    EXPECT_EQ(search_to(position_of("B:W11,17:B6"), 9, ALL).value, -4000);
    Position both = START_POSITION;
    both.black |= both.white & (~both.white + 1);
    EXPECT_EQ(search_to(both, 9, ALL).text, "Illegal position");
}

TEST_F(AllScoresTest, TheBookAndTheDatabaseAnswerBefore) {
    engine_settings.book_mode = 1;
    engine_book = {true, [](const Position&, int, const MoveList&, const BookTerms&, int& index, int& value,
                            char* text) {
                       index = 1;
                       value = -17;
                       std::snprintf(text, SEARCH_TEXT_SIZE, "from the book");
                       return 1;
                   }};
    MoveList list;
    generate_moves(ending, list, WHITE);
    Searched found = search_to(ending, 9, ALL);
    EXPECT_EQ(found.text, "from the book");
    EXPECT_EQ(found.value, -17);
    EXPECT_EQ(found.move, list[1]);
    EXPECT_EQ(found.searched, 1);
    engine_settings.book_mode = 0;
    egdb_engine.mtc_choose_move = [](const Position&, int, const MoveList&, int& best, int& mtc, char* text) {
        best = 2;
        mtc = 12;
        std::snprintf(text, SEARCH_TEXT_SIZE, "31-26(12)*");
        return 1;
    };
    found = search_to(ending, 9, ALL);
    EXPECT_EQ(found.text, "31-26(12)*");
    EXPECT_EQ(found.move, list[2]);
    EXPECT_EQ(found.searched, 1);
}

TEST_F(AllScoresTest, TheDatabaseDoesNotCorrectTheMove) {
    static bool asked;
    asked = false;
    egdb_engine.egdb_move_check = [](int, const Position&, const MoveList&, int, int&) {
        asked = true;
        return 0;
    };
    search_to(ending, 9, SEARCH_ALL_SCORES);
    EXPECT_FALSE(asked);
    search_to(ending, 9, 0);
    EXPECT_TRUE(asked);
}

// The flag goes up at each of many places of an iteration: what is shown is the iteration before.
TEST_F(AllScoresTest, AStopBringsTheEarlierValuesBack) {
    open_database(40, 20, 9, 8, false);
    std::atomic<int32_t> stop{0};
    int until = 1 << 30, asked_deep = 0;
    database_answer = [&](const Position&, int, bool) {
        if (search_state.iteration == 9 && ++asked_deep == until) stop = 1;
        return EGDB_UNKNOWN;
    };
    const Searched before = search_to(ending, 7, ALL);
    ASSERT_EQ(tt_allocate(), 0);
    const Searched whole = search_to(ending, 9, ALL);
    ASSERT_NE(scores_in(whole.text), scores_in(before.text));
    const int questions = asked_deep;
    ASSERT_GT(questions, 100);
    search_state.depth_limit = MAX_DEPTH;
    for (until = 1; until < questions; until += 1 + questions / 30) {
        ASSERT_EQ(tt_allocate(), 0);
        asked_deep = 0;
        const Searched found = search_now(ending, stop, ALL);
        EXPECT_EQ(search_state.completed_depth, 7);
        EXPECT_EQ(found.value, before.value);
        EXPECT_EQ(found.move, before.move);
        EXPECT_EQ(scores_in(found.text), scores_in(before.text));
        EXPECT_EQ(found.text.substr(0, 9), "depth 7, ");
        EXPECT_EQ(found.searched, 1);  // it had got beyond depth 7
        EXPECT_EQ(stop, 0);
    }
}

TEST_F(AllScoresTest, ManyThreadsGiveLegalMovesAndForcedEnds) {
    threads_init(MAX_SEARCH_THREADS);
    Random random(94);
    for (int i = 0; i < 15; ++i) {
        engine_settings.search_threads = 2 + i % 7;
        const Position p = random_play(random, 10 + 4 * i);
        const Searched found = search_to(p, 8, ALL);
        MoveList list;
        const int count = generate_moves(p, list, p.side);
        EXPECT_GE(find_move(list, found.move), 0);
        const std::vector<Scored> scores = scores_in(found.text);
        EXPECT_EQ(static_cast<int>(scores.size()), count);
        EXPECT_TRUE(best_first(scores, p.side));
        EXPECT_EQ(scores[0].value, found.value);
    }
    for (const auto& [p, end] : decided_positions(95, 10)) {
        ASSERT_EQ(tt_allocate(), 0);
        const Searched found = search_to(p, 11, ALL);
        const int for_side = p.side == BLACK ? found.value : -found.value;
        EXPECT_EQ(for_side, end > 0 ? 4001 - end : -end - 4001) << fen_of(p);
    }
}

// The nearly best moves.

class NearBestTest : public SearchTest {
  protected:
    int status = -1;
    int32_t count = -1, msd_out = -1;
    std::array<Move, MAX_MOVES> moves{};
    std::array<int32_t, MAX_MOVES> values{};
    std::string text;
    std::atomic<int32_t> stop{0};

    void search(const Position& p, int32_t msd, int depth_limit, double time = LONG_TIME) {
        char buffer[SEARCH_TEXT_SIZE];
        status =
            near_best_search(p, p.side, time, buffer, stop, msd, count, moves, values, depth_limit, msd_out);
        text = buffer;
    }
};

TEST_F(NearBestTest, IsWhatTheSlowVersionFinds) {
    Random random(96);
    SlowSearch slow(1);
    int several = 0, left_out = 0;
    for (int i = 0; i < 60; ++i) {
        const Position p =
            i % 2 ? random_play(random, 20 + i) : random_setup(random, 3 + i % 5, 10 * (i % 5));
        const int msd = below(random, 12);
        const int depth_limit = 7 + i % 5;
        search(p, msd, depth_limit);
        const SlowNearBest want = slow_near_best(slow, p, msd, depth_limit);
        SCOPED_TRACE(fen_of(p) + " limit " + std::to_string(depth_limit));
        ASSERT_EQ(status, NEAR_BEST_FOUND);
        EXPECT_EQ(search_state.completed_depth, want.depth);
        EXPECT_EQ(searched_nodes(), slow.result.nodes);
        EXPECT_EQ(msd_out, want.msd);
        ASSERT_EQ(count, want.count);
        for (size_t k = 0; k < static_cast<size_t>(count); ++k) {
            EXPECT_EQ(moves[k], want.moves[k].move);
            EXPECT_EQ(values[k], want.moves[k].value);
        }
        several += count > 1;
        left_out += count < static_cast<int>(want.moves.size());
        expect_tables_equal(slow);
        if (HasFailure()) return;
    }
    EXPECT_GT(several, 10);
    EXPECT_GT(left_out, 10);
}

TEST_F(NearBestTest, TheDifferenceIsAtLeastTheGivenOne) {
    Random random(97);
    for (int i = 0; i < 20; ++i) {
        const Position p = random_play(random, 20 + i);
        for (const int msd : {0, 5, 40}) {
            search(p, msd, 8);
            EXPECT_GE(msd_out, msd);
            for (int k = 0; k < count; ++k) {
                const int distance =
                    (p.side == BLACK ? 1 : -1) * (values[0] - values[static_cast<size_t>(k)]);
                EXPECT_GE(distance, 0);
                EXPECT_LE(distance, msd_out);
            }
        }
    }
}

TEST_F(NearBestTest, WithoutAMoveItSaysSo) {
    msd_out = 77;
    search(position_of("B:W11,17:B6"), 5, 8);
    EXPECT_EQ(status, 2);
    EXPECT_EQ(text, "No moves");
    EXPECT_EQ(count, 0);
    EXPECT_EQ(msd_out, 77);
    Position both = START_POSITION;
    both.black |= both.white & (~both.white + 1);
    search(both, 5, 8);
    EXPECT_EQ(status, NEAR_BEST_ILLEGAL);
    EXPECT_EQ(text, "Illegal position");
    EXPECT_FALSE(search_state.busy);
}

TEST_F(NearBestTest, ADecidedPositionEndsTheSearch) {
    // White takes the last man.
    search(position_of("W:W28,40:B22"), 5, 0);
    EXPECT_EQ(status, NEAR_BEST_FOUND);
    EXPECT_EQ(search_state.completed_depth, 1);
    EXPECT_LE(values[0], -DECIDED_SCORE);
}

TEST_F(NearBestTest, AWinOfTheDatabaseEndsTheSearchToo) {
    open_database(40, 20, 9, 8, false);
    database_answer = [](const Position&, int side, bool) { return side == WHITE ? EGDB_WIN : EGDB_LOSS; };
    search(position_of("W:W31,37,41,K48:B6,12,K5"), 5, 0);
    EXPECT_EQ(search_state.completed_depth, 1);
    EXPECT_LE(values[0], -DECIDED_SCORE);
    EXPECT_GT(values[0], -DECIDED_SCORE - 1000);
}

TEST_F(NearBestTest, EachTextIsTold) {
    static std::vector<std::string> told;
    told.clear();
    search_text_listener = [](const char* shown) { told.emplace_back(shown); };
    search(position_of("W:W31,37,41,K48:B6,12,K5"), 3, 8);
    for (const int depth : {1, 3, 5, 7})
        EXPECT_EQ(std::count_if(told.begin(), told.end(),
                                [&](const std::string& one) {
                                    return one.find(" D " + std::to_string(depth) + ",") != std::string::npos;
                                }),
                  1);
    search(position_of("B:W11,17:B6"), 5, 8);
    EXPECT_EQ(told.back(), "No moves");
    search_text_listener = nullptr;
}

TEST_F(NearBestTest, TheTextsHaveTheirShape) {
    const Position p = position_of("W:W31,37,41,K48:B6,12,K5");
    search(p, 3, 8);
    const std::string scores = "(\\d+[-x]\\d+,-?\\d+  )+";
    EXPECT_TRUE(std::regex_match(text, std::regex("\\d+\\.\\ds, D 7, " + scores))) << text;
    EXPECT_EQ(static_cast<int>(scores_in(text).size()), count);
    const std::string lines =
        "(Mintime \\d+\\.\\d\\d, alpha -?\\d+, beta -?\\d+, bestval -?\\d+, msd \\d+\n"
        "time \\d+\\.\\d\\ds, depth [1357], nodes \\d+, speed \\d+,  " +
        scores + "\n){4}";
    const std::string head = "\n\n" + board_diagram(p);
    ASSERT_EQ(logged.substr(0, head.size()), head);
    EXPECT_TRUE(std::regex_match(logged.substr(head.size()), std::regex(lines))) << logged;
}

TEST_F(NearBestTest, UnknownAnswersAreLogged) {
    const Position p = position_of("W:W31,37,41,K48:B6,12,K5");
    open_database(40, 20, 9, 8, false);
    database_answer = [](const Position&, int, bool) {
        ++search_state.egdb_unknowns;
        return EGDB_UNKNOWN;
    };
    search(p, 3, 8);
    const std::string line =
        std::string("dbunknowns ").append(std::to_string(search_state.egdb_unknowns)).append("\n");
    EXPECT_TRUE(logged.ends_with(line)) << logged;
}

TEST_F(NearBestTest, TheTimeGrowsWithTheCandidates) {
    const Position p = position_of("W:W31,37,41,K48:B6,12,K5");
    for (const int msd : {0, 8000}) {
        stop = 1;  // in iteration 5
        search(p, msd, 0);
        EXPECT_EQ(stop, 0);
        EXPECT_EQ(search_state.completed_depth, 3);
        EXPECT_NEAR(search_state.Mintime, (0.5 * std::log10(count) + 1) * LONG_TIME, 1);
        EXPECT_NEAR(search_state.step_time, search_state.Mintime / 2, 1);
        EXPECT_NEAR(search_state.max_time, 4 * LONG_TIME, 1);
        // A depth limit that is not yet near has eight times the time.
        stop = 1;
        search(p, msd, 20);
        EXPECT_NEAR(search_state.Mintime, 8 * LONG_TIME, 1);
        EXPECT_NEAR(search_state.step_time, 8 * LONG_TIME, 1);
        EXPECT_NEAR(search_state.max_time, 8 * LONG_TIME, 1);
        // Near it the time is that of a search without one.
        for (const int limit : {7, 8}) {
            logged.clear();
            search(p, msd, limit);
            EXPECT_EQ(search_state.completed_depth, 7);
            EXPECT_LE(search_state.Mintime, 2 * LONG_TIME);
            char long_time[40];
            std::snprintf(long_time, sizeof long_time, "Mintime %.2f,", 8 * LONG_TIME);
            EXPECT_EQ(count_of(logged, "Mintime "), 4) << "iterations 1, 3, 5 and 7";
            EXPECT_EQ(count_of(logged, long_time), 3);
        }
    }
    // No time at all: the first iterations run nevertheless.
    search(p, 5, 0, 0);
    EXPECT_GE(search_state.completed_depth, 4);
    EXPECT_LE(search_state.completed_depth, 5);
}

TEST_F(NearBestTest, AStopBringsTheEarlierValuesBack) {
    const Position p = position_of("W:W31,37,41,K48:B6,12,K5");
    open_database(40, 20, 9, 8, false);
    int asked = -100000;
    database_answer = [&](const Position&, int, bool) {
        if (search_state.iteration == 9 && ++asked == 300) stop = 1;
        return EGDB_UNKNOWN;
    };
    search(p, 4, 8);
    const auto best = moves;
    const auto best_values = values;
    const int found = count;
    ASSERT_EQ(tt_allocate(), 0);
    asked = 0;
    search(p, 4, 20);
    EXPECT_GE(asked, 300);
    EXPECT_EQ(search_state.completed_depth, 7);
    EXPECT_EQ(count, found);
    for (size_t i = 0; i < static_cast<size_t>(found); ++i) {
        EXPECT_EQ(moves[i], best[i]);
        EXPECT_EQ(values[i], best_values[i]);
    }
}

}  // namespace
