#include "tools/egdb_mtc_solver.h"

#include <algorithm>
#include <memory>
#include <new>

#include "core/movegen.h"
#include "egdb/position_walk.h"
#include "tools/egdb_back_moves.h"
#include "tools/parallel_chunks.h"

namespace {

constexpr int64_t CHUNK = 1 << 14;

// A distance that is still to be found, as against NO_DISTANCE. No position keeps it.
constexpr uint8_t OPEN = 254;
static_assert(OPEN > LONGEST_DISTANCE && OPEN < NO_DISTANCE);

using Distances = std::unique_ptr<std::atomic<uint8_t>[]>;

struct Work {
    Material material;
    const SolvedSet& set;
    const SolvedMaterial& solved;  // of the set
    int64_t size;
    int tables;  // 1 where both sides are alike
    std::array<Distances, 2> distances;
};

// Where a position of the material stands in the tables.
struct Place {
    int side;
    int64_t index;
};
Place place_of(const Material& m, const Position& position, int side) {
    const CanonicalPosition canonical = canonical_position(position, side);
    return {canonical.side, position_to_index(canonical.position, m)};
}

std::atomic<uint8_t>& entry(const Work& work, const Place& place) {
    return work.distances[static_cast<size_t>(place.side)][static_cast<size_t>(place.index)];
}

EgdbValue value_at(const Work& work, const Place& place) {
    return packed_value(work.solved.values[static_cast<size_t>(place.side)], place.index);
}

// `side` moved a king and took nothing.
bool is_king_move(const Position& before, const Move& after, int side) {
    return (pieces_of(before, side) & ~before.king) == (pieces_of(after, side) & ~after.king);
}

EgdbValue value_after(const SolvedSet& set, const Move& move, int side) {
    return solved_value(set, position_after(move, side ^ 1), side ^ 1);
}

// What the side to move, which has that value, has without taking king moves any further: 0 or 1, OPEN where
// these decide, or NO_DISTANCE.
uint8_t first_distance(const SolvedSet& set, const Position& position, int side, EgdbValue value) {
    if (value == EGDB_DRAW) return NO_DISTANCE;
    if (has_capture(position, side)) return 1;
    MoveList list;
    if (generate_noncaptures(position, list, side) == 0) return 0;
    bool king_moves = false;
    for (const Move& move : list) {
        if (is_king_move(position, move, side))
            king_moves = true;
        else if (value == EGDB_WIN && value_after(set, move, side) == EGDB_LOSS)
            return 1;
    }
    return value == EGDB_WIN || king_moves ? OPEN : 1;
}

// The loser has no king move that lasts longer than `known`, and does not have to capture.
bool all_known(const Work& work, const Position& position, int side, int known) {
    if (has_capture(position, side)) return false;
    MoveList list;
    generate_noncaptures(position, list, side);
    for (const Move& move : list) {
        if (!is_king_move(position, move, side)) continue;
        const Place place = place_of(work.material, position_after(move, side ^ 1), side ^ 1);
        if (entry(work, place).load(std::memory_order_relaxed) > known) return false;
    }
    return true;
}

// Gives the positions before this one, which has the distance `known`, the next distance where they are due.
// They wait at OPEN for it and get it once, so that no order of the threads matters: what is set in this pass
// is above `known`.
void tell_before(Work& work, const Place& place, int known) {
    Position position = position_from_index(place.index, work.material);
    // Where both sides are alike all positions are kept with black to move, those before this one as well.
    if (work.tables == 1) position = mirror_position(position);
    const int mover = work.tables == 1 ? BLACK : place.side ^ 1;
    const bool mover_wins = value_at(work, place) == EGDB_LOSS;
    const Numbers numbers(position, work.material);
    king_moves_back(position, mover, [&](const Position& before) {
        const Place to{mover, numbers.after_king_move(before, mover)};
        std::atomic<uint8_t>& open = entry(work, to);
        if (open.load(std::memory_order_relaxed) != OPEN) return;
        if (value_at(work, to) != (mover_wins ? EGDB_WIN : EGDB_LOSS)) return;
        if (mover_wins || all_known(work, before, mover, known))
            open.store(static_cast<uint8_t>(known + 1), std::memory_order_relaxed);
    });
}

void begin_chunk(Work& work, int64_t first, int64_t last) {
    PositionWalk walk(work.material, first);
    for (int64_t i = first; i < last; ++i) {
        for (int side = 0; side < work.tables; ++side)
            entry(work, {side, i})
                .store(first_distance(work.set, walk.position, side, value_at(work, {side, i})),
                       std::memory_order_relaxed);
        if (i + 1 < last) walk.advance();
    }
}

// True if any position of the chunk has that distance.
bool spread_chunk(Work& work, int64_t first, int64_t last, int distance) {
    bool found = false;
    for (int64_t i = first; i < last; ++i) {
        for (int side = 0; side < work.tables; ++side) {
            if (entry(work, {side, i}).load(std::memory_order_relaxed) != distance) continue;
            found = true;
            tell_before(work, {side, i}, distance);
        }
    }
    return found;
}

int find_distances(Work& work, const SolveControl& control) {
    const auto stopped = [&] { return control.stop && control.stop->load(std::memory_order_relaxed); };
    for_chunks(work.size, CHUNK, control.threads, [&](int64_t first, int64_t last) {
        if (stopped()) return;
        begin_chunk(work, first, last);
        if (control.positions)
            control.positions->fetch_add((last - first) * work.tables, std::memory_order_relaxed);
    });
    std::atomic<bool> found = true;
    // Positions with distance 0 may lead to some with 1 that nothing else leads to.
    for (int distance = 0; (found || distance < 2) && !stopped(); ++distance) {
        if (distance > LONGEST_DISTANCE) return 3;
        found = false;
        for_chunks(work.size, CHUNK, control.threads, [&](int64_t first, int64_t last) {
            if (!stopped() && spread_chunk(work, first, last, distance))
                found.store(true, std::memory_order_relaxed);
        });
    }
    return stopped() ? 1 : 0;
}

}  // namespace

