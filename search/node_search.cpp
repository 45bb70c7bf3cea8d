// Nearly all nodes see a window of width 1, since the root is searched by bisection. A node runs through
// these stages: early ends, table, database, forward pruning, move generation, the hash move, the other moves
// in order, and what is learned for the table, the history and the killers.
#include "search/node_search.h"

#include <algorithm>
#include <cstdint>

#include "eval/evaluation.h"
#include "search/database.h"
#include "search/score.h"
#include "search/search_state.h"
#include "search/split.h"
#include "search/table.h"

namespace {

constexpr int POLL_NODES = 2000;
constexpr int MIN_REPETITION_PLIES = 4;
constexpr int PV_EXTENSION = 2;
constexpr int MIN_PRUNING_DEPTH = 24;
constexpr int MIN_DEEPENING_DEPTH = 48;
constexpr int DEEPENING_REDUCTION = 32;
constexpr int MIN_REDUCED_DEPTH = 16;
constexpr int FORCED_REPLY_COST = 4;
constexpr int32_t KILLER_BONUS = 120;

// What the stages of one node hand to each other.
struct Node {
    const Position& position;
    ThreadRecord& thread;
    int ply;
    int depth;        // with the extension of a PV node
    int saved_depth;  // without, as it is stored
    int32_t alpha;
    int32_t beta;
    bool pruning_allowed;
    bool eligible = false;  // for the database
    bool pv_node = false;
    bool capture_position = false;
    PositionHash hash{};
    int32_t hash_move = NO_MOVE_INDEX;
    int32_t best = -MATE_SCORE;
    int32_t best_index = -1;
    int32_t upper_limit = MATE_SCORE;
    int best_rank = 0;  // of the best move in search order
    NodeSummary summary;

