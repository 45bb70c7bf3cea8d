// Opening endgame databases from the console: `egdb open`, the options of the commands that search, and what
// `inspect` tells of a position's place in them.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/base/run_command.h"
#include "tests/cli/program.h"

namespace {

const std::string SHIPPED = PROJECT_FOLDER "/data/wld_database";
const std::string SHIPPED_MTC = PROJECT_FOLDER "/data/mtc_database";

// Three kings against one that cannot reach the long diagonal soon: the search alone needs some depth to see
// what the database knows at once.
const std::string ENDING = "W:WK6,K11,K16:BK45";

// Lost, but not soon.
const std::string NUMBERED = "W:WK8:BK13,K19,K37";

nlohmann::json inspect(const std::string& arguments) {
    const ProgramResult result = run_program("inspect " + arguments);
    EXPECT_EQ(result.status, 0) << result.errors;
    return nlohmann::json::parse(result.output);
}

// What the log of the search says of lookups.
long lookups_of(const std::string& output) {
    const size_t at = output.rfind(", db ");
    return at == std::string::npos ? -1 : std::stol(output.substr(at + 5));
}

}  // namespace

TEST(CliEgdbOpen, TellsWhatWasFoundAndOpened) {
    const ProgramResult result = run_program("egdb open " + quoted(SHIPPED));
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.output.find("found type 4, pieces 4\nAvailable RAM: "), 0u);
    EXPECT_NE(result.output.find("\nautoload db2\nautoload db3\nautoload db4\n"), std::string::npos);
    EXPECT_NE(result.output.find("\ndb3 17762 bytes, 5 blocks, whole in memory\n"), std::string::npos);
    EXPECT_EQ(last_line(result.output),
              "opened type 4, pieces 4, of one side 3, kings with nine pieces 0, of one side with eight 0");
    const ProgramResult fewer = run_program("egdb open " + quoted(SHIPPED) + " --max-pieces 3 --cache 0");
    EXPECT_NE(last_line(fewer.output).find("pieces 3, of one side 2"), std::string::npos);
}

TEST(CliEgdbOpen, SaysWhyNot) {
    const TemporaryFolder empty;
    ProgramResult result = run_program("egdb open " + quoted(empty.path));
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "tessarin-cli: no database in " + empty.path.string() + "\n");
    empty.write("db4.idx1", read_text(SHIPPED + "/db4.idx1"));
    result = run_program("egdb open " + quoted(empty.path));
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.output.find("Cannot open " + empty.path.string() + "/db2.cpr1\n"), std::string::npos);
    EXPECT_EQ(result.errors, "tessarin-cli: the database in " + empty.path.string() + " cannot be opened\n");
}

TEST(CliEgdbOptions, TheSearchUsesAFolderThatIsNamed) {
    const std::string search = "search " + ENDING + " --depth 7";
    const ProgramResult without = run_program(search);
    EXPECT_EQ(lookups_of(without.output), 0);
    const ProgramResult with = run_program(search + " --egdb " + quoted(SHIPPED));
    EXPECT_EQ(with.status, 0) << with.errors;
    EXPECT_GT(lookups_of(with.output), 0);
    EXPECT_NE(with.output.find("lru cache hits "), std::string::npos);
    // The same each time, from any folder, however much memory there is.
    const ProgramResult again =
        run_program(search + " --egdb-cache 0 --egdb wld_database", "", PROJECT_FOLDER "/data");
    EXPECT_EQ(last_line(again.output), last_line(with.output));
    const TemporaryFolder empty;
    const ProgramResult none = run_program(search + " --egdb " + quoted(empty.path));
    EXPECT_EQ(none.status, 1);
    EXPECT_EQ(none.output, "");
    EXPECT_EQ(none.errors, "tessarin-cli: no win/loss/draw database in " + empty.path.string() + "\n");
    empty.write("db4.idx1", read_text(SHIPPED + "/db4.idx1"));
    const ProgramResult damaged = run_program(search + " --egdb " + quoted(empty.path));
    EXPECT_EQ(damaged.status, 1);
    EXPECT_EQ(damaged.errors, "tessarin-cli: the database in " + empty.path.string() + " cannot be opened\n");
}

TEST(CliEgdbOptions, PlayHasTheDatabaseThatComesWithTheProgram) {
    const std::string lines = "setup " + ENDING + "\ngo\nwait\nstatus\n";
    const ProgramResult with = run_program("play --quiet --time 0.05", lines);
    EXPECT_NE(with.output.find("Ready"), std::string::npos) << with.output;
    const ProgramResult without = run_program("play --quiet --time 0.05 --no-egdb", lines);
    EXPECT_NE(without.output.find("Disabled"), std::string::npos) << without.output;
    EXPECT_EQ(run_program("play --no-egdb --egdb " + quoted(SHIPPED)).status, 2);
}

