// The game on the terminal, played by scripts.
#include <gtest/gtest.h>

#include <chrono>
#include <vector>

#include "records/pdn_game.h"
#include "tests/base/run_command.h"
#include "tests/cli/program.h"

namespace {

class CliPlay : public testing::Test {
  protected:
    TemporaryFolder folder;

    ProgramResult play(const std::string& script, const std::string& options = "--time 0.02 --quiet") const {
        // Without the book, so that the engine searches from the first move on.
        const std::string book = options.find("--book") == std::string::npos ? "--book off " : "";
        return run_program("play --hash 4 " + book + options, script, folder.path);
    }
};

// The lines that begin with the text.
std::vector<std::string> lines_with(const std::string& text, const std::string& start) {
    std::vector<std::string> found;
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find('\n', at), text.size());
        if (text.compare(at, start.size(), start) == 0) found.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return found;
}

// Asks what the engine is doing until the answer has the text, which another question brings to its end.
bool ask_until(RunningProgram& program, const std::string& text) {
    for (;;) {
        const size_t before = program.output.size();
        if (!program.type("status\nfen") || !program.read_until(":W")) return false;
        if (program.output.find(text, before) != std::string::npos) return true;
    }
}

int moves_of(const PdnNode* node) {
    int moves = 0;
    for (; node; node = node->next) moves += node->kind == PDN_MOVE;
    return moves;
}

TEST_F(CliPlay, AnswersEachMoveAndEndsWithTheScript) {
    const ProgramResult result = play("setup W:W32,37,46:B1,12,19\n32-28\n37-32\n");
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(lines_with(result.output, "engine ").size(), 2u) << result.output;
    EXPECT_GE(lines_with(result.output, "value").size(), 2u) << "with the text of each search";
}

TEST_F(CliPlay, TheEndOfAGameOfTheEngineIsTold) {
    const ProgramResult over = play("setup W:W32:B28\nmode autoplay\n", "--time 0.01 --quiet --no-egdb");
    EXPECT_EQ(lines_with(over.output, "Game over").size(), 1u) << over.output;
    EXPECT_GT(over.output.find("Game over"), over.output.find("engine 32x23")) << over.output;
    const ProgramResult draw =
        play("setup W:WK31,K35,K41:BK3\nmode autoplay\n", "--time 0.01 --quiet --no-egdb");
    EXPECT_EQ(lines_with(draw.output, "Draw declared").size(), 1u) << draw.output;
}

// The engine's list has one of the ways.
TEST_F(CliPlay, ACaptureMayBeTypedEitherWayRound) {
    for (const char* typed : {"27x36x47x38x27", "27x38x47x36x27"}) {
        const ProgramResult result =
            play("setup W:W27:B9,11,28,31,32,41,42\nmode twoplayers\n" + std::string(typed) + "\nfen\n");
        EXPECT_EQ(lines_with(result.output, "B:W27:B9,11").size(), 1u)
            << typed << result.output << result.errors;
    }
    const std::string kings = "setup W:WK8:B7,10,11,K12,20,23,32,33,K37,40,44\nmode twoplayers\n";
    EXPECT_EQ(play(kings + "8x21x38x29x15x4\n").errors, "");
    for (const char* typed : {"8x21x38x29x15x5", "8x21x38x29x4", "9x21x38x29x15x4", "8x21x38x28x15x4"})
        EXPECT_NE(play(kings + typed + "\n").errors.find("not a legal move"), std::string::npos) << typed;
}

TEST_F(CliPlay, TheLastMoveIsAnsweredBehindTheEnd) {
    const ProgramResult result = play("32-28", "--time 0.3 --quiet");
    EXPECT_EQ(lines_with(result.output, "engine ").size(), 1u) << result.output;
    EXPECT_EQ(play("").output, "") << "and without lines nothing happens";
}

