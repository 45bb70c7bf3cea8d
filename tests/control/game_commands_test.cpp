// Every command in every mode: whether it acts, and what it does.
#include "control/game_commands.h"

#include "base/clock.h"
#include "control/game_clock.h"
#include "control/time_control.h"
#include "tests/control/game_fixture.h"

namespace {

class GameCommands : public GameTest {
  protected:
    // A game of some moves in the mode, with a marked square and nothing that runs.
    static void prepare(int32_t mode) {
        set_gui_mode(TWO_PLAYERS_MODE);
        new_game();
        play("32-28");
        play("19-23");
        play("28x19");
        back_command();
        search_thread.this_search_aborted = false;
        search_thread.stop_flag = 0;
        reset_clock_state();
        game.gui_mode = mode;
        add_highlight(5);
        reset_panes();
        script.searches = 0;
        clear_events();
    }
    static void hold_real_search() {
        script.hold = true;
        start_search();
        wait_until_held();
        clear_events();
    }
    static void end_searches() {
        script.hold = false;
        discard_search();
        ASSERT_TRUE(wait_for_search());
        search_thread.search_finished = 0;
        search_thread.this_search_aborted = false;
        search_thread.pondering = 0;
    }
    static bool stopped_a_search() { return search_thread.stop_flag != 0; }
};

bool has_engine(int32_t mode) { return mode != TWO_PLAYERS_MODE && mode != SETUP_MODE; }

}  // namespace

TEST_F(GameCommands, NothingActsInDxpModeThatMustNot) {
    for (const int32_t id :
         {COMMAND_NEW_GAME, COMMAND_BACK_TO_START, COMMAND_BACK, COMMAND_FORWARD, COMMAND_FORWARD_TO_END,
          COMMAND_CHANGE_SIDE, COMMAND_SETUP, COMMAND_CLEAR_BOARD, COMMAND_PASTE, COMMAND_NORMAL,
          COMMAND_ANALYSIS, COMMAND_ANALYSIS_ALLSCORES, COMMAND_TWO_PLAYERS, COMMAND_AUTOPLAY}) {
        SCOPED_TRACE(id);
        prepare(DXP_MODE);
        hold_real_search();
        clipboard = "W:W31:B20";
        const std::string fen = fen_now();
        clear_events();
        EXPECT_TRUE(run_game_command(id));
        EXPECT_EQ(game.gui_mode, DXP_MODE);
        EXPECT_EQ(fen_now(), fen);
        EXPECT_EQ(game.history_count, 3);
        EXPECT_EQ(game.highlight_count, 1);
        EXPECT_FALSE(stopped_a_search());
        EXPECT_TRUE(events().empty());
        end_searches();
    }
    const double time = settings.time_per_move;
    prepare(DXP_MODE);
    EXPECT_TRUE(run_game_command(40020));
    EXPECT_EQ(settings.time_per_move, time);
}

TEST_F(GameCommands, UnknownIdsAreNone) {
    for (const int32_t id : {0, -1, 40005, 40080, 40110, 40028}) EXPECT_FALSE(run_game_command(id)) << id;
    EXPECT_TRUE(events().empty());
}

TEST_F(GameCommands, ANewGameStartsInAnyOtherMode) {
    for (int32_t mode = 0; mode <= 10; ++mode) {
        if (mode == DXP_MODE) continue;
        SCOPED_TRACE(mode);
        prepare(mode);
        if (has_engine(mode)) hold_real_search();
        clock_state.white_used = 5;
        new_game_command();
        EXPECT_EQ(game.gui_mode, mode);
        EXPECT_EQ(clock_state.white_used, 0.0);
        const std::string start = fen_now();
        EXPECT_EQ(game.history_last, 1);
        EXPECT_TRUE(search_thread.this_search_aborted);
        EXPECT_EQ(game.highlight_count, 0);
        EXPECT_EQ(events_of("status").back(), "status New game");
        EXPECT_EQ(events().back(), "board " + start + " []");
        timer_tick();
        EXPECT_EQ(game.history_count, 1) << "the search was thrown away";
        EXPECT_EQ(search_thread.searching, 0) << "nothing goes on by itself";
        end_searches();
    }
}

