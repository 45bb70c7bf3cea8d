#include "tests/search/slow_search.h"

#include <algorithm>
#include <bit>
#include <set>
#include <tuple>

#include "eval/evaluation.h"

namespace {

int ones(uint64_t set) { return std::popcount(set); }

bool captures_now(const Position& p) { return has_capture(p, p.side); }
bool captures_next(const Position& p) { return has_capture(p, p.side ^ 1); }

int static_value(const Position& p) {
    NodeSummary summary;
    summarize(p, summary);
    return evaluate(p, p.side, summary);
}

Position child_of(const Position& p, const Move& move, bool capture) {
    Position child;
    make_child(p, child, move, capture);
    return child;
}

// Rows are counted from black's side, 1 to 10.
int row_of_bit(int bit) { return square_of_bit[static_cast<size_t>(bit)] / 5 + 1; }

int black_advancement(uint64_t men) {
    int sum = 0;
    for (int bit = 0; bit < BOARD_BITS; ++bit)
        if (men >> bit & 1) sum += 2 * (row_of_bit(bit) - 1);
    return sum;
}
int white_advancement(uint64_t men) {
    int sum = 0;
    for (int bit = 0; bit < BOARD_BITS; ++bit)
        if (men >> bit & 1) sum += 2 * (10 - row_of_bit(bit));
    return sum;
}

int draw_size(int difference) {
    if (difference == 0) return 0;
    const int size = std::abs(difference) >= 4 ? 5 : 3;
    return difference > 0 ? size : -size;
}

int material_difference(const Position& p) {
    const uint64_t men = ~p.king;
    return 3 * (ones(p.black & p.king) - ones(p.white & p.king)) + ones(p.black & men) - ones(p.white & men);
}

}  // namespace

bool slow_forced(const Position& position, int side) {
    std::set<std::tuple<uint64_t, uint64_t, uint64_t>> ends;
    const std::function<void(const Position&)> walk = [&](const Position& p) {
        MoveList list;
        if (ends.size() > 1) return;
        if (!generate_captures(p, list, p.side)) {
            ends.insert({p.black, p.white, p.king});
            return;
        }
        for (const Move& move : list) walk(position_after(move, p.side ^ 1));
    };
    MoveList list;
    const int count = generate_captures(position, list, side);
    if (count == 0) return false;
    if (count == 1) return true;
    Position root = position;
    root.side = side;
    walk(root);
    return ends.size() == 1;
}

int slow_reduction(const Position& parent, const Position& child, int depth, int number, bool pv,
                   bool capture) {
    if (depth < 16 || capture) return 0;
    if (is_promotion(parent, child, parent.side)) return 0;
    if (pv) return number < 4 ? 0 : 8;
    if (number == 0) return 0;
    return number <= 3 ? 8 : 16;
}

int slow_lookup_depth(int maxpieces, int pieces) {
    if (maxpieces == 6) return pieces <= 12 ? 2 : 14 - pieces;
    if (maxpieces == 7) return pieces <= 17 ? 4 : 21 - pieces;
    if (maxpieces == 8 || maxpieces == 9) return pieces <= 18 ? 5 : 14 - pieces / 2;
    return -5;
}

SlowSearch::SlowSearch(int size_mb) {
    const uint32_t entries = std::bit_floor(static_cast<uint32_t>(size_mb)) * 131072;
    slots.resize(entries + 3);
    mask = entries - 1;
}

SlowEntry* SlowSearch::probe(const PositionHash& key) {
    SlowEntry* const bucket = &slots[key.hash0 & mask];
    for (int i = 0; i < 3; ++i) {
        if (!bucket[i].used) return nullptr;
        if (bucket[i].hash1 == key.hash1) return &bucket[i];
    }
    return nullptr;
}

