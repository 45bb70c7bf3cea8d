// The resolver against a slow one that shares nothing with it but the board and the moves, and its listed
// cases one by one.
#include "egdb/resolver.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "base/log.h"
#include "core/board_text.h"
#include "tests/egdb/engine_fixture.h"

namespace {

std::string logged;

class ResolverTest : public EngineEgdbTest {
  protected:
    void SetUp() override {
        EngineEgdbTest::SetUp();
        logged.clear();
        log_listener = [](const char* text) { logged += text; };
        egdb_resolver = EgdbResolver{};
    }
    void TearDown() override {
        log_listener = nullptr;
        EngineEgdbTest::TearDown();
    }
};

// Plain numbers in place of the values.
struct SlowResolver {
    std::function<int(const Position&)> files;
    bool no_side_captures = false;
    int max_nodes = 0;
    int nodes = 0;
    int deepest = 0;

    static int turned(int v) { return v == 1 ? 2 : v == 2 ? 1 : v == 4 ? 5 : v == 5 ? 4 : v; }

    static int best(int n, int o) {
        const bool up = n == 1 || n == 5, nothing = n == 0 || n == -2;
        if (o == 2) return n;
        if (o == 3) return up ? n : nothing ? 5 : 3;
        if (o == 5) return n == 1 ? 1 : 5;
        if (o == 4) return n == 2 ? 4 : n;
        if (o == 0 || o == -2) return up ? n : n == 3 ? 5 : o;
        return o;
    }
    static bool is_better(int a, int b) {
        if (b == 1) return false;
        if (b == 3) return a == 1 || a == 5;
        if (b == 2 || b == 4) return a != 2;
        if (b == 5) return a == 1;
        return a != -2 && a != 0 && a != 2;
    }
    static bool reaches(int a, int b) {
        if (b == 1) return a == 1;
        if (b == 3) return a == 1 || a == 3 || a == 5;
        if (b == 5) return a == 1 || a == 5;
        if (b == 4) return a == 1 || a == 3 || a == 4 || a == 5;
        if (b == 0 || b == -2) return a != 2;
        return true;
    }

    bool direct(const Position& p) const {
        const int all = bit_count(p.black | p.white);
        return !no_side_captures || all < 7 || (all < 9 && bit_count(p.king) < 2);
    }

    // Nothing when the nodes are used up.
    std::optional<int> search(const std::vector<Position>& line, int limit, int alpha, int beta) {
        const Position p = line.back();
        const int ply = static_cast<int>(line.size()) - 1;
        if (++nodes > max_nodes) return {};
        if (p.black == 0) return p.side == 1 ? 1 : 2;
        if (p.white == 0) return p.side == 1 ? 2 : 1;
        for (int back = 4; back <= ply; back += 2)
            if (same_pieces(line[static_cast<size_t>(ply - back)], p)) return 3;
        if (!has_capture(p, p.side)) {
            if (direct(p)) return files(p);
            if (!has_capture(p, 1 - p.side) && files(p) != 0) return files(p);
        }
        deepest = std::max(deepest, ply);
        if (ply >= limit) return 0;
        MoveList list;
        generate_moves(p, list, p.side);
        int found = 2;
        for (const Move& move : list) {
            std::vector<Position> longer = line;
            longer.push_back(position_after(move, 1 - p.side));
            const std::optional<int> reply = search(longer, limit, turned(beta), turned(alpha));
            if (!reply) return {};
            const int v = turned(*reply);
            if (reaches(v, beta)) return best(v, beta);
            found = best(v, found);
            if (is_better(found, alpha)) alpha = found;
        }
        return found;
    }

