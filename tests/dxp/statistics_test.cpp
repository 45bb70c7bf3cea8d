// The file of a match's results.
#include "dxp/statistics.h"

#include <random>

#include "base/file_calls.h"
#include "base/program_paths.h"
#include "tests/dxp/match_fixture.h"

namespace {

class StatisticsTest : public MatchTest {
  protected:
    void TearDown() override {
        file_calls = system_file_calls();
        MatchTest::TearDown();
    }
    static void set_results(const MatchCounters& results) {
        dxp_state.match_wins = results.wins;
        dxp_state.match_losses = results.losses;
        dxp_state.match_draws = results.draws;
        dxp_state.match_unknowns = results.unknowns;
    }
    static void set_names(const char* own, const char* other) {
        std::snprintf(dxp_state.engine_name, sizeof dxp_state.engine_name, "%s", own);
        std::snprintf(dxp_state.opponent_name, sizeof dxp_state.opponent_name, "%s", other);
    }
};

// In the order of the file.
MatchCounters counters(int32_t wins, int32_t losses, int32_t draws, int32_t unknowns) {
    return {.wins = wins, .draws = draws, .losses = losses, .unknowns = unknowns};
}

void expect_results(const MatchCounters& results, const MatchCounters& wanted) {
    EXPECT_EQ(results.wins, wanted.wins);
    EXPECT_EQ(results.losses, wanted.losses);
    EXPECT_EQ(results.draws, wanted.draws);
    EXPECT_EQ(results.unknowns, wanted.unknowns);
}

}  // namespace

TEST_F(StatisticsTest, TheLineIsThatOfTheTitle) {
    set_names("Tessarin", "Some Other 2.0");
    set_results(counters(12, 3, 45, 1));
    write_match_stats();
    EXPECT_EQ(content_of(stats_file()),
              "Tessarin vs Some Other 2.0:  12 wins, 3 losses, 45 draws, 1 unknowns\n");
}

TEST_F(StatisticsTest, TheFileIsThatOfTheCopy) {
    program_paths.instance_suffix = "[3]";
    EXPECT_EQ(match_stats_path(), folder.file("dxpstats[3].txt"));
}

TEST_F(StatisticsTest, WhatIsWrittenIsRead) {
    std::mt19937 random(5);
    for (int i = 0; i < 200; ++i) {
        const auto number = [&] { return static_cast<int32_t>(random() % (i < 100 ? 4 : 100000)); };
        const MatchCounters wanted{number(), number(), number(), number()};
        set_results(wanted);
        write_match_stats();
        MatchCounters results{-1, -1, -1, -1};
        const int32_t games = wanted.wins + wanted.losses + wanted.draws + wanted.unknowns;
        EXPECT_EQ(read_match_stats(results), games);
        if (games > 0) expect_results(results, wanted);
    }
}

TEST_F(StatisticsTest, NothingToReadIsNoMatch) {
    MatchCounters results = counters(1, 2, 3, 4);
    EXPECT_EQ(read_match_stats(results), 0) << "no file";
    write_content(stats_file(), "");
    EXPECT_EQ(read_match_stats(results), 0);
    for (const char* const text :
         {"no colon 1 wins, 2 losses, 3 draws, 4 unknowns", "A:", "A: 1 wins",
          "A: 1 wins, 2 losses, 3 draws,", "A: 1 wins, 2 losses, 3 draws, unknowns",
          "A: 1 win, 2 losses, 3 draws, 4 unknowns", "A: 2 losses, 3 draws, 4 unknowns",
          "A: 0 wins, 0 losses, 0 draws, 0 unknowns", "A: 1 wins, -2 losses, 3 draws, 4 unknowns",
          "A: 99999999999 wins, 2 losses, 3 draws, 4 unknowns",
          "A: 1 wins, 2 losses, 3 draws, 4294967296000 unknowns"}) {
        EXPECT_EQ(parse_match_stats(text, results), 0) << text;
        expect_results(results, counters(1, 2, 3, 4));
    }
}

TEST_F(StatisticsTest, BlanksMayBeAnyAndTheEndMayBeMissing) {
    MatchCounters results;
    EXPECT_EQ(parse_match_stats("A vs B:1 wins,2 losses,3 draws,4", results), 10);
    expect_results(results, counters(1, 2, 3, 4));
    EXPECT_EQ(
        parse_match_stats("A vs B:\n\t 5 \r\n wins, 6   losses,\n7 draws, 8 unknowns and more", results), 26);
    expect_results(results, counters(5, 6, 7, 8));
}

// Names are taken as they come, and what is behind the first colon is the results.
TEST_F(StatisticsTest, ANameWithAColonHidesTheResults) {
    set_names("Tessarin", "Engine: the second");
    set_results(counters(1, 1, 1, 1));
    write_match_stats();
    MatchCounters results;
    EXPECT_EQ(read_match_stats(results), 0);
}

// Whatever goes wrong, the results of the game before are still there.
TEST_F(StatisticsTest, AFailedWriteLeavesTheOldFile) {
    set_names("Tessarin", "Other");
    set_results(counters(1, 0, 0, 0));
    write_match_stats();
    const std::string before = content_of(stats_file());
    set_results(counters(2, 0, 0, 0));
    file_calls.write = [](int, const void*, size_t) { return ssize_t{-1}; };
    write_match_stats();
    EXPECT_EQ(content_of(stats_file()), before);
    file_calls = system_file_calls();
    file_calls.rename = [](const char*, const char*) { return -1; };
    write_match_stats();
    EXPECT_EQ(content_of(stats_file()), before);
    file_calls = system_file_calls();
    write_match_stats();
    EXPECT_NE(content_of(stats_file()), before);
    EXPECT_EQ(entries_of(folder.path), 1u) << "nothing is left behind";
}
