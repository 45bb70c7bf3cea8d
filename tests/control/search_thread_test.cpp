// The hand-over to the search thread: what each mode's search is given, the flags, and pondering.
#include "control/search_thread.h"

#include <chrono>
#include <thread>

#include "base/clock.h"
#include "control/game_clock.h"
#include "control/time_control.h"
#include "search/engine_settings.h"
#include "search/search_state.h"
#include "search/table.h"
#include "tests/control/game_fixture.h"

namespace {

class SearchThreadTest : public GameTest {
  protected:
    // Starts a search in the mode, and ends it without a trace on the board.
    static void start_in(int32_t mode) {
        game.gui_mode = mode;
        start_search();
        discard_search();
        search_thread.search_finished = 0;
    }
    static void expect_limits(double target, double least, double step, double most) {
        EXPECT_DOUBLE_EQ(search_thread.search_target_time, target);
        EXPECT_DOUBLE_EQ(search_state.Mintime, least);
        EXPECT_DOUBLE_EQ(search_state.step_time, step);
        EXPECT_DOUBLE_EQ(search_state.max_time, most);
    }
    static int entries() { return game.history_count; }
};

const int32_t ENGINE_MODES[] = {NORMAL_MODE,
                                ANALYSIS_MODE,
                                ANALYSIS_ALLSCORES_MODE,
                                AUTOPLAY_MODE,
                                DXP_MODE,
                                ANALYZE_GAME_MODE,
                                ANALYZE_PDN_MODE,
                                ANALYZE_GAME_ALLSCORES_MODE,
                                ANALYZE_PDN_ALLSCORES_MODE};

}  // namespace

TEST_F(SearchThreadTest, AFixedTimeIsSharedOutByMode) {
    settings.time_per_move = 10;
    for (const int32_t mode : ENGINE_MODES) {
        if (mode == DXP_MODE) continue;
        SCOPED_TRACE(mode);
        start_in(mode);
        expect_limits(10, 6.5, mode == ANALYSIS_MODE || mode == ANALYSIS_ALLSCORES_MODE ? 0 : 4, 40);
    }
}

TEST_F(SearchThreadTest, InfiniteEndsByCommandAlone) {
    set_time_control(TIME_INFINITE);
    start_in(NORMAL_MODE);
    EXPECT_DOUBLE_EQ(search_state.max_time, 4e6);
}

TEST_F(SearchThreadTest, TheGameClockGivesTheTimeInNormalAndDxpModeAlone) {
    settings.use_game_clock = 1;
    settings.time_per_move = 10;
    settings.clock_minutes = 90;
    settings.clock_moves_limit = 75;
    clock_state.clock_moves = 80;
    for (const int32_t mode : ENGINE_MODES) {
        SCOPED_TRACE(mode);
        start_in(mode);
        const double target = mode == NORMAL_MODE || mode == DXP_MODE ? 90 * 60.0 / 75 : 10;
        EXPECT_DOUBLE_EQ(search_thread.search_target_time, target);
    }
    EXPECT_EQ(count_events("box"), 0) << "nothing tells that the moves of the control are over";
    settings.use_game_clock = 0;
    start_in(DXP_MODE);
    EXPECT_DOUBLE_EQ(search_thread.search_target_time, 90 * 60.0 / 75) << "whatever the time control";
}

TEST_F(SearchThreadTest, TheSideOfTheClockIsTakenInNormalModeAlone) {
    for (const int32_t mode : ENGINE_MODES) {
        clock_state.clock_side = BLACK;
        start_in(mode);
        EXPECT_EQ(clock_state.clock_side, mode == NORMAL_MODE ? WHITE : BLACK) << mode;
    }
}

TEST_F(SearchThreadTest, TheClockStartsInNormalAndDxpModeAlone) {
    for (const int32_t mode : ENGINE_MODES) {
        reset_clock_state();
        clear_events();
        start_in(mode);
        const bool starts = mode == NORMAL_MODE || mode == DXP_MODE;
        EXPECT_EQ(clock_state.clock_running, starts) << mode;
        EXPECT_EQ(count_events("menu"), starts ? 1 : 0) << "the menu shows it";
    }
}

