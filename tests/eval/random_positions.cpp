#include "tests/eval/random_positions.h"

#include <array>

namespace {

int below(Random& random, int limit) { return static_cast<int>(random() % static_cast<uint64_t>(limit)); }

uint64_t turned_square_by_square(uint64_t set) {
    uint64_t result = 0;
    for (size_t square = 1; square <= SQUARES; ++square)
        if (set & mask_of_square[square - 1]) result |= mask_of_square[51 - square - 1];
    return result;
}

}  // namespace

Position random_position(Random& random, const PositionKind& kind) {
    Position position;
    const int pieces = 1 + below(random, kind.most_pieces);
    const int black_percentage = below(random, 101);
    for (int piece = 0; piece < pieces; ++piece) {
        const int square = below(random, SQUARES);
        const uint64_t mask = mask_of_square[static_cast<size_t>(square)];
        if ((position.black | position.white) & mask) continue;
        const bool is_black = below(random, 100) < black_percentage;
        const bool on_promotion_row = is_black ? square >= 45 : square < 5;
        (is_black ? position.black : position.white) |= mask;
        if (on_promotion_row || below(random, 100) < kind.king_percentage) position.king |= mask;
    }
    position.side = below(random, 2);
    return position;
}

Position random_position(Random& random) {
    constexpr std::array<PositionKind, 7> KINDS{
        {{60, 0}, {25, 5}, {8, 50}, {12, 30}, {10, 100}, {40, 60}, {400, 1}}};
    return random_position(random, KINDS[static_cast<size_t>(below(random, KINDS.size()))]);
}

Position turned_and_swapped(const Position& position) {
    Position result;
    result.black = turned_square_by_square(position.white);
    result.white = turned_square_by_square(position.black);
    result.king = turned_square_by_square(position.king);
    result.side = position.side ^ 1;
    return result;
}
