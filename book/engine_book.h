// The engine's side of the opening book. No book is loaded until something fills in `engine_book`.
#pragma once

#include "core/movegen.h"

struct EngineBook {
    bool loaded;
    // Non-zero if the position is in the book: the index of the chosen move in `list`, its value, relative to
    // black, and a text for the user, for which the buffer has 2000 bytes. Asked from the search thread
    // during a search, and from the interface thread while none runs: never from two threads at once.
    int (*book_move)(const Position& position, int side, const MoveList& list, int& index, int& value,
                     char* text);
};
extern EngineBook engine_book;

// The state without a book.
EngineBook no_book();
