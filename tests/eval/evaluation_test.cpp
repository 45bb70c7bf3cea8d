#include "eval/regions.h"
#include "tests/eval/fixtures.h"
#include "tests/eval/slow_evaluation.h"

namespace {

void expect_like_slow_version(Random& random, int positions) {
    for (int i = 0; i < positions; ++i) {
        const Position position = random_position(random);
        ASSERT_TRUE(is_legal_setup(position));
        NodeSummary summary;
        summarize(position, summary);
        ASSERT_EQ(game_phase(summary), slow_phase(position));
        for (const int side : {BLACK, WHITE}) {
            const int32_t score = evaluate(position, side, summary);
            ASSERT_EQ(score, slow_evaluate(position, side))
                << "black " << position.black << " white " << position.white << " king " << position.king;
            ASSERT_EQ(summary.evaluation, score);
            ASSERT_TRUE(score % 2 == 0 || score == 1 || score == -1);
        }
    }
}

// A score before compression and evening, made by kings of one side alone: no term but theirs is there.
int32_t score_of_three_kings(int first, int further) {
    weights.params.has_kings_endgame = static_cast<int16_t>(first);
    weights.params.kings_endgame = static_cast<int16_t>(further);
    return score_of(position_of({.black_kings = {1, 2, 3}}), BLACK);
}

}  // namespace

TEST_F(EvalTest, IsLikeTheSlowVersionWithLearnedLookingWeights) {
    Random random(1);
    randomize_weights(random, 400);
    weights.params = {3, -7, 40, 111, 5000, 5600, 9100, 9400, 15100, 14800};
    expect_like_slow_version(random, 150000);
}

TEST_F(EvalTest, IsLikeTheSlowVersionWithWeightsOfTheWholeRange) {
    Random random(2);
    randomize_weights(random, INT16_MAX);
    expect_like_slow_version(random, 150000);
}

TEST_F(EvalTest, IsLikeTheSlowVersionWithTinyWeights) {
    Random random(3);
    randomize_weights(random, 3);
    weights.params = {1, -1, 30, 20, -30, 50, 27, -26, 25, 24};
    expect_like_slow_version(random, 50000);
}

TEST_F(EvalTest, ExtremeWeightsDoNotOverflow) {
    Random random(4);
    for (const int opening : {INT16_MIN, INT16_MAX}) {
        for (const int endgame : {INT16_MIN, INT16_MAX}) {
            const auto o = static_cast<int16_t>(opening);
            const auto e = static_cast<int16_t>(endgame);
            weights.params = {o, e, o, e, o, e, o, e, o, e};
            // Forward lookups of a board that is full of one colour and turned ones get opposite extremes.
            for (PatternTable& table : weights.patterns)
                for (size_t i = 0; i < PATTERN_ENTRIES; ++i)
                    table[i] = i > EMPTY_REGION
                                   ? PatternEntry{o, e}
                                   : PatternEntry{static_cast<int16_t>(~o), static_cast<int16_t>(~e)};
            expect_like_slow_version(random, 20000);
            for (const int side : {BLACK, WHITE}) {
                const Position all_black{BOARD_MASK & ~BLACK_PROMOTION_ROW, 0, 0, side, 0, nullptr};
                const Position all_white{0, BOARD_MASK & ~WHITE_PROMOTION_ROW, 0, side, 0, nullptr};
                EXPECT_EQ(score_of(all_black, side), slow_evaluate(all_black, side));
                EXPECT_EQ(score_of(all_white, side), slow_evaluate(all_white, side));
            }
        }
    }
}

TEST_F(EvalTest, PathsAgree) {
    Random random(5);
    randomize_weights(random, 2000);
    const std::vector<Path> paths = available_paths();
    for (int i = 0; i < 1000000; ++i) {
        const Position position = random_position(random);
        NodeSummary summary;
        summarize(position, summary);
        use_pext = paths[0].pext;
        have_popcnt = paths[0].popcnt;
        const int32_t expected = evaluate(position, position.side, summary);
        for (const Path& path : paths) {
            use_pext = path.pext;
            have_popcnt = path.popcnt;
            ASSERT_EQ(evaluate(position, position.side, summary), expected) << path.name;
        }
    }
}

TEST_F(EvalTest, TurnedBoardWithSwappedColoursScoresTheSame) {
    Random random(6);
    for (const int limit : {5, 700, INT16_MAX}) {
        randomize_weights(random, limit);
        for (int i = 0; i < 50000; ++i) {
            const Position position = random_position(random);
            const Position other = turned_and_swapped(position);
            ASSERT_EQ(score_of(position, position.side), score_of(other, other.side));
        }
    }
}

