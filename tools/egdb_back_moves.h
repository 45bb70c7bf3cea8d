// Quiet moves taken back, for retrograde analysis, and the numbers of the positions that they came from.
#pragma once

#include <array>
#include <cstdint>

#include "core/board.h"
#include "core/rays.h"
#include "egdb/numbering.h"

// The numbers of positions that differ from one in the place of a piece, with what they have in common.
struct Numbers {
    const Material& m;
    int64_t men;
    int64_t black_sets;
    int64_t white_sets;
    int64_t men_and_black_kings;

    Numbers(const Position& position, const Material& material)
        : m(material),
          men(m.bm + m.wm ? men_number(position, m) : 0),
          black_sets(choose(50 - m.bm - m.wm, m.bk)),
          white_sets(choose(50 - m.bm - m.bk - m.wm, m.wk)),
          men_and_black_kings(men * black_sets + black_kings_number(position)) {}

    int64_t after_king_move(const Position& position, int side) const {
        const int64_t front =
            side == WHITE ? men_and_black_kings : men * black_sets + black_kings_number(position);
        return m.wk ? front * white_sets + white_kings_number(position) : front;
    }
};

template <int DIRECTION, typename Visit>
void slide_king(const Position& position, uint64_t from, int side, const Visit& visit) {
    const uint64_t empty = ~(position.black | position.white) & BOARD_MASK;
    for (uint64_t to = step<DIRECTION>(from); to & empty; to = step<DIRECTION>(to)) {
        Position before = position;
        (side == BLACK ? before.black : before.white) ^= from | to;
        before.king ^= from | to;
        visit(before);
    }
}

// Goes through all positions from which `side` reaches this one by a king's move without a capture. Whether
// he had to capture instead is for the visitor to find out.
template <typename Visit>
void king_moves_back(const Position& position, int side, const Visit& visit) {
    for (uint64_t kings = pieces_of(position, side) & position.king; kings; kings &= kings - 1) {
        const uint64_t from = lowest_set(kings);
        slide_king<0>(position, from, side, visit);
        slide_king<1>(position, from, side, visit);
        slide_king<2>(position, from, side, visit);
        slide_king<3>(position, from, side, visit);
    }
}

// The same for moves of men that do not promote.
template <typename Visit>
void man_moves_back(const Position& position, int side, const Visit& visit) {
    const uint64_t empty = ~(position.black | position.white) & BOARD_MASK;
    for (uint64_t men = pieces_of(position, side) & ~position.king; men; men &= men - 1) {
        const uint64_t from = lowest_set(men);
        const std::array<uint64_t, 2> squares = side == BLACK
                                                    ? std::array<uint64_t, 2>{step<2>(from), step<3>(from)}
                                                    : std::array<uint64_t, 2>{step<0>(from), step<1>(from)};
        for (const uint64_t to : squares) {
            if (!(to & empty)) continue;
            Position before = position;
            (side == BLACK ? before.black : before.white) ^= from | to;
            visit(before);
        }
    }
}
