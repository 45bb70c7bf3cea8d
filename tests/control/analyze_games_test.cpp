#include "control/analyze_games.h"

#include "base/files.h"
#include "control/game_clock.h"
#include "control/time_control.h"
#include "tests/control/analyze_fixture.h"

TEST_F(AnalyzeGames, AGameOfOneMove) {
    load("32-28 *");
    analyze_game_command(false);
    EXPECT_EQ(game.gui_mode, ANALYZE_GAME_MODE);
    EXPECT_EQ(game.history_last, 1) << "the board goes back to where the game starts";
    run();
    EXPECT_EQ(searched_positions, 2);
    EXPECT_EQ(output(), std::string(NO_TAGS) + "1. 32-28 {book 0}\n         {book 0}\n*\n\n\n");
    EXPECT_EQ(game.gui_mode, NORMAL_MODE);
    EXPECT_EQ(answers.opened, std::vector<std::string>{folder + "analysis.txt"});
    expect_game(entries_of("32-28"));
    EXPECT_EQ(drawn_game_text, "1. 32-28");
    EXPECT_EQ(count_events("box"), 0);
    EXPECT_FALSE(search_thread.searching);
}

TEST_F(AnalyzeGames, EachStepIsShown) {
    load("32-28 19-23 *");
    analyze_game_command(false);
    const int boards = count_events("board");
    finish_search();
    EXPECT_EQ(game.history_count, 2);
    EXPECT_EQ(game.board_side, BLACK);
    EXPECT_EQ(events_of("side").back(), "side B");
    EXPECT_EQ(count_events("board"), boards + 1);
    EXPECT_EQ(drawn_game_text, "1. 32-28");
    EXPECT_EQ(events_of("status").back(), "status book 0");
    finish_search();
    EXPECT_EQ(drawn_game_text, "1. 32-28  19-23\n");
    EXPECT_EQ(file_size(folder + "analysis.txt"), -1) << "nothing is written before the game's end";
    run();
    EXPECT_GT(file_size(folder + "analysis.txt"), 0);
}

TEST_F(AnalyzeGames, CommentsStandBehindTheMovesThatWerePlayed) {
    script.think = [](const Position&, int, const MoveList& list) {
        return searched_positions++ % list.count;
    };
    load("[Event \"e\"][White \"w\"][Result \"1-0\"] 32-28 19-23 28x19 14x23 *");
    analyze_game_command(false);
    run();
    EXPECT_EQ(output(),
              "[Event \"e\"]\n[Date \"\"]\n[White \"w\"]\n[Black \"\"]\n[Result \"2-0\"]\n"
              "1. 32-28 {book 0}\n   19-23 {book 1}\n2. 28x19 {book 0}\n   14x23 {book 1}\n"
              "         {book 4}\n*\n\n\n");
}

TEST_F(AnalyzeGames, ASetPositionWithin) {
    load("32-28 /FEN \"W:W31:B1\"/ 31-27 /FEN \"B:W31:B1,2\"/ /FEN \"B:W31:B1,3\"/ 1-6 *");
    analyze_game_command(false);
    run();
    // The comment on the position before the set one stays with the move that led there; one set behind
    // another has nothing to stay with.
    EXPECT_EQ(output(),
              std::string(NO_TAGS) +
                  "1. 32-28 {book 0}\n         {book 0}\n/FEN \"W:W31:B1\"/\n"
                  "2. 31-27 {book 0}\n         {book 0}\n/FEN \"B:W31:B1,2\"/\n/FEN \"B:W31:B1,3\"/\n"
                  "         {book 0}\n   1-6 {book 0}\n       {book 0}\n*\n\n\n");
    EXPECT_EQ(searched_positions, 7);
    EXPECT_EQ(game.history_last, 7);
    EXPECT_EQ(game.game_history[2].setup_flag, 1);
    EXPECT_EQ(game.game_history[3].setup_flag, 0);
}

