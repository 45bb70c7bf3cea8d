#include "core/board.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <random>

#include "base/log.h"
#include "core/board_text.h"
#include "core/movegen.h"
#include "tests/base/scratch_folder.h"
#include "tests/core/slow_generator.h"
#include "tests/core/test_positions.h"

namespace {

// The product without its upper half, from 32-bit halves.
uint64_t slow_product(uint64_t a, uint64_t b) {
    const uint64_t low_a = a & 0xffffffff, high_a = a >> 32, low_b = b & 0xffffffff, high_b = b >> 32;
    const uint64_t cross = (low_a * high_b & 0xffffffff) + (high_a * low_b & 0xffffffff);
    return low_a * low_b + (cross << 32);
}

PositionHash slow_hash(const Position& position, int side) {
    uint64_t state = 0;
    if (side == WHITE) state = 0xd2d84a61;
    const uint64_t sets[3] = {position.black, position.white, position.king};
    for (int i = 0; i < 3; ++i) {
        uint64_t t = state + slow_product(sets[i], 0x1ffffff);
        t = t ^ (t >> 23);
        t = slow_product(t, 17);
        t = t ^ (t >> 6);
        t = slow_product(t, 257);
        t = t ^ (t >> 10);
        t = slow_product(t, 0x4000001);
        state = t ^ (t >> 31);
    }
    return {static_cast<uint32_t>(state & 0xffffffff), static_cast<uint32_t>(state >> 32)};
}

std::string hex(const PositionHash& hash) {
    char text[32];
    std::snprintf(text, sizeof text, "%08x %08x", hash.hash0, hash.hash1);
    return text;
}

std::string key_of(const char* text) {
    const Position position = position_of(text);
    return hex(position_hash(position, position.side));
}

// The move of a list with a text, played.
Position play(const Position& parent, const std::string& text) {
    MoveList list;
    const int captures = generate_captures(parent, list, parent.side);
    if (!captures) generate_noncaptures(parent, list, parent.side);
    const std::vector<std::string> texts = texts_of(parent, list);
    Position child;
    for (int i = 0; i < list.count; ++i)
        if (texts[static_cast<size_t>(i)] == text) {
            make_child(parent, child, list[i], captures > 0);
            return child;
        }
    ADD_FAILURE() << text << " is no move of " << letters_of(parent);
    return child;
}

}  // namespace

TEST(Board, BitsOfSquares) {
    uint64_t all = 0;
    for (int square = 1; square <= SQUARES; ++square) {
        const size_t i = static_cast<size_t>(square - 1);
        const int bit = (square - 1) + (square - 1) / 10;
        EXPECT_EQ(bit_of_square[i], bit);
        EXPECT_EQ(mask_of_square[i], uint64_t{1} << bit);
        EXPECT_EQ(square_of_bit[static_cast<size_t>(bit)], square - 1);
        EXPECT_EQ(set_of_square(square), uint64_t{1} << bit);
        EXPECT_EQ(square_number(uint64_t{1} << bit), square);
        EXPECT_EQ(square_number(uint64_t{1} << bit | BLACK_PROMOTION_ROW), std::min(square, 46))
            << "the lowest";
        all |= mask_of_square[i];
    }
    for (const int none : {INT_MIN, -1, 0, 51, 52, INT_MAX}) EXPECT_EQ(set_of_square(none), 0u) << none;
    EXPECT_EQ(square_number(0), 0);
    EXPECT_EQ(all, BOARD_MASK);
    for (const size_t ghost : {10u, 21u, 32u, 43u}) EXPECT_EQ(square_of_bit[ghost], 0);
}

TEST(Board, FixedSets) {
    EXPECT_EQ(BOARD_MASK, 0x3ff7feffdffbffull);
    uint64_t first_row = 0, last_row = 0, black = 0, white = 0;
    for (int square = 1; square <= 5; ++square) first_row |= set_of_square(square);
    for (int square = 46; square <= 50; ++square) last_row |= set_of_square(square);
    for (int square = 1; square <= 20; ++square) black |= set_of_square(square);
    for (int square = 31; square <= 50; ++square) white |= set_of_square(square);
    EXPECT_EQ(WHITE_PROMOTION_ROW, first_row);
    EXPECT_EQ(BLACK_PROMOTION_ROW, last_row);
    EXPECT_EQ(START_POSITION.black, black);
    EXPECT_EQ(START_POSITION.white, white);
    EXPECT_EQ(START_POSITION.king, 0u);
    EXPECT_EQ(START_POSITION.side, WHITE);
}

