// Waiting for another thread without the system's help: for waits that are nearly always shorter than a call
// of the system would be. Anything that may take longer belongs behind an event.
#pragma once

#include <atomic>
#include <cstdint>
#include <thread>

// Tells the processor that this is a waiting loop: it saves power, leaves the core to a sibling thread and
// does not run ahead of the word it waits for.
inline void processor_pause() {
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#elif defined(__aarch64__)
    asm volatile("yield");
#endif
}

// The rounds of one wait. The first ones stay on the processor, some ten microseconds. A wait that is longer
// means that the thread waited for may have no processor, which happens when there are more threads than
// processors; from then on each round hands this thread's processor over.
struct SpinWait {
    static constexpr int ROUNDS_ON_PROCESSOR = 500;
    int rounds = 0;

    void wait_a_round() {
        if (rounds < ROUNDS_ON_PROCESSOR) {
            ++rounds;
            processor_pause();
        } else {
            std::this_thread::yield();
        }
    }
};

// Guards a few memory accesses. Not recursive, and not fair: who comes first may be served last. What was
// written under the lock is seen by the next who holds it. Works with std::lock_guard.
struct SpinLock {
    std::atomic<uint32_t> word = 0;  // 1 while it is held

    bool try_lock() { return word.exchange(1, std::memory_order_acquire) == 0; }
    void lock() {
        SpinWait wait;
        do {
            // Reading alone leaves the cache line shared while another thread holds the lock.
            while (word.load(std::memory_order_relaxed) != 0) wait.wait_a_round();
        } while (!try_lock());
    }
    void unlock() { word.store(0, std::memory_order_release); }
};