TEST_F(CliPlay, PrintsTheBoard) {
    const ProgramResult result = play("mode twoplayers\n32-28\n", "");
    EXPECT_NE(result.output.find("\n   b   b   b   b   b    1- 5\n b   b   b   b   b      6-10\n"),
              std::string::npos);
    EXPECT_NE(result.output.find("\n   .   .   .   .   .   21-25\n .   .   w   .   .     26-30\n"
                                 "   w   .   w   w   w   31-35\n"),
              std::string::npos)
        << result.output;
    EXPECT_EQ(lines_with(result.output, "black to move").size(), 1u);
    const ProgramResult kings = play("setup B:WK46,6:BK1\nboard\n");
    EXPECT_EQ(lines_with(kings.output, "   B   .   .   .   .    1- 5").size(), 1u);
    EXPECT_EQ(lines_with(kings.output, " w   .   .   .   .      6-10").size(), 1u);
    EXPECT_EQ(lines_with(kings.output, " W   .   .   .   .     46-50").size(), 1u);
}

TEST_F(CliPlay, MovesThatNeedTheirPath) {
    const std::string start = "mode twoplayers\nsetup W:WK3,26:B9,K19,21,24\nmoves\n";
    const ProgramResult ambiguous = play(start + "3x16\nfen\n");
    EXPECT_EQ(ambiguous.status, 1);
    EXPECT_EQ(ambiguous.errors, "tessarin-cli: more than one capture: 3x14x32x16 3x20x38x16\n");
    EXPECT_EQ(lines_with(ambiguous.output, "3x14x32x16 3x20x38x16").size(), 1u);
    EXPECT_EQ(lines_with(ambiguous.output, "W:W").size(), 1u) << "nothing was played";
    for (const char* path : {"3x14x32x16", "3-14-32-16", " 3 x 20 x 38 x 16 "}) {
        const ProgramResult result = play(start + path + "\nfen\n");
        EXPECT_EQ(result.status, 0) << result.errors;
        EXPECT_EQ(lines_with(result.output, "B:W").size(), 1u) << result.output;
    }
}

