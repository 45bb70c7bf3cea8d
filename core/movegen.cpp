#include "core/movegen.h"

#include <algorithm>

#include "core/capture_search.h"

namespace {

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
inline void king_moves(const Position& position, uint64_t kings, uint64_t empty, MoveList& list) {
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

template <int SIDE>
int noncaptures_of(const Position& position, MoveList& list) {
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

}  // namespace

int generate_captures(const Position& position, MoveList& list, int side) {
    return side == BLACK ? capture_search::search_captures<BLACK>(position, list, NoLines{})
                         : capture_search::search_captures<WHITE>(position, list, NoLines{});
}

int generate_noncaptures(const Position& position, MoveList& list, int side) {
    return side == BLACK ? noncaptures_of<BLACK>(position, list) : noncaptures_of<WHITE>(position, list);
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
