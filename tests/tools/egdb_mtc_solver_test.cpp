#include "tools/egdb_mtc_solver.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "core/movegen.h"
#include "egdb/position_walk.h"
#include "tests/tools/egdb_fixture.h"

namespace {

SolvedDistances distances_of(const Material& m, int threads = 2) {
    SolvedDistances solved;
    EXPECT_EQ(
        solve_distances(m, solved_up_to(piece_count(m)), SolveControl{threads, nullptr, nullptr}, solved), 0);
    return solved;
}

// Where all distances are told and each follows from those one move on, there is only one set of them.
void check_by_moves(const Material& m) {
    const SolvedSet& set = solved_up_to(piece_count(m));
    const SolvedDistances solved = distances_of(m);
    for_positions(m, [&](const Position& position, int side, int64_t i) {
        const int distance = solved.distances[static_cast<size_t>(side)][static_cast<size_t>(i)];
        ASSERT_EQ(distance == NO_DISTANCE, solved_value(set, position, side) == EGDB_DRAW);
        ASSERT_EQ(distance, distance_by_moves(set, solved, position, side))
            << m.bm << m.bk << m.wm << m.wk << " " << side << " " << i;
    });
}

TEST(EgdbMtcSolver, DistancesOfUpToThreePiecesFollowFromTheirMoves) {
    for (int n = 2; n <= 3; ++n)
        for (const Material& m : solving_order(n)) check_by_moves(m);
}

// By going over all positions, one distance after the other, until nothing is found any more.
std::array<std::vector<int>, 2> distances_slowly(const SolvedSet& set, const Material& m) {
    const auto size = static_cast<size_t>(slice_size(m));
    constexpr int NOT_FOUND = 1000;
    std::array<std::vector<int>, 2> all{std::vector<int>(size, NOT_FOUND), std::vector<int>(size, NOT_FOUND)};
    for (int distance = 0;; ++distance) {
        bool found = false;
        for (int side = 0; side < 2; ++side) {
            PositionWalk walk(m, 0);
            for (size_t i = 0; i < size; ++i) {
                int& here = all[static_cast<size_t>(side)][i];
                const Position& p = walk.position;
                const EgdbValue value = solved_value(set, p, side);
                MoveList list;
                generate_moves(p, list, side);
                int shortest = NOT_FOUND, longest = 0;
                for (const Move& move : list) {
                    const Position child = position_after(move, 1 - side);
                    const bool man_moved =
                        (pieces_of(p, side) & ~p.king) != (pieces_of(child, side) & ~child.king);
                    const bool converts = man_moved || has_capture(p, side);
                    const int next = converts ? 0
                                              : all[1 - static_cast<size_t>(side)]
                                                   [static_cast<size_t>(position_to_index(child, m))];
                    if (solved_value(set, child, 1 - side) == EGDB_LOSS)
                        shortest = std::min(shortest, 1 + next);
                    longest = std::max(longest, 1 + next);
                }
                const int due = value == EGDB_WIN ? shortest : value == EGDB_LOSS ? longest : NOT_FOUND;
                if (here == NOT_FOUND && due == distance) {
                    here = distance;
                    found = true;
                }
                if (i + 1 < size) walk.advance();
            }
        }
        if (!found && distance > 1) break;
    }
    for (auto& side : all) std::replace(side.begin(), side.end(), NOT_FOUND, NO_DISTANCE);
    return all;
}

TEST(EgdbMtcSolver, AsASlowSolverFindsThem) {
    for (const Material& m : {Material{0, 1, 0, 1}, {1, 0, 0, 1}, {0, 2, 0, 1}}) {
        const Material canonical = needs_mirror(m, BLACK) ? colours_exchanged(m) : m;
        const SolvedDistances solved = distances_of(canonical);
        const auto slow = distances_slowly(solved_up_to(piece_count(m)), canonical);
        int longest = 0;
        for (size_t side = 0; side < (is_symmetric(m) ? 1u : 2u); ++side) {
            for (size_t i = 0; i < slow[side].size(); ++i) {
                ASSERT_EQ(solved.distances[side][i], slow[side][i]) << side << " " << i;
                if (slow[side][i] != NO_DISTANCE) longest = std::max(longest, slow[side][i]);
            }
        }
        EXPECT_GT(longest, 1);
    }
}

TEST(EgdbMtcSolver, TheNumberOfThreadsDoesNotMatter) {
    const Material m{0, 2, 0, 1};
    const SolvedDistances one = distances_of(m, 1);
    for (const int threads : {2, 5}) EXPECT_EQ(distances_of(m, threads).distances, one.distances);
}

TEST(EgdbMtcSolver, WithoutKingsEveryMoveConverts) {
    const Material m{2, 0, 1, 0};
    const SolvedDistances solved = distances_of(m);
    for (const auto& side : solved.distances)
        EXPECT_TRUE(std::all_of(side.begin(), side.end(),
                                [](uint8_t d) { return d == 0 || d == 1 || d == NO_DISTANCE; }));
}

TEST(EgdbMtcSolver, StopsWhenTold) {
    const std::atomic<bool> stop = true;
    SolvedDistances solved;
    EXPECT_EQ(solve_distances({0, 1, 0, 1}, solved_up_to(2), SolveControl{1, &stop, nullptr}, solved), 1);
    EXPECT_TRUE(solved.distances[0].empty());
}

}  // namespace
