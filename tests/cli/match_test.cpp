#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <regex>

#include "core/ballots.h"
#include "core/board.h"
#include "records/fen.h"
#include "tests/base/run_command.h"
#include "tests/cli/program.h"
#include "tests/cli/terminal.h"
#include "tools/book_file.h"

namespace {

using nlohmann::json;

constexpr size_t PARAMS_AT = 8503056;  // the scalar weights in the file

// Two weights files that play differently: the second likes to stand far ahead.
class CliMatch : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        folder = std::make_unique<TemporaryFolder>();
        ASSERT_EQ(run_program("weights seed --out a.bin", "", folder->path).status, 0);
        std::string bytes = read_text(folder->path / "a.bin");
        for (const size_t at : {PARAMS_AT + 4, PARAMS_AT + 6}) bytes[at] = static_cast<char>(bytes[at] + 30);
        folder->write("b.bin", bytes);
    }
    static void TearDownTestSuite() { folder.reset(); }

    static ProgramResult run(const std::string& arguments) {
        return run_program(arguments, "", folder->path);
    }

    // The answer in JSON without what depends on the speed of the machine.
    static json match(const std::string& arguments) {
        const ProgramResult result = run("match --json --hash 1 " + arguments);
        EXPECT_EQ(result.status, 0) << result.errors;
        EXPECT_EQ(count_lines(result.output), 1) << result.output;
        json answer = json::parse(result.output, nullptr, false);
        if (answer.is_discarded()) return {};
        for (json& player : answer["players"]) player.erase("kilonodes_per_second");
        return answer;
    }

    static std::unique_ptr<TemporaryFolder> folder;
};
std::unique_ptr<TemporaryFolder> CliMatch::folder;

TEST_F(CliMatch, TellsTheResultInOneLineAndTheWorkInTwo) {
    const ProgramResult result = run("match a.bin b.bin --games 7 --depth 2 --hash 1");
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(result.errors.empty()) << result.errors;
    const std::regex shape(
        "games 8, wins \\d+, draws \\d+, losses \\d+, score \\d+\\.\\d\\d%, "
        "Elo [+-][\\d.inf]+ \\+- [\\d.inf]+, LOS \\d+\\.\\d%\n"
        "A /.*/a\\.bin: \\d+ nodes a move, depth 2\\.\\d\\d, \\d+ kN/s\n"
        "B /.*/b\\.bin: \\d+ nodes a move, depth 2\\.\\d\\d, \\d+ kN/s\n");
    EXPECT_TRUE(std::regex_match(result.output, shape)) << result.output;
}

TEST_F(CliMatch, TheSeedDecidesTheGamesWhateverTheJobs) {
    const std::string arguments = "a.bin b.bin --games 12 --nodes 2000 ";
    const json answer = match(arguments);
    EXPECT_EQ(answer["games"], 12);
    EXPECT_EQ(answer["wins"].get<int>() + answer["draws"].get<int>() + answer["losses"].get<int>(), 12);
    EXPECT_EQ(match(arguments), answer);
    EXPECT_EQ(match(arguments + "--jobs 2"), answer);
    EXPECT_EQ(match(arguments + "--jobs 3"), answer);
    EXPECT_NE(match(arguments + "--seed 2"), answer);
    EXPECT_NE(match(arguments + "--openings 2"), answer);
}

TEST_F(CliMatch, EndingsWithADatabaseForOneSideOrBoth) {
    ASSERT_EQ(run("egdb build db --pieces 3").status, 0);
    const std::string arguments = "a.bin a.bin --games 24 --nodes 2000 --endings 4 ";
    const json none = match(arguments);
    EXPECT_EQ(none["wins"], none["losses"]);
    const json a = match(arguments + "--egdb-a db"), b = match(arguments + "--egdb-b db");
    EXPECT_NE(a["players"][0]["nodes"], none["players"][0]["nodes"]);
    EXPECT_EQ(a["wins"], b["losses"]);
    EXPECT_EQ(a["losses"], b["wins"]);
    EXPECT_GE(a["score"].get<double>(), 0.5);
    const json both = match(arguments + "--egdb-a db --egdb-b db");
    EXPECT_EQ(both["wins"], both["losses"]);
    EXPECT_NE(match(arguments + "--seed 2"), none);
    for (const char* folder_name : {"nowhere", "."}) {
        const ProgramResult result =
            run("match a.bin a.bin --games 2 --depth 1 --egdb-b " + std::string(folder_name));
        EXPECT_EQ(result.status, 1) << folder_name;
        EXPECT_FALSE(result.errors.empty());
    }
}