TEST_F(EvalTest, AsksForEitherSideWithOppositeSignsUnlessExact) {
    Random random(7);
    randomize_weights(random, 700);
    for (int i = 0; i < 50000; ++i) {
        const Position position = random_position(random);
        const int32_t black = score_of(position, BLACK);
        const int32_t white = score_of(position, WHITE);
        if (black == 1 && white == 1) continue;  // the tie of a small king ending
        ASSERT_EQ(black, -white);
    }
}

// The square of the opposite column weight that stands in the other row of the same pair.
TEST_F(EvalTest, BalanceIsTheSameWhenMirrored) {
    Random random(8);
    weights.params.lr_bal_opening = weights.params.lr_bal_endgame = 177;
    const auto mirrored = [](uint64_t set) {
        uint64_t result = 0;
        for (size_t square = 0; square < SQUARES; ++square)
            if (set & mask_of_square[square]) result |= mask_of_square[square / 10 * 10 + 9 - square % 10];
        return result;
    };
    int unbalanced = 0;
    for (int i = 0; i < 20000; ++i) {
        Position position = random_position(random, {40, 0});
        position.black &= ~position.king;
        position.white &= ~position.king;
        position.king = 0;
        const Position mirror{mirrored(position.black), mirrored(position.white), 0, BLACK, 0, nullptr};
        const int32_t score = score_of(position, BLACK);
        ASSERT_EQ(score_of(mirror, BLACK), score);
        unbalanced += score != 0;
    }
    EXPECT_GT(unbalanced, 10000);
}

TEST_F(EvalTest, PhaseOfTheStartIs80) {
    NodeSummary summary;
    summarize(START_POSITION, summary);
    EXPECT_EQ(game_phase(summary), 80);
    EXPECT_EQ(FULL_PHASE, 80);
}

TEST_F(EvalTest, PhaseOfASingleManByRow) {
    for (int square = 1; square <= 50; ++square) {
        const int row = (square - 1) / 5;
        NodeSummary summary;
        summarize(position_of({.black_men = {square}}), summary);
        EXPECT_EQ(game_phase(summary), row <= 3 ? 2 : row <= 8 ? 1 : 0) << square;
        summarize(position_of({.white_men = {square}}), summary);
        EXPECT_EQ(game_phase(summary), row >= 6 ? 2 : row >= 1 ? 1 : 0) << square;
        summarize(position_of({.black_kings = {square}}), summary);
        EXPECT_EQ(game_phase(summary), 0) << square;
    }
}

TEST_F(EvalTest, PhaseAbove80Extrapolates) {
    Position position = START_POSITION;
    position.black |= mask_of_square[20] | mask_of_square[21];
    NodeSummary summary;
    summarize(position, summary);
    ASSERT_EQ(game_phase(summary), 82);
    weights.params.men_opening = 5000;
    weights.params.men_endgame = -5000;
    // (10000 + 10000) * 82 - 80 * 10000 = 840000, and 210 after the division.
    EXPECT_EQ(score_of(position, BLACK), 210);
    EXPECT_EQ(score_of(position, WHITE), -210);
}

TEST_F(EvalTest, BoardWithoutMenLooksUpTheEmptyEntriesWhichCancel) {
    Random random(9);
    randomize_weights(random, INT16_MAX);
    const EvalParams params = weights.params;
    for (int i = 0; i < 2000; ++i) {
        const Position position = random_position(random, {20, 100});
        weights.params = params;
        const int32_t score = score_of(position, position.side);
        for (PatternTable& table : weights.patterns)
            table[EMPTY_REGION] = {static_cast<int16_t>(random()), static_cast<int16_t>(random())};
        EXPECT_EQ(score_of(position, position.side), score);
        // Phase 0: what the opening says does not count, and neither do men, tempo and balance.
        weights.params = {};
        weights.params.kings_endgame = params.kings_endgame;
        weights.params.has_kings_endgame = params.has_kings_endgame;
        EXPECT_EQ(score_of(position, position.side), score);
    }
}

TEST_F(EvalTest, EmptyIndexIsHalfOfTheTable) {
    EXPECT_EQ(EMPTY_REGION, 265720);
    // Only the entry of the region with no man is set. One man leaves some regions empty and fills others.
    for (size_t table = 0; table < 4; ++table) {
        clear_weights();
        weights.patterns[table][265720] = {5000, 5000};
        EXPECT_EQ(score_of(Position{}, BLACK), 0);
        // Square 1 is in region 0 alone, square 5 in region 1 alone; their twins stay empty.
        EXPECT_EQ(score_of(position_of({.black_men = {1}}), BLACK), table == 0 ? -100 : 0);
        EXPECT_EQ(score_of(position_of({.black_men = {5}}), BLACK), table == 1 ? -100 : 0);
    }
}