// Opened before the first search and not beside it: the root alone is enough to see the draw.
TEST(CliEgdbOptions, TheFirstMoveOfPlayHasTheDatabase) {
    const std::string lines = "setup W:WK46,K47,K48:BK4\ngo\n";
    const ProgramResult with = run_program("play --quiet --book off --time 0.05", lines);
    EXPECT_NE(with.output.find(",  depth 59/"), std::string::npos) << with.output;
    const ProgramResult without = run_program("play --quiet --book off --time 0.05 --no-egdb", lines);
    EXPECT_EQ(without.output.find(",  depth 59/"), std::string::npos) << without.output;
}

TEST(CliEgdbVerify, TellsOfEachFile) {
    const ProgramResult good = run_program("egdb verify " + quoted(SHIPPED));
    EXPECT_EQ(good.status, 0) << good.errors;
    EXPECT_EQ(good.output.find(SHIPPED + "/db2.idx1  OK\n" + SHIPPED + "/db2.cpr1  OK\n"), 0u) << good.output;
    EXPECT_EQ(last_line(good.output), "No errors");
    const TemporaryFolder folder;
    for (const char* const name : {"db2.idx1", "db2.cpr1", "db3.idx1"})
        folder.write(name, read_text(SHIPPED + "/" + name) + (name[2] == '3' ? "" : " "));
    // The largest index alone is whole.
    const ProgramResult damaged = run_program("egdb verify " + quoted(folder.path));
    EXPECT_EQ(damaged.status, 1);
    EXPECT_EQ(last_line(damaged.output), "2 errors");
    // Not even that: it is no database to be opened, but its files are checked.
    folder.write("db3.idx1", "");
    EXPECT_EQ(last_line(run_program("egdb verify " + quoted(folder.path)).output), "3 errors");
    EXPECT_EQ(last_line(run_program("egdb verify --max-pieces 2 " + quoted(folder.path)).output), "2 errors");
    const ProgramResult unknown = run_program("egdb verify " + quoted(SHIPPED_MTC));
    EXPECT_EQ(unknown.status, 1);
    EXPECT_EQ(unknown.errors, "tessarin-cli: no checksums of moves to conversion are known\n");
    EXPECT_EQ(unknown.output, "");
    const TemporaryFolder empty;
    EXPECT_EQ(run_program("egdb verify " + quoted(empty.path)).errors,
              "tessarin-cli: no database in " + empty.path.string() + "\n");
}

TEST(CliEgdbMtc, NumbersBehindTheValues) {
    const std::string probe = "egdb probe " + quoted(SHIPPED) + " " + NUMBERED + " --mtc ";
    EXPECT_EQ(run_program(probe + quoted(SHIPPED_MTC)).output, NUMBERED + " loss 14\n");
    EXPECT_EQ(
        run_program("egdb probe " + quoted(SHIPPED) + " W:WK6:BK45 --mtc " + quoted(SHIPPED_MTC)).output,
        "W:WK6:BK45 draw 1\n");
    EXPECT_EQ(run_program(probe + quoted(SHIPPED)).status, 1);
    EXPECT_EQ(inspect(NUMBERED)["mtc"], 14);
    EXPECT_EQ(inspect(NUMBERED + " --mtc " + quoted(SHIPPED_MTC))["mtc"], 14);
    EXPECT_EQ(inspect(NUMBERED + " --no-egdb")["mtc"], nullptr);
    EXPECT_EQ(run_program("inspect " + NUMBERED + " --mtc " + quoted(SHIPPED)).errors,
              "tessarin-cli: no moves-to-conversion database in " + SHIPPED + "\n");
    // A search that has both plays by them; with the values alone it searches.
    const std::string search = "search " + NUMBERED + " --depth 3 --egdb " + quoted(SHIPPED);
    const ProgramResult by_numbers = run_program(search + " --mtc " + quoted(SHIPPED_MTC));
    EXPECT_NE(by_numbers.output.find("(12)*  "), std::string::npos) << by_numbers.output;
    EXPECT_EQ(run_program(search).output.find("(12)*"), std::string::npos);
    // They say nothing without values, and nothing is said if they cannot be read.
    EXPECT_EQ(run_program("search " + NUMBERED + " --depth 3 --mtc " + quoted(SHIPPED_MTC)).status, 2);
    EXPECT_EQ(run_program("play --no-egdb --mtc " + quoted(SHIPPED_MTC)).status, 2);
    const TemporaryFolder damaged;
    std::filesystem::copy(SHIPPED_MTC, damaged.path);
    std::filesystem::resize_file(damaged.path / "db4.cpr_mtc", 10);
    const ProgramResult cut = run_program(search + " --mtc " + quoted(damaged.path));
    EXPECT_EQ(cut.status, 1);
    EXPECT_NE(cut.errors.find("cannot be opened"), std::string::npos) << cut.errors;
}

