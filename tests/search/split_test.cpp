// Split points: who may help, what is shared, and who is stopped by what. The states are made by hand, and
// where a second thread is needed the test itself runs it.
#include "search/split.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <thread>

#include "search/threads.h"
#include "tests/search/forced_end.h"
#include "tests/search/node_fixture.h"

namespace {

constexpr char MIDDLE_GAME[] = "W:W28,32,33,35,37,38,39,40,43,47:B3,8,9,13,14,16,17,19,23,24";
constexpr char THREE_MOVES[] = "W:W36,45,46:BK5,7,8";
constexpr char TWO_MOVES[] = "W:W36,46:BK5,7,8";

ThreadRecord& thread(int number) { return thread_records[static_cast<size_t>(number)]; }
SplitPoint& split_of(int number, int place) {
    return split_points[static_cast<size_t>(number)][static_cast<size_t>(place)];
}

void reset_records() {
    for (ThreadRecord& record : thread_records) {
        record.stop = record.work_ready = false;
        record.idle = record.number > 0 && record.number < created_threads();
        record.split_count = 0;
        record.current_split = nullptr;
    }
    for (auto& splits : split_points) {
        for (SplitPoint& split : splits) {
            split.parent = nullptr;
            split.cut_off = false;
            for (auto& worker : split.workers) worker = false;
        }
    }
    search_state.active_threads = 1;
}

class SplitTest : public NodeTest {
  protected:
    void SetUp() override {
        NodeTest::SetUp();
        reset_records();
        for (ThreadRecord& record : thread_records) record.idle = false;
    }
    void TearDown() override {
        reset_records();
        NodeTest::TearDown();
    }
};

// A thread that waits for work as a worker does; `seen` is called for each split point before the work on it.
struct HandWorker {
    using Seen = std::function<void(SplitPoint&, ThreadRecord&)>;
    HandWorker(int number, Seen seen_work) : record(thread(number)), seen(std::move(seen_work)) {
        record.idle = true;
    }
    ~HandWorker() {
        quit = true;
        runner.join();
        record.idle = false;
    }
    HandWorker(const HandWorker&) = delete;
    HandWorker& operator=(const HandWorker&) = delete;

    void run() {
        while (!quit) {
            if (record.work_ready.exchange(false)) {
                ++splits;
                if (seen) seen(*record.current_split, record);
                split_worker(*record.current_split, record);
                record.idle = true;
            }
            std::this_thread::yield();
        }
    }

    // It comes back from the last split point after the owner.
    void await_idle() const {
        while (!record.idle) std::this_thread::yield();
    }

    ThreadRecord& record;
    Seen seen;
    std::atomic<bool> quit = false;
    std::atomic<int> splits = 0;
    std::thread runner{[this] { run(); }};
};

// A node's moves, on offer by thread 0.
struct OfferedNode {
    Position position;
    MoveList list;
    uint8_t order[MAX_MOVES];
    int32_t best = -MATE_SCORE;
    int32_t best_index = 0;
    int next = 0;
    int depth = 32;
    int32_t alpha = -50;
    int32_t beta = 50;

