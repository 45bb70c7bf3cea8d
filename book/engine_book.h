// The engine's side of the opening book. No book is loaded until `load_book` fills in `engine_book`.
#pragma once

#include <cstddef>
#include <span>

#include "core/movegen.h"

// The terms on which the book is asked.
struct BookTerms {
    int mode = 0;  // 1 all kinds of moves, 2 good moves, 3 best moves
    // Memory lent for the time of the question; its first bytes come back as zeroes.
    std::span<std::byte> memory;
};

struct EngineBook {
    bool loaded;
    // Non-zero if the position is in the book: the index of the chosen move in `list`, its value, relative to
    // black, and a text for the user, for which the buffer has 2000 bytes. Asked from the search thread
    // during a search, and from the interface thread while none runs: never from two threads at once.
    int (*book_move)(const Position& position, int side, const MoveList& list, const BookTerms& terms,
                     int& index, int& value, char* text);
};
extern EngineBook engine_book;

// The state without a book.
EngineBook no_book();
