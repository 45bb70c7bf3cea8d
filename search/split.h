// Split points: a thread that searches a node offers the rest of the node's moves, and an idle thread joins
// it. Both then take moves from the split point until none is left or one fails high. Only two threads start
// on a split point, so that the work spreads over many small ones in the subtrees.
//
// Split points are fixed slots, sixteen for each thread, used as a stack. They point into the frame of their
// owner, which stays in place because the owner does not leave the split before all others have.
//
// Order of the locks: `split_lock` is taken while no split point's lock is held, and no lock is held across a
// search of a node.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>

#include "base/spin_lock.h"
#include "core/movegen.h"
#include "search/search_state.h"
#include "search/thread_record.h"

constexpr int MAX_OWNED_SPLITS = 16;  // of one thread at a time
constexpr int SPLIT_THREADS = 2;      // at a new split point: the owner and one worker
constexpr int MIN_SPLIT_DEPTH = 32;
constexpr int MIN_SPLIT_MOVES = 2;  // that remain

struct alignas(CACHE_LINE) SplitPoint {
    // Written by the owner before another thread sees the split point.
    SplitPoint* parent = nullptr;        // what the owner worked on before
    const Position* position = nullptr;  // the node, its moves and their order: in the owner's frame
    const MoveList* list = nullptr;
    const uint8_t* order = nullptr;
    int32_t ply = 0;
    int32_t depth = 0;
    int32_t beta = 0;
    int32_t master = 0;  // the owner's number
    bool pruning_allowed = false;
    bool capture_position = false;
    bool pv_node = false;

    // Changed under `lock`; what is atomic is read without it.
    alignas(CACHE_LINE) SpinLock lock;
    int32_t next_move = 0;  // position in `order` to hand out next
    int32_t best_index = -1;
    std::atomic<int32_t> alpha = 0;  // raised during the work
    std::atomic<int32_t> best = 0;
    std::atomic<int32_t> active = 0;                              // threads still in it
    std::atomic<bool> cut_off = false;                            // a move has failed high
    std::array<std::atomic<bool>, MAX_SEARCH_THREADS> workers{};  // who is attached, the owner excepted
};
extern std::array<std::array<SplitPoint, MAX_OWNED_SPLITS>, MAX_SEARCH_THREADS> split_points;

// Guards recruiting, and the beginning and end of a split.
extern SpinLock split_lock;

// A node that offers its moves from number `next_number` of `order` on.
struct SplitOffer {
    const Position& position;
    const MoveList& list;
    const uint8_t* order;
    int next_number;
    int ply;
    int depth;
    bool pruning_allowed;
    bool capture_position;
    bool pv_node;
    int32_t alpha;
    int32_t beta;
    int32_t& best;        // raised by the split
    int32_t& best_index;  // with it
    ThreadRecord& thread;
};

// The candidate is idle and may work for the master: at any time if it has nothing else to do, and while it
// waits for a split point of its own only for a thread that works there, whose work it is waiting for. So it
// can come back in time.
bool can_help(const ThreadRecord& candidate, const ThreadRecord& master);

// Some thread can help the master.
bool any_worker(const ThreadRecord& master);

// Shares the moves with a thread that can help. True if they were searched, `best` and `best_index` being up
// to date, unless the thread is now stopped; false if nobody can help, and then nothing was done.
bool try_split(const SplitOffer& offer);

// Takes moves from the split point and searches them until it is done or this thread is stopped.
void split_worker(SplitPoint& split, ThreadRecord& thread);

// A split point that this thread works beneath was cut off, where more than two threads search. The thread is
// then stopped. With two, `stop` alone says so: a cut-off always concerns the other thread directly.
bool cut_off_above(ThreadRecord& thread);

// This thread is to leave the subtree.
inline bool is_stopped(ThreadRecord& thread) {
    if (thread.stop.load(std::memory_order_relaxed)) return true;
    return thread.current_split && cut_off_above(thread);
}

// The same, or the whole search is to end. What a search of a node returned is then worth nothing.
inline bool must_leave(ThreadRecord& thread) { return stop_requested() || is_stopped(thread); }