TEST_F(CliMatch, TheOtherWayRoundItIsTheMirrorImage) {
    const json one = match("a.bin b.bin --games 20 --nodes 2000"),
               other = match("b.bin a.bin --games 20 --nodes 2000");
    EXPECT_EQ(one["wins"], other["losses"]);
    EXPECT_EQ(one["losses"], other["wins"]);
    EXPECT_EQ(one["plies"], other["plies"]);
    EXPECT_EQ(one["players"][0], other["players"][1]);
    EXPECT_NE(one["players"][0]["nodes"], one["players"][1]["nodes"]);  // each has its own weights
    std::vector<int> pairs = other["pairs"];
    std::reverse(pairs.begin(), pairs.end());
    EXPECT_EQ(one["pairs"], json(pairs));
}

TEST_F(CliMatch, OneAgainstItselfIsEven) {
    const json answer = match("a.bin a.bin --games 20 --depth 3");
    EXPECT_EQ(answer["pairs"], json({0, 0, 10, 0, 0}));
    EXPECT_EQ(answer["elo"], 0);
    EXPECT_EQ(answer["players"][0]["moves"], answer["players"][1]["moves"]);
}

TEST_F(CliMatch, SharesMakeUpTheWhole) {
    const std::string arguments = "a.bin b.bin --games 14 --depth 3 ";
    const json whole = match(arguments);
    int64_t games = 0, wins = 0, plies = 0;
    for (const auto& [share, expected] : {std::pair{"1/3", 6}, {"2/3", 4}, {"3/3", 4}}) {
        const json part = match(arguments + "--share " + share);
        EXPECT_EQ(part["games"], expected);
        games += part["games"].get<int64_t>();
        wins += part["wins"].get<int64_t>();
        plies += part["plies"].get<int64_t>();
    }
    EXPECT_EQ(games, whole["games"]);
    EXPECT_EQ(wins, whole["wins"]);
    EXPECT_EQ(plies, whole["plies"]);
}

TEST_F(CliMatch, TheTestEndsTheMatch) {
    // A weights file without values knows no men, and loses to one that does.
    folder->write("zero.bin", std::string(8503076, '\0'));
    const json better = match("a.bin zero.bin --games 2000 --depth 2 --sprt 0,200");
    EXPECT_EQ(better["sprt"]["verdict"], "elo1");
    EXPECT_GT(better["sprt"]["llr"], 2.94);
    EXPECT_LT(better["games"], 1000);
    EXPECT_EQ(match("zero.bin a.bin --games 2000 --depth 2 --sprt 0,200")["sprt"]["verdict"], "elo0");
    EXPECT_EQ(match("a.bin b.bin --games 2 --depth 2 --sprt 0,5")["sprt"]["verdict"], "open");
    const ProgramResult text = run("match a.bin b.bin --games 2 --depth 2 --sprt 0,5");
    EXPECT_TRUE(
        std::regex_search(text.output, std::regex("\nSPRT 0,5: LLR -?[\\d.]+ of -2\\.94 to 2\\.94, open\n")))
        << text.output;
}

TEST_F(CliMatch, GamesCanBePlayedOut) {
    const json early = match("a.bin a.bin --games 20 --depth 3");
    const json late = match("a.bin a.bin --games 20 --depth 3 --no-adjudicate");
    EXPECT_GT(early["ends"]["adjudicated"], 0);
    EXPECT_EQ(late["ends"]["adjudicated"], 0);
    EXPECT_GT(late["plies"], early["plies"]);
    for (const json& answer : {early, late}) {
        int ends = 0;
        for (const json& count : answer["ends"]) ends += count.get<int>();
        EXPECT_EQ(ends, 20);
    }
}

TEST_F(CliMatch, KeepsToTheTime) {
    const json answer = match("a.bin b.bin --games 2 --time 0.002");
    EXPECT_EQ(answer["games"], 2);
    EXPECT_GT(answer["players"][0]["depth"], 4);
}

