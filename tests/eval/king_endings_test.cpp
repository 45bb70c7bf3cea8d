// The damping of endings in which both sides have a king.
#include <cstdlib>
#include <optional>

#include "tests/eval/fixtures.h"

namespace {

// The places that the pieces of an ending are put on, in turn.
constexpr int BLACK_MEN_PLACES[4] = {41, 42, 43, 44};
constexpr int WHITE_MEN_PLACES[4] = {36, 37, 38, 39};
constexpr int BLACK_KING_PLACES[6] = {1, 2, 3, 4, 5, 6};
constexpr int WHITE_KING_PLACES[6] = {11, 12, 13, 14, 15, 16};

struct Counts {
    int black_men;
    int white_men;
    int black_kings;
    int white_kings;
};

Position ending(const Counts& counts) {
    Pieces pieces;
    for (int i = 0; i < counts.black_men; ++i) pieces.black_men.push_back(BLACK_MEN_PLACES[i]);
    for (int i = 0; i < counts.white_men; ++i) pieces.white_men.push_back(WHITE_MEN_PLACES[i]);
    for (int i = 0; i < counts.black_kings; ++i) pieces.black_kings.push_back(BLACK_KING_PLACES[i]);
    for (int i = 0; i < counts.white_kings; ++i) pieces.white_kings.push_back(WHITE_KING_PLACES[i]);
    return position_of(pieces);
}

// 61 points for each row of tempo: black's men stand 8 rows ahead, white's 2. 131 for each king behind the
// first. The weights are the same for both ends of the game, so that the phase does not count.
int undamped(const Counts& counts) {
    const int tempo = 8 * counts.black_men - 2 * counts.white_men;
    const int further = std::max(0, counts.black_kings - 1) - std::max(0, counts.white_kings - 1);
    return 61 * tempo + 131 * further;
}

void set_ending_weights() {
    weights.params.tempo_opening = weights.params.tempo_endgame = 50 * 61;
    weights.params.kings_opening = weights.params.kings_endgame = 50 * 131;
}

// The divisors of the table by the larger number of pieces, 4 or 5, and the number of drawish signs.
constexpr int DIVISORS[2][3] = {{2, 4, 16}, {1, 2, 4}};

// Expected score for black, or nothing if the result is exact.
std::optional<int> expected(const Counts& counts) {
    const int k = std::min(counts.black_kings, counts.white_kings);
    int s = undamped(counts);
    if (s > 1500) s = s / 8 + 1500;
    if (s < -1500) s = s / 8 - 1500;
    if (k > 0) {
        s = 3 * s / (k + 3);
        const int black = counts.black_men + counts.black_kings;
        const int white = counts.white_men + counts.white_kings;
        const int larger = std::max(black, white);
        if (std::abs(black - white) < 3) {
            if (larger <= 3) return {};
            const int c = (k >= 2 ? 1 : 0) + (counts.black_kings == counts.white_kings ? 1 : 0);
            if (larger <= 5) s /= DIVISORS[larger - 4][c];
        }
    }
    return s / 2 * 2;
}

}  // namespace

// All endings with up to four men and six kings a side, so each cell of the table many times.
TEST_F(EvalTest, KingEndingsOfAllCounts) {
    set_ending_weights();
    int exact = 0;
    int seen[2][3] = {};
    for (int bm = 0; bm <= 4; ++bm)
        for (int wm = 0; wm <= 4; ++wm)
            for (int bk = 0; bk <= 6; ++bk)
                for (int wk = 0; wk <= 6; ++wk) {
                    const Counts counts{bm, wm, bk, wk};
                    const Position position = ending(counts);
                    const int lead = bm + bk - wm - wk;
                    const std::optional<int> score = expected(counts);
                    if (score) {
                        EXPECT_EQ(score_of(position, BLACK), *score) << bm << wm << bk << wk;
                        EXPECT_EQ(score_of(position, WHITE), -*score) << bm << wm << bk << wk;
                    } else {
                        ++exact;
                        EXPECT_EQ(score_of(position, BLACK), lead >= 0 ? 1 : -1) << bm << wm << bk << wk;
                        EXPECT_EQ(score_of(position, WHITE), lead <= 0 ? 1 : -1) << bm << wm << bk << wk;
                    }
                    const int larger = std::max(bm + bk, wm + wk);
                    const int fewer = std::min(bk, wk);
                    if (score && fewer > 0 && std::abs(lead) < 3 && (larger == 4 || larger == 5) &&
                        *score != 0)
                        ++seen[larger - 4][(fewer >= 2) + (bk == wk)];
                }
    EXPECT_GT(exact, 0);
    for (const auto& row : seen)
        for (const int cell : row) EXPECT_GT(cell, 0);
}