TEST_F(AnalyzeGames, ASetStartWithBlackFirst) {
    load("[FEN \"B:W31:B1\"] 1-6 31-27 *");
    analyze_game_command(false);
    EXPECT_EQ(game.game_history[0].setup_flag, 1);
    run();
    EXPECT_EQ(output(), std::string(NO_TAGS) +
                            "[FEN \"B:W31:B1\"]\n1. ...\n   1-6 {book 0}\n2. 31-27 {book 0}\n"
                            "         {book 0}\n*\n\n\n");
}

TEST_F(AnalyzeGames, TheLastPositionMayHaveNoMoves) {
    load("[FEN \"W:W32:B27\"] 32x21 *");
    analyze_game_command(false);
    run();
    EXPECT_EQ(searched_positions, 1);
    EXPECT_EQ(output(),
              std::string(NO_TAGS) + "[FEN \"W:W32:B27\"]\n1. 32x21 {book 0}\n         {no moves}\n*\n\n\n");
}

TEST_F(AnalyzeGames, AllGamesOfAFile) {
    analyze_pdn(
        "[Event \"a\"] {before} 1. 32-28 {was there} 19-23 1-0\r\n[Event \"b\"]\r\n*\r\n31-27 (x\r\ny) 0-1");
    EXPECT_EQ(answers.load_title, "Select PDN file to load");
    EXPECT_EQ(game.gui_mode, ANALYZE_PDN_MODE);
    EXPECT_EQ(pdn_game_count(analysis.analysis_games), 3);
    std::vector<std::string> outputs;
    while (is_analyze_mode(game.gui_mode)) {
        finish_search();
        if (outputs.empty() || outputs.back() != output()) outputs.push_back(output());
    }
    const std::string first =
        "[Event \"a\"]\n {before}\n1. 32-28 {book 0}\n         {was there}\n   19-23 {book 0}\n"
        "         {book 0}\n*\n\n\n";
    const std::string second = "[Event \"b\"]\n {book 0}\n*\n\n\n";
    const std::string third = "1. 31-27 {book 0}\n         (x\ny)\n         {book 0}\n*\n\n\n";
    EXPECT_EQ(outputs, (std::vector<std::string>{"", first, first + second, first + second + third}));
    EXPECT_EQ(answers.opened.size(), 1u);
    EXPECT_EQ(searched_positions, 3 + 1 + 2);
    expect_game(entries_of("31-27"));
}

TEST_F(AnalyzeGames, AGameThatBreaksEndsThere) {
    analyze_pdn("1. 32-28 20-15 2. 37-32 * 31-27 *");
    run();
    EXPECT_EQ(output(),
              "1. 32-28 {book 0}\n   20-15 {book 0}\n         {book 0}\n*\n\n\n"
              "1. 31-27 {book 0}\n         {book 0}\n*\n\n\n");
    EXPECT_EQ(searched_positions, 3 + 2) << "its last position is searched twice";
}

// Saving what is on the board behind an analysis must not give one game's moves to another's players.
TEST_F(AnalyzeGames, TheHeadersAreThoseOfTheGameOnTheBoard) {
    set_game_header(game.headers, "White", "Me");
    analyze_pdn("[White \"A\"] 32-28 * [Black \"B\"] 31-27 *");
    run();
    EXPECT_STREQ(game.headers.white.data(), "");
    EXPECT_STREQ(game.headers.black.data(), "B");
    load("[White \"Me\"] 32-28 19-23 *");
    analyze_game_command(false);
    run();
    EXPECT_STREQ(game.headers.white.data(), "Me");
}

// Nor do headers that were edited when the analysis went on to the next game.
TEST_F(AnalyzeGames, HeadersAreNotThoseOfTheGameBefore) {
    analyze_pdn("[White \"A\"] 32-28 * [White \"B\"] 31-27 *");
    answers.meanwhile = [] {
        while (analysis.analysis_game_index == 0) finish_search();
    };
    answers.save_path = folder + "out.pdn";
    save_command();
    EXPECT_STREQ(game.headers.white.data(), "B");
    const std::string saved = content_of(folder + "out.pdn");
    EXPECT_NE(saved.find("[White \"A\"]"), std::string::npos) << saved;
    EXPECT_EQ(saved.find("31-27"), std::string::npos) << saved;
}