TEST(Board, ShiftsAreDiagonalStepsAndEndAtTheEdge) {
    for (int square = 1; square <= SQUARES; ++square) {
        const int x = column_of(square), y = row_of(square);
        const auto target = [](int column, int row) { return set_of_square(square_on(column, row)); };
        EXPECT_EQ(set_of_square(square) << 6 & BOARD_MASK, target(x + 1, y + 1)) << square;
        EXPECT_EQ(set_of_square(square) << 5 & BOARD_MASK, target(x - 1, y + 1)) << square;
        EXPECT_EQ(set_of_square(square) >> 5 & BOARD_MASK, target(x + 1, y - 1)) << square;
        EXPECT_EQ(set_of_square(square) >> 6 & BOARD_MASK, target(x - 1, y - 1)) << square;
    }
}

TEST(Board, DiagonalRays) {
    constexpr int STEPS[4][2] = {{1, 1}, {-1, 1}, {1, -1}, {-1, -1}};
    for (int square = 1; square <= SQUARES; ++square) {
        const DiagonalRays& rays = diagonal_rays[bit_of_square[static_cast<size_t>(square - 1)]];
        for (int d = 0; d < 4; ++d) {
            std::vector<uint64_t> expected;
            int x = column_of(square) + STEPS[d][0], y = row_of(square) + STEPS[d][1];
            for (; square_on(x, y); x += STEPS[d][0], y += STEPS[d][1])
                expected.push_back(set_of_square(square_on(x, y)));
            ASSERT_EQ(rays.counts[d], static_cast<int>(expected.size())) << square << " direction " << d;
            for (size_t i = 0; i < expected.size(); ++i) {
                // The ninth square of a corner's ray stands first in the next direction.
                const uint64_t got = i < 8 ? rays.masks[d][i] : rays.masks[d + 1][0];
                EXPECT_EQ(got, expected[i]) << square << " direction " << d << " step " << i;
            }
        }
    }
    const DiagonalRays& corner = diagonal_rays[bit_of_square[46 - 1]];
    EXPECT_EQ(corner.counts[2], 9);
    EXPECT_EQ(corner.counts[3], 0);
    EXPECT_EQ(corner.masks[3][0], set_of_square(5));
    const DiagonalRays& other_corner = diagonal_rays[bit_of_square[5 - 1]];
    EXPECT_EQ(other_corner.counts[1], 9);
    EXPECT_EQ(other_corner.counts[2], 0);
    EXPECT_EQ(other_corner.masks[2][0], set_of_square(46));
}

TEST(Board, BitCountBothWays) {
    std::mt19937_64 random(5);
    const bool detected = have_popcnt;
    for (int i = 0; i < 20000; ++i) {
        uint64_t word = random();
        for (int thin = i % 4; thin > 0; --thin) word &= random();
        if (i < 64) word = uint64_t{1} << i;
        if (i == 64) word = 0;
        if (i == 65) word = ~uint64_t{0};
        int expected = 0;
        for (int bit = 0; bit < 64; ++bit) expected += static_cast<int>(word >> bit & 1);
        have_popcnt = false;
        EXPECT_EQ(bit_count(word), expected);
        EXPECT_EQ(bit_count_by_table(word), expected);
        have_popcnt = detected;
        EXPECT_EQ(bit_count(word), expected);
        if (detected) {
            EXPECT_EQ(bit_count_by_instruction(word), expected);
        }
    }
    EXPECT_EQ(have_popcnt, detected);
}

TEST(Board, LowestBit) {
    EXPECT_EQ(lowest_bit(0x28), 3);
    EXPECT_EQ(lowest_bit(uint64_t{1} << 63), 63);
    EXPECT_EQ(lowest_set(0x28), 8u);
    EXPECT_EQ(lowest_set(0), 0u);
}

TEST(PositionHash, AgreesWithTheSlowOne) {
    std::mt19937_64 random(6);
    for (int i = 0; i < 20000; ++i) {
        const Position position = random_position(random, {0, 20, 0, 20, 30});
        EXPECT_EQ(position_hash(position, BLACK), slow_hash(position, BLACK));
        EXPECT_EQ(position_hash(position, WHITE), slow_hash(position, WHITE));
        EXPECT_NE(position_hash(position, BLACK), position_hash(position, WHITE));
    }
}