TEST_F(GameCommands, TheButtonHasARealSearchMoveNow) {
    for (const int32_t mode : {0, 2, 3, 4, 6, 7, 8, 9, 10}) {
        SCOPED_TRACE(mode);
        prepare(mode);
        hold_real_search();
        search_button_command();
        EXPECT_TRUE(stopped_a_search());
        EXPECT_FALSE(search_thread.this_search_aborted);
        EXPECT_EQ(game.highlight_count, 0);
        ASSERT_TRUE(wait_for_search());
        EXPECT_EQ(script.searches, 1);
        if (mode == NORMAL_MODE) {
            timer_tick();
            EXPECT_EQ(game.history_count, 4) << "its best move is played";
        }
        end_searches();
    }
}

TEST_F(GameCommands, TheButtonStartsASearchWhereNoneRuns) {
    for (int32_t mode = 0; mode <= 10; ++mode) {
        SCOPED_TRACE(mode);
        prepare(mode);
        script.hold = true;
        search_button_command();
        EXPECT_EQ(search_thread.searching, mode == 0 || mode == 2 || mode == 3 ? 1 : 0);
        EXPECT_EQ(game.highlight_count, 0);
        EXPECT_EQ(count_events("box"), 0);
        end_searches();
    }
}

TEST_F(GameCommands, TheButtonEndsAPonderSearchAndSearchesTheBoard) {
    prepare(NORMAL_MODE);
    settings.pondering_on = 1;
    script.hold = true;
    start_ponder_search();
    wait_until_held();
    const int count = game.history_count;
    EXPECT_EQ(game.history_last, count)
        << "Forward reaches neither the predicted position nor what it replaced";
    search_button_command();
    wait_until_held();
    EXPECT_EQ(search_thread.searching, 1);
    EXPECT_EQ(search_thread.pondering, 0);
    EXPECT_EQ(game.history_count, count);
    EXPECT_TRUE(same_pieces(search_thread.search_position, game.board));
}

TEST_F(GameCommands, SteppingIsOfTheFirstFourModes) {
    struct Row {
        int32_t id;
        int entry;
    };
    for (const Row row : {Row{COMMAND_BACK_TO_START, 1}, Row{COMMAND_BACK, 2}, Row{COMMAND_FORWARD, 4},
                          Row{COMMAND_FORWARD_TO_END, 4}})
        for (int32_t mode = 0; mode <= 10; ++mode) {
            SCOPED_TRACE(testing::Message() << row.id << " in " << mode);
            prepare(mode);
            if (has_engine(mode)) hold_real_search();
            search_thread.ponder_done = true;
            const std::string before = fen_now();
            clear_events();
            run_game_command(row.id);
            if (mode > 3) {
                EXPECT_EQ(game.history_count, 3);
                EXPECT_EQ(fen_now(), before);
                EXPECT_TRUE(events().empty());
                EXPECT_TRUE(search_thread.ponder_done);
                EXPECT_FALSE(stopped_a_search());
            } else {
                EXPECT_EQ(game.history_count, row.entry);
                EXPECT_EQ(game.history_last, 4);
                EXPECT_FALSE(search_thread.ponder_done);
                EXPECT_EQ(game.highlight_count, 0);
                EXPECT_EQ(count_events("game"), 1);
                const bool follows = mode == ANALYSIS_MODE || mode == ANALYSIS_ALLSCORES_MODE;
                EXPECT_EQ(search_thread.searching, follows ? 1 : 0);
                if (follows) {
                    EXPECT_TRUE(same_pieces(search_thread.search_position, game.board));
                }
                timer_tick();
                EXPECT_EQ(game.history_count, row.entry) << "the search was thrown away";
            }
            end_searches();
        }
}

TEST_F(GameCommands, SteppingBeyondTheEndsChangesNothing) {
    prepare(NORMAL_MODE);
    back_to_start_command();
    const std::string first = fen_now();
    clock_state.clock_running = true;
    clock_state.clock_moves = 5;
    for (const int side : {BLACK, WHITE}) {
        clock_state.clock_side = side;
        back_command();
        EXPECT_EQ(game.history_count, 1);
        EXPECT_EQ(fen_now(), first);
        EXPECT_EQ(clock_state.clock_moves, 5);
    }
    forward_to_end_command();
    const std::string last = fen_now();
    for (const int side : {BLACK, WHITE}) {
        clock_state.clock_side = side;
        forward_command();
        EXPECT_EQ(fen_now(), last);
        EXPECT_EQ(clock_state.clock_moves, 5);
    }
}

