// How clicks on the board become moves: clicked squares are gathered in the marks of `game` until one legal
// move alone fits them. Needs no window. Interface thread only.
#pragma once

#include <cstdint>
#include <span>

// A click with the left or the right button on a square, 1 to 50, or on no dark square, 0. Plays the move
// that the clicks single out, or changes the square in SETUP_MODE; the board is redrawn through `ui`.
//
// A legal move fits when each marked square is its start, its end, a piece that it takes, or a square that it
// lands on in between. Among moves that fit, those of which more squares are start or end come first. When
// one comes first alone, it is played.
//
// A click whose square no move of the earlier clicks fits begins anew; one that fits no legal move at all
// leaves no mark.
void board_left_click(int square);
void board_right_click(int square);

// The squares of a typed move, judged as one: where with the marks, or without them, one legal move comes
// first alone, it is played; several leave the squares as marks, and none leaves no mark. Nothing in
// SETUP_MODE and while the user may not move.
void type_squares(std::span<const int32_t> squares);

// The square holds a piece of the user's that he could begin a move with: where a drag can start.
bool square_can_move(int square);

// Some legal move fits the marks and this square as well: where a drag can end.
bool click_fits(int square);

// Takes back the clicks of a move that is not singled out yet. Nothing while the user may not move.
void drop_clicks();
