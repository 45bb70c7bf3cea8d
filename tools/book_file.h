// Makes the bytes of a book file from its positions.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "book/book_format.h"
#include "core/board.h"

struct BookPosition {
    Position position;  // with its side
    int32_t best = NO_BOOK_MOVE;
    int32_t second = NO_BOOK_MOVE;
    int32_t value = 0;
};

struct BookFileFigures {
    int64_t positions = 0;
    int64_t left_out = 0;  // no black pieces, given twice, or more sets of kings than a book can hold
    int64_t with_kings = 0;
    int32_t slots = 0;
    int32_t max_probes = 0;
    int32_t king_sets = 0;
};

// Lays the positions out in the slots; those that come first have the right of way where not all sets of
// kings fit. With `slots` 0 the number of slots is chosen so that the longest probe is short; another must be
// at least the number of positions, or 1.
std::string make_book(std::span<const BookPosition> positions, int32_t slots, BookFileFigures& figures);

// Writes them to the file, which is the old one or the whole new one at every moment. 0; 1 if it cannot be
// written, with the reason in errno.
int write_book(const std::string& path, std::span<const BookPosition> positions, BookFileFigures& figures);
