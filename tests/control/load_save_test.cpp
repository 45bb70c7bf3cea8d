#include "control/load_save.h"

#include <filesystem>

#include "base/files.h"
#include "control/analyze_games.h"
#include "control/game_clock.h"
#include "records/game_file.h"
#include "records/pdn_write.h"
#include "tests/control/record_fixture.h"

namespace {

class LoadSave : public RecordTest {
  protected:
    void load(const std::string& content, int index = 0) {
        answers.load_path = write_file("games.pdn", content);
        answers.game = index;
        load_command();
    }
    // Loads one of the games of a file that is there.
    static void load_from(const std::string& path, int index) {
        answers.load_path = path;
        answers.game = index;
        load_command();
    }
    void save_to(const std::string& name) {
        answers.save_path = folder + name;
        save_command();
    }
};

constexpr const char* THREE_GAMES =
    "[Event \"First\"]\r\n1. 32-28 19-23 *\r\n\r\n[Event \"Second\"]\r\n[Date \"1999.12.31\"]\r\n[White \"A \"B\" C\"]\r\n"
    "[black \"D\"]\r\n[RESULT \"1-1\"]\r\n[Site \"dropped\"]\r\n[FEN \"B:W31:B1\"]\r\n1. ... 1-6 31-27 1-1 *\r\n\r\n"
    "31-27 {x} /FEN \"W:W31:B1\"/ 31-27 1-0\r\n";

}  // namespace

TEST_F(LoadSave, LoadsTheChosenGame) {
    set_game_header(game.headers, "Event", "old");
    load(THREE_GAMES, 1);
    EXPECT_EQ(answers.load_title, "Select PDN file to load");
    ASSERT_EQ(answers.offered.size(), 3u);
    EXPECT_EQ(answers.offered[0], "[Event \"First\"] 1. 32-28 19-23 *");
    EXPECT_EQ(answers.offered[2], "31-27 {x} /FEN \"W:W31:B1\"/ 31-27 1-0 ");
    EXPECT_EQ(answers.selected, 0);
    EXPECT_EQ(events_of("status").back(), "status 3 games read");
    expect_game(
        {state_of("B:W31:B1", 1), state_of("W:W31:B6", 0), state_of("B:W27:B6", 0), state_of("B:W27:B6", 0)});
    EXPECT_STREQ(game.headers.event.data(), "Second");
    EXPECT_STREQ(game.headers.date.data(), "1999.12.31");
    EXPECT_STREQ(game.headers.black.data(), "D");
    EXPECT_EQ(game.headers.result, RESULT_DRAW);
    EXPECT_EQ(drawn_game_text, "FEN\n1. ... 1-6  \n2. 31-27  \n") << "1-1 is read as a move that is none";
    EXPECT_EQ(events_of("side").back(), "side B");
    EXPECT_EQ(count_events("board B:W27:B6"), 1);
}

TEST_F(LoadSave, HeadersThatTheGameHasNotAreEmpty) {
    set_game_header(game.headers, "Date", "1.2.3");
    game.headers.result = RESULT_DRAW;
    load(THREE_GAMES, 2);
    for (const auto* text : {&game.headers.event, &game.headers.date, &game.headers.white})
        EXPECT_STREQ(text->data(), "");
    EXPECT_EQ(game.headers.result, RESULT_UNKNOWN);
    expect_game(entries_of("31-27 /FEN \"W:W31:B1\"/ 31-27"));
    EXPECT_EQ(game.game_history[2].setup_flag, 1);
}

TEST_F(LoadSave, LongHeadersAreCut) {
    load("[Event \"" + std::string(100, 'e') + "\"] *");
    EXPECT_EQ(std::string(game.headers.event.data()), std::string(79, 'e'));
}

TEST_F(LoadSave, TheLastChoiceIsOfferedAgain) {
    load(THREE_GAMES, 2);
    load(THREE_GAMES, 1);
    EXPECT_EQ(answers.selected, 2);
    load(THREE_GAMES, -1);
    EXPECT_EQ(answers.selected, 1);
    load("32-28 *", 0);
    EXPECT_EQ(answers.selected, 0) << "there are not so many";
}