TEST_F(AnalyzeGames, TheUsersGameIsSavedAndCopiedWholeMeanwhile) {
    load("[White \"Me\"] 32-28 19-23 *");
    analyze_game_command(false);
    answers.save_path = folder + "out.pdn";
    save_command();
    EXPECT_NE(content_of(answers.save_path).find("[White \"Me\"]"), std::string::npos);
    EXPECT_NE(content_of(answers.save_path).find("1. 32-28 19-23 *"), std::string::npos);
    copy_game_command();
    EXPECT_NE(clipboard.find("1. 32-28 19-23 *"), std::string::npos);
}

TEST_F(AnalyzeGames, AGameOfTheBoardThatBroke) {
    load("32-28 20-15 37-32 *");
    ASSERT_EQ(game.history_last, 3);
    analyze_game_command(false);
    run();
    EXPECT_EQ(output(), std::string(NO_TAGS) + "1. 32-28 {book 0}\n         {book 0}\n*\n\n\n");
}

TEST_F(AnalyzeGames, MovesAheadOfTheBoardAreAnalysedToo) {
    load("32-28 19-23 *");
    back_to_start_command();
    analyze_game_command(false);
    run();
    EXPECT_EQ(searched_positions, 3);
    expect_game(entries_of("32-28 19-23"));
}

TEST_F(AnalyzeGames, TheAllScoresForms) {
    script.think = search_really;
    settings.book_mode = 0;
    load("32-28 *");
    analyze_game_command(true);
    EXPECT_EQ(game.gui_mode, ANALYZE_GAME_ALLSCORES_MODE);
    EXPECT_EQ(search_thread.search_flags, static_cast<uint32_t>(SEARCH_ALL_SCORES));
    run();
    const std::string game_output = output();
    EXPECT_NE(game_output.find("31-27"), std::string::npos) << "moves that were not played have values\n"
                                                            << game_output;
    analyze_pdn("32-28 *", true);
    EXPECT_EQ(game.gui_mode, ANALYZE_PDN_ALLSCORES_MODE);
    EXPECT_EQ(search_thread.search_flags, static_cast<uint32_t>(SEARCH_ALL_SCORES));
    run();
    EXPECT_NE(output().find("31-27"), std::string::npos);
    analyze_pdn("32-28 *", false);
    EXPECT_EQ(search_thread.search_flags, 0u);
    run();
    EXPECT_NE(output().find("{value="), std::string::npos) << output();
}

TEST_F(AnalyzeGames, WithoutMovesNothingIsAnalysed) {
    set_gui_mode(TWO_PLAYERS_MODE);
    clear_events();
    analyze_game_command(false);
    EXPECT_EQ(events_of("box"), Events{"box Info: There are no moves in the current game."});
    EXPECT_EQ(game.gui_mode, NORMAL_MODE);
    EXPECT_FALSE(search_thread.searching);
}

TEST_F(AnalyzeGames, AResultThatNobodyHasSeenIsForgotten) {
    settings.sound_on = 1;
    search_button_command();
    ASSERT_TRUE(wait_for_search());
    analyze_game_command(false);
    for (int i = 0; i < 5; ++i) timer_tick();
    EXPECT_EQ(count_events("sound"), 0);
    EXPECT_EQ(game.history_last, 1);
}

TEST_F(AnalyzeGames, TheClockIsResetAndTheMarksGo) {
    load("32-28 *");
    answers.load_path = folder + "load.pdn";
    script.hold = true;
    for (void (*const command)(bool) : {analyze_game_command, analyze_pdn_command}) {
        clock_state.clock_running = true;
        clock_state.white_used = 7;
        clock_state.clock_moves = 3;
        add_highlight(5);
        command(false);
        EXPECT_FALSE(clock_state.clock_running);
        EXPECT_EQ(clock_state.white_used, 0.0);
        EXPECT_EQ(clock_state.clock_moves, 0);
        EXPECT_EQ(game.highlight_count, 0);
        cancel_analyze_command();
    }
}

