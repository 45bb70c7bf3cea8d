#include "tools/egdb_solver.h"

#include <array>
#include <new>
#include <vector>

#include "core/movegen.h"
#include "egdb/position_walk.h"
#include "tools/egdb_back_moves.h"
#include "tools/parallel_chunks.h"

namespace {

constexpr int64_t CHUNK = 1 << 14;  // a multiple of 4: no byte of the result belongs to two chunks
constexpr size_t STACK_LIMIT = 4096;

// The state of a position is a byte: below DECIDED the number of quiet moves that are not yet known to lose,
// else the value in the lowest two bits. PENDING is set until those that lead here have been told.
constexpr uint8_t DECIDED = 0x80;
constexpr uint8_t PENDING = 0x40;
using States = std::unique_ptr<std::atomic<uint8_t>[]>;

struct Work {
    Material material;
    const SolvedSet* set;
    int64_t size = 0;
    int tables = 0;                       // 1 where both sides are alike
    std::array<States, 2> states;         // by side to move
    std::atomic<bool> left_over = false;  // a stack was full: pending positions are left in the tables
};

constexpr uint64_t squares_before_promotion(int side) {
    return side == BLACK ? BLACK_PROMOTION_ROW >> 5 : WHITE_PROMOTION_ROW << 5;
}

// The best of the moves of the list for `side`, by the set.
EgdbValue best_of_moves(const SolvedSet& set, const MoveList& list, int side) {
    EgdbValue best = EGDB_LOSS;
    for (const Move& move : list) {
        const EgdbValue reply = solved_value(set, position_after(move, side ^ 1), side ^ 1);
        if (reply == EGDB_LOSS) return EGDB_WIN;
        if (reply == EGDB_DRAW) best = EGDB_DRAW;
    }
    return best;
}

uint8_t first_state(const Work& work, const Position& position, int side) {
    MoveList list;
    if (has_capture(position, side)) {
        generate_captures(position, list, side);
        const EgdbValue value = best_of_moves(*work.set, list, side);
        return static_cast<uint8_t>(DECIDED | value | (value == EGDB_DRAW ? 0 : PENDING));
    }
    int open = generate_noncaptures(position, list, side);
    const uint64_t men = pieces_of(position, side) & ~position.king;
    if (men & squares_before_promotion(side)) {
        for (const Move& move : list) {
            if (move.king == position.king || bit_count(move.king) == bit_count(position.king)) continue;
            const EgdbValue reply = solved_value(*work.set, position_after(move, side ^ 1), side ^ 1);
            if (reply == EGDB_LOSS) return DECIDED | PENDING | EGDB_WIN;
            if (reply == EGDB_WIN) --open;  // a drawn one stays open for good
        }
    }
    return static_cast<uint8_t>(open ? open : DECIDED | PENDING | EGDB_LOSS);
}

void set_first_states(Work& work, int64_t first, int64_t last) {
    PositionWalk walk(work.material, first);
    for (int64_t i = first; i < last; ++i) {
        for (int side = 0; side < work.tables; ++side)
            work.states[static_cast<size_t>(side)][static_cast<size_t>(i)].store(
                first_state(work, walk.position, side), std::memory_order_relaxed);
        if (i + 1 < last) walk.advance();
    }
}

// What one thread has decided and not yet told on: twice the number, plus the side.
using Stack = std::vector<int64_t>;

// Tells one position that a quiet move leads from it to one that is won or lost for the other side.
void tell(Work& work, Stack& stack, int side, int64_t index, EgdbValue reached) {
    std::atomic<uint8_t>& state = work.states[static_cast<size_t>(side)][static_cast<size_t>(index)];
    uint8_t before = state.load(std::memory_order_relaxed);
    uint8_t after;
    do {
        if (before & DECIDED) return;
        if (reached == EGDB_LOSS)
            after = DECIDED | PENDING | EGDB_WIN;
        else
            after = before == 1 ? DECIDED | PENDING | EGDB_LOSS : static_cast<uint8_t>(before - 1);
    } while (!state.compare_exchange_weak(before, after, std::memory_order_relaxed));
    if (!(after & DECIDED)) return;
    if (stack.size() < STACK_LIMIT)
        stack.push_back(2 * index + side);
    else
        work.left_over.store(true, std::memory_order_relaxed);
}

// Tells all that lead to a decided position, once: who clears the mark does it.
void tell_on(Work& work, Stack& stack, int side, int64_t index) {
    std::atomic<uint8_t>& state = work.states[static_cast<size_t>(side)][static_cast<size_t>(index)];
    const uint8_t before = state.fetch_and(static_cast<uint8_t>(~PENDING), std::memory_order_relaxed);
    if (!(before & PENDING)) return;
    const auto value = static_cast<EgdbValue>(before & 3);
    Position position = position_from_index(index, work.material);
    // Where both sides are alike all positions are kept with black to move, those before this one as well.
    if (work.tables == 1) position = mirror_position(position);
    const int mover = work.tables == 1 ? BLACK : side ^ 1;
    const Numbers numbers(position, work.material);
    king_moves_back(position, mover, [&](const Position& p) {
        tell(work, stack, mover, numbers.after_king_move(p, mover), value);
    });
    man_moves_back(position, mover, [&](const Position& p) {
        tell(work, stack, mover, position_to_index(p, work.material), value);
    });
}

void spread_chunk(Work& work, int64_t first, int64_t last) {
    Stack stack;
    stack.reserve(STACK_LIMIT);
    for (int64_t i = first; i < last; ++i) {
        for (int side = 0; side < work.tables; ++side) {
            const auto& state = work.states[static_cast<size_t>(side)][static_cast<size_t>(i)];
            const uint8_t byte = state.load(std::memory_order_relaxed);
            if (!(byte & DECIDED) || !(byte & PENDING)) continue;
            tell_on(work, stack, side, i);
            while (!stack.empty()) {
                const int64_t item = stack.back();
                stack.pop_back();
                tell_on(work, stack, static_cast<int>(item % 2), item / 2);
            }
        }
    }
}

void pack_chunk(const Work& work, SolvedMaterial& solved, int64_t first, int64_t last) {
    for (int side = 0; side < work.tables; ++side) {
        PackedValues& values = solved.values[static_cast<size_t>(side)];
        for (int64_t i = first; i < last; ++i) {
            const uint8_t state = work.states[static_cast<size_t>(side)][static_cast<size_t>(i)].load(
                std::memory_order_relaxed);
            const uint32_t value = state & DECIDED ? state & 3u : uint32_t{EGDB_DRAW};
            values[static_cast<size_t>(i / 4)] =
                static_cast<uint8_t>(values[static_cast<size_t>(i / 4)] | value << (i % 4 * 2));
        }
    }
}

// Three passes over the tables, the second one as often as stacks overflow. False if it was stopped.
bool solve(Work& work, SolvedMaterial& solved, const SolveControl& control) {
    const auto pass = [&](const auto& chunk_work, bool counted) {
        for_chunks(work.size, CHUNK, control.threads, [&](int64_t first, int64_t last) {
            if (control.stop && control.stop->load(std::memory_order_relaxed)) return;
            chunk_work(first, last);
            if (control.positions && counted)
                control.positions->fetch_add((last - first) * work.tables, std::memory_order_relaxed);
        });
        return !(control.stop && control.stop->load(std::memory_order_relaxed));
    };
    if (!pass([&](int64_t first, int64_t last) { set_first_states(work, first, last); }, true)) return false;
    bool counted = true;
    do {
        work.left_over = false;
        if (!pass([&](int64_t first, int64_t last) { spread_chunk(work, first, last); }, counted))
            return false;
        counted = false;
    } while (work.left_over);
    return pass([&](int64_t first, int64_t last) { pack_chunk(work, solved, first, last); }, false);
}

}  // namespace

int solve_material(const Material& m, SolvedSet& set, const SolveControl& control) {
    try {
        Work work{m, &set, slice_size(m), is_symmetric(m) ? 1 : 2, {}, false};
        auto solved = std::make_unique<SolvedMaterial>();
        solved->material = m;
        for (int side = 0; side < work.tables; ++side) {
            work.states[static_cast<size_t>(side)] =
                std::make_unique<std::atomic<uint8_t>[]>(static_cast<size_t>(work.size));
            solved->values[static_cast<size_t>(side)].resize(static_cast<size_t>((work.size + 3) / 4));
        }
        if (!solve(work, *solved, control)) return 1;
        set.materials[material_number(m)] = std::move(solved);
        return 0;
    } catch (const std::bad_alloc&) {
        return 2;
    }
}

int64_t solving_work(const Material& m) { return 2 * slice_size(m) * (is_symmetric(m) ? 1 : 2); }

int64_t solving_memory(const Material& m) {
    return packed_bytes(m) + slice_size(m) * (is_symmetric(m) ? 1 : 2);
}

EgdbValue value_by_moves(const SolvedSet& set, const Position& position, int side) {
    MoveList list;
    generate_moves(position, list, side);
    return best_of_moves(set, list, side);
}
