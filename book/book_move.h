// The choice among the moves of a book position. A move is as strong as the position at the end of the line
// of best moves that follows it; the mode says how wide the choice among the moves is.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "book/engine_book.h"
#include "book/opening_book.h"
#include "core/movegen.h"

enum BookMode : int { BOOK_OFF = 0, BOOK_ALL_KINDS = 1, BOOK_GOOD_MOVES = 2, BOOK_BEST_MOVES = 3 };

// In mode BOOK_ALL_KINDS a move is chosen whose value is nearer than this to that of the first.
constexpr int BOOK_WIDTH = 11;

constexpr int NO_LINE_VALUE = 4001;  // worse than any: of a move that leads out of the book
constexpr size_t BOOK_MEMO_BYTES = 4;
constexpr size_t BOOK_TEXT_SIZE = 2000;

// What is known of the line from a slot on: the value at its end and how many book moves lead there.
struct LineMemo {
    uint8_t seen = 0;
    uint8_t depth = 0;
    int16_t value = 0;
};

// A move of the position.
struct BookCandidate {
    uint8_t index = 0;  // in the move list
    uint8_t depth = 0;
    bool selected = false;
    bool in_book = false;
    bool is_best = false;
    bool is_second = false;
    int16_t value = 0;
};

// The first `count` entries are the moves of the list.
struct BookCandidates {
    int32_t count = 0;
    uint32_t chosen_from = 0;  // so many from the first on, whichever are selected; 0: none
    std::array<BookCandidate, MAX_MOVES> moves{};
};

// The line from the position. False if it is not in the book. `memory` has BOOK_MEMO_BYTES for each slot of
// the book, zero before the first call; what a call leaves there serves the next.
bool book_line(const OpeningBook& book, std::span<std::byte> memory, const Position& position, int side,
               LineMemo& line);

// The moves of the position in the order of their worth, those selected by the mode marked; false if the
// position is not in the book. `memory` as above, zero before and after.
bool book_candidates(const OpeningBook& book, std::span<std::byte> memory, int mode, const Position& position,
                     int side, const MoveList& list, BookCandidates& candidates);

// "32-28(4/12)*  31-26(7/3)?": the chosen move with its value and depth, then the others that lead to book
// positions, with a star if the mode selects them. Cut if it is longer than BOOK_TEXT_SIZE.
std::string book_text(const Position& position, const MoveList& list, const BookCandidates& candidates,
                      size_t chosen);

// The question of `engine_book`, answered from `opening_book`.
int book_move(const Position& position, int side, const MoveList& list, const BookTerms& terms, int& index,
              int& value, char* text);
