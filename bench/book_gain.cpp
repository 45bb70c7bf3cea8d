// What a book is worth against a program without one, in points of the evaluation and not in games, of which
// it would take thousands to see it.
//
//   book_gain BOOK WEIGHTS [NODES [DEEP_NODES]]
//
// From the start position and each two-move ballot, for each side: the book plays its best moves, the other
// side what a search of NODES finds, until the book has no answer. Then both sides play as many plies by
// searches of NODES alone. Both ends are searched for DEEP_NODES; the gain is the difference between them,
// from the view of the book's side.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "book/opening_book.h"
#include "core/ballots.h"
#include "core/movegen.h"
#include "eval/weights.h"
#include "search/engine_settings.h"
#include "search/table.h"
#include "tools/book_analysis.h"

namespace {

constexpr int USAGE_STATUS = 2;
constexpr int BALLOT_MOVES = 2;
constexpr int MOST_PLIES = 200;  // kings may go to and fro
constexpr uint64_t SHORTEST_SEARCH = 1;

struct Terms {
    uint64_t nodes = 2000000;
    uint64_t deep_nodes = 20000000;
};

struct Gain {
    int lines = 0;
    int own_moves = 0;
    double sum = 0, squares = 0;
};

bool has_moves(const Position& position) {
    MoveList list;
    return generate_moves(position, list, position.side) > 0;
}

Position after_move(const Position& position, int index) {
    MoveList list;
    generate_moves(position, list, position.side);
    return position_after(list[index], position.side ^ 1);
}

Position after_searched_move(const Position& position, uint64_t nodes) {
    return after_move(position, analyse_book_position({position, nodes}, SHORTEST_SEARCH).best);
}

int32_t value_for(int side, const Position& position, uint64_t nodes) {
    const int32_t value = analyse_book_position({position, nodes}, SHORTEST_SEARCH).value;
    return side == BLACK ? value : -value;
}

void play_line(const Terms& terms, const Position& root, int book_side, Gain& gain) {
    Position with_book = root;
    int plies = 0, own_moves = 0;
    for (; plies < MOST_PLIES && has_moves(with_book); ++plies) {
        if (with_book.side != book_side) {
            with_book = after_searched_move(with_book, terms.nodes);
            continue;
        }
        const int64_t slot = book_probe(opening_book, with_book, book_side);
        if (slot < 0) break;
        with_book = after_move(with_book, book_entry(opening_book, slot).best);
        ++own_moves;
    }
    Position without = root;
    for (int i = 0; i < plies && has_moves(without); ++i) without = after_searched_move(without, terms.nodes);
    if (!has_moves(with_book) || !has_moves(without)) return;
    const double difference =
        value_for(book_side, with_book, terms.deep_nodes) - value_for(book_side, without, terms.deep_nodes);
    ++gain.lines;
    gain.own_moves += own_moves;
    gain.sum += difference;
    gain.squares += difference * difference;
}

void print(const Gain& gain) {
    const double mean = gain.sum / gain.lines;
    const double error = std::sqrt((gain.squares / gain.lines - mean * mean) / gain.lines);
    std::printf("lines %d, moves of the book %.1f on average, gain %.2f +- %.2f\n", gain.lines,
                static_cast<double>(gain.own_moves) / gain.lines, mean, error);
    std::fflush(stdout);
}

}  // namespace

int main(int count, char** arguments) {
    if (count < 3 || count > 5) {
        std::fputs("usage: book_gain BOOK WEIGHTS [NODES [DEEP_NODES]]\n", stderr);
        return USAGE_STATUS;
    }
    Terms terms;
    if (count > 3) terms.nodes = std::strtoull(arguments[3], nullptr, 10);
    if (count > 4) terms.deep_nodes = std::strtoull(arguments[4], nullptr, 10);
    if (load_book_from(arguments[1]) != 0 || load_weights_from(arguments[2]) != 0 || tt_allocate() != 0) {
        std::fputs("book or weights cannot be read\n", stderr);
        return EXIT_FAILURE;
    }
    std::vector<Position> roots = {START_POSITION};
    Ballot ballot{};
    for (int i = 0; find_ballot(BALLOT_MOVES, i, ballot); ++i) roots.push_back(ballot.position);
    Gain gain;
    for (const Position& root : roots) {
        for (const int side : {BLACK, WHITE}) play_line(terms, root, side, gain);
        if (gain.lines > 0) print(gain);
    }
    return EXIT_SUCCESS;
}
