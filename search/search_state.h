// What the threads of a search share, and what the caller of a search writes before it.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>

#include "base/cache_line.h"
#include "base/clock.h"
#include "core/board.h"

constexpr int MAX_DEPTH = 60;  // iterations
constexpr int MAX_PLY = 60;    // a node beyond is evaluated statically
constexpr int PLY_DEPTH = 8;   // depth is in eighths of a ply

constexpr int HISTORY_START = 4096;
constexpr int HISTORY_LIMIT = 8192;
constexpr int FIRST_STOPPABLE_ITERATION = 5;  // a move is always backed by a search of some depth

struct SearchState {  // NOLINT(clang-analyzer-optin.performance.Padding): cache lines
    // Written by the caller before a search, in seconds: no new iteration starts after `Mintime`, the next
    // iteration goes two deeper up to `step_time`, the search is cut off beyond `max_time`.
    double Mintime = 0;
    double step_time = 0;
    double max_time = 0;
    // The last iteration to run; for searches of a fixed depth.
    int32_t depth_limit = MAX_DEPTH;
    // The search is cut off when thread 0 has searched so many nodes, up to a poll of the clock later.
    uint64_t node_limit = UINT64_MAX;
    // The game's positions for the repetition test: the newest, which is the root, linked to those before it.
    // Null if there is no game. Not owned.
    const Position* game_line = nullptr;

    // Of the running search.
    std::atomic<bool> busy = false;
    std::atomic<int32_t>* stop_flag = nullptr;  // the caller's; any thread may set it
    std::atomic<int32_t> iteration = 0;         // stays readable after the search
    int32_t completed_depth = 0;                // the last whole iteration; 0 if there was none
    std::atomic<int32_t> highest_ply = 0;
    std::atomic<int32_t> active_threads = 1;  // that search
    int64_t start_ms = 0;

    // What the threads write all the time stands on other cache lines than what they read at each node.
    alignas(CACHE_LINE) std::atomic<uint32_t> egdb_lookups = 0;
    std::atomic<uint32_t> egdb_unknowns = 0;
    alignas(CACHE_LINE) int32_t polled_nodes = 0;  // thread 0's nodes since it last looked at the clock
    // By from bit and to bit, 0 to 8192; threads share it without locks and accept lost updates.
    alignas(CACHE_LINE) std::array<std::atomic<int16_t>, size_t{BOARD_BITS} * BOARD_BITS> history{};
};
extern SearchState search_state;

// A time that no search reaches, in seconds, for searches of a fixed depth or number of nodes.
constexpr double NO_TIME_LIMIT = 1e9;

// Sets the three limits for a fixed time for the move.
void set_fixed_time(double seconds);

// Resets what belongs to one search: history, killers, counters, clock.
void reset_search_state();

// Milliseconds since the start of this search, at least 1.
inline int64_t search_elapsed_ms() {
    const int64_t elapsed = clock_ms() - search_state.start_ms;
    return elapsed < 1 ? 1 : elapsed;
}
inline double search_elapsed() { return static_cast<double>(search_elapsed_ms()) / 1000.0; }

// The search is to end, and may.
inline bool stop_requested() {
    return search_state.stop_flag->load(std::memory_order_relaxed) != 0 &&
           search_state.iteration.load(std::memory_order_relaxed) >= FIRST_STOPPABLE_ITERATION;
}

inline std::atomic<int16_t>& history_entry(MoveSquares squares) {
    return search_state.history[static_cast<size_t>(squares.from * BOARD_BITS + squares.to)];
}
