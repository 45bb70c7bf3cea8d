#include "egdb/resolver.h"

#include <algorithm>

#include "base/log.h"
#include "core/board_text.h"
#include "egdb/value_order.h"

EgdbResolver egdb_resolver;

namespace {

constexpr int MIN_REPETITION_PLIES = 4;

bool repeats_line(const Position& position, int ply) {
    for (int earlier = ply - MIN_REPETITION_PLIES; earlier >= 0; earlier -= 2)
        if (same_pieces(egdb_resolver.line[static_cast<size_t>(earlier)], position)) return true;
    return false;
}

EgdbValue look_up(const Position& position) {
    return egdb_engine.wld->lookup(egdb_engine.wld->handle, position, position.side, false);
}

// True if the files know the value of a position whose side to move has no capture.
bool known_to_files(const Position& position, EgdbValue& value) {
    NodeSummary summary;
    summarize(position, summary);
    if (egdb_direct_ok(summary)) {
        value = look_up(position);
        return true;
    }
    if (has_capture(position, position.side ^ 1)) return false;
    value = look_up(position);
    return value != EGDB_UNKNOWN;
}

// A node of the search; the position is in the line at its ply. Once the nodes are used up every value is
// worth nothing, and all nodes are left at once.
EgdbValue resolve_node(int ply, int depth_limit, EgdbValue alpha, EgdbValue beta) {
    EgdbResolver& r = egdb_resolver;
    const Position& position = r.line[static_cast<size_t>(ply)];
    const int side = position.side;
    if (++r.nodes > r.max_nodes) {
        r.nodes_used_up = true;
        return EGDB_UNKNOWN;
    }
    if (!position.black) return side == WHITE ? EGDB_WIN : EGDB_LOSS;
    if (!position.white) return side == BLACK ? EGDB_WIN : EGDB_LOSS;
    if (repeats_line(position, ply)) return EGDB_DRAW;
    const bool captures = has_capture(position, side);
    EgdbValue value = EGDB_UNKNOWN;
    if (!captures && known_to_files(position, value)) return value;
    r.deepest_ply = std::max(r.deepest_ply, ply);
    if (ply >= depth_limit) return EGDB_UNKNOWN;
    MoveList list;
    if (captures)
        generate_captures(position, list, side);
    else
        generate_noncaptures(position, list, side);
    EgdbValue best = EGDB_LOSS;
    for (const Move& move : list) {
        r.line[static_cast<size_t>(ply + 1)] = position_after(move, side ^ 1);
        value = negated(resolve_node(ply + 1, depth_limit, negated(beta), negated(alpha)));
        if (r.nodes_used_up) return EGDB_UNKNOWN;
        if (cuts(value, beta)) return best_of(value, beta);
        best = best_of(value, best);
        if (better(best, alpha)) alpha = best;
    }
    return best;
}

EgdbValue value_after(const Move& move, int side) {
    return resolve_value(position_after(move, side ^ 1), side ^ 1, RESOLVER_MAX_DEPTH);
}

}  // namespace

EgdbValue resolve_value(const Position& position, int side, int max_depth) {
    EgdbResolver& r = egdb_resolver;
    r.nodes = r.deepest_ply = 0;
    r.nodes_used_up = false;
    r.line[0] = position_after(move_to(position), side);
    EgdbValue value = EGDB_UNKNOWN;
    max_depth = std::min(max_depth, RESOLVER_MAX_DEPTH);
    for (int depth = 1; depth < max_depth && !is_decided(value); ++depth) {
        value = resolve_node(0, depth, EGDB_LOSS, EGDB_WIN);
        if (!r.nodes_used_up) continue;
        log_printf("lookup max node count exceeded (not an error): %s", board_diagram(position).c_str());
        return EGDB_UNKNOWN;
    }
    return value;
}

int egdb_move_check(int side, const Position& position, const MoveList& moves, int chosen, int& better) {
    if (!egdb_engine.wld || bit_count(position.black | position.white) > egdb_engine.maxpieces) return 0;
    egdb_resolver.max_nodes = MOVE_CHECK_NODES;
    const EgdbValue value = resolve_value(position, side, RESOLVER_MAX_DEPTH);
    if (says_nothing(value)) return 0;
    const EgdbValue reached = value_after(moves[chosen], side);
    if (!is_decided(reached)) return 0;
    if (value != EGDB_WIN && value != EGDB_DRAW) return 0;
    const EgdbValue wanted = negated(value);
    if (reached == wanted) return 0;
    for (int i = 0; i < moves.count; ++i) {
        if (value_after(moves[i], side) != wanted) continue;
        better = i;
        return 1;
    }
    return 0;
}
