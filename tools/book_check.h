// Looks over a finished book: whether its moves exist, and where its lines lead.
#pragma once

#include <cstdint>
#include <vector>

#include "book/opening_book.h"

struct BookCounts {
    int64_t positions = 0;
    int64_t illegal = 0;       // positions that cannot stand on a board
    int64_t unreachable = 0;   // that a probe does not find where they are
    int64_t illegal_best = 0;  // best moves that are no moves
    int64_t illegal_second = 0;
    int64_t second = 0;  // second-best moves
    int64_t with_kings = 0;
};
BookCounts count_book(const OpeningBook& book);

// The end of a line: the first position out of the book.
struct BookLineEnd {
    Position position;
    int32_t book_side;  // who played by the book
    int32_t value;      // that the book has for the last move, positive when good for black
    int32_t plies;
};

// Different ends of lines that begin at the start position or a two-move ballot. One side, drawn at random,
// plays as the engine does in the mode of best moves, the other any move to a position that is in the book,
// as long as there is one. At most `count`; fewer if so many are not found in a hundred times as many tries.
std::vector<BookLineEnd> book_line_ends(const OpeningBook& book, size_t count, uint32_t seed);
