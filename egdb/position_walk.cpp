#include "egdb/position_walk.h"

#include <algorithm>
#include <bit>

namespace {

constexpr uint64_t first_bits(int count) { return (uint64_t{1} << count) - 1; }

// The set of `size` numbered squares that has this number.
uint64_t set_from_number(uint32_t number, int size) {
    uint64_t set = 0;
    int square = 50;
    for (int i = size; i >= 1; --i) {
        while (choose(square, i) > number) --square;
        number -= choose(square, i);
        set |= uint64_t{1} << square;
    }
    return set;
}

// The next larger set of the same size, which must not be empty.
uint64_t next_set(uint64_t set) {
    const uint64_t low = lowest_set(set);
    const uint64_t ripple = set + low;
    return ripple | ((set ^ ripple) >> 2) >> std::countr_zero(low);
}

// The squares of a set that is numbered over a list of squares.
uint64_t squares_of(uint64_t set, const std::array<uint64_t, SQUARES>& squares) {
    uint64_t result = 0;
    for (; set; set &= set - 1) result |= squares[static_cast<size_t>(lowest_bit(set))];
    return result;
}

void list_free_squares(uint64_t taken, std::array<uint64_t, SQUARES>& squares) {
    size_t count = 0;
    for (const uint64_t square : mask_of_square)
        if (!(taken & square)) squares[count++] = square;
}

struct Men {
    uint64_t black;
    uint64_t white;
};

// The squares of the white men: numbered from the far end over what black men leave free.
uint64_t white_men_from_number(uint32_t number, int count, uint64_t black_men) {
    uint64_t set = set_from_number(number, count);
    uint64_t result = 0;
    for (size_t square = SQUARES; set && square-- > 0;) {
        if (black_men & mask_of_square[square]) continue;
        if (set & 1) result |= mask_of_square[square];
        set >>= 1;
    }
    return result;
}

Men men_from_number(int64_t number, const Material& m) {
    const auto& bases = men_base[static_cast<size_t>(m.bm)][static_cast<size_t>(m.wm)];
    int k = std::min(m.bm, 5);
    while (k > 0 && number >= bases[static_cast<size_t>(k - 1)]) --k;
    number -= bases[static_cast<size_t>(k)];
    const int64_t low_count = choose(5, k);
    const int64_t high_count = choose(40, m.bm - k);
    uint64_t black = set_from_number(static_cast<uint32_t>(number % low_count), k);
    number /= low_count;
    for (uint64_t high = set_from_number(static_cast<uint32_t>(number % high_count), m.bm - k); high;
         high &= high - 1)
        black |= mask_of_square[static_cast<size_t>(5 + lowest_bit(high))];
    number /= high_count;
    return {black, white_men_from_number(static_cast<uint32_t>(number), m.wm, black)};
}

}  // namespace

PositionWalk::PositionWalk(const Material& m, int64_t start) : material(m), index(start) {
    const int64_t white_sets = choose(50 - m.bm - m.bk - m.wm, m.wk);
    const int64_t black_sets = choose(50 - m.bm - m.wm, m.bk);
    position.side = BLACK;
    white_kings_ = set_from_number(static_cast<uint32_t>(start % white_sets), m.wk);
    start /= white_sets;
    black_kings_ = set_from_number(static_cast<uint32_t>(start % black_sets), m.bk);
    men_ = start / black_sets;
    place_men();
}

void PositionWalk::place_men() {
    const Men men = men_from_number(men_, material);
    position.black = men.black;
    position.white = men.white;
    position.king = 0;
    if (material.bk || material.wk) list_free_squares(men.black | men.white, free_of_men_);
    place_black_kings();
}

void PositionWalk::place_black_kings() {
    const uint64_t kings = squares_of(black_kings_, free_of_men_);
    position.black = (position.black & ~position.king) | kings;
    position.white &= ~position.king;
    position.king = kings;
    if (material.wk) {
        list_free_squares(position.black | position.white, free_of_both_);
        place_white_kings();
    }
}

void PositionWalk::place_white_kings() {
    const uint64_t kings = squares_of(white_kings_, free_of_both_);
    const uint64_t before = position.white & position.king;
    position.white = (position.white & ~before) | kings;
    position.king = (position.king & ~before) | kings;
}

void PositionWalk::advance() {
    ++index;
    if (material.wk) {
        white_kings_ = next_set(white_kings_);
        if (!(white_kings_ >> (50 - material.bm - material.bk - material.wm))) return place_white_kings();
        white_kings_ = first_bits(material.wk);
    }
    if (material.bk) {
        black_kings_ = next_set(black_kings_);
        if (!(black_kings_ >> (50 - material.bm - material.wm))) return place_black_kings();
        black_kings_ = first_bits(material.bk);
    }
    ++men_;
    place_men();
}

Position position_from_index(int64_t index, const Material& m) { return PositionWalk(m, index).position; }
