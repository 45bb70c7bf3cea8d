#include "search/split.h"

#include <mutex>

#include "search/node_search.h"
#include "search/search_state.h"
#include "search/threads.h"

std::array<std::array<SplitPoint, MAX_OWNED_SPLITS>, MAX_SEARCH_THREADS> split_points;
SpinLock split_lock;

namespace {

int active_threads() { return search_state.active_threads.load(std::memory_order_relaxed); }

// The thread's split points, as far as they are in use.
SplitPoint& owned_split(const ThreadRecord& thread, int number) {
    return split_points[static_cast<size_t>(thread.number)][static_cast<size_t>(number)];
}

void fill_split(SplitPoint& split, const SplitOffer& offer) {
    split.parent = offer.thread.current_split;
    split.position = &offer.position;
    split.list = &offer.list;
    split.order = offer.order;
    split.ply = offer.ply;
    split.depth = offer.depth;
    split.beta = offer.beta;
    split.master = offer.thread.number;
    split.pruning_allowed = offer.pruning_allowed;
    split.capture_position = offer.capture_position;
    split.pv_node = offer.pv_node;
    split.next_move = offer.next_number;
    split.best_index = offer.best_index;
    split.alpha.store(offer.alpha, std::memory_order_relaxed);
    split.best.store(offer.best, std::memory_order_relaxed);
    split.active.store(1, std::memory_order_relaxed);
    split.cut_off.store(false, std::memory_order_relaxed);
    for (std::atomic<bool>& worker : split.workers) worker.store(false, std::memory_order_relaxed);
}

// The flags change before the work is announced: the thread may begin, and even end, at once.
void give_work(ThreadRecord& thread) {
    thread.idle.store(false, std::memory_order_relaxed);
    thread.stop.store(false, std::memory_order_relaxed);
    thread.work_ready.store(true, std::memory_order_release);
}

void recruit(SplitPoint& split, const ThreadRecord& owner, int moves_left) {
    for (int i = 0; i < active_threads(); ++i) {
        const int active = split.active.load(std::memory_order_relaxed);
        if (active >= SPLIT_THREADS || active >= moves_left) return;
        ThreadRecord& candidate = thread_records[static_cast<size_t>(i)];
        if (!can_help(candidate, owner)) continue;
        candidate.current_split = &split;
        candidate.killers = owner.killers;
        split.workers[static_cast<size_t>(i)].store(true, std::memory_order_relaxed);
        split.active.store(active + 1, std::memory_order_relaxed);
        give_work(candidate);
    }
}

// Sets up the split point and hands it to those who can help. Null if nobody can. Under `split_lock`.
SplitPoint* open_split(const SplitOffer& offer) {
    ThreadRecord& owner = offer.thread;
    const int number = owner.split_count.load(std::memory_order_relaxed);
    if (number >= MAX_OWNED_SPLITS || !any_worker(owner)) return nullptr;
    SplitPoint& split = owned_split(owner, number);
    fill_split(split, offer);
    owner.split_count.store(number + 1, std::memory_order_relaxed);
    owner.current_split = &split;
    recruit(split, owner, offer.list.count - offer.next_number);
    give_work(owner);
    return &split;
}

// Position in the order of the next move to search, or -1.
int take_move(SplitPoint& split) {
    const std::lock_guard guard(split.lock);
    return split.next_move < split.list->count ? split.next_move++ : -1;
}

int32_t search_split_move(SplitPoint& split, int number, ThreadRecord& thread) {
    Position child;
    make_child(*split.position, child, (*split.list)[split.order[number]], split.capture_position);
    const int r = reduction(child, split.depth, number, split.pv_node, split.capture_position);
    const auto search = [&](int depth) {
        int32_t ignored = -1;
        const int32_t alpha = split.alpha.load(std::memory_order_relaxed);
        return -node_search(child, split.ply + 1, depth, -split.beta, -alpha, split.pruning_allowed, ignored,
                            thread);
    };
    const int32_t value = search(split.depth - r - PLY_DEPTH);
    if (r == 0 || must_leave(thread) || value <= split.alpha.load(std::memory_order_relaxed)) return value;
    return search(split.depth - PLY_DEPTH);
}

void stop_others(SplitPoint& split, const ThreadRecord& thread) {
    for (ThreadRecord& other : thread_records) {
        const bool there = other.number == split.master ||
                           split.workers[static_cast<size_t>(other.number)].load(std::memory_order_relaxed);
        if (there && other.number != thread.number) other.stop.store(true, std::memory_order_relaxed);
    }
}

// Takes the value of a move, unless the search behind it was broken off.
void accept_value(SplitPoint& split, int32_t value, int32_t index, ThreadRecord& thread) {
    const std::lock_guard guard(split.lock);
    if (value <= split.best.load(std::memory_order_relaxed) || must_leave(thread)) return;
    split.best.store(value, std::memory_order_relaxed);
    split.best_index = index;
    if (value > split.alpha.load(std::memory_order_relaxed))
        split.alpha.store(value, std::memory_order_relaxed);
    if (value < split.beta) return;
    stop_others(split, thread);
    split.cut_off.store(true, std::memory_order_relaxed);
}

void leave_split(SplitPoint& split, ThreadRecord& thread) {
    const std::lock_guard guard(split.lock);
    // A cancellation from above spreads down.
    if (thread.number == split.master && is_stopped(thread)) stop_others(split, thread);
    split.workers[static_cast<size_t>(thread.number)].store(false, std::memory_order_relaxed);
    // Last: with the last thread out the owner takes the result and may use the split point anew.
    split.active.fetch_sub(1, std::memory_order_acq_rel);
}

}  // namespace

