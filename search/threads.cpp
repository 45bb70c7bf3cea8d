#include "search/threads.h"

#include <algorithm>

#include "base/detached_thread.h"
#include "base/system_info.h"
#include "egdb/egdb_state.h"
#include "search/engine_settings.h"
#include "search/search_state.h"

// The numbers are those of the places.
constinit std::array<ThreadRecord, MAX_SEARCH_THREADS> thread_records{
    ThreadRecord{0}, ThreadRecord{1}, ThreadRecord{2}, ThreadRecord{3},
    ThreadRecord{4}, ThreadRecord{5}, ThreadRecord{6}, ThreadRecord{7}};

namespace {

int created = 1;

// A worker that is asleep and free. False if the system has no more threads.
bool create_worker(ThreadRecord& record) {
    record.sleeping.store(true, std::memory_order_relaxed);
    record.idle.store(true, std::memory_order_relaxed);
    // Detached: nothing ends a worker but the end of the process. All that it touches while it sleeps needs
    // no destruction.
    return start_detached_thread([&record] { idle_loop(record, nullptr); });
}

}  // namespace

int threads_init(int wanted) {
    if (wanted <= 0) wanted = processor_count();
    wanted = std::min(wanted, MAX_SEARCH_THREADS);
    while (created < wanted && create_worker(thread_records[static_cast<size_t>(created)])) ++created;
    return created;
}

int created_threads() { return created; }

int wanted_threads() {
    const int usable = std::min(engine_settings.search_threads, created);
    const bool opening = egdb_state.load(std::memory_order_relaxed) == EGDB_OPENING;
    return std::max(opening ? usable - 1 : usable, 1);
}

void wake_workers() {
    const int active = wanted_threads();
    search_state.active_threads.store(active, std::memory_order_relaxed);
    for (int i = 1; i < active; ++i) {
        ThreadRecord& worker = thread_records[static_cast<size_t>(i)];
        // The worker itself sets `idle` at the end of all work: one that is still on its way back from the
        // last search must not be recruited before.
        worker.sleeping.store(false, std::memory_order_release);
        worker.wake_event.signal();
    }
}

void sleep_workers() {
    for (int i = 1; i < created; ++i)
        thread_records[static_cast<size_t>(i)].sleeping.store(true, std::memory_order_release);
}

void clear_node_counters() {
    for (ThreadRecord& thread : thread_records) thread.nodes.store(0, std::memory_order_relaxed);
}

void idle_loop(ThreadRecord& thread, const SplitPoint* split) {
    // More threads than processors: a thread that waits without end at full speed would take the processor
    // from the one it waits for.
    SpinWait wait;
    for (;;) {
        while (thread.number != 0 && thread.sleeping.load(std::memory_order_acquire))
            thread.wake_event.wait();
        if (thread.work_ready.load(std::memory_order_acquire)) {
            thread.work_ready.store(false, std::memory_order_relaxed);
            split_worker(*thread.current_split, thread);
            thread.idle.store(true, std::memory_order_release);
            wait = SpinWait{};
        }
        if (split && split->active.load(std::memory_order_acquire) == 0) return;
        wait.wait_a_round();
    }
}
