// The end of the tree. Captures are compulsory, so they are followed without standing pat; a quiet position
// is evaluated, unless the opponent threatens something, which gets one more full ply, or the side to move
// could start an exchange or a sacrifice, which is followed through.
#include "eval/evaluation.h"
#include "search/database.h"
#include "search/node_search.h"
#include "search/score.h"
#include "search/search_state.h"

namespace {

constexpr int MIN_SACRIFICE_PIECES = 12;
constexpr int32_t SACRIFICE_MARGIN = 40;
constexpr int MIN_THREAT_DEPTH = -7;

int32_t node_evaluation(const Position& position, NodeSummary& summary) {
    return evaluate(position, position.side, summary);
}

// The database's score, from blocks in memory only.
int32_t database_score(const Position& position, NodeSummary& summary) {
    return egdb_score(position, position.side, ask_database(position, true), summary);
}

int32_t search_all_captures(const Position& position, int ply, int32_t alpha, int32_t beta,
                            ThreadRecord& thread) {
    MoveList list;
    generate_captures(position, list, position.side);
    int32_t best = -MATE_SCORE;
    for (const Move& move : list) {
        Position child;
        make_child(position, child, move, true);
        const int32_t value = -capture_search(child, ply + 1, -beta, -alpha, child.side, thread);
        if (value > best) best = value;
        if (best >= beta) break;
        if (best > alpha) alpha = best;
    }
    return best;
}

// The exchanges and sacrifices that the side to move can start, against the evaluation as it stands.
int32_t search_sacrifices(const Position& position, int ply, int32_t alpha, int32_t beta,
                          NodeSummary& summary, ThreadRecord& thread) {
    int32_t best = node_evaluation(position, summary);
    bool searched = false;
    if (best < beta && best > alpha - SACRIFICE_MARGIN) {
        MoveList list;
        generate_noncaptures(position, list, position.side);
        for (const Move& move : list) {
            Position child;
            make_child(position, child, move, false);
            if (!has_capture(child, child.side)) continue;
            searched = true;
            const int32_t value = -capture_search(child, ply + 1, -beta, -alpha, child.side, thread);
            if (value <= best) continue;
            best = value;
            if (best >= beta) return best;
            if (best > alpha) alpha = best;
        }
    }
    if (!searched) count_leaf(thread, ply);
    return best;
}

}  // namespace

int32_t quiescence(const Position& position, int ply, int depth, int32_t alpha, int32_t beta,
                   ThreadRecord& thread) {
    add_to(thread.nodes, 1);
    const int side = position.side;
    if (!pieces_of(position, side)) {
        count_leaf(thread, ply);
        return ply - MATE_SCORE;
    }
    NodeSummary summary;
    summarize(position, summary);
    if (ply > MAX_PLY) {
        count_leaf(thread, ply);
        return node_evaluation(position, summary);
    }
    if (has_capture(position, side)) {
        add_to(thread.nodes, 1);
        return search_all_captures(position, ply, alpha, beta, thread);
    }
    const bool eligible = egdb_covers(summary);
    if (!has_capture(position, side ^ 1)) {
        if (!position.king && summary.total >= MIN_SACRIFICE_PIECES && !eligible)
            return search_sacrifices(position, ply, alpha, beta, summary, thread);
        count_leaf(thread, ply);
        return eligible ? database_score(position, summary) : node_evaluation(position, summary);
    }
    if (eligible && egdb_direct_ok(summary)) {
        count_leaf(thread, ply);
        return database_score(position, summary);
    }
    if (depth < MIN_THREAT_DEPTH) {
        count_leaf(thread, ply);
        return node_evaluation(position, summary);
    }
    int32_t ignored = -1;
    return node_search(position, ply, PLY_DEPTH, alpha, beta, false, ignored, thread);
}

int32_t capture_search(const Position& position, int ply, int32_t alpha, int32_t beta, int side,
                       ThreadRecord& thread) {
    add_to(thread.nodes, 1);
    if (!pieces_of(position, side)) {
        count_leaf(thread, ply);
        return ply - MATE_SCORE;
    }
    if (search_state.highest_ply.load(std::memory_order_relaxed) < ply)
        search_state.highest_ply.store(ply, std::memory_order_relaxed);
    NodeSummary summary;
    summarize(position, summary);
    if (ply > MAX_PLY) {
        count_leaf(thread, ply);
        return node_evaluation(position, summary);
    }
    if (has_capture(position, side)) return search_all_captures(position, ply, alpha, beta, thread);
    count_leaf(thread, ply);
    return egdb_probe_ok(position, side, summary) ? database_score(position, summary)
                                                  : node_evaluation(position, summary);
}