TEST_F(GameCommands, SteppingCorrectsTheCountOfMoves) {
    prepare(NORMAL_MODE);
    forward_to_end_command();
    ASSERT_EQ(game.board_side, BLACK);
    clock_state.clock_running = true;
    clock_state.clock_side = WHITE;
    clock_state.clock_moves = 2;
    back_command();
    EXPECT_EQ(clock_state.clock_moves, 1) << "white is again to move";
    back_command();
    EXPECT_EQ(clock_state.clock_moves, 1);
    back_command();
    EXPECT_EQ(clock_state.clock_moves, 0);
    forward_command();
    EXPECT_EQ(clock_state.clock_moves, 1);
    back_to_start_command();
    EXPECT_EQ(clock_state.clock_moves, 1) << "only single steps count";
    clock_state.clock_moves = 0;
    forward_command();
    clock_state.clock_moves = 0;
    back_command();
    EXPECT_EQ(clock_state.clock_moves, 0) << "never below 0";
    clock_state.clock_running = false;
    forward_command();
    EXPECT_EQ(clock_state.clock_moves, 0);
}

TEST_F(GameCommands, ANewMoveOverwritesTheForwardEntries) {
    prepare(TWO_PLAYERS_MODE);
    back_command();
    back_command();
    EXPECT_EQ(game.history_last, 4);
    play("34-30");
    EXPECT_EQ(game.history_last, 2);
    const std::string fen = fen_now();
    forward_command();
    EXPECT_EQ(fen_now(), fen);
    EXPECT_EQ(game.history_count, 2);
}

TEST_F(GameCommands, TheSideToMoveChangesWhileNothingSearches) {
    for (int32_t mode = 0; mode <= 10; ++mode) {
        if (mode == DXP_MODE) continue;
        SCOPED_TRACE(mode);
        prepare(mode);
        search_thread.ponder_done = true;
        const int side = game.board_side;
        change_side_command();
        EXPECT_EQ(game.board_side, side ^ 1);
        EXPECT_EQ(game.history_last, 1);
        EXPECT_EQ(game.game_history[0].side, side ^ 1);
        EXPECT_EQ(game.game_history[0].setup_flag, 1);
        EXPECT_FALSE(search_thread.ponder_done);
        EXPECT_EQ(count_events("game"), 1);
        if (!has_engine(mode)) continue;
        hold_real_search();
        change_side_command();
        EXPECT_EQ(game.board_side, side ^ 1) << "not during a search";
        end_searches();
    }
}

TEST_F(GameCommands, MarksGoFromTheBoardWhereThereIsNoStep) {
    prepare(TWO_PLAYERS_MODE);
    forward_command();
    add_highlight(5);
    clear_events();
    forward_command();
    EXPECT_EQ(events_of("board"), Events{"board " + fen_now() + " []"});
    clear_events();
    forward_command();
    EXPECT_EQ(count_events("board"), 0) << "nothing is left to take away";
}

TEST_F(GameCommands, SetupIsEnteredAndLeft) {
    for (int32_t mode = 0; mode <= 10; ++mode) {
        if (mode == DXP_MODE || mode == SETUP_MODE) continue;
        SCOPED_TRACE(mode);
        prepare(mode);
        if (has_engine(mode)) hold_real_search();
        setup_command();
        EXPECT_EQ(game.gui_mode, SETUP_MODE);
        EXPECT_EQ(game.history_last, 1);
        EXPECT_EQ(game.highlight_count, 0);
        EXPECT_EQ(search_thread.this_search_aborted, is_analyze_mode(mode));
        EXPECT_EQ(search_thread.searching, 0);
        const std::string fen = fen_now();
        timer_tick();
        EXPECT_EQ(fen_now(), fen) << "the stopped search plays nothing in this mode";
        int side = WHITE;
        const Position edited = position_from("W:WK3:BK48", side);
        game.board = edited;
        add_highlight(7);
        setup_command();
        EXPECT_EQ(game.gui_mode, NORMAL_MODE);
        EXPECT_EQ(game.highlight_count, 0);
        EXPECT_EQ(game.history_last, 1);
        EXPECT_TRUE(same_pieces(game.game_history[0].position, edited));
        EXPECT_EQ(game.game_history[0].setup_flag, 1);
        end_searches();
    }
}

