// The tree below the root: a fail-soft negamax over copied positions with a full alpha-beta window at every
// node. Scores are relative to the side to move; depth is in eighths of a ply; `ply` is the distance from the
// root, 1 for its children. Each function returns 0 as soon as it sees that the search is stopped, and no
// caller uses or stores a value after that. Any search thread calls these with its own record; nothing
// allocates.
#pragma once

#include <cstdint>

#include "core/movegen.h"
#include "search/thread_record.h"

// Searches a node and writes the index of its best move, or -1, to `best_index_out`. `pruning_allowed` is
// true from the root down, and false in verification searches and in those that quiescence starts.
int32_t node_search(const Position& position, int ply, int depth, int32_t alpha, int32_t beta,
                    bool pruning_allowed, int32_t& best_index_out, ThreadRecord& thread);

// Depth 0 and below: captures, hanging pieces and sacrifices.
int32_t quiescence(const Position& position, int ply, int depth, int32_t alpha, int32_t beta,
                   ThreadRecord& thread);

// Follows forced captures to their end.
int32_t capture_search(const Position& position, int ply, int32_t alpha, int32_t beta, int side,
                       ThreadRecord& thread);

// The late move reduction of move number `move_number` in search order; `child` is the position after it.
int reduction(const Position& child, int depth, int move_number, bool pv_node, bool capture_position);

// The numbers of the moves, 0 to `count` - 1, by falling score, those of equal ones by their numbers. Besides
// one FIRST_MOVE_SCORE scores are below 16 million in size.
void sort_by_score(uint8_t* order, int count, const int32_t* scores);

// Ordering score of a move that has no better claim: its history, and a bonus for the killer of the ply.
int32_t ordering_score(MoveSquares squares, KillerMove killer);

constexpr int32_t FIRST_MOVE_SCORE = 2000000000;  // of the move to search first

// Raises the history of a move that failed high and lowers that of the moves tried before it; in a position
// without captures it becomes the killer of the ply. `rank` is its place in `order`.
void reward_cutoff(const Position& position, const MoveList& list, const uint8_t* order, int rank,
                   bool captures, KillerMove& killer);