void SlowSearch::store(const PositionHash& key, int value, int depth_field, int type, int index) {
    SlowEntry entry{true, key.hash1, value, depth_field, false, index < 0 ? 127 : index, type};
    SlowEntry* const bucket = &slots[key.hash0 & mask];
    SlowEntry* victim = bucket;
    for (int i = 0; i < 3; ++i) {
        SlowEntry* const slot = &bucket[i];
        if (!slot->used) {
            *slot = entry;
            return;
        }
        if (slot->hash1 == key.hash1) {
            entry.mark = slot->mark;
            *slot = entry;
            return;
        }
        if (!slot->mark && (slot->depth_field < victim->depth_field || victim->mark)) victim = slot;
    }
    *victim = entry;
}

void SlowSearch::age() {
    for (SlowEntry& entry : slots) {
        entry.depth_field = 0;
        entry.mark = false;
    }
}

std::vector<Move> SlowSearch::line(const Position& root_position, const Move& first, int length,
                                   std::vector<SlowEntry*>& entries) {
    std::vector<Move> moves;
    Position p = position_after(first, root_position.side ^ 1);
    entries.clear();
    for (int i = 0; i < length; ++i) {
        SlowEntry* const entry = probe(position_hash(p, p.side));
        if (!entry || entry->depth_field == 0) break;
        if (std::find(entries.begin(), entries.end(), entry) != entries.end()) break;
        entries.push_back(entry);
        MoveList list;
        generate_moves(p, list, p.side);
        if (entry->index >= list.count) break;
        moves.push_back(list[entry->index]);
        p = position_after(list[entry->index], p.side ^ 1);
    }
    return moves;
}

void SlowSearch::mark_pv(const Position& root_position, const Move& first, int length) {
    std::vector<SlowEntry*> entries;
    line(root_position, first, std::min(length, 63), entries);
    for (SlowEntry* entry : entries) entry->mark = true;
}

bool SlowSearch::covered(const Position& p) const {
    const int black_kings = ones(p.black & p.king), white_kings = ones(p.white & p.king);
    const int total = ones(p.black) + ones(p.white);
    if (total > database.maxpieces) return false;
    if (std::max(ones(p.black), ones(p.white)) > database.maxpieces_1side) return false;
    if (total == 8 && std::max(black_kings, white_kings) > database.maxkings_1side_8pcs) return false;
    if (total == 9 && black_kings + white_kings > database.maxkings_9pcs) return false;
    return true;
}

bool SlowSearch::direct(const Position& p) const {
    const int total = ones(p.black) + ones(p.white);
    if (!database.no_side_captures || total < 7) return true;
    return total < 9 && ones(p.king) < 2;
}

EgdbValue SlowSearch::look_up(const Position& p, bool conditional) {
    ++result.lookups;
    return database.lookup(p, p.side, conditional);
}

int SlowSearch::score_of(const Position& p, EgdbValue value) {
    const uint64_t black_men = p.black & ~p.king, white_men = p.white & ~p.king;
    const int material = ones(p.king) + 2 * (ones(black_men) + ones(white_men));
    const bool level = ones(p.black) == ones(p.white);
    int win_black = 2900 - 30 * material + black_advancement(black_men);
    if (level && white_men) win_black += white_advancement(white_men);
    int win_white = 2900 - 30 * material + white_advancement(white_men);
    if (level && black_men) win_white += black_advancement(black_men);
    switch (value) {
        case EGDB_WIN:
            return p.side == BLACK ? win_black : win_white;
        case EGDB_LOSS:
            return p.side == BLACK ? -win_white : -win_black;
        case EGDB_DRAW:
            return material_difference(p) == 0 ? 1 : draw_size(material_difference(p));
        case EGDB_DRAW_OR_LOSS:
            return std::min(0, static_value(p));
        case EGDB_WIN_OR_DRAW:
            return std::max(0, static_value(p));
        default:
            return static_value(p);
    }
}

int SlowSearch::leaf(int ply, int value) {
    ++result.leaves;
    result.leaf_plies += static_cast<uint64_t>(ply);
    return value;
}

