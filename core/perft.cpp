#include "core/perft.h"

// Without the calls of the generator the count is a tenth faster.
[[gnu::flatten]] uint64_t perft(const Position& position, int depth) {
    MoveList list;
    const bool captures = generate_captures(position, list, position.side) != 0;
    if (!captures) generate_noncaptures(position, list, position.side);
    uint64_t nodes = 0;
    for (const Move& move : list) {
        Position child;
        make_child(position, child, move, captures);
        nodes += depth > 1 ? perft(child, depth - 1) : 1;
    }
    return nodes;
}
