#include "tests/egdb/slow_numbering.h"

#include <algorithm>
#include <tuple>

namespace {

using Squares = std::vector<int>;  // zero-based, rising

struct Board {
    Squares low, high;  // black men on the first five squares, and the others
    Squares white_men, black_kings, white_kings;
};

Board board_of(const Position& position) {
    Board board;
    for (int square = 0; square < SQUARES; ++square) {
        const uint64_t mask = mask_of_square[static_cast<size_t>(square)];
        const bool king = (position.king & mask) != 0;
        if (position.black & mask)
            (king ? board.black_kings : square < 5 ? board.low : board.high).push_back(square);
        if (position.white & mask) (king ? board.white_kings : board.white_men).push_back(square);
    }
    return board;
}

int size(const Squares& squares) { return static_cast<int>(squares.size()); }

// The places of squares in the list of those that are left: rising.
Squares places_in(const Squares& squares, const Squares& left) {
    Squares places;
    for (const int square : squares)
        places.push_back(static_cast<int>(std::find(left.begin(), left.end(), square) - left.begin()));
    std::sort(places.begin(), places.end());
    return places;
}

void remove_all(Squares& from, const Squares& squares) {
    for (const int square : squares) from.erase(std::find(from.begin(), from.end(), square));
}

// How many sets of as many places come before this one, when sets are compared by their highest place first.
int64_t number_of(const Squares& places) {
    int64_t number = 0;
    for (int i = 0; i < size(places); ++i) number += slow_choose(places[static_cast<size_t>(i)], i + 1);
    return number;
}

Squares all_squares(int first, int last) {
    Squares squares;
    for (int s = first; s <= last; ++s) squares.push_back(s);
    return squares;
}

// The places of the white men: counted from the far end over the squares that black men leave free.
Squares white_men_places(const Board& board) {
    Squares left = all_squares(0, 49);
    remove_all(left, board.low);
    remove_all(left, board.high);
    std::reverse(left.begin(), left.end());
    return places_in(board.white_men, left);
}

Squares squares_left_by_men(const Board& board) {
    Squares left = all_squares(0, 49);
    remove_all(left, board.low);
    remove_all(left, board.high);
    remove_all(left, board.white_men);
    return left;
}

// What positions are sorted by: the parts from the slowest to the fastest, each part by its highest place.
auto sort_key(const Position& position) {
    const Board board = board_of(position);
    Squares left = squares_left_by_men(board);
    const Squares black_kings = places_in(board.black_kings, left);
    remove_all(left, board.black_kings);
    const Squares white_kings = places_in(board.white_kings, left);
    const auto falling = [](Squares places) {
        std::reverse(places.begin(), places.end());
        return places;
    };
    return std::tuple(-size(board.low), falling(white_men_places(board)), falling(board.high),
                      falling(board.low), falling(black_kings), falling(white_kings));
}

// Places the next of the five kinds of pieces in all ways on the squares after `square`.
void place_all(const Material& m, std::array<int, 4> left, int square, Position& position,
               std::vector<Position>& all) {
    if (square == SQUARES) {
        if (left == std::array<int, 4>{}) all.push_back(position);
        return;
    }
    place_all(m, left, square + 1, position, all);
    const uint64_t mask = mask_of_square[static_cast<size_t>(square)];
    for (size_t kind = 0; kind < 4; ++kind) {
        if (left[kind] == 0 || (kind == 0 && square >= 45) || (kind == 2 && square < 5)) continue;
        const Position before = position;
        (kind < 2 ? position.black : position.white) |= mask;
        if (kind % 2 == 1) position.king |= mask;
        --left[kind];
        place_all(m, left, square + 1, position, all);
        ++left[kind];
        position = before;
    }
}

}  // namespace

int64_t slow_choose(int n, int k) {
    if (k < 0 || k > n) return 0;
    std::vector<int64_t> row{1};
    for (int i = 0; i < n; ++i) {
        row.push_back(0);
        for (size_t j = row.size() - 1; j > 0; --j) row[j] += row[j - 1];
    }
    return row[static_cast<size_t>(k)];
}

int64_t slow_index(const Position& position) {
    const Board board = board_of(position);
    const int bm = size(board.low) + size(board.high), wm = size(board.white_men);
    // The groups with more black men on the first five squares come before.
    int64_t number = 0;
    for (int k = std::min(bm, 5); k > size(board.low); --k)
        number += slow_choose(5, k) * slow_choose(40, bm - k) * slow_choose(45 - (bm - k), wm);
    const int64_t lows = slow_choose(5, size(board.low)), highs = slow_choose(40, size(board.high));
    number += number_of(board.low) + lows * (number_of(places_in(board.high, all_squares(5, 44))) +
                                             highs * number_of(white_men_places(board)));
    Squares left = squares_left_by_men(board);
    number = number * slow_choose(size(left), size(board.black_kings)) +
             number_of(places_in(board.black_kings, left));
    remove_all(left, board.black_kings);
    return number * slow_choose(size(left), size(board.white_kings)) +
           number_of(places_in(board.white_kings, left));
}

std::vector<Position> all_positions(const Material& m) {
    std::vector<Position> all;
    Position position{};
    position.side = BLACK;
    place_all(m, {m.bm, m.bk, m.wm, m.wk}, 0, position, all);
    using Key = decltype(sort_key(position));
    std::vector<std::pair<Key, size_t>> keys;
    for (size_t i = 0; i < all.size(); ++i) keys.emplace_back(sort_key(all[i]), i);
    std::sort(keys.begin(), keys.end());
    std::vector<Position> sorted;
    for (const auto& [key, i] : keys) sorted.push_back(all[i]);
    return sorted;
}

Position random_position_of(Random& random, const Material& m) {
    Position position{};
    position.side = BLACK;
    const auto place = [&](int count, bool black, bool king) {
        while (count > 0) {
            const int square = static_cast<int>(random() % SQUARES);
            const uint64_t mask = mask_of_square[static_cast<size_t>(square)];
            if ((position.black | position.white) & mask) continue;
            if (!king && (black ? square >= 45 : square < 5)) continue;
            (black ? position.black : position.white) |= mask;
            if (king) position.king |= mask;
            --count;
        }
    };
    place(m.bm, true, false);
    place(m.wm, false, false);
    place(m.bk, true, true);
    place(m.wk, false, true);
    return position;
}
