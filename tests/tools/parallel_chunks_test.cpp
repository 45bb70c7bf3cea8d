// Chunks of one job on several threads.
#include "tools/parallel_chunks.h"

#include <gtest/gtest.h>

#include <set>

#include "tests/egdb/failing_new.h"

namespace {

// How often each number was in a chunk.
struct Visits {
    std::vector<std::atomic<int>> counts;
    int64_t chunk;
    std::atomic<int> wrong_chunks = 0;

    Visits(int64_t count, int64_t c) : counts(static_cast<size_t>(count)), chunk(c) {}

    void operator()(int64_t first, int64_t last) {
        if (first % chunk != 0 || last <= first || last - first > chunk) ++wrong_chunks;
        for (int64_t i = first; i < last; ++i) ++counts.at(static_cast<size_t>(i));
    }

    void expect_once() const {
        EXPECT_EQ(wrong_chunks, 0);
        for (const std::atomic<int>& count : counts) EXPECT_EQ(count, 1);
    }
};

TEST(ParallelChunks, EachNumberOnce) {
    for (const int64_t count : {0, 1, 6, 7, 8, 100, 1001}) {
        for (const int64_t chunk : {1, 7, 2000}) {
            for (const int threads : {1, 2, 8}) {
                Visits visits(count, chunk);
                for_chunks(count, chunk, threads, [&](int64_t first, int64_t last) { visits(first, last); });
                visits.expect_once();
            }
        }
    }
}

TEST(ParallelChunks, FewerThreadsWhereMemoryIsShort) {
    for (int allocations = 0; allocations < 12; ++allocations) {
        Visits visits(100, 3);
        allocations_left = allocations;
        for_chunks(100, 3, 5, [&](int64_t first, int64_t last) { visits(first, last); });
        allocations_left = -1;
        visits.expect_once();
    }
}

TEST(ParallelChunks, MemoryThatRunsOutInAnyThreadIsTold) {
    // Each thread waits in its first chunk until all have one, so that the one that fails is now the caller's
    // and now another. The others have work for years.
    constexpr int THREADS = 3;
    constexpr int64_t COUNT = int64_t{1} << 60;
    std::set<bool> failed_in_caller;
    for (int64_t failing = 0; failing < THREADS || failed_in_caller.size() < 2; ++failing) {
        std::atomic<int64_t> begun = 0, ended = 0;
        const std::thread::id caller = std::this_thread::get_id();
        const auto work = [&](int64_t first, int64_t) {
            ++begun;
            while (begun < THREADS) std::this_thread::yield();
            if (first == failing % THREADS) {
                failed_in_caller.insert(std::this_thread::get_id() == caller);
                throw std::bad_alloc();
            }
            ++ended;
        };
        EXPECT_THROW(for_chunks(COUNT, 1, THREADS, work), std::bad_alloc);
        EXPECT_GE(ended, THREADS - 1) << "the others have done what they had begun";
    }
}

}  // namespace
