// The value of positions that the files leave out: a small search over values, from which captures are played
// out until the files know the answer. It also corrects the move of a search.
//
// All of it runs on the search thread, before or after the part of a search that other threads share, and has
// one state.
#pragma once

#include <array>
#include <cstdint>

#include "core/movegen.h"
#include "egdb/engine_egdb.h"

constexpr int RESOLVER_MAX_DEPTH = 64;
constexpr int32_t MOVE_CHECK_NODES = 100000;

struct EgdbResolver {
    int32_t max_nodes = MOVE_CHECK_NODES;  // of one `resolve_value`; set before it
    int32_t nodes = 0;                     // of the last one
    int32_t deepest_ply = 0;               // at which the files did not answer
    bool nodes_used_up = false;
    std::array<Position, RESOLVER_MAX_DEPTH> line;  // from the root to the present node
};
extern EgdbResolver egdb_resolver;

// The value for `side`, by ever deeper searches of up to `max_depth` - 1 plies, RESOLVER_MAX_DEPTH - 1 at
// most, until it is a win, a loss or a draw; otherwise that of the last one. Unknown with a `max_depth` of 1
// or below, or if the nodes ran out, which the log tells. A driver must be open.
EgdbValue resolve_value(const Position& position, int side, int max_depth);

// 1 if the move `chosen` gives away a win or a draw, and `better` then is the first one that does not; else
// 0, as well in any doubt.
int egdb_move_check(int side, const Position& position, const MoveList& moves, int chosen, int& better);