bool can_help(const ThreadRecord& candidate, const ThreadRecord& master) {
    // Pairs with the store of the thread that became idle, whose record is written next.
    if (!candidate.idle.load(std::memory_order_acquire) || &candidate == &master) return false;
    const int owned = candidate.split_count.load(std::memory_order_relaxed);
    if (owned == 0 || active_threads() <= 2) return true;
    return owned_split(candidate, owned - 1)
        .workers[static_cast<size_t>(master.number)]
        .load(std::memory_order_relaxed);
}

bool any_worker(const ThreadRecord& master) {
    for (int i = 0; i < active_threads(); ++i)
        if (can_help(thread_records[static_cast<size_t>(i)], master)) return true;
    return false;
}

bool try_split(const SplitOffer& offer) {
    ThreadRecord& owner = offer.thread;
    SplitPoint* split = nullptr;
    {
        const std::lock_guard guard(split_lock);
        split = open_split(offer);
    }
    if (!split) return false;
    idle_loop(owner, split);
    const std::lock_guard guard(split_lock);
    offer.best = split->best.load(std::memory_order_relaxed);
    offer.best_index = split->best_index;
    owner.split_count.store(owner.split_count.load(std::memory_order_relaxed) - 1, std::memory_order_relaxed);
    owner.stop.store(false, std::memory_order_relaxed);
    owner.idle.store(false, std::memory_order_relaxed);
    owner.current_split = split->parent;
    return true;
}

void split_worker(SplitPoint& split, ThreadRecord& thread) {
    while (split.best.load(std::memory_order_relaxed) < split.beta && !must_leave(thread)) {
        const int number = take_move(split);
        if (number < 0) break;
        const int32_t value = search_split_move(split, number, thread);
        if (must_leave(thread)) break;
        accept_value(split, value, split.order[number], thread);
    }
    leave_split(split, thread);
}

bool cut_off_above(ThreadRecord& thread) {
    if (active_threads() <= 2) return false;
    for (const SplitPoint* split = thread.current_split; split; split = split->parent) {
        if (!split->cut_off.load(std::memory_order_relaxed)) continue;
        thread.stop.store(true, std::memory_order_relaxed);
        return true;
    }
    return false;
}
