// What follows from a user's move and from the end of a search, in every mode.
#include "control/game_flow.h"

#include "base/clock.h"
#include "control/game_clock.h"
#include "tests/control/game_fixture.h"

namespace {

int analysis_steps = 0;
int sent_moves = 0;
int send_answer = 0;
EngineMove sent;
std::vector<int> chat_calls;

int keep_sent_move(const EngineMove& move) {
    ++sent_moves;
    sent = move;
    return send_answer;
}

class GameFlow : public GameTest {
  protected:
    void SetUp() override {
        GameTest::SetUp();
        analysis_steps = 0;
        sent_moves = 0;
        send_answer = 0;
        sent = EngineMove{};
        chat_calls.clear();
        mode_hooks.analysis_step = [] { ++analysis_steps; };
        mode_hooks.dxp_send_move = keep_sent_move;
        mode_hooks.dxp_show_search_text = [](int running) { chat_calls.push_back(running); };
    }
    // The events of `search_done` alone, for a search of the board in the mode.
    static void search_in(int32_t mode) {
        game.gui_mode = mode;
        start_search();
        ASSERT_TRUE(wait_for_search());
        search_thread.search_finished = 0;
        clear_events();
    }
};

constexpr char DATABASE_TEXT[] =
    "box Error: Tessarin is not using an endgame database, but you have this Enabled in the Options Menu.  "
    "If you were expecting an endgame db to be used, then you should check your settings under the menu "
    "Options, Endgame db and hashtable. You may have the wrong \"Directory\" entered, or your machine may "
    "not have enough RAM for the Cache size and Hashtable size you entered.";

}  // namespace

// The user's move.

TEST_F(GameFlow, AMoveOfTwoPlayersIsShownAndRecorded) {
    set_gui_mode(TWO_PLAYERS_MODE);
    add_highlight(32);
    clear_events();
    play("32-28");
    const std::string fen = fen_now();
    EXPECT_EQ(events(),
              (Events{"side B", "game 0-8", "board " + fen + " [32]", "pause 150", "board " + fen + " []"}));
    EXPECT_EQ(game.history_count, 2);
    EXPECT_EQ(game.game_history[1].side, BLACK);
    EXPECT_EQ(game.game_history[1].setup_flag, 0);
    EXPECT_EQ(search_thread.searching, 0);
}

TEST_F(GameFlow, AMoveThatIsNotLegalChangesNothing) {
    const std::string fen = fen_now();
    EXPECT_EQ(make_user_move(-1), 1);
    EXPECT_EQ(make_user_move(9), 1);
    EXPECT_EQ(fen_now(), fen);
    EXPECT_TRUE(events().empty());
}

TEST_F(GameFlow, TheEngineAnswersInNormalMode) {
    script.think = answer_with("19-23");
    play("32-28");
    EXPECT_EQ(events_of("pause"), Events{"pause 150"});
    const std::string index = std::to_string(index_of_move("19-23"));
    ASSERT_TRUE(wait_for_search());
    clear_events();
    timer_tick();
    EXPECT_EQ(game.history_count, 3);
    EXPECT_EQ(game.board_side, WHITE);
    const std::string fen = fen_now();
    EXPECT_EQ(events(), (Events{"picture 8", "status book " + index, "side W", "game 10-15",
                                "board " + fen + " [19 23]", "pause 500", "board " + fen + " []"}));
}

TEST_F(GameFlow, AMoveDuringARealSearchStopsIt) {
    script.hold = true;
    start_search();
    wait_until_held();
    play("32-28");
    EXPECT_EQ(count_events("pause"), 0);
    EXPECT_EQ(search_thread.searching, 1);
    EXPECT_EQ(search_thread.search_side, BLACK);
    wait_until_held();
    EXPECT_EQ(script.searches, 2);
    release_search();
    finish_search();
    EXPECT_EQ(game.history_count, 3);
}

TEST_F(GameFlow, TheAnalysisFollowsTheUsersMoves) {
    for (const int32_t mode : {ANALYSIS_MODE, ANALYSIS_ALLSCORES_MODE}) {
        new_game();
        game.gui_mode = mode;
        script.hold = true;
        const int before = script.searches;
        play("32-28");
        wait_until_held();
        play("20-24");
        wait_until_held();
        EXPECT_EQ(script.searches, before + 2);
        EXPECT_TRUE(same_pieces(search_thread.search_position, game.board));
        EXPECT_EQ(count_events("pause 150"), 2);
        release_search();
        finish_search();
        EXPECT_EQ(game.history_count, 3) << "it plays nothing";
        clear_events();
    }
}

