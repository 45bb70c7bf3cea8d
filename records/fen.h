// FEN, the one text form of a position: the side to move, the white and the black pieces, kings with a K, as
// in W:W31,32,K46:B1,K2. It is printed strictly and read forgivingly.
//
// All functions here are re-entrant and allocate nothing.
#pragma once

#include <cstddef>

#include "core/board.h"

// Room for any position without two pieces on a square, with the final NUL.
constexpr size_t FEN_TEXT_SIZE = 216;
// The same for the tag line with a line end of up to seven characters.
constexpr size_t FEN_TAG_TEXT_SIZE = 232;

// White space in positions and game texts: tab, line feed, carriage return and blank, and nothing else.
constexpr bool is_record_space(char c) { return c == '\t' || c == '\n' || c == '\r' || c == ' '; }

// Prints the position into FEN_TEXT_SIZE bytes, pieces by rising square. Returns the length without the NUL.
// What does not fit, which takes two colours on many squares, is cut.
int position_to_fen(const Position& position, int side, char* out_text);

// Reads a position. 0 if the text begins like a FEN, even when what follows is faulty: the pieces up to the
// first character that cannot be read are placed, and numbers that are no squares are skipped. 1 if it does
// not, and then neither output is touched; this is how a position is told from a game. On 0 the link to a
// previous position and the count of reversible plies are cleared. A square may end up with pieces of both
// colours, which `is_legal_setup` finds.
int fen_to_position(const char* text, Position& position_out, int& side_out);

// True if `fen_to_position` would give 0.
bool begins_like_fen(const char* text);

// Prints the FEN as a game tag followed by `line_end` into FEN_TAG_TEXT_SIZE bytes. Returns the length.
int fen_tag_text(const Position& position, int side, char* out_text, const char* line_end);
