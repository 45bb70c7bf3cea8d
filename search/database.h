// Questions of the tree to the endgame databases, counted.
#pragma once

#include "egdb/engine_egdb.h"
#include "search/search_state.h"

// Adds to a counter that all threads share; lost updates are accepted.
inline void count_loosely(std::atomic<uint32_t>& counter) {
    counter.store(counter.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
}

// The value for the side to move, who has no capture, of a position that the database covers.
inline EgdbValue ask_database(const Position& position, bool conditional) {
    count_loosely(search_state.egdb_lookups);
    const EgdbValue value =
        egdb_engine.wld->lookup(egdb_engine.wld->handle, position, position.side, conditional);
    if (value == EGDB_UNKNOWN) count_loosely(search_state.egdb_unknowns);
    return value;
}