TEST(PositionHash, KnownKeys) {
    EXPECT_EQ(hex(position_hash(START_POSITION, WHITE)), "e917fb23 7bf6b69c");
    EXPECT_EQ(hex(position_hash(START_POSITION, BLACK)), "295c17c8 03ea9116");
    EXPECT_EQ(hex(position_hash(Position{}, BLACK)), "00000000 00000000");
    EXPECT_EQ(hex(position_hash(Position{}, WHITE)), "1531d884 71624067");
    EXPECT_EQ(key_of("W:WK5:BK46"), "3e213226 efbce9d9");
    EXPECT_EQ(key_of("B:WK5:BK46"), "2e470362 8ba89231");
    EXPECT_EQ(key_of("B:WK28,33,40,50:B3,12,K24"), "a3c4f28b 8f0ef056");
}

TEST(MakeChild, CopiesTheMoveAndLinksTheParent) {
    const Position child = play(START_POSITION, "32-28");
    EXPECT_EQ(child.previous, &START_POSITION);
    EXPECT_EQ(child.side, BLACK);
    EXPECT_EQ(child.black, START_POSITION.black);
    EXPECT_EQ(child.white, (START_POSITION.white ^ set_of_square(32)) | set_of_square(28));
    EXPECT_EQ(child.king, 0u);
    EXPECT_EQ(play(child, "19-23").side, WHITE);
}

TEST(MakeChild, OnlyQuietKingMovesCount) {
    Position position = position_of("W:WK28,8:B20,K1");
    for (const int32_t count : {0, 1, 17}) {
        position.reversible_plies = count;
        EXPECT_EQ(play(position, "28-32").reversible_plies, count + 1);
        EXPECT_EQ(play(position, "8-3").reversible_plies, 0);  // a promotion
    }
    const Position after = play(position, "28-32");
    EXPECT_EQ(play(after, "1-6").reversible_plies, 19);
    EXPECT_EQ(play(after, "20-25").reversible_plies, 0);

    Position capture = position_of("W:WK28:B23,K1");
    capture.reversible_plies = 5;
    EXPECT_EQ(play(capture, "28x19").reversible_plies, 0);
    Position black = position_of("B:WK5:BK46,2");
    black.reversible_plies = 5;
    EXPECT_EQ(play(black, "46-41").reversible_plies, 6);
    EXPECT_EQ(play(black, "2-7").reversible_plies, 0);
}

TEST(HasCapture, MenInAllDirections) {
    EXPECT_TRUE(has_capture(position_of("W:W28:B22"), WHITE));
    EXPECT_TRUE(has_capture(position_of("W:W28:B23"), WHITE));
    EXPECT_TRUE(has_capture(position_of("W:W28:B32"), WHITE));
    EXPECT_TRUE(has_capture(position_of("W:W28:B33"), WHITE));
    EXPECT_FALSE(has_capture(position_of("W:W28:B22,17"), WHITE));
    EXPECT_FALSE(has_capture(position_of("W:W28,17:B22"), WHITE));
    EXPECT_FALSE(has_capture(position_of("W:W28:B18"), WHITE));
}

TEST(HasCapture, KingsStopAtPiecesAndEdges) {
    EXPECT_TRUE(has_capture(position_of("W:WK50:B17"), WHITE));
    EXPECT_TRUE(has_capture(position_of("B:W41:BK5"), BLACK));
    EXPECT_FALSE(has_capture(position_of("W:WK5:B46"), WHITE));
    EXPECT_FALSE(has_capture(position_of("W:WK50:B17,11"), WHITE));
    EXPECT_FALSE(has_capture(position_of("W:WK6:B15"), WHITE));  // only a ghost bit between them
    EXPECT_FALSE(has_capture(position_of("W:WK25:B16"), WHITE));
}

// For every ghost bit: a king beside it sees nothing of what stands behind it.
TEST(HasCapture, NoRayCrossesAGhostBit) {
    for (const int ghost : {10, 21, 32, 43}) {
        for (const int step : {-6, -5, 5, 6}) {
            const uint64_t king = uint64_t{1} << (ghost - step);
            for (int distance = 1; distance <= 2; ++distance) {
                const int bit = ghost + distance * step;
                if (bit < 0 || bit >= BOARD_BITS) continue;
                const uint64_t enemy = uint64_t{1} << bit;
                if (!(king & BOARD_MASK) || !(enemy & BOARD_MASK)) continue;
                const Position position{enemy, king, king, WHITE, 0, nullptr};
                MoveList list;
                EXPECT_EQ(has_capture(position, WHITE), !slow_captures(position, WHITE).empty());
                EXPECT_EQ(generate_captures(position, list, WHITE),
                          static_cast<int>(slow_captures(position, WHITE).size()));
                const Position man{king, enemy, 0, BLACK, 0, nullptr};
                generate_noncaptures(man, list, BLACK);
                EXPECT_EQ(list.count, static_cast<int>(slow_quiet_moves(man, BLACK).size()));
            }
        }
    }
}

