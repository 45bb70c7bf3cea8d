#include "eval/regions.h"

#include <gtest/gtest.h>

#include "tests/eval/random_positions.h"

namespace {

constexpr int REGION_SQUARES[4][12] = {{1, 2, 3, 6, 7, 8, 11, 12, 13, 16, 17, 18},
                                       {3, 4, 5, 8, 9, 10, 13, 14, 15, 18, 19, 20},
                                       {16, 17, 18, 21, 22, 23, 26, 27, 28, 31, 32, 33},
                                       {12, 13, 14, 17, 18, 19, 22, 23, 24, 27, 28, 29}};

// Asked once: the question is slow on a virtual machine.
const bool WITH_INSTRUCTION = have_bmi2();

// Square by square from the lowest.
uint32_t slow_extract(uint64_t set, uint64_t region) {
    uint32_t extract = 0;
    for (int i = 0; i < 12; ++i) {
        if (set & lowest_set(region)) extract |= 1u << i;
        region &= region - 1;
    }
    return extract;
}

template <uint64_t REGION>
void expect_extracts(uint64_t set) {
    const uint32_t expected = slow_extract(set, REGION);
    ASSERT_EQ(extract_by_shifts<REGION>(set), expected) << std::hex << REGION << " of " << set;
    if (WITH_INSTRUCTION) {
        ASSERT_EQ(extract_by_instruction<REGION>(set), expected) << std::hex << REGION << " of " << set;
    }
}

void expect_all_extracts(uint64_t set) {
    expect_extracts<FORWARD_REGIONS[0]>(set);
    expect_extracts<FORWARD_REGIONS[1]>(set);
    expect_extracts<FORWARD_REGIONS[2]>(set);
    expect_extracts<FORWARD_REGIONS[3]>(set);
    expect_extracts<TURNED_REGIONS[0]>(set);
    expect_extracts<TURNED_REGIONS[1]>(set);
    expect_extracts<TURNED_REGIONS[2]>(set);
    expect_extracts<TURNED_REGIONS[3]>(set);
}

}  // namespace

TEST(Regions, AreTheListedSquares) {
    uint64_t all = 0;
    for (size_t table = 0; table < 4; ++table) {
        uint64_t forward = 0;
        uint64_t twin = 0;
        for (const int square : REGION_SQUARES[table]) {
            forward |= mask_of_square[static_cast<size_t>(square - 1)];
            twin |= mask_of_square[static_cast<size_t>(51 - square - 1)];
        }
        EXPECT_EQ(FORWARD_REGIONS[table], forward);
        EXPECT_EQ(TURNED_REGIONS[table], twin);
        all |= forward | twin;
    }
    EXPECT_EQ(all, BOARD_MASK);
}

TEST(Regions, ExtractsOfSingleSquaresAndFullSets) {
    for (int bit = 0; bit < 64; ++bit) expect_all_extracts(uint64_t{1} << bit);
    expect_all_extracts(0);
    expect_all_extracts(BOARD_MASK);
    expect_all_extracts(~uint64_t{0});
}

TEST(Regions, ExtractsOfRandomSets) {
    Random random(1);
    for (int i = 0; i < 1000000; ++i) expect_all_extracts(random());
}