TEST_F(GameFlow, NoSearchFollowsAUsersMoveInOtherModes) {
    for (const int32_t mode : {1, 4, 5, 6, 7, 8, 9, 10}) {
        new_game();
        game.gui_mode = mode;
        play("32-28");
        EXPECT_EQ(script.searches, 0) << mode;
        EXPECT_EQ(count_events("box"), 0);
    }
    game.gui_mode = NORMAL_MODE;
}

TEST_F(GameFlow, TheUserMayMoveWhenTheEngineHasNotTheMove) {
    const std::string told = "11110100000";
    for (int32_t mode = 0; mode <= 10; ++mode) {
        game.gui_mode = mode;
        EXPECT_EQ(user_may_move(), told[static_cast<size_t>(mode)] == '1') << mode;
    }
    game.gui_mode = NORMAL_MODE;
    script.hold = true;
    start_search();
    EXPECT_FALSE(user_may_move());
    game.gui_mode = ANALYSIS_MODE;
    EXPECT_TRUE(user_may_move());
    game.gui_mode = NORMAL_MODE;
    search_thread.pondering = 1;
    EXPECT_TRUE(user_may_move());
    search_thread.pondering = 0;
    release_search();
    ASSERT_TRUE(wait_for_search());
    EXPECT_FALSE(user_may_move()) << "its move has not been seen";
    timer_tick();
    EXPECT_TRUE(user_may_move());
}

// The end of a search.

TEST_F(GameFlow, AnAbortedSearchIsThrownAway) {
    search_in(NORMAL_MODE);
    search_thread.this_search_aborted = true;
    search_done(3);
    EXPECT_FALSE(search_thread.this_search_aborted);
    EXPECT_EQ(game.history_count, 1);
    EXPECT_EQ(events(), Events{"picture 8"});
}

TEST_F(GameFlow, TheCallerOfSearchDoneChangesNothing) {
    Events first;
    for (const int caller : {3, 4, 1}) {
        new_game();
        reset_panes();
        search_in(NORMAL_MODE);
        search_done(caller);
        if (first.empty()) first = events();
        EXPECT_EQ(events(), first);
        EXPECT_EQ(game.history_count, 2);
    }
}

TEST_F(GameFlow, AFinishedAnalysisOnlyShowsItsText) {
    for (const int32_t mode : {ANALYSIS_MODE, ANALYSIS_ALLSCORES_MODE, SETUP_MODE}) {
        search_in(ANALYSIS_MODE);
        reset_panes();
        game.gui_mode = mode;
        search_done(3);
        EXPECT_EQ(events(), (Events{"picture 8", "status book 0"}));
        EXPECT_EQ(game.history_count, 1);
    }
    EXPECT_EQ(analysis_steps, 0);
    game.gui_mode = NORMAL_MODE;
}

TEST_F(GameFlow, TheAnalysisOfGamesGoesOnWithItsStep) {
    for (const int32_t mode : {7, 8, 9, 10}) {
        search_in(mode);
        search_done(3);
        EXPECT_EQ(analysis_steps, mode - 6);
        EXPECT_EQ(game.history_count, 1);
    }
    game.gui_mode = NORMAL_MODE;
}

TEST_F(GameFlow, APonderResultWaits) {
    search_in(NORMAL_MODE);
    search_thread.pondering = 1;
    search_done(3);
    EXPECT_TRUE(search_thread.ponder_done);
    EXPECT_TRUE(events().empty()) << "not even a text";
    EXPECT_EQ(game.history_count, 1);
}

TEST_F(GameFlow, TheSoundIsPlayedForRealSearches) {
    settings.sound_on = 1;
    search_in(ANALYSIS_MODE);
    search_done(3);
    EXPECT_EQ(events_of("sound"), Events{"sound start.wav"});
    clear_events();
    search_thread.pondering = 1;
    search_done(3);
    EXPECT_EQ(count_events("sound"), 0);
    search_thread.pondering = 0;
    search_thread.this_search_aborted = true;
    search_done(3);
    EXPECT_EQ(events_of("sound"), Events{"sound start.wav"}) << "an aborted search is heard";
    game.gui_mode = NORMAL_MODE;
}