    int resolve(const Position& p, int max_depth) {
        nodes = deepest = 0;
        int value = 0;
        for (int d = 1; d <= max_depth - 1; ++d) {
            const std::optional<int> result = search({p}, d, 2, 1);
            if (!result) return 0;
            value = *result;
            if (value == 1 || value == 2 || value == 3) break;
        }
        return value;
    }
};

void compare(AskedDatabase& asked, Random& random, int pieces, int king_percent, bool no_side_captures,
             bool knows_little) {
    const uint64_t salt = random();
    const auto made_up = [salt, knows_little](const Position& p) {
        constexpr int VALUES[] = {-2, -1, 0, 1, 2, 3, 4, 5};
        constexpr int LITTLE[] = {0, 0, 0, 0, 0, 0, 2, 3};
        const uint64_t k = mix_of(p, p.side, salt) >> 40 & 7;
        return knows_little ? LITTLE[k] : VALUES[k];
    };
    asked.answer = [&](const Position& p, int) { return static_cast<EgdbValue>(made_up(p)); };
    SlowResolver slow{made_up, no_side_captures};
    const Position p = random_pieces(random, pieces, king_percent);
    const int depth = 1 + static_cast<int>(random() % 7);
    slow.max_nodes = egdb_resolver.max_nodes = random() % 4 ? 3000 : 1 + static_cast<int>(random() % 50);
    logged.clear();
    EXPECT_EQ(resolve_value(p, p.side, depth), slow.resolve(p, depth)) << text_of(p) << " depth " << depth;
    EXPECT_EQ(egdb_resolver.nodes, slow.nodes) << text_of(p);
    EXPECT_EQ(egdb_resolver.deepest_ply, slow.deepest) << text_of(p);
    EXPECT_EQ(logged.empty(), slow.nodes <= slow.max_nodes);
}

TEST_F(ResolverTest, AnswersAsTheSlowOne) {
    Random random(1);
    for (int i = 0; i < 6000 && !HasFailure(); ++i) {
        const bool no_side_captures = i % 2;
        open(8, no_side_captures);
        compare(asked, random, 2 + i % 8, 25 * (i % 5), no_side_captures, i % 3 == 0);
    }
    EXPECT_EQ(asked.conditional_questions, 0);
}

TEST_F(ResolverTest, AQuietPositionIsWhatTheFilesSay) {
    open(6, true);
    const Position p = position_with(WHITE, {7}, {}, {}, {46, 48});
    for (int v = -2; v <= 5; ++v) {
        asked.answer = [v](const Position&, int) { return static_cast<EgdbValue>(v); };
        asked.questions = 0;
        EXPECT_EQ(resolve_value(p, WHITE, 4), v);
        // What is not decided is asked again by each deeper search.
        EXPECT_EQ(asked.questions, v >= 1 && v <= 3 ? 1 : 3);
    }
    // The side that is told counts, not that of the record.
    asked.answer = [](const Position&, int side) { return side == BLACK ? EGDB_LOSS : EGDB_WIN; };
    EXPECT_EQ(resolve_value(p, BLACK, 4), EGDB_LOSS);
}

TEST_F(ResolverTest, NothingIsSearchedWithoutDepth) {
    open(6, true);
    asked.answer = [](const Position&, int) { return EGDB_WIN; };
    const Position p = position_with(WHITE, {7}, {}, {}, {46, 48});
    for (const int depth : {-5, 0, 1}) EXPECT_EQ(resolve_value(p, WHITE, depth), EGDB_UNKNOWN);
    EXPECT_EQ(asked.questions, 0);
    EXPECT_EQ(egdb_resolver.nodes, 0);
}

TEST_F(ResolverTest, CapturesArePlayedOut) {
    open(6, true);
    // White takes the one black man: nothing is left to be asked.
    const Position last = position_with(WHITE, {28}, {}, {32}, {});
    asked.answer = [](const Position&, int) { return EGDB_UNKNOWN; };
    EXPECT_EQ(resolve_value(last, WHITE, 2), EGDB_WIN);
    EXPECT_EQ(asked.questions, 0);
    EXPECT_EQ(egdb_resolver.nodes, 2);
    // With another one left the files know the rest, for the other side.
    const Position more = position_with(WHITE, {28, 1}, {}, {32}, {});
    for (const auto& [known, value] : {std::pair{EGDB_WIN, EGDB_LOSS},
                                       {EGDB_LOSS, EGDB_WIN},
                                       {EGDB_DRAW, EGDB_DRAW},
                                       {EGDB_DRAW_OR_LOSS, EGDB_WIN_OR_DRAW},
                                       {EGDB_WIN_OR_DRAW, EGDB_DRAW_OR_LOSS},
                                       {EGDB_UNKNOWN, EGDB_UNKNOWN},
                                       {EGDB_SUBDB_UNAVAILABLE, EGDB_SUBDB_UNAVAILABLE}}) {
        asked.answer = [answer = known](const Position& p, int side) {
            EXPECT_EQ(side, BLACK);
            EXPECT_EQ(bit_count(p.black | p.white), 2);
            return answer;
        };
        EXPECT_EQ(resolve_value(more, WHITE, 2), value);
    }
}

TEST_F(ResolverTest, ASideWithoutPiecesHasLost) {
    open(6, true);
    Position p = position_with(WHITE, {}, {}, {32}, {});
    EXPECT_EQ(resolve_value(p, WHITE, 2), EGDB_WIN);
    EXPECT_EQ(resolve_value(p, BLACK, 2), EGDB_LOSS);
    p = position_with(WHITE, {7}, {}, {}, {});
    EXPECT_EQ(resolve_value(p, WHITE, 2), EGDB_LOSS);
    EXPECT_EQ(resolve_value(p, BLACK, 2), EGDB_WIN);
}

TEST_F(ResolverTest, WhereTheOtherSideCanCaptureTheFilesAreNotAskedButOnePlyLater) {
    open(8, true);
    const Position p = position_with(BLACK, {21, 1, 2, 4}, {}, {26}, {47, 50});
    ASSERT_TRUE(!has_capture(p, BLACK) && has_capture(p, WHITE));
    bool asked_root = false;
    asked.answer = [&](const Position& q, int side) {
        asked_root |= same_pieces(p, q);
        return side == WHITE ? EGDB_LOSS : EGDB_DRAW;
    };
    EXPECT_EQ(resolve_value(p, BLACK, 64), EGDB_WIN);
    EXPECT_FALSE(asked_root);
    EXPECT_GT(asked.questions, 0);
    // With one king, or fewer pieces, or in the other format, it is asked.
    const Position one_king = position_with(BLACK, {21, 1, 2, 4}, {}, {26, 47}, {50});
    const Position six = position_with(BLACK, {21, 1, 2}, {}, {26}, {47, 50});
    for (const Position& q : {one_king, six}) {
        ASSERT_TRUE(!has_capture(q, BLACK) && has_capture(q, WHITE));
        EXPECT_EQ(resolve_value(q, BLACK, 64), EGDB_DRAW);
        EXPECT_EQ(egdb_resolver.nodes, 1);
    }
    open(8, false);
    EXPECT_EQ(resolve_value(p, BLACK, 64), EGDB_DRAW);
    EXPECT_EQ(egdb_resolver.nodes, 1);
}

TEST_F(ResolverTest, WhereNeitherSideCanCaptureOnlyUnknownGoesOn) {
    open(8, true);
    const Position p = position_with(BLACK, {1, 2, 3, 4}, {}, {41}, {47, 50});
    ASSERT_TRUE(!has_capture(p, BLACK) && !has_capture(p, WHITE));
    const auto root_is = [&](EgdbValue root) {
        asked.answer = [&p, root](const Position& q, int) { return same_pieces(p, q) ? root : EGDB_DRAW; };
        return resolve_value(p, BLACK, 2);
    };
    for (const EgdbValue value :
         {EGDB_SUBDB_UNAVAILABLE, EGDB_WIN, EGDB_LOSS, EGDB_DRAW, EGDB_DRAW_OR_LOSS, EGDB_WIN_OR_DRAW}) {
        EXPECT_EQ(root_is(value), value);
        EXPECT_EQ(egdb_resolver.nodes, 1);
    }
    EXPECT_EQ(root_is(EGDB_UNKNOWN), EGDB_DRAW);
    EXPECT_GT(egdb_resolver.nodes, 1);
}

TEST_F(ResolverTest, ARepetitionIsADraw) {
    open(9, true);
    const Position p = position_with(BLACK, {2, 3, 4}, {46}, {48, 49}, {50});
    const uint64_t black_kings = mask_of_square[45] | mask_of_square[40];
    const uint64_t white_kings = mask_of_square[49] | mask_of_square[44];
    // The kings go to and fro between two squares; who leaves them loses, unless the other loses a piece.
    asked.answer = [&](const Position& q, int side) {
        const bool black_stays = (q.black & ~q.king) == (p.black & ~p.king) && q.black & black_kings;
        const bool white_stays = (q.white & ~q.king) == (p.white & ~p.king) && q.white & white_kings;
        if (black_stays && white_stays) return EGDB_UNKNOWN;
        const bool black_wins = bit_count(q.white) < 3 || (bit_count(q.black) == 4 && black_stays);
        return side == (black_wins ? BLACK : WHITE) ? EGDB_WIN : EGDB_LOSS;
    };
    egdb_resolver.max_nodes = 1000000;
    EXPECT_EQ(resolve_value(p, BLACK, 4), EGDB_UNKNOWN);
    // The root can come up again after four plies, and no file says "draw".
    EXPECT_EQ(resolve_value(p, BLACK, 64), EGDB_DRAW);
    EXPECT_GE(egdb_resolver.deepest_ply, 3);
}

TEST_F(ResolverTest, RunningOutOfNodesIsToldAndUnknown) {
    open(8, true);
    asked.answer = [](const Position&, int) { return EGDB_UNKNOWN; };
    const Position p = position_with(BLACK, {1, 2, 3, 4}, {}, {41}, {47, 50});
    egdb_resolver.max_nodes = 200;
    EXPECT_EQ(resolve_value(p, BLACK, 64), EGDB_UNKNOWN);
    EXPECT_EQ(egdb_resolver.nodes, 201);
    EXPECT_EQ(logged, "lookup max node count exceeded (not an error): " + board_diagram(p));
    // The count starts anew each time.
    logged.clear();
    EXPECT_EQ(resolve_value(p, BLACK, 2), EGDB_UNKNOWN);
    EXPECT_LT(egdb_resolver.nodes, 200);
    EXPECT_TRUE(logged.empty());
}

}  // namespace
