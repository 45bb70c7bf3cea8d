// Endgame databases on the console: built, looked into, asked, and the catalogues designed.
#include <gtest/gtest.h>

#include <regex>

#include "cli/egdb_text.h"
#include "tests/base/run_command.h"
#include "tests/cli/program.h"
#include "tests/cli/terminal.h"

namespace {

const std::string SHIPPED = PROJECT_FOLDER "/data/wld_database";
const std::string SHIPPED_MTC = PROJECT_FOLDER "/data/mtc_database";

class CliEgdb : public testing::Test {
  protected:
    ProgramResult run(const std::string& arguments, const std::string& input = "") const {
        return run_program("egdb " + arguments, input, folder.path);
    }
    std::string content(const std::string& name) const { return read_text(folder.path / name); }

    // Fails, and says so in the last line.
    void expect_error(const std::string& arguments, const std::string& text) const {
        const ProgramResult result = run(arguments);
        EXPECT_EQ(result.status, 1) << arguments;
        EXPECT_EQ(last_line(result.errors), "tessarin-cli: " + text);
    }

    TemporaryFolder folder;
};

TEST_F(CliEgdb, BuildsWhatComesWithTheProgram) {
    const ProgramResult result = run("build db --pieces 3");
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
    EXPECT_TRUE(std::regex_match(
        result.output,
        std::regex("memory: at most \\d+ MB\n"
                   "db2 positions 8845 left out 1056 data 384 index 109, 0\\.0557 bytes a position, "
                   "0\\.0633 one looked up\n"
                   "db3 positions 806300 left out 174324 data 17762 index 385, 0\\.0225 bytes a position, "
                   "0\\.0287 one looked up\n")))
        << result.output;
    for (const char* name : {"db2.cpr1", "db2.idx1", "db3.cpr1", "db3.idx1"})
        EXPECT_TRUE(content("db/" + std::string(name)) == read_text(SHIPPED + "/" + name)) << name;
    const ProgramResult again = run("build db --pieces 3");
    EXPECT_EQ(again.status, 0);
    EXPECT_EQ(count_lines(again.output), 1) << "there was nothing to do: " << again.output;
    EXPECT_EQ(
        run("stats db").output,
        "db2 positions 8845 subslices 4 single values 0 blocks 4 data 384 index 109, 0.0557 bytes a "
        "position\n"
        "db3 positions 806300 subslices 12 single values 0 blocks 16 data 17762 index 385, 0.0225 bytes "
        "a position\n"
        "all positions 815145 bytes 18640, 0.0229 bytes a position\n");
}

TEST_F(CliEgdb, ABuildTellsHowFarItIsAndStopsWhenInterrupted) {
    Terminal terminal;
    RunningProgram program("egdb build db --pieces 4 2>" + terminal.path, folder.path);
    ASSERT_TRUE(terminal.wait_for(" percent, time left "));
    ASSERT_TRUE(wait_for_text(folder.path / "db/db3.idx1", "BASE"));
    program.interrupt();
    EXPECT_EQ(program.finish().status, 1);
    const std::string shown = terminal.read_printed();
    EXPECT_NE(shown.find("tessarin-cli: stopped; the same command goes on from here\r\n"), std::string::npos)
        << shown;
    EXPECT_FALSE(std::filesystem::exists(folder.path / "db/db4.idx1"));
    EXPECT_TRUE(content("db/db3.cpr1") == read_text(SHIPPED + "/db3.cpr1"));
}

TEST_F(CliEgdb, TellsWhyNothingIsBuilt) {
    folder.write("taken", "");
    expect_error("build taken/db --pieces 2", "cannot write taken/db");
    ASSERT_EQ(run("build db --pieces 2").status, 0);
    folder.write("db/db2.cpr1", "damaged");
    const ProgramResult damaged = run("build db --pieces 3");
    EXPECT_EQ(damaged.status, 1);
    EXPECT_NE(damaged.errors.find("Bad line in db/db2.idx1"), std::string::npos) << damaged.errors;
    EXPECT_EQ(last_line(damaged.errors), "tessarin-cli: cannot read the database in db/");
    expect_error("build --mtc --pieces 6 db", "moves to conversion are built up to 5 pieces");
    for (const char* arguments : {"", "build", "build db --pieces 1", "build db --threads 0", "stats",
                                  "probe", "probe db", "catalogues", "catalogues a --pieces 2"})
        EXPECT_EQ(run(arguments).status, 2) << arguments;
}

TEST_F(CliEgdb, StatsOfFewerFilesThanThereCouldBe) {
    for (const char* name : {"db2.cpr1", "db2.idx1", "db3.cpr1"})
        folder.write(name, read_text(SHIPPED + "/" + name));
    EXPECT_EQ(count_lines(run("stats .").output), 2) << "an index is what makes a file whole";
    expect_error("stats none", "no database can be read in none");
    folder.write("db2.cpr1", content("db2.cpr1").substr(1));
    const ProgramResult damaged = run("stats .");
    EXPECT_EQ(damaged.status, 1);
    EXPECT_EQ(damaged.output, "");
    EXPECT_NE(damaged.errors.find("./db2.cpr1: block 0 does not agree with the index"), std::string::npos)
        << damaged.errors;
    EXPECT_EQ(last_line(damaged.errors), "tessarin-cli: no database can be read in .");
}

TEST_F(CliEgdb, ProbesOnePositionOrMany) {
    EXPECT_EQ(run("probe " + quoted(SHIPPED) + " W:WK6:BK45").output, "W:WK6:BK45 draw\n");
    const ProgramResult many =
        run("probe " + quoted(SHIPPED) + " -",
            "W:WK6:BK45\n\n  \nB:WK6,7:B45 \t\r\nnonsense\nW:W3:B20\nW:WK1:B7\nW:WK8:BK13,K19,K37\n"
            "W:W31,32,33,34:B1\nW:W6:B49");
    EXPECT_EQ(many.status, 1) << "not all of them are positions";
    EXPECT_EQ(many.errors,
              "tessarin-cli: not a position: nonsense\ntessarin-cli: not a legal position: W:W3:B20\n"
              "tessarin-cli: not a legal position: W:W6:B49\n");
    EXPECT_EQ(many.output,
              "W:WK6:BK45 draw\nB:WK6,7:B45 loss\nW:WK1:B7 capture\nW:WK8:BK13,K19,K37 loss\n"
              "W:W31,32,33,34:B1 unavailable\n");
    const ProgramResult numbers = run("probe " + quoted(SHIPPED) + " - --mtc " + quoted(SHIPPED_MTC),
                                      "W:WK8:BK13,K19,K37\nW:WK6:BK45\n");
    EXPECT_EQ(numbers.status, 0) << numbers.errors;
    EXPECT_EQ(numbers.output, "W:WK8:BK13,K19,K37 loss 14\nW:WK6:BK45 draw 1\n");
    expect_error("probe none W:WK6:BK45", "no database can be read in none");
    expect_error("probe " + quoted(SHIPPED) + " W:WK6:BK45 --mtc none",
                 "no moves-to-conversion database can be read in none");
}

TEST_F(CliEgdb, AnInterruptEndsTheQuestionsAtOnce) {
    RunningProgram program("egdb probe " + quoted(SHIPPED) + " -", folder.path);
    ASSERT_TRUE(program.type("W:WK6:BK45"));
    program.interrupt();
    EXPECT_EQ(wait_for_child(program.child), 128 + 2);
}

// The work of minutes is not to end in a file that cannot be written.
TEST_F(CliEgdb, WhereCataloguesGoIsLookedAtBefore) {
    Terminal terminal;
    EXPECT_EQ(run("catalogues no/table.cpp --pieces 3 2>" + terminal.path).status, 1);
    const std::string shown = terminal.read_printed();
    EXPECT_NE(shown.find("cannot write no/table.cpp"), std::string::npos) << shown;
    EXPECT_EQ(shown.find("solving"), std::string::npos) << shown;
}

// Of three pieces there are few samples.
TEST_F(CliEgdb, DesignsCatalogues) {
    Terminal terminal;
    ASSERT_EQ(run("catalogues table.cpp --pieces 3 2>" + terminal.path).status, 0);
    const std::string shown = terminal.read_printed();
    EXPECT_TRUE(
        std::regex_search(shown, std::regex("solving 3 pieces, time left \\d+:\\d\\d\r\x1b\\[Kdesigning "
                                            "catalogues\r\x1b\\[Kturn 1: \\d+ bytes")))
        << shown;
    EXPECT_TRUE(std::regex_search(shown, std::regex("turn 2: \\d+ bytes for all samples, time left 0:00")))
        << shown;
    EXPECT_TRUE(shown.ends_with("\r\x1b[K")) << shown;
    const std::string made = content("table.cpp"),
                      shipped = read_text(PROJECT_FOLDER "/egdb/catalogues_table.cpp");
    const size_t first = shipped.find("// catalogue 1\n");
    EXPECT_TRUE(made.substr(0, first) == shipped.substr(0, first)) << "catalogue 0 is always the same";
    EXPECT_NE(made.find("    // catalogue 49\n"), std::string::npos);
    EXPECT_FALSE(made == shipped);
}

TEST_F(CliEgdb, AnInterruptedDesignLeavesNothing) {
    for (const char* work : {"solving 4 pieces", "designing catalogues"}) {
        Terminal terminal;
        RunningProgram program(std::string("egdb catalogues table.cpp --pieces ") +
                                   (work[0] == 's' ? "4" : "3") + " 2>" + terminal.path,
                               folder.path);
        EXPECT_TRUE(terminal.wait_for(work));
        program.interrupt();
        EXPECT_EQ(program.finish().status, 128 + 2);
        EXPECT_TRUE(std::filesystem::is_empty(folder.path));
    }
}

TEST(CliEgdbText, NamesOfValues) {
    EXPECT_STREQ(egdb_value_text(EGDB_WIN), "win");
    EXPECT_STREQ(egdb_value_text(EGDB_LOSS), "loss");
    EXPECT_STREQ(egdb_value_text(EGDB_DRAW), "draw");
    EXPECT_STREQ(egdb_value_text(EGDB_DRAW_OR_LOSS), "draw_or_loss");
    EXPECT_STREQ(egdb_value_text(EGDB_WIN_OR_DRAW), "win_or_draw");
    EXPECT_STREQ(egdb_value_text(EGDB_UNKNOWN), "unknown");
    EXPECT_STREQ(egdb_value_text(EGDB_NOT_IN_CACHE), "unavailable");
    EXPECT_STREQ(egdb_value_text(EGDB_SUBDB_UNAVAILABLE), "unavailable");
}

TEST(CliEgdbText, NamesOfFiles) {
    EXPECT_EQ(egdb_file_of({1, 0, 1, 0}), "db2");
    EXPECT_EQ(egdb_file_of({2, 1, 1, 0}), "db4");
    EXPECT_EQ(egdb_file_of({4, 1, 4, 0}), "db9-4140");
}

}  // namespace
