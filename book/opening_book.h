// The opening book in memory: a hash table of analysed positions, read whole from a file and only read from
// then on. A book that is missing or cannot be used leaves the program without one.
//
// Loaded at start-up, before the search thread exists. What is drawn and borrowed during a question, the
// random numbers and the room for lines, is touched from the root of one search at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "base/memory.h"
#include "book/book_format.h"
#include "book/book_random.h"

struct OpeningBook {
    BookHeader header;
    std::vector<uint8_t> slots;       // unscrambled, BOOK_SLOT_BYTES each
    std::vector<uint64_t> king_sets;  // in the layout of the board
    std::string file;                 // as it was named
    BookRandom random;
    LargeMemory line_room;  // for a book whose lines do not fit into the memory that it is lent
    size_t line_room_bytes = 0;
};
extern OpeningBook opening_book;

// Reads BOOK_FILE of the current folder, as below.
int load_book();

// Reads the file into `opening_book`, seeds its random numbers and puts it at the engine's side
// (`engine_book`). 0; 1 if it cannot be opened, which is not told and changes nothing, and also if it is too
// old, damaged or too large, which is logged and leaves the engine without a book.
int load_book_from(const std::string& path);

// Slots of the table: those that the header counts, or none.
int64_t book_slots(const OpeningBook& book);

// The number of the position's slot, or -1. A position without black pieces is never found.
int64_t book_probe(const OpeningBook& book, const Position& position, int side);

// What the slot says; the number must be that of one.
BookEntry book_entry(const OpeningBook& book, int64_t slot);