TEST_F(SearchThreadTest, ModesHaveTheirFlags) {
    const uint32_t told[] = {0, 0, 1, 3, 0, 0, 0, 0, 0, 2, 2};
    settings.clock_minutes = 100;
    settings.clock_moves_limit = 10;
    for (const int32_t mode : ENGINE_MODES) {
        start_in(mode);
        EXPECT_EQ(search_thread.search_flags, told[mode]) << mode;
    }
}

TEST_F(SearchThreadTest, AVeryShortMoveOfAMatchIsQuiet) {
    settings.clock_moves_limit = 100;
    clock_state.clock_moves = 200;
    settings.clock_minutes = 0.1999 * 100 / 60;
    start_in(DXP_MODE);
    EXPECT_EQ(search_thread.search_flags, SEARCH_QUIET);
    settings.clock_minutes = 0.2001 * 100 / 60;
    start_in(DXP_MODE);
    EXPECT_EQ(search_thread.search_flags, 0u);
    settings.time_per_move = 0.01;
    start_in(NORMAL_MODE);
    EXPECT_EQ(search_thread.search_flags, 0u);
}

TEST_F(SearchThreadTest, TheEnginesLapBeginsWithItsSearch) {
    clock_state.clock_running = true;
    clock_state.user_lap_start = clock_ms();
    clock_state.engine_lap_start = clock_ms() - 500000;
    start_search();
    ASSERT_TRUE(wait_for_search());
    EXPECT_LT(clock_used(WHITE), 400);
}

TEST_F(SearchThreadTest, ASearchTellsWhenItBeganAndWhatItTook) {
    search_thread.search_started_ms = -1;
    script.hold = true;
    const int64_t before = clock_ms();
    start_search();
    wait_until_held();
    const int64_t held = clock_ms();
    EXPECT_GE(search_thread.search_started_ms, before);
    EXPECT_LE(search_thread.search_started_ms, held);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const int64_t released = clock_ms();
    release_search();
    ASSERT_TRUE(wait_for_search());
    EXPECT_GE(search_thread.search_elapsed, static_cast<double>(released - held) / 1000.0);
    EXPECT_LE(search_thread.search_elapsed, static_cast<double>(clock_ms() - before) / 1000.0);
}

TEST_F(SearchThreadTest, AModeWithoutAnEngineIsReported) {
    const std::pair<int32_t, std::string> told[] = {
        {TWO_PLAYERS_MODE, "start_search() called in TWO_PLAYERS_MODE"},
        {SETUP_MODE, "start_search() called in SETUP_MODE"},
        {-1, "start_search() called and gui_mode is undefined"},
        {11, "start_search() called and gui_mode is undefined"},
        {INT32_MIN, "start_search() called and gui_mode is undefined"},
        {INT32_MAX, "start_search() called and gui_mode is undefined"},
    };
    for (const auto& [mode, text] : told) {
        clear_events();
        game.gui_mode = mode;
        start_search();
        EXPECT_EQ(events(), Events{"box Error: " + text});
        EXPECT_EQ(search_thread.searching, 0);
        EXPECT_EQ(script.searches, 0);
    }
    game.gui_mode = NORMAL_MODE;
}

TEST_F(SearchThreadTest, TheFlagsOfOneSearchFollowTheTable) {
    EXPECT_TRUE(search_thread.search_done_event.is_signalled());
    script.hold = true;
    start_search();
    wait_until_held();
    EXPECT_EQ(search_thread.searching, 1);
    EXPECT_EQ(search_thread.search_finished, 0);
    EXPECT_FALSE(search_thread.search_done_event.is_signalled());
    release_search();
    ASSERT_TRUE(wait_for_search());
    EXPECT_EQ(search_thread.searching, 0);
    EXPECT_EQ(search_thread.search_finished, 1);
    timer_tick();
    EXPECT_EQ(search_thread.search_finished, 0);
    EXPECT_TRUE(search_thread.search_done_event.is_signalled());
}

