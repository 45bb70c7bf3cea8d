// The ends of a search that come from outside: the stop flag, another thread's too, and the time.
#include <chrono>
#include <thread>

#include "search/getmove.h"
#include "search/node_search.h"
#include "search/root_search.h"
#include "search/score.h"
#include "search/search_state.h"
#include "search/table.h"
#include "tests/search/fixtures.h"

namespace {

class StopTest : public SearchTest {
  protected:
    void SetUp() override {
        SearchTest::SetUp();
        search_state.Mintime = search_state.step_time = search_state.max_time = LONG_TIME;
    }
    const Position middle =
        position_of("W:W27,28,31,32,33,34,37,38,39,42,43,47:B3,4,7,8,9,12,13,14,16,18,19,23");
};

// What the engine has when its iterations end there.
Searched alone_to(const Position& p, int depth, bool by_one) {
    EXPECT_EQ(tt_allocate(), 0);
    const Searched found = search_to(p, depth, SEARCH_QUIET, by_one);
    EXPECT_EQ(tt_allocate(), 0);
    search_state.depth_limit = MAX_DEPTH;
    return found;
}

TEST_F(StopTest, AStopBeforeTheStartIsHonouredInIterationFive) {
    Random random(31);
    std::vector<Position> positions{middle, START_POSITION};
    for (int i = 0; i < 10; ++i) positions.push_back(random_play(random, 10 + 3 * i));
    for (const Position& p : positions) {
        for (const bool by_one : {false, true}) {
            const Searched want = alone_to(p, by_one ? 4 : 3, by_one);
            search_state.step_time = by_one ? 0 : LONG_TIME;
            std::atomic<int32_t> stop{1};
            const Searched found = search_now(p, stop);
            EXPECT_EQ(search_state.iteration, 5);
            EXPECT_EQ(search_state.completed_depth, by_one ? 4 : 3);
            EXPECT_EQ(found.move, want.move);
            EXPECT_EQ(found.value, want.value);
            EXPECT_EQ(found.searched, want.searched);
            EXPECT_EQ(stop, 0);
        }
    }
}

TEST_F(StopTest, TheLastWholeIterationIsLogged) {
    std::atomic<int32_t> stop{1};
    search_now(middle, stop, 0);
    EXPECT_NE(logged.find(", depth 3/"), std::string::npos) << logged;
    EXPECT_EQ(logged.find(", depth 5/"), std::string::npos);
}

// The flag goes up in the middle of an iteration: nothing of that iteration may be used, and from then on
// nothing is stored.
TEST_F(StopTest, APartialIterationIsThrownAway) {
    const Position p = position_of("W:W31,37,41,K48:B6,12,K5");
    open_database(40, 20, 9, 8, false);
    std::atomic<int32_t> stop{0};
    int until = 1 << 30;
    int asked_deep = 0;
    std::vector<uint64_t> table_at_stop;
    database_answer = [&](const Position&, int, bool) {
        if (search_state.iteration == 9 && ++asked_deep == until) {
            stop = 1;
            table_at_stop = table_words();
        }
        return EGDB_UNKNOWN;
    };
    const Searched whole = alone_to(p, 9, false);
    ASSERT_GT(asked_deep, 40);
    const Searched before = alone_to(p, 7, false);
    ASSERT_EQ(whole.searched, 1);
    const int questions = asked_deep;
    for (until = 1; until < questions; until += 1 + questions / 40) {
        ASSERT_EQ(tt_allocate(), 0);
        asked_deep = 0;
        stop = 0;
        const Searched found = search_now(p, stop);
        EXPECT_EQ(search_state.completed_depth, 7);
        EXPECT_EQ(found.move, before.move);
        EXPECT_EQ(found.value, before.value);
        EXPECT_LE(asked_deep, until + 20);  // captures that had begun are followed to their end
        EXPECT_TRUE(table_words() == table_at_stop);
        EXPECT_EQ(stop, 0);
    }
}

TEST_F(StopTest, NothingIsStoredAfterTheStop) {
    search_state.iteration = 5;
    std::atomic<int32_t> stop{1};
    search_state.stop_flag = &stop;
    Position root = middle;
    MoveList list;
    generate_moves(root, list, WHITE);
    int32_t best_index = 0;
    EXPECT_EQ(root_search(root, list, -1, 0, best_index), SEARCH_CUT_OFF);
    EXPECT_EQ(node_search(root, 1, 80, -1, 0, true, best_index, thread_records[0]), 0);
    for (uint64_t i = 0; i < transposition_table.slots; ++i)
        ASSERT_EQ(transposition_table.slots_start[i].load(), 0u);
    for (const auto& entry : search_state.history) ASSERT_EQ(entry, 4096);
    // Below iteration 5 the flag is not looked at.
    search_state.iteration = 4;
    EXPECT_NE(root_search(root, list, -1, 0, best_index), SEARCH_CUT_OFF);
    search_state.stop_flag = nullptr;
}

TEST_F(StopTest, MaxTimeCutsTheSearchOff) {
    using Clock = std::chrono::steady_clock;
    search_state.max_time = 0.1;
    std::atomic<int32_t> stop{0};
    const auto start = Clock::now();
    const Searched found = search_now(middle, stop);
    const std::chrono::duration<double> took = Clock::now() - start;
    EXPECT_GE(took.count(), 0.09);
    EXPECT_LT(took.count(), 5);
    EXPECT_EQ(stop, 0);
    EXPECT_EQ(found.searched, 1);
    EXPECT_GE(search_state.completed_depth, 3);
    EXPECT_LT(search_state.completed_depth, search_state.iteration);
}

TEST_F(StopTest, TheClockIsReadEvery2000Nodes) {
    search_state.iteration = 5;
    search_state.max_time = -1;
    search_state.polled_nodes = 0;
    const uint64_t before = thread_records[0].nodes;
    std::atomic<int32_t> stop{0};
    search_state.stop_flag = &stop;
    int32_t best_index = -1;
    node_search(middle, 1, 200, -1, 0, false, best_index, thread_records[0]);
    EXPECT_EQ(stop, 1);
    // Nodes of quiescence and of captures count, but do not poll.
    EXPECT_GE(thread_records[0].nodes - before, 2000u);
    EXPECT_LT(thread_records[0].nodes - before, 12000u);
    // Other threads do not look at all.
    stop = 0;
    search_state.polled_nodes = 1999;
    ThreadRecord other;
    other.number = 1;
    node_search(middle, 1, 24, -1, 0, false, best_index, other);
    EXPECT_EQ(stop, 0);
    EXPECT_EQ(search_state.polled_nodes, 1999);
    search_state.stop_flag = nullptr;
}

TEST_F(StopTest, TheNodeLimitCutsTheSearchOff) {
    std::atomic<int32_t> stop{0};
    search_state.node_limit = 100000;
    const Searched found = search_now(middle, stop);
    search_state.node_limit = UINT64_MAX;
    EXPECT_EQ(stop, 0);
    EXPECT_EQ(found.searched, 1);
    EXPECT_GE(searched_nodes(), 100000u);
    EXPECT_LT(searched_nodes(), 120000u);
    EXPECT_LT(search_state.completed_depth, search_state.iteration);
}

TEST_F(StopTest, AnotherThreadStopsTheSearch) {
    for (int i = 0; i < 20; ++i) {
        std::atomic<int32_t> stop{0};
        std::thread stopper([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(1 + 3 * i));
            stop = 1;
        });
        const Searched found = search_now(middle, stop);
        stopper.join();
        MoveList list;
        generate_moves(middle, list, WHITE);
        EXPECT_GE(find_move(list, found.move), 0);
        EXPECT_LT(search_state.completed_depth, MAX_DEPTH);
        EXPECT_GE(search_state.completed_depth, 3);
        EXPECT_FALSE(search_state.busy);
    }
}

TEST_F(StopTest, ASecondSearchWaitsForTheFirst) {
    std::atomic<int32_t> stop_first{0}, stop_second{0};
    std::atomic<bool> second_done{false};
    Searched first, second;
    std::thread one([&] { first = search_now(middle, stop_first); });
    while (search_state.iteration < 5) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    const Position forced = position_of("W:W28,40,41,42:B22,1,2,8");
    std::thread two([&] {
        second = search_now(forced, stop_second);
        second_done = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(250));
    EXPECT_FALSE(second_done);
    stop_first = 1;
    one.join();
    two.join();
    EXPECT_EQ(first.searched, 1);
    EXPECT_EQ(second.searched, 0);
}

}  // namespace