TEST_F(CliPlay, TellsWhatIsWrongAndGoesOn) {
    const ProgramResult result = play(
        "mode twoplayers\n32-27x\n32-99\n20-25\n31-27 18-23\nno such thing\nback\ngo\nstop\ncancel\nsetup nonsense\n"
        "setup W:W1:B2\ntime -1\ntime soon\nmode chess\nbook some\nload nowhere.pdn\nload\npaste nowhere\nforward\n"
        "copy all\nclock 5\nclock 5 x\nponder maybe\nanalyze\nsave /no/such/folder/x.pdn\n# a remark\n\nmode twoplayers\n32-28\nfen\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(count_lines(result.errors), 24) << result.errors;
    EXPECT_EQ(lines_with(result.errors, "tessarin-cli: ").size(), 24u);
    EXPECT_NE(result.errors.find("no such mode: chess"), std::string::npos);
    EXPECT_NE(result.errors.find("Cannot open file for reading"), std::string::npos);
    EXPECT_NE(result.errors.find("Cannot open file for appending."), std::string::npos);
    EXPECT_EQ(lines_with(result.output, "B:W28,").size(), 1u) << result.output;
    EXPECT_NE(result.output.find("Info: There are no moves in the current game."), std::string::npos);
}

TEST_F(CliPlay, StepsThroughTheGame) {
    const ProgramResult result = play(
        "mode twoplayers\n32-28\n19-23\n28x19\n14x23\nback 3\nfen\nforward\nfen\nstart\nfen\nend\nfen\n"
        "back\n13x24\ngame\nnew\nfen\nside\nfen\n");
    EXPECT_EQ(result.status, 0) << result.errors;
    const std::vector<std::string> black = lines_with(result.output, "B:W");
    const std::vector<std::string> white = lines_with(result.output, "W:W");
    EXPECT_EQ(black.size(), 2u) << result.output;
    EXPECT_EQ(white.size(), 4u) << result.output;
    EXPECT_NE(result.output.find("1. 32-28  19-23  \n2. 28x19  13x24\n"), std::string::npos);
}

TEST_F(CliPlay, SavesAndLoads) {
    const ProgramResult saved = play(
        "mode twoplayers\nheader White Me and you\nheader Result 1-0\nheader\n32-28\n19-23\nsave my games.pdn\nnew\n"
        "setup B:W31:B1\n1-6\nsave my games.pdn\n");
    EXPECT_EQ(saved.status, 0) << saved.errors;
    EXPECT_EQ(lines_with(saved.output, "Event \"\" Date \"2").size(), 1u) << saved.output;
    PdnTable games;
    ASSERT_EQ(pdn_read_file((folder.path / "my games.pdn").string(), games), 0);
    ASSERT_EQ(pdn_game_count(games), 2);
    const std::string text = read_text(folder.path / "my games.pdn");
    EXPECT_NE(text.find("[White \"Me and you\"]\n[Black \"\"]\n[Result \"2-0\"]\n1. 32-28 19-23 *\n\n[Event"),
              std::string::npos)
        << text;
    EXPECT_TRUE(text.ends_with("[FEN \"B:W31:B1\"]\n1. ... 1-6 *\n\n"));

    const ProgramResult loaded = play(
        "load my games.pdn\nload my games.pdn 3\nload my games.pdn 2\nfen\ngame\n"
        "load my games.pdn 1\ngame\n");
    EXPECT_EQ(loaded.status, 1);
    EXPECT_EQ(loaded.errors, "tessarin-cli: there are 2 games\n");
    EXPECT_EQ(lines_with(loaded.output, "    1 [Event").size(), 1u) << loaded.output;
    EXPECT_EQ(lines_with(loaded.output, "W:W31:B6").size(), 1u);
    EXPECT_NE(loaded.output.find("FEN\n1. ... 1-6\n"), std::string::npos);
    EXPECT_NE(loaded.output.find("1. 32-28  19-23\n"), std::string::npos);
}

TEST_F(CliPlay, CopiesAndPastes) {
    folder.write("text", "32-28 18-23 *");
    const ProgramResult result =
        play("mode twoplayers\n32-28\ncopy\ncopy position\nnew\npaste\nfen\npaste text\ngame\n");
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(lines_with(result.output, "Game to clipboard: [Event").size(), 1u) << result.output;
    EXPECT_EQ(lines_with(result.output, "Position to clipboard: [FEN \"B:W28,").size(), 1u);
    EXPECT_EQ(lines_with(result.output, "B:W28,31,33").size(), 1u);
    EXPECT_EQ(lines_with(result.output, "1. 32-28  18-23").size(), 1u);
}

TEST_F(CliPlay, AutoplayGoesOnToTheEndOfTheGame) {
    const ProgramResult result =
        play("setup W:W31,36,37:B15,20,24\nmode autoplay\nsave game.pdn\n", "--time 0.01 --quiet");
    EXPECT_EQ(result.status, 0) << result.errors;
    const size_t moves = lines_with(result.output, "engine ").size();
    EXPECT_GT(moves, 4u) << result.output;
    PdnTable games;
    ASSERT_EQ(pdn_read_file((folder.path / "game.pdn").string(), games), 0);
    EXPECT_EQ(moves_of(games[0].get()), static_cast<int>(moves)) << "the line behind it waited for the end";
}

TEST_F(CliPlay, StopHasTheEngineMoveNow) {
    const auto start = std::chrono::steady_clock::now();
    const ProgramResult result = play("32-28\nsleep 0.05\nstop\n", "--time 1000 --quiet");
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(lines_with(result.output, "engine ").size(), 1u);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(300));
}

TEST_F(CliPlay, AnEndlessTimeEndsWithTheScript) {
    const ProgramResult result = play("time infinite\n32-28\n", "--quiet");
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(lines_with(result.output, "engine ").size(), 1u);
    RunningProgram analysis("play --hash 4 --book off --quiet", folder.path);
    for (const char* line : {"time infinite", "mode analysis"}) ASSERT_TRUE(analysis.type(line));
    EXPECT_TRUE(ask_until(analysis, "value")) << "the text of the search, which goes on";
    const ProgramResult ended = analysis.finish();
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_EQ(lines_with(ended.output, "Search mode: Analysis").size(),
              lines_with(ended.output, "Search mode:").size());
}

