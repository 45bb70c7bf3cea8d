#include "core/perft.h"

#include "core/generate.h"

namespace {

[[gnu::always_inline]] inline void generate(const Position& position, MoveList& list, bool captures) {
    using namespace generate_moves_inline;
    if (position.side == BLACK)
        captures ? captures_of<BLACK>(position, list) : noncaptures_of<BLACK>(position, list);
    else
        captures ? captures_of<WHITE>(position, list) : noncaptures_of<WHITE>(position, list);
}

}  // namespace

uint64_t perft(const Position& position, int depth) {
    MoveList list;
    const bool captures = has_capture(position, position.side);
    generate(position, list, captures);
    uint64_t nodes = 0;
    for (const Move& move : list) {
        Position child;
        make_child(position, child, move, captures);
        nodes += depth > 1 ? perft(child, depth - 1) : 1;
    }
    return nodes;
}