TEST_F(SearchThreadTest, TheAssertionsSeeABrokenPhase) {
    static int seen;
    seen = 0;
    phase_violation = [](const char*) { ++seen; };
    search_thread.search_finished = 1;
    search_thread.search_done_event.reset();
    search_thread.this_search_aborted = true;
    search_done(3);
    EXPECT_EQ(seen, 1) << "the event must be signalled";
    search_thread.search_done_event.signal();
    search_thread.searching = 1;
    search_thread.this_search_aborted = true;
    search_done(3);
    EXPECT_EQ(seen, 2) << "nothing may search";
    search_thread.searching = 0;
    search_thread.this_search_aborted = true;
    search_done(3);
    EXPECT_EQ(seen, 2);
    phase_violation = nullptr;
}

TEST_F(SearchThreadTest, TheSearchGetsACopyOfTheBoard) {
    set_position("B:W31,32,K46:B1,K2");
    script.hold = true;
    start_search();
    EXPECT_TRUE(same_pieces(search_thread.search_position, game.board));
    EXPECT_EQ(search_thread.search_side, BLACK);
    set_board(START_POSITION, WHITE);
    EXPECT_EQ(bit_count(search_thread.search_position.white), 3);
}

TEST_F(SearchThreadTest, StartingClearsWhatIsLeftOfTheLastSearch) {
    search_thread.pondering = 1;
    search_thread.this_search_aborted = true;
    search_thread.ponder_done = true;
    search_thread.stop_flag = 1;
    search_thread.search_finished = 1;
    script.hold = true;
    start_search();
    wait_until_held();
    EXPECT_EQ(search_thread.pondering, 0);
    EXPECT_FALSE(search_thread.this_search_aborted);
    EXPECT_FALSE(search_thread.ponder_done);
    EXPECT_EQ(search_thread.stop_flag, 0);
    EXPECT_EQ(search_thread.search_finished, 0);
}

TEST_F(SearchThreadTest, ARunningSearchIsNotDisturbedByAnother) {
    script.hold = true;
    start_search();
    wait_until_held();
    set_position("B:W31,32,K46:B1,K2");
    start_search();
    start_ponder_search();
    EXPECT_EQ(search_thread.search_side, WHITE);
    EXPECT_EQ(bit_count(search_thread.search_position.white), 20);
    EXPECT_EQ(script.searches, 1);
}

TEST_F(SearchThreadTest, TheEngineFollowsTheSettingsAtEachSearch) {
    script.hold = true;
    settings.book_mode = 2;
    settings.search_threads = 7;
    start_search();
    EXPECT_EQ(engine_settings.book_mode, 2);
    EXPECT_EQ(engine_settings.search_threads, 7);
    settings.search_threads = 3;
    EXPECT_EQ(engine_settings.search_threads, 7);
    discard_search();
    start_search();
    EXPECT_EQ(engine_settings.search_threads, 3);
}

TEST_F(SearchThreadTest, TheTableIsFittedToTheTime) {
    engine_settings.hash_size_mb = settings.hash_mb = 64;
    ASSERT_EQ(tt_allocate(), 0);
    transposition_table.age_ms.fill(100);
    transposition_table.age_count = 16;
    settings.time_per_move = 1;
    start_in(AUTOPLAY_MODE);
    const int32_t small = transposition_table.effective_mb;
    EXPECT_LT(small, 64);
    transposition_table.age_ms.fill(0.001);
    settings.time_per_move = 1000;
    script.predict = answer_with("31-27");
    settings.pondering_on = 1;
    game.gui_mode = NORMAL_MODE;
    start_ponder_search();
    EXPECT_EQ(search_thread.pondering, 1);
    discard_search();
    EXPECT_EQ(transposition_table.effective_mb, small) << "a ponder search leaves it";
    search_thread.search_finished = 0;
    start_in(NORMAL_MODE);
    EXPECT_EQ(transposition_table.effective_mb, 64);
}

