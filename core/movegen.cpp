#include "core/movegen.h"

#include <algorithm>

#include "core/generate.h"

namespace inlined = generate_moves_inline;

int generate_captures(const Position& position, MoveList& list, int side) {
    return side == BLACK ? inlined::captures_of<BLACK>(position, list)
                         : inlined::captures_of<WHITE>(position, list);
}

int generate_noncaptures(const Position& position, MoveList& list, int side) {
    return side == BLACK ? inlined::noncaptures_of<BLACK>(position, list)
                         : inlined::noncaptures_of<WHITE>(position, list);
}

int find_move(const MoveList& list, const Move& move) {
    for (int i = 0; i < list.count; ++i)
        if (list[i] == move) return i;
    return -1;
}

void remove_move(MoveList& list, int index) {
    std::copy(list.begin() + index + 1, list.end(), list.moves.begin() + index);
    --list.count;
}
