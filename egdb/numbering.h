// How the space of positions is cut into Slices and numbered: the binding order of the values in the database
// files.
//
// A Slice holds all positions of one material with one side to move; only the canonical form of a position
// has a place in it. Inside a Slice a position gets its number from five sets that are numbered one after the
// other, each among the squares that the sets before it left free: black men on the first five squares, the
// other black men, white men from the far end, black kings, white kings. The white kings vary fastest, then
// the black kings; of the men it is the black ones on the first five squares, then the other black men, then
// the white men. Men are grouped by the number of black men on the first five squares, most of them first.
//
// A Slice of more than 2^31 positions is cut into Subslices of that size.
//
// All functions here are re-entrant, allocate nothing and cannot fail. They assume that no man stands on his
// promotion row and that each side has at most EGDB_MAX_SIDE pieces; of anything else the number means
// nothing.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "core/board.h"

constexpr int EGDB_MAX_SIDE = 5;
constexpr int EGDB_MAX_PIECES = 9;
constexpr int EGDB_SLOTS = 2592;
constexpr int64_t SUBSLICE_POSITIONS = int64_t{1} << 31;

// What stands on the board: black men, black kings, white men, white kings, each 0 to 5.
struct Material {
    int32_t bm = 0;
    int32_t bk = 0;
    int32_t wm = 0;
    int32_t wk = 0;

    bool operator==(const Material&) const = default;
};

constexpr int black_count(const Material& m) { return m.bm + m.bk; }
constexpr int white_count(const Material& m) { return m.wm + m.wk; }
constexpr int piece_count(const Material& m) { return black_count(m) + white_count(m); }
constexpr Material colours_exchanged(const Material& m) { return {m.wm, m.wk, m.bm, m.bk}; }
Material material_of(const Position& position);

// binom[n][k] for k up to 8; 0 for k above n.
using BinomTable = std::array<std::array<uint32_t, 9>, 51>;
constexpr BinomTable binom = [] {
    BinomTable table{};
    for (int n = 0; n <= 50; ++n) {
        for (int k = 0; k <= std::min(n, 8); ++k) {
            int64_t value = 1;
            for (int i = n - k + 1; i <= n; ++i) value *= i;
            for (int i = k; i >= 2; --i) value /= i;
            table[static_cast<size_t>(n)][static_cast<size_t>(k)] = static_cast<uint32_t>(value);
        }
    }
    return table;
}();

// `binom` by plain numbers.
constexpr uint32_t choose(int n, int k) { return binom[static_cast<size_t>(n)][static_cast<size_t>(k)]; }

// The first number of the men with k black men on the first five squares, by black men, white men and k.
using MenBaseTable = std::array<std::array<std::array<int64_t, 6>, 6>, 6>;
constexpr MenBaseTable men_base = [] {
    MenBaseTable table{};
    for (int bm = 0; bm <= EGDB_MAX_SIDE; ++bm) {
        for (int wm = 0; wm <= EGDB_MAX_SIDE; ++wm) {
            int64_t sum = 0;
            for (int k = std::min(bm, 5); k >= 0; --k) {
                table[static_cast<size_t>(bm)][static_cast<size_t>(wm)][static_cast<size_t>(k)] = sum;
                sum += int64_t{choose(45 - (bm - k), wm)} * choose(40, bm - k) * choose(5, k);
            }
        }
    }
    return table;
}();

// The number of a Slice, 0 to EGDB_SLOTS - 1.
constexpr int egdb_slot(const Material& m, int side) {
    return 2 * (m.wk + 6 * (m.wm + 6 * (m.bk + 6 * m.bm))) + side;
}

// The material of a slot.
constexpr Material material_of_slot(int slot) {
    const int m = slot / 2;
    return {m / 216, m / 36 % 6, m / 6 % 6, m % 6};
}

// Positions in a Slice.
constexpr int64_t slice_size(const Material& m) {
    int64_t men = 0;
    for (int k = 0; k <= std::min(m.bm, 5); ++k)
        men += int64_t{choose(45 - m.bm + k, m.wm)} * choose(40, m.bm - k) * choose(5, k);
    return men * choose(50 - m.bm - m.wm, m.bk) * choose(50 - m.bm - m.bk - m.wm, m.wk);
}

// How many Subslices that many positions make.
constexpr int32_t subslices_for(int64_t positions) {
    return static_cast<int32_t>(
        std::max<int64_t>(1, (positions + SUBSLICE_POSITIONS - 1) / SUBSLICE_POSITIONS));
}
constexpr int32_t subslice_count(const Material& m) { return subslices_for(slice_size(m)); }

// The material has the same pieces on both sides, so that all its positions are canonical as black to move.
constexpr bool is_symmetric(const Material& m) { return m.bm == m.wm && m.bk == m.wk; }

// The canonical form is that of the mirrored position: black has more pieces, or as many with more kings, or,
// where the sides are alike, is to move.
constexpr bool needs_mirror(const Material& m, int side) {
    if (black_count(m) != white_count(m)) return black_count(m) < white_count(m);
    if (m.bk != m.wk) return m.wk > m.bk;
    return side == WHITE;
}

// The board turned by half a circle with the colours exchanged, of a set and of a position. The side to move
// of the result is the other one.
uint64_t mirror_set(uint64_t set);
Position mirror_position(const Position& position);

// A position as the databases know it.
struct CanonicalPosition {
    Position position;
    Material material;
    int side = BLACK;
};
CanonicalPosition canonical_position(const Position& position, int side);

// The three factors of a position's number: that of the men, of the black kings among the squares that the
// men leave free, and of the white kings among the rest.
int64_t men_number(const Position& position, const Material& m);
uint32_t black_kings_number(const Position& position);
uint32_t white_kings_number(const Position& position);

// The number of a canonical position inside its Slice. The material is its own, told by the caller.
int64_t position_to_index(const Position& position, const Material& m);
