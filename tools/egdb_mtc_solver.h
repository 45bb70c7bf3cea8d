// The distances to the next conversion of all won and lost positions of one material, from the win/loss/draw
// values of it and of all that it can turn into.
//
// A conversion is a capture or a move of a man. The distance counts the moves of both sides up to and with
// the conversion, when the winner takes the shortest way to one that keeps the win and the loser the longest
// way to any. A position in which the game is over, lost by the side to move, has 0.
//
// Backwards, distance by distance: a first pass finds what converts with the next move. Then each position
// with a distance gives the positions before it the next one: the winner's at once, the loser's when no king
// move is left that would last longer. A distance is the same in whatever order this happens, so it doesn't
// depend on the number of threads.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "tools/egdb_solver.h"

constexpr int NO_DISTANCE = 255;  // of a drawn position
constexpr int LONGEST_DISTANCE = 253;

// By side to move, in the order of the numbers; where both sides are alike the second is empty.
struct SolvedDistances {
    Material material;
    std::array<std::vector<uint8_t>, 2> distances;
};

// Finds the distances of a canonical material. The set must hold it and its `next_materials`. 0; 1 if it was
// stopped, 2 if memory ran out, 3 if distances reach LONGEST_DISTANCE.
int solve_distances(const Material& m, const SolvedSet& set, const SolveControl& control,
                    SolvedDistances& solved);

// The distance of any position of the material for the side to move; NO_DISTANCE for a draw.
int distance_of(const SolvedDistances& solved, const Position& position, int side);

// By one move from the values of the set and the distances of the position's material.
int distance_by_moves(const SolvedSet& set, const SolvedDistances& solved, const Position& position,
                      int side);
