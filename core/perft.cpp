#include "core/perft.h"

uint64_t perft(const Position& position, int depth) {
    MoveList list;
    // As the search does it: the test is cheaper than a call that finds nothing.
    const bool captures = has_capture(position, position.side);
    if (captures)
        generate_captures(position, list, position.side);
    else
        generate_noncaptures(position, list, position.side);
    uint64_t nodes = 0;
    for (const Move& move : list) {
        Position child;
        make_child(position, child, move, captures);
        nodes += depth > 1 ? perft(child, depth - 1) : 1;
    }
    return nodes;
}