TEST_F(GameCommands, TheBoardIsClearedForSetup) {
    for (int32_t mode = 0; mode <= 10; ++mode) {
        if (mode == DXP_MODE) continue;
        SCOPED_TRACE(mode);
        prepare(mode);
        if (has_engine(mode)) hold_real_search();
        const int side = mode % 2;
        game.board_side = side;
        clear_board_command();
        EXPECT_EQ(game.gui_mode, SETUP_MODE);
        EXPECT_EQ(game.board.black | game.board.white | game.board.king, 0u);
        EXPECT_EQ(game.board_side, side);
        EXPECT_EQ(game.history_last, 1);
        EXPECT_TRUE(same_pieces(game.game_history[0].position, Position{})) << "what is saved and copied";
        EXPECT_EQ(game.game_history[0].setup_flag, 1);
        EXPECT_EQ(game.highlight_count, 0);
        EXPECT_TRUE(search_thread.this_search_aborted);
        EXPECT_EQ(events().back(), std::string("board ") + (side == WHITE ? "W" : "B") + ":W:B []");
        end_searches();
    }
}

TEST_F(GameCommands, APositionIsPasted) {
    for (int32_t mode = 0; mode <= 10; ++mode) {
        if (mode == DXP_MODE) continue;
        SCOPED_TRACE(mode);
        prepare(mode);
        if (has_engine(mode)) hold_real_search();
        clock_state.black_used = 3;
        std::snprintf(game.headers.event.data(), game.headers.event.size(), "old event");
        clipboard = "b:w31,k32:b1";
        paste_command();
        EXPECT_EQ(fen_now(), "B:W31,K32:B1");
        EXPECT_EQ(game.gui_mode, mode);
        EXPECT_EQ(game.history_last, 1);
        EXPECT_EQ(game.game_history[0].side, BLACK);
        EXPECT_EQ(game.game_history[0].setup_flag, 1);
        EXPECT_STREQ(game.headers.event.data(), "old event");
        EXPECT_EQ(clock_state.black_used, 0.0);
        EXPECT_EQ(game.highlight_count, 0);
        EXPECT_EQ(events().back(), "board B:W31,K32:B1 []");
        timer_tick();
        EXPECT_EQ(game.history_last, 1);
        end_searches();
    }
}

TEST_F(GameCommands, AGameIsPastedWithoutItsHeaders) {
    prepare(NORMAL_MODE);
    std::snprintf(game.headers.event.data(), game.headers.event.size(), "old event");
    clipboard = "[Event \"new\"]\n1. 32-28 19-23 2. 28x19 14x23 *\n[Event \"second\"] 1. 31-27 *";
    paste_command();
    EXPECT_EQ(game.history_count, 5);
    EXPECT_EQ(game.history_last, 5);
    EXPECT_EQ(game.board_side, WHITE);
    EXPECT_STREQ(game.headers.event.data(), "old event");
    EXPECT_TRUE(same_pieces(game.board, game.game_history[4].position));
    EXPECT_EQ(drawn_game_text, "1. 32-28  19-23  \n2. 28x19  14x23\n");
}

TEST_F(GameCommands, PastedGamesKeepTheirPeculiarities) {
    prepare(NORMAL_MODE);
    clipboard = "[Event \"none\"]";
    paste_command();
    EXPECT_TRUE(same_pieces(game.board, START_POSITION));
    EXPECT_EQ(game.history_count, 1);
    clipboard = "1. 32-28 1-50 2. 31-27";
    paste_command();
    EXPECT_EQ(game.history_count, 3) << "the position before a broken move stands there twice";
    EXPECT_TRUE(same_pieces(game.game_history[1].position, game.game_history[2].position));
    clipboard = "1. 32-28 /FEN \"B:W31,32:B11,12\"/ 12-17 *";
    paste_command();
    EXPECT_EQ(game.history_count, 4);
    EXPECT_EQ(game.game_history[2].setup_flag, 1);
    EXPECT_EQ(fen_now(), "W:W31,32:B11,17");
}

TEST_F(GameCommands, WhatIsNeitherGameNorPositionChangesNothing) {
    prepare(NORMAL_MODE);
    const std::string fen = fen_now();
    for (const char* text : {"", "   ", "*", "1-0"}) {
        clipboard = text;
        paste_command();
        EXPECT_EQ(fen_now(), fen) << text;
        EXPECT_EQ(game.history_last, 4) << text;
    }
    clipboard_empty = true;
    paste_command();
    EXPECT_EQ(fen_now(), fen);
    EXPECT_EQ(game.history_last, 4);
}