// The first square of a region is the most significant digit; a man of the side looked up is a 2.
TEST_F(EvalTest, DigitsOfTheRegions) {
    constexpr int REGION_1[12] = {3, 4, 5, 8, 9, 10, 13, 14, 15, 18, 19, 20};
    int power = 177147;
    for (const int square : REGION_1) {
        clear_weights();
        weights.patterns[1][static_cast<size_t>(265720 + power)] = {5000, 5000};
        weights.patterns[1][static_cast<size_t>(265720 - power)] = {2500, 2500};
        EXPECT_EQ(score_of(position_of({.black_men = {square}}), BLACK), 100) << square;
        EXPECT_EQ(score_of(position_of({.white_men = {51 - square}}), WHITE), 100) << square;
        if (square > 5) {
            EXPECT_EQ(score_of(position_of({.white_men = {square}}), BLACK), 50) << square;
        }
        if (square > 5) {
            EXPECT_EQ(score_of(position_of({.black_men = {51 - square}}), WHITE), 50) << square;
        }
        EXPECT_EQ(score_of(position_of({.black_kings = {square}}), BLACK), 0) << square;
        power /= 3;
    }
}

TEST_F(EvalTest, ColumnWeights) {
    weights.params.lr_bal_opening = weights.params.lr_bal_endgame = 1000;  // 20 points
    constexpr int COLUMNS[10][5] = {{6, 16, 26, 36, 46}, {1, 11, 21, 31, 41}, {7, 17, 27, 37, 47},
                                    {2, 12, 22, 32, 42}, {8, 18, 28, 38, 48}, {3, 13, 23, 33, 43},
                                    {9, 19, 29, 39, 49}, {4, 14, 24, 34, 44}, {10, 20, 30, 40, 50},
                                    {5, 15, 25, 35, 45}};
    constexpr int WEIGHTS[10] = {-9, -7, -5, -3, -1, 1, 3, 5, 7, 9};
    // A man alone shows the size of his weight, and beside one on the last column, of weight 9, its sign too.
    for (int column = 0; column < 10; ++column) {
        for (const int square : COLUMNS[column]) {
            const int size = std::abs(WEIGHTS[column]);
            if (square <= 45) {
                EXPECT_EQ(score_of(position_of({.black_men = {square}}), BLACK), -20 * size) << square;
            }
            if (square >= 6) {
                EXPECT_EQ(score_of(position_of({.white_men = {square}}), BLACK), 20 * size) << square;
            }
            const int other = square == 25 ? 35 : 25;
            const int lean = std::abs(WEIGHTS[column] + 9);
            if (square <= 45) {
                EXPECT_EQ(score_of(position_of({.black_men = {square, other}}), BLACK), -20 * lean) << square;
            }
        }
    }
}

TEST_F(EvalTest, TempoByRow) {
    weights.params.tempo_opening = weights.params.tempo_endgame = 500;  // 10 points
    for (int square = 1; square <= 50; ++square) {
        const int row = (square - 1) / 5;
        if (square <= 45) {
            EXPECT_EQ(score_of(position_of({.black_men = {square}}), BLACK), 10 * row) << square;
        }
        if (square >= 6) {
            EXPECT_EQ(score_of(position_of({.white_men = {square}}), WHITE), 90 - 10 * row) << square;
        }
    }
    EXPECT_EQ(score_of(START_POSITION, BLACK), 0);
}

TEST_F(EvalTest, MaterialTerms) {
    weights.params.men_opening = weights.params.men_endgame = 5000;  // 100 points
    EXPECT_EQ(score_of(position_of({.black_men = {1, 2, 3}, .white_men = {50}}), BLACK), 200);
    EXPECT_EQ(score_of(position_of({.black_men = {1, 2, 3}, .white_men = {50}}), WHITE), -200);
    clear_weights();
    weights.params.kings_opening = weights.params.kings_endgame = 5000;
    EXPECT_EQ(score_of(position_of({.black_kings = {1}}), BLACK), 0);
    EXPECT_EQ(score_of(position_of({.black_kings = {1, 2, 3}}), BLACK), 200);
    EXPECT_EQ(score_of(position_of({.white_kings = {1, 2, 3}}), BLACK), -200);
    clear_weights();
    weights.params.has_kings_opening = weights.params.has_kings_endgame = 5000;
    EXPECT_EQ(score_of(position_of({.black_kings = {1}}), BLACK), 100);
    EXPECT_EQ(score_of(position_of({.black_kings = {1, 2, 3}}), BLACK), 100);
    EXPECT_EQ(score_of(position_of({.white_kings = {1, 2, 3}}), BLACK), -100);
}

