// Pondering: the search of the predicted position, hits and misses, and the prediction itself.
#include <thread>

#include "base/clock.h"
#include "base/log.h"
#include "control/game_clock.h"
#include "egdb/engine_egdb.h"
#include "search/engine_settings.h"
#include "search/search_state.h"
#include "search/table.h"
#include "tests/control/game_fixture.h"

namespace {

std::string log_lines;

class PonderTest : public GameTest {
  protected:
    void SetUp() override {
        GameTest::SetUp();
        log_lines.clear();
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

}  // namespace

TEST_F(PonderTest, PicturesFollowRealSearchesOnly) {
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

TEST_F(PonderTest, TheEnginesLapIsChargedAndAPonderSearchIsNot) {
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

// His lap ends with his move, also where no search is started.
TEST_F(PonderTest, TheUsersTimeIsChargedAtAPonderHit) {
    clock_state.clock_running = true;
    ponder_on_31_27();
    const double charged = clock_state.white_used;
    clock_state.user_lap_start = clock_ms() - 50000;
    play("31-27");
    EXPECT_EQ(search_thread.pondering, 0);
    EXPECT_NEAR(clock_state.white_used, charged + 50, 10);
    release_search();
    finish_search();
}

TEST_F(PonderTest, TheUsersTimeIsChargedWhenASearchIsStarted) {
    clock_state.clock_running = true;
    clock_state.user_lap_start = clock_ms() - 50000;
    script.hold = true;
    search_button_command();
    EXPECT_NEAR(clock_state.black_used, 50, 10) << "the engine has white";
}

TEST_F(PonderTest, TheUsersLapBeginsWhereADiscardedSearchEnds) {
    clock_state.clock_running = true;
    script.hold = true;
    search_button_command();
    wait_until_held();
    const int64_t long_ago = clock_ms() - 50000;
    clock_state.user_lap_start = long_ago;
    discard_search();
    EXPECT_GT(clock_state.user_lap_start, long_ago) << "what the engine used is not the user's";
    search_button_command();
    release_search();
    ASSERT_TRUE(wait_for_search());
    clock_state.user_lap_start = long_ago;
    discard_search();
    EXPECT_GT(clock_state.user_lap_start, long_ago) << "a search that had ended unseen";
    timer_tick();
    clock_state.user_lap_start = long_ago;
    discard_search();
    EXPECT_EQ(clock_state.user_lap_start, long_ago) << "no search";
    search_thread.this_search_aborted = false;
    ponder_on_31_27();
    clock_state.user_lap_start = long_ago;
    discard_search();
    EXPECT_EQ(clock_state.user_lap_start, long_ago) << "pondering took nothing from the engine";
}

TEST_F(PonderTest, AHitInAMatchLeavesTheSideOfTheClock) {
    settings.pondering_on = 1;
    for (const int32_t mode : {DXP_MODE, NORMAL_MODE}) {
        game.gui_mode = mode;
        script.hold = true;
        start_ponder_search();
        wait_until_held();
        clock_state.clock_side = BLACK;
        change_ponder_to_normal_search();
        EXPECT_EQ(clock_state.clock_side, mode == DXP_MODE ? BLACK : WHITE);
        EXPECT_TRUE(clock_state.clock_running);
        discard_search();
        search_thread.search_finished = 0;
    }
}

// Pondering.

TEST_F(PonderTest, PonderingSearchesThePredictedPosition) {
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

TEST_F(PonderTest, PonderingNeedsItsSettingAndItsMode) {
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

TEST_F(PonderTest, PonderingHasTheTimeOfANormalSearch) {
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

TEST_F(PonderTest, AHitWhileRunningGoesOnAsTheRealSearch) {
    ponder_on_31_27();
    clock_state.clock_side = WHITE;
    const int64_t before = clock_ms();
    clock_state.engine_lap_start = before - 500000;
    play("31-27");
    EXPECT_EQ(script.searches, 2) << "no further search";
    EXPECT_EQ(search_thread.searching, 1);
    EXPECT_EQ(search_thread.pondering, 0);
    EXPECT_EQ(clock_state.clock_side, BLACK);
    EXPECT_TRUE(clock_state.clock_running);
    EXPECT_EQ(events_of("picture"), Events{"picture 7"});
    EXPECT_EQ(count_events("pause"), 0);
    const int answered = index_of_move("14-20");
    EXPECT_GE(clock_state.engine_lap_start, before);
    release_search();
    finish_search();
    EXPECT_EQ(entries(), 5);
    EXPECT_EQ(events_of("picture").back(), "picture 8");
    EXPECT_EQ(events_of("status book"), Events{"status book " + std::to_string(answered)});
}

TEST_F(PonderTest, AHitAfterTheEndUsesTheResultAtOnce) {
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

TEST_F(PonderTest, AMissWhileRunningSearchesAnew) {
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

TEST_F(PonderTest, AMissAfterTheEndSearchesAnew) {
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

TEST_F(PonderTest, AMoveBetweenTheEndAndTheTickSearchesAnew) {
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

TEST_F(PonderTest, AMissedPonderSearchThatTheTimerSawIsForgotten) {
    ponder_on_31_27();
    stop_search();
    timer_tick();
    EXPECT_TRUE(search_thread.ponder_done);
    settings.pondering_on = 0;
    start_search();
    EXPECT_FALSE(search_thread.ponder_done);
}

TEST_F(PonderTest, TheStopButtonDoesNotPlayAPonderSearch) {
    ponder_on_31_27();
    search_button_command();
    EXPECT_EQ(entries(), 3);
    EXPECT_EQ(search_thread.pondering, 0);
    EXPECT_EQ(search_thread.searching, 1);
    EXPECT_EQ(search_thread.search_side, WHITE) << "it searches the position on the board";
    wait_until_held();
    EXPECT_EQ(script.searches, 3);
}

TEST_F(PonderTest, AResultThatACommandGaveUpIsNoAnswer) {
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

TEST_F(PonderTest, LeavingNormalModeGivesUpThePonderResult) {
    ponder_on_31_27();
    release_search();
    finish_search();
    ASSERT_TRUE(search_thread.ponder_done);
    two_players_command();
    EXPECT_FALSE(search_thread.ponder_done);
}

// The predicted reply.

TEST_F(PonderTest, TheOnlyMoveIsThePredictedOne) {
    set_position("W:W46:B1,2");
    script.predict = search_really;
    Move reply{};
    ASSERT_TRUE(predict_reply(reply));
    EXPECT_EQ(reply.white, mask_of_square[40]);
    EXPECT_EQ(script.searches, 0);
}

TEST_F(PonderTest, WithoutAMoveThereIsNoPrediction) {
    set_position("W:W:B1,2");
    Move reply{};
    EXPECT_FALSE(predict_reply(reply));
    settings.pondering_on = 1;
    start_ponder_search();
    EXPECT_EQ(search_thread.searching, 0);
    EXPECT_EQ(search_thread.pondering, 0);
}

TEST_F(PonderTest, TheBookPredictsWhereItIsOn) {
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

TEST_F(PonderTest, TheDistancesToConversionPredictNext) {
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

TEST_F(PonderTest, ADeepTableEntryPredictsNext) {
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

TEST_F(PonderTest, NothingIsPredictedWhileASearchRuns) {
    script.hold = true;
    start_search();
    wait_until_held();
    engine_settings.hash_size_mb = 7;
    bool asked = false;
    script.predict = [&asked](const Position&, int, const MoveList&) {
        asked = true;
        return 0;
    };
    Move reply{};
    EXPECT_FALSE(predict_reply(reply));
    EXPECT_FALSE(asked);
    EXPECT_EQ(engine_settings.hash_size_mb, 7) << "the engine's settings are those of the search";
    discard_search();
    timer_tick();
    EXPECT_TRUE(predict_reply(reply));
    EXPECT_TRUE(asked);
}

TEST_F(PonderTest, AShortSearchPredictsLast) {
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

TEST_F(PonderTest, PonderingWithOneReplyRunsUntilTheMove) {
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