TEST_F(LoadSave, WithoutAChoiceTheOldGameStays) {
    load(THREE_GAMES, 0);
    const std::string before = fen_now();
    const GameHeaders headers = game.headers;
    for (const int index : {-1, 3, 1000}) {
        load(THREE_GAMES, index);
        EXPECT_EQ(fen_now(), before);
        EXPECT_EQ(game.history_last, 3);
        EXPECT_STREQ(game.headers.event.data(), headers.event.data());
    }
    answers.load_path.clear();
    load_command();
    load("", 0);
    load(" * *", 0);
    EXPECT_EQ(fen_now(), before) << "a file without games";
    EXPECT_EQ(count_events("box"), 0);
}

TEST_F(LoadSave, WhatCannotBeLoadedIsTold) {
    play("32-28");
    finish_search();
    const std::string before = fen_now();
    clear_events();
    load_from(folder + "missing.pdn", 0);
    load_from(folder, 0);
    const Events boxes = events_of("box");
    ASSERT_EQ(boxes.size(), 2u);
    for (const std::string& box : boxes) EXPECT_EQ(box, "box Error: Cannot open file for reading");
    EXPECT_EQ(fen_now(), before);
}

TEST_F(LoadSave, WithoutMemoryNothingIsLoaded) {
    std::string text;
    PdnOffsets offsets;
    const std::string long_file = write_file("long.pdn", std::string(100, ' ') + "32-28 *");
    fail_allocation(0);
    EXPECT_EQ(load_game_file(long_file, text, offsets), GAME_FILE_NO_MEMORY);
    fail_allocation(0);
    load_pdn_game(long_file);
    EXPECT_EQ(events_of("box"), Events{"box Error: Cannot allocate memory for games"});
    EXPECT_EQ(game.history_last, 1);
}

TEST_F(LoadSave, AFileOfTheLimitLoads) {
    std::string text = "[Event \"last\"] 32-28 *";
    text.insert(0, static_cast<size_t>(GAME_FILE_LIMIT) - text.size(), '\n');
    load(text);
    EXPECT_STREQ(game.headers.event.data(), "last");
    EXPECT_EQ(count_events("box"), 0);
    new_game_command();
    load(" " + text);
    EXPECT_EQ(events_of("box"), Events{"box Error: File is too big!"});
    EXPECT_EQ(game.history_last, 1);
}

TEST_F(LoadSave, NoMoreThan20000GamesAreOffered) {
    for (const int games : {19999, 20000, 20001}) {
        std::string text;
        for (int i = 0; i < games; ++i) text += "32-28*";
        load(text, games - 1);
        EXPECT_EQ(answers.offered.size(), static_cast<size_t>(std::min(games, 20000)));
        EXPECT_EQ(events_of("status").back(),
                  "status " + std::to_string(std::min(games, 20000)) + " games read");
        EXPECT_EQ(answers.offered.back(), "32-28*");
        EXPECT_EQ(game.history_last, 2);
    }
    EXPECT_EQ(load_state.selected_game, 19999);
}

TEST_F(LoadSave, LoadingStopsTheSearchAndResetsTheClock) {
    script.hold = true;
    play("32-28");
    wait_until_held();
    clock_start_command();
    clock_state.clock_moves = 5;
    load("1. 33-28 18-23 *");
    EXPECT_FALSE(search_thread.searching);
    EXPECT_EQ(clock_state.clock_moves, 0);
    EXPECT_FALSE(clock_state.clock_running);
    timer_tick();
    timer_tick();
    expect_game(entries_of("33-28 18-23"));
}

TEST_F(LoadSave, AFinishedPonderSearchIsForgotten) {
    settings.pondering_on = 1;
    script.predict = answer_with("31-27");
    play("32-28");
    settle();
    ASSERT_TRUE(search_thread.ponder_done);
    load("32-28 *");
    EXPECT_FALSE(search_thread.ponder_done);
}

