// Moves as text. The texts are ASCII; a buffer of MOVE_TEXT_SIZE bytes holds any move.
#pragma once

#include <cstddef>

#include "core/board.h"

constexpr size_t MOVE_TEXT_SIZE = 100;

// Writes the short text of a move, "32-28" or "28x19", which needs no side: it is read off the change of the
// position. "???" if no side can have moved so.
void move_text(char* text, const Position& position, const Move& move);

// Writes the form used in game records and the display: as above, but with all landing squares where start
// and end alone could be another capture too. Returns the length; 0 and an empty text if the move is not
// legal.
int full_move_text(const Position& position, const Move& move, int side, char* text);
