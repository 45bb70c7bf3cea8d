// The positions of a book under construction and what is known of them: those that were analysed, with the
// values that minimax carries back over all their transpositions, and those one move further, among which the
// next to analyse are found.
//
// A position is worth analysing if few weak moves lead to it. Its cost is that of the cheapest way from a
// root: something for each ply, and more for each point that a move gives away. It is counted twice, once for
// a book that plays black and once for one that plays white, as whoever plays by the book does not make the
// weak moves himself: his own are dearer than his opponent's. The lower of both counts.
//
// The value of an analysed position is the best of its analysed children's and, while the move that its own
// search prefers leads to none of them, of its own search. So it is the value at the end of the line of best
// moves, which is what the reader of a book makes of it. Lines that come back to themselves are draws.
#pragma once

#include <array>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "core/board.h"
#include "tools/book_analysis.h"

struct BookCosts {
    int32_t ply = 4;         // of each ply
    int32_t own_loss = 6;    // of each point given away by whom the book plays for
    int32_t other_loss = 2;  // by the opponent
    int32_t decided = 400;   // nothing is analysed behind a position with such a value
};

struct BookEdge {
    int32_t child = 0;  // node
    int16_t quick = 0;  // value by the short search
};

struct BookNode {
    uint64_t black = 0, white = 0, king = 0;
    int8_t side = WHITE;
    bool analysed = false;
    bool has_moves = true;
    uint64_t searched = 0;  // nodes of the search that the next two are from
    int16_t search_value = 0;
    int16_t search_best = 0;
    // By minimax; of analysed nodes alone.
    int16_t value = 0;
    int16_t best = 0;               // index of the best move
    std::array<int32_t, 2> cost{};  // by the colour that the book plays
    std::vector<BookEdge> edges;    // of analysed nodes, in the order of the move list
};

struct BookKey {
    uint64_t black, white, king_and_side;
    bool operator==(const BookKey&) const = default;
};
struct BookKeyHash {
    size_t operator()(const BookKey& key) const;
};

struct BookGraph {
    BookCosts costs;
    std::vector<BookNode> nodes;
    std::unordered_map<BookKey, int32_t, BookKeyHash> numbers;
    struct Root {
        int32_t node;
        int32_t cost;
    };
    std::vector<Root> roots;
    std::vector<int32_t> analysed;  // in the order of their analysis
    uint64_t searched_nodes = 0;    // by their long searches
};

Position position_of_node(const BookNode& node);

// The number of the position's node, which is made if there is none.
int32_t book_node(BookGraph& graph, const Position& position);

void add_book_root(BookGraph& graph, const Position& position, int32_t cost);

// Enters what was found. Of a second analysis of a node the long search counts, if it had more nodes.
void add_book_analysis(BookGraph& graph, int32_t node, const BookAnalysis& analysis);

// Works out the values and best moves of all analysed nodes.
void carry_back_values(BookGraph& graph);

// Works out all costs and gives the cheapest nodes that can be analysed, the cheapest first, at most `count`.
// The values must be up to date.
std::vector<int32_t> nodes_to_analyse(BookGraph& graph, size_t count);

// Of the moves not yet analysed that look better than the best one now does, or worse by less than `margin`
// points, the one that looks best; -1 if there is none. Better ones there are where deeper analyses have
// taken from the best move's value.
int32_t promising_move(const BookGraph& graph, const BookNode& node, int32_t margin);

// The move after the best one: the best other move to an analysed node, if it gives away at most `margin`
// points; -1 if there is none.
int32_t second_best_move(const BookGraph& graph, const BookNode& node, int32_t margin);
