// How clicks on the board become moves: clicked squares are gathered in the marks of `game` until one legal
// move alone fits them. Needs no window. Interface thread only.
#pragma once

#include <cstdint>

// A click with the left or the right button on a square, 1 to 50, or on no dark square, 0. Plays the move
// that the clicks single out, or changes the square in SETUP_MODE; the board is redrawn through `ui`.
void board_left_click(int square);
void board_right_click(int square);