TEST_F(AnalyzeGames, MarksGoFromTheBoardThoughNothingIsAnalysed) {
    add_highlight(32);
    analyze_game_command(false);
    EXPECT_EQ(count_events("box"), 1);
    EXPECT_EQ(events_of("board"), Events{"board " + fen_now() + " []"});
}

TEST_F(AnalyzeGames, ATimeThatIsNotFixedIsRefused) {
    load("32-28 *");
    write_file("analysis.txt", "old");
    set_time_control(TIME_GAME_CLOCK);
    for (const bool all_scores : {false, true}) {
        analyze_game_command(all_scores);
        analyze_pdn_command(all_scores);
    }
    for (const std::string& box : events_of("box"))
        EXPECT_EQ(box, "box Settings Conflict: Select a fixed time per move for Analyze Game.");
    EXPECT_EQ(count_events("box"), 4);
    set_time_control(TIME_INFINITE);
    clear_events();
    analyze_game_command(false);
    analyze_pdn_command(false);
    for (const std::string& box : events_of("box"))
        EXPECT_EQ(box,
                  "box Settings Conflict: Search time per move is set to Infinite.  Select a shorter "
                  "time per move using the Time menu.");
    EXPECT_EQ(count_events("box"), 2);
    EXPECT_EQ(game.gui_mode, NORMAL_MODE);
    EXPECT_EQ(output(), "old");
    EXPECT_EQ(answers.load_title, "") << "no file is asked for";
}

TEST_F(AnalyzeGames, FilesThatCannotBeAnalysed) {
    load("32-28 *");
    answers.load_path = folder + "missing.pdn";
    analyze_pdn_command(false);
    answers.load_path = folder;
    analyze_pdn_command(false);
    EXPECT_EQ(events_of("box"),
              (Events{"box Error: Cannot open PDN file.", "box Error: Cannot open PDN file."}));
    clear_events();
    analyze_pdn("");
    EXPECT_EQ(events_of("box"), Events{"box Error: Error parsing PDN file."});
    clear_events();
    set_gui_mode(TWO_PLAYERS_MODE);
    analyze_pdn("* 1. *");
    EXPECT_EQ(count_events("box"), 0);
    EXPECT_EQ(game.gui_mode, NORMAL_MODE) << "a file without games";
    answers.load_path.clear();
    set_gui_mode(TWO_PLAYERS_MODE);
    analyze_pdn_command(false);
    EXPECT_EQ(game.gui_mode, TWO_PLAYERS_MODE) << "no file was chosen";
    EXPECT_FALSE(search_thread.searching);
    expect_game(entries_of("32-28"));
}

TEST_F(AnalyzeGames, NotInModesThatDisableIt) {
    load("32-28 *");
    answers.load_path = folder + "load.pdn";
    for (const int32_t mode :
         {int32_t{DXP_MODE}, int32_t{ANALYZE_GAME_MODE}, int32_t{ANALYZE_PDN_MODE},
          int32_t{ANALYZE_GAME_ALLSCORES_MODE}, int32_t{ANALYZE_PDN_ALLSCORES_MODE}, int32_t{SETUP_MODE}}) {
        set_gui_mode(mode);
        analyze_game_command(false);
        analyze_pdn_command(false);
        EXPECT_EQ(game.gui_mode, mode);
    }
    EXPECT_FALSE(search_thread.searching);
    EXPECT_EQ(count_events("box"), 0);
}

TEST_F(AnalyzeGames, ANetworkGameThatBeginsWhileAFileIsChosenGoesOn) {
    load("32-28 *");
    answers.meanwhile = [] { set_gui_mode(DXP_MODE); };
    analyze_pdn("31-27 *");
    EXPECT_EQ(game.gui_mode, DXP_MODE);
    EXPECT_FALSE(search_thread.searching);
    expect_game(entries_of("32-28"));
}

