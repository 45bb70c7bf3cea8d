// Spin locks with many threads at one word, more than there are processors.
#include "base/spin_lock.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <mutex>
#include <type_traits>
#include <vector>

namespace {

constexpr int THREADS = 8;

TEST(SpinLock, OneThreadHoldsIt) {
    SpinLock lock;
    EXPECT_TRUE(lock.try_lock());
    EXPECT_EQ(lock.word, 1u);
    EXPECT_FALSE(lock.try_lock());
    lock.unlock();
    EXPECT_EQ(lock.word, 0u);
    lock.lock();
    EXPECT_FALSE(lock.try_lock());
    lock.unlock();
}

TEST(SpinLock, GuardsPlainWords) {
    constexpr int ROUNDS = 20000;
    SpinLock lock;
    long sum = 0, twin = 0;  // no atomics: the lock alone keeps them equal
    std::atomic<int> differences = 0;
    {
        std::vector<std::jthread> threads;
        for (int t = 0; t < THREADS; ++t) {
            threads.emplace_back([&] {
                for (int i = 0; i < ROUNDS; ++i) {
                    const std::lock_guard guard(lock);
                    differences += sum != twin;
                    ++sum;
                    ++twin;
                }
            });
        }
    }
    EXPECT_EQ(sum, static_cast<long>(THREADS) * ROUNDS);
    EXPECT_EQ(differences, 0);
}

TEST(SpinLock, WaitsUntilItIsReleased) {
    SpinLock lock;
    lock.lock();
    std::atomic<bool> entered = false;
    std::jthread other([&] {
        const std::lock_guard guard(lock);
        entered = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    EXPECT_FALSE(entered);
    lock.unlock();
    other.join();
    EXPECT_TRUE(entered);
}

TEST(SpinLock, NeedsNoDestruction) { EXPECT_TRUE(std::is_trivially_destructible_v<SpinLock>); }

// The rounds on the processor are counted and no more than the bound, so that a long wait yields.
TEST(SpinWait, LeavesTheProcessorAfterABoundedNumberOfRounds) {
    SpinWait wait;
    for (int i = 0; i < 3 * SpinWait::ROUNDS_ON_PROCESSOR; ++i) {
        EXPECT_EQ(wait.rounds, std::min(i, SpinWait::ROUNDS_ON_PROCESSOR));
        wait.wait_a_round();
    }
}

}  // namespace
