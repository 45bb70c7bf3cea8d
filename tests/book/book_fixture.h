// What the tests of the book share: books made of given positions, positions to make them of, and a slow and
// obvious reader to compare with.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "book/book_move.h"
#include "tools/book_file.h"

// Each test begins without a book, in a folder of its own, and sees what is logged.
class BookTest : public testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    // Writes the bytes as a book file and loads it; the status of the load.
    int load_image(const std::string& image);
    int load_positions(const std::vector<BookPosition>& positions, int32_t slots = 0);

    std::string path;

  private:
    std::string folder;
};

extern std::string logged;

// Little-endian, into the plain header at the offset.
void put_number(std::string& image, size_t offset, int32_t number);

Position position_of(const std::string& fen);
// The position after the moves, such as "32-28 19-23".
Position after_moves(const Position& start, const std::string& moves);
// Index of the move with this text in the position's list; fails the test if there is none.
int move_index(const Position& position, const std::string& text);

// Different positions with a move, met by random play from the start of the game or from random endings with
// kings, with moves and values drawn at random.
std::vector<BookPosition> random_book(std::mt19937& random, size_t count, bool with_kings);

// What stands in the book by position, and the answers of the book as its rules are told.
struct SlowBook {
    using Key = std::tuple<uint64_t, uint64_t, uint64_t, int>;
    struct Line {
        int depth;
        int value;
    };
    struct Move {
        int index;
        bool best, second, in_book;
        int depth, value;
        bool selected;
    };
    std::map<Key, BookPosition> entries;
    std::map<Key, Line> seen;

    explicit SlowBook(const std::vector<BookPosition>& positions);
    const BookPosition* find(const Position& position) const;
    const Line* line(const Position& position);
    // The moves in their order; `count` of them can be chosen.
    std::vector<Move> moves(const Position& position, int mode, uint32_t& count);
};

// The question with room for lines of its own.
BookCandidates candidates_of(const Position& position, int mode, bool& found);