TEST_F(CliMatch, TellsTheStateWhenAskedTo) {
    const ProgramResult result = run("match a.bin a.bin --games 200 --depth 1 --hash 1 --jobs 2 --verbose");
    EXPECT_EQ(count_lines(result.errors), 2) << result.errors;
    EXPECT_EQ(result.errors.substr(0, 10), "games 100,");
}

TEST_F(CliMatch, AMoveFromTheBookTakesNoSearch) {
    Position start = START_POSITION;
    start.side = WHITE;
    BookFileFigures figures;
    ASSERT_EQ(write_book((folder->path / "start.odb").string(), {{{start, 0, NO_BOOK_MOVE, 0}}}, figures), 0);
    const std::string arguments = "a.bin a.bin --games 2 --depth 2 --openings 0 ";
    const json none = match(arguments), one = match(arguments + "--book-a start.odb");
    EXPECT_EQ(none["players"][0]["depth"], 2);
    EXPECT_LT(one["players"][0]["depth"], 2);
    EXPECT_EQ(one["players"][1]["depth"], 2);
}

TEST_F(CliMatch, TellsWhatIsWrong) {
    folder->write("short.bin", "abc");
    for (const auto& [arguments, text] :
         {std::pair{"match a.bin missing.bin --games 2", "cannot open "},
          {"match . a.bin", "cannot open "},
          {"match a.bin a.bin --book-b none.odb", "cannot open "},
          {"match short.bin a.bin --games 2", "is no weights file: 3 bytes, not 8503076"}}) {
        const ProgramResult result = run(arguments);
        EXPECT_EQ(result.status, 1) << arguments;
        EXPECT_EQ(count_lines(result.errors), 1) << result.errors;
        EXPECT_NE(result.errors.find(text), std::string::npos) << result.errors;
        EXPECT_TRUE(result.output.empty());
    }
    for (const char* arguments :
         {"match", "match a.bin", "match a.bin b.bin --nodes 10 --depth 3",
          "match a.bin b.bin --time 1 --depth 3", "match a.bin b.bin --share 0/3",
          "match a.bin b.bin --share 4/3", "match a.bin b.bin --share 2", "match a.bin b.bin --share 1/2x",
          "match a.bin b.bin --sprt 5", "match a.bin b.bin --sprt 5,5", "match a.bin b.bin --openings 4",
          "match a.bin b.bin --endings 5", "match a.bin b.bin --endings 6 --openings 2",
          "match a.bin b.bin --games 0", "match a.bin b.bin --jobs 0"}) {
        const ProgramResult result = run(arguments);
        EXPECT_EQ(result.status, 2) << arguments;
        EXPECT_FALSE(result.errors.empty()) << arguments;
    }
}

// Runs a match that would take hours, does something to it when its players play, and waits for its end; the
// status is 9 if that comes before.
ProgramResult disturbed_match(const TemporaryFolder& folder, const std::string& disturbance) {
    folder.write(
        "script",
        quoted(PROGRAM) +
            " match a.bin b.bin --time 0.1 --hash 1 &\n"
            "match=$!\n"
            "players() { cat /proc/$match/task/*/children; }\n"
            "while set -- $(players); [ $# -lt 2 ]; do kill -0 $match || exit 9; sleep 0.05; done\n" +
            disturbance + "\nwait $match\n");
    return run_program("script", "", folder.path, "/bin/sh");
}

TEST_F(CliMatch, APlayerThatDiesEndsTheMatch) {
    const ProgramResult result = disturbed_match(*folder, "kill -9 $2");
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(std::regex_match(
        result.errors, std::regex("tessarin-cli: player B \\(/.*/b\\.bin\\) ended with status 137\n")))
        << result.errors;
    EXPECT_TRUE(result.output.empty());
}

