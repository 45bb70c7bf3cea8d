// Searches with real threads, more than the machine has processors: every result must be sound whatever the
// threads do, and it must be the same where the position decides it. TESSARIN_LONG_TESTS in the environment
// multiplies the rounds of the random tests by its value.
#include "search/threads.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <set>
#include <thread>

#include "search/engine_settings.h"
#include "search/score.h"
#include "search/search_state.h"
#include "search/table.h"
#include "tests/search/fixtures.h"
#include "tests/search/forced_end.h"

namespace {

using Clock = std::chrono::steady_clock;

int rounds(int short_form) {
    const char* const factor = std::getenv("TESSARIN_LONG_TESTS");
    return factor ? short_form * std::max(1, std::atoi(factor)) : short_form;
}

class ThreadsTest : public SearchTest {
  protected:
    void SetUp() override {
        SearchTest::SetUp();
        ASSERT_EQ(threads_init(MAX_SEARCH_THREADS), MAX_SEARCH_THREADS);
        search_state.Mintime = search_state.step_time = search_state.max_time = LONG_TIME;
    }
    void TearDown() override {
        expect_rest();
        search_state.active_threads = 1;
        SearchTest::TearDown();
    }
    // Nothing of a search is left over.
    static void expect_rest() {
        for (const ThreadRecord& record : thread_records) {
            EXPECT_EQ(record.split_count, 0);
            EXPECT_EQ(record.sleeping, record.number > 0);
            EXPECT_FALSE(record.work_ready);
        }
        EXPECT_FALSE(thread_records[0].idle);
        EXPECT_EQ(thread_records[0].current_split, nullptr);
        EXPECT_EQ(split_lock.word, 0u);
        EXPECT_FALSE(search_state.busy);
        for (const auto& splits : split_points) {
            for (const SplitPoint& split : splits) {
                EXPECT_EQ(split.active, 0);
                EXPECT_EQ(split.lock.word, 0u);
            }
        }
    }
    const Position middle =
        position_of("W:W27,28,31,32,33,34,37,38,39,42,43,47:B3,4,7,8,9,12,13,14,16,18,19,23");
};

void expect_sound(const Position& p, const Searched& found) {
    MoveList list;
    generate_moves(p, list, p.side);
    EXPECT_GE(find_move(list, found.move), 0) << fen_of(p);
    EXPECT_LE(std::abs(found.value), MATE_SCORE) << fen_of(p);
    EXPECT_EQ(found.text.substr(0, 5), "value") << found.text;
}

TEST_F(ThreadsTest, ThreadsAreMadeOnceAndNeverTakenAway) {
    EXPECT_EQ(created_threads(), 8);
    EXPECT_EQ(threads_init(3), 8);
    EXPECT_EQ(threads_init(), 8);
    EXPECT_EQ(threads_init(50), 8);
    for (int i = 0; i < MAX_SEARCH_THREADS; ++i) EXPECT_EQ(thread_records[static_cast<size_t>(i)].number, i);
}

TEST_F(ThreadsTest, ASearchUsesAsManyAsTheSettingAsksFor) {
    const int settings[][2] = {{-3, 1}, {0, 1}, {1, 1}, {2, 2}, {5, 5}, {8, 8}, {9, 8}, {100, 8}, {3, 3}};
    for (const auto& [setting, used] : settings) {
        engine_settings.search_threads = setting;
        EXPECT_EQ(wanted_threads(), used);
        search_to(middle, 5);
        EXPECT_EQ(search_state.active_threads, used);
        expect_rest();
    }
}

TEST_F(ThreadsTest, TheOthersStayAsleep) {
    for (const int threads : {1, 2, 5}) {
        engine_settings.search_threads = threads;
        ASSERT_EQ(tt_allocate(), 0);
        search_to(middle, 11);
        uint64_t sum = 0;
        for (const ThreadRecord& record : thread_records) {
            sum += record.nodes;
            if (record.number >= threads) {
                EXPECT_EQ(record.nodes, 0u) << record.number;
            }
        }
        EXPECT_EQ(sum, searched_nodes());
    }
}

TEST_F(ThreadsTest, OnlyTheThreadsOfASearchAreWoken) {
    for (const int threads : {1, 2, 5, 8}) {
        engine_settings.search_threads = threads;
        wake_workers();
        for (const ThreadRecord& record : thread_records)
            EXPECT_EQ(record.sleeping, record.number >= threads) << record.number;
        sleep_workers();
        expect_rest();
    }
}

TEST_F(ThreadsTest, TheWorkersTakePart) {
    for (const int threads : {2, 4, 8}) {
        engine_settings.search_threads = threads;
        std::set<int> took_part;
        // On a busy machine a worker may sleep through a search, sooner through a short one.
        for (int i = 0; i < 60 && static_cast<int>(took_part.size()) < threads; ++i) {
            ASSERT_EQ(tt_allocate(), 0);
            search_to(middle, 13 + i / 10);
            for (const ThreadRecord& record : thread_records)
                if (record.nodes > 0) took_part.insert(record.number);
        }
        EXPECT_EQ(static_cast<int>(took_part.size()), threads);
    }
}

TEST_F(ThreadsTest, OneThreadSearchesAsIfThereWereNoOthers) {
    engine_settings.search_threads = 1;
    ASSERT_EQ(tt_allocate(), 0);
    const Searched first = search_to(middle, 11);
    const uint64_t nodes = searched_nodes();
    engine_settings.search_threads = 4;
    search_to(middle, 11);
    engine_settings.search_threads = 1;
    ASSERT_EQ(tt_allocate(), 0);
    const Searched again = search_to(middle, 11);
    EXPECT_EQ(searched_nodes(), nodes);
    EXPECT_EQ(again.value, first.value);
    EXPECT_EQ(again.move, first.move);
}

TEST_F(ThreadsTest, ForcedEndsAreFoundWithAnyNumberOfThreads) {
    for (const auto& [p, end] : decided_positions(81, 16)) {
        for (const int threads : {1, 2, 3, 4, 8}) {
            engine_settings.search_threads = threads;
            ASSERT_EQ(tt_allocate(), 0);
            const Searched found = search_to(p, 11, SEARCH_QUIET | SEARCH_FULL_DEPTH);
            const int for_side = p.side == BLACK ? found.value : -found.value;
            const int plies = std::abs(end) - 1;
            EXPECT_EQ(for_side, end > 0 ? 4000 - plies : plies - 4000) << fen_of(p) << " end " << end;
            const int after = forced_end(position_after(found.move, p.side ^ 1), 4);
            EXPECT_EQ(end > 0 ? 1 - after : -1 - after, end) << fen_of(p);
        }
    }
}

TEST_F(ThreadsTest, ForcedMovesAndLostPositionsAreThoseOfOneThread) {
    engine_settings.search_threads = 8;
    const Searched forced = search_to(position_of("W:W28,40,41,42:B22,1,2,8"), 9);
    EXPECT_EQ(forced.searched, 0);
    EXPECT_EQ(search_state.completed_depth, 5);
    const Searched lost = search_to(position_of("B:W11,17:B6"), 9);
    EXPECT_EQ(lost.value, -4000);
    EXPECT_EQ(lost.text, "no moves");
}

TEST_F(ThreadsTest, RandomPositionsGiveLegalMovesAndValues) {
    Random random(82);
    for (int i = 0; i < rounds(60); ++i) {
        engine_settings.search_threads = std::array{2, 3, 4, 8}[static_cast<size_t>(i % 4)];
        const Position p = i % 3 ? random_play(random, below(random, 90)) : random_setup(random, 6, 40);
        const Searched found = search_to(p, 9, SEARCH_QUIET | SEARCH_FULL_DEPTH);
        expect_sound(p, found);
        expect_rest();
    }
}

// The flag goes up at any moment, from the first instant to the middle of a deep iteration; the next search
// begins at once.
TEST_F(ThreadsTest, SearchesStoppedAtRandomMoments) {
    Random random(83);
    for (int i = 0; i < rounds(150); ++i) {
        const int threads = std::array{2, 3, 4, 8}[static_cast<size_t>(i % 4)];
        engine_settings.search_threads = threads;
        const Position p = i % 3 ? random_play(random, below(random, 60)) : random_setup(random, 8, 20);
        const auto delay = std::chrono::microseconds(below(random, 1 << below(random, 16)));
        std::atomic<int32_t> stop{0};
        std::jthread stopper([&] {
            std::this_thread::sleep_for(delay);
            stop = 1;
        });
        const Searched found = search_now(p, stop, SEARCH_QUIET | SEARCH_FULL_DEPTH);
        stopper.join();
        expect_sound(p, found);
        EXPECT_GE(search_state.completed_depth, 3);
        expect_rest();
    }
}

// Deep searches of few pieces split at every level; the node limit ends them.
TEST_F(ThreadsTest, DeepSplitsInEndings) {
    Random random(84);
    search_state.node_limit = 60000;
    for (int i = 0; i < rounds(12); ++i) {
        engine_settings.search_threads = std::array{2, 3, 4, 8}[static_cast<size_t>(i % 4)];
        const Position p = random_setup(random, 4, 60);
        std::atomic<int32_t> stop{0};
        expect_sound(p, search_now(p, stop, SEARCH_QUIET | SEARCH_FULL_DEPTH));
        expect_rest();
    }
    search_state.node_limit = UINT64_MAX;
}

// The threads believe to own fourteen split points already.
TEST_F(ThreadsTest, TheLimitOfOwnSplitPointsHoldsInASearch) {
    Random random(85);
    engine_settings.search_threads = 2;
    for (int i = 0; i < rounds(10); ++i) {
        for (ThreadRecord& record : thread_records) record.split_count = 14;
        const Position p = random_play(random, 20 + i);
        const Searched found = search_to(p, 10, SEARCH_QUIET | SEARCH_FULL_DEPTH);
        expect_sound(p, found);
        for (ThreadRecord& record : thread_records) {
            EXPECT_EQ(record.split_count, 14);
            record.split_count = 0;
        }
    }
}

// The search is cut off within the time that a few nodes take. The bound is wide, since the test shares the
// machine with others.
TEST_F(ThreadsTest, AStopIsAnsweredSoon) {
    engine_settings.search_threads = 8;
    for (int i = 0; i < rounds(20); ++i) {
        std::atomic<int32_t> stop{0};
        Clock::time_point stopped;
        std::jthread stopper([&] {
            while (search_state.iteration < 7) std::this_thread::yield();
            std::this_thread::sleep_for(std::chrono::milliseconds(2 + i));
            stopped = Clock::now();
            stop = 1;
        });
        search_now(middle, stop);
        const std::chrono::duration<double> took = Clock::now() - stopped;
        stopper.join();
        EXPECT_LT(took.count(), 1.0);
    }
}

TEST_F(ThreadsTest, TheTimeEndsASearchOfManyThreads) {
    engine_settings.search_threads = 8;
    search_state.max_time = 0.1;
    std::atomic<int32_t> stop{0};
    const auto start = Clock::now();
    expect_sound(middle, search_now(middle, stop));
    const std::chrono::duration<double> took = Clock::now() - start;
    EXPECT_GE(took.count(), 0.09);
    EXPECT_LT(took.count(), 5);
    EXPECT_EQ(stop, 0);
}

// The thread that calls is thread 0, whichever it is.
TEST_F(ThreadsTest, AnyThreadMaySearch) {
    engine_settings.search_threads = 3;
    for (int i = 0; i < 10; ++i) {
        std::jthread caller([&] { expect_sound(middle, search_to(middle, 9)); });
        caller.join();
        expect_rest();
    }
}

}  // namespace