std::vector<int> SlowSearch::ordered(const Position& p, const MoveList& list, int first, int ply) {
    std::vector<int> order;
    std::vector<int> scores;
    for (int i = 0; i < list.count; ++i) {
        const MoveSquares squares = move_squares(pieces_of(p, p.side), pieces_of(list[i], p.side));
        const Killer killer = killers[static_cast<size_t>(ply)];
        int score = history[static_cast<size_t>(squares.from)][static_cast<size_t>(squares.to)] - 4096;
        if (killer.from == squares.from && killer.to == squares.to) score += 120;
        scores.push_back(i == first ? 2000000000 : score);
        order.push_back(i);
    }
    std::stable_sort(order.begin(), order.end(), [&](int a, int b) {
        return scores[static_cast<size_t>(a)] > scores[static_cast<size_t>(b)];
    });
    return order;
}

void SlowSearch::fail_high(const Position& p, const MoveList& list, const std::vector<int>& order,
                           size_t rank, int ply, bool had_capture) {
    const auto squares_of = [&](size_t i) {
        return move_squares(pieces_of(p, p.side), pieces_of(list[order[i]], p.side));
    };
    const auto entry = [&](MoveSquares squares) -> int& {
        return history[static_cast<size_t>(squares.from)][static_cast<size_t>(squares.to)];
    };
    int& best = entry(squares_of(rank));
    best = best + (8192 - best) / 128;
    for (size_t i = 0; i < rank; ++i) {
        int& earlier = entry(squares_of(i));
        earlier = earlier - earlier / 128;
    }
    if (!had_capture) killers[static_cast<size_t>(ply)] = {squares_of(rank).from, squares_of(rank).to};
}

