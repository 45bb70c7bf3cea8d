#include "search/root_search.h"

#include "search/node_search.h"
#include "search/score.h"
#include "search/search_state.h"

namespace {

void order_root_moves(const Position& root, const MoveList& list, int32_t best_index, uint8_t* order) {
    int32_t scores[MAX_MOVES];
    const uint64_t before = pieces_of(root, root.side);
    for (int i = 0; i < list.count; ++i) {
        const MoveSquares squares = move_squares(before, pieces_of(list[i], root.side));
        scores[i] =
            i == best_index ? FIRST_MOVE_SCORE : ordering_score(squares, thread_records[0].killers[0]);
    }
    sort_by_score(order, list.count, scores);
}

}  // namespace

Position make_root(const Position& position, int side) {
    Position root = position_after(move_to(position), side);
    // A line that ends in another position belongs to another game.
    const Position* const game = search_state.game_line;
    if (game && game->side == side && same_pieces(*game, position)) {
        root.previous = game->previous;
        root.reversible_plies = game->reversible_plies;
    }
    return root;
}

int32_t root_search(const Position& root, const MoveList& list, int32_t alpha, int32_t beta,
                    int32_t& best_index) {
    const bool captures = has_capture(root, root.side);
    const int depth = search_state.iteration.load(std::memory_order_relaxed) * PLY_DEPTH;
    uint8_t order[MAX_MOVES];
    order_root_moves(root, list, best_index, order);
    if (root.side == WHITE) {
        const int32_t black_alpha = alpha;
        alpha = -beta;
        beta = -black_alpha;
    }
    int32_t best = -MATE_SCORE;
    int rank = 0;
    for (int i = 0; i < list.count && best < beta; ++i) {
        Position child;
        make_child(root, child, list[order[i]], captures);
        const int r = reduction(child, depth, i, true, captures);
        int32_t ignored = -1;
        ThreadRecord& thread = thread_records[0];
        int32_t value = -node_search(child, 1, depth - r - PLY_DEPTH, -beta, -alpha, true, ignored, thread);
        if (r != 0 && value > alpha)
            value = -node_search(child, 1, depth - PLY_DEPTH, -beta, -alpha, true, ignored, thread);
        if (stop_requested()) return SEARCH_CUT_OFF;
        if (value > best) {
            best = value;
            best_index = order[i];
            rank = i;
        }
        if (best > alpha) alpha = best;
    }
    if (best >= beta && list.count > 1)
        reward_cutoff(root, list, order, rank, captures, thread_records[0].killers[0]);
    return root.side == WHITE ? -best : best;
}
