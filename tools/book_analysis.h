// The analysis of one position for the opening book: a long search for its value and best move, and a short
// one behind each move that tells which others may be worth a long one.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/board.h"

// A position and the nodes that its long search is to have.
struct BookTask {
    Position position;
    uint64_t nodes = 0;
};

struct BookAnalysis {
    int32_t value = 0;  // in the range of the book, positive when good for black
    int32_t best = 0;   // index into the move list
    uint64_t nodes = 0;
    std::vector<int16_t> quick;  // a value for each move of the list, in the range of the book
};

// Analyses a position that has a legal move with the engine of this process, whose table, weights and number
// of threads must be set; what the table knew is forgotten, so that one thread gives the same answer always.
// The short search of each move has `quick_nodes`.
BookAnalysis analyse_book_position(const BookTask& task, uint64_t quick_nodes);

// A task and its analysis as one line of text without a newline, for work files and between processes.
std::string book_analysis_line(const BookTask& task, const BookAnalysis& analysis);
// False if the line is none, cut short, or does not fit the position's moves.
bool read_book_analysis_line(const std::string& line, BookTask& task, BookAnalysis& analysis);

// The task alone, which such a line begins with.
std::string book_task_line(const BookTask& task);
bool read_book_task_line(const std::string& line, BookTask& task);
