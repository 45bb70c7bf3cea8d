// Threads and the values of all moves, as options of the commands that search.
#include <gtest/gtest.h>

#include <regex>

#include "tests/base/run_command.h"
#include "tests/cli/program.h"

namespace {

const std::string POSITION = "\"W:W31,37,41,K48:B6,12,K5\"";

TEST(CliThreads, OneToEightAreTaken) {
    for (const std::string& command :
         {"search " + POSITION, std::string("bench"), std::string("analyze x.pdn")}) {
        for (const std::string count : {"0", "9", "-1", "two"}) {
            const ProgramResult refused = run_program(command + " --threads " + count);
            EXPECT_EQ(refused.status, 2) << command << " " << count;
            EXPECT_NE(refused.errors.find("--threads"), std::string::npos) << refused.errors;
            EXPECT_EQ(refused.output, "");
        }
    }
    for (const std::string count : {"1", "2", "8"}) {
        const ProgramResult found = run_program("search " + POSITION + " --depth 7 --threads " + count);
        EXPECT_EQ(found.status, 0) << found.errors;
        EXPECT_EQ(found.errors, "");
        EXPECT_NE(last_line(found.output).find(" depth 7 "), std::string::npos) << found.output;
    }
}

TEST(CliThreads, BenchComparesTheTimes) {
    const ProgramResult result = run_program("bench --depth 3 --threads 2");
    EXPECT_EQ(result.status, 0) << result.errors;
    const std::string total = "nodes \\d+, \\d+\\.\\d\\d sec, \\d+ kN/s\n";
    EXPECT_TRUE(std::regex_search(
        result.output,
        std::regex("1 thread: " + total + "2 threads: \\d+\\.\\d\\d times as fast to the same depth\n" +
                   total + "$")))
        << result.output;
    // Below the depth of a split the second thread has nothing to do.
    std::smatch nodes;
    ASSERT_TRUE(std::regex_search(result.output, nodes, std::regex("1 thread: (nodes \\d+),")));
    EXPECT_EQ(last_line(result.output).find(nodes[1].str() + ","), 0u) << result.output;
}

TEST(CliAllScores, SearchValuesEveryMove) {
    for (const std::string threads : {"1", "3"}) {
        const ProgramResult found =
            run_program("search " + POSITION + " --all-scores --depth 5 --threads " + threads);
        EXPECT_EQ(found.status, 0) << found.errors;
        std::smatch line;
        ASSERT_TRUE(std::regex_search(
            found.output, line,
            std::regex(
                "time \\d+\\.\\d\\ds, depth 5, nodes \\d+, (\\d+-\\d+),(-?\\d+)  (\\d+-\\d+,-?\\d+  )+\n")))
            << found.output;
        EXPECT_EQ(
            last_line(found.output).find("best " + line[1].str() + " value " + line[2].str() + " depth 5 "),
            0u)
            << found.output;
    }
}

TEST(CliAllScores, AnalyzeCommentsWithTheValues) {
    const TemporaryFolder folder;
    const std::string file = folder.write("one.pdn", "[Event \"x\"]\n1. 32-28 19-23 *\n");
    const ProgramResult result =
        run_program("analyze " + quoted(file) + " --time 0.01 --all-scores --threads 2");
    EXPECT_EQ(result.status, 0) << result.errors;
    const std::regex comment("\\{depth \\d+,  \\d+\\.\\d sec,  (\\d+[-x]\\d+,-?\\d+\\s+)+pv ");
    const auto begin = std::sregex_iterator(result.output.begin(), result.output.end(), comment);
    EXPECT_EQ(std::distance(begin, std::sregex_iterator()), 3) << result.output;
}

}  // namespace
