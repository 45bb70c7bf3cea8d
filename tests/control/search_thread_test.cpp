// The hand-over to the search thread: what each mode's search is given, the flags, and pondering.
#include "control/search_thread.h"

#include <thread>

#include "base/clock.h"
#include "base/log.h"
#include "control/game_clock.h"
#include "control/time_control.h"
#include "egdb/engine_egdb.h"
#include "search/engine_settings.h"
#include "search/search_state.h"
#include "search/table.h"
#include "tests/control/game_fixture.h"

namespace {

std::string log_lines;

class SearchThreadTest : public GameTest {
  protected:
    void SetUp() override {
        GameTest::SetUp();
        log_lines.clear();
    }
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
    // The engine has answered 32-28 with 20-25 and ponders on 31-27; the ponder search is held.
    static void ponder_on_31_27() {
        settings.pondering_on = 1;
        script.think = answer_with("20-25");
        script.predict = answer_with("31-27");
        play("32-28");
        ASSERT_TRUE(wait_for_search());
        script.hold = true;
        timer_tick();
        wait_until_held();
        script.think = answer_with("14-20");
        ASSERT_EQ(search_thread.pondering, 1);
        ASSERT_EQ(search_thread.searching, 1);
        clear_events();
        log_lines.clear();
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
    settings.clock_minutes = 0.19 * 100 / 60;
    start_in(DXP_MODE);
    EXPECT_EQ(search_thread.search_flags, SEARCH_QUIET);
    settings.clock_minutes = 0.21 * 100 / 60;
    start_in(DXP_MODE);
    EXPECT_EQ(search_thread.search_flags, 0u);
    settings.time_per_move = 0.01;
    start_in(NORMAL_MODE);
    EXPECT_EQ(search_thread.search_flags, 0u);
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
    search_thread.wait_limit_ms = SEARCH_WAIT_MS;
    finish_search();
    EXPECT_EQ(entries(), 2) << "the old result is thrown away";
}

TEST_F(SearchThreadTest, PicturesFollowRealSearchesOnly) {
    ponder_on_31_27();
    EXPECT_EQ(count_events("picture"), 0);
    release_search();
    finish_search();
    EXPECT_EQ(count_events("picture"), 0);
    settings.pondering_on = 0;
    play("31-27");
    EXPECT_EQ(events_of("picture"), Events{"picture 8"});
    clear_events();
    script.hold = true;
    start_search();
    wait_until_held();
    EXPECT_EQ(events_of("picture"), Events{"picture 7"});
    release_search();
    ASSERT_TRUE(wait_for_search());
    EXPECT_EQ(events_of("picture"), (Events{"picture 7", "picture 8"}));
}

TEST_F(SearchThreadTest, TheEnginesLapIsChargedAndAPonderSearchIsNot) {
    clock_state.clock_running = true;
    clock_state.user_lap_start = clock_ms();
    settings.operator_time = 100;
    ponder_on_31_27();
    const double charged = clock_state.black_used;
    EXPECT_GE(charged, 100);
    release_search();
    finish_search();
    EXPECT_DOUBLE_EQ(clock_state.black_used, charged);
    EXPECT_EQ(clock_state.clock_moves, 1);
}

// Pondering.

TEST_F(SearchThreadTest, PonderingSearchesThePredictedPosition) {
    ponder_on_31_27();
    EXPECT_EQ(entries(), 3);
    EXPECT_EQ(game.history_last, 3) << "the predicted position is not in the game";
    EXPECT_EQ(game.board_side, WHITE);
    EXPECT_EQ(search_thread.search_side, BLACK);
    EXPECT_EQ(search_thread.search_position.white & mask_of_square[30], 0u);
    ASSERT_FALSE(search_thread.game_line.empty());
    EXPECT_TRUE(same_pieces(search_thread.game_line[0], search_thread.search_position));
    EXPECT_STREQ(search_thread.ponder_move_text, "31-27");
    script.hold = true;
    forward_command();
    EXPECT_EQ(entries(), 3);
}

TEST_F(SearchThreadTest, PonderingNeedsItsSettingAndItsMode) {
    script.hold = true;
    start_ponder_search();
    EXPECT_EQ(search_thread.searching, 0);
    settings.pondering_on = 1;
    for (const int32_t mode : {1, 2, 3, 4, 5, 7, 8, 9, 10}) {
        game.gui_mode = mode;
        start_ponder_search();
        EXPECT_EQ(search_thread.searching, 0) << mode;
    }
    for (const int32_t mode : {NORMAL_MODE, DXP_MODE}) {
        game.gui_mode = mode;
        start_ponder_search();
        EXPECT_EQ(search_thread.searching, 1) << mode;
        discard_search();
        search_thread.search_finished = 0;
    }
    game.gui_mode = NORMAL_MODE;
}

TEST_F(SearchThreadTest, PonderingHasTheTimeOfANormalSearch) {
    settings.pondering_on = 1;
    settings.time_per_move = 20;
    script.hold = true;
    start_ponder_search();
    expect_limits(20, 13, 8, 80);
    discard_search();
    search_thread.search_finished = 0;
    settings.use_game_clock = 1;
    settings.clock_minutes = 90;
    settings.clock_moves_limit = 75;
    clock_state.clock_moves = 80;
    start_ponder_search();
    EXPECT_DOUBLE_EQ(search_thread.search_target_time, 72);
}

TEST_F(SearchThreadTest, AHitWhileRunningGoesOnAsTheRealSearch) {
    ponder_on_31_27();
    clock_state.clock_side = WHITE;
    play("31-27");
    EXPECT_EQ(script.searches, 2) << "no further search";
    EXPECT_EQ(search_thread.searching, 1);
    EXPECT_EQ(search_thread.pondering, 0);
    EXPECT_EQ(clock_state.clock_side, BLACK);
    EXPECT_TRUE(clock_state.clock_running);
    EXPECT_EQ(events_of("picture"), Events{"picture 7"});
    EXPECT_EQ(count_events("pause"), 0);
    const int answered = index_of_move("14-20");
    const int64_t started = clock_state.engine_lap_start;
    EXPECT_LE(clock_ms() - started, 5000);
    release_search();
    finish_search();
    EXPECT_EQ(entries(), 5);
    EXPECT_EQ(events_of("picture").back(), "picture 8");
    EXPECT_EQ(events_of("status book"), Events{"status book " + std::to_string(answered)});
}

TEST_F(SearchThreadTest, AHitAfterTheEndUsesTheResultAtOnce) {
    ponder_on_31_27();
    release_search();
    finish_search();
    EXPECT_TRUE(search_thread.ponder_done);
    EXPECT_EQ(entries(), 3) << "it waits for the user's move";
    EXPECT_EQ(script.searches, 2);
    settings.pondering_on = 0;
    play("31-27");
    EXPECT_EQ(entries(), 5);
    EXPECT_EQ(game.board_side, WHITE);
    EXPECT_EQ(script.searches, 2);
    EXPECT_EQ(search_thread.searching, 0);
}

TEST_F(SearchThreadTest, AMissWhileRunningSearchesAnew) {
    ponder_on_31_27();
    script.think = first_move;
    play("34-30");
    EXPECT_EQ(search_thread.pondering, 0);
    EXPECT_EQ(search_thread.searching, 1);
    EXPECT_TRUE(same_pieces(search_thread.search_position, game.board));
    EXPECT_EQ(count_events("pause"), 0);
    settings.pondering_on = 0;
    release_search();
    finish_search();
    EXPECT_EQ(script.searches, 3);
    EXPECT_EQ(entries(), 5);
    EXPECT_FALSE(search_thread.ponder_done);
}

TEST_F(SearchThreadTest, AMissAfterTheEndSearchesAnew) {
    ponder_on_31_27();
    release_search();
    finish_search();
    ASSERT_TRUE(search_thread.ponder_done);
    settings.pondering_on = 0;
    script.think = first_move;
    play("34-30");
    EXPECT_FALSE(search_thread.ponder_done);
    finish_search();
    EXPECT_EQ(script.searches, 3);
    EXPECT_EQ(entries(), 5);
}

TEST_F(SearchThreadTest, AMoveBetweenTheEndAndTheTickSearchesAnew) {
    ponder_on_31_27();
    release_search();
    ASSERT_TRUE(wait_for_search());
    EXPECT_FALSE(search_thread.ponder_done);
    settings.pondering_on = 0;
    play("31-27");
    finish_search();
    EXPECT_EQ(script.searches, 3) << "the ponder result was dropped";
    EXPECT_EQ(entries(), 5);
}

TEST_F(SearchThreadTest, AMissedPonderSearchThatTheTimerSawIsForgotten) {
    ponder_on_31_27();
    stop_search();
    timer_tick();
    EXPECT_TRUE(search_thread.ponder_done);
    settings.pondering_on = 0;
    start_search();
    EXPECT_FALSE(search_thread.ponder_done);
}

TEST_F(SearchThreadTest, TheStopButtonDoesNotPlayAPonderSearch) {
    ponder_on_31_27();
    search_button_command();
    EXPECT_EQ(entries(), 3);
    EXPECT_EQ(search_thread.pondering, 0);
    EXPECT_EQ(search_thread.searching, 1);
    EXPECT_EQ(search_thread.search_side, WHITE) << "it searches the position on the board";
    wait_until_held();
    EXPECT_EQ(script.searches, 3);
}

TEST_F(SearchThreadTest, AResultThatACommandGaveUpIsNoAnswer) {
    ponder_on_31_27();
    release_search();
    finish_search();
    clear_events();
    copy_position_command();
    settings.pondering_on = 0;
    paste_command();
    EXPECT_TRUE(search_thread.ponder_done);
    play("31-27");
    finish_search();
    EXPECT_EQ(script.searches, 3);
    EXPECT_EQ(game.board_side, WHITE) << "the engine has answered";
}

TEST_F(SearchThreadTest, LeavingNormalModeGivesUpThePonderResult) {
    ponder_on_31_27();
    release_search();
    finish_search();
    ASSERT_TRUE(search_thread.ponder_done);
    two_players_command();
    EXPECT_FALSE(search_thread.ponder_done);
}

// The predicted reply.

TEST_F(SearchThreadTest, TheOnlyMoveIsThePredictedOne) {
    set_position("W:W46:B1,2");
    script.predict = search_really;
    Move reply{};
    ASSERT_TRUE(predict_reply(reply));
    EXPECT_EQ(reply.white, mask_of_square[40]);
    EXPECT_EQ(script.searches, 0);
}

TEST_F(SearchThreadTest, WithoutAMoveThereIsNoPrediction) {
    set_position("W:W:B1,2");
    Move reply{};
    EXPECT_FALSE(predict_reply(reply));
    settings.pondering_on = 1;
    start_ponder_search();
    EXPECT_EQ(search_thread.searching, 0);
    EXPECT_EQ(search_thread.pondering, 0);
}

TEST_F(SearchThreadTest, TheBookPredictsWhereItIsOn) {
    log_listener = [](const char* text) { log_lines += text; };
    script.predict = answer_with("35-30");
    Move reply{};
    ASSERT_TRUE(predict_reply(reply));
    const int index = index_of_move("35-30");
    EXPECT_EQ(log_lines, "Getting ponder pos: book " + std::to_string(index) + "\n");
    MoveList list;
    generate_moves(game.board, list, WHITE);
    EXPECT_EQ(reply, list[index]);
    settings.book_mode = 0;
    log_lines.clear();
    ASSERT_TRUE(predict_reply(reply));
    EXPECT_EQ(log_lines.find("Getting ponder pos"), std::string::npos);
    log_listener = nullptr;
}

TEST_F(SearchThreadTest, TheDistancesToConversionPredictNext) {
    log_listener = [](const char* text) { log_lines += text; };
    script.predict = search_really;
    egdb_engine.mtc_choose_move = [](const Position&, int, const MoveList&, int& best, int& mtc, char* text) {
        best = 3;
        mtc = 7;
        std::snprintf(text, SEARCH_TEXT_SIZE, "mtc 7");
        return 1;
    };
    Move reply{};
    ASSERT_TRUE(predict_reply(reply));
    MoveList list;
    generate_moves(game.board, list, WHITE);
    EXPECT_EQ(reply, list[3]);
    EXPECT_EQ(log_lines, "Getting ponder pos: mtc 7\n");
    log_listener = nullptr;
}

TEST_F(SearchThreadTest, ADeepTableEntryPredictsNext) {
    script.predict = search_really;
    log_listener = [](const char* text) { log_lines += text; };
    const PositionHash hash = position_hash(game.board, WHITE);
    MoveList list;
    generate_moves(game.board, list, WHITE);
    const auto store = [&](int depth_field, int index) {
        tt_clear();
        tt_store(hash.hash0, hash.hash1, 0, depth_field, BOUND_EXACT, index);
    };
    Move reply{};
    store(65, 5);
    ASSERT_TRUE(predict_reply(reply));
    EXPECT_EQ(reply, list[5]);
    EXPECT_EQ(log_lines, "") << "neither a line nor a search";
    store(64, 5);
    ASSERT_TRUE(predict_reply(reply));
    EXPECT_NE(log_lines, "") << "too shallow: searched";
    log_lines.clear();
    store(65, NO_MOVE_INDEX);
    ASSERT_TRUE(predict_reply(reply));
    EXPECT_NE(log_lines, "") << "no move: searched";
    log_lines.clear();
    store(65, list.count);
    ASSERT_TRUE(predict_reply(reply));
    EXPECT_NE(log_lines, "");
    log_listener = nullptr;
}

TEST_F(SearchThreadTest, AShortSearchPredictsLast) {
    script.predict = search_really;
    search_state.depth_limit = MAX_DEPTH;
    search_thread.stop_flag = 1;
    search_thread.shared_text.publish("the text of a search");
    const int64_t start = clock_ms();
    Move reply{};
    ASSERT_TRUE(predict_reply(reply));
    EXPECT_LT(clock_ms() - start, 5000);
    EXPECT_EQ(search_state.Mintime, 0.02);
    EXPECT_EQ(search_state.max_time, 0.02);
    EXPECT_EQ(search_state.step_time, 0.0);
    EXPECT_EQ(search_thread.stop_flag, 1) << "it has a flag of its own";
    EXPECT_STREQ(search_text(), "the text of a search") << "and a text";
    MoveList list;
    generate_moves(game.board, list, WHITE);
    EXPECT_GE(find_move(list, reply), 0);
}

TEST_F(SearchThreadTest, PonderingWithOneReplyRunsUntilTheMove) {
    settings.pondering_on = 1;
    set_position("W:W46:B1,2");
    script.hold = true;
    start_ponder_search();
    wait_until_held();
    timer_tick();
    EXPECT_EQ(search_thread.searching, 1);
    play("46-41");
    EXPECT_EQ(search_thread.pondering, 0);
    EXPECT_EQ(script.searches, 1);
}
