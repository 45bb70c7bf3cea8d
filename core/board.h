// The board and a position on it: three 64-bit sets.
//
// Squares are numbered 1 to 50 as players do. Square s is bit (s - 1) + (s - 1) / 10, so each pair of rows
// takes eleven bits, ten squares and one ghost bit (10, 21, 32, 43). With the ghost bits each of the four
// diagonal steps is one shift over the whole board, and a step over the edge lands on a bit outside
// BOARD_MASK:
//
//     left by 5   down and left        right by 5   up and right
//     left by 6   down and right       right by 6   up and left
//
// Black starts on squares 1 to 20 and moves towards higher squares; white starts on 31 to 50 and moves first.
// The layout is a binding interface: move generation, evaluation, hashing and file formats depend on it.
//
// All functions here are re-entrant.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "core/bits.h"

constexpr int BLACK = 0;
constexpr int WHITE = 1;

constexpr uint64_t BOARD_MASK = 0x3ff7feffdffbff;
constexpr uint64_t BLACK_PROMOTION_ROW = 0x3e000000000000;  // squares 46 to 50
constexpr uint64_t WHITE_PROMOTION_ROW = 0x1f;              // squares 1 to 5
constexpr uint64_t BLACK_START = 0x1ffbff;
constexpr uint64_t WHITE_START = 0x3ff7fe00000000;

constexpr int BOARD_BITS = 54;  // bit numbers run from 0 to 53
constexpr int SQUARES = 50;

// A position, and a link in the line of positions that led to it. Invariants of a legal one: no square holds
// both colours, nothing lies outside BOARD_MASK, `king` is a subset of `black | white`, and no man stands on
// his own promotion row.
struct Position {
    uint64_t black = 0;  // all black pieces, men and kings
    uint64_t white = 0;  // all white pieces, men and kings
    uint64_t king = 0;   // the kings of both
    int32_t side = WHITE;
    // How many plies in a row, up to this position, were king moves without a capture.
    int32_t reversible_plies = 0;
    // The position before this one, in the search and on into the game; null at the first. Not owned.
    const Position* previous = nullptr;
};

// A move is the position after it, nothing else: two moves are the same when the sets are.
struct Move {
    uint64_t black;
    uint64_t white;
    uint64_t king;

    bool operator==(const Move&) const = default;
};

constexpr Position START_POSITION{BLACK_START, WHITE_START, 0, WHITE, 0, nullptr};

// The set of one side.
constexpr uint64_t pieces_of(const Position& position, int side) {
    return side == BLACK ? position.black : position.white;
}
constexpr uint64_t pieces_of(const Move& move, int side) { return side == BLACK ? move.black : move.white; }

// The two positions have the same pieces on the same squares.
constexpr bool same_pieces(const Position& a, const Position& b) {
    return a.black == b.black && a.white == b.white && a.king == b.king;
}

// The sets of a position as a move that leads to it, and the reverse with the side then to move.
constexpr Move move_to(const Position& position) { return {position.black, position.white, position.king}; }
constexpr Position position_after(const Move& move, int side) {
    return {move.black, move.white, move.king, side, 0, nullptr};
}

// Bit number of square s in entry s - 1, and the same as a single-bit set.
constexpr std::array<uint8_t, SQUARES> bit_of_square = [] {
    std::array<uint8_t, SQUARES> table{};
    for (int i = 0; i < SQUARES; ++i) table[static_cast<size_t>(i)] = static_cast<uint8_t>(i + i / 10);
    return table;
}();
constexpr std::array<uint64_t, SQUARES> mask_of_square = [] {
    std::array<uint64_t, SQUARES> table{};
    for (size_t i = 0; i < SQUARES; ++i) table[i] = uint64_t{1} << bit_of_square[i];
    return table;
}();

// Zero-based square of a bit; 0 for ghost bits.
constexpr std::array<uint8_t, BOARD_BITS> square_of_bit = [] {
    std::array<uint8_t, BOARD_BITS> table{};
    for (size_t i = 0; i < SQUARES; ++i) table[bit_of_square[i]] = static_cast<uint8_t>(i);
    return table;
}();

// The set of the square with that number, from 1; the empty set for what is no square.
constexpr uint64_t set_of_square(int number) {
    return number >= 1 && number <= SQUARES ? mask_of_square[static_cast<size_t>(number - 1)] : 0;
}

// The number, 1 to 50, of the lowest square of a set; 0 for the empty set.
constexpr int square_number(uint64_t set) {
    return set ? square_of_bit[static_cast<size_t>(lowest_bit(set))] + 1 : 0;
}

