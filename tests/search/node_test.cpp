// Single nodes of the tree: each rule at the place where it begins and ends to hold.
#include <algorithm>
#include <atomic>
#include <numeric>
#include <vector>

#include "search/split.h"
#include "tests/search/node_fixture.h"

namespace {

// The ends of the game.

TEST_F(NodeTest, NoPiecesIsLostAtThisPly) {
    const Position p = position_of("W:W:B1,K2");
    for (const int ply : {1, 7, 60, 61}) {
        expect_leaf(node(p, ply, 80, -10, -9), ply - 4000, ply);
        EXPECT_EQ(quiet(p, ply, 0, -10, -9).value, ply - 4000);
        EXPECT_EQ(captures(p, ply, -10, -9).value, ply - 4000);
    }
}

TEST_F(NodeTest, NoMovesIsLostAtThisPly) {
    const Position p = position_of("B:W11,17:B6");
    for (const int ply : {1, 8, 60}) expect_leaf(node(p, ply, 80, -10, -9), ply - 4000, ply);
    EXPECT_TRUE(entry_of(p).free());
}

// Repetition.

// Kings go to and fro; the newest is in front and each is linked to the one before it.
std::vector<Position> shuffle(int plies) {
    static constexpr const char* ROUND[] = {"W:WK45,K47:BK1", "B:WK50,K47:BK1", "W:WK50,K47:BK6",
                                            "B:WK45,K47:BK6"};
    std::vector<Position> line;
    for (int i = plies; i >= 0; --i) line.push_back(position_of(ROUND[i % 4]));
    for (int i = 0; i <= plies; ++i) {
        const auto at = static_cast<size_t>(i);
        line[at].reversible_plies = plies - i;
        line[at].previous = i < plies ? &line[at + 1] : nullptr;
    }
    return line;
}

TEST_F(NodeTest, APositionFourPliesBackIsARepetition) {
    for (const int ply : {1, 5, 60, 61}) {
        const std::vector<Position> line = shuffle(4);
        for (const int depth : {-3, 0, 8, 80}) expect_leaf(node(line[0], ply, depth, 100, 101), -7, ply);
    }
    EXPECT_TRUE(entry_of(shuffle(4)[0]).free());
}

TEST_F(NodeTest, FewerThanFourReversiblePliesAreNotTested) {
    std::vector<Position> line = shuffle(4);
    line[0].reversible_plies = 3;
    EXPECT_GT(node(line[0], 1, 8, 100, 101).nodes, 1u);
    EXPECT_FALSE(entry_of(line[0]).free());
}

TEST_F(NodeTest, EvenDistancesWithinTheStretchCount) {
    for (int distance = 1; distance <= 12; ++distance) {
        for (int reversible = 4; reversible <= 12; ++reversible) {
            std::vector<Position> line = shuffle(13);
            for (size_t i = 1; i < line.size(); ++i) line[i].white ^= uint64_t{1} << 33 | uint64_t{1} << 38;
            line[static_cast<size_t>(distance)].white = line[0].white;
            line[static_cast<size_t>(distance)].black = line[0].black;
            line[0].reversible_plies = reversible;
            const bool repeats = distance >= 4 && distance % 2 == 0 && distance <= reversible;
            transposition_table
                .slots_start[position_hash(line[0], line[0].side).hash0 & transposition_table.mask] = 0;
            EXPECT_EQ(node(line[0], 1, 8, 100, 101).nodes == 1, repeats) << distance << " " << reversible;
        }
    }
}

TEST_F(NodeTest, OnlyTheSetsOfTheColoursAreCompared) {
    std::vector<Position> line = shuffle(4);
    line[4].king = 0;
    EXPECT_EQ(node(line[0], 1, 8, 100, 101).value, -7);
    for (const auto set : {&Position::black, &Position::white}) {
        line = shuffle(4);
        line[4].*set ^= uint64_t{1} << 35;
        ASSERT_EQ(tt_allocate(), 0);
        EXPECT_GT(node(line[0], 1, 8, 100, 101).nodes, 1u);
    }
}

TEST_F(NodeTest, TheGameBeforeTheRootCounts) {
    const std::vector<Position> game = shuffle(3);
    search_state.game_line = game.data();
    const Position root = make_root(game[0], game[0].side);
    MoveList list;
    generate_moves(root, list, root.side);
    int repeated = 0;
    for (const Move& move : list) {
        Position child;
        make_child(root, child, move, false);
        const bool back = same_pieces(child, game[3]);
        repeated += back;
        const Answer answer = node(child, 1, 8, -300, -299);
        EXPECT_EQ(answer.nodes == 1, back);
        if (back) expect_leaf(answer, -7, 1);
    }
    EXPECT_EQ(repeated, 1);
    // A line of another game, or of the other side, is left alone.
    EXPECT_EQ(make_root(game[1], game[1].side).reversible_plies, 0);
    EXPECT_EQ(make_root(game[0], game[0].side ^ 1).previous, nullptr);
}

// The edge of the tree.

TEST_F(NodeTest, Ply60SearchesMovesAnd61DoesNot) {
    const Position p = position_of("W:W31,32,33,36,38,40,45,49:B1,2,4,8,9,12,14,16");
    EXPECT_GT(node(p, 60, 16, -1, 0).nodes, 5u);
    EXPECT_FALSE(entry_of(p).free());
    ASSERT_EQ(tt_allocate(), 0);
    expect_leaf(node(p, 61, 16, -1, 0), evaluation_of(p), 61);
    EXPECT_TRUE(entry_of(p).free());
    EXPECT_EQ(search_state.highest_ply, 61);
    for (const int ply : {61, 62, 70}) EXPECT_EQ(quiet(p, ply, 0, -1, 0).value, evaluation_of(p));
}

TEST_F(NodeTest, Ply61DoesNotFollowCaptures) {
    const Position p = position_of("W:W28,32,40:B22,1,2");
    ASSERT_TRUE(has_capture(p, WHITE));
    EXPECT_EQ(captures(p, 61, -1, 0).nodes, 1u);
    EXPECT_EQ(captures(p, 61, -1, 0).value, evaluation_of(p));
    EXPECT_EQ(quiet(p, 61, 0, -1, 0).nodes, 1u);
    EXPECT_GT(captures(p, 60, -1, 0).nodes, 1u);
}

TEST_F(NodeTest, ACaptureInQuiescenceCountsItsNodeTwice) {
    const Position p = position_of("W:W28,40:B22,1");
    ASSERT_TRUE(has_capture(p, WHITE));
    const Answer there = captures(p, 5, -2000, -1999), here = quiet(p, 5, 0, -2000, -1999);
    EXPECT_EQ(here.nodes, there.nodes + 1);
    EXPECT_EQ(here.leaves, there.leaves);
    EXPECT_EQ(here.value, there.value);
}

TEST_F(NodeTest, AHangingPieceIsLookedAtForOneMorePly) {
    const Position quiet_side = position_of("B:W26,38,40:B21,1,2");
    ASSERT_TRUE(has_capture(quiet_side, WHITE) && !has_capture(quiet_side, BLACK));
    EXPECT_GT(quiet(quiet_side, 5, -7, -1, 0).nodes, 2u);
    const Answer stopped = quiet(quiet_side, 5, -8, -1, 0);
    EXPECT_EQ(stopped.nodes, 1u);
    EXPECT_EQ(stopped.leaves, 1u);
    EXPECT_EQ(stopped.value, evaluation_of(quiet_side));
}

// The table.

TEST_F(NodeTest, BoundsOfTheTableCutAtTheirSideOfTheWindow) {
    const Position p = position_of("W:W31,32,33,36,38,40,45,49:B1,2,4,8,9,12,14,16");
    struct Case {
        BoundType type;
        int value;
        bool cuts;
    };
    // The window is (99, 100).
    for (const Case& c :
         {Case{BOUND_EXACT, 42, true}, Case{BOUND_EXACT, 999, true}, Case{BOUND_LOWER, 100, true},
          Case{BOUND_LOWER, 99, false}, Case{BOUND_UPPER, 99, true}, Case{BOUND_UPPER, 100, false}}) {
        store(p, c.value, 17, c.type, 0);
        const Answer answer = node(p, 3, 16, 99, 100, false);
        EXPECT_EQ(answer.nodes == 1, c.cuts) << c.type << " " << c.value;
        if (c.cuts) expect_leaf(answer, c.value, 3);
    }
}

TEST_F(NodeTest, TheDepthMustReachTheNodes) {
    const Position p = position_of("W:W31,32,33,36,38,40,45,49:B1,2,4,8,9,12,14,16");
    store(p, 42, 17, BOUND_EXACT, 0);
    EXPECT_EQ(node(p, 3, 16, 99, 100).nodes, 1u);
    store(p, 42, 16, BOUND_EXACT, 0);
    EXPECT_GT(node(p, 3, 16, 99, 100).nodes, 1u);
    // An aged entry never cuts, not even at the smallest depth.
    store(p, 42, 511, BOUND_EXACT, 0);
    tt_age();
    EXPECT_GT(node(p, 3, 1, 99, 100).nodes, 1u);
}

TEST_F(NodeTest, AMarkedNodeIsSearchedDeeperButStoredAtItsDepth) {
    const Position p = position_of("W:W31,32,33,36,38,40,45,49:B1,2,4,8,9,12,14,16");
    store(p, 42, 18, BOUND_EXACT, 0, true);
    const Answer answer = node(p, 3, 16, 99, 100);
    EXPECT_GT(answer.nodes, 1u);
    EXPECT_EQ(entry_of(p).depth_field(), 17);
    EXPECT_TRUE(entry_of(p).pv_mark());
    store(p, 42, 19, BOUND_EXACT, 0, true);
    EXPECT_TRUE(entry_of(p).pv_mark());
    expect_leaf(node(p, 3, 16, 99, 100), 42, 3);
}

TEST_F(NodeTest, TheMarkGoesToTheChildrensDepth) {
    const Position p = position_of("W:W31,32,33,36,38,40,45,49:B1,2,4,8,9,12,14,16");
    for (const bool marked : {false, true}) {
        ASSERT_EQ(tt_allocate(), 0);
        MoveList list;
        generate_moves(p, list, p.side);
        store(p, 42, 1, BOUND_EXACT, 2, marked);
        node(p, 3, 15, -3000, -2999);  // the first move searched fails high
        const Position child = position_after(list[2], BLACK);
        EXPECT_EQ(entry_of(child).depth_field(), marked ? 10 : 8);
    }
}

TEST_F(NodeTest, ABadIndexIsNoHashMove) {
    const Position p = position_of("W:W31,32,33,36,38,40,45,49:B1,2,4,8,9,12,14,16");
    MoveList list;
    const int count = generate_moves(p, list, p.side);
    ASSERT_EQ(tt_allocate(), 0);
    const Answer fresh = node(p, 3, 16, 99, 100, false);
    for (const int index : {count, 126, 127}) {
        ASSERT_EQ(tt_allocate(), 0);
        forget_moves();
        store(p, 42, 1, BOUND_LOWER, index);
        const Answer answer = node(p, 3, 16, 99, 100, false);
        EXPECT_EQ(answer.value, fresh.value);
        EXPECT_LT(answer.best_index, count);
    }
}

TEST_F(NodeTest, BoundsAreStoredByTheirSideOfTheWindow) {
    const Position p = position_of("W:W31,32,33,36,38,40,45,49:B1,2,4,8,9,12,14,16");
    const int value = node(p, 3, 16, -4000, 4000, false).value;
    EXPECT_EQ(entry_of(p).type(), BOUND_EXACT);
    EXPECT_EQ(entry_of(p).value(), value);
    ASSERT_EQ(tt_allocate(), 0);
    node(p, 3, 16, 3000, 3001, false);
    EXPECT_EQ(entry_of(p).type(), BOUND_UPPER);
    ASSERT_EQ(tt_allocate(), 0);
    const Answer high = node(p, 3, 16, -3001, -3000, false);
    EXPECT_EQ(entry_of(p).type(), BOUND_LOWER);
    EXPECT_EQ(entry_of(p).move_index(), high.best_index);
    EXPECT_EQ(entry_of(p).depth_field(), 17);
}

// Forced replies.

TEST_F(NodeTest, ASingleReplyCostsHalfAPlyAndNothingInVerification) {
    const Position p = position_of("W:W28,46:B22,1,2,3,4");
    MoveList list;
    ASSERT_EQ(generate_moves(p, list, WHITE), 1);
    const Position child = position_after(list[0], BLACK);
    for (const bool pruning : {true, false}) {
        ASSERT_EQ(tt_allocate(), 0);
        EXPECT_EQ(node(p, 3, 16, -3000, -2999, pruning).best_index, 0);
        EXPECT_EQ(entry_of(child).depth_field(), pruning ? 13 : 17);
        EXPECT_EQ(search_state.history[0], 4096);
    }
}

// Forward pruning.

class PruningTest : public NodeTest {
  protected:
    // White is three men up.
    const Position ahead = position_of("W:W31,32,33,34,35,36,37,38,39,40,42,43:B1,2,3,4,5,6,7,8,10");
    Answer shallow(int depth, int beta) {
        const int margin = depth * 7 / 8;
        EXPECT_EQ(tt_allocate(), 0);
        return node(ahead, 3, depth * 40 / 100, beta + margin - 1, beta + margin, false);
    }
    bool is_pruned(int depth, int beta, bool pruning) {
        const Answer verification = shallow(depth, beta);
        EXPECT_EQ(tt_allocate(), 0);
        forget_moves();
        const Answer answer = node(ahead, 3, depth, beta - 1, beta, pruning);
        return answer.best_index == -1 && answer.nodes == verification.nodes + 1;
    }
};

TEST_F(PruningTest, TheScoreIsEven) {
    int odd = 0;
    for (int depth = 24; depth < 48; ++depth) {
        const int margin = depth * 7 / 8;
        const int beta = evaluation_of(ahead) - 60 - depth;
        const Answer verification = shallow(depth, beta);
        ASSERT_GE(verification.value, beta + margin);
        ASSERT_EQ(tt_allocate(), 0);
        const Answer answer = node(ahead, 3, depth, beta - 1, beta);
        EXPECT_EQ(answer.value, (verification.value - margin + 1) & ~1);
        EXPECT_EQ(answer.value % 2, 0);
        EXPECT_EQ(answer.best_index, -1);
        odd += (verification.value - margin + 1) % 2 != 0;
    }
    EXPECT_GT(odd, 0);
}

TEST_F(PruningTest, NeedsDepthLeaveAndAMargin) {
    const int low = evaluation_of(ahead) - 100;
    EXPECT_TRUE(is_pruned(24, low, true));
    EXPECT_FALSE(is_pruned(23, low, true));
    EXPECT_FALSE(is_pruned(24, low, false));
    // 24 * 7 / 8 / 3 is 7: the evaluation must be above beta by more.
    const int evaluation = evaluation_of(ahead);
    EXPECT_FALSE(is_pruned(24, evaluation - 7, true));
}

TEST_F(PruningTest, NotInAMarkedNodeNorWithTheDatabase) {
    const int low = evaluation_of(ahead) - 100;
    ASSERT_EQ(tt_allocate(), 0);
    store(ahead, 0, 1, BOUND_EXACT, 127, true);
    EXPECT_NE(node(ahead, 3, 24, low - 1, low).best_index, -1);
    answer_with(EGDB_UNKNOWN, EGDB_UNKNOWN);
    ASSERT_EQ(tt_allocate(), 0);
    EXPECT_NE(node(ahead, 3, 24, low - 1, low).best_index, -1);
}

// What is learned.

TEST_F(NodeTest, HistoryStaysWithinItsBounds) {
    const Position p = START_POSITION;
    MoveList list;
    generate_moves(p, list, WHITE);
    const uint8_t order[] = {0, 1, 2};
    KillerMove killer;
    const auto entry = [&](int i) -> int { return history_entry(move_squares(p.white, list[i].white)); };
    reward_cutoff(p, list, order, 1, true, killer);
    EXPECT_EQ(entry(0), 4096 - 32);
    EXPECT_EQ(entry(1), 4096 + 32);
    EXPECT_EQ(entry(2), 4096);
    EXPECT_EQ(killer.from, 0);
    EXPECT_EQ(killer.to, 0);
    for (int i = 0; i < 3000; ++i) {
        reward_cutoff(p, list, order, 1, false, killer);
        ASSERT_GE(entry(0), 0);
        ASSERT_LE(entry(1), 8192);
    }
    EXPECT_EQ(entry(0), 127);   // where a 128th truncates to nothing
    EXPECT_EQ(entry(1), 8065);  // the same from the other end
    EXPECT_EQ(entry(2), 4096);
    const MoveSquares squares = move_squares(p.white, list[1].white);
    EXPECT_EQ(killer.from, squares.from);
    EXPECT_EQ(killer.to, squares.to);
}

TEST_F(NodeTest, ANodeThatFailsHighRewardsItsMoveAndOneThatFailsLowNone) {
    const Position p = position_of("W:W31,32,33,36,38,40,45,49:B1,2,4,8,9,12,14,16");
    const auto changed = [] {
        int count = 0;
        for (const auto& entry : search_state.history) count += entry != 4096;
        return count;
    };
    node(p, 3, 1, 3000, 3001);
    EXPECT_EQ(changed(), 0);
    ASSERT_EQ(tt_allocate(), 0);
    const Answer high = node(p, 3, 1, -3001, -3000);
    EXPECT_EQ(changed(), 1);
    MoveList list;
    generate_moves(p, list, WHITE);
    const MoveSquares squares = move_squares(p.white, list[high.best_index].white);
    EXPECT_EQ(history_entry(squares), 4128);
    EXPECT_EQ(me().killers[3].from, squares.from);
    EXPECT_EQ(me().killers[3].to, squares.to);
}

TEST_F(NodeTest, CapturesAreNoKillers) {
    const Position p = position_of("W:W28,33,50:B22,23,1,2,3");
    MoveList list;
    ASSERT_GT(generate_captures(p, list, WHITE), 1);
    node(p, 3, 8, -3001, -3000);
    EXPECT_EQ(me().killers[3].to, 0);
    int changed = 0;
    for (const auto& entry : search_state.history) changed += entry != 4096;
    EXPECT_GE(changed, 1);
}

TEST_F(NodeTest, TheKillerIsWorth120) {
    const MoveSquares squares{40, 34};
    history_entry(squares) = 5000;
    EXPECT_EQ(ordering_score(squares, {40, 34}), 904 + 120);
    EXPECT_EQ(ordering_score(squares, {40, 35}), 904);
    EXPECT_EQ(ordering_score(squares, {41, 34}), 904);
}

TEST_F(NodeTest, SortingKeepsTheOrderOfEquals) {
    Random random(8);
    for (int i = 0; i < 500; ++i) {
        const int count = 1 + below(random, MAX_MOVES);
        std::vector<int32_t> scores;
        for (int k = 0; k < count; ++k)
            scores.push_back(k % 7 == 3 ? (below(random, 3) - 1) * 8000000 : below(random, 6) - 3);
        if (i % 2) scores[static_cast<size_t>(below(random, count))] = FIRST_MOVE_SCORE;
        std::vector<uint8_t> want(static_cast<size_t>(count));
        std::iota(want.begin(), want.end(), uint8_t{0});
        std::stable_sort(want.begin(), want.end(), [&](int a, int b) {
            return scores[static_cast<size_t>(a)] > scores[static_cast<size_t>(b)];
        });
        std::vector<uint8_t> order(static_cast<size_t>(count), 200);
        sort_by_score(order.data(), count, scores.data());
        EXPECT_EQ(order, want);
    }
}

TEST_F(NodeTest, Reductions) {
    const Position quiet_parent = position_of("W:W31,7:B20");
    MoveList list;
    generate_moves(quiet_parent, list, WHITE);
    int promotions = 0;
    for (const Move& move : list) {
        Position child;
        make_child(quiet_parent, child, move, false);
        const bool promotes = child.king != 0;
        promotions += promotes;
        for (int number = 0; number < 30; ++number) {
            for (const int depth : {8, 15, 16, 17, 80}) {
                for (const bool pv : {true, false}) {
                    const int late = pv ? number < 4 ? 0 : 8 : number == 0 ? 0 : number < 4 ? 8 : 16;
                    EXPECT_EQ(reduction(child, depth, number, pv, false), depth < 16 || promotes ? 0 : late);
                    EXPECT_EQ(reduction(child, depth, number, pv, true), 0);
                }
            }
        }
    }
    EXPECT_EQ(promotions, 2);
}

// Threads that are stopped.

TEST_F(NodeTest, AStoppedThreadLeavesTheNodeAtItsNextMove) {
    const Position p = position_of("W:W28,32,33,35,37,38,39,40,43,47:B3,8,9,13,14,16,17,19,23,24");
    me().stop = true;
    for (const int active : {2, 4}) {
        search_state.active_threads = active;
        Answer answer = node(p, 1, 40, -50, 50, false);
        EXPECT_EQ(answer.value, 0);
        EXPECT_EQ(answer.nodes, 1u);
        answer = node(p, 1, 64, -50, 50, false);
        EXPECT_EQ(answer.nodes, 2u) << "the shallower search for a first move is left too";
        EXPECT_TRUE(entry_of(p).free());
    }
    me().stop = false;
}

// A search of a worker that ends deep in the tree by the flag that `stop` raises: all levels return, and none
// of them stores what it has.
class StoppedDeep : public NodeTest {
  protected:
    template <typename Value>
    void expect_nothing_stored(std::atomic<Value>& flag) {
        const Position p = position_of("W:W31,37,41,K48:B6,12,K5");
        open_database(40, 20, 9, 8, false);
        int asked = 0, until = 1 << 30;
        std::vector<uint64_t> table_at_stop;
        database_answer = [&](const Position&, int, bool) {
            if (++asked == until) {
                flag = Value{true};
                table_at_stop = table_words();
            }
            return EGDB_UNKNOWN;
        };
        const auto search = [&] {
            tt_clear();
            forget_moves();
            worker.killers.fill({});
            worker.stop = false;
            flag = Value{false};
            asked = 0;
            int32_t best_index = -99;
            return node_search(p, 1, 72, -50, 50, false, best_index, worker);
        };
        search();
        const int questions = asked;
        ASSERT_GT(questions, 100);
        for (until = 1; until < questions; until += 1 + questions / 40) {
            EXPECT_EQ(search(), 0);
            EXPECT_TRUE(table_words() == table_at_stop);
            EXPECT_LE(asked, until + 50);
        }
        worker.stop = false;
    }

    ThreadRecord& worker = thread_records[1];
};

TEST_F(StoppedDeep, ByTheThreadsOwnFlag) {
    search_state.active_threads = 2;
    expect_nothing_stored(worker.stop);
}

TEST_F(StoppedDeep, ByTheFlagOfTheSearch) {
    search_state.active_threads = 2;
    std::atomic<int32_t> stop = 0;
    search_state.stop_flag = &stop;
    expect_nothing_stored(stop);
    search_state.stop_flag = nullptr;
}

TEST_F(StoppedDeep, ByACutOffAboveWhereMoreThanTwoSearch) {
    search_state.active_threads = 3;
    SplitPoint &upper = split_points[0][0], &lower = split_points[2][0];
    upper.parent = nullptr;
    lower.parent = &upper;
    worker.current_split = &lower;
    expect_nothing_stored(upper.cut_off);
    worker.current_split = nullptr;
    upper.cut_off = false;
    lower.parent = nullptr;
}

}  // namespace