    Node(const Position& p, ThreadRecord& t, int at_ply, int d, int32_t a, int32_t b, bool pruning)
        : position(p),
          thread(t),
          ply(at_ply),
          depth(d),
          saved_depth(d),
          alpha(a),
          beta(b),
          pruning_allowed(pruning) {}
};

// Thread 0 looks at the clock now and then. True if the time or the nodes are used up; the stop flag is then
// set.
bool out_of_time(const ThreadRecord& thread) {
    SearchState& s = search_state;
    if (thread.number != 0 || ++s.polled_nodes < POLL_NODES) return false;
    s.polled_nodes = 0;
    if (s.iteration.load(std::memory_order_relaxed) < FIRST_STOPPABLE_ITERATION ||
        (search_elapsed() <= s.max_time && thread.nodes.load(std::memory_order_relaxed) < s.node_limit))
        return false;
    s.stop_flag->store(1, std::memory_order_relaxed);
    return true;
}

// The same pieces stood so with the same side to move, in this line or in the game before it. Within a
// stretch of reversible moves men cannot have moved, so the kinds of the pieces need no look.
bool is_repetition(const Position& position) {
    const int plies = position.reversible_plies;
    if (plies < MIN_REPETITION_PLIES) return false;
    const Position* p = position.previous;
    if (p) p = p->previous;
    for (int back = MIN_REPETITION_PLIES; back <= plies && p; back += 2) {
        p = p->previous;
        if (p) p = p->previous;
        if (p && p->black == position.black && p->white == position.white) return true;
    }
    return false;
}

int32_t leaf_evaluation(Node& node) {
    count_leaf(node.thread, node.ply);
    return evaluate(node.position, node.position.side, node.summary);
}

// Takes the move and the mark from the table. True if the entry settles the node, with its value in `best`.
bool table_cutoff(Node& node) {
    TTEntry entry;
    if (!tt_probe(node.hash.hash0, node.hash.hash1, entry)) return false;
    node.hash_move = entry.move_index();
    if (entry.pv_mark()) {
        node.pv_node = true;
        node.depth += PV_EXTENSION;
    }
    if (entry.depth_field() < node.depth + 1) return false;
    const int32_t value = entry.value();
    const BoundType type = entry.type();
    if (type != BOUND_EXACT && !(type == BOUND_LOWER && value >= node.beta) &&
        !(type == BOUND_UPPER && value <= node.alpha))
        return false;
    count_leaf(node.thread, node.ply);
    node.best = value;
    return true;
}

// Asks the database. True if its answer settles the node, with the value in `best`. A win that does not reach
// beta becomes the value to beat, and a loss the limit that moves cannot exceed.
bool database_cutoff(Node& node) {
    const Position& position = node.position;
    const int side = position.side;
    if (!egdb_direct_ok(node.summary) && has_capture(position, side ^ 1)) return false;
    const bool conditional = node.depth <= egdb_engine.lookup_depth * PLY_DEPTH && !node.pv_node;
    const EgdbValue value = ask_database(position, conditional);
    if (value == EGDB_DRAW) {
        // Here, unlike in quiescence, a draw has the sign of the side to move.
        const int32_t score = egdb_score(position, side, value, node.summary);
        node.best = side == BLACK ? score : -score;
    } else if (value == EGDB_WIN) {
        node.best = egdb_score(position, side, value, node.summary);
        if (node.best < node.beta) return false;
    } else if (value == EGDB_LOSS) {
        node.upper_limit = egdb_score(position, side, value, node.summary);
        if (node.upper_limit > node.alpha) return false;
        node.best = node.upper_limit;
    } else {
        return false;
    }
    count_leaf(node.thread, node.ply);
    return true;
}

// A node whose evaluation stands well above beta is searched less deep against a raised beta; if it holds
// there it is believed. True if it does, with the value in `best`.
bool forward_pruned(Node& node) {
    if (node.depth < MIN_PRUNING_DEPTH || !node.pruning_allowed || node.eligible || node.pv_node)
        return false;
    const int margin = node.depth * 7 / 8;
    if (evaluate(node.position, node.position.side, node.summary) <= node.beta + margin / 3) return false;
    int32_t ignored = -1;
    const int32_t raised = node.beta + margin;
    const int32_t value = node_search(node.position, node.ply, node.depth * 40 / 100, raised - 1, raised,
                                      false, ignored, node.thread);
    if (value < raised) return false;
    node.best = (value - margin + 1) & ~1;
    return true;
}

int32_t search_child(const Node& node, const Move& move, int depth) {
    Position child;
    make_child(node.position, child, move, node.capture_position);
    int32_t ignored = -1;
    return -node_search(child, node.ply + 1, depth, -node.beta, -node.alpha, node.pruning_allowed, ignored,
                        node.thread);
}

// Takes a move's value; true on a cut-off.
bool accept_value(Node& node, int32_t value, int32_t index, int rank) {
    if (value > node.best) {
        node.best = value;
        node.best_index = index;
        node.best_rank = rank;
        if (value > node.alpha) node.alpha = value;
    }
    return node.best >= node.beta;
}

// Searches the hash move alone, unreduced. If there is none in a deep node, a shallower search finds one.
// True on a cut-off.
bool search_hash_move(Node& node, const MoveList& list) {
    if (node.hash_move >= list.count || node.hash_move == NO_MOVE_INDEX) {
        node.hash_move = -1;
        if (node.depth >= MIN_DEEPENING_DEPTH)
            node_search(node.position, node.ply, node.depth - DEEPENING_REDUCTION, node.alpha, node.beta,
                        node.pruning_allowed, node.hash_move, node.thread);
    }
    if (node.hash_move < 0) return false;
    node.best_index = node.hash_move;
    const int32_t value = search_child(node, list[node.hash_move], node.depth - PLY_DEPTH);
    return accept_value(node, value, node.hash_move, 0);
}

void order_moves(const Node& node, const MoveList& list, uint8_t* order) {
    int32_t scores[MAX_MOVES];
    const uint64_t before = pieces_of(node.position, node.position.side);
    const KillerMove killer = node.thread.killers[static_cast<size_t>(node.ply)];
    for (int i = 0; i < list.count; ++i)
        scores[i] =
            i == node.hash_move
                ? FIRST_MOVE_SCORE
                : ordering_score(move_squares(before, pieces_of(list[i], node.position.side)), killer);
    sort_by_score(order, list.count, scores);
}

// Offers the moves from number `next` on to other threads. True if they were searched.
bool split_moves(Node& node, const MoveList& list, const uint8_t* order, int next) {
    if (node.depth < MIN_SPLIT_DEPTH || list.count - next < MIN_SPLIT_MOVES ||
        search_state.active_threads.load(std::memory_order_relaxed) < 2 ||
        search_state.stop_flag->load(std::memory_order_relaxed) != 0 || !any_worker(node.thread))
        return false;
    const SplitOffer offer{node.position,
                           list,
                           order,
                           next,
                           node.ply,
                           node.depth,
                           node.pruning_allowed,
                           node.capture_position,
                           node.pv_node,
                           node.alpha,
                           node.beta,
                           node.best,
                           node.best_index,
                           node.thread};
    if (!try_split(offer)) return false;
    while (order[node.best_rank] != node.best_index) ++node.best_rank;
    return true;
}

// The bucket of the next move's position arrives from memory while the present move is searched.
void prefetch_after(const Move& move, int side) {
    tt_prefetch(position_hash(position_after(move, side), side).hash0);
}

// Searches the moves in order, the hash move excepted. False if the thread was stopped.
bool search_moves(Node& node, const MoveList& list, const uint8_t* order) {
    for (int i = node.hash_move < 0 ? 0 : 1; i < list.count; ++i) {
        if (must_leave(node.thread)) return false;
        if (split_moves(node, list, order, i)) break;
        const int32_t index = order[i];
        Position child;
        make_child(node.position, child, list[index], node.capture_position);
        const int r = reduction(child, node.depth, i, node.pv_node, node.capture_position);
        if (i + 1 < list.count) prefetch_after(list[order[i + 1]], child.side);
        int32_t ignored = -1;
        int32_t value = -node_search(child, node.ply + 1, node.depth - r - PLY_DEPTH, -node.beta, -node.alpha,
                                     node.pruning_allowed, ignored, node.thread);
        if (r != 0 && value > node.alpha)
            value = -node_search(child, node.ply + 1, node.depth - PLY_DEPTH, -node.beta, -node.alpha,
                                 node.pruning_allowed, ignored, node.thread);
        if (accept_value(node, value, index, i)) break;
    }
    return true;
}

void store_result(const Node& node, int32_t original_alpha) {
    if (node.saved_depth < 0) return;
    BoundType type = BOUND_EXACT;
    if (node.best <= original_alpha)
        type = BOUND_UPPER;
    else if (node.best >= node.beta)
        type = BOUND_LOWER;
    tt_store(node.hash.hash0, node.hash.hash1, node.best, node.saved_depth + 1, type,
             node.best_index < 0 ? NO_MOVE_INDEX : node.best_index);
}

// The moves of a node that nothing settled before. Returns its value.
int32_t search_node_moves(Node& node, int32_t& best_index_out) {
    const Position& position = node.position;
    MoveList list;
    if (node.capture_position)
        generate_captures(position, list, position.side);
    else
        generate_noncaptures(position, list, position.side);
    if (list.count == 0) {
        count_leaf(node.thread, node.ply);
        return node.ply - MATE_SCORE;
    }
    const int32_t original_alpha = node.alpha;
    uint8_t order[MAX_MOVES];
    bool failed_high = false;
    if (list.count == 1) {
        const int cost = node.pruning_allowed ? FORCED_REPLY_COST : 0;
        node.best = std::max(node.best, search_child(node, list[0], node.depth - cost));
        node.best_index = 0;
    } else {
        if (search_hash_move(node, list)) {
            order[0] = static_cast<uint8_t>(node.hash_move);
        } else {
            if (node.best_index < 0) node.best_index = 0;
            order_moves(node, list, order);
            if (!search_moves(node, list, order)) return 0;
        }
        if (node.best >= node.upper_limit) node.best = node.upper_limit;
        failed_high = node.best >= node.beta;
    }
    if (must_leave(node.thread)) return 0;
    best_index_out = node.best_index;
    store_result(node, original_alpha);
    if (failed_high)
        reward_cutoff(position, list, order, node.best_rank, node.capture_position,
                      node.thread.killers[static_cast<size_t>(node.ply)]);
    return node.best;
}

}  // namespace