// The squares that a piece sees from one bit along the four directions
// (x+1, y+1), (x-1, y+1), (x+1, y-1), (x-1, y-1), from nearest to farthest. A corner of the long diagonal
// sees nine squares; its ninth mask stands in the first slot of the next direction, whose count is then 0.
struct DiagonalRays {
    int32_t counts[4];
    uint64_t masks[4][8];
};
using DiagonalRayTable = std::array<DiagonalRays, BOARD_BITS>;
extern const DiagonalRayTable diagonal_rays;

// The transposition key of a position with a side to move.
struct PositionHash {
    uint32_t hash0;
    uint32_t hash1;

    bool operator==(const PositionHash&) const = default;
};

inline PositionHash position_hash(const Position& position, int side) {
    uint64_t state = side == BLACK ? 0 : 0xd2d84a61;
    for (const uint64_t set : {position.black, position.white, position.king}) {
        uint64_t t = state + set * 0x1ffffff;
        t ^= t >> 23;
        t *= 17;
        t ^= t >> 6;
        t *= 257;
        t ^= t >> 10;
        t *= 0x4000001;
        state = t ^ t >> 31;
    }
    return {static_cast<uint32_t>(state), static_cast<uint32_t>(state >> 32)};
}

// Fills `child` with the position after `move`. Only king moves without a capture add to `reversible_plies`;
// any capture and any move of a man, a promotion too, put it back to 0.
inline void make_child(const Position& parent, Position& child, const Move& move, bool was_capture) {
    const int side = parent.side;
    child.black = move.black;
    child.white = move.white;
    child.king = move.king;
    child.previous = &parent;
    child.side = side ^ 1;
    const uint64_t men_before = pieces_of(parent, side) & ~parent.king;
    const uint64_t men_after = pieces_of(move, side) & ~move.king;
    child.reversible_plies = !was_capture && men_before == men_after ? parent.reversible_plies + 1 : 0;
}

namespace board_detail {

// True if one of the kings sees along the step an enemy with an empty square behind it. `shift` moves a set
// by one step.
template <typename Shift>
inline bool king_capture_along(uint64_t kings, uint64_t enemy, uint64_t empty, Shift shift) {
    uint64_t flood = kings;
    for (;;) {
        const uint64_t grown = flood | (shift(flood) & empty);
        if (grown == flood) break;
        flood = grown;
    }
    return (shift(shift(flood) & enemy) & empty) != 0;
}

}  // namespace board_detail

// True if `side` has a capture.
inline bool has_capture(const Position& position, int side) {
    const uint64_t own = pieces_of(position, side);
    const uint64_t enemy = pieces_of(position, side ^ 1);
    const uint64_t empty = ~(own | enemy) & BOARD_MASK;
    const uint64_t men = own & ~position.king;
    // One branch for all four directions of all men.
    const uint64_t landings = (((men << 6) & enemy) << 6) | (((men << 5) & enemy) << 5) |
                              (((men >> 5) & enemy) >> 5) | (((men >> 6) & enemy) >> 6);
    if (landings & empty) return true;
    const uint64_t kings = own & position.king;
    if (!kings) return false;
    using board_detail::king_capture_along;
    return king_capture_along(kings, enemy, empty, [](uint64_t s) { return s << 6; }) ||
           king_capture_along(kings, enemy, empty, [](uint64_t s) { return s << 5; }) ||
           king_capture_along(kings, enemy, empty, [](uint64_t s) { return s >> 5; }) ||
           king_capture_along(kings, enemy, empty, [](uint64_t s) { return s >> 6; });
}

// True if the move from `parent` to `child` was made by a man of `side` who became a king.
inline bool is_promotion(const Position& parent, const Position& child, int side) {
    const uint64_t before = pieces_of(parent, side);
    const uint64_t after = pieces_of(child, side);
    return (before & ~(parent.king | after)) != 0 && (after & child.king & ~before) != 0;
}

// From and to bit numbers of the moved piece, from one side's sets before and after. Where there is no such
// bit (a king that ends a capture on the square it came from) the number is 0.
struct MoveSquares {
    int from;
    int to;
};

inline MoveSquares move_squares(uint64_t before_set, uint64_t after_set) {
    const uint64_t left = before_set & ~after_set;
    const uint64_t reached = after_set & ~before_set;
    return {left ? lowest_bit(left) : 0, reached ? lowest_bit(reached) : 0};
}

// False if a man stands on his promotion row, a piece lies outside the board, or a square holds both colours.
bool is_legal_setup(const Position& position);