TEST_F(AnalyzeGames, CancelInTheMiddle) {
    analyze_pdn("32-28 * 31-27 18-23 *");
    finish_search();
    finish_search();
    const std::string first = output();
    EXPECT_FALSE(first.empty());
    finish_search();
    hold_next_search();
    const std::string board = fen_now();
    cancel_analyze_command();
    EXPECT_EQ(game.gui_mode, NORMAL_MODE);
    for (int i = 0; i < 10; ++i) timer_tick();
    EXPECT_FALSE(search_thread.searching) << "nothing goes on";
    EXPECT_EQ(output(), first) << "the game in progress is not written";
    EXPECT_EQ(fen_now(), board) << "the board keeps what it showed";
    EXPECT_TRUE(answers.opened.empty());
}

// The game with the moves that were not searched yet, at the entry that the analysis had come to.
TEST_F(AnalyzeGames, TheGameIsWholeAgainWhenTheAnalysisIsLeft) {
    const std::vector<ReplayState> entries = entries_of("32-28 19-23 28x19 14x23");
    for (void (*const command)() : {cancel_analyze_command, normal_command, two_players_command}) {
        set_gui_mode(NORMAL_MODE);
        load("32-28 19-23 28x19 14x23 *");
        analyze_game_command(false);
        finish_search();
        finish_search();
        ASSERT_TRUE(wait_for_search());
        ASSERT_EQ(game.history_last, 3);
        command();
        EXPECT_EQ(drawn_game_text, "1. 32-28  19-23  \n2. 28x19  14x23\n");
        for (int i = 0; i < 10; ++i) timer_tick();
        EXPECT_EQ(game.history_count, 3) << "and no search of the analysis is played";
        EXPECT_TRUE(same_pieces(game.board, entries[2].position));
        forward_to_end_command();
        expect_game(entries);
    }
}

TEST_F(AnalyzeGames, WhatStandsBehindABreakIsKept) {
    load("32-28 19-23 1-1");
    ASSERT_EQ(game.history_last, 4) << "the last one twice";
    set_gui_mode(TWO_PLAYERS_MODE);
    play("28x19");
    play("14x23");
    set_gui_mode(NORMAL_MODE);
    const std::vector<ReplayState> entries(whole_history().begin(), whole_history().end());
    analyze_game_command(false);
    run();
    EXPECT_EQ(game.history_count, 3) << "the last position of the analysis";
    EXPECT_TRUE(same_pieces(game.board, entries[2].position));
    forward_to_end_command();
    expect_game(entries);
}

TEST_F(AnalyzeGames, WithoutMemoryItEnds) {
    load("32-28 19-23 *");
    analyze_game_command(false);
    finish_search();
    ASSERT_TRUE(wait_for_search());
    fail_allocation(0);
    timer_tick();
    EXPECT_EQ(events_of("box"), Events{"box Error: Cannot allocate memory from heap!"});
    EXPECT_EQ(game.gui_mode, NORMAL_MODE);
    EXPECT_FALSE(search_thread.searching);
    EXPECT_EQ(file_size(folder + "analysis.txt"), -1);
}

// Beneath the box that tells it a game over the network may begin.
TEST_F(AnalyzeGames, WithoutMemoryItEndsBeforeThatIsTold) {
    load("32-28 19-23 *");
    analyze_game_command(false);
    finish_search();
    ASSERT_TRUE(wait_for_search());
    ui.message_box = [](const char*, const char*, MessageIcon) { set_gui_mode(DXP_MODE); };
    fail_allocation(0);
    timer_tick();
    EXPECT_EQ(game.gui_mode, DXP_MODE);
}

// The title is the last thing that changes before the game of the board is taken over.
TEST_F(AnalyzeGames, WithoutMemoryForTheGameNothingIsAnalysed) {
    load("32-28 19-23 *");
    ui.set_title = [](const char*) {
        if (game.gui_mode == ANALYZE_GAME_MODE) fail_allocation(0);
    };
    analyze_game_command(false);
    EXPECT_EQ(game.gui_mode, NORMAL_MODE) << "no memory for the table";
    ui.set_title = [](const char*) {
        if (game.gui_mode == ANALYZE_GAME_MODE) fail_allocation(1);
    };
    analyze_game_command(false);
    EXPECT_EQ(game.gui_mode, NORMAL_MODE) << "no memory for the list";
    EXPECT_FALSE(search_thread.searching);
    expect_game(entries_of("32-28 19-23"));
    ui.set_title = [](const char*) {};
    analyze_game_command(false);
    EXPECT_EQ(game.gui_mode, ANALYZE_GAME_MODE) << "the next time there is enough";
}