int reduction(const Position& child, int depth, int move_number, bool pv_node, bool capture_position) {
    if (depth < MIN_REDUCED_DEPTH || capture_position || move_number == 0) return 0;
    if (pv_node && move_number < 4) return 0;
    if (is_promotion(*child.previous, child, child.side ^ 1)) return 0;
    return pv_node || move_number < 4 ? PLY_DEPTH : 2 * PLY_DEPTH;
}

void sort_by_score(uint8_t* order, int count, const int32_t* scores) {
    // Each move's place is the number of those before it. That takes more comparisons than an insertion sort,
    // but none that the processor could foresee wrongly.
    int32_t keys[MAX_MOVES];
    for (int i = 0; i < count; ++i)
        keys[i] = scores[i] == FIRST_MOVE_SCORE ? INT32_MAX : scores[i] * MAX_MOVES - i;
    for (int i = 0; i < count; ++i) {
        int rank = 0;
        for (int other = 0; other < count; ++other) rank += keys[other] > keys[i];
        order[rank] = static_cast<uint8_t>(i);
    }
}

int32_t ordering_score(MoveSquares squares, KillerMove killer) {
    const int32_t score = history_entry(squares).load(std::memory_order_relaxed) - HISTORY_START;
    return squares.from == killer.from && squares.to == killer.to ? score + KILLER_BONUS : score;
}

