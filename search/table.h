// The transposition table: one table for all search threads, without locks. An entry is eight bytes, read and
// written as one atomic word, with a check that ties its two halves to the key, so a half-written entry
// cannot be seen. The table also carries the principal variation: there are no other arrays for it.
//
//   check  bits 0-31    hash1 XOR info; 0 marks a free entry
//   info   bits 32-44   value, 13-bit two's complement
//          bits 45-53   depth field: depth in eighths of a ply plus 1; 0: nothing usable but the move
//          bit  54      pv_mark
//          bits 55-61   index of the best move in the position's list; 127: none
//          bits 62-63   type: 0 exact, 1 upper bound, 2 lower bound
//
// A position's bucket is the three entries from index hash0 & mask, so neighbouring buckets overlap.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>

#include "base/memory.h"
#include "core/board.h"

enum BoundType : uint32_t { BOUND_EXACT = 0, BOUND_UPPER = 1, BOUND_LOWER = 2 };

constexpr int NO_MOVE_INDEX = 127;
constexpr int BUCKET_SLOTS = 3;
constexpr int MAX_TABLE_MB = 512;
constexpr int AGE_TIMES = 16;

// An entry's fields as one copy in a register.
struct TTEntry {
    uint32_t check = 0;
    uint32_t info = 0;

    static constexpr uint32_t PV_MARK = 1u << 22;
    static constexpr uint32_t DEPTH_MASK = 0x1ffu << 13;

    static TTEntry from_word(uint64_t word) {
        return {static_cast<uint32_t>(word), static_cast<uint32_t>(word >> 32)};
    }
    uint64_t word() const { return uint64_t{info} << 32 | check; }

    bool free() const { return check == 0; }
    bool belongs_to(uint32_t hash1) const { return (check ^ info) == hash1; }
    int32_t value() const { return static_cast<int32_t>(info << 19) >> 19; }
    int32_t depth_field() const { return static_cast<int32_t>(info >> 13 & 0x1ff); }
    bool pv_mark() const { return (info & PV_MARK) != 0; }
    int32_t move_index() const { return static_cast<int32_t>(info >> 23 & 0x7f); }
    BoundType type() const { return static_cast<BoundType>(info >> 30); }
};

using TTSlot = std::atomic<uint64_t>;

// Owned by the search thread, which alone allocates, ages and resizes, while the workers are asleep.
struct TranspositionTable {
    LargeMemory memory;
    TTSlot* slots_start = nullptr;
    int32_t size_mb = 0;       // allocated
    int32_t effective_mb = 0;  // in use, at most `size_mb`
    uint64_t entries = 0;      // a power of two
    uint64_t mask = 0;
    uint64_t slots = 0;  // entries, and the rest of the last bucket

    std::array<double, AGE_TIMES> age_ms{};  // ring of the last durations of `tt_age`
    int64_t age_count = 0;
};
extern TranspositionTable transposition_table;

// Reads the size setting, clamps it to 1 to 512 megabytes and allocates the table anew, zero-filled. 0; 1 if
// there is no memory, which is logged: no table exists then and nothing may be searched.
int tt_allocate();

// Empties the part of the table that is in use.
void tt_clear();

// Computes `entries`, `mask` and `slots` from `effective_mb`.
void tt_set_geometry();

// Fits the part of the table that is in use to the time of a move, so that the pass of `tt_age` stays a small
// and nearly constant share of it: doubles or halves `effective_mb`, which stays within `size_mb` and is not
// halved at 8 or below. Entries are not moved; those outside are hidden until the table grows again. Does
// nothing before the first pass was timed. Not during a search.
//   seconds         the time of the move; any value
//   search_threads  1 to 8; what lies outside is clamped
void tune_hash_size(double seconds, int search_threads);

// At the start of each search: old entries keep their move but can no longer cut off anything, and lose the
// mark.
void tt_age();

// Entries with `pv_mark`, and entries with a usable depth.
int64_t tt_count_marked();
int64_t tt_count_usable();

inline TTSlot* tt_bucket(uint32_t hash0) {
    return transposition_table.slots_start + (hash0 & transposition_table.mask);
}

inline void tt_prefetch(uint32_t hash0) { __builtin_prefetch(tt_bucket(hash0)); }

// The slot of the key, with its content in `entry`; null if the table has none.
inline TTSlot* tt_probe(uint32_t hash0, uint32_t hash1, TTEntry& entry) {
    TTSlot* const bucket = tt_bucket(hash0);
    for (TTSlot* slot = bucket; slot != bucket + BUCKET_SLOTS; ++slot) {
        entry = TTEntry::from_word(slot->load(std::memory_order_relaxed));
        if (entry.free()) return nullptr;
        if (entry.belongs_to(hash1)) return slot;
    }
    return nullptr;
}

// Stores under the key: into a free slot, over the key's own entry whatever its depth, or over the shallowest
// of the bucket without the mark. The key's own mark is kept.
inline void tt_store(uint32_t hash0, uint32_t hash1, int32_t value, int32_t depth_field, BoundType type,
                     int32_t move_index) {
    uint32_t info = (static_cast<uint32_t>(value) & 0x1fff) |
                    (static_cast<uint32_t>(depth_field) & 0x1ff) << 13 |
                    (static_cast<uint32_t>(move_index) & 0x7f) << 23 | static_cast<uint32_t>(type) << 30;
    TTSlot* const bucket = tt_bucket(hash0);
    TTSlot* victim = bucket;
    TTEntry victim_entry = TTEntry::from_word(bucket->load(std::memory_order_relaxed));
    for (TTSlot* slot = bucket; slot != bucket + BUCKET_SLOTS; ++slot) {
        const TTEntry entry = TTEntry::from_word(slot->load(std::memory_order_relaxed));
        if (entry.free()) {
            victim = slot;
            break;
        }
        if (entry.belongs_to(hash1)) {
            info |= entry.info & TTEntry::PV_MARK;
            victim = slot;
            break;
        }
        if (!entry.pv_mark() &&
            (entry.depth_field() < victim_entry.depth_field() || victim_entry.pv_mark())) {
            victim = slot;
            victim_entry = entry;
        }
    }
    victim->store(TTEntry{hash1 ^ info, info}.word(), std::memory_order_relaxed);
}

// A saved entry of some line.
struct SavedEntry {
    PositionHash hash;
    TTEntry entry;
};

// Writes a saved entry back: into the first free slot or the key's own, else over the shallowest, marked or
// not.
void tt_restore(const SavedEntry& saved);
