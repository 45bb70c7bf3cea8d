// An event that one thread waits for and any thread signals.
#pragma once

#include <atomic>
#include <cstdint>

// Not signalled at first. A signal stays until a wait takes it, and several signals before a wait are one.
// What was written before a signal is seen after the wait that took it. One thread at a time may wait.
//
// Nothing has to be destroyed, so a thread may still wait when the process ends.
struct Event {
    std::atomic<uint32_t> signalled = 0;

    void signal() {
        // A full exchange: sleepers are looked for only after the word has been seen to change.
        if (signalled.exchange(1) == 0) signalled.notify_one();
    }
    // Sleeps until the event is signalled, without a limit of time, and takes the signal.
    void wait() {
        while (signalled.exchange(0) == 0) signalled.wait(0);
    }
};