    explicit OfferedNode(const char* fen) : position(position_of(fen)) {
        generate_moves(position, list, position.side);
        // Not the order of the list.
        for (int i = 0; i < list.count; ++i) order[i] = static_cast<uint8_t>(list.count - 1 - i);
    }
    bool captures() const { return has_capture(position, position.side); }
    SplitOffer offer() {
        return {position,   list,  order, next, 3,    depth,      true,
                captures(), false, alpha, beta, best, best_index, me()};
    }
    // The split point of it, without a worker.
    SplitPoint& open(int place) {
        SplitPoint& split = split_of(0, place);
        split.position = &position;
        split.list = &list;
        split.order = order;
        split.ply = 3;
        split.depth = depth;
        split.beta = beta;
        split.master = 0;
        split.pruning_allowed = true;
        split.capture_position = captures();
        split.pv_node = false;
        split.next_move = next;
        split.best_index = best_index;
        split.alpha = alpha;
        split.best = best;
        split.active = 1;
        split.cut_off = false;
        return split;
    }
    // What one thread finds in these moves, one after the other.
    void search_alone(int32_t& value, int32_t& index) const {
        int32_t a = alpha;
        value = best;
        index = best_index;
        for (int i = next; i < list.count && value < beta; ++i) {
            Position child;
            make_child(position, child, list[order[i]], captures());
            const int r = reduction(child, depth, i, false, captures());
            int32_t none;
            int32_t v = -node_search(child, 4, depth - r - 8, -beta, -a, true, none, me());
            if (r != 0 && v > a) v = -node_search(child, 4, depth - 8, -beta, -a, true, none, me());
            if (v > value) {
                value = v;
                index = order[i];
                a = std::max(a, v);
            }
        }
    }
};

void forget_all() {
    tt_clear();
    forget_moves();
}

// Who may help.

TEST_F(SplitTest, OnlyAnotherIdleThreadHelps) {
    search_state.active_threads = 4;
    EXPECT_FALSE(can_help(thread(1), thread(0)));
    thread(1).idle = true;
    EXPECT_TRUE(can_help(thread(1), thread(0)));
    EXPECT_TRUE(can_help(thread(1), thread(3)));
    EXPECT_FALSE(can_help(thread(1), thread(1)));
}

TEST_F(SplitTest, AWaitingOwnerHelpsItsWorkersOnly) {
    thread(1).idle = true;
    thread(1).split_count = 2;
    search_state.active_threads = 3;
    EXPECT_FALSE(can_help(thread(1), thread(0)));
    EXPECT_FALSE(can_help(thread(1), thread(2)));
    split_of(1, 1).workers[2] = true;
    EXPECT_TRUE(can_help(thread(1), thread(2)));
    EXPECT_FALSE(can_help(thread(1), thread(0)));
    // The split point below the topmost one does not count.
    split_of(1, 1).workers[2] = false;
    split_of(1, 0).workers[2] = true;
    EXPECT_FALSE(can_help(thread(1), thread(2)));
}

TEST_F(SplitTest, WithTwoThreadsTheIdleFlagIsAll) {
    thread(1).idle = true;
    thread(1).split_count = 3;
    search_state.active_threads = 2;
    EXPECT_TRUE(can_help(thread(1), thread(0)));
    thread(1).idle = false;
    EXPECT_FALSE(can_help(thread(1), thread(0)));
}

TEST_F(SplitTest, OnlyThreadsOfThisSearchAreAsked) {
    thread(5).idle = true;
    for (int active = 1; active <= 8; ++active) {
        search_state.active_threads = active;
        EXPECT_EQ(any_worker(thread(0)), active > 5) << active;
    }
    EXPECT_FALSE(any_worker(thread(5)));
}

// Who is stopped.

TEST_F(SplitTest, AThreadIsStoppedByItsFlag) {
    for (const int active : {1, 2, 3, 8}) {
        search_state.active_threads = active;
        EXPECT_FALSE(is_stopped(thread(2)));
        thread(2).stop = true;
        EXPECT_TRUE(is_stopped(thread(2)));
        thread(2).stop = false;
    }
}

TEST_F(SplitTest, ACutOffAboveStopsAThreadWhereMoreThanTwoSearch) {
    split_of(0, 0).parent = nullptr;
    split_of(1, 0).parent = &split_of(0, 0);
    split_of(2, 0).parent = &split_of(1, 0);
    thread(2).current_split = &split_of(2, 0);
    for (SplitPoint* const cut : {&split_of(0, 0), &split_of(1, 0), &split_of(2, 0)}) {
        search_state.active_threads = 3;
        EXPECT_FALSE(is_stopped(thread(2)));
        cut->cut_off = true;
        search_state.active_threads = 2;
        EXPECT_FALSE(is_stopped(thread(2)));
        EXPECT_FALSE(thread(2).stop);
        search_state.active_threads = 3;
        EXPECT_TRUE(is_stopped(thread(2)));
        EXPECT_TRUE(thread(2).stop);  // and need not walk again
        cut->cut_off = false;
        EXPECT_TRUE(is_stopped(thread(2)));
        thread(2).stop = false;
    }
    // A split point beneath, or beside, does not concern the thread.
    split_of(3, 0).parent = &split_of(2, 0);
    split_of(3, 0).cut_off = split_of(2, 1).cut_off = true;
    EXPECT_FALSE(is_stopped(thread(2)));
}

// Splits.

TEST_F(SplitTest, WithoutAHelperNothingIsDone) {
    search_state.active_threads = 4;
    OfferedNode node(MIDDLE_GAME);
    node.best = 7;
    EXPECT_FALSE(try_split(node.offer()));
    EXPECT_EQ(node.best, 7);
    EXPECT_EQ(me().split_count, 0);
    EXPECT_EQ(me().current_split, nullptr);
    EXPECT_TRUE(split_lock.try_lock());
    split_lock.unlock();
    EXPECT_EQ(me().nodes, 0u);
}

TEST_F(SplitTest, SixteenSplitPointsAreAllThatAThreadOwns) {
    search_state.active_threads = 2;
    HandWorker worker(1, nullptr);
    OfferedNode node(MIDDLE_GAME);
    me().split_count = 16;
    EXPECT_FALSE(try_split(node.offer()));
    EXPECT_TRUE(split_lock.try_lock());
    split_lock.unlock();
    me().split_count = 15;
    EXPECT_TRUE(try_split(node.offer()));
    EXPECT_EQ(me().split_count, 15);
    EXPECT_EQ(worker.splits, 1);
}

TEST_F(SplitTest, TheWorkerFindsTheNode) {
    for (const int active : {2, 3, 8}) {
        search_state.active_threads = active;
        forget_all();
        thread(0).killers.fill({7, 9});
        thread(0).current_split = &split_of(5, 5);
        thread(0).split_count = 2;
        thread(1).stop = true;  // of earlier work
        OfferedNode node(MIDDLE_GAME);
        node.next = 1;
        int found = 0;
        {
            HandWorker worker(1, [&](SplitPoint& split, ThreadRecord& record) {
                ++found;
                EXPECT_EQ(&split, &split_of(0, 2));
                EXPECT_EQ(split.parent, &split_of(5, 5));
                EXPECT_EQ(split.position, &node.position);
                EXPECT_EQ(split.list, &node.list);
                EXPECT_EQ(split.order, node.order);
                EXPECT_EQ(split.ply, 3);
                EXPECT_EQ(split.depth, 32);
                EXPECT_EQ(split.beta, 50);
                EXPECT_EQ(split.master, 0);
                EXPECT_TRUE(split.pruning_allowed);
                EXPECT_EQ(split.workers[1], true);
                EXPECT_FALSE(record.idle);
                EXPECT_FALSE(record.stop);
                EXPECT_EQ(record.killers[0].from, 7);
                EXPECT_EQ(record.killers[62].to, 9);
                const std::lock_guard guard(split.lock);
                EXPECT_GE(split.next_move, 1);
            });
            for (int i = 2; i < active; ++i) thread(i).idle = true;  // more than one is not wanted
            EXPECT_TRUE(try_split(node.offer()));
        }
        EXPECT_EQ(found, 1);
        for (int i = 2; i < active; ++i) {
            EXPECT_TRUE(thread(i).idle);
            EXPECT_FALSE(thread(i).work_ready);
            thread(i).idle = false;
        }
        // All is as before, but for the result.
        EXPECT_EQ(me().current_split, &split_of(5, 5));
        EXPECT_EQ(me().split_count, 2);
        EXPECT_FALSE(me().idle);
        EXPECT_FALSE(me().stop);
        EXPECT_EQ(split_of(0, 2).active, 0);
        EXPECT_FALSE(split_of(0, 2).workers[1]);
        EXPECT_GT(node.best, -MATE_SCORE);
    }
}

// The work beneath the split point is over, so whatever stopped it is too.
TEST_F(SplitTest, AnOwnerThatWasStoppedGoesOnBehindItsSplit) {
    search_state.active_threads = 2;
    HandWorker worker(1, [](SplitPoint&, ThreadRecord&) { me().stop = true; });
    OfferedNode node(MIDDLE_GAME);
    EXPECT_TRUE(try_split(node.offer()));
    EXPECT_EQ(worker.splits, 1);
    EXPECT_FALSE(me().stop);
}

TEST_F(SplitTest, NobodyIsRecruitedForASingleMove) {
    search_state.active_threads = 2;
    HandWorker worker(1, nullptr);
    OfferedNode node(MIDDLE_GAME);
    node.next = node.list.count - 1;
    EXPECT_TRUE(try_split(node.offer()));
    EXPECT_EQ(worker.splits, 0);
    node.next = node.list.count - 2;
    EXPECT_TRUE(try_split(node.offer()));
    EXPECT_EQ(worker.splits, 1);
}

TEST_F(SplitTest, OneThreadAtASplitPointFindsWhatALoopFinds) {
    Random random(71);
    for (int i = 0; i < 60; ++i) {
        OfferedNode node(fen_of(random_play(random, 10 + i)).c_str());
        node.depth = 16 + 8 * (i % 3);
        node.alpha = below(random, 200) - 100;
        node.beta = node.alpha + 1 + below(random, 60);
        node.next = below(random, node.list.count);
        // The second time some move is worth just alpha.
        for (int round = 0; round < 2; ++round) {
            int32_t value, index;
            forget_all();
            const uint64_t before = me().nodes;
            node.search_alone(value, index);
            const uint64_t nodes = me().nodes - before;
            forget_all();
            SplitPoint& split = node.open(0);
            split_worker(split, me());
            EXPECT_EQ(me().nodes - before, 2 * nodes);
            EXPECT_EQ(split.best, value);
            EXPECT_EQ(split.best_index, index);
            EXPECT_EQ(split.active, 0);
            EXPECT_EQ(split.cut_off, value >= node.beta);
            EXPECT_EQ(split.alpha, std::max(node.alpha, value));
            node.alpha = value;
            node.beta = value + 60;
        }
    }
}

// With a helper the order differs, and so may a value, but not where the moves decide by themselves.
TEST_F(SplitTest, TwoThreadsFindTheEnd) {
    search_state.active_threads = 2;
    HandWorker worker(1, nullptr);
    int splits = 0;
    for (const auto& [p, end] : decided_positions(72, 40)) {
        OfferedNode node(fen_of(p).c_str());
        if (node.list.count < 2 || std::abs(end) > 4) continue;
        node.depth = 88;
        node.alpha = -MATE_SCORE;
        node.beta = MATE_SCORE;
        forget_all();
        worker.await_idle();
        ASSERT_TRUE(try_split(node.offer()));
        ++splits;
        // The node is at ply 3.
        EXPECT_EQ(node.best, end > 0 ? MATE_SCORE - (end - 1) - 3 : -end - 1 + 3 - MATE_SCORE) << fen_of(p);
        if (end > 0) {
            EXPECT_EQ(1 - forced_end(position_after(node.list[node.best_index], p.side ^ 1), 4), end);
        }
    }
    EXPECT_GT(splits, 10);
}

TEST_F(SplitTest, ACutOffStopsTheOthersOfTheSplitPoint) {
    search_state.active_threads = 4;
    OfferedNode node(MIDDLE_GAME);
    node.alpha = -3001;
    node.beta = -3000;
    for (const int cutter : {0, 2}) {
        SplitPoint& split = node.open(0);
        split.active = 2;
        split.workers[2] = true;
        split.cut_off = false;
        for (ThreadRecord& record : thread_records) record.stop = false;
        thread(cutter).current_split = &split;
        split_worker(split, thread(cutter));
        EXPECT_TRUE(split.cut_off);
        EXPECT_EQ(split.next_move, 1);
        EXPECT_EQ(split.best_index, node.order[0]);
        EXPECT_GE(split.best, -3000);
        EXPECT_EQ(split.active, 1);
        EXPECT_EQ(split.workers[2], cutter != 2);
        EXPECT_TRUE(thread(cutter == 0 ? 2 : 0).stop);
        EXPECT_FALSE(thread(1).stop);
        EXPECT_FALSE(thread(3).stop);
    }
}

TEST_F(SplitTest, AStoppedThreadTakesNoMoveAndChangesNothing) {
    OfferedNode node(MIDDLE_GAME);
    for (const int number : {0, 2}) {
        for (const int active : {2, 4}) {
            reset_records();
            search_state.active_threads = active;
            SplitPoint& split = node.open(0);
            split.active = 2;
            split.workers[2] = true;
            thread(number).stop = true;
            const uint64_t nodes = thread(number).nodes;
            split_worker(split, thread(number));
            EXPECT_EQ(thread(number).nodes, nodes);
            EXPECT_EQ(split.next_move, 0);
            EXPECT_EQ(split.best, -MATE_SCORE);
            EXPECT_EQ(split.active, 1);
            // A stopped owner stops those who work for it; a stopped worker stops nobody.
            EXPECT_EQ(thread(2).stop, true);
            EXPECT_EQ(thread(0).stop, number == 0);
        }
    }
}

TEST_F(SplitTest, AStopOfTheSearchEndsTheWorkUnused) {
    std::atomic<int32_t> stop{1};
    search_state.stop_flag = &stop;
    OfferedNode node(MIDDLE_GAME);
    SplitPoint& split = node.open(0);
    split_worker(split, me());
    EXPECT_EQ(split.best, -MATE_SCORE);
    EXPECT_EQ(split.active, 0);
    EXPECT_EQ(me().nodes, 0u);
    // And while moves are searched: what comes back then is no value.
    stop = 0;
    open_database(40, 20, 9, 8, false);
    int asked = 0;
    database_answer = [&](const Position&, int, bool) {
        if (++asked == 40) stop = 1;
        return EGDB_UNKNOWN;
    };
    node.beta = MATE_SCORE;
    node.alpha = -MATE_SCORE;
    SplitPoint& broken = node.open(0);
    tt_clear();
    split_worker(broken, me());
    ASSERT_GE(asked, 40);
    EXPECT_LT(broken.next_move, node.list.count);
    const int32_t best = broken.best;
    EXPECT_TRUE(best == -MATE_SCORE || broken.next_move > 1);
    search_state.stop_flag = nullptr;
}

// The node search.

TEST_F(SplitTest, OneThreadNeverSplits) {
    HandWorker worker(1, nullptr);
    node(position_of(MIDDLE_GAME), 1, 64, -50, 50);
    EXPECT_EQ(worker.splits, 0);
}

TEST_F(SplitTest, OneThreadTakesNoLock) {
    split_lock.lock();
    std::atomic<bool> searched{false};
    const std::jthread search([&] {
        node(position_of(MIDDLE_GAME), 1, 64, -50, 50);
        searched = true;
    });
    for (int i = 0; i < 60000 && !searched; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_TRUE(searched);
    split_lock.unlock();
}

TEST_F(SplitTest, DeepNodesAreSplit) {
    search_state.active_threads = 2;
    int smallest = 1000;
    HandWorker worker(1,
                      [&](SplitPoint& split, ThreadRecord&) { smallest = std::min(smallest, split.depth); });
    const Position p = position_of(MIDDLE_GAME);
    node(p, 1, 31, -50, 50);
    EXPECT_EQ(worker.splits, 0);
    forget_all();
    node(p, 1, 64, -50, 50);
    EXPECT_GT(worker.splits, 1);
    EXPECT_GE(smallest, 32);
}

TEST_F(SplitTest, TwoMovesMustRemain) {
    search_state.active_threads = 2;
    HandWorker worker(1, nullptr);
    for (const char* fen : {TWO_MOVES, THREE_MOVES}) {
        const Position p = position_of(fen);
        MoveList list;
        const int count = generate_moves(p, list, p.side);
        ASSERT_EQ(count, fen == TWO_MOVES ? 2 : 3);
        for (const bool hash_move : {false, true}) {
            forget_all();
            worker.await_idle();
            if (hash_move) store(p, 0, 0, BOUND_EXACT, 1);
            const int before = worker.splits;
            // The children are not deep enough.
            node(p, 1, 32, -50, 50);
            EXPECT_EQ(worker.splits - before, count - hash_move >= 2 ? 1 : 0) << fen;
        }
    }
}

TEST_F(SplitTest, AStopRequestForbidsNewSplits) {
    search_state.active_threads = 2;
    search_state.iteration = 3;  // too early to be stopped
    std::atomic<int32_t> stop{1};
    search_state.stop_flag = &stop;
    HandWorker worker(1, nullptr);
    node(position_of(MIDDLE_GAME), 1, 48, -50, 50);
    EXPECT_EQ(worker.splits, 0);
    search_state.stop_flag = nullptr;
}

TEST_F(SplitTest, NestedSplitsEndAtTheLimit) {
    search_state.active_threads = 2;
    me().split_count = 14;
    std::atomic<int> highest = 0;
    HandWorker worker(1, [&](SplitPoint& split, ThreadRecord& record) {
        EXPECT_TRUE(&split == &split_of(0, 14) || &split == &split_of(0, 15));
        highest = std::max(highest.load(), me().split_count.load());
        // Leaves at once, and is free for the splits beneath.
        record.stop = true;
    });
    const Position p = position_of(MIDDLE_GAME);
    for (int i = 0; i < 100 && highest < 16; ++i) {
        forget_all();
        node(p, 1, 88, -MATE_SCORE, MATE_SCORE, false);
    }
    EXPECT_EQ(highest, 16);
    EXPECT_EQ(me().split_count, 14);
}

// The node takes what the split found: the table and the history learn it.
TEST_F(SplitTest, TheNodeTakesTheResultOfTheSplit) {
    search_state.active_threads = 2;
    HandWorker worker(1, nullptr);
    const Position p = position_of(MIDDLE_GAME);
    const Answer answer = node(p, 1, 32, -3001, -3000, false);
    EXPECT_EQ(worker.splits, 1);
    EXPECT_GE(answer.value, -3000);
    const TTEntry entry = entry_of(p);
    EXPECT_EQ(entry.type(), BOUND_LOWER);
    EXPECT_EQ(entry.value(), answer.value);
    EXPECT_EQ(entry.move_index(), answer.best_index);
    MoveList list;
    generate_moves(p, list, p.side);
    const uint64_t before = pieces_of(p, p.side);
    const Move& best = list[answer.best_index];
    EXPECT_GT(history_entry(move_squares(before, pieces_of(best, p.side))), 4096);
    const MoveSquares squares = move_squares(before, pieces_of(best, p.side));
    EXPECT_EQ(me().killers[1].from, squares.from);
    EXPECT_EQ(me().killers[1].to, squares.to);
}

}  // namespace
