// Solves all positions of one material as won, lost or drawn, from those of the materials that it can turn
// into.
//
// Backwards from what is decided: a first pass settles each position that captures, that cannot move or that
// promotes into a win, and counts the quiet moves of all others. From then on each position that becomes lost
// makes those that lead to it won, and each that becomes won takes one from the count of those that lead to
// it; whose count comes to nothing is lost. What is never reached is drawn. The result is the same in
// whatever order this happens, so it doesn't depend on the number of threads.
//
// In memory it takes one byte a position while it works, besides the two bits of the result.
#pragma once

#include <atomic>
#include <cstdint>

#include "tools/egdb_values.h"

struct SolveControl {
    int threads = 1;
    const std::atomic<bool>* stop = nullptr;    // ends the work early; null for never
    std::atomic<int64_t>* positions = nullptr;  // grows by each position gone over; null for no count
};

// Solves the canonical material and adds it to the set, which must hold its `next_materials`. 0; 1 if it was
// stopped, 2 if memory ran out. The set is then as it was.
int solve_material(const Material& m, SolvedSet& set, const SolveControl& control);

// How many positions the count of the control grows by in all.
int64_t solving_work(const Material& m);

// The most memory that solving takes, in bytes, without what the set already holds.
int64_t solving_memory(const Material& m);

// The value of a position by one move from the values of the set, in which the material must be solved or, if
// `side` has a capture, its next materials.
EgdbValue value_by_moves(const SolvedSet& set, const Position& position, int side);