// What was played before it stands.
TEST_F(CliMatch, APlayerThatDiesLeavesTheResults) {
    Terminal terminal;
    RunningProgram program("match a.bin b.bin --depth 1 --hash 1 --games 1000000 2>" + terminal.path,
                           folder->path);
    ASSERT_TRUE(terminal.wait_for("games "));
    const std::string children = "/proc/" + std::to_string(program.child.pid) + "/task/*/children";
    EXPECT_EQ(run_program("-c 'set -- $(cat " + children + "); kill -9 $1'", "", folder->path, "sh").status,
              0);
    const ProgramResult result = program.finish();
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output.substr(0, 6), "games ");
    EXPECT_NE(terminal.read_printed().find("ended with status 137"), std::string::npos);
}

TEST_F(CliMatch, AnInterruptedMatchTellsWhatItHas) {
    const ProgramResult result = disturbed_match(*folder, "kill -INT $match");
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_TRUE(result.errors.empty()) << result.errors;
    EXPECT_EQ(result.output.substr(0, 6), "games ");
}

// On a terminal the interrupt goes to all of them.
TEST_F(CliMatch, ItsPlayersLeaveTheInterruptToIt) {
    const ProgramResult result = disturbed_match(
        *folder,
        "for player; do\n"
        "for i in $(seq 200); do grep -q '^SigIgn:.*[2367abef]$' /proc/$player/status && break; sleep 0.05; done\n"
        "kill -INT $player\n"
        "done\n"
        "sleep 0.3\n"
        "kill -INT $match");
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
}

// Its players are held up, so that it cannot end by itself; more than two interrupts, as those that come
// close together count as one.
TEST_F(CliMatch, ASecondInterruptEndsItAtOnce) {
    const ProgramResult result =
        disturbed_match(*folder,
                        "kill -STOP $1 $2\n"
                        "for i in 1 2 3 4 5 6 7 8 9; do kill -INT $match; sleep 0.1; done\n"
                        "kill -CONT $1 $2");
    EXPECT_EQ(result.status, 130) << result.errors;
    EXPECT_EQ(result.output, "");
}

TEST(CliPlayer, AnswersQuestions) {
    const TemporaryFolder folder;
    ASSERT_EQ(run_program("weights seed --out a.bin", "", folder.path).status, 0);
    const ProgramResult result =
        run_program("player --weights a.bin --depth 4", "new\ngo 1 1ffbff 3ff7fe00000000 0\n", folder.path);
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_TRUE(
        std::regex_match(result.output, std::regex("ready\nmove 1ffbff [0-9a-f]+ 0 -?\\d+ [45] \\d+ \\d+\n")))
        << result.output;
    const ProgramResult wrong = run_program("player --weights a.bin", "what\n", folder.path);
    EXPECT_EQ(wrong.status, 1);
    EXPECT_NE(wrong.errors.find("not a question to a player: what"), std::string::npos);
    EXPECT_EQ(run_program("player --weights none.bin", "", folder.path).status, 1);
    const ProgramResult book = run_program("player --weights a.bin --book none.odb", "", folder.path);
    EXPECT_EQ(book.status, 1);
    EXPECT_NE(book.errors.find("cannot read the book none.odb"), std::string::npos) << book.errors;
    EXPECT_EQ(run_program("--help").output.find("player"), std::string::npos);
}

TEST(CliBallots, PrintsTheStartPositions) {
    for (const int moves : {2, 3}) {
        const ProgramResult result = run_program("ballots " + std::to_string(moves));
        EXPECT_EQ(result.status, 0);
        std::istringstream lines(result.output);
        std::string line;
        int count = 0;
        for (Ballot ballot; std::getline(lines, line); ++count) {
            Position position;
            int side = 0;
            ASSERT_EQ(fen_to_position(line.c_str(), position, side), 0) << line;
            ASSERT_TRUE(find_ballot(moves, count, ballot));
            EXPECT_TRUE(same_pieces(position, ballot.position)) << line;
            EXPECT_EQ(side, ballot.position.side);
        }
        EXPECT_EQ(count, ballot_count(moves));
    }
    EXPECT_EQ(last_line(run_program("ballots 2 --moves").output).substr(0, 2), "W:");
    EXPECT_NE(run_program("ballots 3 --moves").output.find("  32-28 19-23 28x19\n"), std::string::npos);
    for (const char* arguments : {"ballots", "ballots 1", "ballots 4", "ballots x"})
        EXPECT_EQ(run_program(arguments).status, 2) << arguments;
}

}  // namespace
