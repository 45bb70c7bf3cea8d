#include <gtest/gtest.h>
#include <sys/resource.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <regex>

#include "records/fen.h"
#include "tests/cli/program.h"
#include "tests/cli/terminal.h"

namespace {

const std::string START =
    "W:W31,32,33,34,35,36,37,38,39,40,41,42,43,44,45,46,47,48,49,50:B1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,"
    "17,18,19,20";

void expect_one_line_error(const ProgramResult& result, const std::string& text) {
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.errors.find(text), std::string::npos) << result.errors;
    EXPECT_EQ(count_lines(result.errors), 1) << result.errors;
}

TEST(CliUsage, HelpIsNoError) {
    const ProgramResult result = run_program("--help");
    EXPECT_EQ(result.status, 0);
    for (const char* command : {"perft", "inspect", "search", "analyze", "pdn", "bench", "weights"}) {
        EXPECT_NE(result.output.find(command), std::string::npos) << command;
        EXPECT_EQ(run_program(std::string(command) + " --help").status, 0) << command;
    }
}

TEST(CliUsage, BadUsageEndsWithTwo) {
    for (const char* arguments :
         {"", "nonsense", "perft", "perft 0", "perft x", "search", "search W:W31:B1 --frobnicate",
          "search W:W31:B1 --time 1 --depth 3", "search W:W31:B1 --time -1", "analyze", "pdn",
          "bench --depth 99", "weights", "weights seed"}) {
        const ProgramResult result = run_program(arguments);
        EXPECT_EQ(result.status, 2) << arguments;
        EXPECT_FALSE(result.errors.empty()) << arguments;
    }
}

TEST(CliUsage, AFullDiskIsAnError) {
    expect_one_line_error(run_program("perft 2 >/dev/full"), "cannot write to standard output");
    expect_one_line_error(run_program("inspect W:W31:B1 >/dev/full"), "cannot write to standard output");
}

TEST(CliPerft, PrintsOneLineForEachDepth) {
    const ProgramResult result = run_program("perft 5");
    EXPECT_EQ(result.status, 0);
    const std::regex shape(
        "perft\\(1\\) 9 nodes, \\d+\\.\\d\\d sec, \\d+ kN/s\n"
        "perft\\(2\\) 81 nodes, [^\n]*\nperft\\(3\\) 658 nodes, [^\n]*\n"
        "perft\\(4\\) 4265 nodes, [^\n]*\nperft\\(5\\) 27117 nodes, [^\n]*\n");
    EXPECT_TRUE(std::regex_match(result.output, shape)) << result.output;
}

TEST(CliPerft, TellsHowFarItIs) {
    Terminal terminal;
    EXPECT_EQ(run_program("perft 3 2>" + terminal.path).status, 0);
    const std::string shown = terminal.read_printed();
    EXPECT_NE(shown.find("perft(3): 0 of 9 first moves, time left -\r"), std::string::npos) << shown;
    EXPECT_NE(shown.find("perft(3): 8 of 9 first moves, time left 0:00\r"), std::string::npos) << shown;
}

TEST(CliPerft, TakesAPosition) {
    const ProgramResult result = run_program("perft 2 B:W48:B5,K6");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(count_lines(result.output), 2);
    expect_one_line_error(run_program("perft 2 hello"), "not a position: hello");
    expect_one_line_error(run_program("perft 2 W:W3:B20"), "Illegal position");
}

TEST(CliInspect, DescribesThePositionInOneLine) {
    const ProgramResult result = run_program("inspect W:W31,K46:B1,10");
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(count_lines(result.output), 1);
    const nlohmann::json line = nlohmann::json::parse(result.output);
    EXPECT_EQ(line["fen"], "W:W31,K46:B1,10");
    EXPECT_EQ(line["legal"], true);
    EXPECT_EQ(line["forced"], true);
    EXPECT_EQ(line["phase"], 6);  // two black men on their own half count 2 each, a white man there too
    ASSERT_EQ(line["moves"].size(), 1u);
    EXPECT_EQ(line["moves"][0]["text"], "46x5");
    EXPECT_EQ(line["moves"][0]["full"], "46x5");
    Position position;
    int side = WHITE;
    ASSERT_EQ(fen_to_position("W:W31,K46:B1,10", position, side), 0);
    const PositionHash hash = position_hash(position, side);
    EXPECT_EQ(std::stoull(line["hash0"].get<std::string>(), nullptr, 16), hash.hash0);
    EXPECT_EQ(std::stoull(line["hash1"].get<std::string>(), nullptr, 16), hash.hash1);
    EXPECT_EQ(std::stoull(line["moves"][0]["black"].get<std::string>(), nullptr, 16), 1u);
}