TEST_F(GameCommands, ALongPastedGameIsCutAtTheLimitOfTheHistory) {
    std::string text = "[FEN \"W:WK46,35:BK15,6\"] ";
    std::string moves[] = {"46-41 ", "15-20 ", "41-46 ", "20-15 "};
    for (const int plies : {798, 799, 800, 803}) {
        clipboard = text;
        for (int i = 0; i < plies; ++i) clipboard += moves[i % 4];
        paste_command();
        EXPECT_EQ(game.history_count, std::min(plies + 1, 800)) << plies;
        EXPECT_EQ(game.board_side, plies % 2 ? BLACK : WHITE) << "the board has all its moves";
    }
}

TEST_F(GameCommands, ACopiedPositionComesBackByPaste) {
    for (const char* fen : {"W:W31,32,K46:B1,K2", "B:W:BK50", "W:W31-50:B1-20", "B:W:B"}) {
        set_position(fen);
        const std::string before = fen_now();
        copy_position_command();
        EXPECT_EQ(clipboard, "[FEN \"" + before + "\"]\r\n*\r\n");
        EXPECT_EQ(events_of("box").back(), "box Position to clipboard: " + clipboard);
        new_game();
        paste_command();
        EXPECT_EQ(fen_now(), before);
    }
}

TEST_F(GameCommands, ACopiedGameComesBackByPaste) {
    prepare(TWO_PLAYERS_MODE);
    copy_game_command();
    EXPECT_EQ(events_of("box").back(), "box Game to clipboard: " + clipboard);
    EXPECT_NE(clipboard.find("1. 32-28 19-23 2. 28x19 *\r\n\r\n"), std::string::npos) << clipboard;
    const std::string end = (forward_to_end_command(), fen_now());
    new_game();
    paste_command();
    EXPECT_EQ(fen_now(), end);
    EXPECT_EQ(game.history_last, 4);
    for (const int32_t mode : {DXP_MODE, ANALYZE_PDN_MODE}) {
        prepare(mode);
        clear_events();
        copy_game_command();
        copy_position_command();
        EXPECT_EQ(count_events("clipboard"), 2) << "in any mode";
    }
}

TEST_F(GameCommands, ModesAreEnteredAfterAStop) {
    struct Row {
        int32_t id, mode;
    };
    for (const Row row :
         {Row{COMMAND_NORMAL, NORMAL_MODE}, Row{COMMAND_TWO_PLAYERS, TWO_PLAYERS_MODE},
          Row{COMMAND_ANALYSIS, ANALYSIS_MODE}, Row{COMMAND_ANALYSIS_ALLSCORES, ANALYSIS_ALLSCORES_MODE},
          Row{COMMAND_AUTOPLAY, AUTOPLAY_MODE}})
        for (int32_t mode = 0; mode <= 10; ++mode) {
            if (mode == DXP_MODE) continue;
            SCOPED_TRACE(testing::Message() << row.id << " in " << mode);
            prepare(mode);
            if (has_engine(mode)) hold_real_search();
            script.hold = true;
            const int before = script.searches;
            run_game_command(row.id);
            EXPECT_EQ(game.gui_mode, row.mode);
            const bool searches = row.mode >= ANALYSIS_MODE;
            EXPECT_EQ(search_thread.searching, searches);
            if (searches) wait_until_held();
            EXPECT_EQ(script.searches, before + searches);
            EXPECT_EQ(search_thread.this_search_aborted, is_analyze_mode(mode) && !searches);
            EXPECT_EQ(count_events("box"), 0);
            end_searches();
        }
}

TEST_F(GameCommands, AnalysisTakesTheGameClockAway) {
    for (const int32_t id : {COMMAND_ANALYSIS, COMMAND_ANALYSIS_ALLSCORES}) {
        prepare(NORMAL_MODE);
        set_time_control(TIME_GAME_CLOCK);
        clock_state.white_used = 7;
        clock_state.clock_running = true;
        script.hold = true;
        run_game_command(id);
        EXPECT_EQ(events_of("box"), Events{"box Info: Search time was changed from Game time to Infinite."});
        EXPECT_EQ(settings.time_menu_id, TIME_INFINITE);
        EXPECT_EQ(settings.use_game_clock, 0);
        EXPECT_EQ(search_thread.search_target_time, 1e6);
        EXPECT_EQ(clock_state.white_used, 0.0);
        EXPECT_FALSE(clock_state.clock_running);
        end_searches();
        run_game_command(id);
        EXPECT_EQ(count_events("box"), 1) << "once";
        end_searches();
    }
}

