#include "search/search_state.h"

#include "search/thread_record.h"

SearchState search_state;

void set_fixed_time(double seconds) {
    search_state.Mintime = 0.65 * seconds;
    search_state.step_time = 0.4 * seconds;
    search_state.max_time = 4 * seconds;
}

void reset_search_state() {
    SearchState& s = search_state;
    for (std::atomic<int16_t>& entry : s.history) entry.store(HISTORY_START, std::memory_order_relaxed);
    thread_records[0].killers.fill({});
    thread_records[0].stop.store(false, std::memory_order_relaxed);
    s.iteration.store(0, std::memory_order_relaxed);
    s.egdb_lookups.store(0, std::memory_order_relaxed);
    s.egdb_unknowns.store(0, std::memory_order_relaxed);
    s.start_ms = clock_ms();
    s.polled_nodes = 0;
    s.completed_depth = 0;
}
