#include "egdb/numbering.h"

#include <bit>

namespace {

constexpr uint64_t FIRST_FIVE = 0x1f;

// Bits below that of the single-bit set.
constexpr uint64_t below(uint64_t bit) { return bit - 1; }

// The number of a set of men among the squares from `first` on.
uint32_t men_set_number(uint64_t men, int first) {
    uint32_t number = 0;
    for (int i = 1; men; ++i, men &= men - 1)
        number += choose(square_of_bit[static_cast<size_t>(lowest_bit(men))] - first, i);
    return number;
}

// Counted from the far end, leaving out the squares that black men have taken.
uint32_t white_men_number(uint64_t white_men, uint64_t black_men) {
    uint32_t number = 0;
    for (int i = 1; white_men; ++i) {
        const int bit = 63 - std::countl_zero(white_men);
        const uint64_t mask = uint64_t{1} << bit;
        white_men ^= mask;
        const int behind = bit_count(black_men & ~below(mask));
        number += choose(49 - square_of_bit[static_cast<size_t>(bit)] - behind, i);
    }
    return number;
}

// The number of a set of kings among the squares that `others` leave free.
uint32_t kings_number(uint64_t kings, uint64_t others) {
    uint32_t number = 0;
    for (int i = 1; kings; ++i, kings &= kings - 1) {
        const int bit = lowest_bit(kings);
        const int taken = bit_count(others & below(uint64_t{1} << bit));
        number += choose(square_of_bit[static_cast<size_t>(bit)] - taken, i);
    }
    return number;
}

}  // namespace

Material material_of(const Position& position) {
    const int black_kings = bit_count(position.black & position.king);
    const int white_kings = bit_count(position.white & position.king);
    return {bit_count(position.black) - black_kings, black_kings, bit_count(position.white) - white_kings,
            white_kings};
}

uint64_t mirror_set(uint64_t set) {
    set = (set >> 1 & 0x5555555555555555) | (set & 0x5555555555555555) << 1;
    set = (set >> 2 & 0x3333333333333333) | (set & 0x3333333333333333) << 2;
    set = (set >> 4 & 0x0f0f0f0f0f0f0f0f) | (set & 0x0f0f0f0f0f0f0f0f) << 4;
    set = (set >> 8 & 0x00ff00ff00ff00ff) | (set & 0x00ff00ff00ff00ff) << 8;
    set = (set >> 16 & 0x0000ffff0000ffff) | (set & 0x0000ffff0000ffff) << 16;
    return (set >> 32 | set << 32) >> (64 - BOARD_BITS);
}

Position mirror_position(const Position& position) {
    Position mirrored{};
    mirrored.black = mirror_set(position.white);
    mirrored.white = mirror_set(position.black);
    mirrored.king = mirror_set(position.king);
    mirrored.side = position.side ^ 1;
    return mirrored;
}

CanonicalPosition canonical_position(const Position& position, int side) {
    const Material material = material_of(position);
    if (!needs_mirror(material, side)) return {position, material, side};
    return {mirror_position(position), colours_exchanged(material), side ^ 1};
}

int64_t men_number(const Position& position, const Material& m) {
    const uint64_t black_men = position.black & ~position.king;
    const uint64_t white_men = position.white & ~position.king;
    const uint64_t low = black_men & FIRST_FIVE;
    const int k = bit_count(low);
    const int64_t low_count = choose(5, k);
    const int64_t high_count = choose(40, m.bm - k);
    const int64_t high_index = men_set_number(black_men & ~FIRST_FIVE, 5);
    return men_base[static_cast<size_t>(m.bm)][static_cast<size_t>(m.wm)][static_cast<size_t>(k)] +
           high_index * low_count + men_set_number(low, 0) +
           high_count * white_men_number(white_men, black_men) * low_count;
}

uint32_t black_kings_number(const Position& position) {
    return kings_number(position.black & position.king, (position.black | position.white) & ~position.king);
}

uint32_t white_kings_number(const Position& position) {
    const uint64_t kings = position.white & position.king;
    return kings_number(kings, (position.black | position.white) & ~kings);
}

int64_t position_to_index(const Position& position, const Material& m) {
    int64_t number = m.bm + m.wm ? men_number(position, m) : 0;
    if (m.bk) number = number * choose(50 - m.bm - m.wm, m.bk) + black_kings_number(position);
    if (m.wk) number = number * choose(50 - m.bm - m.bk - m.wm, m.wk) + white_kings_number(position);
    return number;
}