TEST(CliEgdbMtc, BuildsThem) {
    const TemporaryFolder folder;
    const ProgramResult result = run_program("egdb build --mtc --pieces 2 " + quoted(folder.path));
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(read_text(folder.path.string() + "/db2.idx_mtc"), read_text(SHIPPED_MTC + "/db2.idx_mtc"));
    EXPECT_EQ(read_text(folder.path.string() + "/db2.cpr_mtc"), read_text(SHIPPED_MTC + "/db2.cpr_mtc"));
    EXPECT_EQ(run_program("egdb build --mtc --pieces 6 " + quoted(folder.path)).status, 1);
}

TEST(CliInspect, PlaceInTheDatabases) {
    // White has more: looked up as its mirror image.
    const nlohmann::json line = inspect("W:WK6,7:BK45");
    EXPECT_EQ(line["canonical_fen"], "B:WK6:B44,K45");
    EXPECT_EQ(line["slot"], 2 * (1 + 6 * (0 + 6 * (1 + 6 * 1))));
    EXPECT_EQ(line["subslice"], 0);
    EXPECT_EQ(line["file"], "db3");
    EXPECT_TRUE(line["value"] == "win" || line["value"] == "draw") << line;
    EXPECT_EQ(inspect("W:WK6,7:BK45 --no-egdb")["value"], nullptr);
    EXPECT_EQ(inspect("W:WK6,7:BK45 --egdb " + quoted(SHIPPED))["value"], line["value"]);
    EXPECT_EQ(inspect("W:WK1:B7")["value"], "capture");
    // More than the files hold, and more than any could.
    const nlohmann::json nine = inspect("B:W36,37,38,39:B1,2,3,4,K35");
    EXPECT_EQ(nine["value"], "unavailable");
    EXPECT_EQ(nine["file"], "db9-4140");
    EXPECT_EQ(nine["canonical_fen"], "B:W36,37,38,39:B1,2,3,4,K35");
    for (const char* const fen :
         {"W:W31,32,33,34,35,36:B1", "W:W31:B", "W:W3:B20", "B:W36,37,38,39,40:B1,2,3,4,6"})
        EXPECT_FALSE(inspect(fen).contains("slot")) << fen;
}

// A search of hours is not to end in that.
TEST(CliEgdbOptions, WhatCannotBeOpenedIsToldBeforeTheSearch) {
    const TemporaryFolder folder;
    const std::filesystem::path values = folder.path / "values", numbers = folder.path / "numbers";
    std::filesystem::copy(SHIPPED, values);
    std::filesystem::copy(SHIPPED_MTC, numbers);
    std::filesystem::resize_file(values / "db4.cpr1", 500000);
    std::filesystem::resize_file(numbers / "db4.cpr_mtc", 100000);
    folder.write("game.pdn", "[FEN " + ENDING + "] *");
    const std::string with_numbers = " --egdb " + quoted(SHIPPED) + " --mtc numbers";
    for (const std::string& arguments :
         {"search " + ENDING + " --time 1000 --egdb values",
          std::string("analyze game.pdn --time 1000 --egdb values"), std::string("play --egdb values"),
          std::string("dxp listen --egdb values"), "search " + ENDING + " --time 1000" + with_numbers,
          "analyze game.pdn --time 1000" + with_numbers, "play" + with_numbers,
          "dxp listen" + with_numbers}) {
        const ProgramResult result = run_program(arguments, "", folder.path);
        EXPECT_EQ(result.status, 1) << arguments;
        EXPECT_EQ(count_lines(result.errors), 1) << result.errors;
        EXPECT_NE(result.errors.find(" cannot be opened\n"), std::string::npos) << result.errors;
    }
}

// The settings would cut the path, and the shorter one could be another folder.
TEST(CliEgdbOptions, AFolderWithTooLongANameIsRefused) {
    const TemporaryFolder folder;
    const std::string longest = std::string(130, 'a') + "/" + std::string(130, 'b');
    std::filesystem::create_directories(folder.path / longest);
    std::filesystem::copy(SHIPPED, folder.path / longest);
    folder.write("game.pdn", "32-28 *");
    for (const char* command : {"play", "analyze game.pdn --time 0.01", "dxp listen"}) {
        const ProgramResult result =
            run_program(std::string(command) + " --egdb " + longest, "quit\n", folder.path);
        EXPECT_EQ(result.status, 1) << command;
        EXPECT_NE(result.errors.find(" is too long\n"), std::string::npos) << result.errors;
    }
    EXPECT_EQ(run_program("search " + ENDING + " --depth 1 --egdb " + longest, "", folder.path).status, 0);
}