void reward_cutoff(const Position& position, const MoveList& list, const uint8_t* order, int rank,
                   bool captures, KillerMove& killer) {
    const uint64_t before = pieces_of(position, position.side);
    const auto squares_of = [&](int i) {
        return move_squares(before, pieces_of(list[order[i]], position.side));
    };
    // The raise comes first: captures of different pieces can share an entry.
    const MoveSquares best = squares_of(rank);
    std::atomic<int16_t>& raised = history_entry(best);
    const int r = raised.load(std::memory_order_relaxed);
    raised.store(static_cast<int16_t>(r + (HISTORY_LIMIT - r) / 128), std::memory_order_relaxed);
    for (int i = 0; i < rank; ++i) {
        std::atomic<int16_t>& lowered = history_entry(squares_of(i));
        const int h = lowered.load(std::memory_order_relaxed);
        lowered.store(static_cast<int16_t>(h - h / 128), std::memory_order_relaxed);
    }
    if (!captures) killer = {static_cast<uint8_t>(best.from), static_cast<uint8_t>(best.to)};
}

int32_t node_search(const Position& position, int ply, int depth, int32_t alpha, int32_t beta,
                    bool pruning_allowed, int32_t& best_index_out, ThreadRecord& thread) {
    add_to(thread.nodes, 1);
    if (stop_requested() || out_of_time(thread)) return 0;
    best_index_out = -1;
    if (search_state.highest_ply.load(std::memory_order_relaxed) < ply)
        search_state.highest_ply.store(ply, std::memory_order_relaxed);
    const int side = position.side;
    if (!pieces_of(position, side)) {
        count_leaf(thread, ply);
        return ply - MATE_SCORE;
    }
    if (is_repetition(position)) {
        count_leaf(thread, ply);
        return REPETITION_SCORE;
    }
    if (depth <= 0) return quiescence(position, ply, depth, alpha, beta, thread);

    Node node(position, thread, ply, depth, alpha, beta, pruning_allowed);
    node.hash = position_hash(position, side);
    tt_prefetch(node.hash.hash0);
    summarize(position, node.summary);
    node.eligible = egdb_covers(node.summary);
    if (table_cutoff(node)) return node.best;
    if (ply > MAX_PLY) return leaf_evaluation(node);
    node.capture_position = has_capture(position, side);
    if (!node.capture_position && node.eligible && database_cutoff(node)) return node.best;
    if (forward_pruned(node)) return node.best;
    return search_node_moves(node, best_index_out);
}