TEST(CliInspect, ReadsPositionsFromStandardInput) {
    const ProgramResult result = run_program("inspect -", START + "\n\nB:W:B1\nnothing\nW:W3:B20\n");
    EXPECT_EQ(result.status, 1);
    ASSERT_EQ(count_lines(result.output), 3);
    EXPECT_EQ(count_lines(result.errors), 1);
    const nlohmann::json illegal = nlohmann::json::parse(last_line(result.output));
    EXPECT_EQ(illegal["legal"], false);
    EXPECT_TRUE(illegal["eval"].is_null());
    EXPECT_TRUE(illegal["moves"].empty());
}

TEST(CliInspect, SquaresBeyondTheBoardAreLeftOut) {
    const ProgramResult result = run_program("inspect W:W31,51,99999999999:B1");
    ASSERT_EQ(result.status, 0);
    EXPECT_EQ(nlohmann::json::parse(result.output)["fen"], "W:W31:B1");
}

TEST(CliSearch, PrintsTheLogAndTheBestMove) {
    const ProgramResult result = run_program("search " + START + " --depth 7");
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_NE(result.output.find("[FEN \"" + START + "\"]\n\n"), std::string::npos);
    EXPECT_NE(result.output.find(" b b b b b \nb b b b b \n"), std::string::npos);
    EXPECT_TRUE(std::regex_search(result.output,
                                  std::regex("\nbest \\d+-\\d+, value -?\\d+, depth 7/[\\d.]+/\\d+, ")));
    EXPECT_TRUE(std::regex_match(last_line(result.output),
                                 std::regex("best \\d+-\\d+ value -?\\d+ depth 7 nodes \\d+")))
        << result.output;
}

TEST(CliSearch, LogsThePositionWithTheSideToMove) {
    const ProgramResult result = run_program("search B:W28,32,37:B6,12,19 --depth 1");
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_NE(result.output.find("[FEN \"B:W28,32,37:B6,12,19\"]\n\n"), std::string::npos) << result.output;
}

TEST(CliSearch, TakesNoNumberThatIsNone) {
    const ProgramResult result = run_program("search " + START + " --time nan");
    EXPECT_EQ(result.status, 2);
    EXPECT_NE(result.errors.find("not a number"), std::string::npos) << result.errors;
    for (const char* const arguments : {"match a b --time nan", "train a --out b --man nan",
                                        "train a --out b --rate nan", "dxp match h --minutes nan"})
        EXPECT_EQ(run_program(arguments).status, 2) << arguments;
}

TEST(CliSearch, KeepsToTheTime) {
    const auto children_seconds = [] {
        rusage used{};
        getrusage(RUSAGE_CHILDREN, &used);
        return static_cast<double>(used.ru_utime.tv_sec) + static_cast<double>(used.ru_utime.tv_usec) * 1e-6;
    };
    // Processor time: on a busy machine everything else takes its time too.
    const double before = children_seconds();
    EXPECT_EQ(run_program("search " + START + " --time 0.1").status, 0);
    EXPECT_LT(children_seconds() - before, 2.0);
}

TEST(CliSearch, AnInterruptEndsItWithTheBestMoveSoFar) {
    const TemporaryFolder folder;
    RunningProgram program("search " + START + " --time 1000", folder.path);
    ASSERT_TRUE(program.read_until("[FEN "));
    program.interrupt();
    const ProgramResult result = program.finish();
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_TRUE(std::regex_match(last_line(result.output),
                                 std::regex("best \\d+-\\d+ value -?\\d+ depth \\d+ nodes \\d+")))
        << result.output;
}

// A game would go on at once.
TEST(CliSearch, AForcedMoveIsSearchedToo) {
    const std::string position =
        "B:W28,30,32,34,35,37,38,41,42,43,45,46:B2,5,9,10,13,15,17,19,20,21,23,24,29";
    for (const char* option : {"", " --all-scores"}) {
        const ProgramResult result = run_program("search " + position + " --depth 10" + option);
        EXPECT_NE(last_line(result.output).find("best 29x40 "), std::string::npos) << result.output;
        EXPECT_NE(last_line(result.output).find(" depth 10 "), std::string::npos) << result.output;
    }
}

