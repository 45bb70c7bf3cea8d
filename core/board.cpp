#include "core/board.h"

namespace {

constexpr BitCountTable make_bit_counts() {
    BitCountTable table{};
    uint32_t word = 0;
    for (uint8_t& count : table) count = static_cast<uint8_t>(std::popcount(word++));
    return table;
}

// The square on column x, row y, or -1 beyond the board. Every other field is playable.
constexpr int square_at(int x, int y) {
    if (x < 0 || x > 9 || y < 0 || y > 9 || (x + y) % 2 == 0) return -1;
    return y * 5 + x / 2;
}

constexpr DiagonalRayTable make_diagonal_rays() {
    constexpr int STEPS[4][2] = {{1, 1}, {-1, 1}, {1, -1}, {-1, -1}};
    DiagonalRayTable table{};
    for (int square = 0; square < SQUARES; ++square) {
        DiagonalRays& rays = table[bit_of_square[static_cast<size_t>(square)]];
        const int row = square / 5;
        const int column = square % 5 * 2 + ((row + 1) & 1);
        for (int d = 0; d < 4; ++d) {
            int x = column + STEPS[d][0], y = row + STEPS[d][1];
            int count = 0;
            for (int s = square_at(x, y); s >= 0; s = square_at(x, y)) {
                const int slot = d * 8 + count;
                rays.masks[slot / 8][slot % 8] = mask_of_square[static_cast<size_t>(s)];
                ++count;
                x += STEPS[d][0];
                y += STEPS[d][1];
            }
            rays.counts[d] = count;
        }
    }
    return table;
}

}  // namespace

constexpr BitCountTable bit_count_table = make_bit_counts();
constexpr DiagonalRayTable diagonal_rays = make_diagonal_rays();

bool is_legal_setup(const Position& position) {
    const uint64_t men = ~position.king;
    return (position.black & men & BLACK_PROMOTION_ROW) == 0 &&
           (position.white & men & WHITE_PROMOTION_ROW) == 0 &&
           ((position.black | position.white) & ~BOARD_MASK) == 0 && (position.black & position.white) == 0;
}