TEST_F(GameFlow, AFailedDatabaseIsToldIfItIsEnabled) {
    static int32_t state;
    mode_hooks.egdb_state = [] { return state; };
    for (state = 0; state <= 6; ++state)
        for (const int enabled : {0, 1}) {
            settings.wld_enable = enabled;
            search_in(ANALYSIS_MODE);
            search_done(3);
            const bool told = state == EGDB_FAILED && enabled;
            EXPECT_EQ(events_of("box"), told ? Events{DATABASE_TEXT} : Events{});
        }
    game.gui_mode = NORMAL_MODE;
}

TEST_F(GameFlow, TheClockCountsMovesWhileItRuns) {
    search_in(NORMAL_MODE);
    clock_state.clock_running = false;
    search_done(3);
    EXPECT_EQ(clock_state.clock_moves, 0);
    search_in(NORMAL_MODE);
    ASSERT_TRUE(clock_state.clock_running);
    clock_state.user_lap_start = -1;
    search_done(3);
    EXPECT_EQ(clock_state.clock_moves, 1);
    EXPECT_GE(clock_state.user_lap_start, 0) << "the lap begins anew";
}

TEST_F(GameFlow, TheResultIsJudgedForTheSearchedSide) {
    script.value = 3999;
    search_in(NORMAL_MODE);
    search_done(3);
    EXPECT_EQ(game.game_result_code, GAME_LOSS) << "white searched and black wins";
    script.value = 12;
    search_in(NORMAL_MODE);
    search_done(3);
    EXPECT_EQ(game.game_result_code, GAME_GOES_ON);
}

TEST_F(GameFlow, ACaptureIsMarkedByItsEnds) {
    set_position("W:W28,40:B22,12,1");
    search_in(NORMAL_MODE);
    search_done(3);
    EXPECT_EQ(events_of("board")[0], "board B:W8,40:B1 [28 8]");
}

TEST_F(GameFlow, ARoundTripOfAKingIsAMove) {
    set_position("W:WK47,50:B38,29,18,22,32");
    search_in(NORMAL_MODE);
    MoveList list;
    CaptureLines lines;
    generate_capture_lines(game.board, list, WHITE, lines);
    for (int i = 0; i < list.count; ++i) {
        search_thread.search_result = list[i];
        const std::string before = fen_now();
        search_done(3);
        EXPECT_EQ(game.board_side, BLACK) << before;
        back_command();
        search_thread.search_finished = 0;
        search_thread.this_search_aborted = false;
        ASSERT_EQ(fen_now(), before);
    }
}

TEST_F(GameFlow, ACaptureThatMatchesNothingIsTold) {
    set_position("W:W28,40:B22,12,1");
    search_in(NORMAL_MODE);
    search_thread.search_result.king = mask_of_square[7];
    search_done(3);
    EXPECT_EQ(events_of("box"), Events{"box Error: Cannot match moves on return from search."});
    EXPECT_EQ(events_of("board")[0], "board B:WK8,40:B1 [28 8]") << "marked as the first capture";
}

TEST_F(GameFlow, AResultThatAMoveHasOvertakenIsDropped) {
    search_in(NORMAL_MODE);
    game.gui_mode = TWO_PLAYERS_MODE;
    play("31-27");
    const std::string fen = fen_now();
    search_done(3);
    EXPECT_EQ(fen_now(), fen);
    EXPECT_EQ(game.history_count, 2);
    game.gui_mode = NORMAL_MODE;
}

TEST_F(GameFlow, AResultForTheOtherSideIsDropped) {
    start_search();
    ASSERT_TRUE(wait_for_search());
    change_side_command();
    ASSERT_EQ(game.board_side, BLACK);
    const std::string fen = fen_now();
    timer_tick();
    EXPECT_EQ(fen_now(), fen);
    EXPECT_EQ(game.history_last, 1);
}

TEST_F(GameFlow, AStoppedSearchIsPlayedInTwoPlayersModeToo) {
    script.hold = true;
    start_search();
    wait_until_held();
    two_players_command();
    timer_tick();
    EXPECT_EQ(game.history_count, 2);
    EXPECT_EQ(game.gui_mode, TWO_PLAYERS_MODE);
}