TEST_F(EvalTest, OpeningAndEndgameWeightsByPhase) {
    Position position = START_POSITION;
    position.white &= ~mask_of_square[49];
    NodeSummary summary;
    summarize(position, summary);
    ASSERT_EQ(game_phase(summary), 78);
    weights.params.men_opening = 5000;
    EXPECT_EQ(score_of(position, BLACK), 98);  // 5000 * 78 = 390000, 97.5 rounded up
    weights.params.men_opening = 0;
    weights.params.men_endgame = 5000;
    EXPECT_EQ(score_of(position, BLACK), 2);  // 5000 * 2 = 10000, 2.5 rounded up to 3, then evened
}

TEST_F(EvalTest, RoundsAwayFromZeroAtHalves) {
    EXPECT_EQ(score_of_three_kings(74, 0), 0);  // 1 before it is evened
    EXPECT_EQ(score_of_three_kings(75, 0), 2);
    EXPECT_EQ(score_of_three_kings(-74, 0), 0);
    EXPECT_EQ(score_of_three_kings(-75, 0), -2);
    EXPECT_EQ(score_of_three_kings(174, 0), 2);  // 3 before
    EXPECT_EQ(score_of_three_kings(175, 0), 4);
}

TEST_F(EvalTest, CompressionJumpsBehind1500) {
    EXPECT_EQ(score_of_three_kings(25000, 25000), 1500);
    EXPECT_EQ(score_of_three_kings(25024, 25000), 1500);  // not yet rounded to 1501
    EXPECT_EQ(score_of_three_kings(25050, 25000), 1686);  // 1501 becomes 1687, evened
    EXPECT_EQ(score_of_three_kings(25400, 25000), 1688);  // 1508 becomes 1688
    EXPECT_EQ(score_of_three_kings(32000, 32000), 1740);  // 1920 becomes 1740
    EXPECT_EQ(score_of_three_kings(32766, 32767), 1744);  // 1966 becomes 1745
    EXPECT_EQ(score_of_three_kings(-25000, -25000), -1500);
    EXPECT_EQ(score_of_three_kings(-25050, -25000), -1686);
    EXPECT_EQ(score_of_three_kings(-25400, -25000), -1688);
    weights.params.has_kings_endgame = weights.params.kings_endgame = 25000;
    EXPECT_EQ(score_of(position_of({.black_kings = {1, 2, 3, 4}}), BLACK), 1750);  // 2000
    EXPECT_EQ(score_of(position_of({.black_kings = {1, 2, 3, 4}}), WHITE), -1750);
    EXPECT_EQ(score_of(position_of({.white_kings = {1, 2, 3, 4}}), BLACK), -1750);
    EXPECT_EQ(score_of(position_of({.white_kings = {1, 2, 3, 4}}), WHITE), 1750);
}

TEST_F(EvalTest, OverwritesTheCachedValue) {
    weights.params.men_opening = weights.params.men_endgame = 5000;
    const Position position = position_of({.black_men = {1, 2}, .white_men = {50}});
    NodeSummary summary;
    summarize(position, summary);
    EXPECT_EQ(summary.evaluation, NOT_EVALUATED);
    EXPECT_EQ(evaluate(position, BLACK, summary), 100);
    EXPECT_EQ(summary.evaluation, 100);
    summary.evaluation = 12345;
    EXPECT_EQ(evaluate(position, BLACK, summary), 100);
    EXPECT_EQ(summary.evaluation, 100);
    EXPECT_EQ(evaluate(position, WHITE, summary), -100);
    EXPECT_EQ(summary.evaluation, -100);
}

// The summary is what is evaluated; of the position only the presence of kings is looked at.
TEST_F(EvalTest, ReadsMenFromTheSummary) {
    Random random(10);
    randomize_weights(random, 500);
    const Position position = random_position(random, {30, 0});
    NodeSummary summary;
    summarize(position, summary);
    const int32_t score = evaluate(position, BLACK, summary);
    EXPECT_EQ(evaluate(START_POSITION, BLACK, summary), score);
}
