// The file of a match's games.
#include "dxp/game_files.h"

#include <filesystem>

#include "base/program_paths.h"
#include "tests/dxp/match_fixture.h"

namespace {

class GameFilesTest : public MatchTest {
  protected:
    // A game of `plies` first moves, as number `number`.
    static void file_game(int number, int plies, const char* result = "1-1", const char* black = "Black",
                          const char* white = "White") {
        new_game();
        set_gui_mode(TWO_PLAYERS_MODE);
        for (int i = 0; i < plies; ++i) ASSERT_EQ(make_user_move(0), 0);
        dxp_state.match_games = number;
        append_match_game(black, white, result);
    }
};

}  // namespace

TEST_F(GameFilesTest, ThePathIsThatOfTheCopy) {
    EXPECT_EQ(match_games_path(), games_file());
    program_paths.instance_suffix = "[1]";
    EXPECT_EQ(match_games_path(), folder.file("dxpgames[1].pdn"));
}

TEST_F(GameFilesTest, TheInitiatorNamesTheOpening) {
    dxp_state.dxp_follower = 0;
    match_plan.opening_text = "32-28 19-23";
    file_game(0, 4, "2-0", "Other", "Tessarin");
    const std::string date = "[Date \"" + today_text() + "\"]\n";
    const std::string text = content_of(games_file());
    EXPECT_TRUE(text.starts_with("[Event \"Game 1, opening 32-28 19-23\"]\n" + date +
                                 "[White \"Tessarin\"]\n[Black \"Other\"]\n[Result \"2-0\"]\n"))
        << text;
    EXPECT_TRUE(text.ends_with(" *\n\n")) << text;
    EXPECT_EQ(text.find('\r'), std::string::npos);
}

TEST_F(GameFilesTest, TheFollowerKnowsNone) {
    dxp_state.dxp_follower = 1;
    match_plan.opening_text = "of another match";
    file_game(6, 2);
    EXPECT_TRUE(content_of(games_file()).starts_with("[Event \"Game 7\"]\n"));
}

TEST_F(GameFilesTest, TheFirstGameBeginsTheFileAnew) {
    write_content(games_file(), "[Event \"of an older match\"]\n1. 32-28 *\n\n");
    file_game(0, 2);
    EXPECT_EQ(filed_games(games_file()).size(), 1u);
    file_game(1, 3);
    file_game(2, 4);
    const std::vector<FiledGame> games = filed_games(games_file());
    ASSERT_EQ(games.size(), 3u);
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(games[i].event, "Game " + std::to_string(i + 1));
        EXPECT_EQ(games[i].states.size(), i + 3);
    }
    file_game(0, 2);
    EXPECT_EQ(filed_games(games_file()).size(), 1u);
}

TEST_F(GameFilesTest, ALaterGameMakesAFileThatIsNotThere) {
    file_game(5, 2);
    EXPECT_EQ(filed_games(games_file()).size(), 1u);
}

TEST_F(GameFilesTest, NamesCannotBreakTheFile) {
    file_game(0, 2, "0-2", "He said \"no\"", "two\nlines\x01");
    const std::vector<FiledGame> games = filed_games(games_file());
    ASSERT_EQ(games.size(), 1u);
    EXPECT_EQ(games[0].black, "He said 'no'");
    EXPECT_EQ(games[0].white, "two lines ");
    EXPECT_EQ(games[0].states.size(), 3u);
}

TEST_F(GameFilesTest, AFileThatCannotBeWrittenIsNoMatter) {
    std::filesystem::create_directory(games_file());
    clear_events();
    file_game(0, 2);
    file_game(1, 2);
    EXPECT_EQ(count_events("box"), 0);
    EXPECT_TRUE(std::filesystem::is_directory(games_file()));
}

TEST_F(GameFilesTest, OnlyWhatWasPlayedIsWritten) {
    new_game();
    set_gui_mode(TWO_PLAYERS_MODE);
    for (int i = 0; i < 6; ++i) ASSERT_EQ(make_user_move(0), 0);
    ASSERT_EQ(move_in_game_history(3), 0);
    dxp_state.match_games = 0;
    append_match_game("b", "w", "*");
    const std::vector<FiledGame> games = filed_games(games_file());
    ASSERT_EQ(games.size(), 1u);
    EXPECT_EQ(games[0].states.size(), 3u);
}

TEST_F(GameFilesTest, UncountedGamesAreTakenAway) {
    std::vector<std::string> contents;
    for (int number = 0; number < 12; ++number) {
        file_game(number, 2 + number % 3);
        contents.push_back(content_of(games_file()));
    }
    trim_match_games(12);
    EXPECT_EQ(content_of(games_file()), contents[11]);
    trim_match_games(200);
    EXPECT_EQ(content_of(games_file()), contents[11]) << "a file that tells of fewer stays";
    trim_match_games(11);
    EXPECT_EQ(content_of(games_file()), contents[10]);
    // What broke off in the middle of a game's writing.
    for (size_t bytes = 30; bytes < contents[11].size() - contents[10].size(); bytes += 7) {
        write_content(games_file(), contents[11].substr(0, contents[10].size() + bytes));
        trim_match_games(11);
        EXPECT_EQ(content_of(games_file()), contents[10]) << bytes;
    }
    trim_match_games(2);
    EXPECT_EQ(content_of(games_file()), contents[1]);
}

TEST_F(GameFilesTest, WhatIsNoMatchStaysAsItIs) {
    for (const char* const text : {"", "no games", "[Event \"Game x\"]\n*\n", "[Event \"Gala 99\"]\n*\n",
                                   "[Event \"Game 99999999999999999999\"]"}) {
        write_content(games_file(), text);
        const bool number = std::string(text).find("999999") != std::string::npos;
        trim_match_games(3);
        EXPECT_EQ(content_of(games_file()), number ? "" : text);
    }
    std::filesystem::remove(games_file());
    trim_match_games(3);
    EXPECT_FALSE(std::filesystem::exists(games_file()));
}
