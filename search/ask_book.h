// The engine's question to the opening book.
#pragma once

#include "core/movegen.h"

// True if a book is loaded and switched on, and knows a move: its index in `list`, which has the moves of
// `position`, its value, relative to black, and a text, for which the buffer has SEARCH_TEXT_SIZE bytes.
//
// The book is lent the memory of the transposition table, whose first entries are lost: only at the root,
// while no worker searches.
bool ask_book(const Position& position, int side, const MoveList& list, int& index, int& value, char* text);