TEST(IsPromotion, OnlyAManThatBecomesAKing) {
    const Position men = position_of("W:W8,32,K28:B40,1");
    EXPECT_TRUE(is_promotion(men, play(men, "8-3"), WHITE));
    EXPECT_FALSE(is_promotion(men, play(men, "32-27"), WHITE));
    EXPECT_FALSE(is_promotion(men, play(men, "28-5"), WHITE));  // a king on the row
    const Position capture = position_of("W:W12:B8,30");
    EXPECT_TRUE(is_promotion(capture, play(capture, "12x3"), WHITE));
    const Position black = position_of("B:W1:B41");
    EXPECT_TRUE(is_promotion(black, play(black, "41-46"), BLACK));
    EXPECT_FALSE(is_promotion(black, play(black, "41-46"), WHITE));
}

TEST(MoveSquares, FromAndTo) {
    const Position after = play(START_POSITION, "32-28");
    const MoveSquares squares = move_squares(START_POSITION.white, after.white);
    EXPECT_EQ(squares.from, bit_of_square[32 - 1]);
    EXPECT_EQ(squares.to, bit_of_square[28 - 1]);
}

TEST(MoveSquares, ZeroForARoundTrip) {
    const Position position = position_of("W:WK28:B32,33,42,43");
    MoveList list;
    generate_captures(position, list, WHITE);
    int round_trips = 0;
    for (const Move& move : list) {
        if (move.white != position.white) continue;
        ++round_trips;
        const MoveSquares squares = move_squares(position.white, move.white);
        EXPECT_EQ(squares.from, 0);
        EXPECT_EQ(squares.to, 0);
    }
    EXPECT_EQ(round_trips, 1);
}

TEST(LegalSetup, MenOnTheirLastRowAndStrayPieces) {
    EXPECT_TRUE(is_legal_setup(START_POSITION));
    EXPECT_TRUE(is_legal_setup(position_of("W:WK3,48:B1,K46")));
    for (int square = 1; square <= SQUARES; ++square) {
        const uint64_t mask = set_of_square(square);
        EXPECT_EQ(is_legal_setup({0, mask, 0, WHITE, 0, nullptr}), square > 5) << square;
        EXPECT_EQ(is_legal_setup({mask, 0, 0, WHITE, 0, nullptr}), square <= 45) << square;
        EXPECT_TRUE(is_legal_setup({0, mask, mask, WHITE, 0, nullptr})) << square;
        EXPECT_TRUE(is_legal_setup({mask, 0, mask, WHITE, 0, nullptr})) << square;
        EXPECT_FALSE(is_legal_setup({mask, mask, mask, WHITE, 0, nullptr})) << square;
    }
    for (const int bit : {10, 21, 32, 43, 54, 63}) {
        const uint64_t stray = uint64_t{1} << bit;
        EXPECT_FALSE(is_legal_setup({stray, 0, stray, WHITE, 0, nullptr})) << bit;
        EXPECT_FALSE(is_legal_setup({0, stray, stray, WHITE, 0, nullptr})) << bit;
    }
}

TEST(BoardText, GoesToTheLog) {
    const ScratchFolder folder;
    log_path = folder.file("test.log");
    log_board(START_POSITION);
    const std::string text = content_of(log_path);
    log_path.clear();
    EXPECT_EQ(text, "\n\n" + board_diagram(START_POSITION));
    EXPECT_EQ(text.substr(0, 25), "\n\n b b b b b \nb b b b b \n");
    EXPECT_EQ(std::count(text.begin(), text.end(), 'w'), 20);
    EXPECT_EQ(std::count(text.begin(), text.end(), '-'), 10);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 12);
}

TEST(BoardText, Diagram) {
    const Position position = position_of("W:W31,K50:B1,K46,10");
    EXPECT_EQ(board_diagram(position),
              " b - - - - \n- - - - b \n - - - - - \n- - - - - \n - - - - - \n"
              "- - - - - \n w - - - - \n- - - - - \n - - - - - \nB - - - W \n");
}
