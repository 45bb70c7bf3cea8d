// The fast generators against the slow one, over many random positions.
#include "tests/core/slow_generator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <tuple>
#include <utility>

#include "core/capture_lines.h"
#include "core/movegen.h"
#include "tests/core/test_positions.h"

namespace {

using Key = std::tuple<uint64_t, uint64_t, uint64_t>;
using Path = std::pair<std::vector<int>, std::vector<int>>;  // landing squares and pieces taken

Key key_of(const Move& move) { return {move.black, move.white, move.king}; }

std::vector<Key> keys_of(const MoveList& list) {
    std::vector<Key> keys;
    for (const Move& move : list) keys.push_back(key_of(move));
    std::sort(keys.begin(), keys.end());
    return keys;
}

std::vector<Key> keys_of(const std::vector<SlowMove>& moves) {
    std::vector<Key> keys;
    for (const SlowMove& move : moves) keys.push_back(key_of(move.result));
    std::sort(keys.begin(), keys.end());
    return keys;
}

void drop_doubles(std::vector<Key>& keys) { keys.erase(std::unique(keys.begin(), keys.end()), keys.end()); }

int square_of(uint64_t set) {
    return bit_count(set) == 1 ? square_of_bit[static_cast<size_t>(lowest_bit(set))] + 1 : 0;
}

// What a line tells, checked step by step: nothing changes but the moving piece and the one it takes.
Path path_of(const CaptureLine& line, int side) {
    Path path;
    for (int jump = 0; jump < line.length; ++jump) {
        const Move& before = line.step(jump);
        const Move& after = line.step(jump + 1);
        const uint64_t left = pieces_of(before, side) & ~pieces_of(after, side);
        const uint64_t reached = pieces_of(after, side) & ~pieces_of(before, side);
        const uint64_t taken = captured_at(line, jump, side);
        EXPECT_EQ(bit_count(left), 1);
        EXPECT_EQ(bit_count(taken), 1);
        EXPECT_EQ(pieces_of(after, side ^ 1), pieces_of(before, side ^ 1) & ~taken);
        const bool king = (before.king & left) != 0;
        const bool last = jump + 1 == line.length;
        const uint64_t row = side == BLACK ? BLACK_PROMOTION_ROW : WHITE_PROMOTION_ROW;
        const uint64_t king_reached = king || (last && (reached & row)) ? reached : 0;
        EXPECT_EQ(after.king, (before.king & ~left & ~taken) | king_reached);
        path.first.push_back(square_of(reached));
        path.second.push_back(square_of(taken));
    }
    return path;
}

// Compares all that the core says of one position with the slow generator. Returns the number of captures.
int compare(const Position& position, int side) {
    SCOPED_TRACE(letters_of(position));
    static const auto lines = std::make_unique<CaptureLines>();
    MoveList list;
    const std::vector<SlowMove> captures = slow_captures(position, side);
    EXPECT_EQ(has_capture(position, side), !captures.empty());
    EXPECT_EQ(generate_captures(position, list, side), list.count);
    std::vector<Key> expected = keys_of(captures);
    const size_t jumps = captures.empty() ? 0 : captures[0].taken.size();
    if (jumps >= 4) drop_doubles(expected);
    if (expected.size() > MAX_CAPTURE_MOVES) {
        const std::vector<Key> got = keys_of(list);
        EXPECT_EQ(list.count, MAX_CAPTURE_MOVES);
        EXPECT_TRUE(std::includes(expected.begin(), expected.end(), got.begin(), got.end()));
    } else {
        EXPECT_EQ(keys_of(list), expected);
    }
    if (jumps > MAX_JUMPS) return list.count;

    MoveList list_again;
    EXPECT_EQ(generate_capture_lines(position, list_again, side, *lines), list.count);
    EXPECT_TRUE(std::equal(list.begin(), list.end(), list_again.begin(), list_again.end()));
    std::vector<Path> paths;
    for (const SlowMove& move : captures) paths.emplace_back(move.landings, move.taken);
    std::sort(paths.begin(), paths.end());
    for (int i = 0; i < list_again.count; ++i) {
        const CaptureLine& line = (*lines)[static_cast<size_t>(i)];
        EXPECT_EQ(line.length, jumps);
        EXPECT_EQ(line.steps[0], move_to(position));
        EXPECT_EQ(line.step(line.length), list_again[i]);
        EXPECT_TRUE(std::binary_search(paths.begin(), paths.end(), path_of(line, side))) << "line " << i;
    }
    if (captures.empty()) {
        generate_noncaptures(position, list, side);
        expected = keys_of(slow_quiet_moves(position, side));
        if (expected.size() <= MAX_MOVES) {
            EXPECT_EQ(keys_of(list), expected);
        }
    }
    return list.count;
}

// Compares `count` random positions of a shape and returns how many captures they had.
int64_t compare_random(uint64_t seed, int count, const RandomShape& shape) {
    std::mt19937_64 random(seed);
    int64_t moves = 0;
    for (int i = 0; i < count && !testing::Test::HasFailure(); ++i) {
        const Position position = random_position(random, shape);
        moves += compare(position, position.side);
    }
    return moves;
}

}  // namespace

