#include "search/near_best.h"

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "base/log.h"
#include "search/getmove.h"
#include "search/preparation.h"
#include "search/root_moves.h"
#include "search/score.h"
#include "search/search_state.h"
#include "search/search_text.h"

namespace {

constexpr int32_t FIRST_MARGIN = 5;   // of a window around the expected value
constexpr int32_t WIDER_MARGIN = 10;  // around a value that fell outside
constexpr int32_t HIGHEST_ALPHA = -2;
constexpr double LIMITED_DEPTH_TIME = 8;

// Relative to the side to move, as is all within this search but the values of the moves.
struct Window {
    int32_t alpha;
    int32_t beta;
};

struct NearBest {
    RootTask task;
    RootMoves moves;
    double time = 0;
    int depth_limit = 0;
    int32_t given_msd = 0;
    int32_t msd = 0;      // in use in this iteration, as far as it was proved
    Window window{};      // the last one
    int32_t proved = 0;   // of the last whole iteration
    int close_count = 1;  // moves within the difference
};

int32_t relative(const NearBest& s, int32_t value) { return s.task.root.side == BLACK ? value : -value; }

// Searches the move on the window in `s` and sets its value. False if the search was stopped.
bool search_move(const NearBest& s, RootMove& move) {
    const bool black = s.task.root.side == BLACK;
    const Window& w = s.window;
    const int32_t value =
        search_root_move(s.task.root, move, black ? w.alpha : -w.beta, black ? w.beta : -w.alpha);
    if (stop_requested()) return false;
    move.value = value;
    return true;
}

// The exact value of the move that is expected to be best.
bool search_first(NearBest& s, RootMove& move) {
    const int32_t expected = relative(s, move.value);
    s.window = {expected - FIRST_MARGIN, expected + FIRST_MARGIN};
    for (;;) {
        if (!search_move(s, move)) return false;
        const int32_t value = relative(s, move.value);
        if (value <= s.window.alpha)
            s.window.alpha = value - WIDER_MARGIN;
        else if (value >= s.window.beta)
            s.window.beta = value + WIDER_MARGIN;
        else
            return true;
    }
}

// The exact value of another move if it is close to `best` or better, else that it is not. Raises `best`, and
// notes the difference that the window has proved.
bool search_other(NearBest& s, RootMove& move, int32_t& best) {
    s.window = {std::min(best - s.msd - 1, HIGHEST_ALPHA), best + FIRST_MARGIN};
    for (;;) {
        if (!search_move(s, move)) return false;
        const int32_t value = relative(s, move.value);
        if (value < s.window.beta) {
            best = std::max(best, value);
            s.msd = std::max(s.given_msd, best - s.window.alpha - 1);
            return true;
        }
        s.window.beta = value + WIDER_MARGIN;
    }
}

bool search_moves(NearBest& s) {
    s.msd = s.given_msd;
    if (!search_first(s, s.moves.front())) return false;
    int32_t best = relative(s, s.moves.front().value);
    for (size_t i = 1; i < s.moves.size(); ++i)
        if (!search_other(s, s.moves[i], best)) return false;
    return true;
}

// Sorts the moves, counts those that are close, and tells.
void report_iteration(NearBest& s, int depth) {
    const Position& root = s.task.root;
    sort_root_moves(s.moves, root.side);
    const int32_t best = s.moves.front().value;
    s.close_count = static_cast<int>(std::count_if(s.moves.begin(), s.moves.end(), [&](const RootMove& move) {
        return std::abs(best - move.value) <= s.proved;
    }));
    const bool black = root.side == BLACK;
    const Window& w = s.window;
    log_printf("Mintime %.2f, alpha %d, beta %d, bestval %d, msd %d\n", search_state.Mintime,
               black ? w.alpha : -w.beta, black ? w.beta : -w.alpha, best, s.proved);
    std::array<char, ROOT_MOVES_TEXT_SIZE> line;
    root_moves_text(root, s.moves, s.close_count, line.data(), line.size());
    log_printf("time %.2fs, depth %d, nodes %" PRIu64 ", speed %.0f,  %s\n", search_elapsed(), depth,
               searched_nodes(), kilonodes_per_second(), line.data());
    std::snprintf(s.task.text, SEARCH_TEXT_SIZE, "%.1fs, D %d, %s", search_elapsed(), depth, line.data());
    tell_search_text(s.task.text);
}

bool run_iteration(NearBest& s, int depth) {
    clear_leaf_counters();
    if (!search_moves(s)) {
        restore_root_values(s.moves);
        return false;
    }
    keep_root_values(s.moves);
    s.proved = s.msd;
    search_state.completed_depth = depth;
    report_iteration(s, depth);
    return true;
}

// More close candidates are worth more time.
void adapt_time(const NearBest& s, int depth) {
    if (s.depth_limit != 0 && depth < s.depth_limit - 1) return;
    search_state.Mintime = (0.5 * std::log10(s.close_count) + 1) * s.time;
    search_state.step_time = search_state.Mintime / 2;
}

void iterate(NearBest& s) {
    int depth = 1;
    do {
        announce_iteration(depth);
        if (past_last_iteration(depth, MAX_DEPTH)) return;
        adapt_time(s, depth);
        if (!run_iteration(s, depth)) return;
        if (std::abs(s.moves.front().value) >= DECIDED_SCORE) return;
        if (s.depth_limit != 0 && depth >= s.depth_limit - 1) return;
        depth = next_iteration(depth);
    } while (depth > 0);
}

void set_time_limits(double time, int depth_limit) {
    set_fixed_time(time);
    if (depth_limit == 0) return;
    search_state.Mintime = search_state.step_time = search_state.max_time = LIMITED_DEPTH_TIME * time;
}

}  // namespace

int near_best_search(const Position& position, int side, double time, char* text,
                     std::atomic<int32_t>& stop_flag, int32_t msd, int32_t& count, std::span<Move> moves,
                     std::span<int32_t> values, int depth_limit, int32_t& msd_out) {
    const EngineTurn turn(stop_flag, text);
    count = 0;
    if (!start_turn(position, text)) return NEAR_BEST_ILLEGAL;
    set_time_limits(time, depth_limit);
    NearBest s;
    prepare_root(s.task, position, side, text, 0);
    if (s.task.list.count == 0) {
        std::snprintf(text, SEARCH_TEXT_SIZE, "No moves");
        tell_search_text(text);
        return NEAR_BEST_NO_MOVES;
    }
    s.moves = make_root_moves(s.task.list);
    s.time = time;
    s.depth_limit = depth_limit;
    s.given_msd = msd;
    begin_iterations(s.task);
    iterate(s);
    end_iterations();
    count = s.close_count;
    msd_out = s.proved;
    for (size_t i = 0; i < static_cast<size_t>(count); ++i) {
        if (i < moves.size()) moves[i] = s.moves[i].move;
        if (i < values.size()) values[i] = s.moves[i].value;
    }
    const uint32_t unknowns = search_state.egdb_unknowns.load(std::memory_order_relaxed);
    if (unknowns != 0) log_printf("dbunknowns %" PRIu32 "\n", unknowns);
    return NEAR_BEST_FOUND;
}
