// Opening books on the console: built, stopped and gone on with, looked into and checked.
#include <gtest/gtest.h>

#include <cstdio>
#include <regex>

#include "tests/base/run_command.h"
#include "tests/cli/program.h"

namespace {

constexpr const char* START = "\"W:W31-50:B1-20\"";

class CliBook : public testing::Test {
  protected:
    // Builds the book from so many positions; the effort is small.
    ProgramResult build(const std::string& name, int positions, const std::string& more = "",
                        int quick_nodes = 200) const {
        return run("build " + name + " --hash 1 --nodes 2000 --quick-nodes " + std::to_string(quick_nodes) +
                   " --positions " + std::to_string(positions) + " " + more);
    }
    ProgramResult run(const std::string& arguments) const {
        return run_program("book " + arguments, "", folder.path);
    }
    std::string content(const std::string& name) const { return read_text(folder.path / name); }

    TemporaryFolder folder;
};

}  // namespace

TEST_F(CliBook, IsTheSameWhateverTheJobsAndTheStops) {
    const std::string effort =
        " --deep-positions 20 --deep-nodes 4000 --line-moves 1 --line-nodes 4000 --line-variants 2 "
        "--line-reply-nodes 1000 --line-margin 2";
    const ProgramResult whole = build("whole.odb", 130, "--jobs 1" + effort);
    ASSERT_EQ(whole.status, 0) << whole.errors;
    int positions = 0;
    ASSERT_EQ(std::sscanf(whole.output.c_str(), "positions %d left out 0 with kings 0 king sets 0 slots ",
                          &positions),
              1)
        << whole.output;
    EXPECT_GT(positions, 150) << "with the lines";
    ASSERT_EQ(build("grown.odb", 40, "--jobs 2" + effort).status, 0);
    EXPECT_NE(content("grown.odb"), content("whole.odb"));
    // The end of a line is missing, as after a power cut.
    const std::string work = content("grown.odb.work");
    folder.write("grown.odb.work", work.substr(0, work.size() - 10));
    const ProgramResult grown = build("grown.odb", 130, "--jobs 2" + effort);
    ASSERT_EQ(grown.status, 0) << grown.errors;
    EXPECT_EQ(content("grown.odb"), content("whole.odb"));
    EXPECT_EQ(grown.output, whole.output);
}

TEST_F(CliBook, AnInterruptedBuildIsGoneOnWith) {
    const std::string deep =
        "build a.odb --hash 1 --positions 66 --nodes 2000 --quick-nodes 200 --jobs 2 "
        "--deep-positions 66 --deep-nodes ";
    const std::string endless = deep + "100000000 --work work.txt";
    RunningProgram program("book " + endless, folder.path);
    ASSERT_TRUE(wait_for_text(folder.path / "work.txt", "opening book work"));
    program.interrupt();
    EXPECT_EQ(wait_for_child(program.child), 1);
    EXPECT_NE(read_text(program.files.path / "err").find("the same command goes on from here"),
              std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(folder.path / "a.odb")) << "a book is whole or not there";
    EXPECT_EQ(run(deep + "3000 --work work.txt").status, 0);
    EXPECT_TRUE(std::filesystem::exists(folder.path / "a.odb"));
}

TEST_F(CliBook, WorkOnOtherTermsIsLeftAlone) {
    ASSERT_EQ(build("a.odb", 2).status, 0);
    const std::string work = content("a.odb.work");
    const ProgramResult other = build("a.odb", 3, "", 300);
    EXPECT_EQ(other.status, 1);
    EXPECT_NE(other.errors.find("was begun with other quick nodes, table or weights"), std::string::npos);
    EXPECT_EQ(content("a.odb.work"), work);
}

TEST_F(CliBook, TheWorkIsNotTheBook) {
    ASSERT_EQ(build("a.odb", 2).status, 0);
    const std::string work = content("a.odb.work");
    for (const char* names : {"new --work new", "a.odb.work --work ./a.odb.work"}) {
        const ProgramResult result = run("build " + std::string(names) + " --hash 1 --positions 2");
        EXPECT_EQ(result.status, 1) << names;
        EXPECT_EQ(result.errors, "tessarin-cli: the book cannot take the place of its work file\n");
    }
    EXPECT_EQ(content("a.odb.work"), work);
    EXPECT_FALSE(std::filesystem::exists(folder.path / "new"));
}