TEST(SlowGenerator, KnowsTheBoard) {
    EXPECT_EQ(square_on(1, 0), 1);
    EXPECT_EQ(square_on(9, 0), 5);
    EXPECT_EQ(square_on(0, 1), 6);
    EXPECT_EQ(square_on(0, 9), 46);
    EXPECT_EQ(square_on(8, 9), 50);
    EXPECT_EQ(square_on(0, 0), 0);
    for (int square = 1; square <= 50; ++square)
        EXPECT_EQ(square_on(column_of(square), row_of(square)), square);
}

TEST(SlowGenerator, AgreesInGames) {
    std::mt19937_64 random(1);
    for (int game = 0; game < 500 && !HasFailure(); ++game) {
        for (const Position& position : random_game(random, 120)) {
            compare(position, BLACK);
            compare(position, WHITE);
        }
    }
}

TEST(SlowGenerator, AgreesOnMen) { EXPECT_GT(compare_random(2, 60000, {1, 20, 1, 20, 0}), 60000); }

TEST(SlowGenerator, AgreesOnMenWithFewKings) {
    EXPECT_GT(compare_random(3, 60000, {1, 12, 1, 12, 15}), 60000);
}

TEST(SlowGenerator, AgreesOnKings) { EXPECT_GT(compare_random(4, 60000, {1, 6, 1, 10, 80, 70}), 60000); }

TEST(SlowGenerator, AgreesOnLongCaptures) {
    EXPECT_GT(compare_random(5, 30000, {1, 3, 8, 16, 100, 95}), 30000);
    EXPECT_GT(compare_random(6, 30000, {1, 5, 8, 20, 0, 100}), 10000);
}

// Every position of two pieces, and of a king against two enemies: no ray reaches round an edge.
TEST(SlowGenerator, AgreesOnAllSmallPositions) {
    for (size_t a = 0; a < SQUARES && !HasFailure(); ++a) {
        for (size_t b = 0; b < SQUARES; ++b) {
            if (a == b) continue;
            const uint64_t own = mask_of_square[a], enemy = mask_of_square[b];
            compare({enemy, own, own, WHITE, 0, nullptr}, WHITE);
            compare({own, enemy, own, BLACK, 0, nullptr}, BLACK);
            if (!(own & WHITE_PROMOTION_ROW)) compare({enemy, own, enemy, WHITE, 0, nullptr}, WHITE);
            if (!(own & BLACK_PROMOTION_ROW)) compare({own, enemy, enemy, BLACK, 0, nullptr}, BLACK);
            for (size_t c = b + 1; c < SQUARES; ++c)
                if (c != a) compare({enemy | mask_of_square[c], own, own, WHITE, 0, nullptr}, WHITE);
        }
    }
}
