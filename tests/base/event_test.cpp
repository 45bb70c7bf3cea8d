// Events between two threads.
#include "base/event.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>
#include <type_traits>

namespace {

TEST(Event, ASignalBeforeTheWaitIsKept) {
    Event event;
    event.signal();
    event.wait();
    EXPECT_EQ(event.signalled, 0u);
}

TEST(Event, SignalsBeforeTheWaitAreOne) {
    Event event;
    event.signal();
    event.signal();
    event.wait();
    std::atomic<bool> back = false;
    std::jthread waiter([&] {
        event.wait();
        back = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    EXPECT_FALSE(back);
    event.signal();
    waiter.join();
    EXPECT_TRUE(back);
}

TEST(Event, WakesASleeper) {
    for (int i = 0; i < 20; ++i) {
        Event event;
        std::atomic<bool> waits = false, back = false;
        std::jthread waiter([&] {
            waits = true;
            event.wait();
            back = true;
        });
        while (!waits) std::this_thread::yield();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        EXPECT_FALSE(back);
        event.signal();
        waiter.join();
    }
}

// No signal is lost, and each hands over what was written before it.
TEST(Event, TwoThreadsTakeTurns) {
    constexpr int ROUNDS = 20000;
    Event ping, pong;
    int ball = 0;  // plain: the events alone order its use
    std::jthread other([&] {
        for (int i = 0; i < ROUNDS; ++i) {
            ping.wait();
            ++ball;
            pong.signal();
        }
    });
    for (int i = 0; i < ROUNDS; ++i) {
        ++ball;
        ping.signal();
        pong.wait();
        ASSERT_EQ(ball, 2 * i + 2);
    }
}

TEST(Event, NeedsNoDestruction) { EXPECT_TRUE(std::is_trivially_destructible_v<Event>); }

}  // namespace
