#include <gtest/gtest.h>

#include <regex>
#include <vector>

#include "records/pdn_game.h"
#include "tests/base/run_command.h"
#include "tests/cli/program.h"
#include "tests/cli/terminal.h"

namespace {

const std::string TWO_GAMES =
    "[Event \"First\"]\n[Result \"*\"]\n1. 32-28 19-23 2. 28x19 14x23 *\n\n"
    "[Event \"Second\"]\n[FEN \"B:W48,49,50:B1,2,3\"]\n1. ... 1-6 2. 48-42 /FEN \"W:W31:B20\"/ 3. 31-27 *\n";

// Kinds of the nodes of one game, as letters.
std::string kinds(const PdnNode* node) {
    std::string text;
    for (; node; node = node->next) {
        const char* const letters = "hcn****m.f";
        text += letters[node->kind];
    }
    return text;
}

int count_of(const std::string& text, char wanted) {
    return static_cast<int>(std::count(text.begin(), text.end(), wanted));
}

TEST(CliAnalyze, PutsACommentBehindEveryMove) {
    const TemporaryFolder folder;
    folder.write("games.pdn", TWO_GAMES);
    const ProgramResult result = run_program("analyze games.pdn --time 0.01", "", folder.path);
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_TRUE(result.errors.empty()) << result.errors;  // no progress line where nobody sees it

    PdnTable games;
    ASSERT_EQ(pdn_parse_games(result.output.c_str(), games), 0);
    ASSERT_EQ(pdn_game_count(games), 2);
    // One search for each move's position and one for the last position.
    EXPECT_EQ(kinds(games[0].get()).substr(0, 10), "hhmcmcmcmc");
    // The comment on the position before the set-up one stays with the move that led there.
    EXPECT_EQ(count_of(kinds(games[1].get()), 'm'), 3);
    const std::regex comment(
        "\\{value[=<>]-?\\d+,  depth \\d+/[\\d.]+/\\d+,  [\\d.]+ sec,  \\d+ kN/s,  pv [^}]*\\}");
    const std::ptrdiff_t comments = std::distance(
        std::sregex_iterator(result.output.begin(), result.output.end(), comment), std::sregex_iterator());
    EXPECT_EQ(comments, 5 + 5) << result.output;
    EXPECT_NE(result.output.find("1. ...\n   1-6 {"), std::string::npos) << result.output;
    EXPECT_NE(result.output.find("/FEN \"W:W31:B20\"/\n"), std::string::npos);
}

TEST(CliAnalyze, NeverWritesOverTheGames) {
    const TemporaryFolder folder;
    folder.write("games.pdn", TWO_GAMES);
    std::filesystem::create_symlink("games.pdn", folder.path / "link.pdn");
    for (const std::string output : {"games.pdn", "./games.pdn", "link.pdn"}) {
        const ProgramResult result =
            run_program("analyze games.pdn --time 0.01 --output " + output, "", folder.path);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.errors, "tessarin-cli: the analysis of games.pdn cannot take its place\n");
        EXPECT_EQ(read_text(folder.path / "games.pdn"), TWO_GAMES);
    }
}

TEST(CliAnalyze, WritesToAFileWhateverTheCurrentFolder) {
    const TemporaryFolder folder;
    folder.write("games.pdn", "1. 32-28 *");
    const ProgramResult result =
        run_program("analyze games.pdn --time 0.01 --output out.txt", "", folder.path);
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_TRUE(result.output.empty());
    const std::string text = read_text(folder.path / "out.txt");
    EXPECT_EQ(text.substr(0, 9), "1. 32-28 ");
    EXPECT_EQ(text.substr(text.size() - 5), "\n*\n\n\n");
}

TEST(CliAnalyze, AGameThatBreaksEndsThere) {
    const TemporaryFolder folder;
    folder.write("broken.pdn", "1. 32-28 20-15 2. 37-32 *\n\n[Event \"next\"]\n1. 32-28 *");
    const ProgramResult result = run_program("analyze broken.pdn --time 0.01", "", folder.path);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(count_of(result.output, '{'), 3 + 2) << result.output;
    EXPECT_NE(result.output.find("[Event \"next\"]"), std::string::npos);
    EXPECT_NE(result.errors.find("broken.pdn: 1 of 2 games are broken"), std::string::npos) << result.errors;
}

