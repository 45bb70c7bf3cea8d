// Counting of the positions a number of plies ahead: the test of a move generator as a whole.
#pragma once

#include <cstdint>

#include "core/movegen.h"

// The number of lines of legal moves `depth` plies long; `depth` at least 1.
inline int64_t perft(const Position& position, int depth) {
    MoveList list;
    const int captures = generate_captures(position, list, position.side);
    if (!captures) generate_noncaptures(position, list, position.side);
    if (depth == 1) return list.count;
    int64_t count = 0;
    for (const Move& move : list) {
        Position child;
        make_child(position, child, move, captures > 0);
        count += perft(child, depth - 1);
    }
    return count;
}
