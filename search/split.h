// The sharing of a node's remaining moves with other search threads. Until something fills in `split_help`,
// no other thread can help, and thread 0 searches alone.
#pragma once

#include <cstdint>

#include "core/movegen.h"
#include "search/thread_record.h"

constexpr int MIN_SPLIT_DEPTH = 32;
constexpr int MIN_SPLIT_MOVES = 2;  // that remain

// A node that offers its moves from number `next_number` of `order` on. It stays in place until the split is
// over.
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

struct SplitHelp {
    // True if the remaining moves were searched, `best` and `best_index` being up to date; false if nobody
    // can help.
    bool (*try_split)(const SplitOffer& offer);
};
extern SplitHelp split_help;

// The state without helpers.
SplitHelp no_split_help();
