// Where the games of an analysis go.
#include <filesystem>

#include "base/files.h"
#include "tests/control/analyze_fixture.h"

TEST_F(AnalyzeGames, TheOutputHasTheNumberOfTheCopy) {
    program_paths.instance_suffix = "[3]";
    load("32-28 *");
    analyze_game_command(false);
    run();
    EXPECT_GT(file_size(folder + "analysis[3].txt"), 0);
    EXPECT_EQ(file_size(folder + "analysis.txt"), -1);
}

TEST_F(AnalyzeGames, ANewCommandDropsTheOldOutput) {
    write_file("analysis.txt", "old");
    load("32-28 *");
    script.hold = true;
    analyze_game_command(false);
    EXPECT_EQ(file_size(folder + "analysis.txt"), -1);
    cancel_analyze_command();
    EXPECT_EQ(file_size(folder + "analysis.txt"), -1);
}

TEST_F(AnalyzeGames, AnOutputThatCannotBeWrittenEndsNothingAndIsTold) {
    program_paths.data_folder = folder + "no/such/folder/";
    analyze_pdn("32-28 * 31-27 *");
    run();
    EXPECT_EQ(searched_positions, 4);
    EXPECT_EQ(events_of("box"), Events{"box Error: The game could not be written to the file."});
    EXPECT_TRUE(answers.opened.empty());
    EXPECT_EQ(game.gui_mode, NORMAL_MODE);
    EXPECT_EQ(file_size(folder + "no/such/folder/analysis.txt"), -1);
    clear_events();
    program_paths.data_folder = folder;
    analyze_pdn("32-28 *");
    run();
    EXPECT_EQ(count_events("box"), 0) << "the next one can be written";
    EXPECT_EQ(answers.opened.size(), 1u);
}

TEST_F(AnalyzeGames, TheOutputIsNotAnalysedItself) {
    write_file("analysis.txt", "32-28 *");
    std::filesystem::create_symlink(folder + "analysis.txt", folder + "link.pdn");
    for (const char* const name : {"analysis.txt", "link.pdn"}) {
        clear_events();
        answers.load_path = folder + name;
        analyze_pdn_command(false);
        EXPECT_EQ(events_of("box"), Events{"box Error: Cannot open PDN file."}) << name;
        EXPECT_EQ(game.gui_mode, NORMAL_MODE) << name;
        EXPECT_EQ(output(), "32-28 *") << "it would be lost before it is written anew";
    }
    // Where the games go elsewhere it may be.
    analysis_output = {[] {}, [](const PdnTable&, uint32_t, int) {}, [] {}};
    analyze_pdn_command(false);
    EXPECT_EQ(game.gui_mode, ANALYZE_PDN_MODE);
    run();
    EXPECT_EQ(output(), "32-28 *");
}

TEST_F(AnalyzeGames, TheFirstGameBeginsTheOutputAfresh) {
    write_file("analysis.txt", "of another program");
    analysis_output.begin = [] {};
    load("32-28 *");
    analyze_game_command(false);
    run();
    EXPECT_TRUE(output().starts_with("[Event ")) << output();
}

TEST_F(AnalyzeGames, TheOutputIsTheGames) {
    std::mt19937 random(51);
    std::vector<std::vector<ReplayState>> games;
    for (int i = 0; i < 20; ++i) {
        games.push_back(random_game(random, 30, i % 3 != 0));
        set_game(games.back());
        save_game_to_file(folder + "random.pdn", users_history(), game.headers);
    }
    PdnTable real;
    ASSERT_EQ(pdn_read_file(TEST_DATA "/games/loi20.pdn", real), 0);
    bool broken = false;
    for (int i = 0; i < pdn_game_count(real); ++i)
        games.push_back(replay(real[static_cast<size_t>(i)].get(), broken));
    write_file("all.pdn", content_of(folder + "random.pdn") + content_of(TEST_DATA "/games/loi20.pdn"));
    answers.load_path = folder + "all.pdn";
    analyze_pdn_command(false);
    run();
    PdnTable written;
    ASSERT_EQ(pdn_read_file(folder + "analysis.txt", written), 0);
    ASSERT_EQ(pdn_game_count(written), static_cast<int>(games.size()));
    for (size_t i = 0; i < games.size(); ++i) {
        const std::vector<ReplayState> read = replay(written[i].get(), broken);
        ASSERT_FALSE(broken) << i;
        ASSERT_EQ(read.size(), games[i].size()) << i;
        for (size_t entry = 0; entry < read.size(); ++entry) expect_same_state(games[i][entry], read[entry]);
        int comments = 0;
        // The dots in front of a first move of black's read as a comment too.
        for (const PdnNode* node = written[i].get(); node; node = node->next)
            comments += node->kind == PDN_COMMENT && node->token.text[0] == '{';
        EXPECT_EQ(comments, static_cast<int>(games[i].size())) << "one for each position of game " << i;
    }
}
