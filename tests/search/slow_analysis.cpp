#include "tests/search/slow_analysis.h"

#include <algorithm>
#include <bit>
#include <cstdlib>

namespace {

Position begin(SlowSearch& slow, const Position& position, std::vector<SlowRootMove>& moves) {
    slow.result = {};
    slow.age();
    for (auto& row : slow.history) row.fill(4096);
    slow.killers.fill({});
    const Position root = position_after(move_to(position), position.side);
    slow.lookup_depth = slow_lookup_depth(slow.database.maxpieces, std::popcount(root.black | root.white));
    MoveList list;
    generate_moves(root, list, root.side);
    for (int i = 0; i < list.count; ++i) moves.push_back({list[i], i, 0, {}});
    return root;
}

int one_move(SlowSearch& slow, const Position& root, const Move& move, int alpha, int beta) {
    MoveList list;
    list.count = 1;
    list[0] = move;
    int index = 0;
    return slow.root(root, list, alpha, beta, index);
}

void sort_moves(std::vector<SlowRootMove>& moves, int side) {
    for (size_t i = 1; i < moves.size(); ++i) {
        for (size_t j = i; j > 0; --j) {
            const int a = moves[j - 1].value, b = moves[j].value;
            if (side == BLACK ? b <= a : b >= a) break;
            std::swap(moves[j - 1], moves[j]);
        }
    }
}

void save_line(SlowSearch& slow, const Position& root, SlowRootMove& move, int length) {
    std::vector<SlowEntry*> entries;
    const std::vector<Move> line = slow.line(root, move.move, std::min(length, 63), entries);
    Position p = position_after(move.move, root.side ^ 1);
    for (size_t i = 0; i < entries.size(); ++i) {
        const PositionHash key = position_hash(p, p.side);
        SlowSaved saved{key, *entries[i]};
        saved.entry.mark = true;
        bool known = false;
        for (SlowSaved& other : move.saved) {
            if (other.key.hash1 != key.hash1 || known) continue;
            other = saved;
            known = true;
        }
        if (!known) move.saved.push_back(saved);
        entries[i]->mark = false;
        if (i < line.size()) p = position_after(line[i], p.side ^ 1);
    }
}

void write_back(SlowSearch& slow, const SlowSaved& saved) {
    SlowEntry* const bucket = &slow.slots[saved.key.hash0 & slow.mask];
    for (int i = 0; i < 3; ++i) {
        if (bucket[i].used && bucket[i].hash1 != saved.key.hash1) continue;
        bucket[i] = saved.entry;
        return;
    }
    *std::min_element(bucket, bucket + 3, [](const SlowEntry& a, const SlowEntry& b) {
        return a.depth_field < b.depth_field;
    }) = saved.entry;
}

// The bisection, as in the slow search of a whole position.
void value_of_move(SlowSearch& slow, const Position& root, SlowRootMove& move, int depth) {
    int lower = -4000, upper = 4000, stride = 1;
    int alpha = move.value - 1, beta = move.value;
    while (lower < upper) {
        if (depth > 8)
            for (const SlowSaved& saved : move.saved) write_back(slow, saved);
        const int r = one_move(slow, root, move.move, alpha, beta);
        const bool low = r < beta;
        if (low)
            move.value = upper = std::max(r, lower);
        else
            move.value = lower = std::min(r, upper);
        stride = std::min(2 * stride, (upper - lower) / 2);
        stride = std::max(2, std::min(std::abs(move.value) / 10, std::min(stride, 128)));
        alpha = low ? upper - stride + 1 : lower + stride - 2;
        beta = low ? upper - stride + 2 : lower + stride - 1;
        if (depth > 7) save_line(slow, root, move, depth + depth / 5);
    }
}

}  // namespace

std::vector<SlowRootMove> slow_all_scores(SlowSearch& slow, const Position& position, int depth_limit,
                                          int step) {
    std::vector<SlowRootMove> moves;
    const Position root = begin(slow, position, moves);
    const bool forced = slow_forced(root, root.side);
    int depth = 1;
    for (;;) {
        slow.iteration = depth;
        slow.result.highest_ply = 0;
        slow.result.leaves = slow.result.leaf_plies = 0;
        for (SlowRootMove& move : moves) value_of_move(slow, root, move, depth);
        sort_moves(moves, root.side);
        slow.result.completed_depth = depth;
        if (depth == depth_limit || (forced && depth > 5)) return moves;
        depth = std::min(depth + step, depth_limit);
    }
}

SlowNearBest slow_near_best(SlowSearch& slow, const Position& position, int msd, int depth_limit) {
    SlowNearBest result;
    std::vector<SlowRootMove>& moves = result.moves;
    const Position root = begin(slow, position, moves);
    const bool black = root.side == BLACK;
    for (int depth = 1;; depth += 2) {
        slow.iteration = depth;
        slow.result.highest_ply = 0;
        slow.result.leaves = slow.result.leaf_plies = 0;
        int used = msd;
        int v = moves[0].value;
        int alpha = v - 5, beta = v + 5;
        for (;;) {
            v = one_move(slow, root, moves[0].move, alpha, beta);
            if (v > alpha && v < beta) break;
            if (v <= alpha) alpha = v - 10;
            if (v >= beta) beta = v + 10;
        }
        moves[0].value = v;
        for (size_t i = 1; i < moves.size(); ++i) {
            if (black) {
                alpha = std::min(v - used - 1, -2);
                beta = v + 5;
            } else {
                beta = std::max(v + used + 1, 2);
                alpha = v - 5;
            }
            int r = one_move(slow, root, moves[i].move, alpha, beta);
            while (black ? r >= beta : r <= alpha) {
                if (black)
                    beta = r + 10;
                else
                    alpha = r - 10;
                r = one_move(slow, root, moves[i].move, alpha, beta);
            }
            moves[i].value = r;
            v = black ? std::max(v, r) : std::min(v, r);
            used = std::max(msd, (black ? v - alpha : beta - v) - 1);
        }
        sort_moves(moves, root.side);
        result.msd = used;
        result.depth = depth;
        result.count = 0;
        for (const SlowRootMove& move : moves) result.count += std::abs(move.value - moves[0].value) <= used;
        if (std::abs(moves[0].value) >= 2000 || depth >= depth_limit - 1) return result;
    }
}