TEST(CliSearch, TellsThatThereIsNoMove) {
    EXPECT_EQ(last_line(run_program("search B:W31:B").output), "best none value -4000 depth 0 nodes 0");
    EXPECT_EQ(last_line(run_program("search W:W:B1").output), "best none value 4000 depth 0 nodes 0");
    EXPECT_EQ(last_line(run_program("search W:W:B").output), "best none value 4000 depth 0 nodes 0");
    EXPECT_EQ(last_line(run_program("search W:W6:B1,11,17").output), "best none value 4000 depth 0 nodes 0");
}

TEST(CliSearch, RefusesWhatIsNoPosition) {
    expect_one_line_error(run_program("search hello"), "not a position: hello");
    expect_one_line_error(run_program("search ''"), "not a position");
    expect_one_line_error(run_program("search W:W3:B20"), "Illegal position");
    expect_one_line_error(run_program("search W:W31:B31"), "Illegal position");
}

TEST(CliPdn, CountsGamesMovesAndBreaks) {
    const TemporaryFolder folder;
    folder.write("two.pdn", "1. 32-28 19-23 2. 28x19 14x23 *\n\n[Event \"e\"]\n1. 32-28 20-15 *\n");
    folder.write("text.pdn", "*");
    folder.write("empty.pdn", "");
    const ProgramResult result = run_program("pdn two.pdn text.pdn", "", folder.path);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "two.pdn: games 2, moves 5, broken 1\ntext.pdn: games 0, moves 0, broken 0\n");
    folder.write("draws.pdn",
                 "1. 32-28 19-23 1-1\n[Event \"e\"]\n1. 32-28 1-1 {agreed}\n[Event \"e\"]\n1. 1-1 19-23 *");
    EXPECT_EQ(run_program("pdn draws.pdn", "", folder.path).output,
              "draws.pdn: games 3, moves 3, broken 1\n");
    const ProgramResult missing = run_program("pdn missing.pdn empty.pdn two.pdn", "", folder.path);
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(count_lines(missing.errors), 2);
    EXPECT_EQ(count_lines(missing.output), 1);
}

TEST(CliPdn, PrintsTheLineForm) {
    const TemporaryFolder folder;
    folder.write("game.pdn",
                 "[White \"A\"][Black \"B\"][Result \"2-0\"]{c}1. 32-28\n 19-23 2. 28x19 14x23 2-0");
    const ProgramResult result = run_program("pdn --print game.pdn", "", folder.path);
    EXPECT_EQ(result.output,
              "[Event \"\"]\n[Date \"\"]\n[White \"A\"]\n[Black \"B\"]\n[Result \"2-0\"]\n"
              "1. 32-28 19-23 2. 28x19 14x23 *\n\n");
    EXPECT_EQ(result.errors, "");
    folder.write("broken.pdn", "1. 32-28 20-15 2. 37-32 *\n1. 31-27 *");
    const ProgramResult broken = run_program("pdn --print broken.pdn", "", folder.path);
    EXPECT_EQ(broken.status, 0);
    EXPECT_EQ(broken.errors,
              "tessarin-cli: broken.pdn: 1 of 2 games are broken and end before a move that is not legal\n");
}

TEST(CliWeights, SeedWritesAWholeFile) {
    const TemporaryFolder folder;
    const ProgramResult result = run_program("weights seed --out weights.bin", "", folder.path);
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(std::filesystem::file_size(folder.path / "weights.bin"), 8503076u);
    expect_one_line_error(run_program("weights seed --out /nowhere/at/all/weights.bin"), "cannot write");
}

TEST(CliStart, TellsThatTheWeightsAreMissing) {
    const ProgramCopy copy;
    for (const char* command : {"search W:W31:B1", "inspect W:W31:B1", "bench"}) {
        const ProgramResult result = run_program(command, "", ".", copy.program);
        expect_one_line_error(result, "Cannot open weights.bin for reading");
    }
}

TEST(CliStart, PlaysWithAnEmptyOrShortWeightsFile) {
    const ProgramCopy copy;
    for (const std::string& content : {std::string(), std::string(1000, '\1')}) {
        copy.folder.write("weights.bin", content);
        const ProgramResult result = run_program("search " + START + " --depth 5", "", ".", copy.program);
        EXPECT_EQ(result.status, 0) << result.errors;
        EXPECT_EQ(last_line(result.output).substr(0, 5), "best ");
    }
}

}  // namespace