TEST_F(CliPlay, AnalysisFollowsTheUser) {
    const ProgramResult result =
        play("mode analysis\nwait\n32-28\nwait\nback\nwait\nmode normal\nfen\n", "--time 0.05 --quiet");
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(lines_with(result.output, "value").size(), 3u) << result.output;
    EXPECT_EQ(lines_with(result.output, "engine").size(), 0u);
    EXPECT_EQ(lines_with(result.output, "W:W31,32,").size(), 1u);
}

TEST_F(CliPlay, AnalysesTheGame) {
    const ProgramResult result = play("mode twoplayers\n32-28\n19-23\nanalyze\nfen\n");
    EXPECT_EQ(result.status, 0) << result.errors;
    const std::vector<std::string> told = lines_with(result.output, "written to ");
    ASSERT_EQ(told.size(), 1u) << result.output;
    const std::string text = read_text(told[0].substr(11));
    EXPECT_NE(text.find("\n1. 32-28 {value"), std::string::npos) << text;
    EXPECT_NE(text.find("\n   19-23 {value"), std::string::npos) << text;
    EXPECT_EQ(lines_with(result.output, "W:W28").size(), 1u);
}

TEST_F(CliPlay, AnalysesAFileUntilItIsCancelled) {
    folder.write("two.pdn", "32-28 * 31-27 *");
    const ProgramResult result = play("analyzepdn two.pdn allscores\n");
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(lines_with(result.output, "written to ").size(), 1u) << result.output;
    const ProgramResult cancelled =
        play("analyzepdn two.pdn\nsleep 0.1\ncancel\nstatus\n", "--time 100 --quiet");
    EXPECT_EQ(cancelled.status, 0) << cancelled.errors;
    EXPECT_EQ(lines_with(cancelled.output, "written to ").size(), 0u);
    EXPECT_NE(cancelled.output.find("Search mode: Normal\n"), std::string::npos) << cancelled.output;
}

TEST_F(CliPlay, PondersAndGivesHints) {
    const ProgramResult result =
        play("32-28\nwait\nstatus\nhint\nback\nfen\n", "--time 0.05 --ponder --quiet");
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_NE(result.output.find("ponder"), std::string::npos) << result.output;
    const std::vector<std::string> hints = lines_with(result.output, "hint ");
    ASSERT_EQ(hints.size(), 1u);
    EXPECT_NE(hints[0].find('-'), std::string::npos) << hints[0];
    EXPECT_EQ(lines_with(result.output, "B:W28,").size(), 1u);
    EXPECT_NE(play("hint\n", "--quiet --book off").output.find("hint 3"), std::string::npos)
        << "also before the databases have been opened";
    EXPECT_EQ(lines_with(play("setup W:W:B1\nhint\n").output, "hint none").size(), 1u);
}

TEST_F(CliPlay, AnAnswerThatIsReadyIsPrintedToo) {
    // White has one move, so the engine knows its own answer by the time it is typed.
    RunningProgram program("play --hash 4 --book off --time 0.02 --ponder --quiet", folder.path);
    for (const char* line : {"setup B:W45:B1", "go", "wait"}) ASSERT_TRUE(program.type(line));
    ASSERT_TRUE(ask_until(program, "ponder result "));
    for (const char* line : {"45-40", "moves"}) ASSERT_TRUE(program.type(line));
    const ProgramResult result = program.finish();
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(lines_with(result.output, "ponder result ").size(), 1u) << result.output;
    EXPECT_EQ(lines_with(result.output, "engine ").size(), 2u) << result.output;
    EXPECT_EQ(lines_with(result.output, "40-3").size(), 1u) << "it is white's move again";
}