TEST_F(CliBook, AWorkFileHasOneBuild) {
    RunningProgram program("book build a.odb --hash 1 --positions 1000000 --nodes 100000 --work work.txt",
                           folder.path);
    ASSERT_TRUE(wait_for_text(folder.path / "work.txt", "opening book work"));
    const ProgramResult second = build("b.odb", 2, "--work work.txt");
    EXPECT_EQ(second.status, 1);
    EXPECT_NE(second.errors.find("another build writes "), std::string::npos) << second.errors;
    program.interrupt();
    program.finish();
}

TEST_F(CliBook, TellsWhatStandsInABook) {
    ASSERT_EQ(build("a.odb", 90).status, 0);
    const ProgramResult probe = run(std::string("probe --book a.odb ") + START);
    EXPECT_EQ(probe.status, 0);
    EXPECT_NE(probe.output.find(")*"), std::string::npos) << probe.output;
    EXPECT_EQ(run("probe --book a.odb W:W31:BK5").output, "W:W31:BK5 not in book\n");
    EXPECT_EQ(run("probe a.odb W:W31:BK5").output, "W:W31:BK5 not in book\n");
    EXPECT_EQ(run(std::string("probe a.odb ") + START).output, probe.output);
    EXPECT_EQ(run("probe b.odb --book a.odb W:W31:BK5").status, 2) << "two books";
    const std::string start = std::string(START).substr(1, std::string(START).size() - 2);
    const ProgramResult many =
        run_program("book probe --book a.odb -", start + "\nW:W31:BK5\nW:W3:B20\nW:W31:BK5\n", folder.path);
    EXPECT_EQ(many.status, 1);
    EXPECT_EQ(many.output, probe.output + "W:W31:BK5 not in book\n") << "it ends with the wrong one";
    EXPECT_EQ(last_line(many.errors), "tessarin-cli: Illegal position");
    EXPECT_EQ(
        run_program("book probe --book a.odb -", "\n" + start + "\r\n  \nW:W31:BK5 \n", folder.path).output,
        probe.output + "W:W31:BK5 not in book\n")
        << "blank lines and the ends of lines of other systems";
    const ProgramResult dump = run("dump --book a.odb");
    EXPECT_EQ(dump.status, 0);
    EXPECT_EQ(count_lines(dump.output), 90);
    const ProgramResult check = run("check --book a.odb --lines 5 --nodes 2000");
    EXPECT_EQ(check.status, 0);
    EXPECT_TRUE(check.output.starts_with("positions 90 with kings 0 ")) << check.output;
    EXPECT_NE(check.output.find("illegal positions 0 best moves 0 second-best moves 0, not found 0\n"),
              std::string::npos)
        << check.output;
}

TEST_F(CliBook, TellsOfLinesThatAreLost) {
    ASSERT_EQ(build("a.odb", 90).status, 0);
    // At every other end one side has less, if only by a little.
    const ProgramResult check = run("check --book a.odb --lines 20 --nodes 300 --margin 0");
    EXPECT_EQ(check.status, 1) << check.errors;
    const std::regex line("lost for (black|white): ([BW]):W[^ ]* value (-?\\d+), in the book -?\\d+\n");
    int lost = 0;
    for (std::sregex_iterator at(check.output.begin(), check.output.end(), line), end; at != end; ++at) {
        ++lost;
        const int value = std::stoi((*at)[3]);
        EXPECT_TRUE((*at)[1] == "black" ? value < 0 : value > 0) << at->str();
    }
    EXPECT_GT(lost, 0);
    EXPECT_NE(check.output.find(" lost by more than 0: " + std::to_string(lost) + ","), std::string::npos)
        << check.output;
}

// A build of many short searches that would take hours.
constexpr const char* LONG =
    " book build a.odb --hash 1 --positions 1000000 --nodes 2000 --quick-nodes 200 --jobs 2 ";