TEST_F(AnalyzeGames, CancelBetweenASearchAndItsStep) {
    load("32-28 19-23 *");
    analyze_game_command(false);
    ASSERT_TRUE(wait_for_search());
    cancel_analyze_command();
    for (int i = 0; i < 10; ++i) timer_tick();
    EXPECT_EQ(game.history_count, 1);
    EXPECT_EQ(game.history_last, 3);
    EXPECT_FALSE(search_thread.searching);
}

TEST_F(AnalyzeGames, OtherCommandsStopItAndNothingGoesOn) {
    for (void (*const command)() : {new_game_command, paste_command}) {
        load("32-28 19-23 *");
        clipboard = "W:W31:B1";
        script.hold = true;
        analyze_game_command(false);
        wait_until_held();
        command();
        script.hold = false;
        for (int i = 0; i < 5; ++i) timer_tick();
        EXPECT_FALSE(search_thread.searching);
        EXPECT_EQ(game.gui_mode, ANALYZE_GAME_MODE);
        EXPECT_EQ(game.history_last, 1);
        cancel_analyze_command();
        EXPECT_EQ(game.history_last, 1) << "the game before is not what is to be brought back";
    }
}

TEST_F(AnalyzeGames, SteppingIsIgnored) {
    load("32-28 19-23 *");
    analyze_game_command(false);
    finish_search();
    hold_next_search();
    const int count = game.history_count;
    back_command();
    back_to_start_command();
    forward_command();
    forward_to_end_command();
    EXPECT_EQ(game.history_count, count);
    EXPECT_TRUE(search_thread.searching);
}

TEST_F(AnalyzeGames, AnalysingTwiceGivesTheSame) {
    load("32-28 19-23 28x19 14x23 *");
    analyze_game_command(false);
    run();
    const std::string first = output();
    analyze_game_command(false);
    run();
    EXPECT_EQ(output(), first) << "the comments belong to the analysis, not to the game";
}

TEST_F(AnalyzeGames, AGameBeyond800Entries) {
    std::string text = "[FEN \"W:WK47:BK15\"]";
    const char* const moves[] = {" 47-36", " 15-10", " 36-47", " 10-15"};
    for (int i = 0; i < 810; ++i) text += moves[i % 4];
    analyze_pdn(text);
    run();
    EXPECT_EQ(searched_positions, 811);
    EXPECT_EQ(game.history_last, 800);
    PdnTable table;
    ASSERT_EQ(pdn_read_file(folder + "analysis.txt", table), 0);
    int comments = 0;
    for (const PdnNode* node = table[0].get(); node; node = node->next) comments += node->kind == PDN_COMMENT;
    EXPECT_EQ(comments, 811);
}

// What is written reads back as the game that was analysed, for real games and random ones.
TEST_F(AnalyzeGames, CommandsByTheirIds) {
    EXPECT_FALSE(run_analyze_command(40112));
    EXPECT_FALSE(run_analyze_command(40113));
    const struct {
        int32_t id, mode;
    } rows[] = {{40110, ANALYZE_GAME_MODE},
                {40111, ANALYZE_PDN_MODE},
                {40114, ANALYZE_GAME_ALLSCORES_MODE},
                {40115, ANALYZE_PDN_ALLSCORES_MODE}};
    script.hold = true;
    for (const auto& row : rows) {
        load("32-28 *");
        answers.load_path = folder + "load.pdn";
        EXPECT_TRUE(run_analyze_command(row.id));
        EXPECT_EQ(game.gui_mode, row.mode);
        cancel_analyze_command();
    }
}
