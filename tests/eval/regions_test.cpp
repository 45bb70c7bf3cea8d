#include "eval/regions.h"

#include <gtest/gtest.h>

#include "tests/eval/random_positions.h"

namespace {

constexpr int REGION_SQUARES[4][12] = {{1, 2, 3, 6, 7, 8, 11, 12, 13, 16, 17, 18},
                                       {3, 4, 5, 8, 9, 10, 13, 14, 15, 18, 19, 20},
                                       {16, 17, 18, 21, 22, 23, 26, 27, 28, 31, 32, 33},
                                       {12, 13, 14, 17, 18, 19, 22, 23, 24, 27, 28, 29}};

bool on(uint64_t set, int square) { return (set & set_of_square(square)) != 0; }

// Digit by digit. A square of both colours, which no position has, counts as empty.
RegionPlaces slow_places(uint64_t black, uint64_t white) {
    RegionPlaces places{};
    for (size_t table = 0; table < 4; ++table) {
        for (const int square : REGION_SQUARES[table]) {
            const int forward = 1 + on(black, square) - on(white, square);
            const int turned = 1 + on(white, 51 - square) - on(black, 51 - square);
            places.forward[table] = 3 * places.forward[table] + static_cast<uint32_t>(forward);
            places.turned[table] = 3 * places.turned[table] + static_cast<uint32_t>(turned);
        }
    }
    return places;
}

// Asked once: the question is slow on a virtual machine.
const bool WITH_EXTRACTION = have_bmi2();

void expect_places(uint64_t black, uint64_t white) {
    const RegionPlaces expected = slow_places(black, white);
    ASSERT_TRUE(places_by_rows(black, white) == expected) << std::hex << black << ' ' << white;
    if (WITH_EXTRACTION) {
        ASSERT_TRUE(places_by_extraction(black, white) == expected) << std::hex << black << ' ' << white;
    }
}

}  // namespace

TEST(Regions, AreTheListedSquares) {
    uint64_t all = 0;
    for (size_t table = 0; table < 4; ++table) {
        uint64_t forward = 0;
        uint64_t twin = 0;
        for (const int square : REGION_SQUARES[table]) {
            forward |= set_of_square(square);
            twin |= set_of_square(51 - square);
        }
        EXPECT_EQ(FORWARD_REGIONS[table], forward);
        EXPECT_EQ(TURNED_REGIONS[table], twin);
        all |= forward | twin;
    }
    EXPECT_EQ(all, BOARD_MASK);
}

TEST(Regions, EmptyPlaceIsHalfOfTheTable) {
    build_digit_sums();
    const RegionPlaces empty{{265720, 265720, 265720, 265720}, {265720, 265720, 265720, 265720}};
    EXPECT_EQ(EMPTY_REGION, 265720u);
    EXPECT_TRUE(places_by_rows(0, 0) == empty);
    expect_places(0, 0);
}

TEST(Regions, FullRegionsAreTheEndsOfTheTable) {
    const RegionPlaces black{{531440, 531440, 531440, 531440}, {0, 0, 0, 0}};
    const RegionPlaces white{{0, 0, 0, 0}, {531440, 531440, 531440, 531440}};
    EXPECT_TRUE(places_by_rows(BOARD_MASK, 0) == black);
    EXPECT_TRUE(places_by_rows(0, BOARD_MASK) == white);
}

TEST(Regions, DigitSums) {
    build_digit_sums();
    EXPECT_EQ(forward_sums[0], 0u);
    EXPECT_EQ(reverse_sums[0], 0u);
    EXPECT_EQ(forward_sums[1], 177147u);
    EXPECT_EQ(reverse_sums[1], 1u);
    EXPECT_EQ(forward_sums[0x800], 1u);
    EXPECT_EQ(reverse_sums[0x800], 177147u);
    EXPECT_EQ(forward_sums[0xfff], 265720u);
    EXPECT_EQ(reverse_sums[0xfff], 265720u);
}

TEST(Regions, PlacesOfSingleMenAndFullBoards) {
    build_digit_sums();
    for (int bit = 0; bit < 64; ++bit) {
        expect_places(uint64_t{1} << bit, 0);
        expect_places(0, uint64_t{1} << bit);
    }
    expect_places(BOARD_MASK, 0);
    expect_places(0, BOARD_MASK);
    expect_places(~uint64_t{0}, ~uint64_t{0});
    expect_places(BLACK_START, WHITE_START);
}

// Any bits at all: what is not a square must not count, nor a square of both colours.
TEST(Regions, PlacesOfRandomSets) {
    build_digit_sums();
    Random random(1);
    for (int i = 0; i < 1000000; ++i) {
        const uint64_t black = random();
        const uint64_t white = random();
        expect_places(black, i % 4 == 0 ? white : white & ~black);
        if (i % 2) expect_places(black & random(), white & random() & ~black);
    }
}