int SlowSearch::node(const Position& p, int ply, int depth, int alpha, int beta, bool pruning,
                     int& best_index) {
    ++result.nodes;
    best_index = -1;
    result.highest_ply = std::max(result.highest_ply, ply);
    if (pieces_of(p, p.side) == 0) return leaf(ply, ply - 4000);

    if (p.reversible_plies >= 4) {
        const Position* earlier = &p;
        for (int distance = 1; distance <= p.reversible_plies; ++distance) {
            earlier = earlier->previous;
            if (distance >= 4 && distance % 2 == 0 && earlier->black == p.black && earlier->white == p.white)
                return leaf(ply, -7);
        }
    }
    if (depth <= 0) return quiet(p, ply, depth, alpha, beta);

    const bool eligible = covered(p);
    const PositionHash key = position_hash(p, p.side);
    const int saved_depth = depth;
    int hash_move = 127;
    bool pv = false;
    if (const SlowEntry* entry = probe(key)) {
        hash_move = entry->index;
        pv = entry->mark;
        if (pv) depth += 2;
        if (entry->depth_field >= depth + 1) {
            const bool usable = entry->type == 0 || (entry->type == 2 && entry->value >= beta) ||
                                (entry->type == 1 && entry->value <= alpha);
            if (usable) return leaf(ply, entry->value);
        }
    }
    if (ply >= 61) return leaf(ply, static_value(p));

    const bool capture = captures_now(p);
    int best = -4000;
    int upper_limit = 4000;
    if (!capture && eligible && !(!direct(p) && captures_next(p))) {
        const bool conditional = depth <= lookup_depth * 8 && !pv;
        const EgdbValue value = look_up(p, conditional);
        if (value == EGDB_DRAW) {
            const int m = material_difference(p);
            const int for_black = m == 0 ? 1 : draw_size(m);
            return leaf(ply, p.side == BLACK ? for_black : -for_black);
        }
        if (value == EGDB_WIN) {
            const int score = score_of(p, value);
            if (score >= beta) return leaf(ply, score);
            best = score;
        }
        if (value == EGDB_LOSS) {
            upper_limit = score_of(p, value);
            if (upper_limit <= alpha) return leaf(ply, upper_limit);
        }
    }

    if (depth >= 24 && pruning && !eligible && !pv) {
        const int margin = depth * 7 / 8;
        if (static_value(p) > beta + margin / 3) {
            int ignored;
            const int shallow =
                node(p, ply, depth * 40 / 100, beta + margin - 1, beta + margin, false, ignored);
            if (shallow >= beta + margin) return (shallow - margin + 1) & ~1;
        }
    }

    MoveList list;
    if (capture)
        generate_captures(p, list, p.side);
    else
        generate_noncaptures(p, list, p.side);
    if (list.count == 0) return leaf(ply, ply - 4000);

    int found = -1;
    std::vector<int> order;
    bool failed_high = false;
    int ignored;
    if (list.count == 1) {
        const int value = -node(child_of(p, list[0], capture), ply + 1, pruning ? depth - 4 : depth, -beta,
                                -alpha, pruning, ignored);
        if (value > best) best = value;
        found = 0;
    } else {
        int search_alpha = alpha;
        if (hash_move >= list.count) {
            hash_move = -1;
            if (depth >= 48) node(p, ply, depth - 32, alpha, beta, pruning, hash_move);
        }
        size_t number = 0;
        // Where no move beats a database win, the first in search order stands as the best.
        found = std::max(hash_move, 0);
        if (hash_move >= 0) {
            const int value = -node(child_of(p, list[hash_move], capture), ply + 1, depth - 8, -beta,
                                    -search_alpha, pruning, ignored);
            if (value > best) {
                best = value;
                found = hash_move;
                search_alpha = std::max(search_alpha, value);
            }
            number = 1;
        }
        const bool cut_off = number == 1 && best >= beta;
        // After the search of the hash move: it may have changed the history.
        order = ordered(p, list, hash_move, ply);
        for (; !cut_off && number < order.size(); ++number) {
            const Position child = child_of(p, list[order[number]], capture);
            const int r = slow_reduction(p, child, depth, static_cast<int>(number), pv, capture);
            int value = -node(child, ply + 1, depth - r - 8, -beta, -search_alpha, pruning, ignored);
            if (r != 0 && value > search_alpha)
                value = -node(child, ply + 1, depth - 8, -beta, -search_alpha, pruning, ignored);
            if (value > best) {
                best = value;
                found = order[number];
                search_alpha = std::max(search_alpha, value);
            }
            if (best >= beta) break;
        }
        if (best >= upper_limit) best = upper_limit;
        failed_high = best >= beta;
    }
    best_index = found;
    store(key, best, saved_depth + 1, best <= alpha ? 1 : best >= beta ? 2 : 0, found);
    if (failed_high) {
        const auto rank = std::find(order.begin(), order.end(), found) - order.begin();
        fail_high(p, list, order, static_cast<size_t>(rank), ply, capture);
    }
    return best;
}

int SlowSearch::quiet(const Position& p, int ply, int depth, int alpha, int beta) {
    ++result.nodes;
    if (pieces_of(p, p.side) == 0) return leaf(ply, ply - 4000);
    if (ply >= 61) return leaf(ply, static_value(p));
    if (captures_now(p)) return captures(p, ply, alpha, beta);
    const bool eligible = covered(p);
    if (!captures_next(p)) {
        if (p.king == 0 && ones(p.black | p.white) >= 12 && !eligible) {
            int v = static_value(p);
            bool qualified = false;
            if (v < beta && v > alpha - 40) {
                MoveList list;
                generate_noncaptures(p, list, p.side);
                for (const Move& move : list) {
                    const Position child = child_of(p, move, false);
                    if (!captures_now(child)) continue;
                    qualified = true;
                    const int value = -captures(child, ply + 1, -beta, -alpha);
                    if (value <= v) continue;
                    v = value;
                    if (v >= beta) return v;
                    alpha = std::max(alpha, v);
                }
            }
            return qualified ? v : leaf(ply, v);
        }
        return leaf(ply, eligible ? score_of(p, look_up(p, true)) : static_value(p));
    }
    if (eligible && direct(p)) return leaf(ply, score_of(p, look_up(p, true)));
    if (depth < -7) return leaf(ply, static_value(p));
    int ignored;
    return node(p, ply, 8, alpha, beta, false, ignored);
}