TEST(CliAnalyze, TellsWhatIsWrong) {
    const TemporaryFolder folder;
    folder.write("empty.pdn", "");
    folder.write("none.pdn", "* *");
    folder.write("games.pdn", "1. 32-28 *");
    for (const char* arguments : {"analyze missing.pdn", "analyze empty.pdn", "analyze none.pdn", "analyze .",
                                  "analyze games.pdn --output /nowhere/at/all.txt"}) {
        const ProgramResult result = run_program(arguments, "", folder.path);
        EXPECT_EQ(result.status, 1) << arguments;
        EXPECT_EQ(count_lines(result.errors), 1) << arguments << ": " << result.errors;
        EXPECT_TRUE(result.output.empty());
    }
}

TEST(CliAnalyze, AnInterruptEndsItWithWhatIsDone) {
    const TemporaryFolder folder;
    folder.write("games.pdn", "[FEN \"W:W32:B27\"] 32x21 * [Event \"long\"] 32-28 *");
    // The first game has one search, of a move that is forced; the next would take for ever.
    RunningProgram program("analyze games.pdn --time 1000 --output out.txt", folder.path);
    ASSERT_TRUE(wait_for_text(folder.path / "out.txt", "}\n*\n\n\n"));
    program.interrupt();
    const ProgramResult result = program.finish();
    EXPECT_EQ(result.status, 1) << result.errors;
    EXPECT_EQ(result.errors, "");
    const std::string text = read_text(folder.path / "out.txt");
    EXPECT_TRUE(text.starts_with("[FEN \"W:W32:B27\"]\n1. 32x21 {")) << text;
    EXPECT_EQ(text.find("long"), std::string::npos) << "the game in progress is not written";
}

// The analysis of before gives way to the first game of the new one, not to its beginning.
TEST(CliAnalyze, AnEarlierAnalysisStandsUntilThereIsANewOne) {
    const TemporaryFolder folder;
    folder.write("games.pdn", "[Event \"long\"] 32-28 *");
    folder.write("out.txt",
                 "an earlier analysis of more bytes than the new one will have, all of them kept\n");
    const std::string earlier = read_text(folder.path / "out.txt");
    {
        Terminal terminal;
        RunningProgram program("analyze games.pdn --time 1000 --output out.txt 2>" + terminal.path,
                               folder.path);
        ASSERT_TRUE(terminal.wait_for("position 1 of 2"));
        program.interrupt();
        EXPECT_EQ(program.finish().status, 1);
    }
    EXPECT_EQ(read_text(folder.path / "out.txt"), earlier);
    EXPECT_EQ(run_program("analyze games.pdn --time 0.01 --output out.txt", "", folder.path).status, 0);
    EXPECT_TRUE(read_text(folder.path / "out.txt").starts_with("[Event \"long\"]\n1. 32-28 "));
}

TEST(CliAnalyze, LeavesTheAnalysisOfTheProgramAlone) {
    const TemporaryFolder folder;
    folder.write("games.pdn", "1. 32-28 *");
    const std::string command = "env XDG_DATA_HOME=" + quoted(folder.path / "data") + " " + quoted(PROGRAM) +
                                " analyze games.pdn --time 0.01";
    const ProgramResult result = run_program("-c " + quoted(command), "", folder.path, "sh");
    EXPECT_EQ(result.status, 0) << result.errors;
    int files = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path / "data"))
        files += entry.path().filename().string().starts_with("analysis");
    EXPECT_EQ(files, 0);
}

TEST(CliAnalyze, OutputThatCannotBeWrittenIsTold) {
    const TemporaryFolder folder;
    folder.write("games.pdn", "1. 32-28 * 31-27 *");
    const ProgramResult result =
        run_program("analyze games.pdn --time 0.01 --output /dev/full", "", folder.path);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(count_lines(result.errors), 1) << result.errors;
}

}  // namespace
