// What the answers of a database do in the nodes of the tree and in quiescence.
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "tests/search/node_fixture.h"

namespace {

TEST_F(NodeTest, ALevelDrawHasTheSignOfTheSideInTheTreeOnly) {
    answer_with(EGDB_DRAW, EGDB_DRAW);
    for (const bool black : {true, false}) {
        const Position p = position_of(black ? "B:WK46:BK5" : "W:WK46:BK6");
        expect_leaf(node(p, 4, 8, -50, 50), black ? 1 : -1, 4);
        EXPECT_EQ(quiet(p, 4, 0, -50, 50).value, 1);
        EXPECT_EQ(captures(p, 4, -50, 50).value, 1);
        EXPECT_TRUE(entry_of(p).free());
    }
}

TEST_F(NodeTest, DrawsScoreByMaterial) {
    answer_with(EGDB_DRAW, EGDB_DRAW);
    // Men far apart on both wings, with nothing to take.
    const std::pair<const char*, int> cases[] = {
        {"WK46:BK6,K7,K8,K9,K10,K1,K2,K3", 5},  // 21, beyond the table
        {"WK46:BK6,K7", 3},
        {"WK46:B6,K7,K8", 5},
        {"W46,47,48,49:B6", -3},
        {"W46,47,48,49,50:B6", -5},
        {"W46,47:B6", -3},
        {"W46:B6,7", 3},
        {"W46:B6,7,8,9", 3},
        {"W46:B6,7,8,9,10", 5},
        {"W46,K47:B6,7", -3},
        {"WK46:B6,7,8", 0},
    };
    for (const auto& [pieces, score] : cases) {
        for (const int side : {BLACK, WHITE}) {
            const Position p = position_of(std::string(side == BLACK ? "B:" : "W:") + pieces);
            if (has_capture(p, side)) continue;
            const int for_black = score == 0 ? 1 : score;
            EXPECT_EQ(node(p, 4, 8, -50, 50).value, side == BLACK ? for_black : -for_black) << pieces;
            if (!has_capture(p, side ^ 1)) {
                EXPECT_EQ(quiet(p, 4, 0, -50, 50).value, for_black) << pieces;
            }
        }
    }
}

TEST_F(NodeTest, TheTableOfDrawScores) {
    for (int m = -20; m <= 20; ++m) {
        NodeSummary summary{};
        summary.black_kings = m > 0 ? m / 3 : 0;
        summary.black_men = m > 0 ? m % 3 : 0;
        summary.white_kings = m < 0 ? -m / 3 : 0;
        summary.white_men = m < 0 ? -m % 3 : 0;
        const int want = m <= -4 ? -5 : m < 0 ? -3 : m == 0 ? 0 : m <= 3 ? 3 : 5;
        EXPECT_EQ(egdb_draw_score(summary), want) << m;
    }
}

// White to move shuts the last black man in; after any other move the game goes on.
constexpr char SHUT_IN[] = "W:W11,22,50:B6";

TEST_F(NodeTest, AWinBelowBetaIsTheValueToBeat) {
    const Position p = position_of(SHUT_IN);
    NodeSummary summary;
    summarize(p, summary);
    EgdbValue elsewhere = EGDB_DRAW;
    answer_with(EGDB_UNKNOWN, EGDB_UNKNOWN);
    database_answer = [&](const Position& asked, int, bool) {
        return same_pieces(asked, p) ? EGDB_WIN : elsewhere;
    };
    const int win = egdb_score(p, WHITE, EGDB_WIN, summary);
    ASSERT_GT(win, 2600);
    ASSERT_LT(win, 2900);
    expect_leaf(node(p, 4, 15, win - 1, win), win, 4);
    // With nothing better the win stands, as an upper bound.
    const Answer kept = node(p, 4, 15, win, win + 1);
    EXPECT_EQ(kept.value, win);
    EXPECT_GT(kept.nodes, 1u);
    EXPECT_EQ(entry_of(p).type(), BOUND_UPPER);
    // A better move is kept with its own value.
    ASSERT_EQ(tt_allocate(), 0);
    elsewhere = EGDB_UNKNOWN;
    EXPECT_EQ(node(p, 4, 15, win, 4000).value, 4000 - 5);
    EXPECT_EQ(entry_of(p).type(), BOUND_EXACT);
}

TEST_F(NodeTest, AWinIsTheValueToBeatForASingleReplyToo) {
    const Position p = position_of("W:W46:B1,2");
    NodeSummary summary;
    summarize(p, summary);
    answer_with(EGDB_UNKNOWN, EGDB_UNKNOWN);
    database_answer = [&](const Position& asked, int, bool) {
        return same_pieces(asked, p) ? EGDB_WIN : EGDB_UNKNOWN;
    };
    const int win = egdb_score(p, WHITE, EGDB_WIN, summary);
    EXPECT_EQ(node(p, 4, 15, win, win + 1).value, win);
    EXPECT_EQ(entry_of(p).value(), win);
    EXPECT_EQ(entry_of(p).type(), BOUND_UPPER);
    EXPECT_EQ(entry_of(p).move_index(), 0);
}

TEST_F(NodeTest, ALossIsTheUpperLimit) {
    const Position p = position_of(SHUT_IN);
    NodeSummary summary;
    summarize(p, summary);
    answer_with(EGDB_UNKNOWN, EGDB_LOSS);
    const int loss = egdb_score(p, WHITE, EGDB_LOSS, summary);
    ASSERT_LT(loss, -2600);
    expect_leaf(node(p, 4, 8, loss, loss + 1), loss, 4);
    // Above alpha the moves are searched, and what they find is cut to the limit.
    const Answer answer = node(p, 4, 8, loss - 1, loss);
    EXPECT_GT(answer.nodes, 1u);
    EXPECT_EQ(answer.value, loss);
    EXPECT_EQ(entry_of(p).type(), BOUND_LOWER);
}

TEST_F(NodeTest, OtherAnswersLeaveTheSearchAsItIs) {
    const Position p = position_of("W:W31,32,33,40:B1,2,9,14");
    const Answer without = node(p, 4, 16, -20, -19, false);
    for (const EgdbValue value : {EGDB_UNKNOWN, EGDB_NOT_IN_CACHE, EGDB_SUBDB_UNAVAILABLE}) {
        ASSERT_EQ(tt_allocate(), 0);
        forget_moves();
        answer_with(value, value);
        const Answer answer = node(p, 4, 16, -20, -19, false);
        EXPECT_EQ(answer.value, without.value);
        EXPECT_EQ(answer.nodes, without.nodes);
    }
}

TEST_F(NodeTest, UnknownAnswersAreCounted) {
    const Position p = position_of("W:W31,32,33,40:B1,2,9,14");
    for (const EgdbValue value : {EGDB_UNKNOWN, EGDB_NOT_IN_CACHE, EGDB_SUBDB_UNAVAILABLE, EGDB_DRAW}) {
        ASSERT_EQ(tt_allocate(), 0);
        reset_search_state();
        answer_with(value, value);
        node(p, 4, 16, -20, -19, false);
        quiet(p, 4, 0, -20, -19);
        EXPECT_GT(search_state.egdb_lookups, 1u);
        EXPECT_EQ(search_state.egdb_unknowns, value == EGDB_UNKNOWN ? search_state.egdb_lookups.load() : 0u);
    }
}

TEST_F(NodeTest, HalfKnownValuesCapTheEvaluationInQuiescence) {
    const Position p = position_of("W:W31,32,33,40:B1,2,9,14");
    const int evaluation = evaluation_of(p);
    answer_with(EGDB_DRAW_OR_LOSS, EGDB_DRAW_OR_LOSS);
    EXPECT_EQ(quiet(p, 4, 0, -20, -19).value, std::min(evaluation, 0));
    answer_with(EGDB_WIN_OR_DRAW, EGDB_WIN_OR_DRAW);
    EXPECT_EQ(quiet(p, 4, 0, -20, -19).value, std::max(evaluation, 0));
    answer_with(EGDB_NOT_IN_CACHE, EGDB_NOT_IN_CACHE);
    EXPECT_EQ(quiet(p, 4, 0, -20, -19).value, evaluation);
}

TEST_F(NodeTest, OnlyDeepAndMarkedNodesMayReadTheDisk) {
    const Position p = position_of("W:WK46,31:BK5");
    open_database(6, 5, 0, 0, false);
    egdb_engine.lookup_depth = 2;
    std::vector<bool> asked;
    database_answer = [&](const Position&, int, bool conditional) {
        asked.push_back(conditional);
        return EGDB_DRAW;
    };
    for (const int depth : {1, 8, 15, 16, 17, 80}) {
        asked.clear();
        node(p, 4, depth, 0, 1);
        EXPECT_EQ(asked, std::vector<bool>{depth <= 16}) << depth;
    }
    store(p, 0, 1, BOUND_LOWER, 127, true);
    asked.clear();
    node(p, 4, 1, 0, 1);
    EXPECT_EQ(asked, std::vector<bool>{false});
    asked.clear();
    quiet(p, 4, 0, 0, 1);
    captures(p, 4, 0, 1);
    EXPECT_EQ(asked, (std::vector<bool>{true, true}));
    EXPECT_EQ(search_state.egdb_lookups, 9u);
}

TEST_F(NodeTest, LookupDepthByPieces) {
    for (int pieces = 2; pieces <= 40; ++pieces) {
        const std::pair<int, int> cases[] = {{6, pieces <= 12 ? 2 : 14 - pieces},
                                             {7, pieces <= 17 ? 4 : 21 - pieces},
                                             {8, pieces <= 18 ? 5 : 14 - pieces / 2},
                                             {9, pieces <= 18 ? 5 : 14 - pieces / 2},
                                             {5, -5},
                                             {0, -5},
                                             {10, -5}};
        for (const auto& [maxpieces, want] : cases) {
            egdb_engine.maxpieces = maxpieces;
            set_egdb_lookup_depth(pieces);
            EXPECT_EQ(egdb_engine.lookup_depth, want) << maxpieces << " " << pieces;
        }
    }
}

TEST_F(NodeTest, WhereTheOtherSideCanCaptureTheDatabaseIsNotAsked) {
    open_database(8, 5, 0, 5, true);
    int asked = 0;
    database_answer = [&](const Position& p, int side, bool) {
        EXPECT_FALSE(has_capture(p, side));
        asked += 1;
        return EGDB_DRAW;
    };
    // Black to move cannot capture, white can; with two kings the value means nothing.
    const Position seven = position_of("B:W26,K47,K50:B21,1,2,4");
    ASSERT_TRUE(!has_capture(seven, BLACK) && has_capture(seven, WHITE));
    EXPECT_NE(node(seven, 4, 8, -3000, -2999).leaves, 0u);
    asked = 0;
    quiet(seven, 4, -8, -3000, -2999);
    captures(seven, 4, -3000, -2999);
    EXPECT_EQ(asked, 0);
    // With one king, or with six pieces, it does.
    for (const char* fen : {"B:W26,K47,50:B21,1,2,4", "B:W26,K47,K50:B21,1,2"}) {
        const Position p = position_of(fen);
        asked = 0;
        EXPECT_EQ(node(p, 4, 8, -3000, -2999).nodes, 1u);
        quiet(p, 4, -8, -3000, -2999);
        captures(p, 4, -3000, -2999);
        EXPECT_EQ(asked, 3) << fen;
    }
}

}  // namespace
