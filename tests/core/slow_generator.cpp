#include "tests/core/slow_generator.h"

#include <algorithm>
#include <array>

namespace {

constexpr int STEPS[4][2] = {{-1, -1}, {1, -1}, {-1, 1}, {1, 1}};
constexpr int FORWARD[2] = {1, -1};  // the row step of a man, by side

struct Place {
    int x, y;
    bool operator==(const Place&) const = default;
};

struct Piece {
    int side = -1;  // -1 where no piece stands
    bool king = false;
};

struct Grid {
    std::array<std::array<Piece, 10>, 10> cells;

    Piece& at(Place p) { return cells[static_cast<size_t>(p.y)][static_cast<size_t>(p.x)]; }
    const Piece& at(Place p) const { return cells[static_cast<size_t>(p.y)][static_cast<size_t>(p.x)]; }
};

bool on_board(Place p) { return p.x >= 0 && p.x < 10 && p.y >= 0 && p.y < 10; }
bool is_empty(const Grid& grid, Place p) { return on_board(p) && grid.at(p).side < 0; }
Place place_of(int square) { return {column_of(square), row_of(square)}; }
int number_of(Place p) { return square_on(p.x, p.y); }
uint64_t bit_for(int square) { return uint64_t{1} << ((square - 1) + (square - 1) / 10); }

Grid grid_of(const Position& position) {
    Grid grid;
    for (int square = 1; square <= 50; ++square) {
        Piece& piece = grid.at(place_of(square));
        if (position.black & bit_for(square)) piece.side = BLACK;
        if (position.white & bit_for(square)) piece.side = WHITE;
        piece.king = (position.king & bit_for(square)) != 0;
    }
    return grid;
}

Move move_of(const Grid& grid) {
    Move move{0, 0, 0};
    for (int square = 1; square <= 50; ++square) {
        const Piece& piece = grid.at(place_of(square));
        if (piece.side == BLACK) move.black |= bit_for(square);
        if (piece.side == WHITE) move.white |= bit_for(square);
        if (piece.side >= 0 && piece.king) move.king |= bit_for(square);
    }
    return move;
}

// The grid with a piece put on another square, as a king if it is a man that ends on the last row.
Move moved(Grid grid, Place from, Place to, const std::vector<int>& taken) {
    Piece piece = grid.at(from);
    grid.at(from) = Piece{};
    for (const int square : taken) grid.at(place_of(square)) = Piece{};
    if (to.y == (piece.side == BLACK ? 9 : 0)) piece.king = true;
    grid.at(to) = piece;
    return move_of(grid);
}

// One piece on its way: `grid` is the board without it and with all taken pieces still standing.
struct Walk {
    const Grid* start;
    Grid grid;
    Piece piece;
    Place from;
    std::vector<int> landings;
    std::vector<int> taken;
    std::vector<SlowMove>* out;
};

bool can_take(const Walk& walk, Place p) {
    if (!on_board(p) || walk.grid.at(p).side != (walk.piece.side ^ 1)) return false;
    return std::find(walk.taken.begin(), walk.taken.end(), number_of(p)) == walk.taken.end();
}

void continue_capture(Walk& walk, Place at, int dx, int dy);

// Jumps over `enemy` in the direction; a king tries all squares behind it.
void jump_over(Walk& walk, Place enemy, int dx, int dy) {
    Place landing{enemy.x + dx, enemy.y + dy};
    if (!can_take(walk, enemy) || !is_empty(walk.grid, landing)) return;
    walk.taken.push_back(number_of(enemy));
    do {
        walk.landings.push_back(number_of(landing));
        walk.out->push_back({number_of(walk.from), walk.landings, walk.taken,
                             moved(*walk.start, walk.from, landing, walk.taken)});
        continue_capture(walk, landing, dx, dy);
        walk.landings.pop_back();
        landing = {landing.x + dx, landing.y + dy};
    } while (walk.piece.king && is_empty(walk.grid, landing));
    walk.taken.pop_back();
}

// All jumps from `at`, which the piece reached in the direction (0, 0 at its start).
void continue_capture(Walk& walk, Place at, int came_dx, int came_dy) {
    for (const auto& [dx, dy] : STEPS) {
        Place next{at.x + dx, at.y + dy};
        const bool ahead = dx == came_dx && dy == came_dy;
        if (walk.piece.king && ahead && is_empty(walk.grid, next))
            continue;  // told from the last empty square
        while (walk.piece.king && is_empty(walk.grid, next)) next = {next.x + dx, next.y + dy};
        jump_over(walk, next, dx, dy);
    }
}

}  // namespace

int row_of(int square) { return (square - 1) / 5; }

int column_of(int square) { return (square - 1) % 5 * 2 + (row_of(square) % 2 == 0 ? 1 : 0); }

int square_on(int column, int row) {
    for (int square = 1; square <= 50; ++square)
        if (column_of(square) == column && row_of(square) == row) return square;
    return 0;
}

std::vector<SlowMove> slow_captures(const Position& position, int side) {
    const Grid grid = grid_of(position);
    std::vector<SlowMove> all;
    for (int square = 1; square <= 50; ++square) {
        const Place from = place_of(square);
        if (grid.at(from).side != side) continue;
        Walk walk{&grid, grid, grid.at(from), from, {}, {}, &all};
        walk.grid.at(from) = Piece{};
        continue_capture(walk, from, 0, 0);
    }
    size_t most = 0;
    for (const SlowMove& move : all) most = std::max(most, move.taken.size());
    std::erase_if(all, [most](const SlowMove& move) { return move.taken.size() < most; });
    return all;
}

std::vector<SlowMove> slow_quiet_moves(const Position& position, int side) {
    const Grid grid = grid_of(position);
    std::vector<SlowMove> all;
    for (int square = 1; square <= 50; ++square) {
        const Place from = place_of(square);
        const Piece piece = grid.at(from);
        if (piece.side != side) continue;
        for (const auto& [dx, dy] : STEPS) {
            if (!piece.king && dy != FORWARD[side]) continue;
            Place to{from.x + dx, from.y + dy};
            while (is_empty(grid, to)) {
                all.push_back({square, {number_of(to)}, {}, moved(grid, from, to, {})});
                if (!piece.king) break;
                to = {to.x + dx, to.y + dy};
            }
        }
    }
    return all;
}