int SlowSearch::captures(const Position& p, int ply, int alpha, int beta) {
    ++result.nodes;
    if (pieces_of(p, p.side) == 0) return leaf(ply, ply - 4000);
    result.highest_ply = std::max(result.highest_ply, ply);
    if (ply >= 61) return leaf(ply, static_value(p));
    MoveList list;
    if (captures_now(p)) {
        generate_captures(p, list, p.side);
        int best = -4000;
        for (const Move& move : list) {
            best = std::max(best, -captures(child_of(p, move, true), ply + 1, -beta, -std::max(alpha, best)));
            if (best >= beta) break;
        }
        return best;
    }
    if (covered(p) && (direct(p) || !captures_next(p))) return leaf(ply, score_of(p, look_up(p, true)));
    return leaf(ply, static_value(p));
}

int SlowSearch::root(const Position& p, const MoveList& list, int alpha, int beta, int& best_index) {
    const bool capture = captures_now(p);
    const std::vector<int> order = ordered(p, list, best_index, 0);
    int low = p.side == WHITE ? -beta : alpha;
    const int high = p.side == WHITE ? -alpha : beta;
    int best = -4000;
    int ignored;
    size_t best_rank = 0;
    for (size_t i = 0; best < high && i < order.size(); ++i) {
        const Position child = child_of(p, list[order[i]], capture);
        const int r = slow_reduction(p, child, iteration * 8, static_cast<int>(i), true, capture);
        int value = -node(child, 1, iteration * 8 - r - 8, -high, -low, true, ignored);
        if (r != 0 && value > low) value = -node(child, 1, iteration * 8 - 8, -high, -low, true, ignored);
        if (value > best) {
            best = value;
            best_index = order[i];
            best_rank = i;
        }
        low = std::max(low, best);
    }
    if (best >= high && list.count >= 2) fail_high(p, list, order, best_rank, 0, capture);
    return p.side == WHITE ? -best : best;
}

SlowResult SlowSearch::search(const Position& position, int side, const Position* game_line, int depth_limit,
                              int step, bool full_depth) {
    result = {};
    age();
    for (auto& row : history) row.fill(4096);
    killers.fill({});
    Position p = game_line ? *game_line : position_after(move_to(position), side);
    MoveList list;
    generate_moves(p, list, side);
    result.forced = !full_depth && slow_forced(p, side);
    lookup_depth = slow_lookup_depth(database.maxpieces, ones(p.black | p.white));
    const int limit = result.forced ? 1 : std::min(60, depth_limit);

    int value = 0;
    int best_index = 0;
    for (iteration = 1; iteration <= std::max(5, limit);) {
        int lower = -4000, upper = 4000, stride = 1;
        int alpha = value - 1, beta = value;
        result.highest_ply = 0;
        result.leaves = result.leaf_plies = 0;
        while (true) {
            int index = best_index;
            const int r = root(p, list, alpha, beta, index);
            if (side == WHITE ? r < beta : r > alpha) best_index = index;
            if (r < beta) {
                upper = std::max(r, lower);
                value = upper;
                stride = std::min(2 * stride, (upper - lower) / 2);
                stride = std::max(2, std::min(std::abs(upper) / 10, std::min(stride, 128)));
                alpha = upper - stride + 1;
                beta = upper - stride + 2;
            } else {
                lower = std::min(r, upper);
                value = lower;
                stride = std::min(2 * stride, (upper - lower) / 2);
                stride = std::max(2, std::min(std::abs(lower) / 10, std::min(stride, 128)));
                beta = lower + stride - 1;
                alpha = beta - 1;
            }
            if (iteration > 7) mark_pv(p, list[best_index], iteration + iteration / 5);
            if (lower >= upper) break;
        }
        result.value = value;
        result.best_index = best_index;
        result.completed_depth = iteration;
        if (iteration == depth_limit) break;
        // A limit that was asked for is met exactly.
        iteration = std::min(iteration + step, depth_limit);
    }
    return result;
}