TEST_F(LoadSave, AResultThatNobodyHasSeenIsForgotten) {
    settings.sound_on = 1;
    play("32-28");
    ASSERT_TRUE(wait_for_search());
    load("33-28 *");
    for (int i = 0; i < 5; ++i) timer_tick();
    EXPECT_EQ(count_events("sound"), 0);
    expect_game(entries_of("33-28"));
}

TEST_F(LoadSave, AStoppedSearchIsForgotten) {
    settings.sound_on = 1;
    script.hold = true;
    play("32-28");
    wait_until_held();
    load("33-28 *");
    for (int i = 0; i < 5; ++i) timer_tick();
    EXPECT_EQ(count_events("sound"), 0);
    expect_game(entries_of("33-28"));
}

TEST_F(LoadSave, ANetworkGameThatBeginsWhileAGameIsChosenGoesOn) {
    answers.meanwhile = [] { set_gui_mode(DXP_MODE); };
    load("32-28 *");
    EXPECT_EQ(game.history_last, 1) << "while the file was chosen";
    set_gui_mode(NORMAL_MODE);
    load_pdn_game(write_file("a.pdn", "32-28 *"));
    EXPECT_EQ(game.history_last, 1) << "while the game was chosen";
    EXPECT_EQ(game.gui_mode, DXP_MODE);
}

TEST_F(LoadSave, ANetworkGameThatBeginsMeanwhileGetsNoHeaders) {
    answers.meanwhile = [] {
        set_gui_mode(DXP_MODE);
        restart_from_board();
    };
    answers.edits = true;
    set_game_header(answers.edited, "White", "someone");
    edit_headers_command();
    EXPECT_STREQ(game.headers.white.data(), "");
    edit_headers_command();
    EXPECT_STREQ(game.headers.white.data(), "") << "nor the next game of a match";
    set_gui_mode(NORMAL_MODE);
    answers.meanwhile = [] {
        restart_from_board();
        set_gui_mode(NORMAL_MODE);
    };
    edit_headers_command();
    EXPECT_STREQ(game.headers.white.data(), "") << "nor one that has ended already";
}

// Of the user's own nothing is left on the board.
TEST_F(LoadSave, AGameThatBeginsMeanwhileIsNotSavedInPlaceOfTheUsers) {
    load("[White \"Me\"] 32-28 19-23 *");
    answers.edits = true;
    answers.edited = game.headers;
    set_game_header(answers.edited, "Event", "club");
    answers.meanwhile = new_game;
    save_to("a.pdn");
    EXPECT_STREQ(game.headers.event.data(), "");
    answers.meanwhile = nullptr;
    load("[White \"Me\"] 32-28 19-23 *");
    ui.choose_save_file = [](const char*, std::string& path) {
        path = answers.save_path;
        new_game();
        return true;
    };
    save_to("b.pdn");
    for (const char* name : {"a.pdn", "b.pdn"}) {
        const std::string saved = content_of(folder + name);
        for (const char* part : {"[Event \"club\"]", "[White \"Me\"]", "1. 32-28 19-23 *"})
            EXPECT_NE(saved.find(part), std::string::npos) << name << part << saved;
    }
}

TEST_F(LoadSave, ANetworkGameIsSaved) {
    set_gui_mode(DXP_MODE);
    save_to("out.pdn");
    EXPECT_GT(file_size(folder + "out.pdn"), 0);
}

TEST_F(LoadSave, NothingInDxp) {
    set_gui_mode(DXP_MODE);
    load("32-28 *");
    EXPECT_EQ(game.history_last, 1);
    EXPECT_EQ(answers.load_title, "");
    clock_state.clock_moves = 5;
    load_pdn_game(write_file("a.pdn", "32-28 *"));
    EXPECT_EQ(game.history_last, 1);
    EXPECT_EQ(clock_state.clock_moves, 5) << "nor is the clock of the game reset";
}

