// The score of a match as it is told.
#include "cli/match_report.h"

#include <gtest/gtest.h>

#include <vector>

#include "core/board.h"
#include "records/game_headers.h"
#include "tests/cli/program.h"

TEST(MatchReport, HalfPointsAreTheSidesOwn) {
    EXPECT_EQ(half_points(RESULT_WHITE_WINS, WHITE), 2);
    EXPECT_EQ(half_points(RESULT_WHITE_WINS, BLACK), 0);
    EXPECT_EQ(half_points(RESULT_BLACK_WINS, WHITE), 0);
    EXPECT_EQ(half_points(RESULT_BLACK_WINS, BLACK), 2);
    for (const int side : {BLACK, WHITE}) {
        EXPECT_EQ(half_points(RESULT_DRAW, side), 1);
        EXPECT_EQ(half_points(RESULT_UNKNOWN, side), 1) << "nobody has won";
    }
}

// The games of a match from a number on.
MatchScore score_of(const std::vector<int>& points, int32_t first = 0) {
    MatchScore score;
    for (const int half : points) add_game(score, first++, half);
    return score;
}

TEST(MatchReport, TheScoreIsToldAsFarAsItIsKnown) {
    EXPECT_EQ(score_text({}), "no games yet");
    EXPECT_EQ(score_text(score_of({2})), "score 100.0% (0 pairs)");
    EXPECT_EQ(score_text(score_of({2, 2})), "score 100.0% (1 pairs)") << "Elo would have no end";
    EXPECT_EQ(score_text(score_of({1, 1})), "score 50.0%, Elo +0.0 (1 pairs)");
    // A game without its partner counts in the score only; so does one whose partner was in another pair.
    EXPECT_EQ(score_text(score_of({1, 1, 2})), "score 66.7%, Elo +0.0 (1 pairs)");
    EXPECT_EQ(score_text(score_of({2, 0}, 1)), "score 50.0% (0 pairs)");
    EXPECT_EQ(score_text(score_of({2, 1, 1}, 1)), "score 66.7%, Elo +0.0 (1 pairs)");
    MatchScore gap;
    add_game(gap, 0, 2);
    add_game(gap, 3, 0);
    EXPECT_EQ(score_text(gap), "score 50.0% (0 pairs)");
}

// A score of 5/8 is 88.7 Elo points. Pairs of 1, 1/2, 1/2 and 1/2 have the standard error 1/8; 1.96 times
// that to both sides reaches from -85 to 330.
TEST(MatchReport, EloAndItsErrorComeFromPairs) {
    EXPECT_EQ(score_text(score_of({2, 2, 1, 1, 2, 0, 0, 2})), "score 62.5%, Elo +88.7 +- 207.6 (4 pairs)");
}

TEST(MatchReport, TheScoreOfAFileIsThatBeforeTheNumber) {
    const TemporaryFolder folder;
    const std::string path = folder.write("games.pdn",
                                          "[Event \"Game 1, opening a\"]\n[Result \"2-0\"]\n1. 32-28 *\n\n"
                                          "[Event \"Game 2, opening a\"]\n[Result \"1-1\"]\n1. 32-28 *\n\n"
                                          "[Event \"Game 3, opening b\"]\n[Result \"1-1\"]\n1. 32-28 *\n\n"
                                          "[Event \"another game\"]\n[Result \"2-0\"]\n1. 32-28 *\n\n"
                                          "[Event \"Game 4, opening b\"]\n[Result \"0-2\"]\n1. 32-28 *\n\n");
    const auto text = [&](int32_t games) { return score_text(score_in_file(path, games)); };
    EXPECT_EQ(text(4), score_text(score_of({2, 1, 1, 2})));
    EXPECT_EQ(text(3), score_text(score_of({2, 1, 1})));
    EXPECT_EQ(text(0), "no games yet");
    EXPECT_EQ(score_text(score_in_file(folder.path / "missing.pdn", 4)), "no games yet");
}
