#include "core/perft.h"

#include <gtest/gtest.h>

#include <set>
#include <tuple>

#include "tests/core/slow_generator.h"
#include "tests/core/test_positions.h"

namespace {

// The same count by the slow generator. Captures that lead to the same position count once from four pieces
// on.
uint64_t slow_perft(const Position& position, int depth) {
    std::vector<SlowMove> moves = slow_captures(position, position.side);
    const bool capture = !moves.empty();
    if (!capture) moves = slow_quiet_moves(position, position.side);
    std::set<std::tuple<uint64_t, uint64_t, uint64_t>> seen;
    uint64_t count = 0;
    for (const SlowMove& move : moves) {
        if (move.taken.size() >= 4 &&
            !seen.insert({move.result.black, move.result.white, move.result.king}).second)
            continue;
        Position child;
        make_child(position, child, move.result, capture);
        count += depth == 1 ? 1 : slow_perft(child, depth - 1);
    }
    return count;
}

}  // namespace

TEST(Perft, Start) {
    constexpr uint64_t EXPECTED[] = {9, 81, 658, 4265, 27117, 167140, 1049442, 6483961, 41022423, 258895763};
    int depth = 0;
    for (const uint64_t expected : EXPECTED)
        EXPECT_EQ(perft(START_POSITION, ++depth), expected) << "depth " << depth;
}

TEST(Perft, BlackHasTheSameFromTheStart) {
    Position position = START_POSITION;
    position.side = BLACK;
    EXPECT_EQ(perft(position, 7), 1049442u);
}

TEST(Perft, AgreesWithTheSlowGenerator) {
    EXPECT_EQ(slow_perft(START_POSITION, 5), 27117u);
    std::mt19937_64 random(11);
    for (int i = 0; i < 40; ++i) {
        const Position position = random_position(random, {2, 6, 2, 6, 40});
        EXPECT_EQ(perft(position, 3), slow_perft(position, 3)) << letters_of(position);
    }
}
