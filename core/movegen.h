// The move generator of the search: the legal moves of a position as resulting positions and nothing else.
// Captures are compulsory and only those that take the most pieces are legal; a king counts as one piece.
//
// The order of a list is part of the design: the transposition table and the opening book keep moves as
// indices into the list of their position, so the same position must give the same list every time, in any
// thread.
//
// Positions are assumed legal. Nothing allocates, and any number of threads may generate at once.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "core/board.h"

constexpr int MAX_MOVES = 128;
// Captures beyond this number are dropped without a report. Positions of play stay far below; set-up
// positions with many kings can exceed it. Quiet moves are never more than MAX_MOVES.
constexpr int MAX_CAPTURE_MOVES = 127;

struct MoveList {
    int32_t count;
    std::array<Move, MAX_MOVES> moves;  // the first `count`, in generation order

    // Left as it is on purpose: the list sits in the frames of the search, and clearing 3 KB there costs
    // time.
    MoveList() : count(0) {}  // NOLINT(cppcoreguidelines-pro-type-member-init)

    const Move& operator[](int i) const { return moves[static_cast<size_t>(i)]; }
    Move& operator[](int i) { return moves[static_cast<size_t>(i)]; }
    const Move* begin() const { return moves.data(); }
    const Move* end() const { return moves.data() + count; }
};

// Writes all captures of `side` that take the most pieces to `list` and returns their number, 0 if none.
int generate_captures(const Position& position, MoveList& list, int side);

// Writes all moves of `side` that do not capture and returns their number, 0 if none. Does not look for
// captures: only for use where there are none.
int generate_noncaptures(const Position& position, MoveList& list, int side);

// The legal moves: the captures, or the quiet moves if there are none. Returns their number; 0 is a lost
// game.
inline int generate_moves(const Position& position, MoveList& list, int side) {
    const int count = generate_captures(position, list, side);
    return count ? count : generate_noncaptures(position, list, side);
}

// Index of `move` in the list, or -1.
int find_move(const MoveList& list, const Move& move);

// Removes the move at `index`, keeping the order of the others.
void remove_move(MoveList& list, int index);