TEST_F(GameCommands, ANetworkGameThatBeginsInTheBoxOfTheAnalysisGoesOn) {
    prepare(NORMAL_MODE);
    set_time_control(TIME_GAME_CLOCK);
    in_message_box = [] {
        EXPECT_EQ(settings.time_menu_id, TIME_INFINITE) << "what the box tells is so";
        set_gui_mode(DXP_MODE);
        set_time_control(TIME_GAME_CLOCK);
    };
    run_game_command(COMMAND_ANALYSIS);
    EXPECT_EQ(game.gui_mode, DXP_MODE);
    EXPECT_EQ(settings.time_menu_id, TIME_GAME_CLOCK) << "its clock is not taken away";
    EXPECT_FALSE(search_thread.searching) << "and nothing is searched for the other side";
    prepare(NORMAL_MODE);
    set_time_control(TIME_GAME_CLOCK);
    in_message_box = [] {
        set_time_control(TIME_GAME_CLOCK);
        set_gui_mode(NORMAL_MODE);
    };
    run_game_command(COMMAND_ANALYSIS);
    EXPECT_EQ(settings.time_menu_id, TIME_GAME_CLOCK) << "nor when it has ended meanwhile";
    EXPECT_FALSE(search_thread.searching);
}

TEST_F(GameCommands, ACancelledAnalysisLeavesTheBoardAsItIs) {
    for (const int32_t mode : {7, 8, 9, 10}) {
        prepare(mode);
        hold_real_search();
        const std::string fen = fen_now();
        cancel_analyze_command();
        EXPECT_EQ(game.gui_mode, NORMAL_MODE);
        timer_tick();
        EXPECT_EQ(fen_now(), fen);
        EXPECT_EQ(game.history_count, 3);
        EXPECT_EQ(search_thread.searching, 0);
        end_searches();
    }
}

TEST_F(GameCommands, TheClockHasItsCommands) {
    for (int32_t mode = 0; mode <= 10; ++mode) {
        SCOPED_TRACE(mode);
        prepare(mode);
        const bool runs = mode == NORMAL_MODE || mode == DXP_MODE;
        run_game_command(COMMAND_CLOCK_START);
        EXPECT_EQ(clock_state.clock_running, runs);
        EXPECT_EQ(events_of("menu").back()[7], runs ? '0' : '1');
        clock_state.clock_side = BLACK;
        clock_state.user_lap_start -= 10000;
        run_game_command(COMMAND_CLOCK_STOP);
        EXPECT_FALSE(clock_state.clock_running);
        EXPECT_NEAR(clock_state.white_used, runs ? 10 : 0, 1);
        EXPECT_EQ(events_of("menu").back()[7], '1');
        run_game_command(COMMAND_CLOCK_RESET);
        EXPECT_EQ(clock_state.white_used, 0.0);
    }
}

TEST_F(GameCommands, TheClockStartsTheLapOfWhoThinks) {
    prepare(NORMAL_MODE);
    hold_real_search();
    clock_reset_command();
    clock_state.engine_lap_start = -5000;
    clock_start_command();
    EXPECT_GE(clock_state.engine_lap_start, 0);
    clock_state.engine_lap_start.fetch_sub(10000);
    clock_stop_command();
    EXPECT_NEAR(clock_used(clock_state.clock_side), 10, 1);
}

TEST_F(GameCommands, TimesAndPonderingAreChosen) {
    prepare(NORMAL_MODE);
    for (const TimeMenuRow& row : time_menu) {
        if (row.id == TIME_GAME_CLOCK) continue;
        EXPECT_TRUE(run_game_command(row.id));
        EXPECT_EQ(settings.time_menu_id, row.id);
        EXPECT_EQ(settings.time_per_move, row.seconds);
    }
    EXPECT_EQ(count_events("menu"), 16);
    settings.pondering_on = 0;
    run_game_command(COMMAND_PONDERING);
    EXPECT_EQ(settings.pondering_on, 1);
    run_game_command(COMMAND_PONDERING);
    EXPECT_EQ(settings.pondering_on, 0);
}