TEST_F(GameFlow, WithoutAMoveNothingIsPlayed) {
    script.think = search_really;
    set_position("B:W31,K3:B");
    const std::string lost = fen_now();
    start_search();
    finish_search();
    EXPECT_EQ(fen_now(), lost);
    EXPECT_EQ(game.history_count, 1);
    EXPECT_EQ(events_of("status").back(), "status no moves");
    EXPECT_EQ(game.game_result_code, GAME_LOSS);
}

TEST_F(GameFlow, AnIllegalPositionIsSearchedInVain) {
    script.think = search_really;
    set_position("W:W1,31:B20");
    const std::string fen = fen_now();
    for (const int32_t mode : {NORMAL_MODE, ANALYSIS_MODE}) {
        reset_panes();
        clear_events();
        game.gui_mode = mode;
        start_search();
        finish_search();
        EXPECT_EQ(events_of("status"), Events{"status Illegal position"});
        EXPECT_EQ(fen_now(), fen);
        EXPECT_EQ(game.history_count, 1);
    }
    autoplay_command();
    finish_search();
    EXPECT_EQ(game.gui_mode, NORMAL_MODE) << "a game of the engine with itself cannot go on";
}

// DXP_MODE.

TEST_F(GameFlow, AMatchSendsItsMoveWithoutAPause) {
    settings.pondering_on = 1;
    search_in(DXP_MODE);
    script.hold = true;
    search_done(3);
    EXPECT_EQ(sent_moves, 1);
    EXPECT_EQ(sent.from, 31);
    EXPECT_EQ(sent.to, 27);
    EXPECT_EQ(sent.jumps, 0);
    EXPECT_EQ(sent.lines, nullptr);
    EXPECT_EQ(sent.side, WHITE);
    EXPECT_EQ(count_events("pause"), 0);
    EXPECT_EQ(search_thread.pondering, 1);
    for (const std::string& event : events_of("board")) EXPECT_TRUE(event.ends_with(" []")) << event;
}

TEST_F(GameFlow, AMatchThatEndsPondersNoMore) {
    settings.pondering_on = 1;
    send_answer = 1;
    search_in(DXP_MODE);
    search_done(3);
    EXPECT_EQ(sent_moves, 1);
    EXPECT_EQ(search_thread.pondering, 0);
    EXPECT_EQ(search_thread.searching, 0);
}

TEST_F(GameFlow, ACaptureIsSentWithItsPath) {
    static int captured;
    mode_hooks.dxp_send_move = [](const EngineMove& move) {
        captured = bit_count(captured_at((*move.lines)[static_cast<size_t>(move.index)], 0, move.side)) +
                   bit_count(captured_at((*move.lines)[static_cast<size_t>(move.index)], 1, move.side));
        return keep_sent_move(move);
    };
    set_position("W:W28,40:B22,12,1");
    search_in(DXP_MODE);
    search_done(3);
    EXPECT_EQ(sent.from, 28);
    EXPECT_EQ(sent.to, 8);
    EXPECT_EQ(sent.jumps, 2);
    EXPECT_EQ(captured, 2);
}

TEST_F(GameFlow, ALostPositionIsToldToTheOtherSide) {
    settings.pondering_on = 1;
    script.think = search_really;
    set_position("B:W31,K3:B");
    search_in(DXP_MODE);
    search_done(3);
    EXPECT_EQ(sent_moves, 1);
    EXPECT_EQ(game.game_result_code, GAME_LOSS);
    EXPECT_EQ(game.history_count, 1) << "no move is recorded";
    EXPECT_EQ(search_thread.searching, 0);
}

TEST_F(GameFlow, TheSearchTextIsOfferedToTheOtherSide) {
    game.gui_mode = DXP_MODE;
    script.hold = true;
    start_search();
    wait_until_held();
    timer_tick();
    timer_tick();
    EXPECT_EQ(chat_calls, (std::vector<int>{1, 1}));
    release_search();
    finish_search();
    EXPECT_EQ(chat_calls, (std::vector<int>{1, 1, 0}));
    timer_tick();
    EXPECT_EQ(chat_calls.size(), 3u);
    chat_calls.clear();
    game.gui_mode = NORMAL_MODE;
    settings.pondering_on = 1;
    start_ponder_search();
    timer_tick();
    finish_search();
    EXPECT_TRUE(chat_calls.empty()) << "never for a ponder search";
}

