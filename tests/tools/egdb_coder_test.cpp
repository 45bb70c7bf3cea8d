#include "tools/egdb_coder.h"

#include <gtest/gtest.h>

#include "egdb/catalogues.h"
#include "tests/tools/egdb_fixture.h"
#include "tests/tools/egdb_sequences.h"
#include "tools/egdb_blocks.h"

namespace {

TEST(EgdbCoder, RunsOfPlanes) {
    Random random(1);
    for (int round = 0; round < 200; ++round) {
        const std::vector<int> sequence = random_sequence(random, 1 + random() % 3000);
        const ValuePlanes planes = planes_of_sequence(sequence);
        for (int value = 0; value < 4; ++value) {
            for (size_t at = random() % 7; at < sequence.size() + 100; at += 1 + random() % 40) {
                size_t end = at;
                while (end < sequence.size() && (sequence[end] < 0 || sequence[end] == value)) ++end;
                const int64_t expected =
                    end >= sequence.size() ? LONGEST_RUN : static_cast<int64_t>(end - at);
                ASSERT_EQ(run_length(planes, value, static_cast<int64_t>(at)), expected);
            }
        }
    }
}

TEST(EgdbCoder, TheQuickWayTakesTheLongestRowThatFits) {
    Random random(2);
    for (int c = 0; c < FIRST_FOUR_SYMBOL_CATALOGUE; ++c) {
        const std::vector<CodeRow> rows = catalogue_rows(c);
        const CodeTree tree = code_tree(rows);
        const std::vector<int> sequence = random_sequence(random, 500);
        const ValuePlanes planes = planes_of_sequence(sequence);
        const SymbolValues values{2, 3, 1, 0};
        for (size_t at = 0; at < sequence.size(); at += 7) {
            int64_t longest = 0, used = 0;
            for (const CodeRow& row : rows)
                if (row_fits(sequence, row, values, at)) longest = std::max(longest, row_length(row));
            const auto start = static_cast<int64_t>(at);
            ASSERT_EQ(code_quickly(planes, tree, values, start, 1, used), start + longest) << c << " " << at;
            ASSERT_EQ(used, 1);
        }
    }
}

TEST(EgdbCoder, TheCarefulWayFitsAndIsNoWorse) {
    Random random(3);
    int better = 0;
    for (int round = 0; round < 60; ++round) {
        const int c = static_cast<int>(random() % CATALOGUES);
        const std::vector<CodeRow> rows = catalogue_rows(c);
        const CodeTree tree = code_tree(rows);
        const std::vector<int> sequence = random_sequence(random, 3000);
        const ValuePlanes planes = planes_of_sequence(sequence);
        const SymbolValues values{1, 2, 3, 0};
        for (const int64_t bytes : {int64_t{1}, int64_t{20}, int64_t{100000}}) {
            std::vector<int32_t> coded;
            int64_t used = 0;
            const auto size = static_cast<int64_t>(sequence.size());
            const int64_t quick = code_quickly(planes, tree, values, 0, bytes, used);
            const int64_t end = code_well(planes, tree, values, 0, bytes, coded);
            size_t at = 0;
            for (const int32_t row : coded) {
                ASSERT_LT(at, sequence.size());
                ASSERT_TRUE(row_fits(sequence, rows[static_cast<size_t>(row)], values, at));
                at += static_cast<size_t>(row_length(rows[static_cast<size_t>(row)]));
            }
            ASSERT_EQ(static_cast<int64_t>(at), end);
            ASSERT_LE(static_cast<int64_t>(coded.size()), bytes);
            if (end < size) {
                ASSERT_EQ(static_cast<int64_t>(coded.size()), bytes);
            }
            ASSERT_GE(std::min(end, size), std::min(quick, size));
            ASSERT_LE(static_cast<int64_t>(coded.size()), used);
            better += static_cast<int64_t>(coded.size()) < used;
        }
    }
    EXPECT_GT(better, 0);
}

TEST(EgdbCoder, SaysWhenNoRowFits) {
    const std::vector<CodeRow> rows{{{0, 2}}, {{1, 1}}};
    const CodeTree tree = code_tree(rows);
    const ValuePlanes planes = planes_of_sequence({1, 1, 1, 2, 1});
    std::vector<int32_t> coded;
    int64_t used = 0;
    EXPECT_EQ(code_quickly(planes, tree, {1, 2, 3, 0}, 0, 9, used), -1);
    EXPECT_EQ(code_well(planes, tree, {1, 2, 3, 0}, 0, 9, coded), -1);
    EXPECT_EQ(code_quickly(planes, code_tree({}), {1, 2, 3, 0}, 0, 9, used), -1);
}

TEST(EgdbCoder, ValueMapsOfBlocks) {
    EXPECT_EQ(vmap_byte({0, 1, 2, 3}), 228);
    EXPECT_EQ(vmap_values[vmap_byte({2, 0, 3, 1})], (VmapRow{2, 0, 3, 1}));
}

TEST(EgdbCoder, PositionsThatAreLeftOut) {
    Position position{};
    position.black = mask_of_square[27];
    position.white = mask_of_square[32] | mask_of_square[48];
    ASSERT_TRUE(has_capture(position, BLACK) || has_capture(position, WHITE));
    for (const int side : {BLACK, WHITE}) {
        EXPECT_EQ(is_left_out(position, {1, 0, 2, 0}, side), has_capture(position, side));
        EXPECT_TRUE(
            is_left_out(position, {4, 0, 3, 0}, side));  // with seven pieces either side's captures count
    }
}

TEST(EgdbCoder, PlanesOfASlice) {
    const Material m{1, 0, 1, 0};
    const SolvedMaterial& solved = *find_solved(solved_up_to(2), m);
    const ValuePlanes one = planes_of(solved, BLACK, 0, slice_size(m), 1);
    const ValuePlanes two = planes_of(solved, BLACK, 0, slice_size(m), 3);
    EXPECT_EQ(one.unfit, two.unfit);
    EXPECT_EQ(one.counts, two.counts);
    EXPECT_EQ(one.counts[1] + one.counts[2] + one.counts[3] + one.free_positions, slice_size(m));
    EXPECT_EQ(one.counts[0], 0);
    EXPECT_GT(one.free_positions, 0);
    const ValuePlanes part = planes_of(solved, BLACK, 700, 333, 1);
    for (int64_t i = 0; i < 333; ++i)
        for (size_t v = 0; v < 4; ++v)
            ASSERT_EQ(part.unfit[v][static_cast<size_t>(i >> 6)] >> (i & 63) & 1,
                      one.unfit[v][static_cast<size_t>((700 + i) >> 6)] >> ((700 + i) & 63) & 1);
}

// Nor one in which nothing is looked up.
TEST(EgdbCoder, ASubsliceOfOneValueHasNoBlocks) {
    const Coders coders = make_coders();
    EgdbFilePair pair;
    const std::vector<int> sequences[] = {{1, 1, -1}, {-1, 2}, {3}, {-1, -1, -1, -1}};
    int subslice = 0;
    for (const std::vector<int>& sequence : sequences)
        append_subslice(pair, coders, planes_of_sequence(sequence), {2, 1, 1, 0}, subslice++, WHITE, 1);
    EXPECT_EQ(pair.index, "BASE2,1,1,0,0,w:+\nBASE2,1,1,0,1,w:-\nBASE2,1,1,0,2,w:=\nBASE2,1,1,0,3,w:.\n");
    EXPECT_TRUE(pair.data.empty());
    EXPECT_EQ(pair.single_subslices, 4);
    EXPECT_EQ(pair.coded_subslices, 0);
    EXPECT_EQ(pair.positions, 10);
    EXPECT_EQ(pair.free_positions, 6);
}

}  // namespace