int solve_distances(const Material& m, const SolvedSet& set, const SolveControl& control,
                    SolvedDistances& solved) {
    try {
        Work work{m, set, *find_solved(set, m), slice_size(m), is_symmetric(m) ? 1 : 2, {}};
        for (int side = 0; side < work.tables; ++side)
            work.distances[static_cast<size_t>(side)] =
                std::make_unique<std::atomic<uint8_t>[]>(static_cast<size_t>(work.size));
        const int status = find_distances(work, control);
        if (status != 0) return status;
        solved.material = m;
        for (size_t side = 0; side < 2; ++side) {
            std::vector<uint8_t>& distances = solved.distances[side];
            distances.assign(work.distances[side] ? static_cast<size_t>(work.size) : 0, 0);
            for (size_t i = 0; i < distances.size(); ++i)
                distances[i] = work.distances[side][i].load(std::memory_order_relaxed);
        }
        return 0;
    } catch (const std::bad_alloc&) {
        return 2;
    }
}

int distance_of(const SolvedDistances& solved, const Position& position, int side) {
    const Place place = place_of(solved.material, position, side);
    return solved.distances[static_cast<size_t>(place.side)][static_cast<size_t>(place.index)];
}

int distance_by_moves(const SolvedSet& set, const SolvedDistances& solved, const Position& position,
                      int side) {
    const EgdbValue value = solved_value(set, position, side);
    if (value == EGDB_DRAW) return NO_DISTANCE;
    const bool captures = has_capture(position, side);
    MoveList list;
    generate_moves(position, list, side);
    int best = value == EGDB_WIN ? NO_DISTANCE : 0;
    for (const Move& move : list) {
        if (value == EGDB_WIN && value_after(set, move, side) != EGDB_LOSS) continue;
        const bool converts = captures || !is_king_move(position, move, side);
        const int distance = converts ? 1 : 1 + distance_of(solved, position_after(move, side ^ 1), side ^ 1);
        best = value == EGDB_WIN ? std::min(best, distance) : std::max(best, distance);
    }
    return best;
}