TEST_F(LoadSave, LoadingEndsAnAnalysis) {
    load("32-28 19-23 *");
    script.hold = true;
    analyze_game_command(false);
    wait_until_held();
    load("31-27 *");
    EXPECT_EQ(pdn_game_count(analysis.analysis_games), 0);
    release_search();
    settle();
    EXPECT_EQ(game.gui_mode, ANALYZE_GAME_MODE) << "the mode stays until it is cancelled";
    expect_game(entries_of("31-27"));
    EXPECT_FALSE(search_thread.searching);
    cancel_analyze_command();
    EXPECT_EQ(game.gui_mode, NORMAL_MODE);
}

TEST_F(LoadSave, SavesTheGame) {
    load("32-28 19-23 *");
    answers.edits = true;
    set_game_header(answers.edited, "Event", "e");
    set_game_header(answers.edited, "Black", "b");
    answers.edited.result = RESULT_WHITE_WINS;
    save_to("out.pdn");
    EXPECT_EQ(answers.save_title, "Select PDN file to save game to");
    EXPECT_EQ(std::string(answers.shown.date.data()), today_text()) << "an empty date is offered as today";
    const std::string saved =
        "[Event \"e\"]\n[Date \"\"]\n[White \"\"]\n[Black \"b\"]\n[Result \"2-0\"]\n1. 32-28 19-23 *\n\n";
    EXPECT_EQ(content_of(folder + "out.pdn"), saved);
    save_to("out.pdn");
    EXPECT_EQ(content_of(folder + "out.pdn"), saved + saved) << "appended, not replaced";
    EXPECT_EQ(count_events("box"), 0);
}

TEST_F(LoadSave, SavesBehindAnEmptyLine) {
    load("32-28 *");
    write_file("out.pdn", "old *");
    save_to("out.pdn");
    EXPECT_TRUE(content_of(folder + "out.pdn").starts_with("old *\n\n[Event"));
    write_file("out.pdn", "old *\r\n");
    save_to("out.pdn");
    EXPECT_TRUE(content_of(folder + "out.pdn").starts_with("old *\r\n\n[Event"));
}

TEST_F(LoadSave, CancelSavesNothing) {
    load("[Event \"x\"] 32-28 *");
    answers.edits = true;
    answers.headers = false;
    save_to("out.pdn");
    EXPECT_EQ(file_size(folder + "out.pdn"), -1);
    EXPECT_EQ(answers.save_title, "");
    EXPECT_STREQ(game.headers.event.data(), "x") << "the fields stay";
    EXPECT_STREQ(game.headers.date.data(), "");
    answers.headers = true;
    save_to("");
    answers.save_path.clear();
    save_command();
    EXPECT_STREQ(game.headers.event.data(), "") << "the headers were agreed to before the file";
}

TEST_F(LoadSave, AFileThatCannotBeAppendedToIsTold) {
    answers.save_path = folder;
    save_command();
    answers.save_path = folder + "no/such/folder/out.pdn";
    save_command();
    EXPECT_EQ(events_of("box"), (Events{"box Error: Cannot open file for appending.",
                                        "box Error: Cannot open file for appending."}));
}

TEST_F(LoadSave, AFullDiskIsTold) {
    answers.save_path = "/dev/full";
    save_command();
    EXPECT_EQ(events_of("box"), (Events{"box Error: The game could not be written to the file."}));
}

// Positions that are set up within it make a game far longer than its moves do.
TEST_F(LoadSave, AGameOfManySetPositionsIsSavedWhole) {
    const ReplayState start = state_of("W:W31-50:B1-20", 1), moved = state_of("B:W28,31,33-50:B1-20", 0);
    std::vector<ReplayState> entries{ReplayState{}, moved};
    while (entries.size() < MAX_HISTORY) entries.insert(entries.end(), {start, moved});
    set_game(entries);
    for (auto* text : {&game.headers.event, &game.headers.date, &game.headers.white, &game.headers.black})
        std::fill_n(text->begin(), HEADER_TEXT_SIZE - 1, 'h');
    const std::string name = folder + "long";
    save_game_to_file(name, users_history(), game.headers);
    const std::string saved = content_of(name);
    EXPECT_GT(saved.size(), 3 * GAME_TEXT_SIZE);
    EXPECT_TRUE(saved.ends_with(" *\n\n"));
    load_from(name, 0);
    expect_game(entries);
}

