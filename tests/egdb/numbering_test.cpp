#include "egdb/numbering.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

#include "core/movegen.h"
#include "egdb/position_walk.h"
#include "tests/egdb/slow_numbering.h"

namespace {

bool same(const Position& a, const Position& b) { return same_pieces(a, b); }

Position with(std::initializer_list<int> black, std::initializer_list<int> white,
              std::initializer_list<int> kings) {
    Position position{};
    for (const int s : black) position.black |= set_of_square(s);
    for (const int s : white) position.white |= set_of_square(s);
    for (const int s : kings) position.king |= set_of_square(s);
    return position;
}

// Every material with at most five pieces a side, whether or not it is canonical.
std::vector<Material> every_material() {
    std::vector<Material> all;
    for (int slot = 0; slot < EGDB_SLOTS; slot += 2) {
        const Material m = material_of_slot(slot);
        if (black_count(m) <= EGDB_MAX_SIDE && white_count(m) <= EGDB_MAX_SIDE) all.push_back(m);
    }
    return all;
}

TEST(Numbering, BinomialsAreThoseOfPascalsTriangle) {
    for (int n = 0; n <= 50; ++n)
        for (int k = 0; k <= 8; ++k) EXPECT_EQ(choose(n, k), slow_choose(n, k)) << n << " " << k;
    EXPECT_EQ(choose(50, 8), 536878650u);
    EXPECT_EQ(choose(0, 0), 1u);
    EXPECT_EQ(choose(0, 1), 0u);
    EXPECT_EQ(choose(7, 8), 0u);
}

TEST(Numbering, GroupsWithMoreMenOnTheFirstSquaresComeFirst) {
    EXPECT_EQ(men_base[2][0][2], 0);
    EXPECT_EQ(men_base[2][0][1], 10);  // five over two
    EXPECT_EQ(men_base[2][0][0], 10 + 5 * 40);
    EXPECT_EQ(men_base[0][3][0], 0);
    EXPECT_EQ(men_base[1][1][0], 45 * 5);
    for (size_t bm = 0; bm <= 5; ++bm)
        for (size_t wm = 0; wm <= 5; ++wm)
            for (size_t k = 0; k < bm; ++k) EXPECT_GT(men_base[bm][wm][k], men_base[bm][wm][k + 1]);
}

TEST(Numbering, SlotsAreNumberedByMaterialAndSide) {
    EXPECT_EQ(egdb_slot({0, 0, 0, 0}, BLACK), 0);
    EXPECT_EQ(egdb_slot({0, 0, 0, 1}, WHITE), 3);
    EXPECT_EQ(egdb_slot({1, 2, 3, 4}, BLACK), 2 * (4 + 6 * (3 + 6 * (2 + 6 * 1))));
    EXPECT_EQ(egdb_slot({5, 5, 5, 5}, WHITE), EGDB_SLOTS - 1);
    std::set<int> seen;
    for (int slot = 0; slot < EGDB_SLOTS; ++slot) {
        EXPECT_EQ(egdb_slot(material_of_slot(slot), slot % 2), slot);
        seen.insert(slot);
    }
    EXPECT_EQ(seen.size(), size_t{EGDB_SLOTS});
}

TEST(Numbering, SizesAreThoseOfCounting) {
    EXPECT_EQ(slice_size({5, 0, 4, 0}), 118459258815);
    EXPECT_EQ(subslice_count({5, 0, 4, 0}), 56);
    EXPECT_EQ(slice_size({4, 0, 4, 0}), 15802050675);
    EXPECT_EQ(subslice_count({4, 0, 4, 0}), 8);
    EXPECT_EQ(slice_size({4, 1, 4, 0}), 663686128350);
    EXPECT_EQ(subslice_count({4, 1, 4, 0}), 310);
    EXPECT_EQ(slice_size({0, 1, 0, 1}), 2450);
    EXPECT_EQ(slice_size({1, 0, 0, 0}), 45);
    for (const Material& m : {Material{1, 0, 1, 0}, {2, 0, 1, 0}, {1, 1, 1, 0}, {0, 2, 0, 1}})
        EXPECT_EQ(slice_size(m), static_cast<int64_t>(all_positions(m).size()));
}

TEST(Numbering, ASliceOfJustOneSubsliceIsNotCut) {
    EXPECT_EQ(subslices_for(1), 1);
    EXPECT_EQ(subslices_for(SUBSLICE_POSITIONS - 1), 1);
    EXPECT_EQ(subslices_for(SUBSLICE_POSITIONS), 1);
    EXPECT_EQ(subslices_for(SUBSLICE_POSITIONS + 1), 2);
    EXPECT_EQ(subslices_for(2 * SUBSLICE_POSITIONS), 2);
}

TEST(Numbering, TheMirrorTurnsTheBoardAndExchangesTheColours) {
    const Position mirrored = mirror_position(with({1, 7, 30}, {50, 33}, {30, 50}));
    EXPECT_TRUE(same(mirrored, with({1, 18}, {50, 44, 21}, {21, 1})));
    Random random(1);
    const auto materials = every_material();
    for (int i = 0; i < 2000; ++i) {
        const Position position = random_position_of(random, materials[random() % materials.size()]);
        const Position turned = mirror_position(position);
        EXPECT_TRUE(same(mirror_position(turned), position));
        EXPECT_EQ(material_of(turned), colours_exchanged(material_of(position)));
        for (size_t s = 0; s < SQUARES; ++s) {
            const uint64_t here = mask_of_square[s], there = mask_of_square[SQUARES - 1 - s];
            EXPECT_EQ((position.black & here) != 0, (turned.white & there) != 0);
            EXPECT_EQ((position.white & here) != 0, (turned.black & there) != 0);
            EXPECT_EQ((position.king & here) != 0, (turned.king & there) != 0);
        }
    }
    EXPECT_EQ(mirror_set(~BOARD_MASK & 0x3fffffffffffff), ~BOARD_MASK & 0x3fffffffffffff);
}

TEST(Numbering, TheStrongerSideIsBlack) {
    for (const int side : {BLACK, WHITE}) {
        EXPECT_TRUE(needs_mirror({1, 0, 1, 1}, side));
        EXPECT_FALSE(needs_mirror({1, 1, 0, 1}, side));
        EXPECT_TRUE(needs_mirror({2, 0, 1, 1}, side));   // as many pieces, more white kings
        EXPECT_FALSE(needs_mirror({1, 1, 2, 0}, side));  // as many pieces, more black kings
        EXPECT_FALSE(needs_mirror({3, 0, 0, 2}, side));  // more pieces count before kings
    }
    EXPECT_FALSE(needs_mirror({0, 2, 0, 2}, BLACK));
    EXPECT_TRUE(needs_mirror({0, 2, 0, 2}, WHITE));
}

TEST(Numbering, WhiteToMoveOfAlikeMaterialIsBlackToMove) {
    const Position position = with({3, 10}, {41, 50}, {3, 10, 41, 50});
    const CanonicalPosition canonical = canonical_position(position, WHITE);
    EXPECT_EQ(canonical.side, BLACK);
    EXPECT_EQ(egdb_slot(canonical.material, canonical.side), egdb_slot({0, 2, 0, 2}, BLACK));
    EXPECT_TRUE(same(canonical.position, mirror_position(position)));
}

TEST(Numbering, AMirroredPositionHasTheSamePlace) {
    Random random(2);
    const auto materials = every_material();
    for (int i = 0; i < 5000; ++i) {
        const Position position = random_position_of(random, materials[random() % materials.size()]);
        const int side = static_cast<int>(random() % 2);
        const CanonicalPosition a = canonical_position(position, side);
        const CanonicalPosition b = canonical_position(mirror_position(position), side ^ 1);
        EXPECT_EQ(a.material, material_of(a.position));
        // Where sides are alike both stand for black to move; otherwise one of the two is the canonical one.
        EXPECT_EQ(egdb_slot(a.material, a.side), egdb_slot(b.material, b.side));
        EXPECT_EQ(position_to_index(a.position, a.material), position_to_index(b.position, b.material));
        EXPECT_FALSE(needs_mirror(a.material, a.side));
    }
}

// In words and in numbers: the first and the last positions, and each part by itself.
TEST(Numbering, FirstAndLastPositions) {
    EXPECT_EQ(position_to_index(with({1, 2}, {50}, {}), {2, 0, 1, 0}), 0);
    EXPECT_EQ(position_to_index(with({1, 3}, {50}, {}), {2, 0, 1, 0}), 1);
    EXPECT_EQ(position_to_index(with({4, 5}, {50}, {}), {2, 0, 1, 0}), 9);
    EXPECT_EQ(position_to_index(with({1, 2}, {49}, {}), {2, 0, 1, 0}), 10);
    EXPECT_EQ(position_to_index(with({1, 6}, {50}, {}), {2, 0, 1, 0}), 450);
    EXPECT_EQ(position_to_index(with({2, 6}, {50}, {}), {2, 0, 1, 0}), 451);
    EXPECT_EQ(position_to_index(with({1, 7}, {50}, {}), {2, 0, 1, 0}), 455);
    EXPECT_EQ(position_to_index(with({44, 45}, {6}, {}), {2, 0, 1, 0}), slice_size({2, 0, 1, 0}) - 1);
    EXPECT_EQ(position_to_index(with({1}, {2}, {1, 2}), {0, 1, 0, 1}), 0);
    EXPECT_EQ(position_to_index(with({1}, {50}, {1, 50}), {0, 1, 0, 1}), 48);
    EXPECT_EQ(position_to_index(with({2}, {1}, {1, 2}), {0, 1, 0, 1}), 49);
}

TEST(Numbering, OrderIsThatOfASlowEnumeration) {
    for (const Material& m : {Material{1, 0, 1, 0},
                              {2, 0, 1, 0},
                              {0, 2, 0, 1},
                              {1, 1, 0, 1},
                              {1, 0, 1, 1},
                              {1, 0, 2, 0},
                              {3, 0, 0, 0},
                              {0, 0, 3, 0},
                              {0, 1, 1, 1}}) {
        const std::vector<Position> positions = all_positions(m);
        ASSERT_EQ(static_cast<int64_t>(positions.size()), slice_size(m));
        PositionWalk walk(m, 0);
        for (size_t i = 0; i < positions.size(); ++i) {
            const auto index = static_cast<int64_t>(i);
            ASSERT_EQ(position_to_index(positions[i], m), index);
            ASSERT_TRUE(same(walk.position, positions[i])) << index;
            if (i + 1 < positions.size()) walk.advance();
        }
    }
}

TEST(Numbering, WalksMeetEveryPositionOfLargerMaterialsOnce) {
    for (const Material& m : {Material{2, 0, 2, 0}, {3, 0, 0, 1}, {1, 1, 1, 1}, {0, 2, 0, 2}, {2, 1, 1, 0}}) {
        PositionWalk walk(m, 0);
        for (int64_t i = 0; i < slice_size(m); ++i) {
            ASSERT_EQ(position_to_index(walk.position, m), i);
            ASSERT_EQ(walk.index, i);
            if (i % 1009 == 0) {
                ASSERT_TRUE(same(position_from_index(i, m), walk.position));
            }
            if (i + 1 < slice_size(m)) walk.advance();
        }
    }
}

TEST(Numbering, NumbersOfEveryMaterialGoBothWays) {
    Random random(3);
    for (const Material& m : every_material()) {
        const int64_t size = slice_size(m);
        for (int i = 0; i < 20; ++i) {
            const int64_t index = i == 0   ? 0
                                  : i == 1 ? size - 1
                                           : static_cast<int64_t>(random() % static_cast<uint64_t>(size));
            const Position position = position_from_index(index, m);
            ASSERT_TRUE(is_legal_setup(position));
            ASSERT_EQ(material_of(position), m);
            ASSERT_EQ(position_to_index(position, m), index);
            ASSERT_EQ(slow_index(position), index);
            const Position other = random_position_of(random, m);
            ASSERT_EQ(position_to_index(other, m), slow_index(other));
            ASSERT_TRUE(same(position_from_index(slow_index(other), m), other));
        }
    }
}

TEST(Numbering, PositionsOfRandomGames) {
    Random random(4);
    int checked = 0;
    for (int game = 0; game < 400; ++game) {
        Position position = START_POSITION;
        for (int ply = 0; ply < 300; ++ply) {
            MoveList list;
            if (generate_moves(position, list, position.side) == 0) break;
            position = position_after(list[static_cast<int>(random() % static_cast<uint64_t>(list.count))],
                                      position.side ^ 1);
            const Material m = material_of(position);
            if (black_count(m) > EGDB_MAX_SIDE || white_count(m) > EGDB_MAX_SIDE) continue;
            const CanonicalPosition canonical = canonical_position(position, position.side);
            const int64_t index = position_to_index(canonical.position, canonical.material);
            ASSERT_EQ(index, slow_index(canonical.position));
            ASSERT_LT(index, slice_size(canonical.material));
            ++checked;
        }
    }
    EXPECT_GT(checked, 2000);
}

}  // namespace
