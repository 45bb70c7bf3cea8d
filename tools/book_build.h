// Builds an opening book from the start position and the two-move ballots on: the positions that
// tools/book_graph.h finds worth it are analysed, batch after batch. Which these are depends on the analyses
// alone and not on who makes them or when, so a build can be stopped and gone on with at any time.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "tools/book_analysis.h"
#include "tools/book_file.h"
#include "tools/book_graph.h"

constexpr int64_t BOOK_LEAST_BATCH = 64;
constexpr int64_t BOOK_BATCH_SHARE = 50;  // a batch is at most this fraction of what stands

// Behind the best-first growth, lines as games are likely to go, from each root, for a book that plays white
// and for one that plays black: its moves are the book's best, those of an opponent without a book what a
// search finds in the time that he takes for a move. He is not quite predictable: in each variant of a line
// he has other nodes, reply_nodes or half as many more, and their order is the number of the variant, bit by
// bit.
struct BookLineOptions {
    int32_t moves = 0;          // of the book's side; 0 for no lines
    int32_t variants = 4;       // up to MOST_BOOK_VARIANTS
    uint64_t nodes = 10000000;  // of the searches of the book's side
    uint64_t reply_nodes = 2000000;
    int32_t margin = 0;  // points by which a move of the book's side may look worse and still be analysed
};
constexpr int32_t MOST_BOOK_VARIANTS = 64;

struct BookBuildOptions {
    int64_t positions = 20000;       // to analyse
    int64_t deep_positions = 0;      // of these, the first, which most games go through
    uint64_t nodes = 600000;         // of the search of a position
    uint64_t deep_nodes = 10000000;  // of one of the first
    BookLineOptions lines;
    BookCosts costs;
    int32_t ballot_cost = 8;    // of the ballots as roots; that of the start position is 0
    int32_t second_margin = 4;  // points that a second-best move may give away
};

// Analyses positions, each of which has a legal move. False if it failed or was told to stop.
struct BookAnalyst {
    void* context;
    bool (*analyse)(void* context, std::span<const BookTask> tasks, std::vector<BookAnalysis>& analyses);
};

// Lets the graph grow until so many of its nodes are analysed or none is left that is worth it, and then
// along the lines. False if the analyst failed; the graph is good for nothing then.
bool grow_book(BookGraph& graph, const BookBuildOptions& options, const BookAnalyst& analyst);

// The book's positions, in the order of their analysis: each analysed node with its minimax value, its best
// move, and its second-best if it is near.
std::vector<BookPosition> book_positions(const BookGraph& graph, int32_t second_margin);