TEST_F(LoadSave, RealGamesSaveAndLoadAgain) {
    int games = 0;
    for (const auto& entry : std::filesystem::directory_iterator(TEST_DATA "/games")) {
        const std::string path = entry.path().string();
        PdnTable table;
        ASSERT_EQ(pdn_read_file(path, table), 0);
        const std::string saved = folder + entry.path().filename().string();
        std::vector<GameHeaders> headers;
        std::vector<std::vector<ReplayState>> histories;
        for (int i = 0; i < pdn_game_count(table); i += 3) {
            load_from(path, i);
            headers.push_back(game.headers);
            histories.emplace_back(whole_history().begin(), whole_history().end());
            save_game_to_file(saved, users_history(), game.headers);
        }
        for (size_t i = 0; i < histories.size(); ++i) {
            load_from(saved, static_cast<int>(i));
            ASSERT_EQ(answers.offered.size(), histories.size());
            expect_game(histories[i]);
            ASSERT_EQ(game.headers.event, headers[i].event);
            ASSERT_EQ(game.headers.white, headers[i].white);
            ASSERT_EQ(game.headers.result, headers[i].result);
            if (HasFailure()) return;
            ++games;
        }
    }
    EXPECT_GT(games, 60);
}

TEST_F(LoadSave, RandomGamesSaveAndLoadAgain) {
    std::mt19937 random(41);
    std::vector<std::vector<ReplayState>> histories;
    for (int i = 0; i < 100; ++i) {
        histories.push_back(random_game(random, 60, i % 3 != 0));
        set_game(histories.back());
        save_game_to_file(folder + "random.pdn", users_history(), game.headers);
    }
    for (size_t i = 0; i < histories.size(); ++i) {
        load_from(folder + "random.pdn", static_cast<int>(i));
        ASSERT_EQ(answers.offered.size(), histories.size());
        expect_game(histories[i]);
        if (HasFailure()) return;
    }
}

TEST_F(LoadSave, AGameOf800EntriesSavesAndLoads) {
    const char* const moves[] = {" 47-36", " 15-10", " 36-47", " 10-15"};
    for (const int entries : {799, 800, 801}) {
        std::string text = "[FEN \"W:WK47:BK15\"]";
        for (int i = 0; i + 1 < entries; ++i) text += moves[i % 4];
        load(text);
        ASSERT_EQ(game.history_last, std::min(entries, 800));
        std::vector<ReplayState> expected = entries_of(text);
        ASSERT_EQ(expected.size(), static_cast<size_t>(entries));
        EXPECT_TRUE(same_pieces(game.board, expected.back().position)) << "the board goes on to the end";
        const std::string saved = folder + std::to_string(entries);
        save_game_to_file(saved, users_history(), game.headers);
        load_from(saved, 0);
        expected.resize(std::min<size_t>(expected.size(), 800));
        expect_game(expected);
    }
}

TEST_F(LoadSave, TheHeadersCommand) {
    answers.edits = true;
    set_game_header(answers.edited, "White", "someone");
    EXPECT_TRUE(run_file_command(COMMAND_PDN_HEADER));
    EXPECT_STREQ(game.headers.white.data(), "someone");
    EXPECT_EQ(COMMAND_PDN_HEADER, 40091);
    EXPECT_EQ(COMMAND_LOAD, 40092);
    EXPECT_EQ(COMMAND_SAVE, 40093);
    EXPECT_FALSE(run_file_command(40094));
    answers.load_path = write_file("a.pdn", "32-28 *");
    EXPECT_TRUE(run_file_command(COMMAND_LOAD));
    EXPECT_EQ(game.history_last, 2);
    answers.save_path = folder + "b.pdn";
    EXPECT_TRUE(run_file_command(COMMAND_SAVE));
    EXPECT_GT(file_size(folder + "b.pdn"), 0);
}
