// An event that stays signalled until it is reset, with a wait that has a limit.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

// Not signalled at first. What was written before a signal is seen after a wait that it ended. Any thread may
// signal, reset, wait and look.
struct ManualEvent {
    std::mutex mutex;
    std::condition_variable changed;
    bool signalled = false;

    void signal() {
        {
            const std::lock_guard lock(mutex);
            signalled = true;
        }
        changed.notify_all();
    }
    void reset() {
        const std::lock_guard lock(mutex);
        signalled = false;
    }
    bool is_signalled() {
        const std::lock_guard lock(mutex);
        return signalled;
    }
    // True if the event is signalled, now or within the time.
    bool wait_for(int milliseconds) {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, std::chrono::milliseconds(milliseconds), [this] { return signalled; });
    }
};