TEST_F(CliBook, AWorkerThatDiesEndsTheBuild) {
    // Nothing is waited for when the build has ended.
    const std::string wait = "do kill -0 $build || exit 9; sleep 0.05; done\n";
    folder.write("script", quoted(PROGRAM) + LONG +
                               "&\nbuild=$!\n"
                               "workers() { cat /proc/$build/task/*/children; }\n"
                               "while set -- $(workers); [ $# -lt 2 ]; " +
                               wait + "while ! [ -s a.odb.work ]; " + wait + "kill -9 $2\nwait $build\n");
    const ProgramResult result = run_program("script", "", folder.path, "/bin/sh");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "tessarin-cli: a worker failed\n");
    EXPECT_FALSE(std::filesystem::exists(folder.path / "a.odb"));
}

TEST_F(CliBook, WorkThatCannotBeKeptEndsTheBuild) {
    // Files may have a kilobyte, as on a full disk.
    folder.write("script", "trap '' XFSZ\nulimit -f 1\nexec " + quoted(PROGRAM) + LONG);
    const ProgramResult full = run_program("script", "", folder.path, "/bin/bash");
    EXPECT_EQ(full.status, 1);
    EXPECT_TRUE(full.errors.starts_with("tessarin-cli: cannot write ")) << full.errors;
    EXPECT_NE(full.errors.find("/a.odb.work\n"), std::string::npos) << full.errors;
    const ProgramResult nowhere = build("a.odb", 2, "--work nowhere/work");
    EXPECT_EQ(nowhere.status, 1);
    EXPECT_TRUE(nowhere.errors.starts_with("tessarin-cli: cannot open ")) << nowhere.errors;
    EXPECT_TRUE(nowhere.errors.ends_with("nowhere/work\n")) << nowhere.errors;
}

TEST_F(CliBook, AWorkerTellsWhatItCannotAnswer) {
    ASSERT_EQ(run_program("weights seed --out seed.bin", "", folder.path).status, 0);
    const ProgramResult result =
        run_program("book-worker --weights seed.bin --hash 1", "nonsense\n", folder.path);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "tessarin-cli: not a question to a worker: nonsense\n");
    EXPECT_EQ(run_program("book-worker --weights none.bin", "", folder.path).status, 1);
}

TEST_F(CliBook, ABookOfNothing) {
    EXPECT_EQ(build("empty.odb", 0).status, 0);
    EXPECT_EQ(run("dump --book empty.odb").output, "");
    EXPECT_NE(run(std::string("probe --book empty.odb ") + START).output.find("not in book"),
              std::string::npos);
}

TEST_F(CliBook, TellsWhatIsWrong) {
    ASSERT_EQ(build("a.odb", 5).status, 0);
    folder.write("cut.odb", content("a.odb").substr(0, 50));
    const std::string questions[] = {std::string("probe --book NAME ") + START, "dump --book NAME",
                                     "check --book NAME --lines 1"};
    for (std::string question : questions)
        for (const char* name : {"cut.odb", "none.odb"}) {
            std::string arguments = question;
            const ProgramResult result = run(arguments.replace(arguments.find("NAME"), 4, name));
            EXPECT_EQ(result.status, 1) << arguments;
            EXPECT_NE(result.errors.find("cannot read the book "), std::string::npos) << result.errors;
            EXPECT_TRUE(result.errors.ends_with(std::string(name) + '\n')) << result.errors;
        }
    std::filesystem::create_directory(folder.path / "taken");
    const ProgramResult taken = build("taken", 0);
    EXPECT_EQ(taken.status, 1);
    EXPECT_NE(taken.errors.find("cannot write "), std::string::npos);
    EXPECT_EQ(build("a.odb", 1, "--weights none.bin").status, 1);
    EXPECT_EQ(run("probe --book a.odb nonsense").status, 1);
    for (const char* const arguments : {"", "build", "build a.odb --positions -1", "build a.odb --jobs 0",
                                        "build a.odb --nodes 0", "probe", "check --margin x"})
        EXPECT_EQ(run(arguments).status, 2) << arguments;
}
