// The book file, byte for byte; docs/formats.md has the tables. The reader and what makes books share this:
// the header, the slots, the scrambling and the hash. Everything here is re-entrant.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "core/board.h"

constexpr char BOOK_FILE[] = "Tessarin.odb";
constexpr char BOOK_VERSION[] = "3.00";  // lower ones are refused

constexpr size_t BOOK_HEADER_BYTES = 32;
constexpr size_t BOOK_SLOT_BYTES = 20;
constexpr size_t BOOK_KING_SET_BYTES = 8;
constexpr size_t BOOK_VERSION_BYTES = 16;

constexpr int NO_BOOK_MOVE = 127;             // as an index into a list: none
constexpr int32_t MAX_BOOK_KING_SETS = 2048;  // what the index in a slot can tell apart
constexpr int32_t MIN_BOOK_VALUE = -2048;
constexpr int32_t MAX_BOOK_VALUE = 2047;

// The first 32 bytes of the file. The numbers may be anything.
struct BookHeader {
    std::array<char, BOOK_VERSION_BYTES> version{};  // as read: the terminating zero may be missing
    int32_t positions = 0;
    int32_t slots = 0;
    int32_t max_probes = 0;
    int32_t king_sets = 0;
};

// What a slot says about its position.
struct BookEntry {
    int32_t side = WHITE;
    int32_t best = NO_BOOK_MOVE;  // places in the position's move list, 0 to 127; there may be no such move
    int32_t second = NO_BOOK_MOVE;
    int32_t value = 0;      // MIN_BOOK_VALUE to MAX_BOOK_VALUE, positive when good for black
    int32_t king_set = -1;  // index into the king sets, 0 to 2047; -1 for a position without kings
};

// A slot as it lies in the unscrambled array; an empty one has no black pieces.
struct BookSlot {
    uint32_t info = 0;
    uint64_t black = 0;
    uint64_t white = 0;
};

BookHeader read_book_header(std::span<const uint8_t, BOOK_HEADER_BYTES> bytes);
void write_book_header(const BookHeader& header, std::span<uint8_t, BOOK_HEADER_BYTES> bytes);

BookSlot read_book_slot(const uint8_t* bytes);
void write_book_slot(const BookSlot& slot, uint8_t* bytes);

BookEntry unpack_book_info(uint32_t info);
// The numbers must be in their ranges. A position with kings has no room for `second`, which is dropped.
uint32_t pack_book_info(const BookEntry& entry);

// Everything behind the header is stored with both halves of each byte raised by 5.
void scramble_book(std::span<uint8_t> bytes);
void unscramble_book(std::span<uint8_t> bytes);

// The slot where the search for a position begins is its hash modulo the number of slots.
uint32_t book_hash(const Position& position, int side);

// A little-endian number at any address.
uint64_t read_book_set(const uint8_t* bytes);
void write_book_set(uint64_t set, uint8_t* bytes);
