#include "tools/egdb_solver.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

#include "core/movegen.h"
#include "egdb/position_walk.h"
#include "tests/base/scratch_folder.h"
#include "tests/tools/egdb_fixture.h"

namespace {

// Each value against those of the moves.
void check_by_moves(const SolvedSet& set, int pieces) {
    for (const Material& m : solving_order(pieces)) {
        for_positions(m, [&](const Position& position, int side, int64_t i) {
            ASSERT_EQ(packed_value(values_of(set, m, side), i), value_by_rules(set, position, side))
                << m.bm << m.bk << m.wm << m.wk << " " << side << " " << i;
        });
    }
}

// A slow solver: goes over all undecided positions until nothing changes any more.
std::array<std::vector<EgdbValue>, 2> solve_slowly(const SolvedSet& lower, const Material& m) {
    const auto size = static_cast<size_t>(slice_size(m));
    std::array<std::vector<EgdbValue>, 2> values{std::vector<EgdbValue>(size, EGDB_UNKNOWN),
                                                 std::vector<EgdbValue>(size, EGDB_UNKNOWN)};
    const auto value_of = [&](const Move& move, int side) {
        const Position position = position_after(move, side);
        if (!(material_of(position) == m)) return solved_value(lower, position, side);
        return values[static_cast<size_t>(side)][static_cast<size_t>(position_to_index(position, m))];
    };
    for (bool changed = true; changed;) {
        changed = false;
        for (int side = 0; side < 2; ++side) {
            PositionWalk walk(m, 0);
            for (size_t i = 0; i < size; ++i) {
                EgdbValue& value = values[static_cast<size_t>(side)][i];
                if (value == EGDB_UNKNOWN) {
                    MoveList list;
                    generate_moves(walk.position, list, side);
                    bool wins = false, open = false;
                    for (const Move& move : list) {
                        const EgdbValue reply = value_of(move, side ^ 1);
                        wins |= reply == EGDB_LOSS;
                        open |= reply != EGDB_WIN;
                    }
                    if (wins || !open) {
                        value = wins ? EGDB_WIN : EGDB_LOSS;
                        changed = true;
                    }
                }
                if (i + 1 < size) walk.advance();
            }
        }
    }
    for (auto& side : values) std::replace(side.begin(), side.end(), EGDB_UNKNOWN, EGDB_DRAW);
    return values;
}

void check_against_slow_solver(const Material& m) {
    const SolvedSet& set = solved_up_to(piece_count(m));
    const SolvedMaterial& solved = *find_solved(set, m);
    const auto slow = solve_slowly(set, m);
    for (int side = 0; side < (is_symmetric(m) ? 1 : 2); ++side)
        for (int64_t i = 0; i < slice_size(m); ++i)
            ASSERT_EQ(packed_value(solved.values[static_cast<size_t>(side)], i),
                      slow[static_cast<size_t>(side)][static_cast<size_t>(i)])
                << m.bm << m.bk << m.wm << m.wk << " " << side << " " << i;
}

TEST(EgdbSolver, ValuesOfUpToThreePiecesFollowFromTheirMoves) {
    const SolvedSet& set = solved_up_to(3);
    check_by_moves(set, 2);
    check_by_moves(set, 3);
}

TEST(EgdbSolver, TwoPiecesAsASlowSolverFindsThem) {
    for (const Material& m : solving_order(2)) check_against_slow_solver(m);
}

TEST(EgdbSolver, MenAgainstAMan) { check_against_slow_solver({2, 0, 1, 0}); }
TEST(EgdbSolver, AManAndAKingAgainstAMan) { check_against_slow_solver({1, 1, 1, 0}); }
TEST(EgdbSolver, TwoKingsAgainstAMan) { check_against_slow_solver({0, 2, 1, 0}); }
TEST(EgdbSolver, MenAgainstAKing) { check_against_slow_solver({2, 0, 0, 1}); }

// Two kings cannot force a lone king; a side without moves or pieces has lost.
TEST(EgdbSolver, KnownEndings) {
    const SolvedSet& set = solved_up_to(3);
    const auto with = [](std::initializer_list<int> black, std::initializer_list<int> white,
                         std::initializer_list<int> kings) {
        Position position{};
        for (const int s : black) position.black |= set_of_square(s);
        for (const int s : white) position.white |= set_of_square(s);
        for (const int s : kings) position.king |= set_of_square(s);
        return position;
    };
    EXPECT_EQ(solved_value(set, with({1, 2}, {46}, {1, 2, 46}), WHITE), EGDB_DRAW);
    // From its corner the king can only go on the long diagonal, where it is taken.
    EXPECT_EQ(solved_value(set, with({5}, {46}, {5, 46}), BLACK), EGDB_LOSS);
    EXPECT_EQ(solved_value(set, with({37, 41}, {46}, {}), WHITE), EGDB_LOSS);
    EXPECT_EQ(solved_value(set, with({}, {46}, {}), BLACK), EGDB_LOSS);
    EXPECT_EQ(solved_value(set, with({}, {46}, {}), WHITE), EGDB_WIN);
    EXPECT_EQ(solved_value(set, with({3}, {48}, {}), BLACK), solved_value(set, with({3}, {48}, {}), WHITE));
}

TEST(EgdbSolver, TheNumberOfThreadsDoesNotMatter) {
    const SolvedSet& set = solved_up_to(3);
    for (const int threads : {1, 5}) {
        SolvedSet again;
        for (int n = 2; n <= 3; ++n)
            for (const Material& m : solving_order(n))
                ASSERT_EQ(solve_material(m, again, SolveControl{threads, nullptr, nullptr}), 0);
        for (size_t i = 0; i < set.materials.size(); ++i) {
            if (!again.materials[i]) continue;
            EXPECT_EQ(again.materials[i]->values, set.materials[i]->values);
        }
    }
}

TEST(EgdbSolver, WhatAMaterialTurnsIntoComesBefore) {
    std::vector<Material> before;
    for (int n = 2; n <= 6; ++n) {
        for (const Material& m : solving_order(n)) {
            EXPECT_FALSE(needs_mirror(m, BLACK));
            for (const Material& next : next_materials(m))
                EXPECT_NE(std::find(before.begin(), before.end(), next), before.end());
            before.push_back(m);
        }
    }
    EXPECT_EQ(solving_order(2).size(), 3u);
    EXPECT_EQ(solving_order(3).size(), 6u);
    EXPECT_EQ(solving_order(4).size(), 8u + 6);
    EXPECT_EQ(solving_order(6).size(), 37u);
}

TEST(EgdbSolver, StopsWhenTold) {
    SolvedSet set;
    const std::atomic<bool> stop = true;
    EXPECT_EQ(solve_material({0, 1, 0, 1}, set, SolveControl{1, &stop, nullptr}), 1);
    EXPECT_EQ(find_solved(set, {0, 1, 0, 1}), nullptr);
}

TEST(EgdbSolver, CountsWhatItWentOver) {
    SolvedSet set;
    std::atomic<int64_t> done = 0;
    int64_t all = 0;
    for (int n = 2; n <= 3; ++n) {
        for (const Material& m : solving_order(n)) {
            ASSERT_EQ(solve_material(m, set, SolveControl{2, nullptr, &done}), 0);
            all += solving_work(m);
            EXPECT_EQ(done, all);
        }
    }
}

TEST(EgdbSolver, SolvedFilesGoBothWaysAndDamageIsFound) {
    const ScratchFolder folder;
    const std::string path = folder.file("solved");
    for (const Material& m : {Material{0, 2, 0, 1}, {1, 0, 1, 0}}) {
        const SolvedMaterial& solved = *find_solved(solved_up_to(3), m);
        ASSERT_EQ(write_solved(path, solved), 0);
        SolvedMaterial again{};
        ASSERT_EQ(read_solved(path, m, again), 0);
        EXPECT_EQ(again.material, m);
        EXPECT_EQ(again.values, solved.values);
        SolvedMaterial other{};
        EXPECT_EQ(read_solved(path, {1, 1, 1, 0}, other), 1);
        std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
        file.seekg(100);
        const char byte = static_cast<char>(file.get() ^ 1);
        file.seekp(100);
        file.put(byte);
        file.close();
        EXPECT_EQ(read_solved(path, m, other), 1);
        EXPECT_TRUE(other.values[0].empty());
    }
    SolvedMaterial none{};
    EXPECT_EQ(read_solved(folder.file("missing"), {0, 1, 0, 1}, none), 1);
}

}  // namespace