TEST_F(CliPlay, PlaysByTheClock) {
    const ProgramResult result = play(
        "clock 100 1\n32-28\nclock\nclock increment 10 0.1\n31-26\nclock stop\nclock reset\n"
        "clock\nclock 1000 0.1\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "tessarin-cli: the average time per move is too short\n");
    EXPECT_EQ(lines_with(result.output, "engine ").size(), 2u) << result.output;
    EXPECT_NE(result.output.find("moves 1"), std::string::npos) << result.output;
    EXPECT_NE(result.output.find("moves 0"), std::string::npos);
    const ProgramResult sudden_death = play("clock increment 3 0\n32-28\n");
    EXPECT_EQ(sudden_death.status, 0) << sudden_death.errors;
    EXPECT_EQ(lines_with(sudden_death.output, "engine ").size(), 1u);
    EXPECT_EQ(play("clock increment 0 1\n").status, 1);
    EXPECT_EQ(play("clock 75 0\n").status, 1);
}

TEST_F(CliPlay, TheKindOfClockIsTheOneAskedForLast) {
    // Tenths of a second by the first clock, and minutes by the second. What is refused changes nothing.
    const ProgramResult result =
        play("clock 100 0.2\nclock increment 3600 100\nclock 1000 0.1\n32-28\nsleep 2\nstop\n");
    EXPECT_EQ(result.errors, "tessarin-cli: the average time per move is too short\n")
        << "and the engine had to be stopped";
    EXPECT_EQ(lines_with(result.output, "engine ").size(), 1u) << result.output;
}

TEST_F(CliPlay, TheClockIsStartedAndStopped) {
    const ProgramResult result =
        play("clock 100 1\nclock start\nsleep 1.1\nclock stop\nclock\nsleep 1.1\nclock\n");
    EXPECT_EQ(result.status, 0) << result.errors;
    const std::vector<std::string> clocks = lines_with(result.output, "W 00:");
    ASSERT_EQ(clocks.size(), 2u) << result.output;
    EXPECT_NE(clocks[0], "W 00:00   B 00:00");
    EXPECT_EQ(clocks[1], clocks[0]);
}

TEST_F(CliPlay, PonderingIsTurnedOnAndOff) {
    const ProgramResult result =
        play("ponder on\nponder on\n32-28\nwait\nstatus\nponder off\nstatus\n31-26\nwait\nstatus\n",
             "--time 0.05 --quiet");
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(lines_with(result.output, "pondering move ").size(), 1u)
        << "only before it is turned off: " << result.output;
}

TEST_F(CliPlay, PonderingThatIsTurnedOffEndsAtOnce) {
    const ProgramResult result =
        play("ponder on\n32-28\nwait\nponder off\nstatus\nsleep 1\nstatus\n", "--time 0.05 --quiet");
    const std::vector<std::string> values = lines_with(result.output, "value=");
    ASSERT_GE(values.size(), 2u) << result.output;
    EXPECT_EQ(values.back(), values[values.size() - 2]) << "no more is searched";
}

TEST_F(CliPlay, TheTimeOfAMoveIsChanged) {
    const ProgramResult result = play("time 0.02\n32-28\n", "--time 1000 --quiet");
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(lines_with(result.output, "engine ").size(), 1u) << result.output;
}

TEST_F(CliPlay, WhatIsNotThereOrCannotBeWritten) {
    const ProgramResult book = play("fen\n", "--book-file none.odb");
    EXPECT_EQ(book.status, 1);
    EXPECT_NE(book.errors.find("cannot read the book "), std::string::npos) << book.errors;
    EXPECT_EQ(book.output, "");
    const ProgramResult scores = play("mode twoplayers\n32-28\nanalyze everything\n");
    EXPECT_EQ(scores.status, 1);
    EXPECT_EQ(scores.errors, "tessarin-cli: analyze, or analyze allscores\n");
    // No file can grow, as on a full disk.
    folder.write("script", "( trap '' XFSZ\nulimit -f 0\nexec env XDG_DATA_HOME=data " + quoted(PROGRAM) +
                               " play --quiet --book off --hash 4 --time 0.02 ) 2>&1 | cat\n");
    const ProgramResult full =
        run_program("script", "mode twoplayers\n32-28\nanalyze\nwait\n", folder.path, "/bin/bash");
    EXPECT_EQ(lines_with(full.output, "tessarin-cli: The game could not be written to the file.").size(), 1u)
        << full.output;
    EXPECT_EQ(lines_with(full.output, "written to ").size(), 0u) << full.output;
}

TEST_F(CliPlay, SaysWhatItDoesNotTake) {
    folder.write("two.pdn", "32-28 *\n\n33-28 *\n");
    const ProgramResult result = play(
        "mode twoplayers\nheader Foo bar\nheader Result nonsense\nheader Result *\nload two.pdn 4294967298\n"
        "load two.pdn 0\nload two.pdn 2\nfen\n");
    EXPECT_EQ(count_lines(result.errors), 4) << result.errors;
    EXPECT_NE(result.errors.find("no header of a game: Foo"), std::string::npos);
    EXPECT_NE(result.errors.find("no result: nonsense"), std::string::npos);
}

TEST_F(CliPlay, SaysWhoHasWon) {
    const ProgramResult lost = play("setup W:W32:B27\n32x21\n", "");
    EXPECT_EQ(lost.status, 0);
    EXPECT_EQ(lines_with(lost.output, "black has no move: white wins").size(), 1u) << lost.output;
    EXPECT_EQ(lines_with(lost.output, "engine ").size(), 0u);
    const ProgramResult won = play("setup B:W27:B21\ngo\n", "--time 0.02");
    EXPECT_EQ(lines_with(won.output, "white has no move: black wins").size(), 1u) << won.output;
    EXPECT_EQ(lines_with(won.output, "engine 21x32").size(), 1u);
}

TEST_F(CliPlay, QuitEndsTheScriptAndHelpListsTheCommands) {
    const ProgramResult result = play("help\nquit\nfen\n");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(lines_with(result.output, "W:W").size(), 0u);
    for (const char* command :
         {"back", "forward", "new", "setup", "mode", "load", "save", "analyze", "hint", "quit"})
        EXPECT_EQ(lines_with(result.output, std::string(command) + " ").size(), 1u) << command;
    const ProgramResult thinking = play("32-28\nquit\n", "--time 100");
    EXPECT_EQ(thinking.status, 0) << "also while the engine thinks";
}

TEST_F(CliPlay, Options) {
    EXPECT_EQ(lines_with(play("fen\n", "--fen W:W31:B1 --mode twoplayers").output, "W:W31:B1").size(), 1u);
    for (const char* const fen : {"nonsense", "W:W1:B2"}) {
        const ProgramResult wrong = play("fen\n", std::string("--fen ") + fen);
        EXPECT_EQ(wrong.status, 1);
        EXPECT_EQ(wrong.output, "") << "nothing is played from elsewhere";
    }
    for (const char* bad : {"--time 0", "--mode chess", "--book x", "--hash 0", "--hash 513", "--threads 9"})
        EXPECT_EQ(play("", bad).status, 2) << bad;
}

TEST_F(CliPlay, AnInterruptEndsIt) {
    RunningProgram program("play --quiet --hash 4 --book off --time 1000", folder.path);
    for (const char* line : {"32-28", "status", "fen"}) ASSERT_TRUE(program.type(line));
    ASSERT_TRUE(program.read_until("Search mode: Normal")) << "the engine thinks now";
    program.interrupt();
    const ProgramResult result = program.finish();
    EXPECT_EQ(result.status, 1) << result.errors;
    EXPECT_EQ(lines_with(result.output, "engine ").size(), 0u) << result.output;
    EXPECT_EQ(lines_with(result.output, "B:W").size(), 0u) << "the line that waited is not run";
}

TEST_F(CliPlay, AnInterruptWhileItWaitsForALineEndsIt) {
    RunningProgram program("play --quiet --hash 4", folder.path);
    ASSERT_TRUE(program.type("fen"));
    ASSERT_TRUE(program.read_until("W:W"));
    program.interrupt();
    EXPECT_FALSE(program.read_until("anything")) << "it ends though its input does not";
    EXPECT_EQ(program.finish().status, 1);
}

}  // namespace
