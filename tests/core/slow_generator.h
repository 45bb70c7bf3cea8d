// A second move generator, written from the rules of the game alone, to hold the fast ones against: pieces
// stand in a 10x10 array, moves are found square by square, and nothing is shared with core/ but the record
// types. It is far too slow for play.
#pragma once

#include <vector>

#include "core/board.h"

// One way to make a move. Squares are numbers from 1.
struct SlowMove {
    int from = 0;
    std::vector<int> landings;  // one for a quiet move
    std::vector<int> taken;     // in the order of the jumps; empty for a quiet move
    Move result{};
};

// All ways to capture that take the most pieces, in no particular order; empty if there is none. A king that
// goes on to capture straight ahead is told as doing so from the last empty square before the next piece,
// once.
std::vector<SlowMove> slow_captures(const Position& position, int side);

// All moves that capture nothing, whether or not a capture is there, in no particular order.
std::vector<SlowMove> slow_quiet_moves(const Position& position, int side);

// Columns 0 to 9 from the left and rows 0 to 9 from the top of a square, and back; 0 beyond the board.
int column_of(int square);
int row_of(int square);
int square_on(int column, int row);
