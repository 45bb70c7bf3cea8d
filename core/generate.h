// The bodies of the search's generator, for the two places that want them inlined: the generator's own
// functions and the count of positions, which a call for each costs a tenth of its speed. Kings are rare and
// stay behind a call.
#pragma once

#include "core/capture_search.h"

namespace generate_moves_inline {

// Keeps no paths.
struct NoLines {
    static void begin(int, const Position&) {}
    static void reach(int, int, const Move&) {}
    static void restart(int) {}
    static bool finish(int, int, uint64_t) { return true; }
};

// Men's moves one step forward in the direction. At most 50 men move two ways each, so the list has room.
template <int SIDE, int DIRECTION>
inline Move* man_moves(const Position& position, uint64_t men, uint64_t empty, Move* out) {
    constexpr uint64_t PROMOTION_ROW = SIDE == BLACK ? BLACK_PROMOTION_ROW : WHITE_PROMOTION_ROW;
    uint64_t destinations = step<DIRECTION>(men) & empty;
    while (destinations) {
        const uint64_t to = lowest_set(destinations);
        destinations &= destinations - 1;
        const uint64_t change = to | step_back<DIRECTION>(to);
        out->black = SIDE == BLACK ? position.black ^ change : position.black;
        out->white = SIDE == WHITE ? position.white ^ change : position.white;
        out->king = position.king | (to & PROMOTION_ROW);
        ++out;
    }
    return out;
}

// Kings' slides in the direction: king by king in order of the first square reached, nearest square first.
template <int SIDE, int DIRECTION>
[[gnu::noinline]] void king_moves(const Position& position, uint64_t kings, uint64_t empty, MoveList& list) {
    uint64_t first_steps = step<DIRECTION>(kings) & empty;
    while (first_steps) {
        uint64_t to = lowest_set(first_steps);
        first_steps &= first_steps - 1;
        const uint64_t from = step_back<DIRECTION>(to);
        for (; to & empty; to = step<DIRECTION>(to)) {
            if (list.count >= MAX_MOVES) return;
            const uint64_t change = from | to;
            list[list.count] = {SIDE == BLACK ? position.black ^ change : position.black,
                                SIDE == WHITE ? position.white ^ change : position.white,
                                position.king ^ change};
            ++list.count;
        }
    }
}

// As `generate_noncaptures`.
template <int SIDE>
[[gnu::always_inline]] inline int noncaptures_of(const Position& position, MoveList& list) {
    const uint64_t own = SIDE == BLACK ? position.black : position.white;
    const uint64_t empty = ~(position.black | position.white) & BOARD_MASK;
    const uint64_t men = own & ~position.king;
    Move* out = list.moves.data();
    if constexpr (SIDE == WHITE) {
        out = man_moves<SIDE, 2>(position, men, empty, out);
        out = man_moves<SIDE, 3>(position, men, empty, out);
    } else {
        out = man_moves<SIDE, 0>(position, men, empty, out);
        out = man_moves<SIDE, 1>(position, men, empty, out);
    }
    list.count = static_cast<int32_t>(out - list.moves.data());
    const uint64_t kings = own & position.king;
    if (kings) {
        king_moves<SIDE, 0>(position, kings, empty, list);
        king_moves<SIDE, 1>(position, kings, empty, list);
        king_moves<SIDE, 2>(position, kings, empty, list);
        king_moves<SIDE, 3>(position, kings, empty, list);
    }
    return list.count;
}

// As `generate_captures`.
template <int SIDE>
[[gnu::always_inline]] inline int captures_of(const Position& position, MoveList& list) {
    return capture_tree::search_captures<SIDE>(position, list, NoLines{});
}

}  // namespace generate_moves_inline
