// The correction of a searched move, and what the engine asks before it believes a database.
#include <algorithm>
#include <map>
#include <utility>
#include <vector>

#include "egdb/resolver.h"
#include "tests/egdb/engine_fixture.h"

namespace {

class MoveCheckTest : public EngineEgdbTest {
  protected:
    void SetUp() override {
        EngineEgdbTest::SetUp();
        open(6, true);
        generate_moves(root, list, WHITE);
        ASSERT_EQ(list.count, 5);
        replies.assign(5, EGDB_UNKNOWN);
        asked.answer = [this](const Position& p, int side) {
            if (same_pieces(p, root) && side == WHITE) return value;
            const int move = find_move(list, move_to(p));
            EXPECT_GE(move, 0);
            return replies[static_cast<size_t>(move)];
        };
    }
    int check(int chosen) {
        better = -1;
        return egdb_engine.egdb_move_check(WHITE, root, list, chosen, better);
    }
    // White's men have five moves, none of which can be taken.
    const Position root = position_with(WHITE, {1, 5}, {}, {36, 38, 40}, {});
    MoveList list;
    EgdbValue value = EGDB_UNKNOWN;
    std::vector<EgdbValue> replies;
    int better = -1;
};

constexpr EgdbValue VALUES[] = {EGDB_SUBDB_UNAVAILABLE, EGDB_UNKNOWN,    EGDB_WIN, EGDB_LOSS, EGDB_DRAW,
                                EGDB_DRAW_OR_LOSS,      EGDB_WIN_OR_DRAW};

TEST_F(MoveCheckTest, AWinIsNotGivenAway) {
    value = EGDB_WIN;
    for (const EgdbValue slip : {EGDB_DRAW, EGDB_WIN}) {
        replies = {slip, EGDB_DRAW, EGDB_LOSS, EGDB_WIN, EGDB_LOSS};
        EXPECT_EQ(check(0), 1);
        EXPECT_EQ(better, 2);  // the first that wins
        EXPECT_EQ(check(3), 1);
        EXPECT_EQ(better, 2);
        EXPECT_EQ(check(2), 0);
        EXPECT_EQ(check(4), 0);
        EXPECT_EQ(better, -1);
    }
}

TEST_F(MoveCheckTest, ADrawIsNotGivenAway) {
    value = EGDB_DRAW;
    replies = {EGDB_WIN, EGDB_UNKNOWN, EGDB_WIN, EGDB_DRAW, EGDB_DRAW};
    EXPECT_EQ(check(0), 1);
    EXPECT_EQ(better, 3);
    EXPECT_EQ(check(2), 1);
    EXPECT_EQ(check(4), 0);
    // A reply's loss would be a win: that is no draw either.
    replies[0] = EGDB_LOSS;
    EXPECT_EQ(check(0), 1);
    EXPECT_EQ(better, 3);
}

TEST_F(MoveCheckTest, EverythingElseIsLeft) {
    for (const EgdbValue of_root : VALUES) {
        for (const EgdbValue of_reply : VALUES) {
            value = of_root;
            replies = {of_reply, EGDB_LOSS, EGDB_DRAW, EGDB_WIN, EGDB_LOSS};
            const bool decided = of_reply == EGDB_WIN || of_reply == EGDB_LOSS || of_reply == EGDB_DRAW;
            const bool slips = decided && ((of_root == EGDB_WIN && of_reply != EGDB_LOSS) ||
                                           (of_root == EGDB_DRAW && of_reply != EGDB_DRAW));
            EXPECT_EQ(check(0), slips) << of_root << " " << of_reply;
            EXPECT_EQ(better, !slips ? -1 : of_root == EGDB_WIN ? 1 : 2) << of_root << " " << of_reply;
        }
    }
}

TEST_F(MoveCheckTest, WhereNoMoveKeepsTheValueTheMoveStands) {
    value = EGDB_WIN;
    replies.assign(5, EGDB_DRAW);
    EXPECT_EQ(check(1), 0);
}

TEST_F(MoveCheckTest, NothingIsAskedWithoutADriverOrBeyondItsPieces) {
    value = EGDB_WIN;
    replies = {EGDB_WIN, EGDB_LOSS, EGDB_LOSS, EGDB_LOSS, EGDB_LOSS};
    egdb_engine.maxpieces = 4;
    EXPECT_EQ(check(0), 0);
    egdb_engine.maxpieces = 5;
    EXPECT_EQ(check(0), 1);
    egdb_engine.wld = nullptr;
    asked.questions = 0;
    EXPECT_EQ(check(0), 0);
    EXPECT_EQ(asked.questions, 0);
}

TEST_F(MoveCheckTest, AMoveIntoCapturesIsPlayedOut) {
    // One of white's moves gives a man for nothing.
    const Position p = position_with(WHITE, {22}, {}, {33, 50}, {});
    MoveList moves;
    generate_moves(p, moves, WHITE);
    int into_capture = -1;
    for (int i = 0; i < moves.count; ++i)
        if (has_capture(position_after(moves[i], BLACK), BLACK)) into_capture = i;
    ASSERT_GE(into_capture, 0);
    asked.answer = [](const Position& q, int side) {
        // With both men white wins, with one it is a draw.
        if (bit_count(q.white) < 2) return EGDB_DRAW;
        return side == WHITE ? EGDB_WIN : EGDB_LOSS;
    };
    EXPECT_EQ(egdb_engine.egdb_move_check(WHITE, p, moves, into_capture, better), 1);
    EXPECT_NE(better, into_capture);
    EXPECT_EQ(egdb_resolver.max_nodes, 100000);
}

class ProbeRulesTest : public EngineEgdbTest {};

TEST_F(ProbeRulesTest, WhatADatabaseCovers) {
    open(0, false);
    EgdbEngine& e = egdb_engine;
    int covered = 0;
    for (int bm = 0; bm <= 6; ++bm)
        for (int bk = 0; bk <= 6; ++bk)
            for (int wm = 0; wm <= 6; ++wm)
                for (int wk = 0; wk <= 6; ++wk) {
                    NodeSummary s{};
                    s.black_men = bm;
                    s.black_kings = bk;
                    s.white_men = wm;
                    s.white_kings = wk;
                    s.black_total = bm + bk;
                    s.white_total = wm + wk;
                    s.total = bm + bk + wm + wk;
                    s.larger_total = std::max(bm + bk, wm + wk);
                    for (const int most : {0, 4, 7, 8, 9}) {
                        for (const int side : {3, 4, 5}) {
                            for (const int kings : {0, 1, 3}) {
                                e.maxpieces = most;
                                e.maxpieces_1side = side;
                                e.maxkings_9pcs = kings;
                                e.maxkings_1side_8pcs = 4 - kings;
                                bool want = s.total <= most && bm + bk <= side && wm + wk <= side;
                                if (s.total == 8) want = want && bk <= 4 - kings && wk <= 4 - kings;
                                if (s.total == 9) want = want && bk + wk <= kings;
                                if (egdb_covers(s) != want) FAIL() << bm << bk << wm << wk << " " << most;
                                covered += want;
                            }
                        }
                    }
                    for (const bool left_out : {false, true}) {
                        e.no_side_captures = left_out;
                        const bool want = !left_out || s.total < 7 || (s.total < 9 && bk + wk < 2);
                        if (egdb_direct_ok(s) != want) FAIL() << bm << bk << wm << wk << " " << left_out;
                    }
                }
    EXPECT_GT(covered, 1000);
}

TEST_F(ProbeRulesTest, WhenItIsAsked) {
    Random random(5);
    int allowed = 0, refused = 0;
    for (int i = 0; i < 20000; ++i) {
        const Position p = random_pieces(random, 4 + i % 6, 15 * (i % 4));
        if (has_capture(p, p.side)) continue;
        open(8, i % 3 != 0);
        NodeSummary s;
        summarize(p, s);
        const bool want = egdb_covers(s) && (egdb_direct_ok(s) || !has_capture(p, 1 - p.side));
        ASSERT_EQ(egdb_probe_ok(p, p.side, s), want) << text_of(p);
        ++(want ? allowed : refused);
    }
    EXPECT_GT(allowed, 1000);
    EXPECT_GT(refused, 500);
}

int score(const Position& p, EgdbValue value) {
    NodeSummary s;
    summarize(p, s);
    return egdb_score(p, p.side, value, s);
}

TEST_F(ProbeRulesTest, ScoresOfWinsAndLosses) {
    // Two black men on rows 2 and 3, a white king: material counts 5.
    Position p = position_with(BLACK, {7, 12}, {}, {}, {46});
    EXPECT_EQ(score(p, EGDB_WIN), 2900 - 30 * 5 + 2 * 1 + 2 * 2);
    EXPECT_EQ(score(p, EGDB_LOSS), -(2900 - 30 * 5));
    p.side = WHITE;
    EXPECT_EQ(score(p, EGDB_WIN), 2900 - 30 * 5);
    EXPECT_EQ(score(p, EGDB_LOSS), -(2900 - 30 * 5 + 6));
    // Level material: the men of the other side count too. A white man on row 9, a black one on row 9.
    p = position_with(BLACK, {41}, {}, {45}, {});
    EXPECT_EQ(score(p, EGDB_WIN), 2900 - 30 * 4 + 16 + 2);
    EXPECT_EQ(score(p, EGDB_LOSS), -(2900 - 30 * 4 + 2 + 16));
    // Level, but the other side has kings only.
    p = position_with(WHITE, {}, {1}, {7}, {});
    EXPECT_EQ(score(p, EGDB_WIN), 2900 - 30 * 3 + 16);
    EXPECT_EQ(score(p, EGDB_LOSS), -(2900 - 30 * 3 + 16));
    // A win stays below what running the opponent out of moves gives, and above all else.
    p = position_with(BLACK, {41, 42, 43, 44, 45}, {}, {6, 7, 8, 9, 10}, {});
    EXPECT_EQ(score(p, EGDB_WIN), 2900 - 30 * 20 + 80 + 80);
    EXPECT_LT(score(position_with(WHITE, {}, {1}, {6}, {}), EGDB_WIN), 2900);
}

TEST_F(ProbeRulesTest, AdvancementCountsFromTheOwnSide) {
    // A lone man of each side on each row, against a king.
    for (int row = 1; row <= 9; ++row) {
        const int square = 5 * row - 2;
        EXPECT_EQ(score(position_with(BLACK, {square}, {}, {}, {row == 9 ? 6 : 50}), EGDB_WIN),
                  2900 - 90 + 2 * (row - 1));
    }
    for (int row = 2; row <= 10; ++row) {
        const int square = 5 * row - 2;
        EXPECT_EQ(score(position_with(WHITE, {}, {row == 2 ? 41 : 1}, {square}, {}), EGDB_WIN),
                  2900 - 90 + 2 * (10 - row));
    }
}

}  // namespace
