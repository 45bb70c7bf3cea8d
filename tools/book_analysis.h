// The analysis of one position for the opening book: a long search for its value and best move, and a short
// one behind each move that tells which others may be worth a long one.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "core/board.h"

struct BookAnalysis {
    int32_t value = 0;  // in the range of the book, positive when good for black
    int32_t best = 0;   // index into the move list
    uint64_t nodes = 0;
    std::vector<int16_t> quick;  // a value for each move of the list, in the range of the book
};

// Nodes of the long search, and of the short search of each move.
struct BookEffort {
    uint64_t nodes = 600000;
    uint64_t quick_nodes = 8000;
};

// Analyses a position that has a legal move with the engine of this process, whose table, weights and number
// of threads must be set; what the table knew is forgotten, so that one thread gives the same answer always.
BookAnalysis analyse_book_position(const Position& position, const BookEffort& effort);

// A position and its analysis as one line of text without a newline, for work files and between processes.
std::string book_analysis_line(const Position& position, const BookAnalysis& analysis);
// False if the line is none, cut short, or does not fit the position's moves.
bool read_book_analysis_line(const std::string& line, Position& position, BookAnalysis& analysis);

// The position alone, which such a line begins with.
std::string book_position_line(const Position& position);
bool read_book_position_line(const std::string& line, Position& position);