TEST_F(SearchThreadTest, AMissingTableIsAllocated) {
    transposition_table = TranspositionTable{};
    start_search();
    ASSERT_TRUE(wait_for_search());
    EXPECT_NE(transposition_table.slots_start, nullptr);
    EXPECT_EQ(script.searches, 1);
}

TEST_F(SearchThreadTest, TheGameLineEndsAtTheSearchedPosition) {
    set_gui_mode(TWO_PLAYERS_MODE);
    set_position("W:WK47,35:BK4,6");
    play("47-42");
    play("4-9");
    play("42-47");
    set_gui_mode(NORMAL_MODE);
    script.hold = true;
    start_search();
    const std::vector<Position>& line = search_thread.game_line;
    ASSERT_EQ(line.size(), 4u);
    EXPECT_TRUE(same_pieces(line[0], game.board));
    EXPECT_EQ(line[0].side, BLACK);
    EXPECT_EQ(line[0].reversible_plies, 3);
    EXPECT_EQ(line[0].previous, &line[1]);
    EXPECT_EQ(line[3].previous, nullptr);
    EXPECT_EQ(search_state.game_line, &line[0]);
}

TEST_F(SearchThreadTest, APositionThatIsNotRecordedIsALineOfItsOwn) {
    set_gui_mode(TWO_PLAYERS_MODE);
    set_position("W:WK46,35:BK5,6");
    while (game.history_count < MAX_HISTORY) addto_game_history(game.board, game.board_side, 0);
    play("46-41");
    set_gui_mode(NORMAL_MODE);
    settings.pondering_on = 1;
    script.hold = true;
    start_search();
    ASSERT_EQ(search_thread.game_line.size(), 1u);
    EXPECT_TRUE(same_pieces(search_thread.game_line[0], game.board));
    const std::string board = fen_now();
    discard_search();
    search_thread.search_finished = 0;
    start_ponder_search();
    EXPECT_EQ(search_thread.pondering, 1);
    EXPECT_EQ(fen_now(), board) << "the board stays though the history is full";
    EXPECT_EQ(game.history_count, MAX_HISTORY);
    EXPECT_EQ(search_thread.game_line.size(), 1u);
}

TEST_F(SearchThreadTest, AThreadThatCannotBeMadeIsTold) {
    search_thread.running = false;
    search_thread.make_thread = [](void (*)()) { return false; };
    start_search_thread();
    EXPECT_EQ(events(), Events{"box Error: Cannot create search thread"});
    clear_events();
    play("32-28");
    EXPECT_EQ(search_thread.searching, 0);
    EXPECT_EQ(fen_now().substr(0, 2), "B:");
    new_game_command();
    search_button_command();
    timer_tick();
    EXPECT_EQ(search_thread.searching, 0) << "no search ever starts";
    play("32-28");
    EXPECT_TRUE(user_may_move()) << "nor does one wait";
    search_thread.make_thread = nullptr;
    search_thread.running = true;
}

TEST_F(SearchThreadTest, AWaitThatIsTooLongIsNoError) {
    search_thread.wait_limit_ms = 1;
    script.think = [](const Position&, int, const MoveList&) {
        while (script.value == 77) std::this_thread::yield();
        return 0;
    };
    script.value = 77;
    play("32-28");
    while (script.searches == 0) std::this_thread::yield();
    new_game_command();
    EXPECT_EQ(fen_now().substr(0, 2), "W:") << "the command goes on";
    EXPECT_EQ(search_thread.searching, 1);
    play("31-27");
    EXPECT_EQ(script.searches, 1) << "but nothing is started behind the search thread's back";
    script.value = 0;
    search_thread.wait_limit_ms = 300000;
    finish_search();
    EXPECT_EQ(entries(), 2) << "the old result is thrown away";
}