// AUTOPLAY_MODE.

TEST_F(GameFlow, AutoplayGoesOnByItself) {
    autoplay_command();
    for (int count = 2; count <= 6; ++count) {
        finish_search();
        EXPECT_EQ(game.history_count, count);
        EXPECT_EQ(search_thread.searching + search_thread.search_finished, 1);
        EXPECT_EQ(search_thread.pondering, 0);
    }
}

TEST_F(GameFlow, AutoplayEndsWhenASideHasNoMove) {
    set_position("W:W28,40:B22");
    autoplay_command();
    finish_search();
    EXPECT_EQ(game.gui_mode, NORMAL_MODE);
    EXPECT_EQ(events_of("status").back(), "status Game over");
    EXPECT_EQ(events_of("menu").back(), "menu 1010 40053");
    EXPECT_EQ(search_thread.searching, 0);
}

TEST_F(GameFlow, AutoplayOfAFinishedGameEndsAtOnce) {
    set_position("W:W:B22");
    autoplay_command();
    finish_search();
    EXPECT_EQ(game.gui_mode, NORMAL_MODE);
    EXPECT_EQ(events_of("status").back(), "status Game over");
    EXPECT_EQ(game.history_count, 1);
}

TEST_F(GameFlow, AutoplayDeclaresADrawWithSixPieces) {
    set_position("W:WK46,K47,K48:BK1,K2,K3");
    game.draw_counter = 5;
    script.value = 1;
    autoplay_command();
    finish_search();
    EXPECT_EQ(game.game_result_code, GAME_DRAW);
    EXPECT_EQ(game.gui_mode, NORMAL_MODE);
    EXPECT_EQ(events_of("status").back(), "status Draw declared");
}

TEST_F(GameFlow, AutoplayGoesOnInADrawWithSevenPiecesAndMore) {
    for (const char* fen : {"W:WK46,K47,K48:BK1,K2,K3,4", "W:W31-38:B11-18"}) {
        set_position(fen);
        const int pieces = bit_count(game.board.black | game.board.white);
        script.value = 1;
        autoplay_command();
        game.draw_counter = 5;
        finish_search();
        EXPECT_EQ(game.game_result_code, GAME_DRAW) << pieces;
        EXPECT_EQ(game.gui_mode, AUTOPLAY_MODE);
        script.value = 100;
        finish_search();
        finish_search();
        EXPECT_EQ(game.game_result_code, GAME_GOES_ON) << "computed afresh at each move";
        discard_search();
        timer_tick();
        game.gui_mode = NORMAL_MODE;
    }
}

TEST_F(GameFlow, WithFewerThanTwoPiecesMissingTheDrawNeedsItsCode) {
    set_position("W:WK46,K47,K48:BK1,K2,K3");
    script.value = 1;
    autoplay_command();
    for (int i = 0; i < 5; ++i) {
        finish_search();
        EXPECT_EQ(game.gui_mode, AUTOPLAY_MODE);
    }
    finish_search();
    EXPECT_EQ(game.gui_mode, NORMAL_MODE) << "the sixth drawish value";
}

TEST_F(GameFlow, AMessageBoxThatLetsTheTimerRunPlaysNothingTwice) {
    settings.wld_enable = 1;
    mode_hooks.egdb_state = [] { return int32_t{EGDB_FAILED}; };
    in_message_box = [] {
        for (int i = 0; i < 10; ++i) timer_tick();
    };
    play("32-28");
    finish_search();
    EXPECT_EQ(game.history_count, 3);
    EXPECT_EQ(count_events("box"), 1);
}

TEST_F(GameFlow, AMessageBoxThatLetsAnotherSearchBeginForgetsTheResult) {
    settings.wld_enable = 1;
    mode_hooks.egdb_state = [] { return int32_t{EGDB_FAILED}; };
    play("32-28");
    ASSERT_TRUE(wait_for_search());
    in_message_box = [] {
        settings.wld_enable = 0;
        new_game();
        script.hold = true;
        start_search();
    };
    timer_tick();
    EXPECT_EQ(game.history_count, 1);
    EXPECT_TRUE(search_thread.searching) << "the other search goes on";
    release_search();
    finish_search();
    EXPECT_EQ(game.history_count, 2) << "and its result is played";
}