// Each cell of the table once more, in numbers. Every ending is worth 1000 points before the damping.
TEST_F(EvalTest, KingEndingTableInNumbers) {
    const auto score = [](const Counts& counts) {
        const int tempo = 8 * counts.black_men - 2 * counts.white_men;
        weights.params.tempo_opening = weights.params.tempo_endgame = static_cast<int16_t>(50000 / tempo);
        const Position position = ending(counts);
        EXPECT_EQ(score_of(position, WHITE), -score_of(position, BLACK));
        return score_of(position, BLACK);
    };
    EXPECT_EQ(score({1, 0, 1, 4}), 374);  // 3000 / 4 / 2 = 375
    EXPECT_EQ(score({1, 0, 2, 4}), 150);  // 3000 / 5 / 4
    EXPECT_EQ(score({3, 3, 1, 1}), 186);  // 3000 / 4 / 4 = 187
    EXPECT_EQ(score({1, 0, 3, 3}), 30);   // 3000 / 6 / 16 = 31
    EXPECT_EQ(score({2, 0, 1, 5}), 750);  // 3000 / 4
    EXPECT_EQ(score({1, 0, 4, 3}), 250);  // 3000 / 6 / 2
    EXPECT_EQ(score({1, 0, 4, 4}), 106);  // 3000 / 7 / 4 = 107
    EXPECT_EQ(score({3, 0, 1, 6}), 750);  // six pieces: no more than 3000 / 4
    EXPECT_EQ(score({1, 0, 5, 4}), 428);  // 3000 / 7
    EXPECT_EQ(score({1, 0, 5, 5}), 374);  // 3000 / 8 = 375
    EXPECT_EQ(score({1, 0, 4, 2}), 600);  // three pieces more: 3000 / 5
    EXPECT_EQ(score({1, 0, 0, 3}), 1000);
    EXPECT_EQ(score({1, 0, 2, 0}), 1000);
    EXPECT_EQ(score({1, 0, 0, 0}), 1000);
}

TEST_F(EvalTest, FourKingsAgainstTwo) {
    weights.params.kings_opening = weights.params.kings_endgame = 25000;
    EXPECT_EQ(score_of(ending({0, 0, 4, 2}), BLACK), 150);  // 1000 * 3 / 5 / 4
    EXPECT_EQ(score_of(ending({0, 0, 4, 2}), WHITE), -150);
    EXPECT_EQ(score_of(ending({0, 0, 2, 4}), BLACK), -150);
    EXPECT_EQ(score_of(ending({0, 0, 2, 4}), WHITE), 150);
}

TEST_F(EvalTest, SmallestKingEndingsAreExact) {
    const Position one_each = ending({0, 0, 1, 1});
    EXPECT_EQ(score_of(one_each, BLACK), 1);
    EXPECT_EQ(score_of(one_each, WHITE), 1);
    const Position three_to_one = ending({0, 0, 3, 1});
    EXPECT_EQ(score_of(three_to_one, BLACK), 1);
    EXPECT_EQ(score_of(three_to_one, WHITE), -1);
    const Position one_to_three = ending({0, 0, 1, 3});
    EXPECT_EQ(score_of(one_to_three, BLACK), -1);
    EXPECT_EQ(score_of(one_to_three, WHITE), 1);
    const Position with_men = ending({2, 1, 1, 1});
    EXPECT_EQ(score_of(with_men, BLACK), 1);
    EXPECT_EQ(score_of(with_men, WHITE), -1);

    // Whatever the weights are, and the cache gets it too.
    Random random(1);
    randomize_weights(random, INT16_MAX);
    NodeSummary summary;
    summarize(three_to_one, summary);
    EXPECT_EQ(evaluate(three_to_one, WHITE, summary), -1);
    EXPECT_EQ(summary.evaluation, -1);
    EXPECT_EQ(score_of(one_each, BLACK), 1);
    EXPECT_EQ(score_of(one_each, WHITE), 1);
}

TEST_F(EvalTest, DampingAndExactResultsNeedKingsOfBothSides) {
    weights.params.has_kings_opening = weights.params.has_kings_endgame = 5000;
    EXPECT_EQ(score_of(ending({0, 0, 1, 0}), BLACK), 100);
    EXPECT_EQ(score_of(ending({0, 1, 1, 0}), BLACK), 100);
    EXPECT_EQ(score_of(ending({0, 3, 1, 0}), BLACK), 100);
    EXPECT_EQ(score_of(ending({1, 1, 0, 0}), BLACK), 0);
}

TEST_F(EvalTest, DampingEndsBehindPhase40) {
    weights.params.men_opening = weights.params.men_endgame = 1000;
    Pieces pieces;
    for (int square = 1; square <= 20; ++square) pieces.black_men.push_back(square);
    pieces.black_kings = {49};
    pieces.white_kings = {50};
    NodeSummary summary;
    summarize(position_of(pieces), summary);
    ASSERT_EQ(game_phase(summary), 40);
    EXPECT_EQ(score_of(position_of(pieces), BLACK), 300);  // 400 * 3 / 4
    pieces.black_men.push_back(21);
    summarize(position_of(pieces), summary);
    ASSERT_EQ(game_phase(summary), 41);
    EXPECT_EQ(score_of(position_of(pieces), BLACK), 420);
}
