// How weights are learned: games of self-play, training on them, and what stands in the weights.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <regex>
#include <sstream>
#include <thread>
#include <vector>

#include "eval/weights.h"
#include "tests/base/run_command.h"
#include "tests/cli/program.h"
#include "tests/cli/terminal.h"
#include "tools/selfplay.h"

namespace {

class CliLearning : public testing::Test {
  protected:
    ProgramResult run(const std::string& arguments) const { return run_program(arguments, "", folder.path); }
    ProgramResult selfplay(const std::string& name, int games, const std::string& more = "--depth 1") const {
        return run("selfplay --out " + name + " --games " + std::to_string(games) + " " + more);
    }
    std::string content(const std::string& name) const { return read_text(folder.path / name); }
    bool exists(const std::string& name) const { return std::filesystem::exists(folder.path / name); }

    // Fails, in one line, and says so.
    void expect_error(const std::string& arguments, const std::string& text) const {
        const ProgramResult result = run(arguments);
        EXPECT_EQ(result.status, 1) << arguments;
        EXPECT_EQ(count_lines(result.errors), 1) << result.errors;
        EXPECT_NE(result.errors.find(text), std::string::npos) << result.errors;
    }

    TemporaryFolder folder;
};

using CliSelfplay = CliLearning;
using CliTrain = CliLearning;
using CliWeightsStats = CliLearning;

std::vector<GameRecord> records_in(const std::string& bytes) {
    std::vector<GameRecord> records(bytes.size() / sizeof(GameRecord));
    std::memcpy(records.data(), bytes.data(), records.size() * sizeof(GameRecord));
    return records;
}

TEST_F(CliSelfplay, TheFileGrowsToSoManyGames) {
    const ProgramResult three = selfplay("games", 3);
    EXPECT_EQ(three.status, 0) << three.errors;
    EXPECT_EQ(three.output, "");
    EXPECT_EQ(three.errors, "");
    const std::string bytes = content("games");
    ASSERT_GT(bytes.size(), 0u);
    EXPECT_EQ(bytes.size() % sizeof(GameRecord), 0u);
    EXPECT_EQ(records_in(bytes).back().game, 2u);
    ASSERT_EQ(selfplay("games", 3).status, 0);
    EXPECT_EQ(content("games"), bytes) << "there was nothing to do";
    ASSERT_EQ(selfplay("games", 5).status, 0);
    EXPECT_EQ(records_in(content("games")).back().game, 4u);
    EXPECT_EQ(content("games").substr(0, bytes.size()), bytes);
    ASSERT_EQ(selfplay("at-once", 5).status, 0);
    EXPECT_EQ(content("games"), content("at-once"));
}

TEST_F(CliSelfplay, EachOptionMakesOtherGames) {
    ASSERT_EQ(selfplay("usual", 4).status, 0);
    const std::string usual = content("usual");
    for (const char* more : {"--depth 2", "--depth 1 --seed 2", "--depth 1 --openings 2",
                             "--depth 1 --openings random", "--depth 1 --stray 3", "--depth 1 --keep 4"}) {
        ASSERT_EQ(selfplay("other", 4, more).status, 0) << more;
        EXPECT_NE(content("other"), usual) << more;
        std::filesystem::remove(folder.path / "other");
    }
    ASSERT_EQ(selfplay("named", 4, "--depth 1 --seed 1 --openings 3 --stray 0 --keep 1").status, 0);
    EXPECT_EQ(content("named"), usual) << "these are what is used if nothing is said";
}

TEST_F(CliSelfplay, AnInterruptEndsItBehindAWholeGame) {
    RunningProgram program("selfplay --out games --games 1000000 --depth 3", folder.path);
    for (size_t size = 0; size < 100 * sizeof(GameRecord);) {
        std::error_code error;
        const auto now = std::filesystem::file_size(folder.path / "games", error);
        size = error ? 0 : now;
    }
    program.interrupt();
    const ProgramResult result = program.finish();
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    const std::string stopped = content("games");
    const int games = static_cast<int>(records_in(stopped).back().game) + 1;
    ASSERT_EQ(selfplay("whole", games, "--depth 3").status, 0);
    EXPECT_EQ(stopped, content("whole"));
}

TEST_F(CliSelfplay, TellsHowFarItIs) {
    Terminal terminal;
    EXPECT_EQ(selfplay("games", 3, "--depth 1 2>" + terminal.path).status, 0);
    const std::string shown = terminal.read_printed();
    EXPECT_TRUE(std::regex_search(
        shown,
        std::regex("\r\x1b\\[Kgame 1 of 3, \\d+ positions, \\d+ games a minute, time left \\d+:\\d\\d")))
        << shown;
    const std::string positions = std::to_string(records_in(content("games")).size());
    EXPECT_NE(shown.find("game 3 of 3, " + positions + " positions, "), std::string::npos) << shown;
    EXPECT_TRUE(shown.ends_with("time left 0:00\r\x1b[K")) << "and nothing is left of it: " << shown;
}

TEST_F(CliSelfplay, ProgressKeepsToOneLine) {
    Terminal terminal;
    terminal.set_width(20);
    EXPECT_EQ(selfplay("games", 3, "--depth 1 2>" + terminal.path).status, 0);
    const std::string shown = terminal.read_printed();
    EXPECT_TRUE(std::regex_search(shown, std::regex("\r\x1b\\[Kgame 1 of 3, \\d+ pos?i?\r"))) << shown;
    for (size_t at = 0, end; (end = shown.find('\r', at)) != std::string::npos; at = end + 1)
        EXPECT_LE(end - at, 19 + std::strlen("\x1b[K")) << shown;
}

// A second run would mix its games with those of the first.
TEST_F(CliSelfplay, AFileHasOneRun) {
    RunningProgram program("selfplay --out games --games 1000000 --depth 3", folder.path);
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while ((!exists("games") || content("games").empty()) && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    ASSERT_TRUE(exists("games"));
    expect_error("selfplay --out games --games 1000000 --depth 3", "another run writes ");
    program.interrupt();
    EXPECT_EQ(program.finish().status, 0);
    const std::string first = content("games");
    const int games = static_cast<int>(records_in(first).back().game) + 1;
    ASSERT_EQ(selfplay("alone", games, "--depth 3").status, 0);
    EXPECT_EQ(first, content("alone"));
}

TEST_F(CliSelfplay, TellsWhatIsWrong) {
    expect_error("selfplay --out nowhere/games", "/nowhere/games");
    std::filesystem::create_directory(folder.path / "taken");
    expect_error("selfplay --out taken", "cannot write ");
    folder.write("notes.txt", "notes");
    expect_error("selfplay --out notes.txt", "notes.txt holds no games of selfplay");
    EXPECT_EQ(content("notes.txt"), "notes");
    // The disk is full after a kilobyte.
    folder.write("script", "trap '' XFSZ\nulimit -f 1\n" + quoted(PROGRAM) +
                               " selfplay --out games --games 50 --depth 1\n");
    const ProgramResult full = run_program("script", "", folder.path, "/bin/bash");
    EXPECT_EQ(full.status, 1);
    EXPECT_NE(full.errors.find("cannot write "), std::string::npos) << full.errors;
    EXPECT_LE(content("games").size(), 1024u);
    ASSERT_EQ(selfplay("games", 3).status, 0);
    ASSERT_EQ(selfplay("whole", 3).status, 0);
    EXPECT_EQ(content("games"), content("whole")) << "and it goes on where the disk has room again";
    for (const char* arguments : {"", "--out a --games 0", "--out a --depth 0", "--out a --openings 4",
                                  "--out a --keep 0", "--out a --stray -1", "--out a more"})
        EXPECT_EQ(run("selfplay " + std::string(arguments)).status, 2) << arguments;
    EXPECT_FALSE(exists("a"));
    const ProgramCopy copy;
    const ProgramResult lost = run_program("selfplay --out a", "", folder.path, copy.program);
    EXPECT_EQ(lost.status, 1);
    EXPECT_NE(lost.errors.find("Cannot open weights.bin for reading"), std::string::npos);
}

TEST_F(CliTrain, LearnsWeightsAndTellsHowWellTheyFit) {
    ASSERT_EQ(selfplay("a", 40).status, 0);
    ASSERT_EQ(selfplay("b", 40, "--depth 1 --seed 2").status, 0);
    const ProgramResult result = run("train a b --out w.bin --epochs 2 --held-out 4");
    ASSERT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    std::istringstream lines(result.output);
    std::string line;
    std::smatch parts;
    std::getline(lines, line);
    ASSERT_TRUE(
        std::regex_match(line, parts, std::regex("games 80, positions to learn (\\d+), held out (\\d+)")))
        << line;
    EXPECT_EQ(std::stoul(parts[1]) + std::stoul(parts[2]),
              records_in(content("a")).size() + records_in(content("b")).size());
    EXPECT_GT(std::stoul(parts[1]), std::stoul(parts[2]));
    const unsigned long held_out = std::stoul(parts[2]);
    // The epoch that tells the games best that were held out is kept.
    std::string least = "9";
    int best = 0;
    for (int epoch = 1; epoch <= 2; ++epoch) {
        std::getline(lines, line);
        ASSERT_TRUE(std::regex_match(
            line, parts,
            std::regex("epoch (\\d): loss on learned games \\d\\.\\d{5}, on held-out games (\\d\\.\\d{5}), "
                       "\\d+ sec")))
            << line;
        EXPECT_EQ(parts[1], std::to_string(epoch));
        if (parts[2] >= least) continue;
        least = parts[2];
        best = epoch;
    }
    std::getline(lines, line);
    EXPECT_TRUE(std::regex_match(line, parts,
                                 std::regex("kept epoch (\\d), a score of \\d+ is 73%, of a search \\d+")));
    EXPECT_EQ(parts[1], std::to_string(best));
    const std::regex fit(
        "(first|held out|opening|middle|end) +positions (\\d+), loss (\\d\\.\\d{5}), "
        "winner told \\d+\\.\\d%");
    std::vector<unsigned long> positions;
    for (const char* name : {"first", "held out", "opening", "middle", "end"}) {
        std::getline(lines, line);
        ASSERT_TRUE(std::regex_match(line, parts, fit)) << line;
        EXPECT_EQ(parts[1], name);
        if (parts[1] == "held out") {
            EXPECT_EQ(parts[3], least);
        }
        positions.push_back(std::stoul(parts[2]));
    }
    EXPECT_EQ(positions[0], positions[1]);
    EXPECT_LE(positions[0], held_out) << "without those that nothing can be learned from";
    EXPECT_GT(positions[0], held_out / 2);
    EXPECT_EQ(positions[2] + positions[3] + positions[4], positions[1]);
    EXPECT_FALSE(std::getline(lines, line)) << line;
    EXPECT_EQ(content("w.bin").size(), WEIGHTS_BYTES);
}

TEST_F(CliTrain, TheSameGamesAndOptionsGiveTheSameWeights) {
    ASSERT_EQ(selfplay("a", 40).status, 0);
    const auto trained = [&](const std::string& options) {
        const ProgramResult result = run("train a --out w.bin " + options);
        EXPECT_EQ(result.status, 0) << result.errors;
        return content("w.bin");
    };
    const std::string usual = trained("--epochs 1 --held-out 4");
    EXPECT_TRUE(
        trained("--epochs 1 --held-out 4 --rate 0.1 --decay 30 --result-share 0.75 --man 100 --seed 1 "
                "--every 1") == usual);
    for (const char* options :
         {"--seed 2", "--rate 0.2", "--decay 10", "--result-share 0.5", "--man 90", "--every 2"})
        EXPECT_FALSE(trained(std::string("--epochs 1 --held-out 4 ") + options) == usual) << options;
    EXPECT_FALSE(trained("--epochs 1 --held-out 3") == usual);
    // They are weights to play with.
    EXPECT_EQ(run_program("player --weights w.bin", "new\n", folder.path).output, "ready\n");
}

TEST_F(CliTrain, TellsOfWeightsThatDoNotFit) {
    ASSERT_EQ(selfplay("a", 40).status, 0);
    const ProgramResult result = run("train a --out w.bin --held-out 2 --epochs 1 --man 300 --rate 10");
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_TRUE(std::regex_match(last_line(result.output), std::regex("\\d+ weights were cut to 16 bits")))
        << result.output;
}

TEST_F(CliTrain, RecordsWithoutAPositionAreToldAndLeftOut) {
    ASSERT_EQ(selfplay("a", 40).status, 0);
    const std::string games = content("a");
    folder.write("b", games + std::string(2 * sizeof(GameRecord), '\xff'));
    EXPECT_EQ(run("train a --out a.bin --epochs 1 --held-out 4").status, 0);
    const ProgramResult result = run("train b --out b.bin --epochs 1 --held-out 4");
    EXPECT_EQ(result.status, 1) << "as not all is well";
    EXPECT_EQ(result.errors, "tessarin-cli: 2 records hold no position and were left out\n");
    EXPECT_TRUE(content("a.bin") == content("b.bin"));
    EXPECT_EQ(content("b.bin").size(), WEIGHTS_BYTES);
}

TEST_F(CliTrain, TellsWhatIsWrong) {
    ASSERT_EQ(selfplay("a", 20).status, 0);
    folder.write("empty", "");
    expect_error("train empty --out w.bin", "there is nothing to learn");
    expect_error("train a missing --out w.bin", "cannot read missing");
    expect_error("train . --out w.bin", "cannot read .");
    EXPECT_FALSE(exists("w.bin"));
    // Before any work is done.
    expect_error("train missing --out nowhere/w.bin", "cannot write nowhere/w.bin");
    const std::string games = content("a");
    expect_error("train a --out ./a", "the weights cannot take the place of a");
    EXPECT_EQ(content("a"), games);
    for (const char* arguments :
         {"", "a", "--out w.bin", "a --out w.bin --epochs 0", "a --out w.bin --rate 0",
          "a --out w.bin --decay -1", "a --out w.bin --result-share 1.1", "a --out w.bin --man 0",
          "a --out w.bin --held-out 1", "a --out w.bin --every 0"})
        EXPECT_EQ(run("train " + std::string(arguments)).status, 2) << arguments;
    EXPECT_FALSE(exists("w.bin"));
}

TEST_F(CliTrain, AnInterruptLeavesNothing) {
    ASSERT_EQ(selfplay("a", 40).status, 0);
    RunningProgram program("train a --out w.bin --epochs 1000 --held-out 4", folder.path);
    ASSERT_TRUE(program.read_until("epoch 2:"));
    program.interrupt();
    const ProgramResult result = program.finish();
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "tessarin-cli: stopped; nothing was written\n");
    EXPECT_FALSE(exists("w.bin"));
}

TEST_F(CliTrain, TellsHowFarItIs) {
    ASSERT_EQ(selfplay("a", 40).status, 0);
    Terminal terminal;
    EXPECT_EQ(run("train a --out w.bin --epochs 1 --held-out 4 2>" + terminal.path).status, 0);
    const std::string shown = terminal.read_printed();
    EXPECT_NE(shown.find("\r\x1b[Kreading a\r\x1b[K"), std::string::npos) << shown;
    EXPECT_NE(shown.find("epoch 1 of 1, 0%, time left 0:00"), std::string::npos) << shown;
    EXPECT_TRUE(std::regex_search(shown, std::regex("epoch 1 of 1, 95%, time left \\d+:\\d\\d"))) << shown;
    EXPECT_TRUE(shown.ends_with("\r\x1b[K")) << shown;
}

TEST_F(CliWeightsStats, TellsHowLargeTheValuesAre) {
    const auto record = std::make_unique<Weights>();
    // A quarter of one table at three points, and one entry far beyond.
    for (size_t i = 0; i < PATTERN_ENTRIES / 4; ++i) record->patterns[2][i].endgame = 150;
    record->patterns[3][0].opening = -32767;
    record->params = {.lr_bal_opening = -1,
                      .lr_bal_endgame = 2,
                      .tempo_opening = 3,
                      .tempo_endgame = 4,
                      .men_opening = 5000,
                      .men_endgame = 6000,
                      .kings_opening = 7,
                      .kings_endgame = 8,
                      .has_kings_opening = 9,
                      .has_kings_endgame = 32767};
    folder.write("w.bin", std::string(reinterpret_cast<const char*>(record.get()), WEIGHTS_BYTES));
    const ProgramResult result = run("weights stats w.bin");
    EXPECT_EQ(result.status, 0) << result.errors;
    const std::string zero =
        " 100.0%   0.0%   0.0%   0.0%   0.0%   0.0%   0.0%   0.0%   0.0%   0.0%   0.00\n";
    EXPECT_EQ(result.output,
              "pattern table        points: 0     <1     <2     <4     <8    <16    <32    <64   <128   more "
              "  mean\n"
              "0 opening          " +
                  zero + "0 endgame          " + zero + "1 opening          " + zero + "1 endgame          " +
                  zero + "2 opening          " + zero +
                  "2 endgame            75.0%   0.0%   0.0%  25.0%   0.0%   0.0%   0.0%   0.0%   0.0%   "
                  "0.0%   0.75\n"
                  "3 opening          " +
                  zero + "3 endgame          " + zero +
                  "scalar              opening  endgame\n"
                  "left-right balance       -1        2\n"
                  "tempo                     3        4\n"
                  "men                    5000     6000\n"
                  "further kings             7        8\n"
                  "has a king                9    32767\n");
}

TEST_F(CliWeightsStats, OfTheFirstWeights) {
    const ProgramResult seed = run("weights seed --out seed.bin");
    EXPECT_EQ(seed.output, "seed.bin: 8503076 bytes\n");
    const std::string shown = run("weights stats seed.bin").output;
    EXPECT_NE(shown.find("3 endgame           100.0%   0.0%"), std::string::npos) << shown;
    EXPECT_NE(shown.find("\nmen                    5000     5500\n"), std::string::npos) << shown;
    expect_error("weights stats none.bin", "cannot open none.bin for reading");
    folder.write("notes.txt", "notes");
    expect_error("weights stats notes.txt", "notes.txt is no weights file: 5 bytes");
    EXPECT_EQ(run("weights stats").status, 2);
}

}  // namespace
