// What each search thread has of its own, and the flags through which the others meet it.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>

#include "base/cache_line.h"
#include "base/event.h"
#include "core/board.h"

constexpr int MAX_SEARCH_THREADS = 8;
constexpr int KILLER_PLIES = 63;

// From and to bits of the move that last failed high at a ply.
struct KillerMove {
    uint8_t from = 0;
    uint8_t to = 0;
};

struct SplitPoint;

// One per thread. The counters and killers are written by their own thread at each node, so they stand on
// other cache lines than the flags that the other threads look at.
struct alignas(CACHE_LINE) ThreadRecord {  // NOLINT(clang-analyzer-optin.performance.Padding): cache lines
    int32_t number = 0;                    // 0 is the thread that called `getmove`
    std::atomic<bool> stop = false;        // leave the subtree that is searched now; set by others too
    std::atomic<bool> idle = false;        // has no work and may be recruited
    std::atomic<bool> work_ready = false;  // `current_split` holds new work
    std::atomic<bool> sleeping = false;    // waits for `wake_event`, between searches
    std::atomic<int32_t> split_count = 0;  // its own split points in use; changes under `split_lock`
    // Where it works now, null if nowhere. Written by who recruits the idle thread, else by itself.
    SplitPoint* current_split = nullptr;
    Event wake_event{};

    // The counters are read by thread 0 for the texts.
    alignas(CACHE_LINE) std::atomic<uint64_t> nodes = 0;  // of this search
    std::atomic<uint64_t> leaf_count = 0;                 // of this iteration
    std::atomic<uint64_t> leaf_ply_sum = 0;               // of this iteration
    std::array<KillerMove, KILLER_PLIES> killers{};
};
extern std::array<ThreadRecord, MAX_SEARCH_THREADS> thread_records;

// Adds to a counter that only one thread writes, which needs no locked instruction.
inline void add_to(std::atomic<uint64_t>& counter, uint64_t amount) {
    counter.store(counter.load(std::memory_order_relaxed) + amount, std::memory_order_relaxed);
}

// Counts a node that ends without searching children.
inline void count_leaf(ThreadRecord& thread, int ply) {
    add_to(thread.leaf_count, 1);
    add_to(thread.leaf_ply_sum, static_cast<uint64_t>(ply));
}
